/*
 * The forwarding-resources profile that the device's user has chosen: how the forwarding tables share the hardware.
 */
#pragma once

#include <cstdint>

/** The user profile's record. */
struct FwdTableUserData_s {
    uint32_t table;   /**< the forwarding table that the record is about */
    uint32_t profile; /**< the profile's number */
};

/** Access to the forwarding resources; the connection lasts as long as the object. */
class FwdResources {
public:
    FwdResources();
    ~FwdResources();  // NOLINT(performance-trivially-destructible): the middleware's, where it ends a connection

    FwdResources(const FwdResources&) = delete;
    FwdResources& operator=(const FwdResources&) = delete;

    /**
     * Reads the profile that the user has chosen.
     *
     * @param user_data receives the record; the caller's. Without a chosen profile its number is 0
     * @return 0, or a negative number when the record cannot be read
     */
    int get_user_profile(FwdTableUserData_s* user_data);
};

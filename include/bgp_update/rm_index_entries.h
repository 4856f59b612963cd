// Rows of tables that are keyed by the index of the BGP router entity, as objects that can move to another index. The
// class of a row knows which of its keys carry the index, and which leaves have to follow. Handles: update.h.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "bgp_update/export.h"
#include "confd_lib.h"
#include "nzmw_log.h"

/**
 * A row of a table whose first key is the index, with no other place for it.
 *
 * An entry stands for the row as it was found: it moves once. Everything goes to the upgrade log; a row that cannot be
 * moved is told with ConfD's error and left as it is.
 */
class BGP_UPDATE_EXPORT BaseEntry {
public:
    /**
     * Takes copies of the row's keys, and the handle of the upgrade log.
     *
     * @param table_path the keypath of the table's list, as "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry"
     * @param keys       the row's keys in the order of the schema, borrowed for the call
     * @param key_count  how many they are
     */
    BaseEntry(int32_t maapi_socket, int32_t thandle, std::string table_path, const confd_value_t* keys,
              int32_t key_count);

    /** Releases the copies. */
    virtual ~BaseEntry();

    BaseEntry(const BaseEntry&) = delete;
    BaseEntry& operator=(const BaseEntry&) = delete;

    /**
     * Moves the row to an index, within its table and with all its leaves. A key that changes becomes a C_UINT32. A key
     * or leaf of another type than its class asks for ends the process by a failed assertion.
     *
     * @param old_index the index that the row's table had before
     * @param new_index the index that it gets
     * @return 0 always; failures are logged
     */
    virtual int32_t MoveEntry(uint32_t old_index, int new_index);

    /** The row's keypath as it was found, "/table/list{key key}", cut to 511 characters. */
    const std::string& entry_path() const { return entry_path_; }

protected:
    /** The keypath that belongs to the keys as they are now, likewise cut. */
    std::string current_path() const;

    /** Says that the row is about to move. */
    void log_update() const;

    /** Makes a key the number given, a C_UINT32. Positions from 0. */
    void set_key(int position, uint32_t number);

    /** Moves the row to the keys as they are now. False after a failure, which is logged. */
    bool move();

    /** The three in one, for a row with the index in its first key. */
    bool move_to_index(int new_index);

    /**
     * Sets a leaf of the moved row to the index. A failure ends the process by a failed assertion.
     *
     * @param signature the signature of the caller, for the assertion
     * @param leaf      the leaf's keypath as a template that takes the row's, "%s/bgpPeerLocalNm"
     * @param new_index the index, written as a C_UINT32
     */
    void set_index(const char* signature, const char* leaf, int new_index) const;

    nzmw_log_t* log_;
    int32_t maapi_socket_;
    int32_t thandle_;
    std::string table_path_;
    std::vector<confd_value_t> entry_keys_;  // three at least, C_NOEXISTS where the row has fewer
    int32_t key_count_;
    std::string entry_path_;
};

/**
 * A row of "/DC-RTM-MIB/rtmMjTable/rtmMjEntry": a partner of the routing table manager. The second key is the index,
 * of BGP partners (type 4 in the third key) alone; the others stay.
 */
class BGP_UPDATE_EXPORT RtmMjEntry : public BaseEntry {
public:
    using BaseEntry::BaseEntry;
    int32_t MoveEntry(uint32_t old_index, int new_index) override;
};

/**
 * A row of "/DC-RTM-MIB/rtmRedistTable/rtmRedistEntry": a redistribution rule. Rules whose destination
 * (rtmRedistInfoDest) is BGP are numbered from the index on in their second key, and move by the distance between the
 * two indexes; the others stay.
 */
class BGP_UPDATE_EXPORT RtmRedistEntry : public BaseEntry {
public:
    using BaseEntry::BaseEntry;
    int32_t MoveEntry(uint32_t old_index, int new_index) override;
};

/**
 * A row of "/redist-protocol": the protocol instance behind a redistribution rule. Those of BGP (protocol-xmltag) move
 * with their rule, and get the new index as their "protocol-index"; the others stay.
 */
class BGP_UPDATE_EXPORT RtmRedistProtocolHiddenEntry : public BaseEntry {
public:
    using BaseEntry::BaseEntry;
    int32_t MoveEntry(uint32_t old_index, int new_index) override;
};

/** A row of "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry": a neighbour. Its "bgpPeerLocalNm" is the index too. */
class BGP_UPDATE_EXPORT BgpPeerEntry : public BaseEntry {
public:
    using BaseEntry::BaseEntry;
    int32_t MoveEntry(uint32_t old_index, int new_index) override;
};

/** A row of "/DC-BGP-MIB/bgpNmEntTable/bgpNmEntEntry": a neighbour manager. Its "bgpNmEntRmIndex" is the index too. */
class BGP_UPDATE_EXPORT BgpNmEntityEntry : public BaseEntry {
public:
    using BaseEntry::BaseEntry;
    int32_t MoveEntry(uint32_t old_index, int new_index) override;
};

/**
 * A row of "/DC-BGP-MIB/bgpNmListenTable/bgpNmListenEntry": an address to listen on. The second key is the index where
 * it was equal to the first, and the number after the index otherwise.
 */
class BGP_UPDATE_EXPORT BgpNmListenEntry : public BaseEntry {
public:
    using BaseEntry::BaseEntry;
    int32_t MoveEntry(uint32_t old_index, int new_index) override;
};

/**
 * A row of "/internal/bgpPeerEntry-global": the keys of a neighbour's row as text, "5 1 0a:00:00:01 0 ...". The number
 * with which the text of "keys" begins is the index too.
 */
class BGP_UPDATE_EXPORT BgpPeerEntryGlobalHiddenEntry : public BaseEntry {
public:
    using BaseEntry::BaseEntry;
    int32_t MoveEntry(uint32_t old_index, int new_index) override;
};

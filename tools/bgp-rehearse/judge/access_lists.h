// The stored access lists and the prefix lists that they become: a list of its name, with a sequence for each of its rules.
#pragma once

#include <functional>
#include <map>
#include <set>

#include "device.h"

namespace bgp_rehearse {

class AccessLists {
public:
    // Of a device whose upgrade is open, and that outlives it.
    explicit AccessLists(const bgp_platform::Device& device);

    enum class Left {
        Unnamed,     // a rule: its list has no name
        Taken,       // a rule: the prefix list has another one of its number, or none
        SharesName,  // a whole list, told by its first rule: another one of that name comes before it
    };

    // Calls visit(rule, why, whether a route map matches the list, or one of the same name) for what is not in the result.
    using Visit = std::function<void(const bgp_platform::store::Row& rule, Left why, bool used)>;
    void for_each_left(const Visit& visit) const;

private:
    // Those of one name get one prefix list, that of the first.
    struct Named {
        bgp_platform::schema::Value first;
        bool used;  // one of them is
    };

    template <typename VisitList>
    void for_each_list(const VisitList& visit) const;
    const bgp_platform::schema::Value* name_of(const bgp_platform::schema::Value& list) const;
    bool is_used(const bgp_platform::schema::Value& list, const bgp_platform::schema::Value* name) const;
    void find_used();
    void find_names();

    const bgp_platform::store::Configuration& stored_;
    const bgp_platform::store::Configuration& result_;
    const bgp_platform::store::List& rules_;
    std::set<bgp_platform::schema::Value> used_;  // by route maps
    std::map<bgp_platform::schema::Value, Named> names_;
};

}  // namespace bgp_rehearse

// Neighbours' address families that an upgrade turns off: those that were in effect, and those that were configured and
// could not work.
#include <fmt/format.h>

#include <map>
#include <tuple>

#include "judge/lists.h"
#include "judge/path_template.h"
#include "judge/rule.h"
#include "judge/words.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::Datastore;
using bgp_platform::schema::Node;
using bgp_platform::schema::Schema;
using bgp_platform::schema::Value;
using bgp_platform::store::Configuration;
using bgp_platform::store::Row;

constexpr char kRouterFamilyIsUp[] =
    "/DC-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry{$bgpRmEntIndex $bgpPeerAfiSafiAfi $bgpPeerAfiSafiSafi}/"
    "bgpRmAfiSafiAdminStatus=up";
constexpr char kIpv6IsSupported[] = "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{$bgpRmEntIndex}/bgpRmEntSupportIpv6=true";

// What a family had to do with before.
enum class Was { InEffect, WithoutRouterFamily, WithoutIpv6 };

class FamilyOff : public Rule {
public:
    explicit FamilyOff(const Evidence& evidence)
        : FamilyOff(evidence.device.schema(), evidence.device.configuration(Datastore::Stored))
    {
    }

    void row(const RowChange& change) override
    {
        if (change.before == nullptr || change.after == nullptr || &change.list() != list_ ||
            change.before->value(off_->slot) == true_ || change.after->value(off_->slot) != true_) {
            return;
        }
        const Row& before = *change.before;
        Finding& finding = findings_[{was(before), before.value(afi_->slot), before.value(safi_->slot)}];
        finding.add_row(change.before, change.after);
        finding.made_by(step_of_writer(change.writer_of(*off_)));
    }

    void find(std::vector<Finding>* findings) override
    {
        for (auto& [key, finding] : findings_) {
            finish(std::get<Was>(key), &finding);
            findings->push_back(std::move(finding));
        }
    }

private:
    FamilyOff(const Schema& schema, const Configuration& stored)
        : list_(find_node(schema, kFamilies)),
          off_(list_->child("bgpPeerAfiSafiDisable")),
          afi_(list_->child("bgpPeerAfiSafiAfi")),
          safi_(list_->child("bgpPeerAfiSafiSafi")),
          router_family_(schema, kRouterFamilyIsUp, list_),
          ipv6_(schema, kIpv6IsSupported, list_),
          router_family_is_up_(router_family_, stored),
          ipv6_is_supported_(ipv6_, stored)
    {
        off_->type->parse("true", &true_);
        afi_->type->parse("ipv6", &of_ipv6_);
    }

    Was was(const Row& row)
    {
        if (row.value(afi_->slot) == of_ipv6_ && ipv6_is_supported_.row({{}, row}) == nullptr) {
            return Was::WithoutIpv6;
        }
        return router_family_is_up_.row({{}, row}) == nullptr ? Was::WithoutRouterFamily : Was::InEffect;
    }

    void finish(Was was, Finding* finding) const
    {
        finding->id = FindingId::FamilyOff;
        finding->leaf = off_;
        finding->count = finding->places.size();
        const bool one = finding->count == 1;
        const std::string family = words_of_keys(*finding->places.front().before, afi_->slot);
        const std::string who = counted(finding->count, {"neighbour", "neighbours"});
        if (was == Was::InEffect) {
            finding->severity = Severity::Review;
            finding->reason = fmt::format("neighbours lose {}: it was in effect, and is off", family);
            finding->sentence =
                fmt::format("{} {} {}: it was in effect, and is off", who, one ? "loses" : "lose", family);
            finding->short_form = fmt::format("{} {} {}", who, one ? "loses" : "lose", family);
            return;
        }
        const char* const why =
            was == Was::WithoutIpv6 ? "the router did not support IPv6" : "the router's own family was not up";
        finding->reason = fmt::format("neighbours keep {} off: configured, but {}", family, why);
        finding->sentence = fmt::format("{} {} {} off: configured, but {}", who, one ? "keeps" : "keep", family, why);
    }

    const Node* list_;
    const Node* off_;
    const Node* afi_;
    const Node* safi_;
    Value true_;
    Value of_ipv6_;
    PathTemplate router_family_;
    PathTemplate ipv6_;
    Lookup router_family_is_up_;
    Lookup ipv6_is_supported_;
    std::map<std::tuple<Was, Value, Value>, Finding> findings_;
};

}  // namespace

std::unique_ptr<Rule> family_off_rule(const Evidence& evidence)
{
    return std::make_unique<FamilyOff>(evidence);
}

}  // namespace bgp_rehearse

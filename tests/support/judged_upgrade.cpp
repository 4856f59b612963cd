#include "support/judged_upgrade.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "bgp_update/update.h"
#include "judge/row_changes.h"
#include "judge/stored_condition.h"
#include "store/changes.h"

namespace bgp_test {

namespace {

using bgp_platform::Device;
using bgp_platform::UpgradeHandles;
using bgp_platform::schema::Node;
using namespace bgp_rehearse;

class FateLines : public RowVisitor {
public:
    void kept(const Node& /*list*/, std::size_t /*rows*/) override {}
    void row(const RowChange& change) override
    {
        if (change.fate == Fate::AsItWas) {
            return;
        }
        std::string line =
            fmt::format("{} {}", name_of(change.fate), bgp_platform::store::keypath(*change.around, &change.row()));
        if (change.fate == Fate::Moved || change.fate == Fate::MovedAndChanged) {
            line += fmt::format(" from {{{}}}", bgp_platform::store::key_text(*change.before));
        }
        lines.push_back(line);
    }
    void outside(const RowChange& change) override
    {
        for_each_leaf_change(change,
                             [this](const LeafChange& leaf) { lines.push_back("changed " + leaf.node->path()); });
    }

    std::vector<std::string> lines;
};

}  // namespace

JudgedUpgrade::JudgedUpgrade(const std::string& configuration) : steps_([this] { return totals_of(device_.calls()); })
{
    device_.keep_history(true);
    device_.load_text(configuration);
    device_.log_sink = [this](std::string_view line) {
        if (steps_.take(line)) {
            device_.history()->set_writer(static_cast<bgp_platform::store::Writer>(steps_.current_number()));
        }
    };
    device_.recorder().after_failure = [this](const bgp_platform::capi::Failure& failure) {
        failed_calls_.add(steps_.current(), failure.function, failure.error, failure.path, failure.message,
                          failure.number);
    };
    assumptions_.user_profile = "0";
    assumptions_.user_profile_given = true;
    assumptions_.interfaces = "127.0.0.1";
    assumptions_.interfaces_given = true;
}

UpgradeHandles JudgedUpgrade::open()
{
    if (!handles_) {
        handles_ = device_.open_upgrade();
    }
    return *handles_;
}

void JudgedUpgrade::run()
{
    const UpgradeHandles handles = open();
    EXPECT_EQ(update(handles.maapi_socket, handles.thandle, handles.cdb_socket), 0);
    steps_.returned();
}

void JudgedUpgrade::by_hand(const std::function<void(const UpgradeHandles&)>& calls)
{
    calls(open());
}

Judgement JudgedUpgrade::judged()
{
    open();
    all_steps_ = steps_.all();
    return judge(Evidence{device_, result, all_steps_, failed_calls_, assumptions_, invalid, again}, {});
}

std::vector<Finding> findings_of(const Judgement& judgement, FindingId id)
{
    std::vector<Finding> found;
    for (const Finding& finding : judgement.findings) {
        if (finding.id == id) {
            found.push_back(finding);
        }
    }
    return found;
}

std::string with_places(const Finding& finding)
{
    EXPECT_EQ(finding.count, finding.places.size());
    std::string text = finding.sentence + " [";
    for (const Place& place : finding.places) {
        text += (text.back() == '[' ? "" : ", ") + words_of(finding, place);
    }
    return text + "]";
}

std::string findings_text(const Judgement& judgement, Severity from)
{
    std::string text;
    for (const Finding& finding : judgement.findings) {
        if (finding.severity >= from) {
            text += fmt::format("{} {}: {}\n", name_of(finding.severity), name_of(finding.id), finding.sentence);
        }
    }
    return text;
}

std::vector<std::string> fates(Device& device)
{
    FateLines lines;
    walk_rows(device, lines);
    return lines.lines;
}

}  // namespace bgp_test

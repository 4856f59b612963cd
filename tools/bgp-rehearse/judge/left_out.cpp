// Parts of the backup that are of modules which the upgrade does not know: they stand in the result as they came.
#include <fmt/format.h>

#include "judge/rule.h"
#include "judge/words.h"

namespace bgp_rehearse {

namespace {

class LeftOut : public Rule {
public:
    explicit LeftOut(const Evidence& evidence) : evidence_(evidence) {}

    void find(std::vector<Finding>* findings) override
    {
        const auto& parts = evidence_.device.foreign();
        if (parts.empty()) {
            return;
        }
        Finding finding;
        finding.id = FindingId::LeftOut;
        finding.count = parts.size();
        finding.reason = "parts are of modules that the upgrade does not know: kept as they are";
        finding.sentence =
            fmt::format("{} of modules that the upgrade does not know: kept as {}",
                        counted(parts.size(), {"part is", "parts are"}), parts.size() == 1 ? "it is" : "they are");
        for (const bgp_platform::store::ForeignPart& part : parts) {
            finding.say("/" + part.name, fmt::format("{} ({}), {}, line {}", part.name, part.name_space,
                                                     counted(part.elements, {"element", "elements"}), part.line));
        }
        findings->push_back(std::move(finding));
    }

private:
    const Evidence& evidence_;
};

}  // namespace

std::unique_ptr<Rule> left_out_rule(const Evidence& evidence)
{
    return std::make_unique<LeftOut>(evidence);
}

}  // namespace bgp_rehearse

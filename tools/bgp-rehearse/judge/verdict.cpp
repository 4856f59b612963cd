// The verdict: what the severest findings come to.
#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>

#include "judge/judgement.h"

namespace bgp_rehearse {

namespace {

bool is_before(const Finding& left, const Finding& right)
{
    return left.severity != right.severity ? left.severity > right.severity : left.id < right.id;
}

std::string capital(std::string text)
{
    if (!text.empty() && text[0] >= 'a' && text[0] <= 'z') {
        text[0] = static_cast<char>(text[0] - 'a' + 'A');
    }
    return text;
}

// "a, b, and c", without more than three: "a, b, and 4 findings more".
std::string enumeration(const std::vector<std::string>& parts)
{
    constexpr std::size_t kMost = 3;
    std::string text;
    const std::size_t shown = parts.size() > kMost ? kMost - 1 : parts.size();
    for (std::size_t i = 0; i < shown; ++i) {
        const bool last = i + 1 == parts.size();
        text += i == 0 ? parts[i] : fmt::format("{}{}", last ? ", and " : ", ", parts[i]);
    }
    return shown == parts.size() ? text : fmt::format("{}, and {} more", text, parts.size() - shown);
}

// Whether a finding that calls for a look leaves everything in the result, if not in its place or not for sure.
bool keeps_all(FindingId id)
{
    switch (id) {
        case FindingId::RowLeft:
        case FindingId::IdentityGuessed:
        case FindingId::StandInDoubt:
        case FindingId::Again:
        case FindingId::LimitRewritten:
        case FindingId::ReferenceBroken:
            return true;
        default:
            return false;
    }
}

// Why, in a sentence: the findings of the highest severity, and for a review whether anything is lost.
std::string reason(const std::vector<Finding>& findings, Severity severity)
{
    if (severity == Severity::Note) {
        return "Nothing is lost, and nothing needs a look.";
    }
    std::vector<std::string> parts;
    bool all_kept = severity == Severity::Review;
    for (const Finding& finding : findings) {
        const std::string& part = finding.short_form.empty() ? finding.sentence : finding.short_form;
        if (finding.severity == severity && std::find(parts.begin(), parts.end(), part) == parts.end()) {
            parts.push_back(part);
            all_kept = all_kept && keeps_all(finding.id);
        }
    }
    const std::string because = enumeration(parts);
    return all_kept ? fmt::format("Nothing is lost; {}.", because) : capital(because) + ".";
}

// "ended, returned, ..."
std::string finding_names()
{
    std::string names;
    for (std::size_t id = 0; id < kFindingIds; ++id) {
        names.append(id == 0 ? "" : ", ").append(name_of(static_cast<FindingId>(id)));
    }
    return names;
}

}  // namespace

const char* Verdict::word() const noexcept
{
    switch (severity) {
        case Severity::Note:
            return "SAFE";
        case Severity::Review:
            return "REVIEW";
        case Severity::Stop:
            break;
    }
    return "STOP";
}

SeverityChoices chosen_severities(const std::vector<std::pair<std::string, std::string>>& pairs)
{
    SeverityChoices choices;
    for (const auto& [id, level] : pairs) {
        const std::optional<FindingId> finding = finding_named(id);
        const std::optional<Severity> severity = severity_named(level);
        if (!finding) {
            throw std::invalid_argument(fmt::format("no finding has the id \"{}\": {}", id, finding_names()));
        }
        if (!severity) {
            throw std::invalid_argument(fmt::format("\"{}\" is no severity: note, review, stop", level));
        }
        choices[*finding] = *severity;
    }
    return choices;
}

void settle(const SeverityChoices& choices, Judgement* judgement)
{
    std::vector<Finding>& findings = judgement->findings;
    for (Finding& finding : findings) {
        if (const auto choice = choices.find(finding.id); choice != choices.end()) {
            finding.severity = choice->second;
        }
    }
    std::stable_sort(findings.begin(), findings.end(), is_before);
    judgement->verdict.severity = findings.empty() ? Severity::Note : findings.front().severity;
    judgement->verdict.sentence = reason(findings, judgement->verdict.severity);
}

}  // namespace bgp_rehearse

#include "fleet/shard/summary.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <utility>

#include "report/device_time.h"

namespace bgp_rehearse {

namespace {

constexpr char kStop[] = "stop";
constexpr char kDigits[] = "0123456789";
constexpr char kLeftOut[] = "…";

RouterResult blank_result(const PlannedInput& input)
{
    RouterResult result;
    result.number = input.number;
    result.name = input.name;
    result.sha256 = input.sha256;
    result.bytes = input.bytes;
    return result;
}

FleetFinding summary_of(const Finding& finding)
{
    FleetFinding summary;
    summary.id = name_of(finding.id);
    summary.severity = name_of(finding.severity);
    summary.reason = finding.reason;
    summary.sentence = finding.sentence;
    summary.advice = finding.advice;
    summary.step = finding.step;
    summary.count = finding.count;
    const std::size_t places = std::min(finding.places.size(), RouterResult::kMostPlaces);
    for (std::size_t i = 0; i < places; ++i) {
        summary.places.push_back({path_of(finding, finding.places[i]), words_of(finding, finding.places[i])});
    }
    return summary;
}

double seconds(Duration duration)
{
    return std::chrono::duration<double>(duration).count();
}

// A finding that no rule made.
FleetFinding own_finding(const char* id, std::string reason, std::string sentence, uint64_t count)
{
    FleetFinding finding;
    finding.id = id;
    finding.severity = kStop;
    finding.reason = std::move(reason);
    finding.sentence = std::move(sentence);
    finding.count = count;
    return finding;
}

// Behind the keypath that an error begins with, keys and the blanks in them passed over; 0 where it begins with none.
std::size_t end_of_path(const std::string& error)
{
    if (error.empty() || error[0] != '/') {
        return 0;
    }
    int depth = 0;
    for (std::size_t i = 0; i < error.size(); ++i) {
        depth += error[i] == '{' ? 1 : error[i] == '}' ? -1 : 0;
        if (depth == 0 && error.compare(i, 2, ": ") == 0) {
            return i + 2;
        }
    }
    return 0;
}

std::string without_values(const std::string& text)
{
    std::string rest;
    for (std::size_t i = 0; i < text.size();) {
        if (text[i] == '"') {
            const std::size_t end = text.find('"', i + 1);
            i = end == std::string::npos ? text.size() : end + 1;
            rest += kLeftOut;
        } else if (text.find_first_of(kDigits, i) == i) {
            i = std::min(text.find_first_not_of(kDigits, i), text.size());
            rest += kLeftOut;
        } else {
            rest += text[i++];
        }
    }
    return rest;
}

}  // namespace

RouterResult result_of(const PlannedInput& input, const Rehearsed& rehearsed)
{
    RouterResult result = blank_result(input);
    result.input_class = rehearsed.device.foreign().empty() ? "whole" : "partly";
    result.verdict = rehearsed.judgement.verdict.word();
    result.sentence = rehearsed.judgement.verdict.sentence;
    result.exit_status = rehearsed.exit_status;
    for (const Finding& finding : rehearsed.judgement.findings) {
        result.findings.push_back(summary_of(finding));
    }
    for (const Step& step : rehearsed.steps) {
        const auto changes = rehearsed.changes.find(step.name);
        result.steps.push_back({step.name, name_of(step.outcome),
                                changes == rehearsed.changes.end() ? "" : fmt::format("{:016x}", changes->second)});
    }
    result.account = rehearsed.judgement.account.total;
    result.calls = rehearsed.calls;
    const DurationRange time = time_of(rehearsed.calls, {});
    result.seconds_least = seconds(time.least);
    result.seconds_most = seconds(time.most);
    return result;
}

RouterResult refused_result(const PlannedInput& input, std::vector<std::string> errors)
{
    RouterResult result = blank_result(input);
    result.input_class = "refused";
    result.verdict = "REFUSED";
    result.exit_status = static_cast<int>(ExitStatus::BadInput);
    result.sentence = errors.front();
    for (const std::string& error : errors) {
        const std::string reason = reason_of_error(error);
        const auto known = std::find_if(result.findings.begin(), result.findings.end(),
                                        [&](const FleetFinding& finding) { return finding.reason == reason; });
        if (known == result.findings.end()) {
            result.findings.push_back(own_finding("refused", reason, error, 1));
        } else {
            ++known->count;
        }
    }
    errors.resize(std::min(errors.size(), RouterResult::kMostErrors));
    result.errors = std::move(errors);
    return result;
}

RouterResult failed_result(const PlannedInput& input, ExitStatus status, const std::string& sentence)
{
    RouterResult result = blank_result(input);
    result.input_class = "whole";
    result.verdict = "STOP";
    result.exit_status = static_cast<int>(status);
    result.sentence = sentence;
    result.findings.push_back(own_finding("own-fault", "this command could not judge the router", sentence, 1));
    return result;
}

std::string without_name(const std::string& error, const std::string& name)
{
    if (error.compare(0, name.size() + 1, name + ":") != 0) {
        return error;
    }
    const std::string rest = error.substr(name.size() + 1);
    const std::size_t line_end = rest.find_first_not_of(kDigits);
    const bool has_line = line_end != 0 && line_end != std::string::npos && rest[line_end] == ':';
    return has_line ? "line " + rest : rest.substr(std::min(rest.find_first_not_of(' '), rest.size()));
}

std::string reason_of_error(const std::string& error)
{
    constexpr char kLine[] = "line ";
    constexpr char kMarkup[] = "not well-formed";
    std::string text = error;
    if (text.compare(0, sizeof kLine - 1, kLine) == 0 && text.find(": ") != std::string::npos) {
        text.erase(0, text.find(": ") + 2);
    }
    text.erase(0, end_of_path(text));
    return text.compare(0, sizeof kMarkup - 1, kMarkup) == 0 ? kMarkup : without_values(text);
}

}  // namespace bgp_rehearse

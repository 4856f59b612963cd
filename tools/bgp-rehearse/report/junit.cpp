#include "report/junit.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

#include "base/exit_status.h"
#include "base/sha256.h"
#include "judge/words.h"
#include "report/xml_writer.h"

namespace bgp_rehearse {

namespace {

constexpr std::size_t kMostPlaces = 100;  // of a finding; readers of such documents show all that there is

struct Case {
    enum class Result { Passed, Failure, Error, Skipped };

    std::string group;  // of its class: "steps"
    std::string name;
    Result result = Result::Passed;
    std::string type;
    std::string message;
    std::vector<std::string> lines;
};

const char* element_of(Case::Result result) noexcept
{
    switch (result) {
        case Case::Result::Failure:
            return "failure";
        case Case::Result::Error:
            return "error";
        case Case::Result::Skipped:
            return "skipped";
        case Case::Result::Passed:
            break;
    }
    return "system-out";
}

std::vector<std::string> lines_of(const std::string& text)
{
    std::vector<std::string> lines;
    for (std::size_t start = 0, end = 0; end != std::string::npos; start = end + 1) {
        end = text.find('\n', start);
        lines.push_back(text.substr(start, end - start));
    }
    return lines;
}

class JUnit {
public:
    JUnit(const Report& report, const Ending& ending) : report_(report), ending_(ending) {}

    bool write(int file);

private:
    void add_rehearsal();
    void add_step(const Step& step);
    void add_finding(FindingId id);
    const char* why_not_looked_at(FindingId id) const;
    bool fails(const Finding& finding) const;
    bool fails(const Step& step) const;
    std::size_t count(Case::Result result) const;
    void add_counts(XmlWriter* xml) const;
    void add_properties(XmlWriter* xml) const;
    void add_case(const Case& each, XmlWriter* xml) const;

    const Report& report_;
    const Ending& ending_;
    std::vector<Case> cases_;
};

bool JUnit::write(int file)
{
    add_rehearsal();
    for (const Step& step : report_.steps) {
        add_step(step);
    }
    for (std::size_t id = 0; report_.judgement && id < kFindingIds; ++id) {
        add_finding(static_cast<FindingId>(id));
    }
    XmlWriter xml(file);
    xml.begin("testsuites").attribute("name", "bgp-rehearse");
    add_counts(&xml);
    xml.begin("testsuite").attribute("name", words_of_library(report_.inputs.library));
    add_counts(&xml);
    add_properties(&xml);
    for (const Case& each : cases_) {
        add_case(each, &xml);
    }
    xml.end().end();
    return xml.finish();
}

// That the command could not do its work, where no other case tells it.
void JUnit::add_rehearsal()
{
    const char* type = nullptr;
    switch (static_cast<ExitStatus>(ending_.status)) {
        case ExitStatus::BadInput:
            type = "refused";
            break;
        case ExitStatus::NotWritten:
            type = "not written";
            break;
        case ExitStatus::OwnFault:
            type = "own fault";
            break;
        default:
            return;
    }
    std::vector<std::string> lines = lines_of(ending_.error);
    std::string message = lines.front();
    cases_.push_back({"rehearsal", "rehearsal", Case::Result::Error, type, std::move(message), std::move(lines)});
}

std::vector<std::string> last_seen(const Ended& ended)
{
    std::vector<std::string> lines = {sentence_of(ended)};
    const auto add = [&lines](const char* what, const std::string& path) {
        if (!path.empty()) {
            lines.push_back(what + path);
        }
    };
    add("read last: ", ended.last.reading);
    add("written last: ", ended.last.writing);
    add("called last: ", ended.last.function);
    for (const std::string& line : ended.last.log) {
        add("log: ", line.substr(0, line.find_last_not_of('\n') + 1));
    }
    return lines;
}

void JUnit::add_step(const Step& step)
{
    Case each{"steps", step.name, Case::Result::Passed, name_of(step.outcome), step.text, {what_came_of(step)}};
    if (report_.ended && step.name == std::string_view(report_.ended->last.step)) {
        each.result = Case::Result::Error;
        each.message = sentence_of(*report_.ended);
        each.lines = last_seen(*report_.ended);
    } else if (step.outcome == StepOutcome::NotRun || step.outcome == StepOutcome::Ended) {
        each.result = Case::Result::Skipped;
        each.message = step.outcome == StepOutcome::Ended ? "the upgrade ended in another step" : step.text;
    } else if (fails(step)) {
        each.result = Case::Result::Failure;
    }
    cases_.push_back(std::move(each));
}

// "REVIEW: 2 neighbours get another prefix limit (update_neigh_config_drop_warn)", advice and places below it
void add_lines(const Finding& finding, std::vector<std::string>* lines)
{
    const std::string step = finding.step.empty() ? std::string() : fmt::format(" ({})", finding.step);
    lines->push_back(fmt::format("{}: {}{}", name_of(finding.severity), finding.sentence, step));
    if (!finding.advice.empty()) {
        lines->push_back("  " + finding.advice);
    }
    for (std::size_t i = 0; i < std::min(finding.places.size(), kMostPlaces); ++i) {
        const std::string path = path_of(finding, finding.places[i]);
        const std::string words = words_of(finding, finding.places[i]);
        lines->push_back(fmt::format("  {}{}{}", path, path.empty() || words.empty() ? "" : ": ", words));
    }
    if (finding.places.size() > kMostPlaces) {
        lines->push_back(
            fmt::format("  and {} more, which the JSON document has", grouped(finding.places.size() - kMostPlaces)));
    }
}

void JUnit::add_finding(FindingId id)
{
    Case each{"findings", name_of(id), Case::Result::Passed, {}, {}, {}};
    const Finding* severest = nullptr;  // they are in that order
    for (const Finding& finding : report_.judgement->findings) {
        if (finding.id != id) {
            continue;
        }
        severest = severest == nullptr ? &finding : severest;
        if (fails(finding) == fails(*severest)) {
            each.message.append(each.message.empty() ? "" : "; ").append(finding.sentence);
        }
        add_lines(finding, &each.lines);
    }
    if (severest != nullptr) {
        each.type = name_of(severest->severity);
        each.result = id == FindingId::Ended ? Case::Result::Error
                      : fails(*severest)     ? Case::Result::Failure
                                             : Case::Result::Passed;
    } else if (const char* const why = why_not_looked_at(id)) {
        each.result = Case::Result::Skipped;
        each.message = why;
    }
    cases_.push_back(std::move(each));
}

const char* JUnit::why_not_looked_at(FindingId id) const
{
    if (report_.ended) {
        return "the upgrade ended: there is no result to look at";
    }
    if (id == FindingId::NotValid && !report_.check) {
        return "only with --commit-check";
    }
    return id == FindingId::Again && !report_.inputs.again ? "only with --again" : nullptr;
}

// What ends the command with another status than 0.
bool JUnit::fails(const Finding& finding) const
{
    const std::optional<Severity> from = severity_named(report_.inputs.fail_on);
    return finding.id == FindingId::Ended || finding.id == FindingId::NotValid || (from && finding.severity >= *from);
}

// A step that gave up or could not run is a place of the finding that tells so, where that is a reason to stop.
bool JUnit::fails(const Step& step) const
{
    const std::vector<Finding>& findings = report_.judgement->findings;
    return std::any_of(findings.begin(), findings.end(), [&](const Finding& finding) {
        return finding.id == FindingId::StepFailed && fails(finding) &&
               std::any_of(finding.said.begin(), finding.said.end(),
                           [&step](const Finding::Said& said) { return said.text == step.title; });
    });
}

std::size_t JUnit::count(Case::Result result) const
{
    return static_cast<std::size_t>(
        std::count_if(cases_.begin(), cases_.end(), [result](const Case& each) { return each.result == result; }));
}

void JUnit::add_counts(XmlWriter* xml) const
{
    xml->attribute("tests", cases_.size()).attribute("failures", count(Case::Result::Failure));
    xml->attribute("errors", count(Case::Result::Error)).attribute("skipped", count(Case::Result::Skipped));
}

void JUnit::add_properties(XmlWriter* xml) const
{
    const auto add = [xml](const char* name, const std::string& value) {
        if (!value.empty()) {
            xml->begin("property").attribute("name", name).attribute("value", value).end();
        }
    };
    xml->begin("properties");
    add("version", BGP_REHEARSE_VERSION);
    add("configuration", report_.inputs.configuration);
    add("configuration.sha256", report_.inputs.configuration_sha256);
    add("library", report_.inputs.library);
    add("library.sha256", sha256_of_file(report_.inputs.library));
    add("fail_on", report_.inputs.fail_on);
    add("exit_status", std::to_string(ending_.status));
    if (report_.judgement) {
        add("verdict", report_.judgement->verdict.word());
        add("reason", report_.judgement->verdict.sentence);
    }
    xml->end();
}

void JUnit::add_case(const Case& each, XmlWriter* xml) const
{
    xml->begin("testcase").attribute("classname", fmt::format("{}.{}", report_.inputs.configuration, each.group));
    xml->attribute("name", each.name);
    if (each.result != Case::Result::Passed || !each.lines.empty()) {
        xml->begin(element_of(each.result));
        if (each.result == Case::Result::Failure || each.result == Case::Result::Error) {
            xml->attribute("type", each.type);
        }
        if (each.result != Case::Result::Passed) {
            xml->attribute("message", each.message);
        }
        for (const std::string& line : each.lines) {
            xml->line(line);
        }
        xml->end();
    }
    xml->end();
}

}  // namespace

bool write_junit_report(const Report& report, const Ending& ending, int file)
{
    return JUnit(report, ending).write(file);
}

}  // namespace bgp_rehearse

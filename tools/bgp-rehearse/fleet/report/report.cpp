#include "fleet/report/report.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <optional>
#include <utility>

#include "base/child.h"
#include "base/output_file.h"
#include "base/refuse.h"
#include "base/text_escape.h"
#include "fleet/merge/schema.h"
#include "fleet/report/comparison.h"
#include "fleet/report/csv.h"
#include "fleet/report/html/page.h"
#include "fleet/report/json.h"
#include "fleet/report/shell_words.h"
#include "fleet/report/summary.h"
#include "fleet/report/text.h"

namespace bgp_rehearse {

namespace {

// A file beside the text, which appears whole or not at all.
class BesideFile {
public:
    BesideFile(const std::string& option, const std::string& name, const FleetReportOptions& options) : name_(name)
    {
        if (name.empty()) {
            return;
        }
        const std::string target = replaceable_file(option, name);
        refuse_same_file(option, target, "the database to report on", options.database);
        if (!options.baseline.empty()) {
            refuse_same_file(option, target, "the database to compare with", options.baseline);
        }
        file_.emplace(option, target, readers_of(options.database));
    }

    template <typename Write>
    void write(Write write)
    {
        if (!file_) {
            return;
        }
        if (!write(file_->descriptor())) {
            throw CommandError(ExitStatus::NotWritten,
                               fmt::format("{} could not be written: {}", escaped(name_), std::strerror(errno)));
        }
        file_->put_in_place();
    }

private:
    std::string name_;
    std::optional<OutputFile> file_;
};

void print(const FleetReportOptions& options, const FleetSummary& summary, const Comparison* comparison)
{
    Page page({wants_colour(options.colour), line_columns()}, STDOUT_FILENO);
    const std::string opens = shell_words({"bgp-rehearse", "fleet", "show", options.database});
    if (comparison != nullptr) {
        add_comparison(*comparison, opens + " " + shell_words({"--baseline", options.baseline}), &page);
    }
    add_summary(summary, opens, &page);
    if (!page.finish()) {
        throw CommandError(ExitStatus::NotWritten, fmt::format("standard output: {}", std::strerror(errno)));
    }
}

void check_different(const FleetReportOptions& options)
{
    const std::pair<const char*, const std::string*> files[] = {
        {"--csv", &options.csv}, {"--json", &options.json}, {"--html", &options.html}};
    for (const auto& [option, name] : files) {
        for (const auto& [other, taken] : files) {
            if (taken == name) {
                break;
            }
            if (!name->empty() && !taken->empty()) {
                refuse_same_file(option, *name, fmt::format("the file of {}", other), *taken);
            }
        }
    }
}

void report(const FleetReportOptions& options, const Database& database)
{
    check_different(options);
    const InterruptGuard interrupts;
    BesideFile csv("--csv", options.csv, options);
    BesideFile json("--json", options.json, options);
    BesideFile html("--html", options.html, options);
    const FleetSummary summary = summary_of(database);
    std::optional<Comparison> comparison;
    if (!options.baseline.empty()) {
        comparison = compare(open_fleet(options.baseline), database, options.baseline);
    }
    const Comparison* const compared = comparison ? &*comparison : nullptr;
    csv.write([&](int file) { return write_csv(database, file); });
    json.write([&](int file) { return write_fleet_json(summary, compared, database, file); });
    html.write([&](int file) { return write_fleet_page(summary, database, options.database, file); });
    print(options, summary, compared);
}

}  // namespace

ExitStatus report_fleet(const FleetReportOptions& options)
{
    try {
        report(options, open_fleet(options.database));
    } catch (const DatabaseError& error) {
        refuse(options.database, error.what());
    }
    return ExitStatus::Ok;
}

}  // namespace bgp_rehearse

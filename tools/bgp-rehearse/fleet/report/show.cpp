#include "fleet/report/show.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "base/refuse.h"
#include "base/standard_output.h"
#include "base/text_escape.h"
#include "fleet/merge/schema.h"
#include "fleet/plan/input_reader.h"
#include "fleet/report/card.h"
#include "fleet/report/command.h"
#include "fleet/report/comparison.h"
#include "fleet/report/question.h"
#include "judge/words.h"
#include "report/page.h"

namespace bgp_rehearse {

namespace {

constexpr std::size_t kVerdictColumns = 10;  // columns

class Shown {
public:
    explicit Shown(const FleetShowOptions& options)
        : options_(options), page_({wants_colour(options.colour), line_columns()}, STDOUT_FILENO)
    {
    }

    // A line of the list.
    void router(const std::string& name, const std::string& word, const std::string& text)
    {
        ++routers_;
        if (options_.names) {
            page_.line(escaped(name));
        } else {
            page_.line({0,
                        fmt::format("{:<{}}", word, kVerdictColumns),
                        Paint::Plain,
                        fmt::format("{}{}{}", escaped(name), text.empty() ? "" : "  ", escaped(text)),
                        kVerdictColumns,
                        {}});
        }
    }

    void total()
    {
        if (!options_.names) {
            page_.line(routers_ == 0 ? "no router" : counted(routers_, {"router", "routers"}));
        }
    }

    Page& page() { return page_; }

private:
    const FleetShowOptions& options_;
    Page page_;
    std::size_t routers_ = 0;
};

void show_differences(const FleetShowOptions& options, const Database& database, Shown* shown)
{
    const Comparison comparison = compare(open_fleet(options.baseline), database, options.baseline);
    for (const RouterDifference& each : comparison.differing) {
        const char* const word = kDifferences[static_cast<std::size_t>(each.difference)];
        if (options.difference.empty() || options.difference == word) {
            shown->router(each.name, word, fmt::format("{}", fmt::join(each.why, "; ")));
        }
    }
    shown->total();
}

void show_backup(const Database& database, int64_t router)
{
    const PlannedInput input = planned_input(database, router);
    try {
        print_out(InputReader(options_of_fleet(database).max_bytes).read(input));
    } catch (const InputError& error) {
        refuse(input.name, error.what());
    }
}

void show(const FleetShowOptions& options, const Database& database)
{
    if (options.backup) {
        show_backup(database, router_named(database, options.router));
        return;
    }
    Shown shown(options);
    if (!options.router.empty()) {
        add_card(database, router_named(database, options.router), options.database, &shown.page());
    } else if (!options.baseline.empty()) {
        show_differences(options, database, &shown);
    } else {
        find_routers(database, options, [&](const FoundRouter& router) {
            shown.router(std::string(router.name), std::string(router.verdict), std::string(router.sentence));
        });
        shown.total();
    }
    if (!shown.page().finish()) {
        throw CommandError(ExitStatus::NotWritten, fmt::format("standard output: {}", std::strerror(errno)));
    }
}

}  // namespace

ExitStatus show_fleet(const FleetShowOptions& options)
{
    try {
        show(options, open_fleet(options.database));
    } catch (const DatabaseError& error) {
        refuse(options.database, error.what());
    }
    return ExitStatus::Ok;
}

}  // namespace bgp_rehearse

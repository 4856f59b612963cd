// Times what `bgp-rehearse run CONFIG -o OUT` does, phase by phase: load in this process; update, judge, write and report in a
// child, as there. Then single calls of the ConfD API, and how many calls each step makes. Prints one JSON document;
// bench/measure.py shows it.
//
//     bgp-bench CONFIG OUT
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/child.h"
#include "call_times.h"
#include "report/text.h"
#include "run/blank_report.h"
#include "run/library.h"
#include "run/rehearsal.h"
#include "run/upgrade.h"
#include "timed.h"

namespace {

using bgp_bench::timed;
using bgp_platform::Datastore;
using bgp_platform::Device;

// How large a configuration is.
struct Size {
    std::size_t entries = 0;  // of lists
    std::size_t values = 0;   // leaves that are set, and entries of leaf-lists
};

void measure(const bgp_platform::store::Row& row, Size* size)
{
    const bgp_platform::schema::Record& record = row.record();
    for (std::size_t slot = 0; slot < record.values.size(); ++slot) {
        size->values += !row.value(static_cast<uint16_t>(slot)).absent();
    }
    for (const bgp_platform::schema::Node* list : record.lists) {
        size->entries += list->kind == bgp_platform::schema::NodeKind::List ? row.list(list->slot).size() : 0;
        row.list(list->slot).for_each([size](const bgp_platform::store::Row& entry) { measure(entry, size); });
    }
}

// Of this program alone: getrusage() begins with what the process took before it became this program.
long peak_kilobytes()
{
    std::ifstream status("/proc/self/status");
    long kilobytes = 0;
    for (std::string word; status >> word;) {
        if (word == "VmHWM:" && status >> kilobytes) {
            return kilobytes;
        }
    }
    throw std::runtime_error("/proc/self/status tells of no peak memory");
}

void print_steps(const std::vector<bgp_rehearse::Step>& steps)
{
    std::printf("\"steps\": {");
    const char* between = "";
    for (const bgp_rehearse::Step& step : steps) {
        if (step.runs > 0) {
            std::printf("%s\"%s\": [%zu, %zu]", between, step.name, step.calls.reads, step.calls.writes);
            between = ", ";
        }
    }
    std::printf("},\n");
}

int opened(const char* file)
{
    const int descriptor = open(file, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (descriptor < 0) {
        throw std::runtime_error(std::string(file) + " cannot be written");
    }
    return descriptor;
}

// The phases after the load, with no more asked for than an output.
void rehearse(Device& device, const char* output, int channel)
{
    using namespace bgp_rehearse;
    const RunOptions options;
    const Teller teller(channel);
    const Watch watch;
    const UpgradeLibrary library(find_library({}));
    const int result = opened(output);
    const int nothing = opened("/dev/null");
    FollowedUpgrade upgrade(library, device, teller, watch, log_taker(options, -1, teller));
    Report report = blank_report(options);
    const double run = timed([&] { upgrade.run(options.limits); });
    const double judge = timed([&] { report = complete_report(options, upgrade, device, std::move(report)); });
    const double write = timed([&] { device.write(Datastore::Transaction, result); });
    bool told = false;
    const double tell = timed([&] { told = write_text_report(report, {}, nothing); });
    if (!told) {
        throw std::runtime_error("the report could not be written");
    }
    std::printf("\"update\": %.4f, \"judge\": %.4f, \"write\": %.4f, \"report\": %.4f,\n", run, judge, write, tell);
    print_steps(report.steps);
}

// Does a piece of work on the device in a child, which may print a part of the document. Throws when that fails.
void in_child(const std::function<void(int channel)>& work)
{
    const int document = dup(STDOUT_FILENO);
    const bgp_rehearse::ChildEnd end = bgp_rehearse::run_in_child(
        bgp_rehearse::InterruptGuard(),
        [&](int channel) {
            dup2(document, STDOUT_FILENO);  // a child's is the standard error
            try {
                work(channel);
                return 0;
            } catch (const std::exception& error) {
                std::fprintf(stderr, "bgp-bench: %s\n", error.what());
                return 1;
            }
        },
        [](std::string_view) {}, [] { return true; });
    close(document);
    if (end.signal != 0 || end.status != 0 || end.interrupted_by != 0) {
        throw std::runtime_error("a child did not come to its end");
    }
}

void measure(const char* configuration, const char* output)
{
    Device device;
    device.keep_reports(false);
    const long empty = peak_kilobytes();
    const double load = timed([&] { device.load_file(configuration); });
    Size size;
    measure(device.configuration(Datastore::Stored).root(), &size);
    std::printf("{\"load\": %.4f, \"loaded_kilobytes\": %ld, \"entries\": %zu, \"values\": %zu,\n", load,
                peak_kilobytes() - empty, size.entries, size.values);
    in_child([&](int channel) { rehearse(device, output, channel); });
    in_child([&](int) { bgp_bench::print_call_times(device); });
    std::printf("}\n");
}

}  // namespace

int main(int argc, char** argv)
try {
    if (argc != 3) {
        std::fprintf(stderr, "usage: bgp-bench CONFIG OUT\n");
        return 2;
    }
    measure(argv[1], argv[2]);
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "bgp-bench: %s\n", error.what());
    return 1;
}

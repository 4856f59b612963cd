#include "run/blank_report.h"

#include "base/sha256.h"
#include "xml/input.h"

namespace bgp_rehearse {

namespace {

const char* name_of(FailOn fail_on)
{
    return fail_on == FailOn::Review ? "review" : fail_on == FailOn::Stop ? "stop" : "never";
}

DeviceTimes times_of(const RunOptions& options)
{
    DeviceTimes times;
    if (options.call_time) {
        times.call = {*options.call_time, *options.call_time};
        times.calls_given = true;
    }
    if (options.connect_time) {
        times.connection = {*options.connect_time, *options.connect_time};
    }
    return times;
}

}  // namespace

Report blank_report(const RunOptions& options)
{
    Report report;
    Inputs& inputs = report.inputs;
    inputs.configuration = bgp_platform::xml::shown_name(options.configuration);
    inputs.configuration_sha256 = options.json.empty() && options.junit.empty() && options.html.empty()
                                      ? std::string()
                                      : sha256_of_file(options.configuration);
    inputs.library = options.library;
    inputs.fail_on = name_of(options.fail_on);
    inputs.severities = options.severities;
    inputs.max_entries = options.device.max_entries;
    inputs.commit_check = options.commit_check;
    inputs.again = options.again;
    inputs.limits = options.limits;
    report.times = times_of(options);
    report.show_log = options.log_in_report();
    report.log_in_json = options.log_in_json();
    return report;
}

}  // namespace bgp_rehearse

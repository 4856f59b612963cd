#include "run/loading.h"

#include "base/exit_status.h"
#include "base/progress.h"
#include "base/text_escape.h"

namespace bgp_rehearse {

using bgp_platform::Device;

Device& load_device(const DeviceOptions& options, const std::string& configuration)
{
    Device& device = *new Device;
    device.set_interfaces(options.interfaces);
    device.set_user_profile(options.user_profile);
    bgp_platform::xml::Limits limits;
    limits.entries = options.max_entries;
    ProgressLine progress("loading " + escaped(configuration));
    try {
        device.load_file(
            configuration, [&](std::size_t bytes, std::size_t total) { progress.show(bytes, total); }, limits);
    } catch (const bgp_platform::xml::LoadError& error) {
        throw CommandError(ExitStatus::BadInput, escaped(error.what()));
    }
    return device;
}

}  // namespace bgp_rehearse

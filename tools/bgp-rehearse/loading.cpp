#include "loading.h"

#include "exit_status.h"
#include "progress.h"
#include "text_escape.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::Device;
using bgp_platform::store::Row;

void measure(const Row& row, ConfigurationSize* size)
{
    const bgp_platform::schema::Record& record = row.record();
    for (std::size_t slot = 0; slot < record.values.size(); ++slot) {
        size->values += !row.value(static_cast<uint16_t>(slot)).absent();
    }
    for (std::size_t slot = 0; slot < record.lists.size(); ++slot) {
        const bgp_platform::store::List& list = row.list(static_cast<uint16_t>(slot));
        size->entries += record.lists[slot]->kind == bgp_platform::schema::NodeKind::List ? list.size() : 0;
        list.for_each([size](const Row& entry) { measure(entry, size); });
    }
}

}  // namespace

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

ConfigurationSize size_of(const bgp_platform::store::Configuration& configuration)
{
    ConfigurationSize size;
    measure(configuration.root(), &size);
    return size;
}

}  // namespace bgp_rehearse

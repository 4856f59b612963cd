#include "report/configuration_size.h"

namespace bgp_rehearse {

namespace {

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

ConfigurationSize size_of(const bgp_platform::store::Configuration& configuration)
{
    ConfigurationSize size;
    measure(configuration.root(), &size);
    return size;
}

}  // namespace bgp_rehearse

#include "report/model.h"

#include <fmt/format.h>

#include <cstring>

#include "base/text_escape.h"

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

const char* name_of(Ended::Kind kind) noexcept
{
    switch (kind) {
        case Ended::Kind::Fault:
            return "fault";
        case Ended::Kind::Assertion:
            return "assertion";
        case Ended::Kind::Exception:
            return "exception";
        case Ended::Kind::Signal:
            return "signal";
        case Ended::Kind::Exit:
            break;
    }
    return "exit";
}

std::string signal_name(int number)
{
    const char* name = sigabbrev_np(number);
    return name == nullptr ? fmt::format("signal {}", number) : fmt::format("SIG{}", name);
}

std::string describe(const Ended& ended)
{
    switch (ended.kind) {
        case Ended::Kind::Exception:
            return fmt::format("an exception: {}", escaped(ended.text));
        case Ended::Kind::Signal:
            return signal_name(ended.signal);
        case Ended::Kind::Exit:
            return fmt::format("an exit with status {}", ended.status);
        case Ended::Kind::Fault:
        case Ended::Kind::Assertion:
            break;
    }
    return fmt::format("{} in {} ({}:{}): {}", ended.kind == Ended::Kind::Fault ? "a fault" : "a failed assertion",
                       escaped(ended.function), escaped(ended.source), ended.line, escaped(ended.text));
}

}  // namespace bgp_rehearse

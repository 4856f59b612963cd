// Whole upgrades: the input chooses a small configuration, calls of the C API that shall fail, and changes of single
// leaves (the order is that of LLVMFuzzerTestOneInput). Then update() runs over it.
//
// An upgrade may end the process as its contract says. Whether it does is tried in a child process first; only one that
// returns runs here. It gives 0, leaves nothing open and the stored configuration as it was, and what it wrote loads
// again; where nothing was made to fail, it does not make a valid configuration invalid (looked at where the input
// says so).
#include <arpa/inet.h>
#include <sanitizer/asan_interface.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <string>
#include <vector>

#include "bgp_update/update.h"
#include "configuration_edits.h"
#include "device.h"
#include "generate/configuration.h"
#include "require.h"
#include "written_again.h"

// For more runs in the same time: little is kept of what is freed, as each child process begins with a copy of this one's
// page tables, and of the call stacks only where memory was had. ASAN_OPTIONS goes before this.
extern "C" const char* __asan_default_options()
{
    return "quarantine_size_mb=16:malloc_context_size=2";
}

namespace {

using bgp_fuzz::require;
using bgp_platform::Datastore;
using bgp_platform::Device;
using bgp_platform::Fault;
using bgp_platform::UpgradeHandles;
using bgp_platform::capi::FaultPlan;
using bgp_platform::capi::Function;
using bgp_platform::capi::kFunctions;
using bgp_platform::capi::PlannedFailure;

// The input, an octet a choice; where it has ended, the choice is 0.
class Choices {
public:
    Choices(const uint8_t* bytes, std::size_t size) : next_(bytes), end_(bytes + size) {}

    bool none_left() const { return next_ == end_; }
    uint32_t next() { return none_left() ? 0 : *next_++; }
    uint32_t next_wide()
    {
        const uint32_t high = next();
        return high << 8 | next();
    }
    uint32_t below(std::size_t end) { return next() % static_cast<uint32_t>(end); }
    template <typename T, std::size_t n>
    const T& one_of(const T (&all)[n])
    {
        return all[below(n)];
    }

private:
    const uint8_t* next_;
    const uint8_t* end_;
};

std::string choose_configuration(Choices* choices)
{
    constexpr uint32_t kEntities[] = {1, 1, 1, 1, 1, 2, 3, 0};
    bgp_generator::Settings settings;
    settings.entities = choices->one_of(kEntities);
    settings.neighbors = choices->below(8);
    settings.vrfs = choices->below(4);
    settings.prefix_rules = choices->below(8);
    settings.route_maps = choices->below(6);
    settings.seed = choices->next_wide();
    return bgp_generator::configuration_text(settings);
}

void choose_middleware(Choices* choices, Device* device)
{
    const in_addr host{htonl(0xC0000201)};
    const in_addr loopback{htonl(INADDR_LOOPBACK)};
    const std::vector<in_addr> interfaces[] = {{host}, {loopback}, {}, {loopback, host}};
    device->set_interfaces(choices->one_of(interfaces));
    device->set_user_profile(choices->next());
}

// Gives whether any call shall fail.
bool choose_failures(Choices* choices, FaultPlan* plan)
{
    const PlannedFailure failures[] = {{CONFD_ERR_INTERNAL, CONFD_ERR},       {CONFD_ERR_NOEXISTS, CONFD_ERR},
                                       {CONFD_ERR_ALREADY_EXISTS, CONFD_ERR}, {CONFD_ERR_BADTYPE, CONFD_ERR},
                                       {CONFD_ERR_LOCKED, CONFD_ERR},         PlannedFailure::end_of_file()};
    const char* const paths[] = {"",
                                 "/DC-BGP-MIB/bgpRmEntTable",
                                 "/DC-BGP-MIB/bgpPeer",
                                 "/DC-BGP-MIB/bgpRm",
                                 "/DC-BGP-MIB/bgpNm",
                                 "/DC-RTM-MIB",
                                 "/DC-AALL-MIB",
                                 "/router/bgp",
                                 "/prefix-list",
                                 "/bgp-internal",
                                 "/internal",
                                 "/redist-protocol"};
    const uint32_t count = choices->below(4);
    for (uint32_t i = 0; i < count; ++i) {
        const PlannedFailure failure = choices->one_of(failures);
        const uint32_t kind = choices->below(8);
        if (kind == 0) {
            const uint32_t n = choices->next_wide();
            plan->fail_call(1 + n / 2, failure, n % 2 == 1);
        } else {
            const auto function = static_cast<Function>(choices->below(kFunctions));
            const std::string path = choices->one_of(paths);
            plan->fail(function, path, failure, choices->below(4), choices->next());
        }
    }
    return count > 0;
}

// Gives whether any leaf was changed.
bool choose_edits(Choices* choices, std::string* xml)
{
    constexpr int kMost = 4;
    bool changed = false;
    for (int i = 0; i < kMost && !choices->none_left(); ++i) {
        const std::vector<bgp_fuzz::LeafText> leaves = bgp_fuzz::leaves_of(*xml);
        const std::size_t which = choices->next_wide();
        const uint32_t kind = choices->below(3);
        if (which >= leaves.size()) {
            continue;
        }
        changed = true;
        if (kind == 0) {
            bgp_fuzz::remove_leaf(leaves[which], xml);
        } else if (kind == 1) {
            bgp_fuzz::set_leaf(leaves[which], bgp_fuzz::next_value(*xml, leaves, which), xml);
        } else {
            bgp_fuzz::set_leaf(leaves[which], std::to_string(choices->next()), xml);
        }
    }
    return changed;
}

void upgrade(Device* device)
{
    const UpgradeHandles handles = device->open_upgrade();
    require(update(handles.maapi_socket, handles.thandle, handles.cdb_socket) == 0, "an upgrade gives 0", "");
}

// A fault with its call stack, or a failed type check, both told under the source path as the library tells it. Any
// other assertion, of a file with its extension, is a finding.
bool is_of_contract(const Fault& fault, std::size_t backtraces)
{
    const bool told = fault.source.rfind("src/", 0) == 0 && fault.source.find('.') == std::string::npos;
    return told && (fault.kind == Fault::Kind::Assertion ? backtraces == 0 : backtraces == 1 && fault.severity == 1);
}

// Upgrades in a child process. Gives whether the upgrade returned; when not, it ended as the contract says.
bool returns_in_child(Device* device)
{
    enum Status { kReturned = 10, kEnded, kBroke };
    const pid_t child = fork();
    require(child >= 0, "a child process can be had", std::to_string(errno));
    if (child == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        device->fault_sink = [device](const Fault& fault) {
            _exit(is_of_contract(fault, device->backtraces()) ? kEnded : kBroke);
        };
        upgrade(device);
        _exit(kReturned);
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0) {
        require(errno == EINTR, "a child process ends", std::to_string(errno));
    }
    const int result = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    require(result == kReturned || result == kEnded, "an upgrade returns or ends as its contract says",
            "wait status " + std::to_string(status));
    return result == kReturned;
}

void check_upgraded(const Device& device)
{
    require(device.open_things().none(), "nothing is left open", "");
    require(device.faults().empty() && device.backtraces() == 0, "a fault is an end", "");
    require(device.log().size() >= 3 && device.log().front() == "Starting BGP update\n" &&
                device.log().back() == "Finishing BGP update\n",
            "the log begins and ends", "");
    bgp_fuzz::require_written_again(device.configuration(Datastore::Transaction));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, std::size_t size)
{
    Choices choices(bytes, size);
    Device device;
    std::string xml = choose_configuration(&choices);
    choose_middleware(&choices, &device);
    const bool validated = choices.below(4) == 3;  // takes as long as an upgrade
    const bool disturbed = choose_failures(&choices, &device.fault_plan());
    const bool edited = choose_edits(&choices, &xml);
    try {
        device.load_text(xml);
    } catch (const bgp_platform::xml::LoadError&) {
        require(edited, "a drawn configuration loads", xml);
        return 0;
    }
    const std::string stored = device.text(Datastore::Stored);
    if ((disturbed || edited) && !returns_in_child(&device)) {
        return 0;
    }
    upgrade(&device);
    check_upgraded(device);
    require(device.text(Datastore::Stored) == stored, "the stored configuration is as it was", stored);
    if (validated && !disturbed && device.validate(Datastore::Stored).empty()) {
        require(device.validate(Datastore::Transaction).empty(), "a valid configuration stays valid", xml);
    }
    return 0;
}

// Memory that runs out within the library, at each function that it exports: the n-th allocation of a call is refused, for
// every n until the call needs no more. The call ends in the fault exit, and never in an exception that its caller gets,
// nor in the end of the process that follows one.
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <set>

#include "confd_dp.h"
#include "libvrfid.h"
#include "support/exported_functions.h"
#include "support/run_command.h"
#include "support/text_lines.h"
#include "sweep/failing_allocations.h"

namespace {

bool platform_throws = false;

}  // namespace

// These stand before the platform's: the parts of it that are C++ run out of memory, when told so.
uint32_t libvrfid::VrfId::ComponentFromVrf(uint32_t vrf_index)
{
    if (platform_throws) {
        throw std::bad_alloc();
    }
    return 1 + 65536 * vrf_index;
}

NzConfdInterface* NzConfdInterface::FromTransaction(const confd_trans_ctx* transaction)
{
    if (platform_throws) {
        throw std::bad_alloc();
    }
    return static_cast<NzConfdInterface*>(transaction->t_opaque);
}

namespace {

using bgp_test::ExportedFunction;
using bgp_test::kExportedFunctions;
using bgp_test::Memory;
using bgp_test::Workbench;
namespace failing_allocations = bgp_rehearse::failing_allocations;

// The exported functions as faults name them: "Rd2str", or "BaseEntry::MoveEntry" where a source has several of a name.
std::set<std::string> reported_names()
{
    std::set<std::string> names;
    for (const ExportedFunction& function : kExportedFunctions) {
        const std::string qualified = std::string(function.name).substr(0, std::string(function.name).find('('));
        names.insert(qualified);
        names.insert(qualified.substr(qualified.rfind(':') + 1));
    }
    return names;
}

// What became of a call in a process of its own.
struct Outcome {
    int status = -1;   // of the process, -1 when a signal ended it
    std::string told;  // the fault, or how many allocations the call made

    bool returned() const { return status == 0; }
    std::size_t allocations() const { return std::strtoul(told.c_str(), nullptr, 10); }
};

constexpr int kThrown = 3;

// Never returns. What is told goes to the descriptor.
[[noreturn]] void call_and_end(const ExportedFunction& function, Workbench& on, std::size_t n, int descriptor)
{
    on.device.fault_sink = [descriptor](const bgp_platform::Fault& fault) {
        dprintf(descriptor, "%s, %s, %s", fault.function.c_str(), fault.source.c_str(), fault.text.c_str());
    };
    try {
        failing_allocations::watch("/libbgp_update.so", n);
        function.call(on);
    } catch (...) {
        _exit(kThrown);
    }
    dprintf(descriptor, "%zu", failing_allocations::stop());
    _exit(0);
}

Outcome outcome_of(const ExportedFunction& function, Workbench& on, std::size_t n)
{
    int ends[2];
    if (pipe(ends) != 0) {
        throw std::runtime_error("pipe");
    }
    const pid_t process = fork();
    if (process == 0) {
        call_and_end(function, on, n, ends[1]);
    }
    close(ends[1]);
    Outcome outcome;
    char piece[512];
    for (ssize_t size = read(ends[0], piece, sizeof piece); size > 0; size = read(ends[0], piece, sizeof piece)) {
        outcome.told.append(piece, static_cast<std::size_t>(size));
    }
    close(ends[0]);
    int status = 0;
    waitpid(process, &status, 0);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return outcome;
}

void expect_fault_exit(const Outcome& outcome)
{
    EXPECT_EQ(outcome.status, EXIT_FAILURE);
    const std::size_t end = outcome.told.find(',');
    EXPECT_EQ(reported_names().count(outcome.told.substr(0, end)), 1U) << outcome.told;
    EXPECT_THAT(outcome.told.substr(end == std::string::npos ? 0 : end),
                testing::ContainsRegex("^, src/[a-z_/0-9]+, std::bad_alloc$"));
}

class ExportedFunctionMemory : public testing::TestWithParam<ExportedFunction> {};

std::string name_of(const testing::TestParamInfo<ExportedFunction>& info)
{
    std::string name = info.param.name;
    name = name.substr(0, name.find('('));
    for (char& c : name) {
        c = c == ':' || c == '~' ? '_' : c;
    }
    return name + "_" + std::to_string(info.index);
}

INSTANTIATE_TEST_SUITE_P(Each, ExportedFunctionMemory, testing::ValuesIn(kExportedFunctions), name_of);

TEST_P(ExportedFunctionMemory, RunningOut_EndsInTheFaultExit)
{
    const ExportedFunction& function = GetParam();
    Workbench on;
    function.prepare(on);
    const Outcome whole = outcome_of(function, on, 0);
    ASSERT_TRUE(whole.returned()) << whole.told;
    EXPECT_EQ(whole.allocations() > 0, function.memory != Memory::None) << whole.told << " allocations";

    std::size_t gone_on = 0;
    for (std::size_t n = 1; n <= whole.allocations(); ++n) {
        SCOPED_TRACE("allocation " + std::to_string(n) + " of " + whole.told);
        const Outcome outcome = outcome_of(function, on, n);
        if (outcome.returned()) {
            ++gone_on;
            continue;
        }
        expect_fault_exit(outcome);
    }
    EXPECT_EQ(gone_on, function.memory == Memory::NeededButForNames ? 1U : 0U);
}

TEST_P(ExportedFunctionMemory, ExceptionOfThePlatform_EndsInTheFaultExit)
{
    const ExportedFunction& function = GetParam();
    Workbench on;
    function.prepare(on);
    platform_throws = true;
    const Outcome outcome = outcome_of(function, on, 0);
    platform_throws = false;
    if (!outcome.returned()) {
        expect_fault_exit(outcome);
    }
}

// A check that fails when memory has run out is told all the same.
TEST(TypeCheckMemory, RunningOut_LeavesTheAssertionAsItIs)
{
    const ExportedFunction wrong_type{"", Memory::None, [](Workbench& on) { BgpUtils::is_IPv6(&on.value); }};
    Workbench on;
    const Outcome outcome = outcome_of(wrong_type, on, 1);
    EXPECT_EQ(outcome.status, -1);
    EXPECT_EQ(outcome.told,
              "static bool BgpUtils::is_IPv6(confd_value_t*), src/daemon/bgp_utils, (val)->type == C_ENUM_VALUE");
}

std::string plain(std::string demangled)
{
    const std::pair<const char*, const char*> spellings[] = {
        {"std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >", "std::string"},
        {"[abi:cxx11]", ""},
    };
    for (const auto& [long_form, short_form] : spellings) {
        for (std::size_t at = demangled.find(long_form); at != std::string::npos; at = demangled.find(long_form)) {
            demangled.replace(at, std::string(long_form).size(), short_form);
        }
    }
    return demangled;
}

TEST(ExportedFunctionCalls, AreOfAllExportedFunctions)
{
    const bgp_test::CommandResult nm = bgp_test::run_command({"nm", "-D", "-C", "--defined-only", BGP_UPDATE_LIBRARY});
    ASSERT_EQ(nm.status, 0) << nm.err;
    std::set<std::string> exported;
    for (const std::string& line : bgp_test::lines_of(nm.out)) {
        const std::size_t kind = line.find(" T ");
        if (kind != std::string::npos) {
            exported.insert(plain(line.substr(kind + 3)));
        }
    }
    std::set<std::string> called;
    for (const ExportedFunction& function : kExportedFunctions) {
        EXPECT_TRUE(called.insert(function.name).second) << function.name << " is there twice";
    }
    EXPECT_THAT(called, testing::ContainerEq(exported));
}

}  // namespace

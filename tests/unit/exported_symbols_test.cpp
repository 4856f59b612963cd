// The library exports the symbols that the description of its ABI has, no more and no fewer. What they are made of is
// compared by tools/dev/check-binaries.
#include <gmock/gmock.h>

#include <regex>
#include <set>
#include <string>

#include "support/run_command.h"
#include "support/scratch_folder.h"
#include "support/text_lines.h"

namespace {

std::set<std::string> exported()
{
    const bgp_test::CommandResult nm = bgp_test::run_command({"nm", "-D", "--defined-only", BGP_UPDATE_LIBRARY});
    EXPECT_EQ(nm.status, 0) << nm.err;
    std::set<std::string> symbols;
    for (const std::string& line : bgp_test::lines_of(nm.out)) {
        symbols.insert(line.substr(line.rfind(' ') + 1));
    }
    return symbols;
}

std::set<std::string> described()
{
    static const std::regex symbol(" *<elf-symbol name='([^']*)'.*");
    std::set<std::string> symbols;
    for (const std::string& line :
         bgp_test::lines_of(bgp_test::content_of(BGP_SOURCE_DIR "/contract/libbgp_update.abi"))) {
        std::smatch name;
        if (std::regex_match(line, name, symbol)) {
            symbols.insert(name[1]);
        }
    }
    return symbols;
}

TEST(ExportedSymbols, AreThoseOfTheDescribedAbi)
{
    EXPECT_THAT(exported(), testing::ContainerEq(described()));
}

}  // namespace

// The library's interface as the linker sees it: the symbols that exported_symbols.txt lists, no more and no fewer.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <set>
#include <sstream>

#include "support/run_command.h"
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

std::set<std::string> published()
{
    std::ifstream file(BGP_SOURCE_DIR "/tests/unit/exported_symbols.txt");
    EXPECT_TRUE(file) << "tests/unit/exported_symbols.txt cannot be read";
    std::set<std::string> symbols;
    for (std::string line; std::getline(file, line);) {
        if (!line.empty() && line[0] != '#') {
            symbols.insert(line);
        }
    }
    return symbols;
}

std::string missing_from(const std::set<std::string>& in, const std::set<std::string>& from)
{
    std::ostringstream names;
    std::set_difference(in.begin(), in.end(), from.begin(), from.end(),
                        std::ostream_iterator<std::string>(names, "\n"));
    return names.str();
}

TEST(ExportedSymbols, EveryPublishedSymbol_IsExported)
{
    EXPECT_EQ(missing_from(published(), exported()), "");
}

TEST(ExportedSymbols, NothingElse_IsExported)
{
    EXPECT_EQ(missing_from(exported(), published()), "");
}

}  // namespace

// The house rules that the compiler does not keep: what the product may include, and that it has no switch for tests.
#include <gtest/gtest.h>
#include <regex.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "support/source_tree.h"

namespace {

namespace fs = std::filesystem;
using bgp_test::kHome;

// An extended regular expression.
class Pattern {
public:
    explicit Pattern(const char* text) { EXPECT_EQ(regcomp(&compiled_, text, REG_EXTENDED), 0) << text; }
    ~Pattern() { regfree(&compiled_); }
    Pattern(const Pattern&) = delete;
    Pattern& operator=(const Pattern&) = delete;

    // Whether the line holds it; then *group is what its first group stands for.
    bool finds(const std::string& line, std::string* group = nullptr) const
    {
        regmatch_t matches[2];
        if (regexec(&compiled_, line.c_str(), 2, matches, 0) != 0) {
            return false;
        }
        if (group != nullptr) {
            group->assign(line, static_cast<std::size_t>(matches[1].rm_so),
                          static_cast<std::size_t>(matches[1].rm_eo - matches[1].rm_so));
        }
        return true;
    }

private:
    regex_t compiled_;
};

bool is_code(const fs::path& file)
{
    return file.extension() == ".h" || file.extension() == ".cpp";
}

std::vector<fs::path> code_below(const fs::path& folder)
{
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file() && is_code(entry.path())) {
            files.push_back(entry.path());
        }
    }
    return files;
}

std::vector<fs::path> product_code()
{
    std::vector<fs::path> files = code_below(kHome / "src");
    const std::vector<fs::path> headers = code_below(kHome / "include");
    files.insert(files.end(), headers.begin(), headers.end());
    return files;
}

std::vector<std::string> lines_of(const fs::path& file)
{
    std::ifstream stream(file);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

// "src/confd/value.h:3: #include ..." for each line of the product that the pattern finds.
std::string found_in_product(const char* text)
{
    const Pattern pattern(text);
    std::ostringstream found;
    for (const fs::path& file : product_code()) {
        const std::vector<std::string> lines = lines_of(file);
        for (std::size_t i = 0; i < lines.size(); ++i) {
            if (pattern.finds(lines[i])) {
                found << fs::relative(file, kHome).string() << ":" << i + 1 << ": " << lines[i] << "\n";
            }
        }
    }
    return found.str();
}

// What a project header of the product may be: its own, and the device's interfaces.
bool is_allowed(const std::string& header)
{
    return fs::exists(kHome / "include" / header) || fs::exists(kHome / "src" / header) ||
           fs::exists(kHome / "platform/include" / header);
}

TEST(Architecture, ProductIsThere)
{
    EXPECT_GT(product_code().size(), 10U) << "the scans below would find nothing wrong in nothing";
}

TEST(Architecture, ProductIncludesOnlyItsOwnHeadersAndTheDevicesInterfaces)
{
    const Pattern include("^[[:space:]]*#[[:space:]]*include[[:space:]]+\"([^\"]+)\"");
    std::ostringstream foreign;
    for (const fs::path& file : product_code()) {
        for (const std::string& line : lines_of(file)) {
            std::string match;
            if (include.finds(line, &match) && !is_allowed(match)) {
                foreign << fs::relative(file, kHome).string() << ": " << match << "\n";
            }
        }
    }
    EXPECT_EQ(foreign.str(), "");
}

TEST(Architecture, ProductIncludesNoHeaderOfTheEmbeddedPlatform)
{
    std::set<std::string> embedded;
    for (const fs::path& header : code_below(kHome / "platform/embedded")) {
        embedded.insert(fs::relative(header, kHome / "platform/embedded").string());
    }
    const Pattern include("^[[:space:]]*#[[:space:]]*include[[:space:]]+[<\"]([^\">]+)[\">]");
    std::ostringstream found;
    for (const fs::path& file : product_code()) {
        for (const std::string& line : lines_of(file)) {
            std::string match;
            if (include.finds(line, &match) && embedded.count(match) != 0) {
                found << fs::relative(file, kHome).string() << ": " << line << "\n";
            }
        }
    }
    EXPECT_EQ(found.str(), "");
    EXPECT_EQ(found_in_product("embedded|bgp_platform"), "");
}

TEST(Architecture, ProductReadsNoEnvironment)
{
    EXPECT_EQ(found_in_product("\\b(secure_)?getenv\\b|\\benviron\\b"), "");
}

TEST(Architecture, ProductHasNoConditionalCode)
{
    EXPECT_EQ(found_in_product("^[[:space:]]*#[[:space:]]*(if|ifdef|ifndef|elif|else)\\b"), "");
}

TEST(Architecture, EachSourceNamesItsPathOnce)
{
    const Pattern source("constexpr char kSource\\[\\] = \"([^\"]+)\";");
    for (const fs::path& file : product_code()) {
        int count = 0;
        for (const std::string& line : lines_of(file)) {
            std::string match;
            if (source.finds(line, &match)) {
                ++count;
                const std::string path = fs::relative(file, kHome).replace_extension().string();
                EXPECT_EQ(path.rfind(match, 0), 0U) << path << " reports as " << match;
            }
        }
        EXPECT_LE(count, 1) << file;
    }
}

}  // namespace

// No two headers of platform or command define a type of one name in one namespace: sources that each include another of
// them compile and link all the same, and the linker then takes one type's functions for both.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <sstream>
#include <string>

namespace {

namespace fs = std::filesystem;

using Definitions = std::map<std::string, std::string>;  // the types by their whole names: the file

// Adds the types that a header defines outside of others, and returns those that another file has.
std::string add_definitions(std::istream& header, const std::string& file, Definitions* definitions)
{
    static const std::regex opening("namespace ([A-Za-z_:]+) \\{");
    static const std::regex type("(struct|class|enum class|enum) ([A-Za-z_]+)( .*)?");
    std::string found;
    std::string around;
    std::smatch match;
    for (std::string line; std::getline(header, line);) {
        if (std::regex_match(line, match, opening)) {
            around = match[1];
        } else if (std::regex_match(line, match, type)) {
            const std::string name = around + "::" + match[2].str();
            const auto [known, fresh] = definitions->emplace(name, file);
            found += fresh ? "" : name + " in " + known->second + " and " + file + "\n";
        }
    }
    return found;
}

TEST(HeaderNames, EachTypeIsDefinedOnce)
{
    Definitions definitions;
    std::string twice;
    for (const char* home : {"/platform/embedded", "/tools/bgp-rehearse"}) {
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(std::string(BGP_SOURCE_DIR) + home)) {
            if (entry.path().extension() == ".h") {
                std::ifstream header(entry.path());
                twice += add_definitions(header, fs::relative(entry.path(), BGP_SOURCE_DIR), &definitions);
            }
        }
    }
    EXPECT_EQ(twice, "");
    EXPECT_EQ(definitions.count("bgp_platform::Device"), 1U);
    EXPECT_EQ(definitions.count("bgp_rehearse::UpgradeSteps"), 1U);
}

TEST(HeaderNames, TypeOfTwoHeadersIsFoundInOneNamespaceAlone)
{
    Definitions definitions;
    std::istringstream one("namespace a {\nclass Known;\nstruct Known {\n};\n}  // namespace a\n");
    std::istringstream other("namespace a::b {\nclass Known : public Other {\n};\nclass Known::Inner {\n};\n}\n");
    std::istringstream same("namespace a {\nenum class Known { One };\nenum class Known {\n");
    EXPECT_EQ(add_definitions(one, "one.h", &definitions), "");
    EXPECT_EQ(add_definitions(other, "other.h", &definitions), "");
    EXPECT_EQ(add_definitions(same, "same.h", &definitions),
              "a::Known in one.h and same.h\na::Known in one.h and same.h\n");
}

}  // namespace

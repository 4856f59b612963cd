// The positions that failed checks, faults and trace lines tell (confd/type_check.h has the rule): a function is told
// under a name that it shares with no other of its source path but its overloads, and a fixed line stands once in a source path.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "support/scratch_folder.h"
#include "support/text_lines.h"

namespace bgp_test {
namespace {

namespace fs = std::filesystem;

// What the sources of one source path report.
struct Reports {
    std::map<std::string, std::set<std::string>> functions;  // by the name told, each as "file: One::move"
    std::map<std::string, int> fixed_lines;                  // how often each stands there
};

using Paths = std::map<std::string, Reports>;

// Goes through a source by its layout: definitions begin in the first column, and so do the braces of their bodies.
class SourceReader {
public:
    SourceReader(std::string name, const std::string& source) : name_(std::move(name)), lines_(lines_of(source))
    {
        std::smatch path;
        if (std::regex_search(source, path, std::regex(R"(constexpr char kSource\[\] = "([^"]+)\")"))) {
            path_ = path[1];
        }
    }

    void read(Paths& paths)
    {
        if (path_.empty()) {
            return;  // reports nothing
        }
        Reports& reports = paths[path_];
        for (const std::string& line : lines_) {
            if (line == "{" || line.rfind("try ", 0) == 0) {
                definition_ = head_.substr(head_.find_last_of(" *&") + 1);
            } else if (line.empty() || line[0] == '}' || line[0] == '#' || line.rfind("//", 0) == 0) {
                head_.clear();
            } else if (line[0] != ' ' && head_.empty() && line.find('(') != std::string::npos) {
                head_ = line.substr(0, line.find('('));
            }
            take(line.substr(0, line.find("//")), reports);
        }
    }

private:
    void take(const std::string& line, Reports& reports)
    {
        // A guard, a trace line or a fault that speaks of the function in which it stands, or gives it a name.
        static const std::regex by_name(
            R"(BGP_FAULT_ON_EXCEPTION\((__func__|"[^"]+")\)|BGP_TRACE\(|\b__func__\b|\bBGP_THIS_OPERATION\b)");
        static const std::regex by_signature(
            R"(BGP_REQUIRE_TYPE\(|\bBGP_HERE\b|\bBGP_THIS_OPERATION\b|__PRETTY_FUNCTION__)");
        static const std::regex fixed_line(
            R"(BGP_REQUIRE_TYPE\((\d+),|kSource, (\d+)[,)]|kSource, [^,]*\? (\d+) : (\d+)\)|__func__, (\d+)[,)])");
        std::smatch found;
        if (std::regex_search(line, found, by_name)) {
            const std::string given = found[1];
            const bool named = !given.empty() && given[0] == '"';
            told(named ? given.substr(1, given.size() - 2) : definition_.substr(definition_.rfind(':') + 1), reports);
        }
        if (std::regex_search(line, by_signature)) {
            told("signature of " + definition_, reports);
        }
        for (std::sregex_iterator at(line.begin(), line.end(), fixed_line), end; at != end; ++at) {
            for (std::size_t group = 1; group < at->size(); ++group) {
                if ((*at)[group].matched) {
                    ++reports.fixed_lines[(*at)[group]];
                }
            }
        }
    }

    void told(const std::string& name, Reports& reports) const
    {
        reports.functions[name].insert(name_ + ": " + (definition_.empty() ? "outside of a function" : definition_));
    }

    std::string name_;
    std::vector<std::string> lines_;
    std::string path_;
    std::string head_;        // of what begins here, up to its parameters
    std::string definition_;  // the function that the lines belong to, "One::move"
};

Paths reports_of(const std::vector<std::pair<std::string, std::string>>& sources)
{
    Paths paths;
    for (const auto& [name, source] : sources) {
        SourceReader(name, source).read(paths);
    }
    return paths;
}

const Paths& reports_of_the_library()
{
    static const Paths paths = [] {
        std::vector<std::pair<std::string, std::string>> sources;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(BGP_SOURCE_DIR "/src")) {
            if (entry.path().extension() == ".cpp") {
                sources.emplace_back(entry.path().filename(), content_of(entry.path()));
            }
        }
        return reports_of(sources);
    }();
    return paths;
}

std::string shared_names(const Paths& paths)
{
    std::string lines;
    for (const auto& [path, reports] : paths) {
        for (const auto& [name, places] : reports.functions) {
            if (places.size() > 1) {
                lines += path + ", " + name + ": ";
                for (const std::string& place : places) {
                    lines += place + (place == *places.rbegin() ? "\n" : ", ");
                }
            }
        }
    }
    return lines;
}

std::string lines_used_twice(const Paths& paths)
{
    std::string lines;
    for (const auto& [path, reports] : paths) {
        for (const auto& [line, times] : reports.fixed_lines) {
            lines += times > 1 ? path + ":" + line + "\n" : std::string();
        }
    }
    return lines;
}

TEST(ReportedPositions, Functions_AreToldUnderANameOfTheirOwn)
{
    EXPECT_EQ(shared_names(reports_of_the_library()), "");
}

TEST(ReportedPositions, FixedLines_StandOnce)
{
    EXPECT_EQ(lines_used_twice(reports_of_the_library()), "");
}

TEST(ReportedPositions, Library_IsRead)
{
    const Reports& router = reports_of_the_library().at("src/config_update/bgp_update_router_bgp");
    EXPECT_EQ(router.functions.count("update_router_bgp"), 1U);
    EXPECT_EQ(router.functions.count("signature of create_bgp_cluster_id"), 1U);
    EXPECT_EQ(router.fixed_lines,
              (std::map<std::string, int>{{"59", 1}, {"100", 1}, {"134", 1}, {"168", 1}, {"203", 1}, {"230", 1}}));
    const Reports& entries = reports_of_the_library().at("src/config_update/bgp_update_default_rm_index");
    EXPECT_EQ(entries.functions.count("BgpPeerEntryGlobalHiddenEntry::MoveEntry"), 1U);
}

TEST(ReportedPositions, NameSharedWithinAPath_IsFound)
{
    const std::string source =
        "constexpr char kSource[] = \"src/a\";\n\nint One::move(int by)\ntry {\n    return by;\n}\n"
        "BGP_FAULT_ON_EXCEPTION(__func__)\n\nint Two::move(int by)\ntry {\n    return by;\n}\n";
    EXPECT_EQ(shared_names(reports_of({{"a.cpp", source + "BGP_FAULT_ON_EXCEPTION(__func__)\n"}})),
              "src/a, move: a.cpp: One::move, a.cpp: Two::move\n");
    EXPECT_EQ(shared_names(reports_of({{"a.cpp", source + "BGP_FAULT_ON_EXCEPTION(\"Two::move\")\n"}})), "");
}

TEST(ReportedPositions, OverloadsInOneFile_HaveOneName)
{
    const std::string source =
        "constexpr char kSource[] = \"src/a\";\n\nint One::move(int by)\ntry {\n    return by;\n}\n"
        "BGP_FAULT_ON_EXCEPTION(__func__)\n\nint One::move(char* by)\ntry {\n    return *by;\n}\n"
        "BGP_FAULT_ON_EXCEPTION(__func__)\n";
    EXPECT_EQ(shared_names(reports_of({{"a.cpp", source}})), "");
}

TEST(ReportedPositions, NameSharedByTwoFilesOfAPath_IsFound)
{
    const std::string check =
        "static void use(const confd_value_t* key)\n{\n    BGP_REQUIRE_TYPE(__LINE__, key, C_BUF);\n}\n";
    const std::string one = "constexpr char kSource[] = \"src/a\";\n\n" + check;
    const std::string other = "constexpr char kSource[] = \"src/b\";\n\n" + check;
    EXPECT_EQ(shared_names(reports_of({{"a.cpp", one}, {"a_more.cpp", one}})),
              "src/a, signature of use: a.cpp: use, a_more.cpp: use\n");
    EXPECT_EQ(shared_names(reports_of({{"a.cpp", one}, {"b.cpp", other}})), "");
}

TEST(ReportedPositions, FixedLineUsedTwice_IsFound)
{
    const std::string source =
        "constexpr char kSource[] = \"src/a\";\n\nvoid use(confd_value_t* key)\n{\n"
        "    BGP_REQUIRE_TYPE(59, key, C_BUF);\n    confd::fault(\"use\", kSource, 59, \"\");\n"
        "    confd::fault_last_error(\"use\", kSource, __LINE__);\n}\n";
    EXPECT_EQ(lines_used_twice(reports_of({{"a.cpp", source}})), "src/a:59\n");
}

}  // namespace
}  // namespace bgp_test

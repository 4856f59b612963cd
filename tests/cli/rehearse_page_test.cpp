// The report as a page for a browser: what is in the file. tests/browser/ looks at it in one.
#include <gmock/gmock.h>
#include <nettle/base64.h>
#include <zlib.h>

#include <array>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>

#include "base/base64.h"
#include "base/sha256.h"
#include "cli/fake_library.h"

namespace bgp_test {
namespace {

using nlohmann::json;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

// What stands between two texts, each time that they come.
std::vector<std::string> all_between(const std::string& text, const std::string& begin, const std::string& end)
{
    std::vector<std::string> found;
    for (std::size_t at = text.find(begin); at != std::string::npos; at = text.find(begin, at)) {
        at += begin.size();
        found.push_back(text.substr(at, text.find(end, at) - at));
    }
    return found;
}

std::string between(const std::string& text, const std::string& begin, const std::string& end)
{
    const std::vector<std::string> found = all_between(text, begin, end);
    return found.size() == 1 ? found.front() : "not there just once: " + begin;
}

// That of the head; charts have some, too.
std::string title_of(const std::string& html)
{
    return all_between(html, "<title>", "</title>").at(0);
}

std::string unpacked(const std::string& base64)
{
    std::string packed(base64.size(), '\0');
    base64_decode_ctx decoder{};
    base64_decode_init(&decoder);
    std::size_t size = packed.size();
    EXPECT_EQ(
        base64_decode_update(&decoder, &size, reinterpret_cast<uint8_t*>(packed.data()), base64.size(), base64.data()),
        1)
        << "it is no base64";
    EXPECT_EQ(base64_decode_final(&decoder), 1) << "its end is missing";
    z_stream stream{};
    inflateInit2(&stream, 16 + MAX_WBITS);
    stream.next_in = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_in = static_cast<uInt>(packed.size());
    std::string text;
    std::array<char, 1 << 16> piece{};
    int status = Z_OK;
    while (status == Z_OK) {
        stream.next_out = reinterpret_cast<Bytef*>(piece.data());
        stream.avail_out = piece.size();
        status = inflate(&stream, Z_NO_FLUSH);
        text.append(piece.data(), piece.size() - stream.avail_out);
    }
    EXPECT_EQ(status, Z_STREAM_END);
    inflateEnd(&stream);
    return text;
}

// The lines of the data in an element: the names, and all elements of the other lines.
struct Data {
    json names;
    std::vector<json> rows;
};

Data data_of(const std::string& page, const std::string& id)
{
    Data data;
    std::istringstream lines(unpacked(between(page, "<script type=\"application/gzip\" id=\"" + id + "\">", "<")));
    std::string line;
    std::getline(lines, line);
    data.names = json::parse(line);
    while (std::getline(lines, line)) {
        for (json& row : json::parse(line)) {
            data.rows.push_back(std::move(row));
        }
    }
    return data;
}

std::vector<std::string> lines_of(const json& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text.get<std::string>());
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

class RehearsePage : public RehearseTest {
protected:
    const std::string page = folder / "report.html";

    CommandResult run(const std::string& library, std::vector<std::string> more = {}) const
    {
        more.insert(more.begin(), {"run", config, "--library", library, "--html", page});
        return rehearse(more);
    }

    // The page of an upgrade.
    std::string page_of(const std::string& body, int status = 0, const std::vector<std::string>& more = {}) const
    {
        const CommandResult result = run(fake_library(folder, body), more);
        EXPECT_EQ(result.status, status) << result.err;
        return content_of(page);
    }
};

TEST_F(RehearsePage, VerdictAndRows_StandInItWithoutScript)
{
    const std::string html = page_of(R"(
        maapi_create(maapi, th, "/router/bgp{%u}", 65020u);
        maapi_set_elem2(maapi, th, "192.0.2.9", "/router/bgp{%u}/router-id", 65010u);
        return 0;)");
    EXPECT_EQ(title_of(html), "REVIEW: small.xml - upgrade rehearsal");
    EXPECT_THAT(all_between(html, "<header id=\"verdict\" class=\"", "\""), ElementsAre("review"));
    EXPECT_THAT(between(html, "<p class=\"reason\">", "</p>"), HasSubstr("1 router gets another router id"));
    EXPECT_THAT(between(html, "<p class=\"assumed\">", "</p>"), HasSubstr("user profile <bdi>0</bdi> (<code>--user"));
    EXPECT_EQ(between(html, "<p id=\"ending\">", "<"), "The command exits with status 0.");
    EXPECT_THAT(all_between(html, "data-fate=\"", "</"),
                ElementsAre("moved\"><strong>0", "moved and changed\"><strong>0", "changed\"><strong>1",
                            "removed\"><strong>0", "new\"><strong>1"));
    EXPECT_THAT(all_between(html, "<svg class=\"bar\" role=\"img\" width=\"100%\" height=\"14\" aria-label=\"", "\""),
                ElementsAre("1 changed, 3 as they were; 1 new", "1 changed; 1 new"));
    EXPECT_THAT(between(html, "<noscript><p>The tree of changes", "</noscript>"), HasSubstr("need JavaScript"));
}

TEST_F(RehearsePage, Policy_LetsRunWhatIsInItAndNothingElse)
{
    const std::string html = page_of("return 0;");
    std::string policy = between(html, "http-equiv=\"Content-Security-Policy\" content=\"", "\"");
    policy = std::regex_replace(policy, std::regex("&#39;"), "'");
    const auto hash = [](const std::string& text) {
        bgp_rehearse::Sha256 sum;
        sum.add(text);
        const auto digest = sum.digest();
        return " 'sha256-" + bgp_rehearse::base64_of({reinterpret_cast<const char*>(digest.data()), digest.size()}) +
               "'";
    };
    std::string scripts;
    for (const std::string& script : all_between(html, "<script>", "</script>")) {
        scripts += hash(script);
    }
    EXPECT_EQ(policy, "default-src 'none'; script-src" + scripts + "; style-src" +
                          hash(between(html, "<style>", "</style>")) +
                          "; img-src data:; base-uri 'none'; form-action 'none'");
    EXPECT_FALSE(std::regex_search(html, std::regex("<[a-z][^>]* (style|on[a-z]+|src)=")))
        << "the policy forbids these";
}

TEST_F(RehearsePage, HostileTexts_AreTexts)
{
    const std::string html = page_of(R"(
        maapi_create(maapi, th, "/prefix-list{%s}", "<img src=x onerror='a()'> \"&amp;\" </script><script>\033[31m");
        maapi_set_elem2(maapi, th, "up", "/prefix-list{%s}/none", "\342\200\256<b>&\001</script>");
        log("</script><!-- \342\200\256\n");
        return 0;)");
    EXPECT_THAT(html, AllOf(Not(HasSubstr("<img")), Not(HasSubstr("<!--")), Not(HasSubstr("\342\200\256")),
                            Not(HasSubstr("\033")), Not(HasSubstr("\001"))));
    EXPECT_THAT(html, HasSubstr("\\u{202e}&lt;b&gt;&amp;\\x01&lt;/script&gt;")) << "the failed write's place";
    EXPECT_EQ(all_between(html, "<script", ">").size(), all_between(html, "</script", ">").size());
    const Data changes = data_of(html, "changes-data");
    ASSERT_EQ(changes.rows.size(), 1U);
    EXPECT_THAT(lines_of(changes.rows[0][4])[1], HasSubstr("<img src=x onerror='a()'>"))
        << "as data it needs no escape";
    EXPECT_THAT(lines_of(changes.rows[0][4])[1], HasSubstr("\\x1b[31m"));
    EXPECT_THAT(data_of(html, "log-data").rows, ElementsAre("</script><!-- \\u{202e}"));
}

TEST_F(RehearsePage, HostileNameOfTheConfiguration_IsText)
{
    const std::string name = folder.file("<svg onload=a()>\"'&.xml", content_of(config));
    const CommandResult result =
        rehearse({"run", name, "--library", fake_library(folder, "return 0;"), "--html", page});
    EXPECT_EQ(result.status, 0) << result.err;
    const std::string html = content_of(page);
    EXPECT_EQ(title_of(html), "SAFE: &lt;svg onload=a()&gt;&quot;&#39;&amp;.xml - upgrade rehearsal");
    EXPECT_THAT(html, Not(HasSubstr("<svg onload")));
}

TEST_F(RehearsePage, Changes_AreTheRowsWithFateStepAndLeaves)
{
    const std::string html = page_of(R"(
        log("Update BGP VRF\n");
        maapi_create(maapi, th, "/router/bgp{%u}", 65020u);
        maapi_set_elem2(maapi, th, "192.0.2.7", "/router/bgp{%u}/router-id", 65020u);
        maapi_create(maapi, th, "/router/bgp{%u}/vrf{%s}", 65020u, "red one");
        log("Finishing VRF update\n");
        maapi_set_elem2(maapi, th, "192.0.2.8", "/router/bgp{%u}/router-id", 65020u);
        maapi_set_elem2(maapi, th, "192.0.2.9", "/router/bgp{%u}/router-id", 65010u);
        maapi_delete(maapi, th, "/prefix-list{%s}", "b");
        maapi_set_elem2(maapi, th, "4", "/prefix-list-internal/name-next-index");
        confd_value_t key;
        CONFD_SET_UINT32(&key, 20);
        maapi_move(maapi, th, &key, 1, "/prefix-list{%s}/seq{%u}", "a", 10u);
        return 0;)",
                                     3);
    const Data changes = data_of(html, "changes-data");
    const auto told = [&](std::size_t row) {
        const json& each = changes.rows.at(row);
        return std::vector<json>{changes.names["lists"][each[0].get<std::size_t>()][0],
                                 changes.names["fates"][each[1].get<std::size_t>()],
                                 changes.names["steps"][each[2].get<std::size_t>()][0], each[3]};
    };
    ASSERT_EQ(changes.rows.size(), 6U);
    EXPECT_THAT(told(0), ElementsAre("/", "changed", "update", 0));
    EXPECT_THAT(told(1), ElementsAre("/prefix-list/seq", "moved", "update", 0));
    EXPECT_THAT(told(2), ElementsAre("/prefix-list", "removed", "update", 0));
    EXPECT_THAT(told(3), ElementsAre("/router/bgp", "changed", "update", 0));
    EXPECT_THAT(told(4), ElementsAre("/router/bgp", "new", "update_vrf", 0));
    EXPECT_THAT(told(5), ElementsAre("/router/bgp/vrf", "new", "update_vrf", 1)) << "it lies in the row before it";
    EXPECT_THAT(lines_of(changes.rows[1][4]), ElementsAre("/prefix-list{a}", "20", "10", "prefix list a sequence 20"));
    EXPECT_THAT(lines_of(changes.rows[3][4]),
                ElementsAre("", "65010", "", "router of AS 65010", "router-id", "192.0.2.1", "192.0.2.9"));
    EXPECT_THAT(lines_of(changes.rows[4][4]),
                ElementsAre("", "65020", "", "router of AS 65020", "router-id", "", "192.0.2.8"));
    EXPECT_EQ(changes.rows[4][5], json({1})) << "the leaf was written last by another step";
    EXPECT_EQ(changes.rows[3].size(), 5U) << "all of it is one step's";
}

TEST_F(RehearsePage, RowsOfTheExample_AreAsManyAsTheAccountHas)
{
    const std::string document = folder / "report.json";
    const CommandResult result =
        rehearse({"run", BGP_SOURCE_DIR "/examples/edge-router.xml", "--html", page, "--json=" + document});
    ASSERT_EQ(result.status, 0) << result.err;
    const json report = json::parse(content_of(document));
    const std::string html = content_of(page);
    const Data changes = data_of(html, "changes-data");
    std::map<std::string, std::size_t> fates;
    for (const json& row : changes.rows) {
        const bool outside = row[0] == 0;
        ++fates[outside ? "outside" : changes.names["fates"][row[1].get<std::size_t>()].get<std::string>()];
    }
    const json& account = report["account"];
    EXPECT_EQ(changes.rows.size(), report["changes"].size());
    EXPECT_EQ(fates["new"], account["new"]);
    EXPECT_EQ(fates["removed"], account["removed"]);
    EXPECT_EQ(fates["changed"], account["changed"]);
    EXPECT_EQ(fates["moved"], account["moved"]);
    EXPECT_EQ(fates["moved and changed"], account["moved_and_changed"]);
    EXPECT_EQ(all_between(html, "<article id=\"finding-", "\"").size(), report["findings"].size());
}

// The path of a row as the script puts it together.
std::string path_of(const Data& changes, std::size_t row)
{
    const std::vector<std::string> lines = lines_of(changes.rows.at(row)[4]);
    return lines[0] + changes.names["lists"][changes.rows[row][0].get<std::size_t>()][2].get<std::string>() + "{" +
           lines[1] + "}";
}

TEST_F(RehearsePage, PlacesOfFindings_LeadToTheirRows)
{
    const std::string document = folder / "report.json";
    rehearse({"run", BGP_SOURCE_DIR "/examples/edge-router.xml", "--html", page, "--json=" + document});
    const json findings = json::parse(content_of(document))["findings"];
    const std::string html = content_of(page);
    const Data changes = data_of(html, "changes-data");
    const auto limits = std::find_if(findings.begin(), findings.end(),
                                     [](const json& each) { return each["id"] == "limit-rewritten"; });
    ASSERT_NE(limits, findings.end());
    const std::size_t number = static_cast<std::size_t>(limits - findings.begin());
    const std::string article =
        between(html, "<article id=\"finding-" + std::to_string(number + 1) + "\"", "</article>");
    const std::vector<std::string> links = all_between(article, "<a href=\"#row-", "\"");
    ASSERT_EQ(links.size(), (*limits)["places"].size());
    for (std::size_t i = 0; i < links.size(); ++i) {
        const std::string place = (*limits)["places"][i]["path"];
        EXPECT_EQ(place.find(path_of(changes, std::stoul(links[i]) - 1)), 0U) << place;
    }
    std::vector<std::size_t> rows = changes.names["findings"][number].get<std::vector<std::size_t>>();
    EXPECT_EQ(rows.size(), links.size()) << "the filter by the finding shows them";
}

TEST_F(RehearsePage, FailedWrite_LeadsToTheLineOfTheLogBeforeIt)
{
    const std::string html = page_of(R"(
        log("one\n");
        log("about to create\n");
        maapi_create(maapi, th, "/router/bgp{%u}", 65010u);
        log("Failed to create\n");
        return 0;)");
    const Data log = data_of(html, "log-data");
    EXPECT_THAT(log.rows, ElementsAre("one", "about to create", "Failed to create"));
    EXPECT_THAT(between(html, "<article id=\"finding-1\"", "</article>"),
                HasSubstr("<a href=\"#log-2\">failed after line 2 of the log</a>"));
}

TEST_F(RehearsePage, Log_TellsWhichStepWroteWhichLines)
{
    const std::string html = page_of(R"(
        log("before\n");
        log("Update BGP VRF\n");
        log("in it\n");
        log("Finishing VRF update\n");
        log("behind\n");
        return 0;)",
                                     3);
    const json parts = data_of(html, "log-data").names["parts"];
    EXPECT_EQ(parts, json({{1, 1}, {2, 7}, {5, 1}}));
    EXPECT_EQ(all_between(html, "<tr id=\"step-", "\"").size(), 11U);
    EXPECT_THAT(between(html, "<tr id=\"step-7\"", "</tr>"), HasSubstr("<a href=\"#log-2\">"));
    EXPECT_EQ(data_of(html, "changes-data").names["steps"][7], json({"update_vrf", "VRF instances", 2}));
}

TEST_F(RehearsePage, UpgradeThatEnded_HasAPageWithItsPlaceAndItsLog)
{
    const std::string html = page_of(R"(
        log("Update BGP VRF\n");
        maapi_set_elem2(maapi, th, "192.0.2.9", "/router/bgp{%u}/router-id", 65010u);
        exit(7);)",
                                     1);
    EXPECT_THAT(html, HasSubstr("<header id=\"verdict\" class=\"stop\">"));
    EXPECT_THAT(between(html, "<article id=\"finding-1\"", "</article>"),
                AllOf(HasSubstr("written last: /router/bgp{65010}/router-id"), HasSubstr("<a href=\"#log-1\">")));
    EXPECT_EQ(between(html, "<p id=\"ending\">", "<"),
              "The command exits with status 1: the upgrade ended in an exit with status 7");
    EXPECT_THAT(html, HasSubstr("what the upgrade had done is gone with its process"));
    EXPECT_EQ(data_of(html, "log-data").names["parts"], json({{1, 7}}));
    EXPECT_THAT(html, Not(HasSubstr("changes-data\">")));
}

TEST_F(RehearsePage, RefusedConfiguration_HasAPageWithAllErrors)
{
    const std::string broken = folder.file("broken.xml", R"(<config xmlns="http://tail-f.com/ns/config/1.0">
<router xmlns="urn:bgp-update:yang:router"><bgp><as-number>&lt;b&gt;</as-number></bgp><odd/></router></config>)");
    const CommandResult result = rehearse({"run", broken, "--html", page});
    EXPECT_EQ(result.status, 2);
    const std::string html = content_of(page);
    EXPECT_EQ(title_of(html), "REFUSED: broken.xml - upgrade rehearsal");
    const std::vector<std::string> errors =
        all_between(between(html, "<section id=\"errors\"", "</section>"), "<li><bdi>", "</bdi>");
    EXPECT_THAT(errors, ElementsAre(HasSubstr("&lt;b&gt;"), HasSubstr("odd")));
    EXPECT_EQ(all_between(html, "<script", ">").size(), 0U);
}

TEST_F(RehearsePage, OutputThatCannotBePutInPlace_IsToldThoughThePageWasThere)
{
    std::filesystem::create_directory(folder / "gone");
    const std::string library =
        fake_library(folder, "return std::system(\"rm -r '" + (folder / "gone") + "'\") == 0 ? 0 : 1;");
    const CommandResult result = run(library, {"-o", folder / "gone/out.xml"});
    EXPECT_EQ(result.status, 5);
    const std::string html = content_of(page);
    EXPECT_THAT(between(html, "<p id=\"ending\">", "<"),
                AllOf(HasSubstr("status 5: "), HasSubstr("gone/out.xml could not be")));
    EXPECT_THAT(html, AllOf(HasSubstr("SAFE"), HasSubstr("</html>"))) << "what was found stays";
    EXPECT_EQ(data_of(html, "changes-data").rows.size(), 0U);
}

TEST_F(RehearsePage, TwoRuns_GiveTheSameBytes)
{
    const std::vector<std::string> arguments = {"run", BGP_SOURCE_DIR "/examples/provider-edge.xml", "--html", page};
    rehearse(arguments);
    const std::string first = content_of(page);
    rehearse(arguments);
    EXPECT_EQ(content_of(page), first);
}

TEST_F(RehearsePage, FileThatIsAnotherOne_IsRefusedAndStays)
{
    const std::string other = folder.file("other", "as it was");
    const std::string library = fake_library(folder, "return 0;");
    for (const std::string option : {"-o", "--log", "--junit"}) {
        const CommandResult result = rehearse({"run", config, "--library", library, option, other, "--html", other});
        EXPECT_EQ(result.status, 2);
        EXPECT_THAT(result.err, HasSubstr("--html"));
    }
    EXPECT_EQ(rehearse({"run", config, "--library", library, "--html", config}).status, 2);
    EXPECT_EQ(rehearse({"run", config, "--library", library, "--html", "-"}).status, 2);
    EXPECT_EQ(rehearse({"run", config, "--library", library, "--html", folder / "none/page.html"}).status, 2);
    EXPECT_THAT(content_of(config), HasSubstr("<config"));
}

TEST_F(RehearsePage, ReportBesideIt_IsAsWithoutIt)
{
    const std::string library = fake_library(folder, "log(\"a line\\n\"); return 0;");
    const std::string without = rehearse({"run", config, "--library", library}).out;
    EXPECT_EQ(run(library).out, without) << "the log that the page keeps is not in the report";
}

}  // namespace
}  // namespace bgp_test

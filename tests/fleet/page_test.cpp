// bgp-rehearse fleet report --html: what is in the page. How it behaves in a browser is tested in tests/browser/.
#include "fleet/report/html/page.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "base/text_escape.h"
#include "made_up_fleet.h"
#include "support/text_lines.h"

namespace bgp_test {
namespace {

using Json = nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;

class FleetHtml : public testing::Test {
protected:
    std::string page(std::vector<RouterResult> routers) const
    {
        const std::string database = MadeUpFleet(std::move(routers)).merged(folder_);
        const CommandResult result = rehearse({"fleet", "report", database, "--html", folder_ / "fleet.html"});
        EXPECT_EQ(result.status, 0) << result.err;
        return content_of(folder_ / "fleet.html");
    }

    // The lines of the data for its scripts.
    std::vector<Json> data(const std::string& page) const
    {
        const std::string tag = "<script type=\"application/gzip\" id=\"fleet-data\">";
        const std::size_t start = page.find(tag) + tag.size();
        const std::string file = folder_.file("data", page.substr(start, page.find("</script>", start) - start));
        std::vector<Json> all;
        for (const std::string& line :
             lines_of(run_command({"/bin/sh", "-c", "base64 -d " + file + " | gunzip"}).out)) {
            all.push_back(Json::parse(line));
        }
        return all;
    }

    ScratchFolder folder_;
};

std::size_t times(const std::string& text, const std::string& part)
{
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

TEST_F(FleetHtml, Counts_LeadToTheirRouters)
{
    const std::string html = page({router_with("a", "STOP", {kLost}), router_with("b", "REVIEW", {kLeft}),
                                   router_with("c", "REVIEW", {kLeft}), safe_router("d")});
    EXPECT_THAT(html, AllOf(HasSubstr("<header id=\"verdict\" class=\"stop\">"),
                            HasSubstr("<span class=\"word\">1 STOP</span>"),
                            HasSubstr("<a href=\"#routers\" data-verdict=\"REVIEW\"><strong>2</strong>"),
                            HasSubstr("<tr id=\"reason-1\" class=\"stop\">"),
                            HasSubstr("<a href=\"#routers\" data-reason=\"2\">2</a>"),
                            HasSubstr("<rect width=\"50.00%\" height=\"10\">")));
}

TEST_F(FleetHtml, Data_HaveEachRouterWithItsReasonsAndCommand)
{
    const std::vector<Json> lines =
        data(page({router_with("a.xml", "STOP", {kLost, kLeft}), refused_router("b.xml"), safe_router("c.xml")}));
    ASSERT_THAT(lines, SizeIs(2));
    EXPECT_EQ(lines[0], Json::parse(R"({"verdicts": ["STOP", "REFUSED", "REVIEW", "SAFE"],
        "classes": ["whole", "partly", "refused"],
        "tail": "--library /opt/lib/libbgp_update.so --time-limit 60s",
        "reasons": [["stop", "refused", "an odd leaf"], ["stop", "row-lost", "rows are lost"],
                    ["review", "row-left", "rows stay behind"]]})"));
    EXPECT_EQ(lines[1], Json::parse(R"([
        [0, 0, "a.xml\nLook at it.\nbgp-rehearse run /backups/a.xml", [2, 3]],
        [1, 2, "b.xml\nIt cannot be read.\nbgp-rehearse run /backups/b.xml", [1]],
        [3, 0, "c.xml\nNothing is lost.\nbgp-rehearse run /backups/c.xml", []]])"));
}

TEST_F(FleetHtml, HostileTexts_StayTexts)
{
    const std::string hostile = "</script><script>alert(1)</script><img src=x onerror='alert(2)'>\"\xE2\x80\xAE";
    RouterResult router = router_with(bgp_rehearse::escaped_name(hostile), "STOP", {kLost});
    router.findings[0].reason = hostile;
    router.findings[0].id = hostile;
    router.sentence = hostile;
    router.steps[0].name = hostile;
    const std::string harmless = page({safe_router("a")});
    const std::string html = page({router});
    EXPECT_EQ(times(html, "<script"), times(harmless, "<script"));
    EXPECT_THAT(html,
                AllOf(Not(HasSubstr("<img")), Not(HasSubstr("alert(1)</script>")), Not(HasSubstr("\xE2\x80\xAE"))));
    EXPECT_THAT(html, HasSubstr("&lt;/script&gt;&lt;script&gt;alert(1)"));
}

TEST_F(FleetHtml, Policy_LetsNothingInFromOutside)
{
    const std::string html = page({safe_router("a")});
    EXPECT_THAT(html, HasSubstr("content=\"default-src &#39;none&#39;; script-src &#39;sha256-"));
    EXPECT_THAT(html, AllOf(Not(HasSubstr("http://")), Not(HasSubstr("https://")), Not(HasSubstr("unsafe"))));
}

TEST_F(FleetHtml, FleetWithoutRouters_IsAPage)
{
    EXPECT_THAT(page({}), AllOf(HasSubstr("of 0 routers"), HasSubstr("None: no router needs a look.")));
}

}  // namespace
}  // namespace bgp_test

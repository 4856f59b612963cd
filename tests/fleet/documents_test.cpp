// docs/fleet.md: its queries run on a database of a fleet, and it names every table, view and column.
#include <gmock/gmock.h>

#include "fleet/merge/schema.h"
#include "made_up_fleet.h"
#include "support/text_lines.h"

namespace bgp_test {
namespace {

using bgp_rehearse::Database;
using bgp_rehearse::open_fleet;
using bgp_rehearse::Statement;
using testing::HasSubstr;
using testing::SizeIs;

std::string page()
{
    return content_of(BGP_SOURCE_DIR "/docs/fleet.md");
}

// What stands between ```sql and ```.
std::vector<std::string> queries()
{
    std::vector<std::string> all;
    bool inside = false;
    for (const std::string& line : lines_of(page())) {
        if (line.rfind("```", 0) == 0) {
            inside = line == "```sql";
            all.resize(all.size() + (inside ? 1 : 0));
        } else if (inside) {
            all.back() += line + "\n";
        }
    }
    return all;
}

class FleetPage : public testing::Test {
protected:
    ScratchFolder folder_;
    Database database_ =
        open_fleet(MadeUpFleet({router_with("a/edge.xml", "STOP", {finding_of("row-lost", "stop", "rows are lost")})})
                       .merged(folder_));
};

TEST_F(FleetPage, ItsQueries_FindSomething)
{
    EXPECT_THAT(queries(), SizeIs(3));
    for (const std::string& query : queries()) {
        EXPECT_TRUE(Statement(database_, query).next()) << query;
    }
}

TEST_F(FleetPage, EveryTableViewAndColumn_IsTold)
{
    const std::string text = page();
    Statement column(
        database_,
        "SELECT entry.name, entry.type, info.name FROM sqlite_schema AS entry, pragma_table_info(entry.name) AS info "
        "WHERE entry.type IN ('table', 'view')");
    std::size_t columns = 0;
    while (column.next()) {
        EXPECT_THAT(text, HasSubstr("`" + std::string(column.text(0)) + "`"));
        if (column.text(1) == "table") {
            EXPECT_THAT(text, HasSubstr("`" + std::string(column.text(2)) + "`")) << "of " << column.text(0);
        }
        ++columns;
    }
    EXPECT_GT(columns, 50U);
}

}  // namespace
}  // namespace bgp_test

#include "support/daemon_fixture.h"

namespace bgp_test {

testing::Matcher<const std::string&> reports_error(int code, const std::string& function, const std::string& error)
{
    return testing::AllOf(testing::StartsWith("1 backtrace, then 1, " + function + ", src/daemon/bgp_utils, "),
                          testing::EndsWith(", <error[" + std::to_string(code) + "]: " + error + " \n>\n"));
}

testing::Matcher<const std::string&> asserts(const std::string& signature, const std::string& expression)
{
    return testing::AllOf(testing::HasSubstr("src/daemon/bgp_utils:"),
                          testing::EndsWith(": " + signature + ": Assertion `" + expression + "' failed.\n"));
}

confd_trans_ctx* DaemonTest::context()
{
    open();
    return device().transaction_context();
}

std::vector<std::string> DaemonTest::traced()
{
    std::vector<std::string> lines;
    for (; seen_ < device().trace().size(); ++seen_) {
        const bgp_platform::TraceLine& line = device().trace()[seen_];
        EXPECT_EQ(line.category, "bgp-app") << line.text;
        EXPECT_EQ(line.source, "src/daemon/bgp_utils") << line.text;
        EXPECT_GT(line.line, 0) << line.text;
        lines.push_back(line.function + " " + std::to_string(line.level) + " " + line.text);
    }
    return lines;
}

}  // namespace bgp_test

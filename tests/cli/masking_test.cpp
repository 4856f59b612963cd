// Passwords: however an upgrade handles or mishandles one, no report, message or log shows any of it, and the output
// alone has it.
#include <gmock/gmock.h>

#include "cli/fake_library.h"

namespace bgp_test {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr char kPeers[] = R"(<config xmlns="http://tail-f.com/ns/config/1.0">
  <DC-BGP-MIB xmlns="http://tail-f.com/ns/mibs/DC-BGP-MIB"><bgpPeerTable><bgpPeerEntry>
    <bgpRmEntIndex>1</bgpRmEntIndex><bgpPeerLocalAddrType>unknown</bgpPeerLocalAddrType>
    <bgpPeerLocalAddr/><bgpPeerLocalPort>0</bgpPeerLocalPort>
    <bgpPeerRemoteAddrType>ipv4</bgpPeerRemoteAddrType><bgpPeerRemoteAddr>c0:00:02:02</bgpPeerRemoteAddr>
    <bgpPeerRemotePort>0</bgpPeerRemotePort><bgpPeerLocalAddrScopeId>0</bgpPeerLocalAddrScopeId>
    <bgpPeerConfigPassword>@</bgpPeerConfigPassword>
  </bgpPeerEntry></bgpPeerTable></DC-BGP-MIB>
</config>
)";

// What fake libraries begin with: peer(index) and password(index) are keypaths.
constexpr char kPaths[] = R"(
    const auto peer = [](int index) {
        return "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry{" + std::to_string(index) +
               " unknown \"\" 0 ipv4 c0:00:02:02 0 0}";
    };
    const auto password = [=](int index) { return peer(index) + "/bgpPeerConfigPassword"; };
    static_cast<void>(password);
)";

class Masking : public testing::Test {
protected:
    const ScratchFolder folder;

    std::string stored(const std::string& password) const
    {
        std::string text = kPeers;
        return folder.file("peers.xml", text.replace(text.find('@'), 1, password));
    }

    CommandResult run_body(const std::string& body, const std::vector<std::string>& more,
                           const std::string& old = "x-hush")
    {
        std::vector<std::string> arguments = {
            "run", stored(old), "--library", fake_library(folder, kPaths + body), "--log", folder / "upgrade.log"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        CommandResult result = rehearse(arguments);
        EXPECT_THAT(result.out, Not(HasSubstr("hush")));
        EXPECT_THAT(result.err, Not(HasSubstr("hush")));
        EXPECT_THAT(content_of(folder / "upgrade.log"), Not(HasSubstr("hush")));
        return result;
    }
};

TEST_F(Masking, PasswordsThatAreSetChangedAndDeleted_ShowInTheOutputAlone)
{
    const std::string body = R"(
        maapi_set_elem2(maapi, th, "hush-1", password(1).c_str());
        maapi_create(maapi, th, peer(2).c_str());
        return maapi_set_elem2(maapi, th, "hush-2", password(2).c_str());)";
    for (const std::vector<std::string>& form : {std::vector<std::string>{"--changes"}, {"--json"}}) {
        std::vector<std::string> more = form;
        more.insert(more.end(), {"-o", folder / "out.xml", "--commit-check"});
        const CommandResult result = run_body(body, more);
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_THAT(result.out, HasSubstr("********"));
        EXPECT_THAT(content_of(folder / "out.xml"), HasSubstr("hush-2"));
        EXPECT_EQ(run_body("return maapi_delete(maapi, th, peer(1).c_str());", form).status, 3) << "a row is lost";
        EXPECT_EQ(run_body("return maapi_delete(maapi, th, password(1).c_str());", form).status, 0);
    }
}

TEST_F(Masking, WritesThatFail_DoNotShowThePassword)
{
    const std::string body = R"(
        maapi_set_elem2(maapi, th, "hush", password(7).c_str());
        confd_value_t value;
        CONFD_SET_STR(&value, "hush");
        maapi_set_elem(maapi, th, &value, password(7).c_str());
        maapi_set_elem(maapi, th, &value, peer(1).c_str());
        maapi_set_elem2(maapi, th, "hush", peer(1).c_str());
        log("%s", confd_lasterr());
        return 0;)";
    for (const std::vector<std::string>& form : {std::vector<std::string>{}, {"--json"}}) {
        EXPECT_THAT(run_body(body, form).out, HasSubstr("bgpPeerConfigPassword"));
    }
}

TEST_F(Masking, PasswordThatCannotBeWritten_IsNotShown)
{
    const std::string body = "return maapi_set_elem2(maapi, th, \"hush\\001hush\", password(1).c_str());";
    const CommandResult result = run_body(body, {"-o", folder / "out.xml"});
    EXPECT_EQ(result.status, 5);
    EXPECT_THAT(result.err, HasSubstr("bgpPeerConfigPassword: the value holds a character that XML cannot hold"));
    EXPECT_EQ(run_body(body, {"-o", folder / "out.xml", "--commit-check"}).status, 4);
}

TEST_F(Masking, RefusedConfiguration_DoesNotShowThePassword)
{
    for (const char* broken : {"hush<hush/>", "&hush;", "hush &", "a\xFFhush", "\001hush", "<![CDATA[hush]]",
                               "hush<!-- --", "hush</bgpPeerConfigPassword><bgpPeerConfigPassword>hush"}) {
        const CommandResult result = rehearse({"run", stored(broken)});
        EXPECT_EQ(result.status, 2) << broken;
        EXPECT_THAT(result.err, HasSubstr("peers.xml:"));
        EXPECT_THAT(result.err, HasSubstr("/bgpPeerConfigPassword: ")) << broken;
        EXPECT_THAT(result.err, Not(HasSubstr("hush"))) << broken;
        EXPECT_THAT(result.err, Not(HasSubstr("0x68"))) << broken;
    }
}

TEST_F(Masking, UpgradeThatEndsAtAPassword_NamesItsPlaceAlone)
{
    const std::string end = "maapi_set_elem2(maapi, th, \"y-hush\", \"%s\", password(1).c_str()); _exit(1);";
    EXPECT_THAT(run_body(end, {}).out,
                HasSubstr("written   /DC-BGP-MIB/bgpPeerTable/bgpPeerEntry{1 unknown \"\" 0 ipv4 c0:00:02:02 0 0}/"
                          "bgpPeerConfigPassword\n"));
}

}  // namespace
}  // namespace bgp_test

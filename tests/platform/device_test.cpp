// The device: loading, the upgrade's transaction, what it changed, and what is left open.
#include "device.h"

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "capi_device.h"
#include "registry.h"
#include "support/change_lines.h"

namespace {

using namespace capi_test;
using bgp_platform::DeviceState;
using bgp_platform::OpenThings;
using bgp_platform::Registry;
using bgp_platform::xml::LoadError;

using Lines = std::vector<std::string>;

using DeviceTest = CapiTest;

TEST_F(DeviceTest, Load_AddsToWhatIsThere)
{
    stored("<label>west</label>" + bay(1, "left"));
    stored(bay(2, "left"));
    open();
    EXPECT_EQ(leaf("/depot/label"), "west");
    EXPECT_EQ(cdb_num_instances(cdb, "/depot/bay"), 2);
}

TEST_F(DeviceTest, LoadThatFails_LeavesTheConfigurationAsItWas)
{
    stored(bay(1, "left"));
    const std::string before = device.text(Datastore::Stored);
    EXPECT_THROW(stored(bay(2, "left") + bay(3, "middle")), LoadError);
    EXPECT_THROW(stored(bay(4, "left") + "<dock/>"), LoadError);
    EXPECT_EQ(device.text(Datastore::Stored), before);
}

TEST_F(DeviceTest, LoadError_NamesFileAndLine)
{
    try {
        device.load_text(
            "<config xmlns=\"http://tail-f.com/ns/config/1.0\">\n<depot xmlns=\"urn:test:depot\">\n<dock/>"
            "</depot></config>",
            "west.xml");
        FAIL() << "loaded";
    } catch (const LoadError& error) {
        EXPECT_EQ(std::string(error.what()).substr(0, 11), "west.xml:3:") << error.what();
        EXPECT_NE(std::string(error.what()).find("dock"), std::string::npos) << error.what();
    }
}

TEST_F(DeviceTest, LoadFile_ReadsAFile)
{
    const std::filesystem::path file =
        std::filesystem::temp_directory_path() / ("device_test." + std::to_string(getpid()) + ".xml");
    std::ofstream(file) << depot_document("<label>from a file</label>");
    device.load_file(file);
    open();
    EXPECT_EQ(leaf("/depot/label"), "from a file");
    std::filesystem::remove(file);
    EXPECT_THROW(device.load_file(file), LoadError);
}

TEST_F(DeviceTest, Clear_LeavesAnEmptyConfiguration)
{
    stored(bay(1, "left"));
    device.clear();
    open();
    EXPECT_EQ(cdb_num_instances(cdb, "/depot/bay"), 0);
}

TEST_F(DeviceTest, SecondUpgrade_IsRefusedUntilTheFirstEnds)
{
    open();
    EXPECT_TRUE(device.upgrade_open());
    EXPECT_THROW(device.open_upgrade(), std::logic_error);
    device.drop();
    EXPECT_FALSE(device.upgrade_open());
    open();
    device.commit();
    EXPECT_NO_THROW(device.open_upgrade());
}

TEST_F(DeviceTest, Commit_MakesTheTransactionTheStoredConfiguration)
{
    stored("<label>old</label>");
    open();
    ASSERT_EQ(maapi_set_elem2(maapi, th, "new", "/depot/label"), CONFD_OK);
    EXPECT_NE(device.text(Datastore::Stored), device.text(Datastore::Transaction));
    device.commit();
    open();
    EXPECT_EQ(leaf("/depot/label"), "new");
    confd_value_t value;
    ASSERT_EQ(cdb_get(cdb, &value, "/depot/label"), CONFD_OK);
    EXPECT_EQ(taken(&value), "new");
    EXPECT_EQ(bgp_test::change_lines(device), Lines{});
}

TEST_F(DeviceTest, Drop_ForgetsTheTransaction)
{
    stored("<label>old</label>");
    open();
    ASSERT_EQ(maapi_set_elem2(maapi, th, "new", "/depot/label"), CONFD_OK);
    device.drop();
    open();
    EXPECT_EQ(leaf("/depot/label"), "old");
}

TEST_F(DeviceTest, CommitAndDropWithoutAnUpgrade_DoNothing)
{
    stored("<label>old</label>");
    device.commit();
    device.drop();
    open();
    EXPECT_EQ(leaf("/depot/label"), "old");
}

TEST_F(DeviceTest, TransactionWithoutAnUpgrade_CannotBeLookedAt)
{
    EXPECT_THROW(device.configuration(Datastore::Transaction), std::logic_error);
    EXPECT_THROW(device.text(Datastore::Transaction), std::logic_error);
    EXPECT_EQ(bgp_test::change_lines(device), Lines{}) << "no transaction changed nothing";
}

TEST_F(DeviceTest, Changes_AreWhatTheTransactionDid)
{
    stored("<label>old</label>" + bay(1, "left") + bay(2, "left", "<note>n</note>"));
    open();
    maapi_set_elem2(maapi, th, "new", "/depot/label");
    maapi_delete(maapi, th, "/depot/bay{1 left}");
    maapi_create(maapi, th, "/depot/bay{3 right}");
    maapi_delete(maapi, th, "/depot/bay{2 left}/note");
    maapi_create(maapi, th, "/depot/shelf{gone}");
    maapi_delete(maapi, th, "/depot/shelf{gone}");
    EXPECT_EQ(bgp_test::change_lines(device), (Lines{"set /depot/label new", "delete /depot/bay{1 left}",
                                                     "delete /depot/bay{2 left}/note", "create /depot/bay{3 right}"}));
}

TEST_F(DeviceTest, WrittenText_IsReadBackAsTheSameConfiguration)
{
    stored("<label>a &lt; b</label><alarm/><free>2</free><kinds><octets>0a:00</octets><mark/></kinds>" +
           bay(1, "left", "<tag>t</tag><crate><id>1</id></crate><door><lock/></door>"));
    const std::string text = device.text(Datastore::Stored);
    Device other(depot_options());
    other.load_text(text);
    EXPECT_EQ(other.text(Datastore::Stored), text);
    open();
    EXPECT_EQ(device.text(Datastore::Transaction), text);
}

TEST_F(DeviceTest, Write_PutsTheTextIntoADescriptor)
{
    stored(bay(1, "left"));
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    device.write(Datastore::Stored, ends[1]);
    close(ends[1]);
    std::string written(65536, '\0');
    written.resize(static_cast<std::size_t>(read(ends[0], written.data(), written.size())));
    close(ends[0]);
    EXPECT_EQ(written, device.text(Datastore::Stored));
    EXPECT_THROW(device.write(Datastore::Stored, -1), bgp_platform::xml::WriteError);
}

TEST_F(DeviceTest, Validate_IsEmptyForAValidConfiguration)
{
    stored(bay(1, "left", "<door><lock/></door>"));
    open();
    EXPECT_EQ(device.validate(Datastore::Stored), "");
    EXPECT_EQ(device.validate(Datastore::Transaction), "");
}

TEST(DeviceValidation, BrokenConstraint_IsTold)
{
    Device::Options options;
    options.schema = Schema::from_modules({{"pair",
                                            "module pair { namespace \"urn:test:pair\"; prefix pair; container pair {"
                                            " leaf low { type uint32; } leaf high { type uint32; must \". >= ../low\" {"
                                            " error-message \"high is below low\"; } } } }"}});
    Device device(options);
    const UpgradeHandles upgrade = device.open_upgrade();
    ASSERT_EQ(maapi_set_elem2(upgrade.maapi_socket, upgrade.thandle, "5", "/pair/low"), CONFD_OK);
    ASSERT_EQ(maapi_set_elem2(upgrade.maapi_socket, upgrade.thandle, "4", "/pair/high"), CONFD_OK);
    EXPECT_EQ(device.validate(Datastore::Stored), "");
    EXPECT_NE(device.validate(Datastore::Transaction).find("high is below low"), std::string::npos)
        << device.validate(Datastore::Transaction);
}

TEST(DevicesTogether, EachHasItsOwnConfigurationSocketsAndCounts)
{
    Device first(depot_options());
    Device second(depot_options());
    const UpgradeHandles one = first.open_upgrade();
    const UpgradeHandles two = second.open_upgrade();
    EXPECT_EQ(maapi_create(one.maapi_socket, one.thandle, "/depot/bay{1 left}"), CONFD_OK);
    EXPECT_EQ(maapi_exists(one.maapi_socket, one.thandle, "/depot/bay{1 left}"), 1);
    EXPECT_EQ(maapi_exists(two.maapi_socket, two.thandle, "/depot/bay{1 left}"), 0);
    EXPECT_EQ(first.calls().writes(), 1U);
    EXPECT_EQ(second.calls().writes(), 0U);
    first.drop();
    EXPECT_EQ(maapi_exists(two.maapi_socket, two.thandle, "/depot/bay{1 left}"), 0) << "the other lives on";
}

TEST(DevicesTogether, LastOneMade_IsTheOneThatListensAndAnswersForTheProcess)
{
    const auto profile = [](const DeviceState* device) {
        return device == nullptr ? 0 : device->settings.user_profile;
    };
    EXPECT_EQ(Registry::instance().current(), nullptr);
    Device first;
    first.set_user_profile(1);
    {
        Device second;
        second.set_user_profile(2);
        EXPECT_EQ(profile(Registry::instance().current()), 2U);
        EXPECT_EQ(profile(Registry::instance().at_port(CONFD_PORT)), 2U);
    }
    EXPECT_EQ(profile(Registry::instance().current()), 1U);
    EXPECT_EQ(profile(Registry::instance().at_port(CONFD_PORT)), 1U);
    EXPECT_EQ(Registry::instance().at_port(1), nullptr);
}

TEST(DeviceDestroyed, ItsSocketsAreClosed)
{
    UpgradeHandles upgrade;
    {
        Device device(depot_options());
        upgrade = device.open_upgrade();
        EXPECT_EQ(maapi_exists(upgrade.maapi_socket, upgrade.thandle, "/depot"), 1);
    }
    EXPECT_EQ(maapi_exists(upgrade.maapi_socket, upgrade.thandle, "/depot"), CONFD_ERR);
    EXPECT_EQ(confd_errno, CONFD_ERR_OS);
    EXPECT_EQ(close(upgrade.maapi_socket), -1);
    EXPECT_EQ(close(upgrade.cdb_socket), -1);
    EXPECT_TRUE(Registry::instance().endpoints.empty());
}

TEST_F(DeviceTest, OpenThings_CountsEachKind)
{
    stored("<label>a text longer than fifteen</label>");
    open();
    expect_nothing_open();

    const int sock = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(CONFD_PORT);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ASSERT_EQ(cdb_connect(sock, CDB_READ_SOCKET, reinterpret_cast<const sockaddr*>(&address), sizeof address),
              CONFD_OK);
    ASSERT_EQ(cdb_start_session(sock, CDB_RUNNING), CONFD_OK);
    maapi_cursor cursor;
    ASSERT_EQ(maapi_init_cursor(maapi, th, &cursor, "/depot/bay"), CONFD_OK);
    confd_value_t value;
    ASSERT_EQ(cdb_get(sock, &value, "/depot/label"), CONFD_OK);

    const OpenThings open_things = device.open_things();
    EXPECT_EQ(open_things.cdb_sockets, 1U);
    EXPECT_EQ(open_things.cdb_sessions, 1U);
    EXPECT_EQ(open_things.cursors, 1U);
    EXPECT_EQ(open_things.values, 1U);
    EXPECT_FALSE(open_things.none());

    confd_free_value(&value);
    maapi_destroy_cursor(&cursor);
    EXPECT_EQ(cdb_close(sock), CONFD_OK);
    expect_nothing_open();
}

TEST_F(DeviceTest, ValuesOpenBeforeTheDevice_AreNotItsOwn)
{
    const confd_value_t original = text_value("x");
    confd_value_t copy;
    ASSERT_NE(confd_value_dup_to(&original, &copy), nullptr);
    const Device later(depot_options());
    EXPECT_TRUE(later.open_things().none());
    EXPECT_EQ(device.open_things().values, 1U);
    confd_free_dup_to_value(&copy);
}

TEST_F(DeviceTest, TransactionContext_NamesTheOpenTransaction)
{
    EXPECT_EQ(device.transaction_context(), nullptr);
    open();
    confd_trans_ctx* const context = device.transaction_context();
    ASSERT_NE(context, nullptr);
    EXPECT_EQ(context->thandle, th);
    device.drop();
    EXPECT_EQ(device.transaction_context(), nullptr);
}

TEST_F(DeviceTest, DataTimeout_IsRememberedAndCounted)
{
    open();
    EXPECT_EQ(device.data_timeout(), -1);
    EXPECT_EQ(confd_data_set_timeout(device.transaction_context(), 30), CONFD_OK);
    EXPECT_EQ(confd_data_set_timeout(device.transaction_context(), 60), CONFD_OK);
    EXPECT_EQ(device.data_timeout(), 60);
    EXPECT_EQ(device.data_timeout_calls(), 2U);
    confd_trans_ctx stale = *device.transaction_context();
    stale.thandle += 1;
    EXPECT_TRUE(fails(confd_data_set_timeout(&stale, 90), CONFD_ERR_NOTRANS, "confd_data_set_timeout",
                      "no transaction " + std::to_string(stale.thandle) + " on the socket"));
    EXPECT_EQ(device.data_timeout(), 60);
}

TEST_F(DeviceTest, Settings_ReachTheMiddleware)
{
    device.set_vrf_component(100, 10);
    device.set_user_profile(7);
    device.set_interfaces({in_addr{htonl(0xC0000201)}});
    const DeviceState* const current = Registry::instance().current();
    ASSERT_NE(current, nullptr);
    const bgp_platform::Settings* const state = &current->settings;
    EXPECT_EQ(state->vrf.base, 100U);
    EXPECT_EQ(state->vrf.step, 10U);
    EXPECT_EQ(state->user_profile, 7U);
    ASSERT_EQ(state->interfaces.size(), 1U);
    EXPECT_EQ(state->interfaces[0].s_addr, htonl(0xC0000201));
}

}  // namespace

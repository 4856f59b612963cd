// CDB connections and sessions: what a socket must be, where a device listens, and what happens out of turn.
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

#include "capi_device.h"

namespace {

using namespace capi_test;

bool is_open(int descriptor)
{
    char nothing = 0;
    return recv(descriptor, &nothing, 1, MSG_DONTWAIT) >= 0 || errno != EBADF;
}

class CdbConnection : public CapiTest {
protected:
    ~CdbConnection() override
    {
        for (const int descriptor : sockets_) {
            close(descriptor);
        }
    }

    int fresh_socket(int type = SOCK_STREAM)
    {
        sockets_.push_back(socket(AF_INET, type, 0));
        return sockets_.back();
    }

    static int connect_to(int descriptor, uint16_t port = CONFD_PORT, uint32_t host = INADDR_LOOPBACK,
                          int size = sizeof(sockaddr_in))
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(host);
        return cdb_connect(descriptor, CDB_READ_SOCKET, reinterpret_cast<const sockaddr*>(&address), size);
    }

private:
    std::vector<int> sockets_;
};

TEST_F(CdbConnection, SessionReadsUntilItEnds)
{
    stored("<label>west</label>");
    const int sock = fresh_socket();
    EXPECT_EQ(connect_to(sock), CONFD_OK);
    EXPECT_EQ(device.open_things().cdb_sockets, 1U);
    EXPECT_EQ(device.open_things().cdb_sessions, 0U);
    EXPECT_EQ(cdb_start_session(sock, CDB_RUNNING), CONFD_OK);
    EXPECT_EQ(device.open_things().cdb_sessions, 1U);
    EXPECT_EQ(cdb_exists(sock, "/depot/label"), 1);
    EXPECT_EQ(cdb_end_session(sock), CONFD_OK);
    EXPECT_EQ(device.open_things().cdb_sessions, 0U);
    EXPECT_TRUE(fails(cdb_exists(sock, "/depot/label"), CONFD_ERR_NOSESSION, "cdb_exists",
                      "/depot/label: no session on the socket"));
    EXPECT_EQ(cdb_start_session(sock, CDB_RUNNING), CONFD_OK) << "one after another";
    EXPECT_EQ(cdb_close(sock), CONFD_OK);
    EXPECT_FALSE(is_open(sock));
    expect_nothing_open();
}

TEST_F(CdbConnection, NoStreamSocket_IsRefused)
{
    EXPECT_TRUE(fails(connect_to(-1), CONFD_ERR_OS, "cdb_connect", "descriptor -1 is no stream socket"));
    const int datagrams = fresh_socket(SOCK_DGRAM);
    EXPECT_TRUE(fails(connect_to(datagrams), CONFD_ERR_OS, "cdb_connect",
                      "descriptor " + std::to_string(datagrams) + " is no stream socket"));
    int pipe_ends[2];
    ASSERT_EQ(pipe(pipe_ends), 0);
    EXPECT_TRUE(fails(connect_to(pipe_ends[0]), CONFD_ERR_OS, "cdb_connect",
                      "descriptor " + std::to_string(pipe_ends[0]) + " is no stream socket"));
    close(pipe_ends[0]);
    close(pipe_ends[1]);
    expect_nothing_open();
}

TEST_F(CdbConnection, WhereNoDeviceListens_IsRefused)
{
    const int sock = fresh_socket();
    const std::string refused = "Connection refused";
    EXPECT_TRUE(fails(connect_to(sock, CONFD_PORT + 1), CONFD_ERR_OS, "cdb_connect", refused));
    EXPECT_EQ(errno, ECONNREFUSED);
    EXPECT_TRUE(fails(connect_to(sock, CONFD_PORT, 0x0A000001), CONFD_ERR_OS, "cdb_connect", refused));
    EXPECT_TRUE(fails(connect_to(sock, CONFD_PORT, INADDR_LOOPBACK, 4), CONFD_ERR_OS, "cdb_connect", refused));
    EXPECT_TRUE(fails(cdb_connect(sock, CDB_DATA_SOCKET, nullptr, 0), CONFD_ERR_OS, "cdb_connect", refused));
    sockaddr_in6 ipv6{};
    ipv6.sin6_family = AF_INET6;
    EXPECT_TRUE(fails(cdb_connect(sock, CDB_DATA_SOCKET, reinterpret_cast<const sockaddr*>(&ipv6), sizeof ipv6),
                      CONFD_ERR_OS, "cdb_connect", refused));
    expect_nothing_open();
}

TEST_F(CdbConnection, OtherKindOfSocketOrDatastore_IsRefused)
{
    const int sock = fresh_socket();
    EXPECT_TRUE(fails(cdb_connect(sock, static_cast<cdb_sock_type>(1), nullptr, 0), CONFD_ERR_PROTOUSAGE, "cdb_connect",
                      "only data sockets are done"));
    ASSERT_EQ(connect_to(sock), CONFD_OK);
    EXPECT_TRUE(fails(cdb_start_session(sock, static_cast<cdb_db_type>(0)), CONFD_ERR_UNAVAILABLE, "cdb_start_session",
                      "only the running datastore is done"));
}

TEST_F(CdbConnection, ConnectedTwice_IsRefusedAndStaysConnected)
{
    const int sock = fresh_socket();
    ASSERT_EQ(connect_to(sock), CONFD_OK);
    EXPECT_TRUE(fails(connect_to(sock), CONFD_ERR_PROTOUSAGE, "cdb_connect",
                      "socket " + std::to_string(sock) + " is connected already"));
    EXPECT_EQ(cdb_start_session(sock, CDB_RUNNING), CONFD_OK);
}

// What close() alone gave back is another socket when its number comes again.
TEST_F(CdbConnection, NumberThatWasClosedAndReused_IsAFreshSocket)
{
    const int sock = fresh_socket();
    ASSERT_EQ(connect_to(sock), CONFD_OK);
    ASSERT_EQ(cdb_start_session(sock, CDB_RUNNING), CONFD_OK);
    ASSERT_EQ(close(sock), 0);
    const std::string unknown = "socket " + std::to_string(sock) + " is not connected to a device";
    EXPECT_TRUE(fails(cdb_exists(sock, "/depot"), CONFD_ERR_OS, "cdb_exists", "/depot: " + unknown));
    ASSERT_EQ(fresh_socket(), sock) << "the lowest free number";
    EXPECT_TRUE(fails(cdb_exists(sock, "/depot"), CONFD_ERR_OS, "cdb_exists", "/depot: " + unknown));
    EXPECT_EQ(connect_to(sock), CONFD_OK);
    EXPECT_EQ(device.open_things().cdb_sessions, 0U) << "the session was the other socket's";
    EXPECT_EQ(cdb_start_session(sock, CDB_RUNNING), CONFD_OK);
    EXPECT_EQ(cdb_exists(sock, "/depot"), 1);
    EXPECT_EQ(cdb_close(sock), CONFD_OK);
    expect_nothing_open();
}

TEST_F(CdbConnection, NumberOfADroppedTransaction_IsAFreshSocket)
{
    open();
    const int maapi_before = maapi;
    device.drop();
    const int sock = fresh_socket();
    ASSERT_EQ(sock, maapi_before) << "the lowest free number";
    EXPECT_EQ(connect_to(sock), CONFD_OK);
    EXPECT_EQ(cdb_start_session(sock, CDB_RUNNING), CONFD_OK);
    open();
    EXPECT_NE(maapi, sock);
    EXPECT_EQ(cdb_exists(sock, "/depot"), 1);
}

// The upgrade's end must not close what has the number of a socket that the program closed itself.
TEST_F(CdbConnection, EndOfTheUpgrade_LeavesOtherSocketsOpen)
{
    open();
    ASSERT_EQ(close(maapi), 0);
    const int sock = fresh_socket();
    ASSERT_EQ(sock, maapi);
    device.drop();
    EXPECT_TRUE(is_open(sock));
}

TEST_F(CdbConnection, SecondSessionOnASocket_IsRefused)
{
    const int sock = fresh_socket();
    ASSERT_EQ(connect_to(sock), CONFD_OK);
    ASSERT_EQ(cdb_start_session(sock, CDB_RUNNING), CONFD_OK);
    EXPECT_TRUE(fails(cdb_start_session(sock, CDB_RUNNING), CONFD_ERR_BADSTATE, "cdb_start_session",
                      "a session is open already"));
    EXPECT_EQ(device.open_things().cdb_sessions, 1U);
}

TEST_F(CdbConnection, EndWithoutASession_IsAnError)
{
    const int sock = fresh_socket();
    ASSERT_EQ(connect_to(sock), CONFD_OK);
    EXPECT_TRUE(fails(cdb_end_session(sock), CONFD_ERR_NOEXISTS, "cdb_end_session", "no session on the socket"));
    EXPECT_EQ(device.open_things().cdb_sockets, 1U);
}

TEST_F(CdbConnection, SocketNeverConnected_IsAnErrorOfTheSystem)
{
    const int sock = fresh_socket();
    const std::string unknown = "socket " + std::to_string(sock) + " is not connected to a device";
    EXPECT_TRUE(fails(cdb_start_session(sock, CDB_RUNNING), CONFD_ERR_OS, "cdb_start_session", unknown));
    EXPECT_EQ(errno, EBADF);
    EXPECT_TRUE(fails(cdb_end_session(sock), CONFD_ERR_OS, "cdb_end_session", unknown));
    EXPECT_TRUE(
        fails(cdb_num_instances(sock, "/depot/bay"), CONFD_ERR_OS, "cdb_num_instances", "/depot/bay: " + unknown));
}

TEST_F(CdbConnection, Close_ClosesTheDescriptorAlsoWhenItReportsAnError)
{
    const int never_connected = fresh_socket();
    EXPECT_TRUE(fails(cdb_close(never_connected), CONFD_ERR_OS, "cdb_close",
                      "socket " + std::to_string(never_connected) + " is not connected to a device"));
    EXPECT_FALSE(is_open(never_connected));

    const int connected = fresh_socket();
    ASSERT_EQ(connect_to(connected), CONFD_OK);
    ASSERT_EQ(cdb_start_session(connected, CDB_RUNNING), CONFD_OK);
    device.fault_plan().fail(Function::cdb_close);
    EXPECT_TRUE(fails(cdb_close(connected), CONFD_ERR_INTERNAL, "cdb_close", "as planned"));
    EXPECT_FALSE(is_open(connected));
    expect_nothing_open();
}

TEST_F(CdbConnection, FailedConnect_LeavesTheSocketUnknown)
{
    const int sock = fresh_socket();
    device.fault_plan().fail(Function::cdb_connect);
    EXPECT_TRUE(fails(connect_to(sock), CONFD_ERR_INTERNAL, "cdb_connect", "as planned"));
    EXPECT_TRUE(is_open(sock)) << "the caller's to close";
    expect_nothing_open();
}

TEST_F(CdbConnection, Namespace_MustBeOfAModule)
{
    open();
    const auto depot = static_cast<int>(confd_str2hash(kDepotNamespace));
    EXPECT_EQ(cdb_set_namespace(cdb, depot), CONFD_OK);
    EXPECT_EQ(maapi_set_namespace(maapi, th, depot), CONFD_OK);
    EXPECT_TRUE(
        fails(cdb_set_namespace(cdb, 17), CONFD_ERR_NOEXISTS, "cdb_set_namespace", "no module has namespace 17"));
    EXPECT_TRUE(fails(maapi_set_namespace(maapi, th, 17), CONFD_ERR_NOEXISTS, "maapi_set_namespace",
                      "no module has namespace 17"));
    EXPECT_EQ(cdb_exists(cdb, "/shared/from-depot"), 0) << "the namespace set before stays";
}

TEST_F(CdbConnection, Namespace_HoldsForItsSocketAlone)
{
    open();
    ASSERT_EQ(cdb_set_namespace(cdb, static_cast<int>(confd_str2hash("urn:test:annex"))), CONFD_OK);
    EXPECT_EQ(cdb_exists(cdb, "/shared/from-annex"), 0);
    EXPECT_EQ(maapi_exists(maapi, th, "/shared/from-annex"), CONFD_ERR);
    EXPECT_EQ(confd_errno, CONFD_ERR_BADPATH);
    EXPECT_EQ(cdb_set_namespace(cdb, 82011741), CONFD_OK) << "set again";
    EXPECT_EQ(cdb_exists(cdb, "/shared/from-annex"), CONFD_ERR);
}

TEST_F(CdbConnection, SocketOfTheOtherKind_IsRefused)
{
    open();
    EXPECT_TRUE(fails(cdb_exists(maapi, "/depot"), CONFD_ERR_PROTOUSAGE, "cdb_exists",
                      "/depot: the socket is of the other kind"));
    EXPECT_TRUE(fails(maapi_exists(cdb, th, "/depot"), CONFD_ERR_PROTOUSAGE, "maapi_exists",
                      "/depot: the socket is of the other kind"));
}

TEST_F(CdbConnection, TwoDevices_EachAnswerOnTheirPort)
{
    Device other(depot_options(CONFD_PORT + 1));
    stored("<label>here</label>");
    other.load_text(depot_document("<label>there</label>"));
    for (const auto& [port, label] :
         {std::pair<uint16_t, const char*>{CONFD_PORT, "here"}, {CONFD_PORT + 1, "there"}}) {
        const int sock = fresh_socket();
        ASSERT_EQ(connect_to(sock, port), CONFD_OK);
        ASSERT_EQ(cdb_start_session(sock, CDB_RUNNING), CONFD_OK);
        confd_value_t value;
        ASSERT_EQ(cdb_get(sock, &value, "/depot/label"), CONFD_OK);
        EXPECT_EQ(taken(&value), label);
    }
    EXPECT_EQ(device.open_things().cdb_sessions, 1U);
    EXPECT_EQ(other.open_things().cdb_sessions, 1U);
}

}  // namespace

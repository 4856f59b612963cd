// CDB connections and sessions.
#include <arpa/inet.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "capi/call.h"
#include "confd_cdb.h"
#include "registry.h"

using namespace bgp_platform;
using namespace bgp_platform::capi;

namespace {

// The device that listens at an address, or null: a device listens on the loopback address only.
DeviceState* device_at(const sockaddr* address, int size)
{
    sockaddr_in ipv4{};
    if (address == nullptr || address->sa_family != AF_INET || size < static_cast<int>(sizeof ipv4)) {
        return nullptr;
    }
    std::memcpy(&ipv4, address, sizeof ipv4);
    return ntohl(ipv4.sin_addr.s_addr) == INADDR_LOOPBACK ? Registry::instance().at_port(ntohs(ipv4.sin_port))
                                                          : nullptr;
}

bool is_stream_socket(int descriptor)
{
    int type = 0;
    socklen_t size = sizeof type;
    return getsockopt(descriptor, SOL_SOCKET, SO_TYPE, &type, &size) == 0 && type == SOCK_STREAM;
}

int fail_connect(int code, std::string_view detail)
{
    return fail_call(name_of(Function::cdb_connect), code, {}, detail);
}

int connect(int sock, bool data, const sockaddr* address, int size)
{
    if (!admitted("cdb_connect")) {
        return CONFD_ERR;
    }
    auto& endpoints = Registry::instance().endpoints;
    if (!data) {
        return fail_connect(CONFD_ERR_PROTOUSAGE, "only data sockets are done");
    }
    if (!is_stream_socket(sock)) {
        return fail_connect(CONFD_ERR_OS, "descriptor " + std::to_string(sock) + " is no stream socket");
    }
    const auto known = endpoints.find(sock);
    if (known != endpoints.end() && known->second.socket == socket_behind(sock)) {
        return fail_connect(CONFD_ERR_PROTOUSAGE, "socket " + std::to_string(sock) + " is connected already");
    }
    DeviceState* const device = device_at(address, size);
    if (device == nullptr) {
        errno = ECONNREFUSED;
        return fail_connect(CONFD_ERR_OS, std::strerror(ECONNREFUSED));
    }
    endpoints.insert_or_assign(sock, Endpoint{Endpoint::Kind::Cdb, device, true, socket_behind(sock)});
    const int result = run_call(Function::cdb_connect, {sock}, {}, [](Call&) { return CONFD_OK; });
    if (result != CONFD_OK) {
        endpoints.erase(sock);
    }
    return result;
}

}  // namespace

// A program in C may hand over any number as one of the enumerations.
#define BGP_PLATFORM_ANY_NUMBER __attribute__((no_sanitize("enum")))

BGP_PLATFORM_ANY_NUMBER int cdb_connect(int sock, enum cdb_sock_type type, const struct sockaddr* srv, int srv_sz)
{
    const bool data = type == CDB_DATA_SOCKET;
    return unless_memory_ends([=] { return connect(sock, data, srv, srv_sz); },
                              [] { return fail_connect(CONFD_ERR_MALLOC, {}); });
}

BGP_PLATFORM_ANY_NUMBER int cdb_start_session(int sock, enum cdb_db_type db)
{
    return run_call(Function::cdb_start_session, {sock}, {}, [running = db == CDB_RUNNING](Call& call) {
        if (call.endpoint().session) {
            return call.fail(CONFD_ERR_BADSTATE, "a session is open already");
        }
        if (!running) {
            return call.fail(CONFD_ERR_UNAVAILABLE, "only the running datastore is done");
        }
        call.endpoint().session = true;
        return CONFD_OK;
    });
}

int cdb_end_session(int sock)
{
    return run_call(Function::cdb_end_session, {sock}, {}, [](Call& call) {
        if (!call.endpoint().session) {
            return call.fail(CONFD_ERR_NOEXISTS, "no session on the socket");
        }
        call.endpoint().session = false;
        return CONFD_OK;
    });
}

// The descriptor is closed whatever the call reports, one that was never connected included; but not for a thread that
// is refused, which may not touch what is another's.
int cdb_close(int sock)
{
    if (!admitted("cdb_close")) {
        return CONFD_ERR;
    }
    const int result = run_call(Function::cdb_close, {sock}, {}, [](Call&) { return CONFD_OK; });
    Registry::instance().endpoints.erase(sock);
    close(sock);
    return result;
}

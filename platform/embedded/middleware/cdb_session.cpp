// Private CDB read sessions over the C API, as the device's middleware opens them for daemon code.
#include <arpa/inet.h>
#include <sys/socket.h>

#include "nz_confd_cdb_session.h"

namespace {

constexpr int kNoSocket = -1;

bool connect_to_confd(int socket)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(CONFD_PORT);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return cdb_connect(socket, CDB_READ_SOCKET, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) ==
           CONFD_OK;
}

int open_session(cdb_db_type db, bool start)
{
    const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
    if (socket < 0) {
        return kNoSocket;
    }
    if (!connect_to_confd(socket) || (start && cdb_start_session(socket, db) != CONFD_OK)) {
        cdb_close(socket);
        return kNoSocket;
    }
    return socket;
}

}  // namespace

NzConfdInterface* NzConfdInterface::FromTransaction(const confd_trans_ctx* transaction)
{
    return transaction == nullptr ? nullptr : static_cast<NzConfdInterface*>(transaction->t_opaque);
}

NzConfdCdbSessionBase::NzConfdCdbSessionBase(NzConfdInterface* confd, cdb_db_type db, bool start)
    : socket_(confd == nullptr ? kNoSocket : open_session(db, start))
{
}

NzConfdCdbSessionBase::~NzConfdCdbSessionBase()
{
    if (socket_ >= 0) {
        cdb_close(socket_);
    }
}

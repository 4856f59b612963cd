// Private CDB sessions, the keepalive of long transactions, and the release of values.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/time.h>
#include <zlog.h>

#include "bgp_update/bgp_utils.h"
#include "confd/fault.h"
#include "confd_cdb.h"
#include "confd_dp.h"
#include "nzmw_trace.h"

namespace {

constexpr char kSource[] = "src/daemon/bgp_utils";
constexpr int kKeepaliveLevel = 12;
constexpr double kKeepaliveShare = 0.8;  // of the timeout: reset well before it is over

}  // namespace

int64_t BgpUtils::last_timeout = 0;

int32_t BgpUtils::StartCdbSession(int32_t sock)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(CONFD_PORT);
    if (inet_pton(AF_INET, "127.0.0.1", &address.sin_addr) != 1) {
        confd::fault("StartCdbSession", kSource, 397, "Could not convert 127.0.0.1 to IPv4");
    }
    if (cdb_connect(sock, CDB_READ_SOCKET, reinterpret_cast<const sockaddr*>(&address), sizeof address) != CONFD_OK ||
        cdb_start_session(sock, CDB_RUNNING) != CONFD_OK) {
        cdb_close(sock);
        return -1;
    }
    return 0;
}

int32_t BgpUtils::EndCdbSession(int32_t sock)
{
    cdb_end_session(sock);
    cdb_close(sock);
    return 0;
}

int BgpUtils::SetMaapiKeepalive(confd_trans_ctx* tctx, double timeout)
{
    timeval now{};
    gettimeofday(&now, nullptr);
    const nzmw_trace_category_t category = nzmw_trace_register_category("bgp-app");
    static const auto interval = static_cast<int32_t>(timeout * kKeepaliveShare);
    if (now.tv_sec - last_timeout < interval) {
        return 0;
    }
    zlog(category, kSource, sizeof kSource - 1, "SetMaapiKeepalive", sizeof "SetMaapiKeepalive" - 1, 384,
         kKeepaliveLevel, "Setting confd_data_set_timeout %d", interval);
    const int result = confd_data_set_timeout(tctx, interval);
    last_timeout = now.tv_sec;
    return result;
}

void BgpUtils::FreeConfdValues(confd_value* values, int count)
{
    for (int i = 0; i < count; ++i) {
        confd_free_dup_to_value(&values[i]);
    }
}

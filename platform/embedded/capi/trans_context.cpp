// Transaction contexts, as a daemon's callbacks get them.
#include "capi/call.h"
#include "confd_dp.h"

using namespace bgp_platform::capi;

int confd_data_set_timeout(struct confd_trans_ctx* tctx, int timeout_secs)
{
    return run_call(Function::confd_data_set_timeout, {tctx->fd, tctx->thandle}, {}, [timeout_secs](Call& call) {
        call.arguments(std::to_string(timeout_secs));
        call.device().data_timeout = timeout_secs;
        ++call.device().data_timeout_calls;
        return CONFD_OK;
    });
}

// The namespace of a session or transaction: under which a path's first element is looked up when it has no prefix.
#include "capi/call.h"
#include "confd_cdb.h"
#include "confd_maapi.h"

using namespace bgp_platform;
using namespace bgp_platform::capi;

namespace {

int set_namespace(Call& call, int hashed_ns)
{
    const schema::Module* const module = call.device().schema->module_by_hash(static_cast<uint32_t>(hashed_ns));
    if (module == nullptr) {
        return call.fail(CONFD_ERR_NOEXISTS, "no module has namespace " + std::to_string(hashed_ns));
    }
    call.endpoint().name_space = module;
    return CONFD_OK;
}

}  // namespace

int cdb_set_namespace(int sock, int hashed_ns)
{
    return run_call(Function::cdb_set_namespace, {sock}, {}, [hashed_ns](Call& call) {
        call.arguments(std::to_string(hashed_ns));
        return set_namespace(call, hashed_ns);
    });
}

int maapi_set_namespace(int sock, int thandle, int hashed_ns)
{
    return run_call(Function::maapi_set_namespace, {sock, thandle}, {}, [hashed_ns](Call& call) {
        call.arguments(std::to_string(hashed_ns));
        return set_namespace(call, hashed_ns);
    });
}

#include "sweep/errors.h"

#include <iterator>
#include <string_view>

#include "confd_lib.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::capi::Effect;
using bgp_platform::capi::Function;
using bgp_platform::capi::PlannedFailure;

// What any call can meet: ConfD's own trouble, a misused or lost connection.
constexpr int kAlways[] = {CONFD_ERR_INTERNAL, CONFD_ERR_PROTOUSAGE, CONFD_ERR_OS};

constexpr int kRead[] = {CONFD_ERR_NOEXISTS, CONFD_ERR_BADPATH, CONFD_ERR_EXTERNAL, CONFD_ERR_TIMEOUT};
constexpr int kWrite[] = {CONFD_ERR_NOEXISTS, CONFD_ERR_BADPATH, CONFD_ERR_ACCESS_DENIED, CONFD_ERR_LOCKED,
                          CONFD_ERR_INUSE};

struct OwnCodes {
    Function function;
    std::vector<int> codes;
};

// What a function can fail with besides the codes of its kind.
const std::vector<OwnCodes>& own_codes()
{
    static const std::vector<OwnCodes> own = {
        {Function::cdb_connect, {CONFD_ERR_UNAVAILABLE}},
        {Function::cdb_start_session, {CONFD_ERR_LOCKED, CONFD_ERR_TIMEOUT}},
        {Function::cdb_set_namespace, {CONFD_ERR_NOEXISTS}},
        {Function::maapi_set_namespace, {CONFD_ERR_NOEXISTS}},
        {Function::cdb_get_enum_value, {CONFD_ERR_BADTYPE}},
        {Function::cdb_get_u_int16, {CONFD_ERR_BADTYPE}},
        {Function::maapi_get_enum_value_elem, {CONFD_ERR_BADTYPE}},
        {Function::maapi_get_u_int32_elem, {CONFD_ERR_BADTYPE}},
        {Function::maapi_get_u_int16_elem, {CONFD_ERR_BADTYPE}},
        {Function::maapi_create, {CONFD_ERR_ALREADY_EXISTS, CONFD_ERR_NOTCREATABLE}},
        {Function::maapi_delete, {CONFD_ERR_NOTDELETABLE}},
        {Function::maapi_set_elem, {CONFD_ERR_BADTYPE, CONFD_ERR_NOT_WRITABLE}},
        {Function::maapi_set_elem2, {CONFD_ERR_BADTYPE, CONFD_ERR_NOT_WRITABLE}},
        {Function::maapi_set_values, {CONFD_ERR_BADTYPE, CONFD_ERR_NOT_WRITABLE}},
        {Function::maapi_move, {CONFD_ERR_ALREADY_EXISTS, CONFD_ERR_NOTMOVABLE}},
        {Function::confd_data_set_timeout, {CONFD_ERR_NOTRANS}},
    };
    return own;
}

bool is_maapi(Function function)
{
    return std::string_view(bgp_platform::capi::name_of(function)).substr(0, 6) == "maapi_";
}

}  // namespace

std::vector<PlannedFailure> failures_of(Function function)
{
    std::vector<int> codes(std::begin(kAlways), std::end(kAlways));
    codes.push_back(is_maapi(function) ? CONFD_ERR_NOTRANS : CONFD_ERR_NOSESSION);
    if (bgp_platform::capi::effect_of(function) == Effect::Read) {
        codes.insert(codes.end(), std::begin(kRead), std::end(kRead));
    } else if (bgp_platform::capi::effect_of(function) == Effect::Write) {
        codes.insert(codes.end(), std::begin(kWrite), std::end(kWrite));
    }
    for (const OwnCodes& own : own_codes()) {
        if (own.function == function) {
            codes.insert(codes.end(), own.codes.begin(), own.codes.end());
        }
    }
    std::vector<PlannedFailure> failures;
    failures.reserve(codes.size() + 1);
    for (const int code : codes) {
        failures.push_back({code, CONFD_ERR});
    }
    failures.push_back(PlannedFailure::end_of_file());
    return failures;
}

}  // namespace bgp_rehearse

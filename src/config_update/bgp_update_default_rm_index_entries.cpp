// How each kind of row moves to another index of the BGP router entity: which keys change, and which leaves follow.
#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <utility>

#include "bgp_update/rm_index_entries.h"
#include "conf_updt_log.h"
#include "confd/fault.h"
#include "confd/mib_values.h"
#include "confd/transaction.h"
#include "confd/type_check.h"
#include "confd/value.h"

namespace {

constexpr char kSource[] = "src/config_update/bgp_update_default_rm_index";
constexpr std::size_t kPathSize = 512;
constexpr int32_t kKeysLookedAt = 3;  // the most that a class looks at
constexpr int32_t kBgpProtocolTag = 555337807;

confd_value_t absent()
{
    confd_value_t value{};
    CONFD_SET_NOEXISTS(&value);
    return value;
}

// The number moved by the distance from one index to the other, downwards too.
uint32_t shifted(uint32_t number, uint32_t old_index, int new_index)
{
    return number + (static_cast<uint32_t>(new_index) - old_index);
}

// The keys of a row as text, under another index: what stands behind the number and the blank stays, up to a tab or a
// line end. A text of another form has nothing there.
std::string under_index(const confd_value_t& keys, int new_index)
{
    unsigned int old_index = 0;
    std::string rest(std::size_t{CONFD_GET_BUFSIZE(&keys)} + 1, '\0');
    // cppcheck-suppress invalidscanf ; there is room for the whole text
    if (std::sscanf(CONFD_GET_CBUFPTR(&keys), "%u %[^\t\n]", &old_index, rest.data()) != 2) {
        rest.clear();
    }
    return std::to_string(new_index) + ' ' + rest.c_str();
}

}  // namespace

BaseEntry::BaseEntry(int32_t maapi_socket, int32_t thandle, std::string table_path, const confd_value_t* keys,
                     int32_t key_count)
try : log_(get_conf_updt_log_handle()), maapi_socket_(maapi_socket), thandle_(thandle),
    table_path_(std::move(table_path)),
    entry_keys_(static_cast<std::size_t>(std::max(key_count, kKeysLookedAt)), absent()), key_count_(key_count) {
    for (int32_t i = 0; i < key_count_; ++i) {
        confd_value_dup_to(&keys[i], &entry_keys_[static_cast<std::size_t>(i)]);
    }
    entry_path_ = current_path();
}
BGP_FAULT_ON_EXCEPTION(__func__)

BaseEntry::~BaseEntry()
{
    for (confd_value_t& key : entry_keys_) {
        confd_free_dup_to_value(&key);
    }
}

std::string BaseEntry::current_path() const
{
    try {
        char path[kPathSize] = "";
        confd_format_keypath(path, sizeof path, "%s{%*x}", table_path_.c_str(), key_count_, entry_keys_.data());
        return path;
    }
    BGP_FAULT_ON_EXCEPTION(__func__)
}

void BaseEntry::log_update() const
{
    nzmw_log_debug(log_, "Updating path: %s\n", entry_path_.c_str());
}

void BaseEntry::set_key(int position, uint32_t number)
{
    confd_value_t* const key = &entry_keys_[static_cast<std::size_t>(position)];
    confd_free_dup_to_value(key);
    CONFD_SET_UINT32(key, number);
}

bool BaseEntry::move()
{
    const confd::Transaction transaction{maapi_socket_, thandle_};
    if (transaction.move(entry_keys_.data(), key_count_, "%s", entry_path_.c_str()) == CONFD_OK) {
        return true;
    }
    nzmw_log_debug(log_, "Failed to move path: %s (err: %s)\n", entry_path_.c_str(), confd_lasterr());
    return false;
}

bool BaseEntry::move_to_index(int new_index)
{
    log_update();
    set_key(0, static_cast<uint32_t>(new_index));
    return move();
}

void BaseEntry::set_index(const char* signature, const char* leaf, int new_index) const
{
    const confd::Transaction transaction{maapi_socket_, thandle_};
    const std::string path = current_path();

    confd_value_t temp;
    CONFD_SET_UINT32(&temp, static_cast<uint32_t>(new_index));
    if (transaction.set(&temp, leaf, path.c_str()) != CONFD_OK) {
        // Kept although it cannot hold, so that the upgrade stops here: a row that has moved must not stay with the
        // index that it had.
        BGP_REQUIRE_TYPE_FOR(signature, __LINE__, &temp, C_INT32);
        nzmw_log_debug(log_, "Failed set index %d to path %s (err: %s)\n", CONFD_GET_INT32(&temp), path.c_str(),
                       confd_lasterr());
    }
}

int32_t BaseEntry::MoveEntry(uint32_t /*old_index*/, int new_index)
{
    move_to_index(new_index);
    return 0;
}

int32_t RtmMjEntry::MoveEntry(uint32_t /*old_index*/, int new_index)
{
    BGP_REQUIRE_TYPE(__LINE__, &entry_keys_[2], C_ENUM_VALUE);
    const int32_t partner = CONFD_GET_ENUM_VALUE(&entry_keys_[2]);
    if (partner != mib::kPartnerBgp) {
        nzmw_log_debug(log_, "Not a BGP slave partner: %u\n", static_cast<uint32_t>(partner));
        return 0;
    }
    log_update();
    set_key(1, static_cast<uint32_t>(new_index));
    move();
    return 0;
}

int32_t RtmRedistEntry::MoveEntry(uint32_t old_index, int new_index)
{
    const confd::Transaction transaction{maapi_socket_, thandle_};

    confd::Value temp;
    if (transaction.get(&temp, "%s/rtmRedistInfoDest", entry_path_.c_str()) != CONFD_OK) {
        nzmw_log_debug(log_, "Failed to get rtmRedistInfoDest for path: %s (err: %s)\n", entry_path_.c_str(),
                       confd_lasterr());
        return 0;
    }
    BGP_REQUIRE_TYPE(__LINE__, &temp, C_ENUM_VALUE);
    if (CONFD_GET_ENUM_VALUE(&temp) != mib::kRedistIntoBgp) {
        nzmw_log_debug(log_, "Not a BGP redist dest: %d\n", CONFD_GET_ENUM_VALUE(&temp));
        return 0;
    }
    log_update();
    BGP_REQUIRE_TYPE(__LINE__, &entry_keys_[1], C_UINT32);
    set_key(1, shifted(CONFD_GET_UINT32(&entry_keys_[1]), old_index, new_index));
    move();
    return 0;
}

int32_t RtmRedistProtocolHiddenEntry::MoveEntry(uint32_t old_index, int new_index)
{
    const confd::Transaction transaction{maapi_socket_, thandle_};

    confd::Value temp;
    if (transaction.get(&temp, "%s/protocol-xmltag", entry_path_.c_str()) != CONFD_OK) {
        nzmw_log_debug(log_, "Failed to get protocol-xmltag for path: %s (err: %s)\n", entry_path_.c_str(),
                       confd_lasterr());
        return 0;
    }
    BGP_REQUIRE_TYPE(__LINE__, &temp, C_INT32);
    if (CONFD_GET_INT32(&temp) != kBgpProtocolTag) {
        nzmw_log_debug(log_, "Not BGP redist protocol tag: %d\n", CONFD_GET_INT32(&temp));
        return 0;
    }
    log_update();
    BGP_REQUIRE_TYPE(__LINE__, &entry_keys_[1], C_UINT32);
    set_key(1, shifted(CONFD_GET_UINT32(&entry_keys_[1]), old_index, new_index));
    if (move()) {
        set_index(__PRETTY_FUNCTION__, "%s/protocol-index", new_index);
    }
    return 0;
}

int32_t BgpPeerEntry::MoveEntry(uint32_t /*old_index*/, int new_index)
{
    if (move_to_index(new_index)) {
        set_index(__PRETTY_FUNCTION__, "%s/bgpPeerLocalNm", new_index);
    }
    return 0;
}

int32_t BgpNmEntityEntry::MoveEntry(uint32_t /*old_index*/, int new_index)
{
    if (move_to_index(new_index)) {
        set_index(__PRETTY_FUNCTION__, "%s/bgpNmEntRmIndex", new_index);
    }
    return 0;
}

int32_t BgpNmListenEntry::MoveEntry(uint32_t /*old_index*/, int new_index)
{
    const auto index = static_cast<uint32_t>(new_index);

    log_update();
    BGP_REQUIRE_TYPE(__LINE__, &entry_keys_[0], C_UINT32);
    BGP_REQUIRE_TYPE(__LINE__, &entry_keys_[1], C_UINT32);
    const bool of_index = CONFD_GET_UINT32(&entry_keys_[1]) == CONFD_GET_UINT32(&entry_keys_[0]);
    set_key(1, of_index ? index : index + 1);
    set_key(0, index);
    move();
    return 0;
}

int32_t BgpPeerEntryGlobalHiddenEntry::MoveEntry(uint32_t /*old_index*/, int new_index)
try {
    if (!move_to_index(new_index)) {
        return 0;
    }
    const confd::Transaction transaction{maapi_socket_, thandle_};
    const std::string path = current_path();

    confd::Value temp;
    if (transaction.get(&temp, "%s/keys", path.c_str()) != CONFD_OK) {
        nzmw_log_debug(log_, "Failed read path %s/keys (err: %s)\n", path.c_str(), confd_lasterr());
        return 0;
    }
    BGP_REQUIRE_TYPE(__LINE__, &temp, C_BUF);
    const std::string keys = under_index(temp, new_index);
    temp.release();
    if (transaction.set_text(keys.c_str(), "%s/keys", path.c_str()) != CONFD_OK) {
        nzmw_log_debug(log_, "Failed set val %s to path %s/keys (err: %s)\n", keys.c_str(), path.c_str(),
                       confd_lasterr());
    }
    return 0;
}
BGP_FAULT_ON_EXCEPTION("BgpPeerEntryGlobalHiddenEntry::MoveEntry")

// Memory that runs out in a call of the C API: CONFD_ERR with CONFD_ERR_MALLOC, no exception, nothing left to give back,
// and nothing half-written. Each allocation of each function is refused once, then it and every later one.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>
#include <new>
#include <random>
#include <set>
#include <utility>

#include "capi_device.h"

namespace {

std::size_t countdown = 0;  // allocations until one is refused; 0: none is
bool all_later = false;     // refuse every one behind it too
std::size_t refusals = 0;
std::ptrdiff_t blocks = 0;  // in use

bool refused()
{
    if (countdown == 0) {
        return false;
    }
    if (countdown > 1) {
        --countdown;
        return false;
    }
    countdown = all_later ? 1 : 0;
    ++refusals;
    return true;
}

}  // namespace

#if defined(__SANITIZE_ADDRESS__)  // which keeps its own malloc
#define BGP_TEST_SANITIZED_MEMORY
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define BGP_TEST_SANITIZED_MEMORY
#endif
#endif

#if defined(BGP_TEST_SANITIZED_MEMORY)
#define BGP_TEST_MALLOC std::malloc
static constexpr std::size_t kBlocksOfTheCopy = 1;  // that can be refused, below
#else
#define BGP_TEST_MALLOC __libc_malloc
static constexpr std::size_t kBlocksOfTheCopy = 3;

extern "C" {

void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);

void* malloc(size_t size)
{
    return refused() ? nullptr : __libc_malloc(size);
}

void* calloc(size_t count, size_t size)
{
    return refused() ? nullptr : __libc_calloc(count, size);
}

}  // extern "C"
#endif

void* operator new(std::size_t size)
{
    void* const block = refused() ? nullptr : BGP_TEST_MALLOC(size == 0 ? 1 : size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    ++blocks;
    return block;
}

void operator delete(void* block) noexcept
{
    blocks -= block == nullptr ? 0 : 1;
    std::free(block);
}

void operator delete(void* block, std::size_t /*size*/) noexcept
{
    operator delete(block);
}

namespace {

using namespace capi_test;

// One device with an open upgrade, made anew for each refusal.
class Attempt {
public:
    Attempt()
    {
        device.load_text(depot_document(
            "<label>a label longer than fifteen letters</label>" + bay(1, "left", "<note>first bay</note>") +
            bay(2, "left",
                "<note>a note that is longer than fifteen</note><tag>some tag of more letters</tag><tag>b</tag>"
                "<door><lock/></door><crate><id>7</id><content>tea</content></crate>") +
            "<port><address>0a:00:00:01:0a:00:00:01:0a:00:00:01:0a:00:00:01:01</address></port>"
            "<free>1</free><free>2</free><kinds><u16>3</u16><u32>4</u32></kinds>"));
        const UpgradeHandles upgrade = device.open_upgrade();
        cdb = upgrade.cdb_socket;
        maapi = upgrade.maapi_socket;
        th = upgrade.thandle;
    }

    std::string transaction() const { return device.text(Datastore::Transaction); }

    Device device{depot_options()};
    int cdb = -1;
    int maapi = -1;
    int th = -1;
};

// CONFD_OK for the number that a call should give.
int wanted(int number, int result)
{
    return result == number ? CONFD_OK : result;
}

int given_back(int result, confd_value_t* value)
{
    if (result == CONFD_OK) {
        confd_free_value(value);
    }
    return result;
}

struct Case {
    const char* function;
    std::function<int(Attempt&)> call;
    std::vector<std::function<int(Attempt&)>> rows = {};  // of several writes: those that may be done without the rest
};

template <std::size_t n>
int read_values(Attempt& at, confd_tag_value_t (&values)[n], const char* path)
{
    const int result = cdb_get_values(at.cdb, values, n, path);
    for (confd_tag_value_t& value : values) {
        confd_free_value(&value.v);
    }
    return result;
}

template <std::size_t n>
int write_values(Attempt& at, const confd_tag_value_t (&values)[n], const char* path)
{
    return maapi_set_values(at.maapi, at.th, values, n, path);
}

confd_tag_value_t tagged(const char* name, confd_value_t value)
{
    return {{confd_str2hash(name), 0}, value};
}

confd_tag_value_t begin(const char* name)
{
    confd_tag_value_t value;
    CONFD_SET_TAG_XMLBEGIN(&value, confd_str2hash(name), 0);
    return value;
}

confd_tag_value_t begin_of_deletion(const char* name)
{
    confd_tag_value_t value;
    CONFD_SET_TAG_XMLBEGINDEL(&value, confd_str2hash(name), 0);
    return value;
}

confd_tag_value_t end(const char* name)
{
    confd_tag_value_t value;
    CONFD_SET_TAG_XMLEND(&value, confd_str2hash(name), 0);
    return value;
}

int write_shelf(Attempt& at)
{
    const confd_tag_value_t values[] = {begin("shelf"), tagged("name", text_value("a shelf with a long name")),
                                        tagged("depth", u32(3)), end("shelf")};
    return write_values(at, values, "/depot");
}

// A row of every kind, below a label: two entries of their own and a deletion.
int write_much(Attempt& at)
{
    confd_value_t tags[] = {text_value("one tag with a long text"), text_value("another")};
    confd_value_t list;
    CONFD_SET_LIST(&list, tags, 2);
    const confd_tag_value_t values[] = {begin("shelf"),
                                        tagged("name", text_value("a shelf with a long name")),
                                        tagged("depth", u32(3)),
                                        end("shelf"),
                                        begin("bay"),
                                        tagged("number", u32(9)),
                                        tagged("side", enumeration(2)),
                                        tagged("note", text_value("a new note of many letters")),
                                        tagged("tag", list),
                                        end("bay")};
    return write_values(at, values, "/depot");
}

int delete_bay(Attempt& at)
{
    const confd_tag_value_t values[] = {begin_of_deletion("bay"), tagged("number", u32(2)),
                                        tagged("side", enumeration(1)), end("bay")};
    return write_values(at, values, "/depot");
}

int connect_and_read(Attempt& at)
{
    (void)at;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(CONFD_PORT);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const int sock = socket(AF_INET, SOCK_STREAM, 0);
    int result = cdb_connect(sock, CDB_READ_SOCKET, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    if (result != CONFD_OK) {
        close(sock);
        return result;
    }
    result = cdb_start_session(sock, CDB_RUNNING);
    result = result == CONFD_OK ? wanted(1, cdb_exists(sock, "/depot/label")) : result;
    result = result == CONFD_OK ? cdb_end_session(sock) : result;
    const int closed = cdb_close(sock);
    return result == CONFD_OK ? closed : result;
}

int walk(Attempt& at, bool find)
{
    maapi_cursor cursor;
    const char* const list = find ? "/depot/port" : "/depot/bay";
    int result = maapi_init_cursor(at.maapi, at.th, &cursor, list);
    confd_value_t key = octets("a");
    if (result == CONFD_OK && find) {
        result = maapi_find_next(&cursor, CONFD_FIND_NEXT, &key, 1);
    }
    if (result == CONFD_OK) {
        result = maapi_get_next(&cursor);
    }
    maapi_destroy_cursor(&cursor);
    return result;
}

std::vector<Case> cases()
{
    return {
        {"cdb_connect", connect_and_read},
        {"cdb_set_namespace", [](Attempt& at) { return cdb_set_namespace(at.cdb, 82011741); }},
        {"cdb_get",
         [](Attempt& at) {
             confd_value_t value;
             return given_back(cdb_get(at.cdb, &value, "/depot/bay[%d]/note", 1), &value);
         }},
        {"cdb_get of a leaf-list",
         [](Attempt& at) {
             confd_value_t value;
             return given_back(cdb_get(at.cdb, &value, "%s/tag", "/depot/bay{2 left}"), &value);
         }},
        {"cdb_get_u_int16",
         [](Attempt& at) {
             uint16_t number = 0;
             return cdb_get_u_int16(at.cdb, &number, "/depot/kinds/u16");
         }},
        {"cdb_get_enum_value",
         [](Attempt& at) {
             int32_t side = 0;
             return cdb_get_enum_value(at.cdb, &side, "/depot/bay{%u %s}/side", 2U, "left");
         }},
        {"cdb_get_list",
         [](Attempt& at) {
             confd_value_t* values = nullptr;
             int n = 0;
             const int result = cdb_get_list(at.cdb, &values, &n, "/depot/bay{2 left}/tag");
             for (int i = 0; i < n; ++i) {
                 confd_free_value(&values[i]);
             }
             std::free(values);
             return result;
         }},
        {"cdb_exists", [](Attempt& at) { return wanted(1, cdb_exists(at.cdb, "/depot/bay{%u left}/door/lock", 2U)); }},
        {"cdb_num_instances", [](Attempt& at) { return wanted(2, cdb_num_instances(at.cdb, "/depot/bay")); }},
        {"cdb_get_objects",
         [](Attempt& at) {
             confd_value_t values[40];
             const int most = cdb_get_objects(at.cdb, values, 20, 0, 2, "/depot/bay");
             for (int i = 0; most >= 0 && i < 2; ++i) {
                 std::for_each(values + 20 * i, values + 20 * i + 11, [](confd_value_t& v) { confd_free_value(&v); });
             }
             return most < 0 ? most : CONFD_OK;
         }},
        {"cdb_get_values",
         [](Attempt& at) {
             confd_tag_value_t values[] = {tagged("label", no_value()),
                                           begin("bay"),
                                           tagged("number", u32(2)),
                                           tagged("side", enumeration(1)),
                                           tagged("note", no_value()),
                                           tagged("tag", no_value()),
                                           end("bay")};
             return read_values(at, values, "/depot");
         }},
        {"maapi_set_namespace", [](Attempt& at) { return maapi_set_namespace(at.maapi, at.th, 82011741); }},
        {"maapi_exists",
         [](Attempt& at) { return wanted(1, maapi_exists(at.maapi, at.th, "/depot/bay{2 %s}", "left")); }},
        {"maapi_num_instances",
         [](Attempt& at) { return wanted(2, maapi_num_instances(at.maapi, at.th, "/depot/bay{2 left}/tag")); }},
        {"maapi_get_elem",
         [](Attempt& at) {
             confd_value_t value;
             return given_back(maapi_get_elem(at.maapi, at.th, &value, "/depot/label"), &value);
         }},
        {"maapi_get_u_int32_elem",
         [](Attempt& at) {
             uint32_t number = 0;
             return maapi_get_u_int32_elem(at.maapi, at.th, &number, "/depot/kinds/u32");
         }},
        {"maapi_get_u_int16_elem",
         [](Attempt& at) {
             uint16_t number = 0;
             return maapi_get_u_int16_elem(at.maapi, at.th, &number, "/depot/kinds/u16");
         }},
        {"maapi_get_enum_value_elem",
         [](Attempt& at) {
             int32_t side = 0;
             return maapi_get_enum_value_elem(at.maapi, at.th, &side, "/depot/bay{1 left}/side");
         }},
        {"maapi_init_cursor", [](Attempt& at) { return walk(at, false); }},
        {"maapi_find_next", [](Attempt& at) { return walk(at, true); }},
        {"maapi_create",
         [](Attempt& at) { return maapi_create(at.maapi, at.th, "/depot/shelf{%s}", "a long name of 20"); }},
        {"maapi_create of a tag",
         [](Attempt& at) { return maapi_create(at.maapi, at.th, "/depot/bay{2 left}/tag{%s}", "x"); }},
        {"maapi_create of a mark", [](Attempt& at) { return maapi_create(at.maapi, at.th, "/depot/kinds/mark"); }},
        {"maapi_delete", [](Attempt& at) { return maapi_delete(at.maapi, at.th, "/depot/bay{2 left}/crate{7}"); }},
        {"maapi_delete of all", [](Attempt& at) { return maapi_delete(at.maapi, at.th, "/depot/bay"); }},
        {"maapi_set_elem",
         [](Attempt& at) {
             confd_value_t note = text_value("a new note of many letters");
             return maapi_set_elem(at.maapi, at.th, &note, "/depot/bay{2 left}/note");
         }},
        {"maapi_set_elem of a leaf-list",
         [](Attempt& at) {
             confd_value_t tags[] = {text_value("one tag with a long text"), text_value("another")};
             confd_value_t list;
             CONFD_SET_LIST(&list, tags, 2);
             return maapi_set_elem(at.maapi, at.th, &list, "/depot/bay{2 left}/tag");
         }},
        {"maapi_set_elem2",
         [](Attempt& at) {
             return maapi_set_elem2(at.maapi, at.th, "a new note of many letters", "/depot/bay{1 left}/note");
         }},
        {"maapi_set_values", write_much, {write_shelf}},
        {"maapi_set_values that deletes", delete_bay},
        {"maapi_move",
         [](Attempt& at) {
             confd_value_t to[] = {u32(8), enumeration(2)};
             return maapi_move(at.maapi, at.th, to, 2, "/depot/bay{2 left}");
         }},
        {"confd_data_set_timeout",
         [](Attempt& at) { return confd_data_set_timeout(at.device.transaction_context(), 30); }},
        {"confd_format_keypath",
         [](Attempt& at) {
             (void)at;
             char out[100];
             const confd_value_t name = buffer("a shelf with a long name");
             const int length = confd_format_keypath(out, sizeof out, "/depot/shelf{%x}/depth", &name);
             return length < 0 ? length : CONFD_OK;
         }},
    };
}

class OutOfMemory : public testing::TestWithParam<bool> {
protected:
    OutOfMemory() { Schema::builtin(), depot_schema(); }
    ~OutOfMemory() override { countdown = 0; }

    // One attempt with the n-th allocation refused. False when the call has fewer.
    static bool attempt(const Case& tested, std::size_t n, bool recorded, const std::vector<std::string>& allowed)
    {
        Attempt at;
        if (recorded) {
            at.device.recorder().start();
        }
        refusals = 0;
        countdown = n;
        all_later = GetParam();
        const int result = tested.call(at);
        countdown = 0;
        const std::string what = std::string(tested.function) + ", allocation " + std::to_string(n);
        EXPECT_TRUE(at.device.open_things().none()) << what;
        if (result == CONFD_OK) {
            EXPECT_EQ(at.transaction(), allowed.back()) << what;
        } else {
            EXPECT_EQ(result, CONFD_ERR) << what;
            EXPECT_EQ(confd_errno, CONFD_ERR_MALLOC) << what << ": " << confd_lasterr();
            EXPECT_EQ(std::count(allowed.begin(), allowed.end() - (allowed.size() > 1 ? 1 : 0), at.transaction()), 1)
                << what << ": half-written\n"
                << at.transaction();
            EXPECT_EQ(std::string(confd_lasterr()).find("out of memory") == std::string::npos, false)
                << confd_lasterr();
        }
        return refusals > 0;
    }

    // What may stand there afterwards: what stood before, and with what was written as a whole; the last one is after
    // success.
    static std::vector<std::string> allowed_texts(const Case& tested)
    {
        std::vector<std::string> texts;
        const auto add = [&texts](const std::function<int(Attempt&)>& write) {
            Attempt at;
            EXPECT_EQ(write == nullptr ? CONFD_OK : write(at), CONFD_OK) << confd_lasterr();
            if (texts.empty() || texts.back() != at.transaction()) {
                texts.push_back(at.transaction());
            }
        };
        add(nullptr);
        for (const auto& row : tested.rows) {
            add(row);
        }
        add(tested.call);
        return texts;
    }
};

TEST_P(OutOfMemory, EachFunction_FailsWithItsCodeAndLeavesNothing)
{
    for (const Case& tested : cases()) {
        const std::vector<std::string> allowed = allowed_texts(tested);
        for (const bool recorded : {false, true}) {
            attempt(tested, 1, recorded, allowed);  // what the process keeps is made now
            const std::ptrdiff_t before = blocks;
            std::size_t n = 1;
            while (attempt(tested, n, recorded, allowed)) {
                ++n;
            }
            EXPECT_EQ(blocks, before) << tested.function << ": leaked";
            EXPECT_TRUE(n > 1 || !recorded) << tested.function << " asks for no memory, so that nothing is tested";
        }
    }
}

INSTANTIATE_TEST_SUITE_P(OnceAndFromThereOn, OutOfMemory, testing::Bool());

TEST(OutOfMemoryOfValues, CopyIsNullAndOwnsNothing)
{
    const Device device(depot_options());
    confd_value_t parts[] = {text_value("one text that is long"), buffer("another text")};
    confd_value_t list;
    CONFD_SET_LIST(&list, parts, 2);
    for (std::size_t n = 1;; ++n) {
        confd_value_t copy;
        refusals = 0;
        all_later = false;
        countdown = n;
        confd_value_t* const made = confd_value_dup_to(&list, &copy);
        countdown = 0;
        if (refusals == 0) {
            EXPECT_EQ(made, &copy);
            EXPECT_GT(n, kBlocksOfTheCopy);
            confd_free_dup_to_value(&copy);
            break;
        }
        EXPECT_EQ(made, nullptr);
        EXPECT_TRUE(device.open_things().none());
    }
}

TEST(OutOfMemoryOfValues, PrintingNeedsNone)
{
    const Device device(depot_options());
    confd_value_t parts[] = {text_value("one text that is long"), enumeration(4)};
    confd_value_t list;
    CONFD_SET_LIST(&list, parts, 2);
    char out[64];
    refusals = 0;
    all_later = true;
    countdown = 1;
    const int length = confd_pp_value(out, sizeof out, &list);
    countdown = 0;
    EXPECT_EQ(refusals, 0U);
    EXPECT_EQ(length, 31);
    EXPECT_STREQ(out, "[one text that is long enum<4>]");
}

TEST(OutOfMemoryOfCursors, AStepThatFailed_IsTakenTheNextTime)
{
    Attempt at;
    maapi_cursor cursor;
    ASSERT_EQ(maapi_init_cursor(at.maapi, at.th, &cursor, "/depot/port"), CONFD_OK);
    for (std::size_t n = 1;; ++n) {
        refusals = 0;
        all_later = false;
        countdown = n;
        const int result = maapi_get_next(&cursor);
        countdown = 0;
        if (result == CONFD_OK) {
            break;
        }
        EXPECT_EQ(confd_errno, CONFD_ERR_MALLOC);
        EXPECT_EQ(cursor.n, 0);
    }
    EXPECT_EQ(cursor.n, 1);
    maapi_destroy_cursor(&cursor);
}

// Thousands of writes to one list, most of which find no memory somewhere on their way.
TEST(OutOfMemoryOfLists, EveryWrite_IsWholeOrNotAtAll)
{
    Attempt at;
    std::set<uint32_t> expected;
    std::mt19937 random(20261122);  // the same writes every time
    const auto starved = [&](const std::function<int()>& write) {
        refusals = 0;
        all_later = random() % 2 == 0;
        countdown = 1 + random() % 8;
        const int result = write();
        countdown = 0;
        EXPECT_TRUE(result == CONFD_OK || confd_errno == CONFD_ERR_MALLOC) << confd_lasterr();
        return result == CONFD_OK;
    };
    const auto any = [&] { return *std::next(expected.begin(), static_cast<long>(random() % expected.size())); };
    for (int i = 0; i < 12000; ++i) {
        const auto key = static_cast<uint32_t>(random() % 100000);
        const bool growing = i < 7000;
        const unsigned what = static_cast<unsigned>(random() % 10);
        if (expected.empty() || (what < (growing ? 8U : 1U) && expected.count(key) == 0)) {
            if (starved([&] { return maapi_create(at.maapi, at.th, "/depot/bay{2 left}/crate{%u}", key); })) {
                expected.insert(key);
            }
        } else if (what < 9) {
            const uint32_t gone = any();
            if (starved([&] { return maapi_delete(at.maapi, at.th, "/depot/bay{2 left}/crate{%u}", gone); })) {
                expected.erase(gone);
            }
        } else if (expected.count(key) == 0) {
            const uint32_t from = any();
            confd_value_t to = u32(key);
            if (starved([&] { return maapi_move(at.maapi, at.th, &to, 1, "/depot/bay{2 left}/crate{%u}", from); })) {
                expected.erase(from);
                expected.insert(key);
            }
        }
        if (i == 0) {
            expected.insert(7);  // stored
        }
    }
    std::set<uint32_t> found;
    maapi_cursor cursor;
    ASSERT_EQ(maapi_init_cursor(at.maapi, at.th, &cursor, "/depot/bay{2 left}/crate"), CONFD_OK);
    while (maapi_get_next(&cursor) == CONFD_OK && cursor.n != 0) {
        EXPECT_TRUE(found.empty() || CONFD_GET_UINT32(&cursor.keys[0]) > *found.rbegin());
        found.insert(CONFD_GET_UINT32(&cursor.keys[0]));
    }
    maapi_destroy_cursor(&cursor);
    EXPECT_EQ(found, expected);
    EXPECT_EQ(maapi_num_instances(at.maapi, at.th, "/depot/bay{2 left}/crate"), static_cast<int>(expected.size()));
    EXPECT_EQ(cdb_num_instances(at.cdb, "/depot/bay{2 left}/crate"), 1) << "what is stored";
}

}  // namespace

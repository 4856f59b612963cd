// The C API as it is published: every function is exported under its C name with its published signature, and names
// have their published numbers; the platform's own table leaves none out.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "calls/function.h"
#include "confd_cdb.h"
#include "confd_dp.h"
#include "confd_lib.h"
#include "confd_maapi.h"

namespace {

template <typename Published, typename Declared>
constexpr bool is(Declared*)
{
    return std::is_same_v<Published, Declared>;
}

static_assert(is<int(int, cdb_sock_type, const sockaddr*, int)>(&cdb_connect));
static_assert(is<int(int, cdb_db_type)>(&cdb_start_session));
static_assert(is<int(int)>(&cdb_end_session));
static_assert(is<int(int)>(&cdb_close));
static_assert(is<int(int, int)>(&cdb_set_namespace));
static_assert(is<int(int, confd_value_t*, const char*, ...)>(&cdb_get));
static_assert(is<int(int, int32_t*, const char*, ...)>(&cdb_get_enum_value));
static_assert(is<int(int, uint16_t*, const char*, ...)>(&cdb_get_u_int16));
static_assert(is<int(int, confd_value_t**, int*, const char*, ...)>(&cdb_get_list));
static_assert(is<int(int, const char*, ...)>(&cdb_exists));
static_assert(is<int(int, const char*, ...)>(&cdb_num_instances));
static_assert(is<int(int, confd_value_t*, int, int, int, const char*, ...)>(&cdb_get_objects));
static_assert(is<int(int, confd_tag_value_t*, int, const char*, ...)>(&cdb_get_values));

static_assert(is<int(int, int, int)>(&maapi_set_namespace));
static_assert(is<int(int, int, const char*, ...)>(&maapi_exists));
static_assert(is<int(int, int, const char*, ...)>(&maapi_num_instances));
static_assert(is<int(int, int, const char*, ...)>(&maapi_create));
static_assert(is<int(int, int, const char*, ...)>(&maapi_delete));
static_assert(is<int(int, int, confd_value_t*, const char*, ...)>(&maapi_get_elem));
static_assert(is<int(int, int, uint32_t*, const char*, ...)>(&maapi_get_u_int32_elem));
static_assert(is<int(int, int, uint16_t*, const char*, ...)>(&maapi_get_u_int16_elem));
static_assert(is<int(int, int, int32_t*, const char*, ...)>(&maapi_get_enum_value_elem));
static_assert(is<int(int, int, confd_value_t*, const char*, ...)>(&maapi_set_elem));
static_assert(is<int(int, int, const char*, const char*, ...)>(&maapi_set_elem2));
static_assert(is<int(int, int, const confd_tag_value_t*, int, const char*, ...)>(&maapi_set_values));
static_assert(is<int(int, int, confd_value_t*, int, const char*, ...)>(&maapi_move));
static_assert(is<int(int, int, maapi_cursor*, const char*, ...)>(&maapi_init_cursor));
static_assert(is<int(maapi_cursor*)>(&maapi_get_next));
static_assert(is<int(maapi_cursor*, confd_find_next_type, confd_value_t*, int)>(&maapi_find_next));
static_assert(is<void(maapi_cursor*)>(&maapi_destroy_cursor));

static_assert(is<int(confd_trans_ctx*, int)>(&confd_data_set_timeout));
static_assert(is<char*()>(&confd_lasterr));
static_assert(is<char*(int)>(&confd_strerror));
static_assert(is<void(confd_value_t*)>(&confd_free_value));
static_assert(is<confd_value_t*(const confd_value_t*, confd_value_t*)>(&confd_value_dup_to));
static_assert(is<void(confd_value_t*)>(&confd_free_dup_to_value));
static_assert(is<int(char*, int, const confd_value_t*)>(&confd_pp_value));
static_assert(is<int(char*, int, const char*, ...)>(&confd_format_keypath));
static_assert(is<uint32_t(const char*)>(&confd_str2hash));
static_assert(is<char*(uint32_t)>(&confd_hash2str));

static_assert(CONFD_OK == 0 && CONFD_ERR == -1 && CONFD_EOF == -2 && CONFD_PORT == 4565);
static_assert(CDB_READ_SOCKET == 0 && CDB_DATA_SOCKET == 0 && CDB_RUNNING == 1);
static_assert(CONFD_FIND_NEXT == 0 && CONFD_FIND_SAME_OR_NEXT == 1);
static_assert(CONFD_ERR_NOEXISTS == 1 && CONFD_ERR_ALREADY_EXISTS == 2 && CONFD_ERR_ACCESS_DENIED == 3 &&
              CONFD_ERR_NOT_WRITABLE == 4 && CONFD_ERR_BADTYPE == 5 && CONFD_ERR_NOTCREATABLE == 6 &&
              CONFD_ERR_NOTDELETABLE == 7 && CONFD_ERR_BADPATH == 8 && CONFD_ERR_LOCKED == 10 &&
              CONFD_ERR_INUSE == 11 && CONFD_ERR_NOTSET == 12 && CONFD_ERR_BADSTATE == 17 && CONFD_ERR_INTERNAL == 18 &&
              CONFD_ERR_EXTERNAL == 19 && CONFD_ERR_MALLOC == 20 && CONFD_ERR_PROTOUSAGE == 21 &&
              CONFD_ERR_NOSESSION == 22 && CONFD_ERR_OS == 24 && CONFD_ERR_UNAVAILABLE == 44 && CONFD_ERR_EOF == 45 &&
              CONFD_ERR_NOTMOVABLE == 46 && CONFD_ERR_TIMEOUT == 48 && CONFD_ERR_NOTRANS == 61);
static_assert(C_NOEXISTS == 1 && C_XMLTAG == 2 && C_STR == 4 && C_BUF == 5 && C_INT8 == 6 && C_UINT32 == 12 &&
              C_DOUBLE == 14 && C_IPV4 == 15 && C_BOOL == 17 && C_DATE == 20 && C_TIME == 23 && C_DURATION == 27 &&
              C_ENUM_VALUE == 28 && C_LIST == 31 && C_XMLBEGIN == 32 && C_XMLEND == 33 && C_CDBBEGIN == 37 &&
              C_BINARY == 39 && C_IPV4PREFIX == 40 && C_DEFAULT == 42 && C_HEXSTR == 47 && C_BITBIG == 50 &&
              C_EMPTY == 53 && C_MAXTYPE == 54);

// Looked up by name at run time, as a library that was built against a device SDK finds it.
bool exported(const char* name)
{
    return dlsym(RTLD_DEFAULT, name) != nullptr;
}

// The whole table, by name.
std::vector<std::string> published_functions()
{
    std::vector<std::string> names = {
        "confd_lasterr",  "confd_strerror",       "confd_free_value", "confd_value_dup_to", "confd_free_dup_to_value",
        "confd_pp_value", "confd_format_keypath", "confd_str2hash",   "confd_hash2str",     "maapi_destroy_cursor"};
    for (std::size_t i = 0; i < bgp_platform::capi::kFunctions; ++i) {
        names.emplace_back(bgp_platform::capi::name_of(static_cast<bgp_platform::capi::Function>(i)));
    }
    return names;
}

TEST(InterfaceTable, EveryFunction_IsExportedUnderItsName)
{
    for (const std::string& name : published_functions()) {
        EXPECT_TRUE(exported(name.c_str())) << name;
    }
    EXPECT_TRUE(exported("confd_errno"));
    EXPECT_FALSE(exported("cdb_get_nothing"));
}

TEST(InterfaceTable, EveryFunction_StandsInThePlatformsTable)
{
    std::ifstream file(BGP_SOURCE_DIR "/platform/README.md");
    std::stringstream text;
    text << file.rdbuf();
    ASSERT_FALSE(text.str().empty());
    for (const std::string& name : published_functions()) {
        EXPECT_NE(text.str().find("`" + name + "`"), std::string::npos) << name << " is missing in platform/README.md";
    }
}

TEST(InterfaceTable, EveryFunction_FollowsAManualPage)
{
    std::ifstream file(BGP_SOURCE_DIR "/platform/README.md");
    std::size_t rows = 0;
    for (std::string line; std::getline(file, line);) {
        if (line.rfind("| `cdb_", 0) == 0 || line.rfind("| `maapi_", 0) == 0 || line.rfind("| `confd_", 0) == 0) {
            ++rows;
            EXPECT_NE(line.find("| `confd_lib_"), std::string::npos) << line;
        }
    }
    EXPECT_GT(rows, 20U);
}

}  // namespace

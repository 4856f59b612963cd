// A device with a small module of its own beside the platform's, and the words in which the tests of the C API speak:
// values made and printed, failures checked whole.
#pragma once

#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "confd_maapi.h"
#include "device.h"

namespace capi_test {

using bgp_platform::Datastore;
using bgp_platform::Device;
using bgp_platform::UpgradeHandles;
using bgp_platform::capi::Function;
using bgp_platform::schema::Schema;

// A list of every kind of thing, containers with and without presence, defaults, a leaf of each type.
inline const char* const kDepotModule = R"(
module depot {
  yang-version 1.1;
  namespace "urn:test:depot";
  prefix dp;
  import bgp-update-types { prefix types; }
  container depot {
    leaf label { type string; }
    leaf gatePassword { type string; }
    list bay {
      key "number side";
      leaf number { type uint32; }
      leaf side { type enumeration { enum left { value 1; } enum right { value 2; } } }
      leaf note { type string; }
      leaf height { type uint16; default 40; }
      leaf-list tag { type string; }
      container door {
        leaf width { type int32; }
        leaf code { type uint32; default 7; }
        container lock {
          presence "has a lock";
          leaf turns { type uint32; default 2; }
        }
      }
      list crate {
        key id;
        leaf id { type uint32; }
        leaf content { type string; }
      }
      leaf status { type types:status; }
    }
    list shelf {
      key name;
      leaf name { type string; }
      leaf depth { type uint32; }
    }
    list port {
      key address;
      leaf address { type types:hex-list; }
      leaf speed { type uint32; }
    }
    leaf-list free { type uint16; }
    container alarm {
      presence "armed";
      leaf delay { type uint32; default 9; }
    }
    container kinds {
      leaf i8 { type int8; }
      leaf i16 { type int16; }
      leaf i32 { type int32; }
      leaf i64 { type int64; }
      leaf u8 { type uint8; }
      leaf u16 { type uint16; }
      leaf u32 { type uint32; }
      leaf u64 { type uint64; }
      leaf small { type uint32 { range "1..5"; } }
      leaf flag { type boolean; }
      leaf ipv4 { type types:ipv4-address; }
      leaf ipv6 { type types:ipv6-address; }
      leaf ip { type types:ip-address; }
      leaf prefix { type types:ipv4-prefix; }
      leaf octets { type types:hex-list; }
      leaf mark { type empty; }
    }
  }
  container shared { leaf from-depot { type string; } }
}
)";

// Has a top node of the same name as the depot's.
inline const char* const kAnnexModule = R"(
module annex {
  yang-version 1.1;
  namespace "urn:test:annex";
  prefix annex;
  container shared { leaf from-annex { type string; } }
}
)";

inline const char* const kDepotNamespace = "urn:test:depot";

inline std::shared_ptr<const Schema> depot_schema()
{
    static const std::shared_ptr<const Schema> schema = [] {
        std::vector<bgp_platform::schema::ModuleText> modules = bgp_platform::schema::builtin_modules();
        modules.push_back({"depot", kDepotModule});
        modules.push_back({"annex", kAnnexModule});
        return Schema::from_modules(modules);
    }();
    return schema;
}

inline Device::Options depot_options(uint16_t port = CONFD_PORT)
{
    Device::Options options;
    options.port = port;
    options.schema = depot_schema();
    return options;
}

// A document in the load format with this content of the depot.
inline std::string depot_document(std::string_view content)
{
    return "<config xmlns=\"http://tail-f.com/ns/config/1.0\"><depot xmlns=\"urn:test:depot\">" + std::string(content) +
           "</depot></config>";
}

// A bay with further content.
inline std::string bay(int number, std::string_view side, std::string_view content = {})
{
    return "<bay><number>" + std::to_string(number) + "</number><side>" + std::string(side) + "</side>" +
           std::string(content) + "</bay>";
}

inline confd_value_t u32(uint32_t number)
{
    confd_value_t value;
    CONFD_SET_UINT32(&value, number);
    return value;
}

inline confd_value_t enumeration(int32_t number)
{
    confd_value_t value;
    CONFD_SET_ENUM_VALUE(&value, number);
    return value;
}

// Borrowed text and octets, which outlive the value in every test.
inline confd_value_t text_value(const char* letters)
{
    confd_value_t value;
    CONFD_SET_STR(&value, letters);
    return value;
}

inline confd_value_t buffer(std::string_view letters)
{
    confd_value_t value;
    CONFD_SET_CBUF(&value, letters.data(), letters.size());
    return value;
}

inline confd_value_t octets(std::string_view bytes)
{
    confd_value_t value;
    CONFD_SET_BINARY(&value, bytes.data(), bytes.size());
    return value;
}

inline confd_value_t no_value()
{
    confd_value_t value;
    CONFD_SET_NOEXISTS(&value);
    return value;
}

inline std::string printed(const confd_value_t& value)
{
    char small[512];
    EXPECT_LT(confd_pp_value(small, sizeof small, &value), static_cast<int>(sizeof small));
    return small;
}

// The value's text; the value is given back.
inline std::string taken(confd_value_t* value)
{
    const std::string out = printed(*value);
    confd_free_value(value);
    return out;
}

// That a call failed with this code, and the text "<function>: <name of the code>: <rest>".
inline testing::AssertionResult fails(int result, int code, std::string_view function, std::string_view rest)
{
    std::string expected(function);
    expected.append(": ").append(confd_strerror(code)).append(rest.empty() ? "" : ": ").append(rest);
    if (result == CONFD_ERR && confd_errno == code && expected == confd_lasterr()) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << "result " << result << ", code " << confd_errno << " (wanted " << code
                                       << ")\n  said:   " << confd_lasterr() << "\n  wanted: " << expected;
}

class CapiTest : public testing::Test {
protected:
    // Adds to the stored configuration below /depot.
    void stored(std::string_view content) { device.load_text(depot_document(content), "stored"); }

    // Opens the upgrade; cdb, maapi and th are its handles.
    void open()
    {
        const UpgradeHandles upgrade = device.open_upgrade();
        cdb = upgrade.cdb_socket;
        maapi = upgrade.maapi_socket;
        th = upgrade.thandle;
    }

    // A leaf of the transaction as text, "-" when it is absent.
    template <typename... Arguments>
    std::string leaf(const char* path, Arguments... arguments)
    {
        confd_value_t value;
        const int result = maapi_get_elem(maapi, th, &value, path, arguments...);
        return result == CONFD_OK ? taken(&value) : confd_errno == CONFD_ERR_NOEXISTS ? "-" : confd_lasterr();
    }

    // Whether nothing that the calls handed out or opened is left.
    void expect_nothing_open() { EXPECT_TRUE(device.open_things().none()) << device.open_things().values; }

    Device device{depot_options()};
    int cdb = -1;
    int maapi = -1;
    int th = -1;
};

}  // namespace capi_test

// Keypaths of the C API: printf-like templates and their arguments, resolved to a place in the tree or formatted as
// text.
//
// A template is parsed once into a plan; a call only walks the plan, looks its names up and fills in its keys.
#pragma once

#include <array>
#include <cstdarg>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "confd_lib.h"
#include "store/configuration.h"

namespace bgp_platform::capi {

constexpr std::size_t kPublishedKeys = 8;  // of a list, at most; a longer key is a reading (calls/readings.h)

// Where one key of "{...}", or the number of "[...]", comes from.
struct KeySource {
    enum class Kind { Literal, Int, Unsigned, Short, Text, Value, Tuple };
    Kind kind = Kind::Literal;
    std::string literal;
};

// One piece of a template, in order.
struct Step {
    enum class Kind {
        Child,  // "/name" or "/prefix:name"
        Keys,   // "{...}"
        Index,  // "[...]"
        Splice  // %s outside braces: a path, or a name behind a slash, given as text
    };
    Kind kind = Kind::Child;
    std::string prefix;
    std::string name;
    std::vector<KeySource> keys;  // of Index: one

    // What the name meant the last time, so that a walk along the usual road looks nothing up.
    mutable const schema::Node* last_parent = nullptr;
    mutable const schema::Module* last_module = nullptr;
    mutable const schema::Node* last_child = nullptr;
};

struct Plan {
    std::vector<Step> steps;
    uint32_t readings = 0;  // of open questions that the template depends on (calls/readings.h), as bits
    std::string error;      // what is wrong with the template; empty when nothing is
};

Plan parse_template(std::string_view format);

// The node of that name below `parent` (null: the root, where `name_space`, when given, is asked first), in the module
// of that prefix unless it is empty; null when there is none.
const schema::Node* find_child(const schema::Schema& schema, std::string_view prefix, std::string_view name,
                               const schema::Node* parent, const schema::Module* name_space);

// Why a path could not be resolved: CONFD_ERR_BADPATH, or CONFD_ERR_BADTYPE for a key its type does not take.
struct PathError {
    int code = CONFD_OK;
    std::string detail;

    explicit operator bool() const noexcept { return code != CONFD_OK; }
};

// The key of a list, or the first part of it, given as values.
PathError read_keys(const schema::Node& list, const confd_value_t* values, int n, std::vector<schema::Value>* keys);

// The templates of one device, parsed, and what the paths named last mean.
class KeypathCache {
public:
    explicit KeypathCache(const schema::Schema& schema) : schema_(schema) {}

    // Resolves a template with its arguments; `name_space` is that of the session, or null.
    PathError resolve(const char* format, va_list arguments, const schema::Module* name_space, store::Path* path);

    // The readings that the path resolved or formatted last depends on, as bits.
    uint32_t met() const noexcept { return met_; }
    void note(uint32_t readings) noexcept { met_ = readings; }

    // The node that the names of an absolute path lead to, whatever keys stand between them; null when there is none.
    const schema::Node* node_of(std::string_view path, const schema::Module* name_space);

private:
    static constexpr std::size_t kMost =
        4096;  // templates are literals; a program that builds them must not fill memory

    const Plan& plan_of(const char* format);

    // The plan that was found last for a format at such an address; the text tells whether it is still the same.
    struct Recent {
        const std::string* text = nullptr;
        const Plan* plan = nullptr;
    };
    static constexpr std::size_t kRecent = 256;
    Recent& recent(const char* format) noexcept
    {
        const auto address = reinterpret_cast<uintptr_t>(format);
        return recent_[(address ^ address >> 8U) % kRecent];
    }

    // The path that node_of() was asked for last: callers go through a table row by row.
    struct Named {
        std::string path;
        const schema::Module* name_space = nullptr;
        const schema::Node* node = nullptr;
    };

    const schema::Schema& schema_;
    Named last_;
    std::unordered_map<std::string, Plan> plans_;
    std::array<Recent, kRecent> recent_{};
    uint32_t met_ = 0;
    std::string lookup_;  // reused, so that finding a plan allocates nothing
};

// What confd_pp_value does, for the platform's own texts: no reading is noted.
int plain_value_text(char* buffer, int size, const confd_value_t& value);

// Whether the text of a value shows octets with letters.
bool shows_letters(const confd_value_t& value);

// The template as text, its arguments filled in. With a device's keypaths, a %x key of an absolute path whose nodes its
// schema knows is printed as its type prints it; without, and elsewhere, as confd_pp_value does. Consumes the arguments.
std::string format_template(const char* format, va_list arguments, KeypathCache* keypaths);

// A resolved place as text, prefix-free: "/router/bgp{65010}/vrf[0]".
std::string keypath_text(const store::Path& path);

// A key of a list, or a part of it, as it stands in a keypath: "{5 ipv4}"; "{}" for no keys.
std::string key_tuple_text(const schema::Node& list, const std::vector<schema::Value>& keys);

}  // namespace bgp_platform::capi

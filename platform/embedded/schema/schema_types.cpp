// Which type of the platform stands for which YANG type.
#include "schema/schema_types.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <optional>
#include <utility>

#include "schema/schema.h"

namespace bgp_platform::schema {

namespace {

struct KnownTypedef {
    std::string_view name;
    BaseType base;
    confd_vtype vtype;
};

// Typedefs of the module bgp-update-types whose values are more than their YANG base type tells. Their patterns are
// covered by how the platform reads them.
constexpr std::array kKnownTypedefs{
    KnownTypedef{"hex-list", BaseType::Octets, C_BINARY},
    KnownTypedef{"ipv4-address", BaseType::Ipv4, C_IPV4},
    KnownTypedef{"ipv6-address", BaseType::Ipv6, C_IPV6},
    KnownTypedef{"ip-address", BaseType::Ip, C_UNION},
    KnownTypedef{"ipv4-prefix", BaseType::Ipv4Prefix, C_IPV4PREFIX},
};

// libyang's sized arrays carry their length in front.
template <typename T>
std::size_t array_size(const T* array)
{
    return LY_ARRAY_COUNT(array);
}

bool is_signed(LY_DATA_TYPE base)
{
    return base == LY_TYPE_INT8 || base == LY_TYPE_INT16 || base == LY_TYPE_INT32 || base == LY_TYPE_INT64;
}

std::vector<Interval> intervals_of(const lysc_range* range, bool signed_numbers)
{
    std::vector<Interval> intervals;
    if (range == nullptr) {
        return intervals;
    }
    for (std::size_t i = 0; i < array_size(range->parts); ++i) {
        const auto& part = range->parts[i];
        if (signed_numbers) {
            intervals.push_back({part.min_64, static_cast<uint64_t>(part.max_64)});
        } else {
            intervals.push_back({static_cast<int64_t>(part.min_u64), part.max_u64});
        }
    }
    return intervals;
}

confd_vtype number_vtype(LY_DATA_TYPE base)
{
    switch (base) {
        case LY_TYPE_INT8:
            return C_INT8;
        case LY_TYPE_INT16:
            return C_INT16;
        case LY_TYPE_INT32:
            return C_INT32;
        case LY_TYPE_INT64:
            return C_INT64;
        case LY_TYPE_UINT8:
            return C_UINT8;
        case LY_TYPE_UINT16:
            return C_UINT16;
        case LY_TYPE_UINT32:
            return C_UINT32;
        default:
            return C_UINT64;
    }
}

Type number_type(const lysc_type& compiled)
{
    Type type;
    type.base = is_signed(compiled.basetype) ? BaseType::Int : BaseType::Uint;
    type.vtype = number_vtype(compiled.basetype);
    const auto& number = reinterpret_cast<const lysc_type_num&>(compiled);
    type.intervals = intervals_of(number.range, type.base == BaseType::Int);
    return type;
}

Type enum_type(const lysc_type& compiled)
{
    Type type;
    type.base = BaseType::Enum;
    type.vtype = C_ENUM_VALUE;
    const auto& enumeration = reinterpret_cast<const lysc_type_enum&>(compiled);
    for (std::size_t i = 0; i < array_size(enumeration.enums); ++i) {
        type.enums.push_back({enumeration.enums[i].name, enumeration.enums[i].value});
    }
    std::sort(type.enums.begin(), type.enums.end(),
              [](const EnumName& left, const EnumName& right) { return left.number < right.number; });
    return type;
}

Type text_type(const lysc_type& compiled)
{
    Type type;
    type.intervals = intervals_of(reinterpret_cast<const lysc_type_str&>(compiled).length, false);
    return type;
}

bool has_pattern(const lysc_type& compiled)
{
    return compiled.basetype == LY_TYPE_STRING && reinterpret_cast<const lysc_type_str&>(compiled).patterns != nullptr;
}

// None for what the platform does not do.
std::optional<Type> plain_type(const lysc_type& compiled)
{
    switch (compiled.basetype) {
        case LY_TYPE_INT8:
        case LY_TYPE_INT16:
        case LY_TYPE_INT32:
        case LY_TYPE_INT64:
        case LY_TYPE_UINT8:
        case LY_TYPE_UINT16:
        case LY_TYPE_UINT32:
        case LY_TYPE_UINT64:
            return number_type(compiled);
        case LY_TYPE_ENUM:
            return enum_type(compiled);
        case LY_TYPE_STRING:
            return has_pattern(compiled) ? std::nullopt : std::optional(text_type(compiled));
        case LY_TYPE_BOOL: {
            Type type;
            type.base = BaseType::Bool;
            type.vtype = C_BOOL;
            return type;
        }
        case LY_TYPE_EMPTY: {
            Type type;
            type.base = BaseType::Empty;
            type.vtype = C_XMLTAG;
            return type;
        }
        default:
            return std::nullopt;
    }
}

const lysc_type& compiled_type(const lysc_node& node)
{
    const lysc_type* const type = node.nodetype == LYS_LEAF ? reinterpret_cast<const lysc_node_leaf&>(node).type
                                                            : reinterpret_cast<const lysc_node_leaflist&>(node).type;
    return type->basetype == LY_TYPE_LEAFREF ? *reinterpret_cast<const lysc_type_leafref*>(type)->realtype : *type;
}

// As the module says it, without a prefix. (The context keeps each node's statement in `priv`.)
std::string type_name(const lysc_node& node)
{
    const auto* const statement = static_cast<const lysp_node*>(node.priv);
    const lysp_type& type = statement->nodetype == LYS_LEAF
                                ? reinterpret_cast<const lysp_node_leaf*>(statement)->type
                                : reinterpret_cast<const lysp_node_leaflist*>(statement)->type;
    const std::string_view name = type.name;
    const std::size_t colon = name.find(':');
    return std::string(colon == std::string_view::npos ? name : name.substr(colon + 1));
}

const char* unsupported_kind(LY_DATA_TYPE base)
{
    switch (base) {
        case LY_TYPE_BINARY:
            return "binary";
        case LY_TYPE_BITS:
            return "bits";
        case LY_TYPE_DEC64:
            return "decimal64";
        case LY_TYPE_IDENT:
            return "identityref";
        case LY_TYPE_INST:
            return "instance-identifier";
        case LY_TYPE_UNION:
            return "union";
        default:
            return "unknown";
    }
}

[[noreturn]] void refuse(const lysc_node& node, const lysc_type& compiled)
{
    std::string message = schema_path(node) + ": type " + type_name(node);
    if (has_pattern(compiled)) {
        message += " is a string with a pattern, which only the typedefs of bgp-update-types may have";
    } else {
        message += std::string(" is not supported (its base is ") + unsupported_kind(compiled.basetype) + ")";
    }
    throw SchemaError(message);
}

bool same(const Type& left, const Type& right)
{
    const auto same_interval = [](const Interval& a, const Interval& b) { return a.low == b.low && a.high == b.high; };
    const auto same_enum = [](const EnumName& a, const EnumName& b) {
        return a.number == b.number && a.name == b.name;
    };
    return left.base == right.base && left.vtype == right.vtype && left.name == right.name &&
           std::equal(left.intervals.begin(), left.intervals.end(), right.intervals.begin(), right.intervals.end(),
                      same_interval) &&
           std::equal(left.enums.begin(), left.enums.end(), right.enums.begin(), right.enums.end(), same_enum);
}

}  // namespace

std::string schema_path(const lysc_node& node)
{
    const std::unique_ptr<char, decltype(&std::free)> path(lysc_path(&node, LYSC_PATH_LOG, nullptr, 0), &std::free);
    return path ? path.get() : node.name;
}

TypeReader::TypeReader(const ly_ctx* context, std::deque<Type>* types) : types_(types)
{
    const lys_module* const module = ly_ctx_get_module_latest(context, "bgp-update-types");
    if (module == nullptr) {
        return;
    }
    const lysp_tpdf* const typedefs = module->parsed->typedefs;
    for (const KnownTypedef& known : kKnownTypedefs) {
        for (std::size_t i = 0; i < array_size(typedefs); ++i) {
            if (known.name == typedefs[i].name && typedefs[i].type.compiled != nullptr) {
                Type& type = known_typedefs_[typedefs[i].type.compiled];
                type.base = known.base;
                type.vtype = known.vtype;
                type.name = known.name;
            }
        }
    }
}

const Type* TypeReader::type_of(const lysc_node& node)
{
    const lysc_type& compiled = compiled_type(node);
    if (const auto known = known_typedefs_.find(&compiled); known != known_typedefs_.end()) {
        return share(known->second);
    }
    std::optional<Type> type = plain_type(compiled);
    if (!type) {
        refuse(node, compiled);
    }
    type->name = type_name(node);
    return share(*std::move(type));
}

const Type* TypeReader::share(Type type)
{
    const auto at =
        std::find_if(types_->begin(), types_->end(), [&](const Type& present) { return same(present, type); });
    return at != types_->end() ? &*at : &types_->emplace_back(std::move(type));
}

}  // namespace bgp_platform::schema

// Keypath templates. The first line of the input is the template; the following ones are its arguments, a line each: a
// number for %d, %u and %hu, a text for %s, a value for %x, values with blanks between them for %*x (see value_of()).
//
// Whatever the template, it is refused with a reason, or it names a place whose text names the same place.
#include <arpa/inet.h>

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "keypath/keypath.h"
#include "require.h"

namespace {

using bgp_fuzz::require;
using bgp_platform::capi::format_template;
using bgp_platform::capi::keypath_text;
using bgp_platform::capi::KeypathCache;
using bgp_platform::capi::KeySource;
using bgp_platform::capi::parse_template;
using bgp_platform::capi::PathError;
using bgp_platform::capi::Plan;
using bgp_platform::capi::Step;
using bgp_platform::schema::Schema;
using bgp_platform::store::Path;

constexpr std::size_t kMostArguments = 3;

struct Argument {
    KeySource::Kind kind = KeySource::Kind::Literal;
    std::string text;
    std::vector<std::string> pieces;  // the memory of the values
    std::vector<confd_value_t> values;
};

// "#2" is an enumeration, "=0a00" octets, "10.0.0.1" and "::1" addresses, "5" a number, everything else a text.
confd_value_t value_of(std::string* text)
{
    confd_value_t value{};
    in_addr ipv4{};
    in6_addr ipv6{};
    if (text->empty()) {
        CONFD_SET_NOEXISTS(&value);
    } else if (text->front() == '#') {
        CONFD_SET_ENUM_VALUE(&value, std::atoi(text->c_str() + 1));
    } else if (text->front() == '=') {
        CONFD_SET_BINARY(&value, text->data() + 1, text->size() - 1);
    } else if (inet_pton(AF_INET, text->c_str(), &ipv4) == 1) {
        CONFD_SET_IPV4(&value, ipv4);
    } else if (inet_pton(AF_INET6, text->c_str(), &ipv6) == 1) {
        CONFD_SET_IPV6(&value, ipv6);
    } else if (text->find_first_not_of("0123456789") == std::string::npos) {
        CONFD_SET_UINT32(&value, static_cast<uint32_t>(std::strtoul(text->c_str(), nullptr, 10)));
    } else {
        CONFD_SET_BUF(&value, text->data(), text->size());
    }
    return value;
}

void fill(Argument* argument, const std::string& line)
{
    argument->text = line;
    if (argument->kind == KeySource::Kind::Tuple) {
        std::istringstream pieces(line);
        for (std::string piece; pieces >> piece;) {
            argument->pieces.push_back(piece);
        }
    } else {
        argument->pieces.push_back(line);
    }
    for (std::string& piece : argument->pieces) {
        argument->values.push_back(value_of(&piece));
    }
}

std::vector<KeySource::Kind> conversions_of(const Plan& plan)
{
    std::vector<KeySource::Kind> kinds;
    for (const Step& step : plan.steps) {
        if (step.kind == Step::Kind::Splice) {
            kinds.push_back(KeySource::Kind::Text);
        }
        for (const KeySource& key : step.keys) {
            if (key.kind != KeySource::Kind::Literal) {
                kinds.push_back(key.kind);
            }
        }
    }
    return kinds;
}

struct Named {
    PathError error;
    std::string place;      // empty after an error
    std::string formatted;  // the template with its arguments
};

Named name_place(const char* format, ...)
{
    static const std::shared_ptr<const Schema> schema = Schema::builtin();
    static KeypathCache cache(*schema);
    Named named;
    Path path;
    va_list arguments;
    va_start(arguments, format);
    named.error = cache.resolve(format, arguments, nullptr, &path);
    va_end(arguments);
    if (!named.error) {
        named.place = keypath_text(path);
        va_start(arguments, format);
        named.formatted = format_template(format, arguments, &cache);
        va_end(arguments);
    }
    return named;
}

// Passes the arguments on, from the one at kAt, each as the type that its conversion takes.
template <std::size_t kAt, typename... Passed>
Named pass(const char* format, std::vector<Argument>* arguments, Passed... passed)
{
    if (kAt == arguments->size()) {
        return name_place(format, passed...);
    }
    if constexpr (kAt < kMostArguments) {
        Argument& next = (*arguments)[kAt];
        const auto number = static_cast<unsigned int>(std::strtoul(next.text.c_str(), nullptr, 10));
        switch (next.kind) {
            case KeySource::Kind::Text:
                return pass<kAt + 1>(format, arguments, passed..., next.text.c_str());
            case KeySource::Kind::Value:
                return pass<kAt + 1>(format, arguments, passed..., next.values.data());
            case KeySource::Kind::Tuple:
                return pass<kAt + 1>(format, arguments, passed..., static_cast<int>(next.values.size()),
                                     next.values.data());
            case KeySource::Kind::Unsigned:
                return pass<kAt + 1>(format, arguments, passed..., number);
            default:
                return pass<kAt + 1>(format, arguments, passed..., static_cast<int>(number));
        }
    }
    return {};
}

void require_place(const Named& named, const std::string& format)
{
    if (named.error) {
        require(named.error.code == CONFD_ERR_BADPATH || named.error.code == CONFD_ERR_BADTYPE, "the code fits",
                format);
        require(!named.error.detail.empty(), "a refusal has a reason", format);
        return;
    }
    const Named by_place = name_place("%s", named.place.c_str());
    require(!by_place.error && by_place.place == named.place, "a place's text names it", named.place);
    const Named by_format = name_place("%s", named.formatted.c_str());
    require(!by_format.error && by_format.place == named.place, "a formatted template names the place",
            named.formatted + " for " + named.place);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, std::size_t size)
{
    // Up to a NUL: texts of the C API have none.
    std::istringstream lines(std::string(bytes, std::find(bytes, bytes + size, 0)));
    std::string format;
    std::getline(lines, format);

    const std::vector<KeySource::Kind> kinds = conversions_of(parse_template(format));
    if (kinds.size() > kMostArguments) {
        return 0;
    }
    std::vector<Argument> arguments(kinds.size());
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        std::string line;
        std::getline(lines, line);
        arguments[i].kind = kinds[i];
        fill(&arguments[i], line);
    }
    require_place(pass<0>(format.c_str(), &arguments), format);
    return 0;
}

// What holds for every number of seconds.
#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "bgp_update/bgp_utils.h"

namespace {

std::string duration(uint32_t seconds)
{
    confd_value_t in;
    CONFD_SET_UINT32(&in, seconds);
    confd_value_t out{};
    RC_ASSERT(BgpUtils::SecondsToDuration(&out, &in) == &out);
    const std::string text(CONFD_GET_CBUFPTR(&out), CONFD_GET_BUFSIZE(&out));
    confd_free_dup_to_value(&out);
    return text;
}

uint32_t any_seconds()
{
    const uint32_t most = *rc::gen::elementOf(std::vector<uint32_t>{90000, 2000000, 40000000, 4294967295});
    return *rc::gen::inRange<uint32_t>(0, most);
}

struct Field {
    std::string digits;
    char unit;  // the character behind them; a blank at the end
};

std::vector<Field> fields_of(const std::string& text)
{
    std::vector<Field> fields;
    std::string digits;
    for (const char c : text + " ") {
        if (c >= '0' && c <= '9') {
            digits += c;
        } else if (!digits.empty()) {
            fields.push_back({digits, c});
            digits.clear();
        }
    }
    return fields;
}

RC_GTEST_PROP(SecondsToDurationProperty, EverySecond_HasThreeFieldsOfTwoDigitsAtLeast, ())
{
    const std::vector<Field> fields = fields_of(duration(any_seconds()));
    RC_ASSERT(fields.size() == 3U);
    std::string units;
    for (const Field& field : fields) {
        RC_ASSERT(field.digits.size() == 2U || (field.unit == 'y' && field.digits.size() == 3U));
        units += field.unit;
    }
    RC_ASSERT(units == "ymw" || units == "mwd" || units == "wdh" || units == "dhm" || units == ":: ");
}

// The sum of the fields that end in a letter. A month's letter is also a minute's: it is a minute behind hours.
uint64_t seconds_of(const std::vector<Field>& fields, uint32_t* smallest)
{
    static const std::map<char, uint32_t> units = {
        {'y', 31104000}, {'m', 2592000}, {'w', 604800}, {'d', 86400}, {'h', 3600}};
    uint64_t sum = 0;
    char before = ' ';
    for (const Field& field : fields) {
        *smallest = field.unit == 'm' && before == 'h' ? 60 : units.at(field.unit);
        sum += std::stoull(field.digits) * *smallest;
        before = field.unit;
    }
    return sum;
}

RC_GTEST_PROP(SecondsToDurationProperty, SecondsFromADay_AreToldUpToTheSmallestUnitShown, ())
{
    const uint32_t most = *rc::gen::elementOf(std::vector<uint32_t>{700000, 3000000, 40000000, 4294967295});
    const uint32_t seconds = *rc::gen::inRange<uint32_t>(86400, most);
    uint32_t smallest = 0;
    const uint64_t told = seconds_of(fields_of(duration(seconds)), &smallest);
    RC_ASSERT(told <= seconds);
    RC_ASSERT(seconds - told < smallest);
}

}  // namespace

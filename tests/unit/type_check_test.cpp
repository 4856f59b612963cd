// The type check of values read: its text, and that it holds in builds without assertions too.
#ifndef NDEBUG
#define NDEBUG
#endif
#include "confd/type_check.h"
#include "support/plain_signature.h"

#include <gtest/gtest.h>

// Its name and parameters show in the assertion's text, so it is no member of a namespace.
static int32_t use_number(const std::string&, confd_value_t* number, uint32_t&)
{
    static constexpr char kSource[] = "src/somewhere/a_source";
    BGP_REQUIRE_TYPE(1234, number, C_UINT32);
    return static_cast<int32_t>(CONFD_GET_UINT32(number));
}

static void use_second_key(const confd_value_t* keys)
{
    static constexpr char kSource[] = "src/somewhere/a_source";
    BGP_REQUIRE_TYPE(7, &keys[0 + 1], C_ENUM_VALUE);
}

namespace {

TEST(TypeCheck, RightType_GoesOn)
{
    confd_value_t value;
    CONFD_SET_UINT32(&value, 42);
    uint32_t unused = 0;
    EXPECT_EQ(use_number("", &value, unused), 42);
}

TEST(TypeCheckDeath, WrongType_TellsExpressionSourceLineAndSignature)
{
    confd_value_t value;
    CONFD_SET_INT32(&value, 42);
    uint32_t unused = 0;
    EXPECT_DEATH(
        use_number("", &value, unused),
        "src/somewhere/a_source:1234: int32_t use_number\\(const std::string&, confd_value_t\\*, uint32_t&\\): "
        "Assertion `\\(number\\)->type == C_UINT32' failed\\.");
}

TEST(TypeCheckDeath, ElementOfAnArray_IsToldAsItIsSpelled)
{
    confd_value_t keys[2];
    CONFD_SET_ENUM_VALUE(&keys[0], 1);
    CONFD_SET_UINT32(&keys[1], 1);
    EXPECT_DEATH(use_second_key(keys), "Assertion `\\(&keys\\[0 \\+ 1\\]\\)->type == C_ENUM_VALUE' failed\\.");
}

TEST(PlainSignature, ClangsBlanks_AreTakenOut)
{
    EXPECT_EQ(bgp_test::plain_signature("int32_t update_bgp_pfx(int32_t, int32_t, int32_t, int, nzmw_log_t *)"),
              "int32_t update_bgp_pfx(int32_t, int32_t, int32_t, int, nzmw_log_t*)");
    EXPECT_EQ(bgp_test::plain_signature("int f(const char **, uint32_t &)"), "int f(const char**, uint32_t&)");
}

TEST(PlainSignature, GccsSpelling_StaysAsItIs)
{
    const std::string spelled = "static int A::f(int, const char**, uint32_t&)";
    EXPECT_EQ(bgp_test::plain_signature(spelled), spelled);
}

}  // namespace

// Stored passwords in the stand-in's own form, and all other texts.
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

#include "nzos_passwd.h"

namespace {

using Text = std::unique_ptr<char, decltype(&std::free)>;

Text decrypt(const char* stored, int flags = 0)
{
    return {nzos_passwd_decrypt(stored, flags), &std::free};
}

TEST(Password, EncryptedForm_GivesThePlainText)
{
    EXPECT_STREQ(decrypt("$test$terces").get(), "secret");
}

TEST(Password, EncryptedEmptyPassword_GivesAnEmptyText)
{
    EXPECT_STREQ(decrypt("$test$").get(), "");
}

TEST(Password, AnyOtherText_GivesNull)
{
    for (const char* stored : {"", "secret", "$test", "$1$abc$def", " $test$terces", "$TEST$terces"}) {
        EXPECT_EQ(decrypt(stored), nullptr) << stored;
    }
    EXPECT_EQ(decrypt(nullptr), nullptr);
}

TEST(Password, ReservedFlags_GiveNull)
{
    EXPECT_EQ(decrypt("$test$terces", 1), nullptr);
}

}  // namespace

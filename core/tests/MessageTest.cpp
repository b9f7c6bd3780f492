#include "core/Message.h"

#include <gtest/gtest.h>

#include <cstring>

TEST(Message, FormatsLikePrintfAndReturnsZero)
{
    std::string message = "old";
    EXPECT_EQ(tg::setMessage(message, "You cannot have more than %ld Projects.", 128L), 0);
    EXPECT_EQ(message, "You cannot have more than 128 Projects.");
    EXPECT_EQ(tg::formatText("%s\\%s_data", "a", "b"), "a\\b_data");
}

TEST(Message, CopyTextCutsToTheBufferAndTerminates)
{
    char field[16];
    std::memset(field, 'x', sizeof field);
    tg::copyText(field, "Exponential^2 and more");
    EXPECT_EQ(std::strlen(field), 15u);
    EXPECT_STREQ(field, "Exponential^2 a");

    tg::copyText(field, "");
    EXPECT_STREQ(field, "");
    tg::copyText(field, nullptr);
    EXPECT_STREQ(field, "");
}

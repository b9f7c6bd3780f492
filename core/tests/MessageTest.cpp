// Copying into the fixed text fields of the records. Formatting is pinned by every exact
// message the other tests compare.
#include "core/Message.h"

#include <gtest/gtest.h>

#include <cstring>

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

/// Which bytes the escapes in a word stand for.
#include <console/words.h>

#include <string>

#include <gtest/gtest.h>

namespace {

using Corvane::Console::unescape;

TEST(TextEscapes, StandForBytes)
{
    EXPECT_EQ(unescape("a\\nb\\tc\\\\d"), "a\nb\tc\\d");
    EXPECT_EQ(unescape("\\x41\\x00\\xfF"), std::string("A\0\xFF", 3));
}

TEST(TextEscapes, LeaveEverythingElseUnchanged)
{
    EXPECT_EQ(unescape(""), "");
    EXPECT_EQ(unescape("plain"), "plain");
    for (const char* word : {"\\", "a\\", "\\q", "\\x", "\\x4", "\\xg1", "\\x4g", "\\x-1"}) {
        EXPECT_EQ(unescape(word), word);
    }
}

TEST(TextEscapes, AreNotReadTwice)
{
    EXPECT_EQ(unescape("\\\\n"), "\\n");
    EXPECT_EQ(unescape("\\x5cn"), "\\n");
}

} // namespace

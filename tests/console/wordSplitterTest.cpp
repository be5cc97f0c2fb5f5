/// How a typed line is split into words.
#include <console/words.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using Corvane::Console::splitLine;
using testing::ElementsAre;
using testing::IsEmpty;

/// Returns  what is wrong with a line; empty for a good one.
std::string errorOf(const std::string& line)
{
    try {
        splitLine(line);
    } catch (const Corvane::Console::BadLine& error) {
        return error.what();
    }
    return "";
}

TEST(WordSplitter, SeparatesWordsAtBlanks)
{
    EXPECT_THAT(splitLine("show carrier 1"), ElementsAre("show", "carrier", "1"));
    EXPECT_THAT(splitLine("  show\t \tcarriers \r"), ElementsAre("show", "carriers"));
}

TEST(WordSplitter, FindsNoWordsInAnEmptyLine)
{
    EXPECT_THAT(splitLine(""), IsEmpty());
    EXPECT_THAT(splitLine(" \t\r"), IsEmpty());
}

TEST(WordSplitter, EndsALineAtAComment)
{
    EXPECT_THAT(splitLine("# show 'carriers"), IsEmpty());
    EXPECT_THAT(splitLine("  #"), IsEmpty());
    EXPECT_THAT(splitLine("show # carriers"), ElementsAre("show"));
}

TEST(WordSplitter, KeepsANumberSignInsideAWord)
{
    EXPECT_THAT(splitLine("a#b '#' \\# ''#"), ElementsAre("a#b", "#", "#", "#"));
}

TEST(WordSplitter, KeepsEverythingBetweenSingleQuotes)
{
    EXPECT_THAT(splitLine(R"('a b' 'c\d' 'e"f' 'g\')"), ElementsAre("a b", R"(c\d)", R"(e"f)", R"(g\)"));
}

TEST(WordSplitter, EscapesQuotesAndBackslashesBetweenDoubleQuotes)
{
    EXPECT_THAT(splitLine(R"("a b" "c\"d" "e\\" "f'g")"), ElementsAre("a b", R"(c"d)", R"(e\)", "f'g"));
    EXPECT_THAT(splitLine(R"("a\nb" "c\ d")"), ElementsAre(R"(a\nb)", R"(c\ d)"));
}

TEST(WordSplitter, KeepsAnyCharacterAfterABackslash)
{
    EXPECT_THAT(splitLine(R"(a\ b \'c \"d \\ \n)"), ElementsAre("a b", "'c", "\"d", "\\", "n"));
}

TEST(WordSplitter, JoinsPiecesThatNoBlankSeparates)
{
    EXPECT_THAT(splitLine(R"(a'b c'"d e"f)"), ElementsAre("ab cd ef"));
}

TEST(WordSplitter, MakesAnEmptyWordOfEmptyQuotes)
{
    EXPECT_THAT(splitLine(R"('' "" a'')"), ElementsAre("", "", "a"));
}

TEST(WordSplitter, RefusesAnUnclosedQuote)
{
    EXPECT_EQ(errorOf("show 'carriers"), "the quote ' in column 6 is never closed");
    EXPECT_EQ(errorOf("\""), "the quote \" in column 1 is never closed");
    EXPECT_EQ(errorOf(R"("a\")"), "the quote \" in column 1 is never closed");
    EXPECT_EQ(errorOf(R"("a\)"), "the quote \" in column 1 is never closed");
    EXPECT_EQ(errorOf("'a' 'b"), "the quote ' in column 5 is never closed");
}

TEST(WordSplitter, RefusesABackslashAtTheEnd)
{
    EXPECT_EQ(errorOf("show \\"), "nothing follows the backslash at the end of the line");
}

TEST(WordSplitter, RefusesANulByte)
{
    EXPECT_EQ(errorOf(std::string("a\0b", 3)), "the line has a NUL byte in it");
}

TEST(WordSplitter, KeepsBytesAbove127)
{
    EXPECT_THAT(splitLine("\xff\xfe \xc3\xa9"), ElementsAre("\xff\xfe", "\xc3\xa9"));
}

TEST(WordSplitter, SplitsAMillionWordsAndAMegabyteWord)
{
    std::string line;
    for (int i = 0; i < 1'000'000; ++i) {
        line += "w ";
    }
    EXPECT_EQ(splitLine(line).size(), 1'000'000U);
    const std::string word(1 << 20, 'x');
    EXPECT_THAT(splitLine(word), ElementsAre(word));
}

} // namespace

/// How the example shell splits a line into words.
#include "wordSplitter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using UnitShell::splitLine;

/// The words of a good line.
std::vector<std::string> wordsOf(const std::string& line)
{
    const auto split = splitLine(line);
    EXPECT_EQ(split.error, "") << line;
    return split.words;
}

/// What is wrong with a bad line.
std::string errorOf(const std::string& line)
{
    const auto split = splitLine(line);
    EXPECT_THAT(split.words, IsEmpty()) << line;
    return split.error;
}

TEST(WordSplitter, SeparatesWordsAtBlanks)
{
    EXPECT_THAT(wordsOf("show carrier 1"), ElementsAre("show", "carrier", "1"));
    EXPECT_THAT(wordsOf("  show\t \tcarriers \r"), ElementsAre("show", "carriers"));
}

TEST(WordSplitter, FindsNoWordsInAnEmptyLine)
{
    EXPECT_THAT(wordsOf(""), IsEmpty());
    EXPECT_THAT(wordsOf(" \t\r"), IsEmpty());
}

TEST(WordSplitter, EndsALineAtAComment)
{
    EXPECT_THAT(wordsOf("# show 'carriers"), IsEmpty());
    EXPECT_THAT(wordsOf("  #"), IsEmpty());
    EXPECT_THAT(wordsOf("show # carriers"), ElementsAre("show"));
}

TEST(WordSplitter, TakesANumberSignInsideAWordAsItIs)
{
    EXPECT_THAT(wordsOf("a#b '#' \\# ''#"), ElementsAre("a#b", "#", "#", "#"));
}

TEST(WordSplitter, KeepsEverythingBetweenSingleQuotes)
{
    EXPECT_THAT(wordsOf(R"('a b' 'c\d' 'e"f' 'g\')"), ElementsAre("a b", R"(c\d)", R"(e"f)", R"(g\)"));
}

TEST(WordSplitter, EscapesQuotesAndBackslashesBetweenDoubleQuotes)
{
    EXPECT_THAT(wordsOf(R"("a b" "c\"d" "e\\" "f'g")"), ElementsAre("a b", R"(c"d)", R"(e\)", "f'g"));
    EXPECT_THAT(wordsOf(R"("a\nb" "c\ d")"), ElementsAre(R"(a\nb)", R"(c\ d)"));
}

TEST(WordSplitter, TakesAnyCharacterAfterABackslashAsItIs)
{
    EXPECT_THAT(wordsOf(R"(a\ b \'c \"d \\ \n)"), ElementsAre("a b", "'c", "\"d", "\\", "n"));
}

TEST(WordSplitter, JoinsPiecesWithoutABlankBetweenThem)
{
    EXPECT_THAT(wordsOf(R"(a'b c'"d e"f)"), ElementsAre("ab cd ef"));
}

TEST(WordSplitter, MakesAnEmptyWordOfEmptyQuotes)
{
    EXPECT_THAT(wordsOf(R"('' "" a'')"), ElementsAre("", "", "a"));
}

TEST(WordSplitter, RefusesAQuoteThatIsNeverClosed)
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

TEST(WordSplitter, TakesBytesAbove127AsTheyAre)
{
    EXPECT_THAT(wordsOf("\xff\xfe \xc3\xa9"), ElementsAre("\xff\xfe", "\xc3\xa9"));
}

TEST(WordSplitter, SplitsAMillionWordsAndAMegabyteWord)
{
    std::string line;
    for (int i = 0; i < 1'000'000; ++i) {
        line += "w ";
    }
    EXPECT_EQ(wordsOf(line).size(), 1'000'000U);
    const std::string word(1 << 20, 'x');
    EXPECT_THAT(wordsOf(word), ElementsAre(word));
}

} // namespace

/// Questions about synopses.
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <synopses/table.h>

#include <command/cmdDefinitions.h>
#include <testing/synopses.h>

namespace {

using namespace Corvane;
using namespace Corvane::Synopses;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Line = std::vector<std::string>;

std::vector<Synopsis> exampleSynopses()
{
    return {{"show [-l] <file> { on | off }"}, {"show dump"}, {"set <id> to <value>"}, {"<any> x", "get"}};
}

TEST(Synopses, NamesTheSynopsisOfALineAndTheRoleOfEachWord)
{
    const Table table(exampleSynopses());
    const Match match = table.match({"show", "-l", "a.txt", "on", "more"});
    EXPECT_EQ(match.synopsis, 0U);
    EXPECT_THAT(match.words,
                ElementsAre(Word{Role::command, "show"}, Word{Role::keyword, "-l"}, Word{Role::placeholder, "<file>"},
                            Word{Role::keyword, "on"}, Word{Role::ignored, "more"}));
    EXPECT_EQ(table.match({"show", "a.txt"}).synopsis, std::nullopt);
    EXPECT_EQ(table.match({"get", "x"}).synopsis, 3U);
    EXPECT_EQ(table.match({}).synopsis, std::nullopt);
}

TEST(Synopses, GoesTheWayOfThePlaceholderThatLeadsOn)
{
    const Table table({{"set <id> { on | off }"}, {"set <from> to <to> on"}});
    const Match match = table.match({"set", "1", "to", "2", "on"});
    EXPECT_EQ(match.synopsis, 1U);
    EXPECT_EQ(match.words.at(1).name, "<from>");
}

TEST(Synopses, PrintsTheUsageInBothFormats)
{
    const Table table(exampleSynopses());
    EXPECT_EQ(table.usage({"show", "-l"}, Format::velk), "Usage: show -l <file> { on | off } \n\n");
    EXPECT_EQ(table.usage({"show"}, Format::pelm), "Usage: show { -l | <file> | dump } \n\n");
    EXPECT_EQ(table.usage({"show"}, Format::velk), "Usage: show { -l | <file> | dump } \n\n");
}

TEST(Synopses, ListsTheShortestLinesFirst)
{
    const Table table(exampleSynopses());
    EXPECT_THAT(table.lines(4), ElementsAre(Line{"show", "dump"}, Line{"get", "x"}, Line{"show", "<file>", "on"},
                                            Line{"show", "<file>", "off"}));
    EXPECT_THAT(table.lines(0), IsEmpty());
    EXPECT_THAT(table.lines(10, 1), IsEmpty());
    EXPECT_THAT(Table({{"[status]"}}).lines(2), ElementsAre(Line{}, Line{"status"}));
}

TEST(Synopses, TellsWhatMayFollow)
{
    const Table table(exampleSynopses());
    EXPECT_THAT(table.following({}).words,
                ElementsAre(Word{Role::command, "show"}, Word{Role::command, "set"}, Word{Role::command, "get"}));
    const Following afterShow = table.following({"show"});
    EXPECT_THAT(afterShow.words,
                ElementsAre(Word{Role::keyword, "-l"}, Word{Role::placeholder, "<file>"}, Word{Role::keyword, "dump"}));
    EXPECT_FALSE(afterShow.mayEnd);
    const Following afterDump = table.following({"show", "dump"});
    EXPECT_THAT(afterDump.words, IsEmpty());
    EXPECT_TRUE(afterDump.mayEnd);
    EXPECT_THAT(table.following({"show", "dump", "more"}).words, IsEmpty());
    EXPECT_FALSE(table.following({"list"}).mayEnd);
}

TEST(Synopses, TellsWhatMayFollowAnyOfSeveralPlaceholders)
{
    const Table table({{"set <id> { on | off }"}, {"set <from> to <to> on"}});
    EXPECT_THAT(table.following({"set", "1"}).words,
                ElementsAre(Word{Role::keyword, "on"}, Word{Role::keyword, "off"}, Word{Role::keyword, "to"}));
}

TEST(Synopses, LeavesTheOrderInOneSynopsisToItsAuthor)
{
    EXPECT_THAT(check({{"limit [<low>] <high>"}}), IsEmpty());
    EXPECT_EQ(check({{"limit { <low> | <high> }"}}).at(0).rule, Rule::neverChosen);
}

TEST(Synopses, EscapesWhatDotWouldReadOtherwise)
{
    const std::string dot = Table({{R"(say "\n&lt;")"}}).dot();
    EXPECT_NE(dot.find(R"(label="\"\\n&amp;lt;\"")"), std::string::npos) << dot;
}

TEST(Synopses, MarksPartOfALineBelowIt)
{
    EXPECT_EQ(excerpt("a bcd e", 2, 3), "  a bcd e\n    ^~~\n");
    EXPECT_EQ(excerpt("\tgr\xC3\xBC\xC3\x9F x", 8, 1), "  \tgr\xC3\xBC\xC3\x9F x\n  \t     ^\n");
    EXPECT_EQ(excerpt("", 0, 0), "  \n  ^\n");
}

TEST(CheckSynopses, FindsNothingInACleanTableOfEachKindOfRecord)
{
    using namespace CmdTableHelper;
    EXPECT_EQ(Testing::checkSynopses("show", std::vector<CommandDefinitions>{{"show [-l]", nullptr, ""}}).text(), "");
    EXPECT_EQ(Testing::checkSynopses("show", std::vector<CmdDefinition>{{"show [-l]", nullptr, ""}}).text(), "");
    EXPECT_TRUE(Testing::checkSynopses("show", std::vector<CmdDefinitionCpp>{{"show [-l]", nullptr, ""}}).empty());
}

TEST(CheckSynopses, NamesTheRecordAndMarksItsFlaw)
{
    using CmdTableHelper::CmdDefinition;
    const auto findings =
        Testing::checkSynopses("show", std::vector<CmdDefinition>{{"show a", nullptr, ""}, {"list b", nullptr, ""}});
    EXPECT_EQ(findings.text(), "record 2, column 1: error: no line reaches \"list\": the command's name is \"show\" "
                               "[unreachable-command]\n"
                               "  list b\n"
                               "  ^~~~\n");
    EXPECT_EQ(findings.findings().size(), 1U);
}

} // namespace

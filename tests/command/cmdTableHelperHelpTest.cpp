/// The help texts of command tables.
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "command/src/cmdTableHelperImplV2.h"
#include "tests/command/serviceSupport.h"

namespace {

using namespace Corvane::CmdTableHelper;
using namespace Corvane::CmdTableHelper::Testing;
using V2::CmdTableHelperImpl;

class Help : public testing::Test
{
protected:
    std::string help(const Words& words, const std::vector<CmdDefinition>& table, bool printHeader, bool finalNewline)
    {
        std::ostringstream out;
        EXPECT_EQ(service.cmdHelp(words, out, table, printHeader, finalNewline), 1);
        return out.str();
    }

    std::string described(const std::string& description)
    {
        return help({"help", "x", "-l"}, {{"x", {}, description.c_str()}}, false, false);
    }

    CmdTableHelperImpl service;
    const std::vector<CmdDefinition> m_table = {{"x [-l]", {}, "Does x."}, {"y", {}, nullptr}, {"z", {}, ""}};
};

TEST_F(Help, InShortFormListsTheSynopses)
{
    EXPECT_EQ(help({"help"}, m_table, true, true), "Command syntax:\n  x [-l]\n  y\n  z\n\n");
    EXPECT_EQ(help({"help"}, m_table, false, true), "  x [-l]\n  y\n  z\n\n");
    EXPECT_EQ(help({"help"}, m_table, true, false), "Command syntax:\n  x [-l]\n  y\n  z\n");
    EXPECT_EQ(help({}, m_table, false, false), "  x [-l]\n  y\n  z\n");
}

TEST_F(Help, InLongFormAddsTheDescriptionsAndNoFinalNewline)
{
    const std::string body = "  x [-l]\n\n     Does x.\n\n  y\n\n  z\n\n";
    EXPECT_EQ(help({"help", "x", "-l"}, m_table, true, true), "Command syntax:\n\n" + body);
    EXPECT_EQ(help({"help", "x", "y", "-l"}, m_table, false, true), body);
    EXPECT_EQ(help({"help", "x", "-l"}, m_table, false, false), body);
}

TEST_F(Help, LooksForTheOptionFromTheThirdWordOn)
{
    EXPECT_EQ(help({"help", "-l"}, m_table, true, false), "Command syntax:\n  x [-l]\n  y\n  z\n");
    EXPECT_EQ(help({"-l", "-l", "x"}, m_table, true, false), "Command syntax:\n  x [-l]\n  y\n  z\n");
    EXPECT_EQ(help({"help", "x", "-L"}, m_table, true, false), "Command syntax:\n  x [-l]\n  y\n  z\n");
}

TEST_F(Help, OfAnEmptyTableIsTheHeader)
{
    EXPECT_EQ(help({"help", "x", "-l"}, {}, true, true), "Command syntax:\n\n");
    EXPECT_EQ(help({"help", "x", "-l"}, {}, false, true), "");
    EXPECT_EQ(help({"help"}, {}, true, true), "Command syntax:\n\n");
    EXPECT_EQ(help({"help"}, {}, false, true), "\n");
}

TEST_F(Help, WrapsADescriptionAtABlankBehindColumnSeventy)
{
    const std::string hundred(100, 'd');
    EXPECT_EQ(described(hundred), "  x\n\n     " + hundred + "\n\n");
    const std::string seventyOne(71, 'd');
    EXPECT_EQ(described(seventyOne + " next words"), "  x\n\n     " + seventyOne + "\n     next words\n\n");
    const std::string seventy(70, 'd');
    EXPECT_EQ(described(seventy + " next words"), "  x\n\n     " + seventy + " next\n     words\n\n");
}

TEST_F(Help, BreaksADescriptionAtALineFeed)
{
    EXPECT_EQ(described("one\ntwo\n"), "  x\n\n     one\n     two\n     \n\n");
    const std::string sixty(60, 'd');
    EXPECT_EQ(described(sixty + "\n" + sixty + " e"), "  x\n\n     " + sixty + "\n     " + sixty + " e\n\n");
}

TEST_F(Help, OfEachKindOfRecordIsTheSame)
{
    const std::vector<CmdDefinitionCpp> cppTable = {{"x", {}, "Does x."}};
    const std::vector<CommandDefinitions> plainTable = {{"x", {}, "Does x."}};
    std::ostringstream out;
    EXPECT_EQ(service.cmdHelp({"help", "x", "-l"}, out, cppTable, true, true), 1);
    EXPECT_EQ(out.str(), "Command syntax:\n\n  x\n\n     Does x.\n\n");
    const CapturedCout captured;
    EXPECT_EQ(service.cmdHelp({"help", "x", "-l"}, plainTable, true, true), 1);
    EXPECT_EQ(captured.text(), out.str());
}

} // namespace

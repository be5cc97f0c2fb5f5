/// The synopses of the example shell, checked as it registers them.
#include <vector>

#include <gtest/gtest.h>
#include <testing/synopses.h>

#include "examples/unitShell/commandTables.h"
#include "examples/unitShell/commands.h"
#include "examples/unitShell/shell.h"
#include "examples/unitShell/statistics.h"
#include "examples/unitShell/unit.h"

namespace {

using namespace UnitShell;
using Corvane::Testing::checkSynopses;
using Corvane::Testing::synopsesOf;

TEST(ExampleTables, HaveNoFlawsEachByItself)
{
    Unit unit(logAlarm);
    Statistics statistics;
    Shell shell(statistics, false);
    EXPECT_EQ(checkSynopses("show", showTable(unit)).text(), "");
    EXPECT_EQ(checkSynopses("set", setTable(unit)).text(), "");
    EXPECT_EQ(checkSynopses("exit", exitTable(shell)).text(), "");
}

TEST(ExampleTables, HaveNoFlawsTogether)
{
    Unit unit(logAlarm);
    Statistics statistics;
    Shell shell(statistics, false);
    const CommandTables tables;
    std::vector<Corvane::Synopses::Synopsis> synopses;
    const auto add = [&](const std::string& command, const auto& table) {
        const auto more = synopsesOf(command, table);
        synopses.insert(synopses.end(), more.begin(), more.end());
    };
    add("show", showTable(unit));
    add("show", statisticsTable(statistics));
    add("set", setTable(unit));
    add("pelm", pelmTable(unit));
    add("ramfs", ramfsTable());
    add("elog", elogTable());
    add("help", helpTable(tables));
    add("exit", exitTable(shell));
    EXPECT_EQ(checkSynopses(synopses).text(), "");
}

} // namespace

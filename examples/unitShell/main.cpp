/// A shell for a simulated radio unit: an application of the library.
#include <exception>
#include <iostream>
#include <memory>

#include <unistd.h>

#include "../standardStreams.h"
#include "commandTables.h"
#include "commands.h"
#include "eventLog.h"
#include "interrupts.h"
#include "lineSource.h"
#include "options.h"
#include "shell.h"
#include "statistics.h"
#include "unit.h"

namespace {

using namespace UnitShell;

std::unique_ptr<LineSource> openLines(const Options& options)
{
    if (options.file) {
        return std::make_unique<FileLines>(*options.file);
    }
    if (isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0) {
        return terminalLines();
    }
    return std::make_unique<FileLines>(STDIN_FILENO);
}

int run(const Options& options)
{
    Unit unit(logAlarm);
    Statistics statistics;
    Shell shell(statistics, options.echo);
    CommandTables tables;
    tables.add("show", showTable(unit));
    tables.add("show", statisticsTable(statistics));
    tables.add("set", setTable(unit));
    tables.add("pelm", pelmTable(unit));
    tables.add("ramfs", ramfsTable());
    tables.add("elog", elogTable());
    tables.add("help", helpTable(tables));
    tables.add("exit", exitTable(shell));

    if (options.line) {
        return shell.runLine(*options.line);
    }
    Interrupts::install();
    return shell.run(*openLines(options));
}

} // namespace

int main(int argc, char** argv)
{
    try {
        keepClosedStreamsClosed();
        const auto options = readOptions(argc, argv);
        if (!options) {
            return 2;
        }
        if (options->help) {
            std::cout << helpText << std::flush;
            return std::cout ? 0 : 1;
        }
        return run(*options);
    } catch (const std::exception& error) {
        std::cerr << "unitShell: " << error.what() << "\n";
        return 2;
    }
}

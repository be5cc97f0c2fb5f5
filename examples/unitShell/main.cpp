// SPDX-License-Identifier: MIT
/// A shell for a simulated radio unit, as an example of an application: its command line, and what it consists of.
#include <exception>
#include <iostream>
#include <memory>
#include <optional>
#include <string_view>
#include <system_error>

#include <fcntl.h>
#include <getopt.h>
#include <unistd.h>

#include "../standardStreams.h"
#include "commandTables.h"
#include "commands.h"
#include "interrupts.h"
#include "lineSource.h"
#include "shell.h"
#include "unit.h"

namespace {

using namespace UnitShell;

constexpr int wrongUse = 2;

constexpr std::string_view helpText = R"(Usage: unitShell [--echo] [FILE]
       unitShell [--echo] -c LINE
       unitShell --help

Controls a simulated radio unit with typed commands. "help -l" shows them.
Lines come from FILE, or else from standard input. A prompt is shown only on a
terminal.

  -c LINE   run one line
  --echo    show each line before its answer
  --help    show this text

Blanks separate words. 'Single quotes' keep everything between them. Between
"double quotes" a backslash quotes \" and \\; outside of quotes it quotes any
character. A "#" at the beginning of a word starts a comment. Empty lines do
nothing.

The shell ends at the end of input, with the command "exit [<status>]", or on
SIGINT (Ctrl-C) or SIGTERM. Its exit status is the one given to "exit", or else
that of the last line:
  0         the command succeeded (or there was no line)
  1 to 255  the command's own result (255 if the result is not in this range)
  1         also if a command threw an exception or output failed
  2         the line can't be split into words; also for wrong options and for
            input that can't be read
  20        the line is not a complete command
It is 130 after SIGINT and 143 after SIGTERM.
)";

struct Options
{
    bool help = false;
    bool echo = false;
    std::optional<std::string> line; // the one line to run
    std::optional<std::string> file; // the file to read lines from
};

std::nullopt_t refuse(const char* why)
{
    std::cerr << why << helpText.substr(0, helpText.find("\n\n") + 1); // the usage
    return std::nullopt;
}

/// Returns  nothing if the arguments are wrong; std::cerr then says why.
std::optional<Options> readOptions(int argc, char** argv)
{
    static const option longOptions[] = {
        {"echo", no_argument, nullptr, 'e'}, {"help", no_argument, nullptr, 'h'}, {nullptr, 0, nullptr, 0}};
    Options options;
    for (int found = 0; (found = getopt_long(argc, argv, "+c:", longOptions, nullptr)) != -1;) {
        if (found == '?') {
            return refuse(""); // getopt_long() has said what is wrong
        }
        options.echo = options.echo || found == 'e';
        options.help = options.help || found == 'h';
        if (found == 'c') {
            options.line = optarg;
        }
    }
    if (optind < argc) {
        options.file = argv[optind++];
    }
    if (optind < argc || (options.line && options.file)) {
        return refuse("unitShell: too many arguments\n");
    }
    if (options.line && options.line->find('\n') != std::string::npos) {
        return refuse("unitShell: -c takes one line\n");
    }
    return options;
}

std::unique_ptr<LineSource> openLines(const Options& options)
{
    if (options.file) {
        // O_NONBLOCK: else open() would wait for somebody who writes to a named pipe, even through a signal.
        const int descriptor = open(options.file->c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
        if (descriptor < 0) {
            throw std::system_error(errno, std::generic_category(), "can't read '" + *options.file + "'");
        }
        return std::make_unique<FileLines>(descriptor, "'" + *options.file + "'");
    }
    if (isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0) {
        return terminalLines();
    }
    return std::make_unique<FileLines>(STDIN_FILENO, "standard input");
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
            return wrongUse;
        }
        if (options->help) {
            std::cout << helpText << std::flush;
            return std::cout ? 0 : 1;
        }
        return run(*options);
    } catch (const std::exception& error) {
        std::cerr << "unitShell: " << error.what() << "\n";
        return wrongUse;
    }
}

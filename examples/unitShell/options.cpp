/// The shell's own command line.
#include "options.h"

#include <iostream>
#include <string_view>

#include <getopt.h>

namespace UnitShell {

const char* const helpText = "Usage: unitShell [--echo] [FILE]\n"
                             "       unitShell [--echo] -c LINE\n"
                             "       unitShell --help\n"
                             "\n"
                             "Controls a simulated radio unit with typed commands. \"help -l\" shows them.\n"
                             "Lines come from FILE, or else from standard input: from a terminal with a\n"
                             "prompt, from a file or a pipe without.\n"
                             "\n"
                             "  -c LINE   run one line\n"
                             "  --echo    show each line before its answer\n"
                             "  --help    show this text\n"
                             "\n"
                             "Words are separated by blanks. 'single quotes' keep everything, in \"double\n"
                             "quotes\" a backslash quotes \\\" and \\\\, elsewhere it quotes any character. A \"#\"\n"
                             "where a word would begin starts a comment. Empty lines do nothing.\n"
                             "\n"
                             "The shell ends at the end of input, by the command \"exit [<status>]\", or by\n"
                             "SIGINT (Ctrl-C) or SIGTERM. Exit status: the one given to \"exit\", or else that\n"
                             "of the last line, which is\n"
                             "  0         for a command that succeeded (or if there was no line at all)\n"
                             "  1 to 255  the command's own result (255 for one that is out of this range)\n"
                             "  1         also for a command that broke off and for output that can't be\n"
                             "            written\n"
                             "  2         for a line that can't be split into words, and for wrong options\n"
                             "            and input that can't be read\n"
                             "  20        for a line that is no command\n"
                             "and 130 after SIGINT, 143 after SIGTERM.\n";

namespace {

std::nullopt_t refuse(const char* why)
{
    const std::string_view text = helpText;
    std::cerr << why << text.substr(0, text.find("\n\n") + 1); // the usage
    return std::nullopt;
}

} // namespace

std::optional<Options> readOptions(int argc, char** argv)
{
    static const option longOptions[] = {
        {"echo", no_argument, nullptr, 'e'}, {"help", no_argument, nullptr, 'h'}, {nullptr, 0, nullptr, 0}};
    Options options;
    for (int found = 0; (found = getopt_long(argc, argv, "+c:", longOptions, nullptr)) != -1;) {
        switch (found) {
        case 'c':
            options.line = optarg;
            break;
        case 'e':
            options.echo = true;
            break;
        case 'h':
            options.help = true;
            break;
        default:
            return refuse(""); // getopt_long() has said what is wrong
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

} // namespace UnitShell

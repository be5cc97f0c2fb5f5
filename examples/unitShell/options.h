/// The shell's own command line.
#ifndef UNITSHELL_OPTIONS_H
#define UNITSHELL_OPTIONS_H

#include <optional>
#include <string>

namespace UnitShell {

struct Options
{
    bool help = false;
    bool echo = false;
    std::optional<std::string> line; // the one line to run
    std::optional<std::string> file; // the file to read lines from
};

/// Returns nothing if the arguments are wrong; std::cerr says why then.
std::optional<Options> readOptions(int argc, char** argv);

extern const char* const helpText;

} // namespace UnitShell

#endif

/// Lines from a terminal, for a shell that is built without line editing: the terminal's own is all there is.
#include <unistd.h>

#include "lineSource.h"

namespace UnitShell {

std::unique_ptr<LineSource> terminalLines()
{
    return std::make_unique<FileLines>(STDIN_FILENO, prompt);
}

} // namespace UnitShell

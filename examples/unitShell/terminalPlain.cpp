// SPDX-License-Identifier: MIT
/// Lines from a terminal, for a shell that is built without line editing.
#include <unistd.h>

#include "lineSource.h"

namespace UnitShell {

std::unique_ptr<LineSource> terminalLines()
{
    return std::make_unique<FileLines>(STDIN_FILENO, "standard input", prompt);
}

} // namespace UnitShell

// SPDX-License-Identifier: MIT
/// What the examples do about a standard stream that was closed before they started.
#ifndef CORVANE_EXAMPLES_STANDARDSTREAMS_H
#define CORVANE_EXAMPLES_STANDARDSTREAMS_H

#include <initializer_list>

#include <fcntl.h>
#include <unistd.h>

/// Keeps files that are opened later (a mailbox, say) from becoming a standard stream. A closed stream gets /dev/null
/// opened for the wrong direction: using the stream fails, as it would if it were closed.
inline void keepClosedStreamsClosed()
{
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) < 0) {
            open("/dev/null", (descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY) | O_CLOEXEC);
        }
    }
}

#endif

/// How the examples take it that they are started without a standard stream.
#ifndef CORVANE_EXAMPLES_STANDARDSTREAMS_H
#define CORVANE_EXAMPLES_STANDARDSTREAMS_H

#include <fcntl.h>
#include <unistd.h>

/// Sees to it that nothing that is opened later, a mailbox say, takes the place of a standard stream that is closed.
/// What takes it here is open the wrong way round, so that its use fails as that of a closed one does.
inline void keepClosedStreamsClosed()
{
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) < 0) {
            open("/dev/null", (descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY) | O_CLOEXEC);
        }
    }
}

#endif

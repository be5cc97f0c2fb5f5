/// The signals that end the shell: SIGINT and SIGTERM.
#include "interrupts.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace UnitShell::Interrupts {

namespace {

volatile std::sig_atomic_t receivedSignal = 0;

// Readable once a signal came: a signal between a look at the flag above and the wait for input would otherwise be
// noticed only with the next input.
int wakeUp[2] = {-1, -1};

extern "C" void noteSignal(int signal)
{
    const int error = errno;
    receivedSignal = signal;
    [[maybe_unused]] const ssize_t written = write(wakeUp[1], "", 1); // full is as good as written
    errno = error;
}

} // namespace

void install()
{
    if (pipe2(wakeUp, O_CLOEXEC | O_NONBLOCK) != 0) {
        throw std::system_error(errno, std::generic_category(), "pipe");
    }
    struct sigaction action = {};
    action.sa_handler = noteSignal;
    // What is being written goes on: an answer is whole or not there.
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
    for (const int signal : {SIGINT, SIGTERM}) {
        struct sigaction before = {};
        sigaction(signal, nullptr, &before);
        if (before.sa_handler != SIG_IGN) {
            sigaction(signal, &action, nullptr);
        }
    }
}

int received()
{
    return receivedSignal;
}

bool waitForInput(int descriptor)
{
    std::array<pollfd, 2> waited = {{{descriptor, POLLIN, 0}, {wakeUp[0], POLLIN, 0}}};
    while (receivedSignal == 0 && poll(waited.data(), waited.size(), -1) < 0) {
        if (errno != EINTR) {
            throw std::system_error(errno, std::generic_category(), "poll");
        }
    }
    return receivedSignal == 0;
}

} // namespace UnitShell::Interrupts

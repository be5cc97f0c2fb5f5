// SPDX-License-Identifier: MIT
/// Notes a signal, and wakes up whoever waits for input.
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

// A pipe that can be read once a signal has arrived. Without it, a signal that arrives between the look at the flag
// above and the wait for input would be noticed only with the next input.
int wakeUp[2] = {-1, -1};

extern "C" void noteSignal(int signal)
{
    const int error = errno;
    receivedSignal = signal;
    [[maybe_unused]] const ssize_t written = write(wakeUp[1], "", 1); // if it is full, it can be read
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
    // SA_RESTART: an answer that is being written becomes whole.
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

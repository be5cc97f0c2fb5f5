// SPDX-License-Identifier: MIT
/// The event-log process: receives the entries of all clients of a user in the mailbox "ElogEngine" and prints them.
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstdint>
#include <iostream>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>

#include <getopt.h>
#include <poll.h>
#include <unistd.h>
#include <version/corvaneVersion.h>
#include <zelStandin.h>

#include "../standardStreams.h"
#include "engineLock.h"
#include "entry.h"

namespace {

using namespace ElogEngine;

constexpr const char* help = R"(Usage: elogEngine [--json]

Receives the event-log entries of this user's programs and prints a line for
each: time, sequence number, program and process id of its writer, event id,
parameters and text. To keep the lines: elogEngine >> FILE

  --json     print each entry as a JSON object
  --help     print this text
  --version  print the version

SIGTERM, SIGINT and SIGHUP end the engine; it first prints the entries that
have already arrived. Under nohup SIGHUP has no effect. A message that is not
an entry, or for which there is not enough memory, is dropped and reported on
standard error. Only one engine can run for a user.

Exit status: 0 after a signal; 1 if another engine is running, the mailbox
can't be created, a line can't be written, or standard output is blocked during
shutdown; 2 for wrong options.
)";

// A signal doesn't end a wait for messages, so the engine looks for one this often.
constexpr int signalLookMs = 200;
constexpr int looksAfterSignal = 10;
constexpr std::size_t batchBytes = std::size_t{256} << 10U;

volatile std::sig_atomic_t hasToStop = 0;

extern "C" void stop(int /*signal*/)
{
    hasToStop = 1;
}

void catchSignals()
{
    struct sigaction action = {};
    action.sa_handler = stop;
    ::sigaction(SIGTERM, &action, nullptr);
    ::sigaction(SIGINT, &action, nullptr);
    if (::signal(SIGHUP, SIG_IGN) != SIG_IGN) { // nohup ignores it
        ::sigaction(SIGHUP, &action, nullptr);
    }
    for (const int signal : {SIGPIPE, SIGXFSZ}) { // write() tells of a closed pipe or a full file
        static_cast<void>(::signal(signal, SIG_IGN));
    }
}

/// Writes to standard output or standard error. After a signal it gives up if nothing can be written for two seconds.
///
/// Errors  std::runtime_error; part of `lines` may be written then.
void print(const std::string& lines, int output = STDOUT_FILENO)
{
    int looksLeft = looksAfterSignal;
    for (std::size_t written = 0; written < lines.size();) {
        pollfd waited = {output, POLLOUT, 0};
        if (::poll(&waited, 1, signalLookMs) <= 0) {
            if (hasToStop != 0 && --looksLeft < 0) {
                throw std::runtime_error("standard output is blocked");
            }
            continue;
        }
        looksLeft = looksAfterSignal;
        // A pipe that can be written to has room for PIPE_BUF bytes, so this doesn't wait.
        const std::size_t length = std::min<std::size_t>(lines.size() - written, PIPE_BUF);
        const ssize_t result = ::write(output, lines.data() + written, length);
        if (result < 0 && errno != EINTR && errno != EAGAIN) {
            throw std::runtime_error("can't write to standard output");
        }
        written += static_cast<std::size_t>(std::max<ssize_t>(result, 0));
    }
}

/// Writes a message for people to standard error. Once that fails, it writes none any more.
void report(const std::string& text)
{
    static bool isRead = true;
    try {
        if (isRead) {
            print("elogEngine: " + text + "\n", STDERR_FILENO);
        }
    } catch (const std::exception&) {
        isRead = false;
    }
}

/// Receives entries and prints them, many at a time if many have arrived.
class Engine
{
public:
    explicit Engine(bool json) : m_json(json)
    {
        lockOutOtherEngines(); // first: a client may send to any mailbox of the name
        if (__zel_create_mailbox("ElogEngine", 0, "", 0) == ZEL_NO_MAILBOX) {
            throw std::runtime_error("can't create the mailbox ElogEngine");
        }
    }

    /// Returns after a signal, when the entries that had arrived by then are printed.
    void run()
    {
        report("ready");
        bool isClosed = false;
        do {
            if (!isClosed && hasToStop != 0) {
                isClosed = true;
                zel_standin_close_mailbox(); // what has arrived can still be received
            }
        } while (takeBatch() || !isClosed);
    }

private:
    /// Returns  false if nothing has arrived.
    bool takeBatch()
    {
        zel_msg* message = __zel_receive(nullptr, signalLookMs, ZEL_ANY_SENDER, "", 0);
        const bool hasArrived = message != nullptr;
        std::size_t taken = 0;
        while (message != nullptr) {
            const std::size_t size = zel_standin_size(message);
            take(message, size);
            __zel_free(&message, "", 0);
            taken += size;
            message = taken < batchBytes ? __zel_receive(nullptr, 0, ZEL_ANY_SENDER, "", 0) : nullptr;
        }
        print(m_lines);
        std::string().swap(m_lines); // frees the memory: one entry may have made it large
        return hasArrived;
    }

    void take(const zel_msg* message, std::size_t size)
    {
        const std::size_t linesBefore = m_lines.size();
        std::string flaw;
        Arrival arrival = {std::chrono::system_clock::now(), m_sequence + 1, {zel_standin_process(message), ""}};
        try {
            arrival.writer.program = zel_standin_program(message);
            Entry entry;
            flaw = readEntry(reinterpret_cast<const unsigned char*>(message), size, entry);
            if (flaw.empty()) {
                appendLine(m_lines, arrival, entry, m_json);
                ++m_sequence;
            }
        } catch (const std::bad_alloc&) { // a line may be six times as long as its text
            m_lines.resize(linesBefore);
            m_lines.shrink_to_fit();
            flaw = "no memory";
        }
        if (!flaw.empty()) {
            report("dropped a message of " + std::to_string(size) + " bytes from " + textOf(arrival.writer) + ": " +
                   flaw);
        }
    }

    const bool m_json;
    std::uint64_t m_sequence = 0;
    std::string m_lines; // of entries that are received and not printed yet
};

/// Returns  the exit status if there is nothing more to do.
std::optional<int> readOptions(int argc, char** argv, bool& json)
{
    static const option known[] = {{"json", no_argument, nullptr, 'j'},
                                   {"help", no_argument, nullptr, 'h'},
                                   {"version", no_argument, nullptr, 'v'},
                                   {nullptr, 0, nullptr, 0}};
    for (int found = 0; (found = ::getopt_long(argc, argv, "", known, nullptr)) != -1;) {
        if (found == 'h') {
            std::cout << help << std::flush;
            return std::cout ? 0 : 1;
        }
        if (found == 'v') {
            std::cout << "elogEngine " << CORVANE_VERSION_MAJOR << '.' << CORVANE_VERSION_MINOR << '.'
                      << CORVANE_VERSION_PATCH << "\n"
                      << std::flush;
            return std::cout ? 0 : 1;
        }
        if (found != 'j') {
            std::cerr << "Try: elogEngine --help\n";
            return 2;
        }
        json = true;
    }
    if (optind < argc) {
        std::cerr << "elogEngine: unexpected argument '" << argv[optind] << "'\nTry: elogEngine --help\n";
        return 2;
    }
    return std::nullopt;
}

} // namespace

int main(int argc, char** argv)
{
    keepClosedStreamsClosed();
    bool json = false;
    if (const auto status = readOptions(argc, argv, json)) {
        return *status;
    }
    catchSignals();
    try {
        Engine(json).run();
    } catch (const std::exception& error) {
        report(error.what());
        return 1;
    }
    return 0;
}

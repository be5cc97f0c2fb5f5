/// The event-log process: owns the mailbox "ElogEngine" and prints, or also keeps, the entries that clients send.
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
#include <zelStandin.h>

#include "../standardStreams.h"
#include "entry.h"
#include "entryFile.h"

namespace {

using namespace ElogEngine;

constexpr const char* help =
    "Usage: elogEngine [--json] [--append FILE]\n"
    "\n"
    "Receives event-log entries in the mailbox ElogEngine and prints one line for each: time, sequence number,\n"
    "sender, event id, parameters and text. It ends on SIGTERM or SIGINT, when it has read what had arrived.\n"
    "\n"
    "  --json         print JSON objects, one per line\n"
    "  --append FILE  append the lines to FILE as well; a line is printed when it is on disk there\n"
    "  --help         print this\n"
    "\n"
    "Messages that are no entries, or for which there is no memory, are dropped and reported on standard error. Exit\n"
    "status: 0 after a signal, 1 if another process has the mailbox, FILE can't be opened, a line can't be written or\n"
    "nobody reads standard output after a signal, 2 for wrong options.\n";

constexpr std::uint32_t noMailbox = 0xFFFFFFFF;
constexpr std::uint32_t anySender = 0xFFF11111;
// A signal doesn't end a wait, and a message that tells of one may find no place in a mailbox full of clients.
constexpr int signalLookMs = 200;
constexpr int looksAfterSignal = 10;
constexpr std::size_t batchBytes = std::size_t{256} << 10U;

struct Options
{
    bool json = false;
    std::optional<std::string> appendTo;
};

volatile std::sig_atomic_t hasToStop = 0;

extern "C" void stop(int /*signal*/)
{
    hasToStop = 1;
}

void catchSignals()
{
    struct sigaction action = {};
    action.sa_handler = stop;
    for (const int signal : {SIGTERM, SIGINT}) {
        ::sigaction(signal, &action, nullptr);
    }
    for (const int signal : {SIGPIPE, SIGXFSZ}) { // a closed output or a full file is found when writing to it
        static_cast<void>(::signal(signal, SIG_IGN));
    }
}

/// Writes to one of the standard outputs; after a signal only as long as somebody reads that.
///
/// Errors  std::runtime_error; part of `lines` may be written then.
void print(const std::string& lines, int output = STDOUT_FILENO)
{
    int looksLeft = looksAfterSignal;
    for (std::size_t written = 0; written < lines.size();) {
        pollfd waited = {output, POLLOUT, 0};
        if (::poll(&waited, 1, signalLookMs) <= 0) {
            if (hasToStop != 0 && --looksLeft < 0) {
                throw std::runtime_error("nobody reads standard output");
            }
            continue;
        }
        looksLeft = looksAfterSignal;
        // A pipe that can be written to has room for as much at least, so that this doesn't wait.
        const std::size_t length = std::min<std::size_t>(lines.size() - written, PIPE_BUF);
        const ssize_t result = ::write(output, lines.data() + written, length);
        if (result < 0 && errno != EINTR && errno != EAGAIN) {
            throw std::runtime_error("can't write to standard output");
        }
        written += static_cast<std::size_t>(std::max<ssize_t>(result, 0));
    }
}

/// Tells people something on standard error. Where nobody listens any more, it is left unsaid.
void report(const std::string& text)
{
    static bool isHeard = true;
    try {
        if (isHeard) {
            print("elogEngine: " + text + "\n", STDERR_FILENO);
        }
    } catch (const std::exception&) {
        isHeard = false;
    }
}

/// Receives entries and writes them out, many at a time where many have come.
class Engine
{
public:
    explicit Engine(const Options& options) : m_json(options.json)
    {
        // Before the file, which is another engine's as long as that has the mailbox.
        if (__zel_create_mailbox("ElogEngine", 0, "", 0) == noMailbox) {
            throw std::runtime_error("can't create the mailbox ElogEngine; another engine may have it");
        }
        if (options.appendTo) {
            m_file.emplace(*options.appendTo);
        }
    }

    /// Ends when a signal has come and what had arrived by then is written out.
    void run()
    {
        report("ready");
        bool isClosed = false;
        do {
            if (!isClosed && hasToStop != 0) {
                isClosed = true;
                zel_standin_close_mailbox(); // what had arrived is still received
            }
        } while (takeBatch() || !isClosed);
    }

private:
    /// Returns  false if nothing has come.
    bool takeBatch()
    {
        zel_msg* message = __zel_receive(nullptr, signalLookMs, anySender, "", 0);
        const bool hasCome = message != nullptr;
        std::size_t taken = 0;
        while (message != nullptr) {
            const std::size_t size = zel_standin_size(message);
            take(message, size);
            __zel_free(&message, "", 0);
            taken += size;
            message = taken < batchBytes ? __zel_receive(nullptr, 0, anySender, "", 0) : nullptr;
        }
        writeOut();
        return hasCome;
    }

    void take(const zel_msg* message, std::size_t size)
    {
        const std::uint32_t sender = __zel_sender(message, "", 0);
        const std::size_t linesBefore = m_lines.size();
        std::string flaw;
        try {
            Entry entry;
            flaw = readEntry(reinterpret_cast<const unsigned char*>(message), size, entry);
            if (flaw.empty()) {
                appendLine({std::chrono::system_clock::now(), sender, m_sequence + 1}, entry);
                ++m_sequence;
            }
        } catch (const std::bad_alloc&) { // a line may be six times as long as its text
            m_lines.resize(linesBefore);
            m_lines.shrink_to_fit();
            flaw = "no memory";
        }
        if (!flaw.empty()) {
            report("dropped a message of " + std::to_string(size) + " bytes from " + std::to_string(sender) + ": " +
                   flaw);
        }
    }

    void appendLine(const Arrival& arrival, const Entry& entry)
    {
        if (m_json) {
            appendJson(m_lines, arrival, entry);
        } else {
            appendText(m_lines, arrival, entry);
        }
        m_lines += '\n';
    }

    void writeOut()
    {
        if (m_lines.empty()) {
            return;
        }
        if (m_file) {
            m_file->append(m_lines);
        }
        print(m_lines);
        std::string().swap(m_lines); // and its memory, which one entry may have made large
    }

    const bool m_json;
    std::optional<EntryFile> m_file;
    std::uint64_t m_sequence = 0;
    std::string m_lines; // of entries that were received and not written yet
};

/// Returns  the exit status if there is nothing more to do.
std::optional<int> readOptions(int argc, char** argv, Options& options)
{
    static const option known[] = {{"json", no_argument, nullptr, 'j'},
                                   {"append", required_argument, nullptr, 'a'},
                                   {"help", no_argument, nullptr, 'h'},
                                   {nullptr, 0, nullptr, 0}};
    for (int found = 0; (found = ::getopt_long(argc, argv, "", known, nullptr)) != -1;) {
        switch (found) {
        case 'j':
            options.json = true;
            break;
        case 'a':
            options.appendTo = optarg;
            break;
        case 'h':
            std::cout << help << std::flush;
            return std::cout ? 0 : 1;
        default:
            std::cerr << "Try: elogEngine --help\n";
            return 2;
        }
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
    Options options;
    if (const auto status = readOptions(argc, argv, options)) {
        return *status;
    }
    catchSignals();
    try {
        Engine(options).run();
    } catch (const std::exception& error) {
        report(error.what());
        return 1;
    }
    return 0;
}

/// The event-log process: owns the mailbox "ElogEngine" and prints, or also keeps, the entries that clients send.
#include <chrono>
#include <csignal>
#include <cstdint>
#include <future>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>

#include <getopt.h>
#include <pthread.h>
#include <unistd.h>
#include <zelStandin.h>

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
    "Messages that are no entries are dropped and reported on standard error. Exit status: 0 after a signal, 1 if\n"
    "the mailbox exists already or a line can't be written, 2 for wrong options.\n";

constexpr std::uint32_t noMailbox = 0xFFFFFFFF;
constexpr std::uint32_t ownMailbox = 0xFFF00000;
constexpr std::uint32_t anySender = 0xFFF11111;
constexpr std::uint32_t forEver = 0xFFFFFFFF;
constexpr std::uint32_t stopNo = 1;
constexpr std::size_t batchBytes = std::size_t{256} << 10U;

struct Options
{
    bool json = false;
    std::optional<std::string> appendTo;
};

/// Turns the first SIGTERM or SIGINT into a message to the engine's mailbox, so that there is one thing to wait for.
class SignalMailbox
{
public:
    /// Requires  the signals are blocked.
    SignalMailbox(const sigset_t& signals, std::uint32_t engine)
        : m_thread([this, signals, engine] { run(signals, engine); })
    {
        m_id = m_created.get_future().get();
        if (m_id == noMailbox) {
            m_thread.join();
            throw std::runtime_error("can't create a mailbox");
        }
    }

    ~SignalMailbox()
    {
        // The signal is blocked: the thread takes it from sigwait(), if none has come before.
        ::pthread_kill(m_thread.native_handle(), SIGTERM); // NOLINT(bugprone-bad-signal-to-kill-thread,cert-pos44-c)
        m_thread.join();
    }

    /// Returns  whether a message says that a signal came.
    bool hasSent(const zel_msg* message) const { return __zel_sender(message, "", 0) == m_id; }

    SignalMailbox(const SignalMailbox&) = delete;
    SignalMailbox& operator=(const SignalMailbox&) = delete;

private:
    void run(const sigset_t& signals, std::uint32_t engine)
    {
        const std::string name = "ElogEngineSignals-" + std::to_string(::getpid());
        const std::uint32_t id = __zel_create_mailbox(name.c_str(), 0, "", 0);
        m_created.set_value(id);
        int signal = 0;
        if (id != noMailbox && ::sigwait(&signals, &signal) == 0) {
            zel_msg* stop = __zel_alloc(sizeof(std::uint32_t), stopNo, "", 0);
            __zel_send(&stop, engine, ownMailbox, "", 0);
        }
    }

    std::promise<std::uint32_t> m_created;
    std::uint32_t m_id = noMailbox;
    std::thread m_thread; // the last member: it uses the others
};

/// Receives entries and writes them out, many at a time where many have come.
class Engine
{
public:
    explicit Engine(const Options& options) : m_json(options.json)
    {
        if (options.appendTo) {
            m_file.emplace(*options.appendTo);
        }
        ::sigemptyset(&m_signals);
        ::sigaddset(&m_signals, SIGTERM);
        ::sigaddset(&m_signals, SIGINT);
        ::pthread_sigmask(SIG_BLOCK, &m_signals, nullptr);
        static_cast<void>(::signal(SIGPIPE, SIG_IGN)); // a closed output is found when writing to it
    }

    void run()
    {
        const std::uint32_t id = __zel_create_mailbox("ElogEngine", 0, "", 0);
        if (id == noMailbox) {
            throw std::runtime_error("can't create the mailbox ElogEngine; another engine may have it");
        }
        const SignalMailbox signals(m_signals, id);
        std::cerr << "elogEngine: ready" << std::endl;
        bool isStopping = false;
        while (zel_msg* message = __zel_receive(nullptr, forEver, anySender, "", 0)) {
            do {
                if (!isStopping && signals.hasSent(message)) {
                    isStopping = true;
                    zel_standin_close_mailbox(); // what had arrived is still received
                } else {
                    take(message);
                }
                __zel_free(&message, "", 0);
            } while (m_lines.size() < batchBytes && (message = __zel_receive(nullptr, 0, anySender, "", 0)) != nullptr);
            writeOut();
        }
    }

private:
    void take(const zel_msg* message)
    {
        const std::size_t size = zel_standin_size(message);
        const std::uint32_t sender = __zel_sender(message, "", 0);
        Entry entry;
        const std::string flaw = readEntry(reinterpret_cast<const unsigned char*>(message), size, entry);
        if (!flaw.empty()) {
            std::cerr << "elogEngine: dropped a message of " << size << " bytes from " << sender << ": " << flaw
                      << "\n";
            return;
        }
        const Arrival arrival = {std::chrono::system_clock::now(), sender, ++m_sequence};
        m_lines += m_json ? asJson(arrival, entry) : asText(arrival, entry);
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
        if (!std::cout.write(m_lines.data(), static_cast<std::streamsize>(m_lines.size())).flush()) {
            throw std::runtime_error("can't write to standard output");
        }
        m_lines.clear();
    }

    const bool m_json;
    std::optional<EntryFile> m_file;
    sigset_t m_signals = {};
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
    Options options;
    if (const auto status = readOptions(argc, argv, options)) {
        return *status;
    }
    try {
        Engine(options).run();
    } catch (const std::exception& error) {
        std::cerr << "elogEngine: " << error.what() << "\n";
        return 1;
    }
    return 0;
}

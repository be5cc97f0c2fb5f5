// SPDX-License-Identifier: MIT
/// The event-log engine of a test process: a thread with the engine's mailbox, in a meeting folder of its own.
#include <testing/entryRecorder.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <future>
#include <ostream>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

#include <elog/elogIf.h>
#include <unistd.h>
#include <zelStandin.h>

#include "testing/src/arrivals.h"

namespace Corvane::Testing {

namespace {

/// A message to the engine; docs/event-log-message.md shows its bytes.
class Message
{
public:
    explicit Message(const zel_msg* message)
        : m_message(message), m_bytes(reinterpret_cast<const char*>(message)), m_size(zel_standin_size(message))
    {
        std::memcpy(m_head, m_bytes, std::min(m_size, sizeof m_head));
    }

    bool isEntry() const
    {
        return m_size >= sizeof m_head && m_head[number] == 0x17070D1 &&
               m_size == sizeof m_head + paramsSize() + m_head[textLength] + sizeof(std::uint32_t);
    }

    int writer() const { return zel_standin_process(m_message); }
    std::string_view text() const { return {m_bytes + sizeof m_head + paramsSize(), m_head[textLength]}; }

    Entry entry() const
    {
        Entry entry{m_head[eventId], std::string(text()), std::vector<unsigned int>(m_head[params]), writer()};
        std::copy_n(m_bytes + sizeof m_head, paramsSize(), reinterpret_cast<char*>(entry.params.data()));
        return entry;
    }

private:
    enum
    {
        number,
        eventId,
        params,
        textLength,
        words
    };

    std::size_t paramsSize() const { return std::size_t{m_head[params]} * sizeof(std::uint32_t); }

    const zel_msg* const m_message;
    const char* const m_bytes;
    const std::size_t m_size;
    std::uint32_t m_head[words] = {};
};

/// The folder in which this process and the programs that it starts meet, until the process ends.
class MeetingFolder
{
public:
    MeetingFolder()
    {
        std::string name = std::filesystem::temp_directory_path() / "corvane-testing-XXXXXX";
        if (::mkdtemp(name.data()) == nullptr || ::setenv("XDG_RUNTIME_DIR", name.c_str(), 1) != 0) {
            throw std::system_error(errno, std::generic_category(), name);
        }
        m_path = name;
    }
    MeetingFolder(const MeetingFolder&) = delete;
    MeetingFolder& operator=(const MeetingFolder&) = delete;
    ~MeetingFolder()
    {
        if (::getpid() == m_process) { // not a child made by fork()
            std::error_code ignored;   // what is left does no harm
            std::filesystem::remove_all(m_path, ignored);
        }
    }

private:
    const pid_t m_process = ::getpid();
    std::filesystem::path m_path;
};

class Engine
{
public:
    /// Returns  the engine of this process, which the first call starts. It is never destroyed: a client may send to it
    ///          while the process ends.
    static Engine& instance()
    {
        static const MeetingFolder folder;
        static Engine& engine = *new Engine;
        return engine;
    }

    void begin();

    void end()
    {
        const ExclusiveLock lock(m_mutex);
        m_isRecording = false;
        m_arrivals.clear();
    }

    std::vector<Entry> take(std::size_t atLeast, std::chrono::milliseconds limit)
    {
        return m_arrivals.take(atLeast, limit);
    }

private:
    Engine()
    {
        std::promise<bool> promise;
        std::future<bool> created = promise.get_future();
        std::thread([this, promise = std::move(promise)]() mutable {
            const bool isThere = __zel_create_mailbox("ElogEngine", 0, "", 0) != ZEL_NO_MAILBOX;
            promise.set_value(isThere);
            if (isThere) {
                receive();
            }
        }).detach();
        if (!created.get()) {
            throw std::runtime_error("there is no mailbox for the recorder; standard error says why");
        }
    }

    [[noreturn]] void receive()
    {
        for (;;) {
            zel_msg* message = __zel_receive(nullptr, UINT32_MAX, ZEL_ANY_SENDER, "", 0);
            if (message != nullptr) {
                record(Message(message));
                __zel_free(&message, "", 0);
            }
        }
    }

    void record(const Message& message);

    Mutex m_mutex;
    std::condition_variable_any m_markArrived;
    bool m_isRecording CORVANE_GUARDED_BY(m_mutex) = false;
    std::string m_mark CORVANE_GUARDED_BY(m_mutex); // an entry: what this process wrote before it isn't recorded
    unsigned long m_marks CORVANE_GUARDED_BY(m_mutex) = 0;
    Arrivals<Entry> m_arrivals;
};

void Engine::begin()
{
    Elog::V2::ElogIf& client = Elog::V2::ElogIf::getInstance();
    const ExclusiveLock lock(m_mutex);
    if (m_isRecording) {
        throw std::logic_error("there is an EntryRecorder already");
    }
    m_mark = "EntryRecorder " + std::to_string(++m_marks);
    client.elogWrite(0, m_mark, {});
    m_isRecording = true;
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!m_mark.empty()) {
        if (m_markArrived.wait_until(m_mutex, end) == std::cv_status::timeout) {
            m_isRecording = false;
            throw std::runtime_error("the event-log client of this process doesn't send its entries to the recorder: "
                                     "it has found another engine before, or it has no mailbox");
        }
    }
}

void Engine::record(const Message& message)
{
    const ExclusiveLock lock(m_mutex);
    if (!m_isRecording || !message.isEntry()) {
        return;
    }
    if (m_mark.empty() || message.writer() != ::getpid()) {
        m_arrivals.add([&] { return message.entry(); });
    } else if (message.text() == m_mark) {
        m_mark.clear();
        m_markArrived.notify_all();
    }
}

} // namespace

bool operator==(const Entry& left, const Entry& right)
{
    return left.eventId == right.eventId && left.text == right.text && left.params == right.params &&
           left.writer == right.writer;
}

bool operator!=(const Entry& left, const Entry& right)
{
    return !(left == right);
}

std::ostream& operator<<(std::ostream& out, const Entry& entry)
{
    out << "event " << entry.eventId << " [";
    for (std::size_t i = 0; i < entry.params.size(); ++i) {
        out << (i > 0 ? "," : "") << entry.params[i];
    }
    return out << "] \"" << entry.text << "\" from process " << entry.writer;
}

EntryRecorder::EntryRecorder()
{
    Engine::instance().begin();
}

EntryRecorder::~EntryRecorder()
{
    Engine::instance().end();
}

std::vector<Entry> EntryRecorder::take(std::size_t atLeast, std::chrono::milliseconds limit)
{
    return Engine::instance().take(atLeast, limit);
}

} // namespace Corvane::Testing

// SPDX-License-Identifier: MIT
/// Stand-in for the unit's messaging library, libzel.so.1. Its contract is in zel.h, what it adds in zelStandin.h.
///
/// A mailbox is a datagram socket. The kernel keeps what arrives until the thread asks for it: each message whole or
/// not at all, those of one sender in their order, while the senders of a full mailbox wait.
#include <deque>
#include <list>

#include <poll.h>
#include <pthread.h>

#include "folder.h"
#include "zelStandin.h"

namespace {

using namespace Zel;
using std::chrono::milliseconds;

constexpr std::size_t mostKeptBytes = std::size_t{64} << 20U;
constexpr milliseconds lookInterval{50}; // while a name, memory or a descriptor is waited for

bool matches(const Head& message, const std::uint32_t* numbers, std::uint32_t from)
{
    std::uint32_t number = 0;
    std::memcpy(&number, &message + 1, sizeof number);
    const std::uint32_t* const end = numbers == nullptr ? nullptr : numbers + 1 + *numbers;
    const bool isWanted = numbers == nullptr || *numbers == 0 || std::find(numbers + 1, end, number) != end;
    return isWanted && (from == ZEL_ANY_SENDER || from == message.sender);
}

class Mailbox // NOLINT(cppcoreguidelines-special-member-functions): its constant members can't be copied
{
public:
    explicit Mailbox(const std::string& name) : m_name(enterFolder(m_folder, m_socket, name)) {}
    ~Mailbox() { m_process == ::getpid() ? close() : void(); } // a child made by fork() leaves it to its parent

    std::uint32_t id() const { return m_id; }
    void locate(const char* name, Message reply) { m_requests.emplace_back(name, std::move(reply)); }

    void close()
    {
        m_isClosed = true;
        ::unlinkat(m_folder.get(), m_name.c_str(), 0);
        ::shutdown(m_socket.get(), SHUT_RD); // a child made by fork() may have the socket, too
    }

    Message receive(const std::uint32_t* numbers, std::uint32_t timeoutMs, std::uint32_t from)
    {
        const auto deadline =
            std::chrono::steady_clock::now() + milliseconds(timeoutMs == UINT32_MAX ? INT64_C(1) << 40 : timeoutMs);
        for (std::size_t looked = 0;;) {
            answerRequests();
            for (; looked < m_kept.size(); ++looked) {
                if (matches(*m_kept[looked], numbers, from)) {
                    Message message = std::move(m_kept[looked]);
                    m_kept.erase(m_kept.begin() + static_cast<std::ptrdiff_t>(looked));
                    m_keptBytes -= message->size + sizeof(Head);
                    return message;
                }
            }
            const auto left = std::chrono::ceil<milliseconds>(deadline - std::chrono::steady_clock::now());
            const auto look = std::clamp(left, milliseconds(0), lookInterval);
            const int error = takeIn(m_isClosed ? milliseconds(0) : m_requests.empty() ? left : look);
            isShortage(error) ? ::poll(nullptr, 0, static_cast<int>(look.count())) : 0;
            if (error != 0 && (std::chrono::steady_clock::now() >= deadline || (m_isClosed && !isShortage(error)))) {
                return {};
            }
        }
    }

    void send(Message message, std::uint32_t to)
    {
        *message = Head{message->size, m_id};
        std::strncpy(message->program, program_invocation_short_name, sizeof message->program - 1);
        if (to == m_id && !m_isClosed) {
            keep(std::move(message));
            return;
        }
        while (isShortage(trySend(*message, to))) {
            ::poll(nullptr, 0, static_cast<int>(lookInterval.count()));
        }
    }

private:
    void answerRequests()
    try {
        const Fd folder = m_requests.empty() ? Fd() : openFolder();
        m_requests.remove_if([&](auto& request) {
            auto& [name, reply] = request;
            if (connectToFirst(folder, socketsIn(folder, name, 0), reply->sender)) {
                keep(std::move(reply));
            }
            return reply == nullptr;
        });
    } catch (const std::runtime_error&) {
        // Without the folder or a descriptor nobody is found now.
    }

    void keep(Message&& message)
    {
        m_kept.push_back(std::move(message));
        m_keptBytes += m_kept.back()->size + sizeof(Head);
    }

    int takeIn(milliseconds time)
    {
        if (time.count() > 0 && time != m_timeout) {
            m_timeout = time;
            const timeval value = {time.count() / 1000, time.count() % 1000 * 1000};
            ::setsockopt(m_socket.get(), SOL_SOCKET, SO_RCVTIMEO, &value, sizeof value);
        }
        Message message;
        const bool hasRoom = m_isClosed || m_keptBytes < mostKeptBytes; // little comes after the end
        const int error =
            hasRoom ? receiveMessage(m_socket.get(), m_room, m_announced, message, time.count() > 0) : ENOMEM;
        message != nullptr ? keep(std::move(message)) : void();
        return error;
    }

    int trySend(Head& message, std::uint32_t to)
    try {
        if (m_connectedTo != to) {
            const Fd folder = openFolder();
            m_connectedTo = ZEL_NO_MAILBOX;
            m_connection = connectToFirst(folder, socketsIn(folder, "", to), m_connectedTo);
        }
        return m_connection ? sendMessage(m_connection.get(), message) : errno;
    } catch (const std::system_error& error) {
        return error.code().value();
    }

    const pid_t m_process = ::getpid();
    const Fd m_socket = openSocket();
    const Fd m_folder = openFolder();
    const std::string m_name; // of the socket, in the folder
    const std::uint32_t m_id = idOf(m_name);
    bool m_isClosed = false;
    milliseconds m_timeout{0};  // of the socket
    Message m_room;             // for a datagram
    int m_announced = 0;        // long messages
    std::deque<Message> m_kept; // arrived, and not received yet
    std::size_t m_keptBytes = 0;
    std::list<std::pair<std::string, Message>> m_requests; // for mailboxes that aren't there yet
    Fd m_connection;                                       // to the mailbox that was sent to last
    std::uint32_t m_connectedTo = ZEL_NO_MAILBOX;
};

// It ends with its thread, not with the static objects: while those end, a thread may still wait in here.
thread_local std::unique_ptr<Mailbox> t_mailbox;

const Head& headOf(const zel_msg* message)
{
    static const Head none;
    return message == nullptr ? none : *(static_cast<const Head*>(static_cast<const void*>(message)) - 1);
}

Message takeOver(zel_msg** message)
{
    zel_msg* const taken = message == nullptr ? nullptr : std::exchange(*message, nullptr);
    return Message(taken == nullptr ? nullptr : static_cast<Head*>(static_cast<void*>(taken)) - 1);
}

zel_msg* handOver(Message message)
{
    return message == nullptr ? nullptr : static_cast<zel_msg*>(static_cast<void*>(message.release() + 1));
}

} // namespace

// The callers are not prepared for exceptions: a call for which there is no memory has failed.

std::uint32_t __zel_create_mailbox(const char* name, std::uint32_t flags, const char* /*file*/, int /*line*/)
try {
    const std::string_view chosen = name != nullptr ? name : "";
    if (chosen.empty() || chosen.size() > 60 || chosen.find('/') != std::string_view::npos || flags != 0 ||
        t_mailbox != nullptr) {
        throw std::runtime_error("a thread has one, with a name of 1 to 60 bytes without a slash, and flags 0");
    }
    [[maybe_unused]] static const int isRegistered = ::pthread_atfork(nullptr, nullptr, [] { t_mailbox.reset(); });
    t_mailbox = std::make_unique<Mailbox>(name);
    return t_mailbox->id();
} catch (const std::exception& error) {
    static_cast<void>(std::fprintf(stderr, "zel: no mailbox: %s\n", error.what()));
    return ZEL_NO_MAILBOX;
}

zel_msg* __zel_alloc(std::size_t size, std::uint32_t msgNo, const char* /*file*/, int /*line*/)
{
    zel_msg* const message = handOver(allocateMessage(size));
    return message == nullptr ? nullptr : static_cast<zel_msg*>(std::memcpy(message, &msgNo, sizeof msgNo));
}

void __zel_locate_async(const char* name, zel_msg** reply, std::uint32_t from, const char* /*file*/, int /*line*/)
try {
    Message message = takeOver(reply);
    if (name != nullptr && *name != '\0' && message != nullptr && from == ZEL_OWN_MAILBOX && t_mailbox != nullptr) {
        t_mailbox->locate(name, std::move(message));
    }
} catch (const std::exception&) {
}

zel_msg* __zel_receive(const std::uint32_t* filter, std::uint32_t timeoutMs, std::uint32_t from, const char* /*file*/,
                       int /*line*/)
try {
    return t_mailbox == nullptr ? nullptr : handOver(t_mailbox->receive(filter, timeoutMs, from));
} catch (const std::exception&) {
    return nullptr;
}

std::uint32_t __zel_sender(const zel_msg* msg, const char* /*file*/, int /*line*/)
{
    return headOf(msg).sender;
}

void __zel_free(zel_msg** msg, const char* /*file*/, int /*line*/)
{
    takeOver(msg);
}

void __zel_send(zel_msg** msg, std::uint32_t to, std::uint32_t from, const char* /*file*/, int /*line*/)
try {
    Message message = takeOver(msg);
    const bool isId = to != 0 && to < ZEL_OWN_MAILBOX; // others mean any mailbox in here, or none
    if (message != nullptr && isId && from == ZEL_OWN_MAILBOX && t_mailbox != nullptr) {
        t_mailbox->send(std::move(message), to);
    }
} catch (const std::exception&) {
}

std::size_t zel_standin_size(const zel_msg* msg)
{
    return headOf(msg).size;
}

int zel_standin_process(const zel_msg* msg)
{
    return headOf(msg).process;
}

const char* zel_standin_program(const zel_msg* msg)
{
    return headOf(msg).program;
}

void zel_standin_close_mailbox()
{
    t_mailbox != nullptr ? t_mailbox->close() : void();
}

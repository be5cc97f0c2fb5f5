/// Datagrams on the socket of a mailbox of the zel stand-in, good and bad ones, and what the mailbox's thread receives.
#include <algorithm>
#include <array>
#include <cstring>
#include <deque>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <zelStandin.h>

#include "fuzz/fuzzing.h"
#include "tests/support/runtimeFolder.h"

namespace {

using namespace Corvane::Fuzz;
namespace fs = std::filesystem;

constexpr std::size_t headSize = 32; // size of the message (8 bytes), sender (4), process (4), program (16)
constexpr std::size_t largestDatagram = 200000;
constexpr std::size_t largestMessage = std::size_t{64} << 20U;

/// A message that has arrived and was not received.
struct Waiting
{
    std::string bytes;
    std::uint32_t sender;
    std::string program;

    std::uint32_t number() const
    {
        std::uint32_t word = 0;
        std::memcpy(&word, bytes.data(), sizeof word);
        return word;
    }
};

/// A file whose descriptor goes with a datagram, and the bytes that the receiver may take from it.
struct Attached
{
    int file = -1;
    bool isSealed = false;
    std::string content;
};

/// Returns  the number of open sockets and attached files. Threads of libFuzzer open files of other kinds meanwhile.
std::size_t countDescriptors()
{
    const fs::directory_iterator all("/proc/self/fd");
    return static_cast<std::size_t>(std::count_if(begin(all), end(all), [](const fs::directory_entry& entry) {
        std::error_code closed;
        const std::string target = fs::read_symlink(entry.path(), closed).string();
        return target.rfind("socket:", 0) == 0 || target.rfind("/memfd:", 0) == 0 || target == "/dev/zero";
    }));
}

/// One mailbox, which belongs to the calling thread, and one program that writes to its socket.
class Mailbox
{
public:
    Mailbox(Input& input, const fs::path& folder) : m_input(input)
    {
        if (__zel_create_mailbox("m", 0, "", 0) == ZEL_NO_MAILBOX) {
            m_report.fail("no mailbox");
        }
        m_connection = ::socket(AF_UNIX, SOCK_DGRAM, 0);
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        fs::directory_iterator(folder)->path().string().copy(address.sun_path, sizeof address.sun_path - 1);
        const auto* const generic = static_cast<const sockaddr*>(static_cast<const void*>(&address));
        if (::connect(m_connection, generic, sizeof address) != 0) {
            m_report.fail("no connection to " + std::string(address.sun_path));
        }
    }
    ~Mailbox() { ::close(m_connection); }
    Mailbox(const Mailbox&) = delete;
    Mailbox& operator=(const Mailbox&) = delete;

    void run()
    {
        for (int operations = 0; operations < 60 && !m_input.isEmpty(); ++operations) {
            const unsigned int choice = m_input.below(16);
            if (choice == 0) {
                m_report.add("close the mailbox");
                zel_standin_close_mailbox();
            } else if (choice < 10) {
                sendDatagram();
            } else {
                receive();
            }
        }
        while (!m_waiting.empty()) {
            receiveMatching(nullptr, ZEL_ANY_SENDER);
        }
        receiveMatching(nullptr, ZEL_ANY_SENDER);
    }

private:
    void sendDatagram()
    {
        const std::size_t lengths[] = {m_input.below(64), headSize, headSize + 4 + m_input.below(64), largestDatagram,
                                       largestDatagram - 1};
        std::string datagram(lengths[m_input.below(5)], '\0');
        unsigned int state = m_input.byte();
        for (char& byte : datagram) {
            state = state * 1664525U + 1013904223U;
            byte = static_cast<char>(state >> 24U);
        }
        const std::uint64_t own = datagram.size() - std::min(headSize, datagram.size());
        const std::uint64_t sizes[] = {own,
                                       own,
                                       own + 1 + m_input.below(3),
                                       m_input.below(65536),
                                       300000,
                                       largestMessage,
                                       largestMessage + 1,
                                       UINT64_MAX - m_input.below(64)};
        const std::uint64_t size = sizes[m_input.below(8)];
        const std::uint32_t sender = 1 + m_input.below(3);
        const std::uint32_t number = m_input.below(3);
        const bool hasEnd = m_input.below(2) == 0; // of the program's name
        overwrite(datagram, 0, &size, sizeof size);
        overwrite(datagram, 8, &sender, sizeof sender);
        overwrite(datagram, hasEnd ? 20 : 31, "", 1);
        overwrite(datagram, headSize, &number, sizeof number);
        const Attached attached = attach(size);
        const bool isSent = send(datagram, attached.file);
        m_report.add("send " + std::to_string(datagram.size()) + " bytes, size " + std::to_string(size) + ", number " +
                     std::to_string(number) + ", sender " + std::to_string(sender) +
                     (attached.file < 0   ? ""
                      : attached.isSealed ? ", a sealed file of " + std::to_string(attached.content.size()) + " bytes"
                                          : ", another file") +
                     (isSent ? "" : ": refused"));
        if (attached.file >= 0) {
            ::close(attached.file);
        }
        if (isSent) {
            arrive(datagram, size, sender, attached);
        }
    }

    static void overwrite(std::string& datagram, std::size_t at, const void* bytes, std::size_t size)
    {
        if (at + size <= datagram.size()) {
            std::memcpy(&datagram[at], bytes, size);
        }
    }

    Attached attach(std::uint64_t size)
    {
        const unsigned int kind = m_input.below(6);
        if (kind < 2) {
            return {};
        }
        if (kind == 2) {
            return {::open("/dev/zero", O_RDONLY | O_CLOEXEC), false, ""};
        }
        const std::size_t missing = size > largestDatagram && size < 400000 ? size + headSize - largestDatagram : 5;
        const std::string content(missing - (kind == 3 ? 1 : 0), static_cast<char>(m_input.byte()));
        const int file = ::memfd_create("fuzz", MFD_CLOEXEC | MFD_ALLOW_SEALING);
        const bool isSealed = kind != 4;
        if (::write(file, content.data(), content.size()) != static_cast<ssize_t>(content.size()) ||
            (isSealed && ::fcntl(file, F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE) != 0)) {
            m_report.fail("no file");
        }
        return {file, isSealed, content};
    }

    /// Returns  false if there is no room for the datagram now, or the mailbox is closed.
    bool send(std::string& datagram, int file) const
    {
        iovec part = {datagram.data(), datagram.size()};
        const std::array<int, 2> files = {file, file}; // more than the receiver wants
        alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof files)> ancillary = {};
        msghdr header = {};
        header.msg_iov = &part;
        header.msg_iovlen = 1;
        if (file >= 0) {
            header.msg_control = ancillary.data();
            header.msg_controllen = ancillary.size();
            *CMSG_FIRSTHDR(&header) = {CMSG_LEN(sizeof files), SOL_SOCKET, SCM_RIGHTS};
            std::memcpy(CMSG_DATA(CMSG_FIRSTHDR(&header)), files.data(), sizeof files);
        }
        return ::sendmsg(m_connection, &header, MSG_NOSIGNAL | MSG_DONTWAIT) == static_cast<ssize_t>(datagram.size());
    }

    /// The rules of what is a message.
    void arrive(const std::string& datagram, std::uint64_t size, std::uint32_t sender, const Attached& attached)
    {
        if (datagram.size() < headSize || size < 4 || size > largestMessage) {
            return;
        }
        std::string bytes = datagram.substr(headSize);
        if (datagram.size() == largestDatagram && size > bytes.size()) {
            const std::size_t missing = size - bytes.size();
            if (!attached.isSealed || attached.content.size() < missing) {
                return;
            }
            bytes += attached.content.substr(0, missing);
        }
        if (bytes.size() == size) {
            const std::string name = datagram.substr(16, 15);
            m_waiting.push_back({bytes, sender, name.substr(0, name.find('\0'))});
        }
    }

    void receive()
    {
        std::array<std::uint32_t, 3> filter = {m_input.below(3), m_input.below(3), m_input.below(3)};
        const std::uint32_t from = m_input.below(2) == 0 ? ZEL_ANY_SENDER : 1 + m_input.below(3);
        receiveMatching(m_input.below(3) == 0 ? nullptr : filter.data(), from);
    }

    void receiveMatching(const std::uint32_t* filter, std::uint32_t from)
    {
        const auto isWanted = [&](const Waiting& waiting) {
            const bool isNumberWanted = filter == nullptr || *filter == 0 ||
                                        std::count(filter + 1, filter + 1 + *filter, waiting.number()) != 0;
            return isNumberWanted && (from == ZEL_ANY_SENDER || from == waiting.sender);
        };
        const auto expected = std::find_if(m_waiting.begin(), m_waiting.end(), isWanted);
        zel_msg* message = __zel_receive(filter, 0, from, "", 0);
        m_report.add("receive number " +
                     (filter == nullptr ? "any"
                                        : std::to_string(*filter) + " of " + std::to_string(filter[1]) + ", " +
                                              std::to_string(filter[2])) +
                     " from " + std::to_string(from));
        m_report.expectSame("is there a message", message != nullptr, expected != m_waiting.end());
        if (message != nullptr) {
            const char* const bytes = static_cast<const char*>(static_cast<const void*>(message));
            m_report.expectSame("size", zel_standin_size(message), expected->bytes.size());
            m_report.expectSame("bytes", std::string(bytes, zel_standin_size(message)), expected->bytes);
            m_report.expectSame("sender", __zel_sender(message, "", 0), expected->sender);
            m_report.expectSame("process", zel_standin_process(message), ::getpid());
            m_report.expectSame("program", std::string(zel_standin_program(message)), expected->program);
            __zel_free(&message, "", 0);
            m_waiting.erase(expected);
        }
    }

    Input& m_input;
    int m_connection = -1;
    std::deque<Waiting> m_waiting;
    Report m_report;
};

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const Corvane::Testing::RuntimeFolder folder;
    Input input(data, size);
    const std::size_t descriptors = countDescriptors();
    std::thread([&] { // the mailbox ends with its thread
        Mailbox(input, folder.path() / ("zel-" + std::to_string(::geteuid()))).run();
    })
        .join();
    Report().expectSame("sockets and files that stay open", countDescriptors(), descriptors);
    return 0;
}

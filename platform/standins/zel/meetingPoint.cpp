/// The folder in which the mailboxes of one user meet.
#include "meetingPoint.h"

#include <cerrno>
#include <charconv>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/inotify.h>
#include <sys/random.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

namespace Zel {

namespace {

constexpr std::size_t longestName = 60;
constexpr std::uint32_t idLimit = 0xFFF00000U; // ids from here on mean something else in a call
constexpr int waitingConnections = 1024;
constexpr int mostAttempts = 100;

std::string hex(std::uint32_t id)
{
    char digits[9] = {};
    std::to_chars(digits, digits + 8, id, 16);
    return digits;
}

/// A file name for a mailbox name: what may be misread in one is escaped.
std::string escaped(const std::string& name)
{
    static const char digits[] = "0123456789abcdef";
    std::string result;
    for (const char c : name) {
        if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '-') {
            result += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            result += '%';
            result += digits[byte >> 4U];
            result += digits[byte & 15U];
        }
    }
    return result;
}

struct SocketAddress
{
    sockaddr_un address = {};
    socklen_t length = 0;

    const sockaddr* get() const { return static_cast<const sockaddr*>(static_cast<const void*>(&address)); }
};

SocketAddress addressOf(const std::string& path)
{
    SocketAddress result;
    result.address.sun_family = AF_UNIX;
    std::memcpy(result.address.sun_path, path.data(), path.size());
    result.length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path.size());
    return result;
}

/// The abstract socket names belong to the whole machine, and the kernel frees them with the process.
Fd claimId(std::uint32_t id)
{
    using namespace std::string_literals;
    Fd claim(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const SocketAddress address = addressOf("\0zel-id-"s + hex(id));
    if (claim && ::bind(claim.get(), address.get(), address.length) != 0) {
        claim.reset();
    }
    return claim;
}

/// Where this user's processes meet.
std::string folderPath()
{
    const std::string user = std::to_string(::geteuid());
    const char* const chosen = std::getenv("XDG_RUNTIME_DIR");
    std::string base = chosen != nullptr ? chosen : "";
    if (base.empty()) {
        base = "/run/user/" + user;
        struct stat status = {};
        if (::lstat(base.c_str(), &status) != 0 || !S_ISDIR(status.st_mode) || status.st_uid != ::geteuid()) {
            base = "/tmp";
        }
    }
    return base + "/zel-" + user;
}

/// Makes the folder if it isn't there, and opens it. If `flaw` isn't empty, it can't be used.
Fd openFolder(const std::string& path, std::string& flaw)
{
    ::mkdir(path.c_str(), S_IRWXU); // it may be there already; what counts is what is found now
    Fd folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status = {};
    if (!folder && errno != ELOOP && errno != ENOTDIR && errno != EACCES) {
        flaw = ": " + std::generic_category().message(errno);
    } else if (!folder || ::fstat(folder.get(), &status) != 0 || status.st_uid != ::geteuid() ||
               (status.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
        flaw = " is not a folder of this user alone. Set XDG_RUNTIME_DIR to one that is.";
    }
    return folder;
}

bool areSame(const struct stat& one, const struct stat& other)
{
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

} // namespace

bool isSameUser(int connection)
{
    ucred peer = {};
    socklen_t length = sizeof peer;
    return ::getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &peer, &length) == 0 && peer.uid == ::geteuid();
}

std::optional<MeetingPoint> MeetingPoint::open()
{
    std::string path = folderPath();
    std::string flaw;
    Fd folder = openFolder(path, flaw);
    if (!flaw.empty()) {
        static_cast<void>(std::fprintf(stderr, "zel: no mailbox: %s%s\n", path.c_str(), flaw.c_str()));
        return std::nullopt;
    }
    return MeetingPoint(std::move(path), std::move(folder));
}

bool MeetingPoint::follow()
{
    struct stat opened = {};
    struct stat present = {};
    if (::fstat(m_folder.get(), &opened) == 0 && ::lstat(m_path.c_str(), &present) == 0 && areSame(opened, present)) {
        return false;
    }
    std::string flaw;
    Fd folder = openFolder(m_path, flaw);
    if (!flaw.empty()) {
        return false;
    }
    m_folder = std::move(folder);
    return true;
}

std::string MeetingPoint::pathOf(const std::string& file) const
{
    return "/proc/self/fd/" + std::to_string(m_folder.get()) + "/" + file;
}

std::optional<std::uint32_t> MeetingPoint::linkedId(const std::string& linkName) const
{
    char target[16] = {};
    const ssize_t length = ::readlinkat(m_folder.get(), linkName.c_str(), target, sizeof target - 1);
    if (length <= 3 || std::strncmp(target, "id-", 3) != 0) {
        return std::nullopt;
    }
    std::uint32_t id = 0;
    const auto [end, error] = std::from_chars(target + 3, target + length, id, 16);
    if (error != std::errc() || end != target + length) {
        return std::nullopt;
    }
    return id;
}

bool MeetingPoint::bindTo(std::uint32_t id, Address& address) const
{
    address.idClaim = claimId(id);
    if (!address.idClaim) {
        return false;
    }
    // Nobody else has the id now: a socket of that name is a killed process's.
    const std::string socketName = "id-" + hex(id);
    ::unlinkat(m_folder.get(), socketName.c_str(), 0);
    address.listener = Fd(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const SocketAddress socketAddress = addressOf(pathOf(socketName));
    if (!address.listener || ::bind(address.listener.get(), socketAddress.get(), socketAddress.length) != 0 ||
        ::listen(address.listener.get(), waitingConnections) != 0) {
        return false;
    }
    address.id = id;
    return true;
}

Fd MeetingPoint::lock(const std::string& file) const
{
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        Fd lock(::openat(m_folder.get(), file.c_str(), O_CREAT | O_RDWR | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR));
        struct stat locked = {};
        if (!lock || ::flock(lock.get(), LOCK_EX | LOCK_NB) != 0 || ::fstat(lock.get(), &locked) != 0) {
            break;
        }
        struct stat present = {};
        if (::fstatat(m_folder.get(), file.c_str(), &present, AT_SYMLINK_NOFOLLOW) == 0 && areSame(locked, present)) {
            return lock;
        } // else it was removed before it was locked, and locks nothing
    }
    return {};
}

std::optional<Address> MeetingPoint::takeName(const std::string& name) const
{
    if (name.empty() || name.size() > longestName) {
        return std::nullopt;
    }
    const std::string linkName = "name-" + escaped(name);
    Address address;
    address.nameLock = lock("lock-" + escaped(name));
    if (!address.nameLock) {
        return std::nullopt;
    }
    if (const auto formerId = linkedId(linkName)) {
        // Not by its abstract name: whoever saw that in use can take it when its owner is killed.
        const int error = probe(*formerId);
        if (error != ENOENT && error != ECONNREFUSED) {
            return std::nullopt;
        }
        ::unlinkat(m_folder.get(), ("id-" + hex(*formerId)).c_str(), 0);
    }
    ::unlinkat(m_folder.get(), linkName.c_str(), 0);

    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        std::uint32_t id = 0;
        if (::getrandom(&id, sizeof id, 0) != static_cast<ssize_t>(sizeof id)) {
            return std::nullopt;
        }
        if (id == 0 || id >= idLimit || !bindTo(id, address)) {
            continue;
        }
        if (::symlinkat(("id-" + hex(id)).c_str(), m_folder.get(), linkName.c_str()) != 0) {
            ::unlinkat(m_folder.get(), ("id-" + hex(id)).c_str(), 0);
            return std::nullopt;
        }
        return address;
    }
    return std::nullopt;
}

void MeetingPoint::releaseName(const std::string& name, Address& address) const
{
    const std::string linkName = "name-" + escaped(name);
    if (linkedId(linkName) == address.id) { // it may be another's, if the folder is another than that of then
        ::unlinkat(m_folder.get(), linkName.c_str(), 0);
    }
    ::unlinkat(m_folder.get(), ("id-" + hex(address.id)).c_str(), 0);
    ::flock(address.nameLock.get(), LOCK_UN);
    address.listener.reset();
    address.nameLock.reset();
    address.idClaim.reset();
}

std::optional<std::uint32_t> MeetingPoint::find(const std::string& name) const
{
    if (name.empty() || name.size() > longestName) {
        return std::nullopt;
    }
    const auto id = linkedId("name-" + escaped(name));
    if (!id) {
        return std::nullopt;
    }
    return probe(*id) == 0 ? id : std::nullopt;
}

int MeetingPoint::probe(std::uint32_t id) const
{
    const Fd connection(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const SocketAddress address = addressOf(pathOf("id-" + hex(id)));
    const bool answers = connection && ::connect(connection.get(), address.get(), address.length) == 0;
    return answers || errno == EAGAIN ? 0 : errno;
}

Fd MeetingPoint::connectTo(std::uint32_t id, bool& isGone) const
{
    isGone = false;
    Fd connection(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!connection) {
        return connection;
    }
    const SocketAddress address = addressOf(pathOf("id-" + hex(id)));
    int result = 0;
    do {
        result = ::connect(connection.get(), address.get(), address.length);
    } while (result != 0 && errno == EINTR);
    if (result != 0 || !isSameUser(connection.get())) {
        isGone = result == 0 || (errno != EMFILE && errno != ENFILE && errno != ENOMEM && errno != ENOBUFS);
        connection.reset();
    }
    return connection;
}

Fd MeetingPoint::watch() const
{
    Fd watcher(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
    const std::string parent = m_path.substr(0, m_path.rfind('/') + 1);
    constexpr std::uint32_t appearance = IN_CREATE | IN_MOVED_TO;
    if (watcher && (::inotify_add_watch(watcher.get(), parent.c_str(), appearance) < 0 ||
                    ::inotify_add_watch(watcher.get(), pathOf("").c_str(), appearance) < 0)) {
        watcher.reset();
    }
    return watcher;
}

} // namespace Zel

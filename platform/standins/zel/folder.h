// SPDX-License-Identifier: MIT
/// The folder in which the mailboxes of one user meet. Each has its socket there: "<name>.<time>.<id>", with the time
/// of its creation in nanoseconds in 16 hexadecimal digits, and its id in 8.
///
/// A killed process leaves its sockets behind, where nothing answers. Mailboxes that are created later remove them.
/// What fails for want of anything throws std::system_error.
#ifndef ZEL_STANDIN_FOLDER_H
#define ZEL_STANDIN_FOLDER_H

#include <algorithm>
#include <chrono>
#include <cinttypes>
#include <filesystem>
#include <random>
#include <system_error>

#include <sys/stat.h>
#include <sys/un.h>

#include "message.h"

namespace Zel {

constexpr std::size_t ending = sizeof ".0123456789abcdef.01234567" - 1;

inline std::uint32_t idOf(const std::string& name)
{
    return static_cast<std::uint32_t>(std::strtoul(name.c_str() + name.size() - 8, nullptr, 16));
}

/// Opens the folder, which it makes if it isn't there. Throws std::runtime_error if it isn't this user's alone.
inline Fd openFolder()
{
    const std::string own = "/zel-" + std::to_string(::geteuid());
    const char* const chosen = std::getenv("XDG_RUNTIME_DIR");
    const bool isChosen = chosen != nullptr && *chosen != '\0';
    std::string path = (isChosen ? chosen : "/run/user/" + std::to_string(::geteuid())) + own;
    ::mkdir(path.c_str(), S_IRWXU); // it may be there already; what counts is what is found now
    if (!isChosen && ::access(path.c_str(), X_OK) != 0) {
        path = "/tmp" + own;
        ::mkdir(path.c_str(), S_IRWXU);
    }
    Fd folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!folder && errno != ELOOP && errno != ENOTDIR && errno != EACCES) {
        throw std::system_error(errno, std::generic_category(), path);
    }
    struct stat status = {};
    if (!folder || ::fstat(folder.get(), &status) != 0 || status.st_uid != ::geteuid() ||
        (status.st_mode & 077U) != 0) {
        throw std::runtime_error(path + " is not a folder of this user alone. Set XDG_RUNTIME_DIR to one that is.");
    }
    return folder;
}

/// Returns  a path that is short enough for an address, however long the folder's own path is.
inline std::string pathOf(const Fd& folder)
{
    return "/proc/self/fd/" + std::to_string(folder.get()) + "/";
}

inline Fd openSocket()
{
    Fd socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    return socket ? std::move(socket) : throw std::system_error(errno, std::generic_category(), "socket");
}

/// Calls bind() or connect().
template <typename Call>
int atAddress(const Call& call, const Fd& socket, const Fd& folder, const std::string& name)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    (pathOf(folder) + name).copy(address.sun_path, sizeof address.sun_path - 1);
    return call(socket.get(), static_cast<const sockaddr*>(static_cast<const void*>(&address)), sizeof address);
}

/// Returns  the sockets of mailboxes with that name, or any if it is empty, and that id, or any if it is 0. Those of
///          one name begin with the oldest.
inline std::vector<std::string> socketsIn(const Fd& folder, const std::string& mailbox, std::uint32_t id)
{
    std::vector<std::string> sockets;
    for (const auto& entry : std::filesystem::directory_iterator(pathOf(folder))) {
        const std::string name = entry.path().filename();
        if (name.size() > ending && (mailbox.empty() || name.compare(0, name.size() - ending, mailbox) == 0) &&
            (id == 0 || idOf(name) == id)) {
            sockets.push_back(name);
        }
    }
    std::sort(sockets.begin(), sockets.end());
    return sockets;
}

/// Returns  a socket that is connected to the first of these that answers; if it is empty, errno says why.
inline Fd connectToFirst(const Fd& folder, const std::vector<std::string>& names, std::uint32_t& id)
{
    errno = ENOENT;
    for (const std::string& name : names) {
        Fd connection = openSocket();
        if (atAddress(::connect, connection, folder, name) == 0) {
            id = idOf(name);
            return connection;
        }
    }
    return Fd();
}

/// Gives a socket an address, and its messages the sender's process. Clears the folder of dead sockets before.
/// Returns  the address's file name.
inline std::string enterFolder(const Fd& folder, const Fd& socket, const std::string& mailbox)
{
    const auto now = static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    for (const std::string& name : socketsIn(folder, "", 0)) {
        // Within 10 s a new one may not answer yet. A time from before the machine's start is in the future.
        const auto age = now - std::strtoull(name.c_str() + name.size() - ending + 1, nullptr, 16);
        if (std::uint32_t id = 0; age > 10000000000 && !connectToFirst(folder, {name}, id) && errno == ECONNREFUSED) {
            ::unlinkat(folder.get(), name.c_str(), 0);
        }
    }
    std::random_device random;
    const std::uint32_t id = std::uniform_int_distribution<std::uint32_t>(1, ZEL_OWN_MAILBOX - 1)(random);
    const int on = 1;
    ::setsockopt(socket.get(), SOL_SOCKET, SO_PASSCRED, &on, sizeof on);
    char unique[ending + 1] = {};
    static_cast<void>(std::snprintf(unique, sizeof unique, ".%016" PRIx64 ".%08" PRIx32, now, id));
    if (atAddress(::bind, socket, folder, mailbox + unique) != 0) {
        throw std::system_error(errno, std::generic_category(), mailbox);
    }
    return mailbox + unique;
}

} // namespace Zel

#endif

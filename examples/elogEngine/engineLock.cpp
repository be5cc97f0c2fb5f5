// SPDX-License-Identifier: MIT
/// The lock file lies where the user's mailboxes meet: no other user can open it, and engines that use different
/// folders don't disturb each other.
#include "engineLock.h"

#include <cerrno>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ElogEngine {

namespace {

/// Returns  the folder that zel.h names.
std::string meetingFolder()
{
    const std::string user = std::to_string(::geteuid());
    const char* const chosen = std::getenv("XDG_RUNTIME_DIR");
    std::string parent = chosen != nullptr ? chosen : "";
    if (parent.empty()) {
        parent = "/run/user/" + user;
        struct stat status = {};
        if (::lstat(parent.c_str(), &status) != 0 || !S_ISDIR(status.st_mode) || status.st_uid != ::geteuid()) {
            parent = "/tmp";
        }
    }
    return parent + "/zel-" + user;
}

} // namespace

void lockOutOtherEngines()
{
    const std::string folder = meetingFolder();
    const std::string path = folder + "/elogEngine.lock";
    ::mkdir(folder.c_str(), S_IRWXU); // it may exist already
    const int file = ::open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR);
    const auto fail = [&path] { throw std::system_error(errno, std::generic_category(), "can't lock " + path); };
    if (file < 0) {
        fail();
    }
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    while (::fcntl(file, F_SETLK, &lock) != 0) {
        struct flock owner = lock;
        if ((errno != EACCES && errno != EAGAIN) || ::fcntl(file, F_GETLK, &owner) != 0) {
            fail();
        }
        if (owner.l_type != F_UNLCK) { // else it ended between the two calls
            throw std::runtime_error("another engine is running: process " + std::to_string(owner.l_pid));
        }
    }
}

} // namespace ElogEngine

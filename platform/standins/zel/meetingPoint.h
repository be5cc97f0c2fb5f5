/// The folder in which the mailboxes of one user meet.
///
///     lock-<name>   locked for as long as a living mailbox has the name; stays, empty, when it is gone
///     name-<name>   symbolic link to id-<id>: the mailbox of that name; there from the moment it can be sent to
///     id-<id>       the socket at which a mailbox takes connections
///
/// A killed process leaves the link and the socket behind. Nothing answers there, so they stand for nothing; whoever
/// takes the name next clears them away. The kernel lets go of the lock.
#ifndef ZEL_STANDIN_MEETINGPOINT_H
#define ZEL_STANDIN_MEETINGPOINT_H

#include <cstdint>
#include <optional>
#include <string>

#include "fd.h"

namespace Zel {

/// A bound and listening mailbox address. Ends with its owner.
struct Address
{
    std::uint32_t id = 0;
    Fd listener;
    Fd idClaim; // holds the id against other users' mailboxes, which meet elsewhere
    Fd nameLock;
};

class MeetingPoint
{
public:
    /// Makes the folder if it isn't there, and opens it.
    ///
    /// Returns  empty if there is no such folder that belongs to this user alone; standard error is told why.
    static std::optional<MeetingPoint> open();

    /// Opens the folder anew if it was removed or another has taken its place.
    ///
    /// Returns  false if there was nothing to do, or it can't be done.
    bool follow();

    /// Takes a name and gives it an address.
    ///
    /// Returns  empty if the name is taken, or isn't one. It is taken if its lock is, or if a mailbox lives that has
    ///          it: somebody may have removed the lock's file.
    std::optional<Address> takeName(const std::string& name) const;

    /// Gives the name back. The address ends.
    void releaseName(const std::string& name, Address& address) const;

    /// Returns  the id of the living mailbox of that name; empty if there is none.
    std::optional<std::uint32_t> find(const std::string& name) const;

    /// Waits while the receiver has too many connections that it hasn't looked at.
    ///
    /// Returns  a connection to a living mailbox; an empty Fd if there is none. `isGone` tells whether that is for
    ///          good, or for want of something.
    Fd connectTo(std::uint32_t id, bool& isGone) const;

    /// Returns  an inotify descriptor that becomes readable when a name, or another folder, may have appeared. Of a
    ///          folder that somebody has open the kernel doesn't tell that it is removed, so its parent is watched too.
    Fd watch() const;

private:
    MeetingPoint(std::string path, Fd folder) : m_path(std::move(path)), m_folder(std::move(folder)) {}

    /// Through the open folder, so that a path always fits a socket address.
    std::string pathOf(const std::string& file) const;
    std::optional<std::uint32_t> linkedId(const std::string& linkName) const;
    /// Returns  0 if a mailbox with that id lives, else why it doesn't answer, as in errno.
    int probe(std::uint32_t id) const;
    Fd lock(const std::string& file) const;
    bool bindTo(std::uint32_t id, Address& address) const;

    std::string m_path;
    Fd m_folder;
};

/// Returns  whether the process at the other end runs for this user.
bool isSameUser(int connection);

} // namespace Zel

#endif

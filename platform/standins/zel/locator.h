/// The locate requests of one mailbox that wait for their answers.
#ifndef ZEL_STANDIN_LOCATOR_H
#define ZEL_STANDIN_LOCATOR_H

#include <deque>
#include <list>
#include <string>

#include "fd.h"
#include "incoming.h"
#include "meetingPoint.h"
#include "message.h"

namespace Zel {

class Locator
{
public:
    explicit Locator(MeetingPoint& meetingPoint) : m_meetingPoint(meetingPoint) {}

    void request(std::string name, Message reply) { m_requests.push_back({std::move(name), std::move(reply)}); }

    /// Appends the replies for the mailboxes that exist now. To be called after request(), when fd() is readable, and
    /// now and then: the kernel tells nothing of a folder that is removed with its parent while somebody has it open.
    void check(std::deque<Arrived>& arrived);

    bool isWaiting() const { return !m_requests.empty(); }
    /// Readable when a mailbox may have appeared; negative while nothing waits, or if the system can't tell.
    int fd() const { return m_watcher.get(); }

private:
    struct Request
    {
        std::string name;
        Message reply;
    };

    MeetingPoint& m_meetingPoint; // of the mailbox
    std::list<Request> m_requests;
    Fd m_watcher; // there while something waits
};

} // namespace Zel

#endif

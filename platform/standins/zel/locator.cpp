/// The locate requests of one mailbox that wait for their answers.
#include "locator.h"

#include <array>

namespace Zel {

void Locator::check(std::deque<Arrived>& arrived)
{
    std::array<char, 4096> events = {};
    while (m_watcher && ::read(m_watcher.get(), events.data(), events.size()) > 0) {
    }
    bool isAnother = false;
    do {
        if (isAnother || !m_watcher) {
            m_watcher = m_meetingPoint.watch(); // before looking, so that nothing appears unseen in between
        }
        isAnother = m_meetingPoint.follow();
    } while (isAnother);
    for (auto request = m_requests.begin(); request != m_requests.end();) {
        if (const auto id = m_meetingPoint.find(request->name)) {
            setSender(request->reply.get(), *id);
            arrived.push_back({std::move(request->reply), nullptr});
            request = m_requests.erase(request);
        } else {
            ++request;
        }
    }
    if (m_requests.empty()) {
        m_watcher.reset();
    }
}

} // namespace Zel

// SPDX-License-Identifier: MIT
/// The event-log client: an active object that finds the engine's mailbox and sends it one message per entry.
#ifndef CORVANE_ELOG_ELOGIMPL_V2_H
#define CORVANE_ELOG_ELOGIMPL_V2_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <elog/elogIf.h>
#include <pindle/activeObjectIf.h>

namespace Corvane::Elog::V2 {

/// Returns  the bytes to allocate for an entry's message; empty if they don't fit 32 bits.
std::optional<std::uint32_t> messageSize(std::size_t textLength, std::size_t numParams);

class WaitingEntry;

class ElogImpl : public ElogIf
{
public:
    ElogImpl();
    ElogImpl(const ElogImpl&) = delete;
    ElogImpl& operator=(const ElogImpl&) = delete;
    ~ElogImpl() override;

    void elogWrite(unsigned int eventId, const std::string& text, const std::vector<unsigned int>& params) override;

    /// Ends the client: new entries are dropped from now on, those that are queued are sent while the engine takes
    /// them. If a thread stays inside elogWrite(), such as the one that calls this, the client only stops to take
    /// entries, after 2 seconds.
    ///
    /// Threads  others may be inside elogWrite() and may call it afterwards.
    void end();

private:
    friend struct ElogTestAccess;

    // On the active object's thread. No other thread uses elogEngineMbox.
    void aoInit();
    void aoElogWrite(const WaitingEntry& entry) const;

    // A test pins the order of the first two members: tools on the unit read these objects.
    std::shared_ptr<Pindle::ActiveObject::V1::ActiveObjectIf> activeObject;
    std::uint32_t elogEngineMbox;

    // How many threads are inside elogWrite(); the top bit says that the end began. On a cache line of its own: writers
    // change it while the active object's thread reads elogEngineMbox.
    alignas(64) std::atomic<std::uint32_t> m_writers;
};

} // namespace Corvane::Elog::V2

#endif

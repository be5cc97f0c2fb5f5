// SPDX-License-Identifier: MIT
// Writes entries to the event log: one event id for each kind of event, its numbers always in the same order.
#include <iostream>
#include <string>

#include <elog/elogIf.h>

namespace {

using Corvane::Elog::V2::ElogIf;

/// All event ids of this application in one place: who reads the log knows an event by its id.
namespace EventId {
constexpr unsigned int started = 1000;
constexpr unsigned int carrierDown = 1007;
constexpr unsigned int carrierUp = 1008;
} // namespace EventId

void started()
{
    ElogIf::getInstance().elogWrite(EventId::started, "started", {});
}

void carrierDown(unsigned int carrier, unsigned int reason)
{
    ElogIf::getInstance().elogWrite(EventId::carrierDown, "carrier down", {carrier, reason});
}

void carrierUp(unsigned int carrier)
{
    ElogIf::getInstance().elogWrite(EventId::carrierUp, "carrier up", {carrier});
}

} // namespace

int main()
{
    started(); // returns at once, also if no engine runs
    carrierDown(3, 21);
    carrierUp(3);

    // A thread of the library sends the entries. If the process ended now, it might not have found the engine yet, and
    // the entries would be lost.
    std::cout << "3 entries written. Press Enter to end." << std::endl;
    std::string line;
    std::getline(std::cin, line);
}

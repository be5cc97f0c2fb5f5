// SPDX-License-Identifier: MIT
// Emits events of the application's own. Their text is built only while somebody records them.
#include <iostream>
#include <sstream>
#include <string>

#include <trace/corvaneTracepoints.h>

namespace {

struct Carrier
{
    int number;
    double power;
};

int built = 0;

std::string describe(const Carrier& carrier)
{
    ++built;
    std::ostringstream text;
    text << "carrier " << carrier.number << " sends with " << carrier.power << " dBm";
    return text.str();
}

/// Calls `makeText` only while TRACE3 is recorded. The file and the line are those of the caller.
template <typename MakeText>
void trace(const char* file, unsigned int line, const MakeText& makeText)
{
    if (tracepoint_enabled(com_brimlow_kelpsys_corvane, TRACE3)) {
        const std::string text = makeText();
        do_tracepoint(com_brimlow_kelpsys_corvane, TRACE3, file, line, "-", text.c_str());
    }
}

} // namespace

int main()
{
    tracepoint(com_brimlow_kelpsys_corvane, INFO, "ownEvents.cpp", __LINE__, "started"); // a text that costs nothing
    for (int number = 1; number <= 3; ++number) {
        const Carrier carrier{number, 40.5};
        trace("ownEvents.cpp", __LINE__, [&carrier] { return describe(carrier); });
    }
    std::cout << "built " << built << " texts\n";
}

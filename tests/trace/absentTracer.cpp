/// An application of the library that says on standard output how it is: whether LTTng is in the process, whether
/// any event is on, whether emitting and a command work, and how many trace texts were built.
#include <algorithm>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include <command/cmdTableHelperIf.h>
#include <trace/corvaneTracepoints.h>

#include "tests/support/tracepointObjects.h"

namespace {

using Corvane::CmdTableHelper::CmdDefinitionCpp;
using Corvane::CmdTableHelper::V2::CmdTableHelperIf;

unsigned int shortenedPaths = 0;

bool isMapped(const std::string& library)
{
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        if (line.find(library) != std::string::npos) {
            return true;
        }
    }
    return false;
}

bool isAnyEventOn()
{
    const auto& objects = Corvane::Testing::tracepointObjects();
    return std::any_of(objects.begin(), objects.end(), [](const auto* object) { return object->state != 0; });
}

/// Emits as applications do, and also past the test of the event.
void emit()
{
    tracepoint(com_brimlow_kelpsys_corvane, TRACE_UTS7, "a.cpp", 1, 2, 3, nullptr, "msg", "data", 4);
    tracepoint(com_brimlow_kelpsys_corvane, INFO, "a.cpp", 1, "msg");
    do_tracepoint(com_brimlow_kelpsys_corvane, DATA, "a.cpp", 1, "-", "msg", nullptr, 4);
    do_tracepoint(com_brimlow_kelpsys_corvane, ERROR, "a.cpp", 1, "msg");
}

void useCommands()
{
    auto& service = CmdTableHelperIf::getInstance();
    const auto echo = [](const std::vector<std::string>& words, std::ostream& out) {
        out << "echo of " << words.at(1);
        return 5;
    };
    const std::vector<CmdDefinitionCpp> table = {{"echo <word>", echo, nullptr}, {"echo [{<", echo, nullptr}};
    service.registerCmdTable("echo", table);
    std::ostringstream out;
    const int result = service.executeCmd({"echo", "me"}, out);
    std::cout << "command: " << result << ", " << out.str() << "\n";
}

} // namespace

/// Takes the place of libtpx's: the library calls it once for each text that it builds.
const char* tpx_short_fname(const char* path)
{
    ++shortenedPaths;
    return path;
}

int main()
{
    std::cout << "tracepoint library: " << (isMapped("liblttng-ust-tracepoint.so") ? "loaded" : "absent") << "\n"
              << "tracer: " << (isMapped("liblttng-ust.so") ? "loaded" : "absent") << "\n";
    if (!isMapped("liblttng-ust-tracepoint.so")) {
        std::cout << "events: " << (isAnyEventOn() ? "on" : "off") << "\n";
    }
    emit();
    useCommands();
    if (!isMapped("liblttng-ust-tracepoint.so")) {
        std::cout << "texts: " << shortenedPaths << "\n";
    }
    return 0;
}

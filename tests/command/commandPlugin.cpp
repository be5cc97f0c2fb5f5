/// A plug-in that leaves a command and a hook registered. The library is loaded and unloaded with it.
#include <sstream>
#include <string>
#include <vector>

#include <command/cmdTableHelperIf.h>

extern "C" [[gnu::visibility("default")]] int useCommands()
{
    using namespace Corvane::CmdTableHelper;
    V2::CmdTableHelperIf& service = V2::CmdTableHelperIf::getInstance();
    const std::string owned(100, 'o');
    service.registerCmdTable(
        "x", std::vector<CommandDefinitions>{
                 {"x [-l] <file> { on | off }", [owned](int argc, const char* const*) { return argc; }, nullptr}});
    service.registerPostExecutionHook([owned](int, int, const char* const*) {});
    std::ostringstream out;
    return service.executeCmd({"x", "a.txt", "on"}, out);
}

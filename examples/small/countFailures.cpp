// SPDX-License-Identifier: MIT
// Counts the failures of each command, with a hook that is called after every command.
#include <iostream>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include <command/cmdTableHelperIf.h>

namespace {

using Corvane::CmdTableHelper::CmdDefinitionCpp;
using Corvane::CmdTableHelper::V2::CmdTableHelperIf;

/// The service copies a hook for every command, so what the hook counts is kept here.
class Failures
{
public:
    void count(const char* command)
    {
        const std::lock_guard<std::mutex> lock(m_mutex); // any thread may execute commands
        ++m_failures[command];
    }

    void show(std::ostream& out)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        for (const auto& [command, times] : m_failures) {
            out << command << " failed " << times << " times\n";
        }
    }

private:
    std::mutex m_mutex;
    std::map<std::string, int> m_failures;
};

} // namespace

int main()
{
    CmdTableHelperIf& service = CmdTableHelperIf::getInstance();
    const auto tune = [](const std::vector<std::string>& words, std::ostream&) { return words[1] == "low" ? 0 : 1; };
    const std::vector<CmdDefinitionCpp> table = {{"tune <band>", tune, "Tunes to a band."}};
    service.registerCmdTable("tune", table);

    Failures failures;
    const unsigned int hook = service.registerPostExecutionHook([&failures](int result, int, const char* const* words) {
        if (result != 0) {
            failures.count(words[0]); // copied: the words are there during the call only
        }
    });
    service.executeCmd({"tune", "low"}, std::cout);
    service.executeCmd({"tune", "middle"}, std::cout);
    service.executeCmd({"tune", "high"}, std::cout);
    service.executeCmd({"tune"}, std::cout); // runs no handler, so no hook is called
    service.deregisterPostExecutionHook(hook);
    failures.show(std::cout);
}

/// Operations on the command tables, each compared with the plain model of the tables.
#ifndef CORVANE_TESTS_SOAK_COMMANDS_H
#define CORVANE_TESTS_SOAK_COMMANDS_H

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "tests/command/commandModel.h"
#include "tests/soak/worker.h"

namespace Corvane::Soak {

/// The commands of one thread. Their names are its own; all threads also run one shared command.
class Commands
{
public:
    explicit Commands(Worker& worker);

    /// Call it before the threads start.
    static void registerSharedCommand();

    /// Does one operation.
    void operate();

private:
    using Words = std::vector<std::string>;

    void registerTable(const std::string& name, const std::vector<std::string>& synopses);
    bool executeLine();
    void useHook();
    void useSharedCommand();
    void askWithAnUnknownWord();
    void readHelp();

    Worker& m_worker;
    const std::vector<std::string> m_names;
    CmdTableHelper::Testing::CommandModel m_model;
    int m_nextHandler = 100;
    const std::shared_ptr<std::atomic<int>> m_handlersAlive = std::make_shared<std::atomic<int>>(0);
};

} // namespace Corvane::Soak

#endif

/// Tables, lines, hooks and help, from several threads at once.
#include "tests/soak/commands.h"

#include <algorithm>
#include <memory>
#include <thread>
#include <utility>

#include <command/cmdTableHelperIf.h>

namespace Corvane::Soak {

namespace {

using namespace CmdTableHelper;
using Words = std::vector<std::string>;

constexpr int usageWritten = 20; // the result of a line that leads to no handler

const std::vector<std::string> synopsisEnds = {
    "",          "on", "[-l] <file>", "{ x | y | <n> } ...", "set <key> <value>", "set <key> [ off ]", "[ a [ b ] ] c",
    "broken { x"};
const std::vector<std::string> typedWords = {"on", "-l", "file", "x", "y", "7", "set", "off", "a", "b", "c", "broken"};

thread_local int t_ran = 0; // the handler that ran last on this thread

/// Counts the handlers that the service keeps. The service keeps some longer than the thread that counts.
class Token
{
public:
    explicit Token(std::shared_ptr<std::atomic<int>> alive) : m_alive(std::move(alive)) { ++*m_alive; }
    Token(const Token&) = delete;
    Token& operator=(const Token&) = delete;
    ~Token() { --*m_alive; }

private:
    std::shared_ptr<std::atomic<int>> m_alive;
};

CmdTableHelper::V2::CmdTableHelperIf& service()
{
    return CmdTableHelper::V2::CmdTableHelperIf::getInstance();
}

// The command that all threads run while the first one replaces its handler.
std::atomic<int> sharedBegun{1000};   // the last handler whose registration has begun
std::atomic<int> sharedSettled{1000}; // the last handler whose registration is over
thread_local bool t_replaces = false; // the handler replaces itself while it runs

void replaceSharedHandler()
{
    const int number = ++sharedBegun;
    const std::vector<CmdDefinitionCpp> table = {
        {"shared go",
         [number, text = std::to_string(number)](const Words& /*words*/, std::ostream& /*out*/) {
             if (t_replaces) {
                 replaceSharedHandler();
             }
             std::this_thread::yield();
             return text == std::to_string(number) ? number : 0; // a handler that was destroyed has lost its text
         },
         ""}};
    service().registerCmdTable("shared", table);
    sharedSettled = number;
}

} // namespace

Commands::Commands(Worker& worker)
    : m_worker(worker), m_names({std::to_string(worker.thread()) + "a", std::to_string(worker.thread()) + "b"})
{
    for (const std::string& name : m_names) {
        registerTable(name, {name});
    }
}

void Commands::registerSharedCommand()
{
    replaceSharedHandler();
}

void Commands::registerTable(const std::string& name, const std::vector<std::string>& synopses)
{
    m_worker.enter("registers a table");
    std::vector<CommandDefinitions> first;
    std::vector<CmdDefinition> second;
    std::vector<CmdDefinitionCpp> third;
    int number = m_nextHandler;
    const unsigned int kind = m_worker.below(3);
    for (const std::string& synopsis : synopses) {
        const auto run = [number, token = std::make_shared<Token>(m_handlersAlive)] { return t_ran = number; };
        const auto answer = [number, run](std::ostream& out) {
            out << "answer " << number;
            return run();
        };
        switch (kind) {
        case 0:
            first.push_back({synopsis, [run](int /*argc*/, const char* const* /*argv*/) { return run(); }, nullptr});
            break;
        case 1:
            second.push_back(
                {synopsis, [answer](int, const char* const*, std::ostream& out) { return answer(out); }, "help"});
            break;
        default:
            third.push_back({synopsis, [answer](const Words&, std::ostream& out) { return answer(out); }, "help"});
            break;
        }
        ++number;
    }
    kind == 0   ? service().registerCmdTable(name, first)
    : kind == 1 ? service().registerCmdTable(name, second)
                : service().registerCmdTable(name, third);
    m_model.addCommand(name, synopses, m_nextHandler);
    m_model.emissions.clear();
    m_nextHandler = number;
    first.clear();
    second.clear();
    third.clear();
    const int mostHandlers = static_cast<int>(m_names.size() * synopsisEnds.size());
    m_worker.expectSame("replaced handlers are released", *m_handlersAlive <= mostHandlers, true);
}

/// Returns  whether a handler ran.
bool Commands::executeLine()
{
    m_worker.enter("executes a line");
    Words words = {m_worker.oneOf(m_names)};
    for (unsigned int count = m_worker.below(5); count > 0; --count) {
        words.push_back(m_worker.oneOf(typedWords));
    }
    t_ran = 0;
    std::ostringstream out;
    const int result = service().executeCmd(words, out);
    const auto expected = m_model.dispatch(words);
    const int wrong = plantedFlaw == "result" && m_nextHandler > 500 ? 1 : 0;
    m_worker.expectSame("handler that ran", t_ran, expected.handler.value_or(0) + wrong);
    m_worker.expectSame("result", result, expected.handler.value_or(usageWritten));
    const std::string answer = "answer " + std::to_string(t_ran);
    if (!expected.handler || !out.str().empty()) { // handlers of the first kind write nothing
        m_worker.expectSame("text", out.str(), expected.handler ? answer : expected.text);
    }
    return t_ran != 0;
}

void Commands::useHook()
{
    struct Calls
    {
        int count = 0;
        int lastResult = 0;
    };
    const auto calls = std::make_shared<Calls>();
    const auto own = std::this_thread::get_id();
    m_worker.enter("registers a hook");
    const unsigned int id =
        service().registerPostExecutionHook([calls, own](int result, int /*argc*/, const char* const* /*argv*/) {
            if (std::this_thread::get_id() == own) { // other threads' lines call it too
                ++calls->count;
                calls->lastResult = result;
            }
        });
    int ran = 0;
    for (int line = 0; line < 4; ++line) {
        ran += executeLine() ? 1 : 0;
        m_worker.expectSame("calls of a hook", calls->count, ran);
        m_worker.expectSame("result that a hook gets", t_ran == 0 || calls->lastResult == t_ran, true);
    }
    m_worker.enter("deregisters a hook");
    service().deregisterPostExecutionHook(id);
    executeLine();
    m_worker.expectSame("calls of a deregistered hook", calls->count, ran);
}

void Commands::useSharedCommand()
{
    m_worker.enter("runs the shared command");
    t_replaces = m_worker.thread() == 0 && m_worker.below(2) == 0;
    const int oldest = sharedSettled;
    const int result = service().executeCmd({"shared", "go"});
    const int newest = sharedBegun;
    m_worker.expectSame("an outdated handler ran", result < oldest, false);
    m_worker.expectSame("a handler ran that nobody has registered", result > newest, false);
    t_replaces = false;
    if (m_worker.thread() == 0 && m_worker.below(2) == 0) {
        m_worker.enter("replaces the shared handler");
        replaceSharedHandler();
    }
}

void Commands::askWithAnUnknownWord()
{
    m_worker.enter("executes an unknown command");
    std::ostringstream out;
    m_worker.expectSame("result", service().executeCmd({"unknown", "word"}, out), usageWritten);
    m_worker.expectSame("begins with", out.str().substr(0, 7), "Usage: ");
    m_worker.expectSame("names the shared command", out.str().find("shared") != std::string::npos, true);
}

void Commands::readHelp()
{
    m_worker.enter("reads help");
    const auto none = [](const Words& /*words*/, std::ostream& /*out*/) { return 0; };
    const std::vector<CmdDefinitionCpp> table = {{"show [-l] <file>", none, "Shows a file."}};
    std::ostringstream brief;
    std::ostringstream whole;
    m_worker.expectSame("result", service().cmdHelp({"help", "show"}, brief, table, false, true), 1);
    m_worker.expectSame("result", service().cmdHelp({"help", "show", "-l"}, whole, table, false, false), 1);
    m_worker.expectSame("help", brief.str(), std::string("  show [-l] <file>\n\n"));
    m_worker.expectSame("long help", whole.str(), std::string("  show [-l] <file>\n\n     Shows a file.\n\n"));
}

void Commands::operate()
{
    const unsigned int choice = m_worker.below(20);
    if (choice == 0) {
        const std::string& name = m_worker.oneOf(m_names);
        std::vector<std::string> synopses;
        for (unsigned int count = 1 + m_worker.below(3); count > 0; --count) {
            synopses.push_back(name + " " + m_worker.oneOf(synopsisEnds));
        }
        registerTable(name, synopses);
    } else if (choice == 1) {
        useHook();
    } else if (choice < 5) {
        useSharedCommand();
    } else if (choice == 5) {
        askWithAnUnknownWord();
    } else if (choice == 6) {
        readHelp();
    } else {
        executeLine();
    }
}

} // namespace Corvane::Soak

/// Synopses into the syntax graph, and lines through it to a handler or to a usage in either format.
///
/// An input is text. A line ":name" names the command of the synopses that follow; ">word word" is a line to be
/// matched; every other line is a synopsis.
#include <cstring>
#include <functional>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "command/src/cmdSyntax.h"
#include "fuzz/fuzzing.h"
#include "tests/command/commandModel.h"

namespace {

using namespace Corvane::CmdTableHelper;
using namespace Corvane::CmdTableHelper::Testing;
using namespace Corvane::Fuzz;

constexpr std::size_t maxWordsOfModel = 2000;

ShellCommandFunction returning(int result)
{
    return std::function<int(int, const char* const*)>([result](int, const char* const*) { return result; });
}

/// Returns  what the function returns; -1 for a node without a handler.
int resultOf(const ShellCommandFunction& function)
{
    std::ostringstream out;
    return function.callCommandHandlerFunction(0, nullptr, out);
}

class Comparison
{
public:
    /// `before` stands before each synopsis and line; then it is the name of all commands.
    explicit Comparison(const std::string& before) : m_before(before), m_name(before) {}

    void run(const std::string& text)
    {
        dispatchLine({});
        for (const std::string& line : split(text, '\n')) {
            m_report.add(quoted(line));
            if (line.rfind('>', 0) == 0) {
                std::vector<std::string> words = split(line.substr(1), ' ');
                if (!m_before.empty()) {
                    words.insert(words.begin(), m_before);
                }
                dispatchLine(words);
            } else if (line.rfind(':', 0) == 0) {
                m_name = m_before.empty() ? line.substr(1) : m_before;
                addCommand({});
            } else {
                addCommand({(m_before.empty() ? "" : m_before + " ") + line});
            }
        }
    }

private:
    void addCommand(const std::vector<std::string>& synopses)
    {
        SyntaxGraph::Synopses pairs;
        for (const std::string& synopsis : synopses) {
            pairs.emplace_back(synopsis, returning(++m_handlers));
        }
        m_graph.addCommand(m_name, pairs);
        m_model.addCommand(m_name, synopses, m_handlers);
        compareEmissions();
    }

    void dispatchLine(std::vector<std::string> words)
    {
        for (std::string& word : words) {
            word.resize(std::strlen(word.c_str())); // the library sees C strings
        }
        std::vector<const char*> argv;
        for (const std::string& word : words) {
            argv.push_back(word.c_str());
        }
        std::ostringstream out;
        const ShellCommandFunction* const function = m_graph.dispatchCommand(argv.size(), argv.data(), out);
        const int result = function != nullptr ? resultOf(*function) : -1;
        try {
            const CommandModel::Answer expected = m_model.dispatch(words);
            m_report.expectSame("handler", result, expected.handler.value_or(-1));
            m_report.expectSame("usage", out.str(), expected.text);
        } catch (const ComesBack& end) {
            m_report.expectSame("handler", result, -1);
            m_report.expectSame("usage that comes back", out.str(), end.text);
        } catch (const TooLong& start) {
            m_report.expectSame("long usage", out.str().substr(0, start.text.size()), start.text);
        }
        compareWalk(words, argv);
        compareEmissions();
    }

    /// The words that are appended where a choice of placeholders leads to a handler don't show in any usage.
    void compareWalk(const std::vector<std::string>& words, const std::vector<const char*>& argv)
    {
        std::string usedWords;
        const Corvane::ExclusiveLock lock(m_graph.mutex);
        const NodePtr end = m_graph.findCommandArguments(m_graph.root, &usedWords, argv.size(), argv.data());
        std::string expected;
        m_report.expectSame("end of the walk", resultOf(end->handler),
                            m_model.walkFromRoot(expected, words).value_or(-1));
        m_report.expectSame("used words", usedWords, expected);
    }

    void compareEmissions()
    {
        for (const auto& record : recorder().take()) {
            m_report.expectSame("file", record.file, std::string("src/cmdSyntax.cpp"));
            const bool isError = record.name == Corvane::Testing::EventName::Error;
            m_report.expectSame("event", isError || record.name == Corvane::Testing::EventName::Trace2, true);
            m_report.expectSame("obj", record.obj, std::string(isError ? "" : "-"));
            m_report.expectSame("line", record.line, isError ? 192U : 209U);
            m_emissions.push_back(std::to_string(record.line) + " " + record.msg);
        }
        m_report.expectSame("emissions", m_emissions, m_model.emissions);
        m_emissions.clear();
        m_model.emissions.clear();
    }

    const std::string m_before;
    std::string m_name;
    SyntaxGraph m_graph;
    CommandModel m_model{maxWordsOfModel};
    int m_handlers = 0;
    Emissions m_emissions;
    Report m_report;
};

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text = Input(data, size).rest();
    recorder().take();
    for (const char* const before : {"", "pelm", "x"}) { // so that both printers begin at the same nodes
        Comparison(before).run(text);
    }
    return 0;
}

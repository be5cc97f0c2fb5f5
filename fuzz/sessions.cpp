/// Whole sessions of the command service: tables of all three kinds, lines, hooks and help.
///
/// An input is text. Its lines are operations, told by their first character:
///   s SYNOPSIS    adds a record to the table; its handler returns its number, and throws if the synopsis has a '!'
///   n SYNOPSIS    adds a record with an empty handler
///   h TEXT        describes the last record; '~' is a line feed
///   c d p NAME    registers the table for a command, as records of the first, second or third kind
///   x X WORDS     executes a line; X writes to std::cout
///   k WORDS       registers a hook: "-N" deregisters hook N when it runs, "+" registers another hook, "!" throws, and
///                 any other words are a line to execute
///   r N           deregisters hook N
///   ?N WORDS      writes the help of the table; N chooses the kind of its records and the two switches
#include <functional>
#include <iostream>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "command/src/cmdTableHelperImplV2.h"
#include "fuzz/fuzzing.h"
#include "tests/command/commandModel.h"
#include "tests/command/serviceSupport.h"

namespace {

using namespace Corvane::CmdTableHelper;
using namespace Corvane::CmdTableHelper::Testing;
using namespace Corvane::Fuzz;

struct Thrown
{
};

struct Record
{
    std::string synopsis;
    int number;
    bool isEmpty; // has no handler
    std::optional<std::string> description;
};

using Table = std::vector<Record>;
enum class Kind
{
    cString,
    stream,
    cpp
};

bool throws(const Record& record)
{
    return record.synopsis.find('!') != std::string::npos;
}

constexpr int mostActions =
    12; // of hooks for one line: hooks that execute lines and register hooks never come to an end

/// What a hook does. Service is the library's or the model.
template <typename Service>
void runHook(Service& service, const std::string& action, int& actionsLeft)
{
    if (action == "!") {
        throw Thrown();
    }
    if (action.empty() || actionsLeft == 0) {
        return;
    }
    --actionsLeft;
    if (action == "+") {
        service.registerHook("");
    } else if (action.front() == '-') {
        service.deregisterHook(static_cast<unsigned int>(std::strtoul(action.c_str() + 1, nullptr, 10)));
    } else {
        service.execute(split(action, ' '), false);
    }
}

/// What happens in a session, whether in the library or in the model.
struct Log
{
    void handler(int number, const Words& words) { call("handler " + std::to_string(number), words); }
    void hook(unsigned int id, int result, const Words& words)
    {
        call("hook " + std::to_string(id) + " after " + std::to_string(result), words);
    }
    void call(const std::string& what, const Words& words)
    {
        events.push_back(what);
        events.insert(events.end(), words.begin(), words.end());
    }

    std::vector<std::string> events;
};

/// The service that is tested. Emissions go to the log in their order among the calls.
class Real
{
public:
    void registerTable(const std::string& name, Kind kind, const Table& table)
    {
        kind == Kind::cString  ? m_service.registerCmdTable(name, recordsOf<CommandDefinitions>(table))
        : kind == Kind::stream ? m_service.registerCmdTable(name, recordsOf<CmdDefinition>(table))
                               : m_service.registerCmdTable(name, recordsOf<CmdDefinitionCpp>(table));
        takeAll();
    }

    void execute(const Words& words, bool toCout)
    {
        std::ostringstream text;
        {
            const CapturedCout cout;
            std::string end;
            try {
                const int result = toCout ? m_service.executeCmd(words) : m_service.executeCmd(words, text);
                end = "result " + std::to_string(result);
            } catch (const Thrown&) {
                end = "thrown";
            } catch (const std::bad_function_call&) {
                end = "bad function call";
            }
            takeAll();
            log.events.push_back(end);
            text << cout.text();
        }
        log.events.push_back("text " + text.str());
    }

    void registerHook(const std::string& action)
    {
        // The hook learns its id when it is registered, and is copied before that.
        const auto id = std::make_shared<unsigned int>(0);
        *id = m_service.registerPostExecutionHook([this, id, action](int result, int argc, const char* const* argv) {
            takeAll();
            log.hook(*id, result, Words(argv, argv + argc));
            runHook(*this, action, actionsLeft);
        });
        log.events.push_back("hook has id " + std::to_string(*id));
    }

    void deregisterHook(unsigned int id) { m_service.deregisterPostExecutionHook(id); }

    void help(const Words& words, Kind kind, const Table& table, bool header, bool newline)
    {
        std::ostringstream out;
        const CapturedCout cout;
        const int result =
            kind == Kind::cString  ? m_service.cmdHelp(words, recordsOf<CommandDefinitions>(table), header, newline)
            : kind == Kind::stream ? m_service.cmdHelp(words, out, recordsOf<CmdDefinition>(table), header, newline)
                                   : m_service.cmdHelp(words, out, recordsOf<CmdDefinitionCpp>(table), header, newline);
        log.events.push_back("help " + std::to_string(result) + (kind == Kind::cString ? cout.text() : out.str()));
        log.events.push_back(kind == Kind::cString ? out.str() : cout.text());
    }

    Log log;
    int actionsLeft = 0;

private:
    void setHandler(const Record& record, CommandDefinitions& definition)
    {
        definition.handler = [this, record](int argc, const char* const* argv) {
            return handle(record, Words(argv, argv + argc));
        };
    }
    void setHandler(const Record& record, CmdDefinition& definition)
    {
        definition.handler = [this, record](int argc, const char* const* argv, std::ostream& out) {
            out << "answer " << record.number;
            return handle(record, Words(argv, argv + argc));
        };
    }
    void setHandler(const Record& record, CmdDefinitionCpp& definition)
    {
        definition.handler = [this, record](const Words& words, std::ostream& out) {
            out << "answer " << record.number;
            return handle(record, words);
        };
    }

    template <typename Definition>
    std::vector<Definition> recordsOf(const Table& table)
    {
        std::vector<Definition> records;
        for (const Record& record : table) {
            records.push_back({record.synopsis, {}, record.description ? record.description->c_str() : nullptr});
            if (!record.isEmpty) {
                setHandler(record, records.back());
            }
        }
        return records;
    }

    int handle(const Record& record, const Words& words)
    {
        takeAll();
        log.handler(record.number, words);
        return throws(record) ? throw Thrown() : record.number;
    }

    void takeAll()
    {
        for (std::string& emission : takeEmissions()) {
            log.events.push_back(std::move(emission));
        }
    }

    V2::CmdTableHelperImpl m_service;
};

/// The rules of the service, over the model of its tables.
class Model
{
public:
    void registerTable(const std::string& name, Kind kind, const Table& table)
    {
        std::vector<std::string> synopses;
        const int first = static_cast<int>(m_records.size());
        for (const Record& record : table) {
            synopses.push_back(record.synopsis);
            m_records.emplace_back(kind, record);
        }
        m_commands.addCommand(name, synopses, first);
        takeAll();
    }

    void execute(const Words& words, bool /*toCout*/)
    {
        std::string text;
        try {
            log.events.push_back("result " + std::to_string(run(words, text)));
        } catch (const Thrown&) {
            log.events.emplace_back("thrown");
        } catch (const std::bad_function_call&) {
            log.events.emplace_back("bad function call");
        }
        log.events.push_back("text " + text);
    }

    void registerHook(const std::string& action)
    {
        m_hooks[++m_lastId] = action;
        log.events.push_back("hook has id " + std::to_string(m_lastId));
    }

    void deregisterHook(unsigned int id) { m_hooks.erase(id); }

    void help(const Words& words, Kind /*kind*/, const Table& table, bool header, bool newline)
    {
        bool isLong = false;
        for (std::size_t at = 2; at < words.size(); ++at) {
            isLong = isLong || words[at] == "-l";
        }
        std::string text = !header ? "" : isLong ? "Command syntax:\n\n" : "Command syntax:\n";
        for (const Record& record : table) {
            text += "  " + record.synopsis + "\n";
            if (isLong && !record.description.value_or("").empty()) {
                text += "\n     " + wrapped(*record.description) + "\n";
            }
            text += isLong ? "\n" : "";
        }
        log.events.push_back("help 1" + text + (newline && !isLong ? "\n" : ""));
        log.events.emplace_back();
    }

    Log log;
    int actionsLeft = 0;

private:
    static std::string wrapped(const std::string& description)
    {
        std::string text;
        std::size_t lineBegin = 0;
        for (const char c : description) {
            if (c == '\n' || (c == ' ' && text.size() - lineBegin > 70)) {
                text += "\n     ";
                lineBegin = text.size();
            } else {
                text += c;
            }
        }
        return text;
    }

    int run(const Words& words, std::string& text)
    {
        CommandModel::Answer answer;
        try {
            answer = m_commands.dispatch(words);
        } catch (const ComesBack& end) {
            answer.text = end.text;
        }
        text += answer.text;
        if (!answer.handler) {
            return 20;
        }
        std::string line;
        for (const std::string& word : words) {
            line += (&word == words.data() ? "" : " ") + word;
        }
        log.events.push_back("150 Execute VELK command: " + line);
        const auto [kind, record] = m_records[static_cast<std::size_t>(*answer.handler)];
        if (record.isEmpty) {
            throw std::bad_function_call();
        }
        text += kind == Kind::cString ? "" : "answer " + std::to_string(record.number);
        log.handler(record.number, words);
        if (throws(record)) {
            throw Thrown();
        }
        const auto hooks = m_hooks;
        for (const auto& [id, action] : hooks) {
            if (m_hooks.count(id) != 0) {
                log.hook(id, record.number, words);
                runHook(*this, action, actionsLeft);
            }
        }
        return record.number;
    }

    void takeAll()
    {
        log.events.insert(log.events.end(), m_commands.emissions.begin(), m_commands.emissions.end());
        m_commands.emissions.clear();
    }

    CommandModel m_commands{2000};
    std::vector<std::pair<Kind, Record>> m_records;
    std::map<unsigned int, std::string> m_hooks;
    unsigned int m_lastId = 0;
};

/// One session in both.
class Session
{
public:
    void operate(const std::string& line)
    {
        m_report.add(quoted(line));
        const char operation = line.empty() ? '\0' : line.front();
        const std::string rest = line.size() > 2 ? line.substr(2) : "";
        if (operation == 's' || operation == 'n') {
            m_table.push_back({rest, static_cast<int>(++m_records), operation == 'n', std::nullopt});
        } else if (operation == 'h' && !m_table.empty()) {
            m_table.back().description = rest;
            std::replace(m_table.back().description->begin(), m_table.back().description->end(), '~', '\n');
        } else if (operation == 'c' || operation == 'd' || operation == 'p') {
            const Kind kind = operation == 'c' ? Kind::cString : operation == 'd' ? Kind::stream : Kind::cpp;
            inBoth([&](auto& service) { service.registerTable(rest, kind, m_table); });
            m_table.clear();
        } else if (operation == 'x' || operation == 'X') {
            const Words words = rest.empty() ? Words() : split(rest, ' ');
            inBoth([&](auto& service) {
                service.actionsLeft = mostActions;
                service.execute(words, operation == 'X');
            });
        } else if (operation == 'k') {
            inBoth([&](auto& service) { service.registerHook(rest); });
        } else if (operation == 'r') {
            const auto id = static_cast<unsigned int>(std::strtoul(rest.c_str(), nullptr, 10));
            inBoth([&](auto& service) { service.deregisterHook(id); });
        } else if (operation == '?' && line.size() > 1) {
            const auto choice = static_cast<unsigned char>(line[1]);
            inBoth([&](auto& service) {
                service.help(split(rest, ' '), static_cast<Kind>(choice / 4 % 3), m_table, (choice & 1U) != 0,
                             (choice & 2U) != 0);
            });
        }
        m_report.expectSame("events", m_real.log.events, m_model.log.events);
        m_real.log.events.clear();
        m_model.log.events.clear();
    }

private:
    template <typename Operation>
    void inBoth(const Operation& operation)
    {
        operation(m_real);
        operation(m_model);
    }

    Real m_real;
    Model m_model;
    Table m_table;
    unsigned int m_records = 0;
    Report m_report;
};

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::string text = Input(data, size).rest();
    text.erase(std::remove(text.begin(), text.end(), '\0'), text.end()); // words are C strings
    recorder().take();
    Session session;
    try {
        for (const std::string& line : split(text, '\n')) {
            session.operate(line);
        }
    } catch (const TooLong&) {
        return 0; // the target for synopses compares long usages
    }
    return 0;
}

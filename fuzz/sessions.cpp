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
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "command/src/cmdTableHelperImplV2.h"
#include "fuzz/fuzzing.h"
#include "fuzz/sessionModel.h"
#include "tests/command/serviceSupport.h"

namespace {

using namespace Corvane::CmdTableHelper;
using namespace Corvane::CmdTableHelper::Testing;
using namespace Corvane::Fuzz;

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
    SessionModel m_model;
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

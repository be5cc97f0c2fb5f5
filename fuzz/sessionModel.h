/// A model of the command service: its rules for lines, help and hooks, on top of the model of its tables. Also the
/// code that runs both on this model and on the library.
#ifndef CORVANE_FUZZ_SESSIONMODEL_H
#define CORVANE_FUZZ_SESSIONMODEL_H

#include <cstdlib>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "fuzz/fuzzing.h"
#include "tests/command/commandModel.h"

namespace Corvane::Fuzz {

using CmdTableHelper::Testing::ComesBack;
using CmdTableHelper::Testing::CommandModel;
using Words = std::vector<std::string>;

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

inline bool throws(const Record& record)
{
    return record.synopsis.find('!') != std::string::npos;
}

constexpr int mostActions =
    12; // of hooks for one line: hooks that execute lines and register hooks never come to an end

/// What a hook does. Service is that of the library, or the model.
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

/// The rules of the service, over the model of its tables.
class SessionModel
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

} // namespace Corvane::Fuzz

#endif

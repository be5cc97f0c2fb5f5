/// The command tables, what they are measured beside, and the least code that does the same duty by hand: each
/// registers commands "NAME [-l] <file> { on | off }" and runs lines.
#ifndef CORVANE_BENCH_COMMANDPEERS_H
#define CORVANE_BENCH_COMMANDPEERS_H

#include <algorithm>
#include <cstring>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <numeric>
#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include <getopt.h>

#include <command/cmdDefinitions.h>

#ifdef CORVANE_HAS_LIBCLI
#include <libcli.h>
#endif
#ifdef CORVANE_HAS_CLI11
#include <CLI/CLI.hpp>
#endif
#ifdef CORVANE_HAS_PROGRAM_OPTIONS
#include <boost/program_options.hpp>
#endif

#include "command/src/cmdTableHelperImplV2.h"

namespace Corvane::Bench {

using Words = std::vector<std::string>;

/// Takes what is written and keeps nothing.
class NullStream : private std::streambuf, public std::ostream
{
public:
    NullStream() : std::ostream(static_cast<std::streambuf*>(this)) {}

private:
    std::streamsize xsputn(const char*, std::streamsize size) override { return size; }
    int overflow(int c) override { return c; }
};

/// What a service is given for a command and for a line, made beforehand.
struct Inputs
{
    using Command = std::string;
    static Command commandOf(const std::string& name) { return name; }

    using Line = Words;
    static Line lineOf(const Words& words) { return words; }
};

inline int countWords(int argc, const char* const*)
{
    return argc;
}

/// The service, without the process's one instance: a benchmark leaves nothing behind.
class Ours : public Inputs
{
public:
    struct Command
    {
        std::string name;
        std::vector<CmdTableHelper::CommandDefinitions> table;
    };

    static Command commandOf(const std::string& name, const std::string& arguments = " [-l] <file> { on | off }")
    {
        return {name, {{name + arguments, countWords, ""}}};
    }

    void add(const Command& command) { m_service.registerCmdTable(command.name, command.table); }
    int run(const Line& words) { return m_service.executeCmd(words, m_out); }
    CmdTableHelper::V2::CmdTableHelperImpl& service() { return m_service; }

private:
    CmdTableHelper::V2::CmdTableHelperImpl m_service;
    NullStream m_out;
};

/// One hash look-up for each word and one array of arguments, under the same two locks.
class Floor : public Inputs
{
public:
    void add(const std::string& name)
    {
        Node& command = attach(m_root, name);
        Node& option = attach(command, "-l");
        Node& file = attach(command, "<file>");
        option.placeholder = command.placeholder = &file;
        attach(file, "on").handler = countWords;
        attach(file, "off").handler = countWords;
    }

    int run(const Line& words)
    {
        std::vector<const char*> argv(words.size());
        std::transform(words.begin(), words.end(), argv.begin(), [](const std::string& word) { return word.c_str(); });
        const Node* const node = find(argv);
        if (node == nullptr || !node->handler) {
            return 20;
        }
        const int result = node->handler(static_cast<int>(argv.size()), argv.data());
        const std::lock_guard<std::mutex> lock(m_hookMutex);
        return m_hooks.empty() ? result : 0;
    }

private:
    struct Node
    {
        std::unordered_map<std::string_view, Node*> words;
        const Node* placeholder = nullptr;
        std::function<int(int, const char* const*)> handler;
    };

    Node& attach(Node& parent, const std::string& name)
    {
        m_names.push_back(name);
        m_nodes.emplace_back();
        parent.words.emplace(m_names.back(), &m_nodes.back());
        return m_nodes.back();
    }

    const Node* find(const std::vector<const char*>& argv)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const Node* node = &m_root;
        for (auto word = argv.begin(); word != argv.end() && node != nullptr; ++word) {
            const auto next = node->words.find(*word);
            node = next != node->words.end() ? next->second : node->placeholder;
        }
        return node;
    }

    std::mutex m_mutex;
    std::deque<std::string> m_names;
    std::deque<Node> m_nodes;
    Node m_root;
    std::mutex m_hookMutex;
    std::map<unsigned int, std::function<void()>> m_hooks;
};

/// The C library's parser of options. It knows no commands, so it gets just one.
class Getopt : public Inputs
{
public:
    void add(const std::string& name) { m_name = name; }

    int run(const Line& words)
    {
        std::vector<char*> argv;
        argv.reserve(words.size() + 1);
        for (const std::string& word : words) {
            argv.push_back(const_cast<char*>(word.c_str()));
        }
        argv.push_back(nullptr);
        const int argc = static_cast<int>(words.size());
        bool isLong = false;
        optind = 0; // begin anew
        while (getopt_long(argc, argv.data(), "l", options, nullptr) == 'l') {
            isLong = true;
        }
        const bool isMatch = m_name == argv[0] && argc - optind == 2 &&
                             (std::strcmp(argv[static_cast<std::size_t>(optind) + 1], "on") == 0 ||
                              std::strcmp(argv[static_cast<std::size_t>(optind) + 1], "off") == 0);
        return isMatch ? argc + (isLong ? 1 : 0) : 20;
    }

private:
    static constexpr option options[] = {{"long", no_argument, nullptr, 'l'}, {}};
    std::string m_name;
};

#ifdef CORVANE_HAS_LIBCLI
class Libcli : public Inputs
{
public:
    using Line = std::string;
    static Line lineOf(const Words& words)
    {
        return std::accumulate(words.begin() + 1, words.end(), words.front(),
                               [](const std::string& line, const std::string& word) { return line + " " + word; });
    }

    Libcli() : m_cli(cli_init(), cli_done)
    {
        cli_print_callback(m_cli.get(), [](cli_def*, const char*) {});
    }

    void add(const std::string& name)
    {
        cli_command* const command = cli_register_command(
            m_cli.get(), nullptr, name.c_str(), [](cli_def*, const char*, char**, int) { return CLI_OK; },
            PRIVILEGE_UNPRIVILEGED, MODE_EXEC, nullptr);
        const auto addArgument = [&](const char* argument, int flags,
                                     int (*validator)(cli_def*, const char*, const char*)) {
            cli_register_optarg(command, argument, flags, PRIVILEGE_UNPRIVILEGED, MODE_EXEC, nullptr, nullptr,
                                validator, nullptr);
        };
        addArgument("-l", CLI_CMD_OPTIONAL_FLAG | CLI_CMD_HYPHENATED_OPTION, nullptr);
        addArgument("file", CLI_CMD_ARGUMENT, nullptr);
        addArgument("state", CLI_CMD_ARGUMENT, [](cli_def*, const char*, const char* value) {
            return std::strcmp(value, "on") == 0 || std::strcmp(value, "off") == 0 ? CLI_OK : CLI_ERROR;
        });
    }

    int run(const Line& line) { return cli_run_command(m_cli.get(), line.c_str()) == CLI_OK ? 0 : 1; }

private:
    std::unique_ptr<cli_def, int (*)(cli_def*)> m_cli;
};
#endif

#ifdef CORVANE_HAS_CLI11
class Cli11 : public Inputs
{
public:
    static Line lineOf(const Words& words) { return {words.rbegin(), words.rend()}; } // it takes words from the end

    void add(const std::string& name)
    {
        auto arguments = std::make_unique<Arguments>();
        CLI::App* const command = m_app.add_subcommand(name);
        command->add_flag("-l", arguments->isLong);
        command->add_option("file", arguments->file)->required();
        command->add_option("state", arguments->state)->required()->check(CLI::IsMember({"on", "off"}));
        m_arguments.push_back(std::move(arguments));
    }

    int run(const Line& reversed)
    {
        try {
            m_app.parse(Words(reversed));
            return 0;
        } catch (const CLI::ParseError&) {
            return 20;
        }
    }

private:
    struct Arguments
    {
        bool isLong = false;
        std::string file;
        std::string state;
    };

    CLI::App m_app;
    std::vector<std::unique_ptr<Arguments>> m_arguments;
};
#endif

#ifdef CORVANE_HAS_PROGRAM_OPTIONS
/// Boost.Program_options. It knows no commands either: the name is the first of the words without a dash.
class ProgramOptions : public Inputs
{
public:
    void add(const std::string& name)
    {
        m_name = name;
        m_options.add_options()(",l", "")("command", boost::program_options::value<std::string>()->required())(
            "file", boost::program_options::value<std::string>()->required())(
            "state", boost::program_options::value<std::string>()->required());
        m_positions.add("command", 1).add("file", 1).add("state", 1);
    }

    int run(const Line& words)
    {
        namespace Po = boost::program_options;
        try {
            Po::variables_map values;
            Po::store(Po::command_line_parser(words).options(m_options).positional(m_positions).run(), values);
            Po::notify(values);
            const auto& state = values["state"].as<std::string>();
            return values["command"].as<std::string>() == m_name && (state == "on" || state == "off") ? 0 : 20;
        } catch (const Po::error&) {
            return 20;
        }
    }

private:
    std::string m_name;
    boost::program_options::options_description m_options;
    boost::program_options::positional_options_description m_positions;
};
#endif

} // namespace Corvane::Bench

#endif

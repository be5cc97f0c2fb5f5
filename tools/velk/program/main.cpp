// SPDX-License-Identifier: MIT
/// corvane-velk: checks, explains and draws synopses.
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <sstream>

#include <CLI/CLI.hpp>

#include <synopses/table.h>

#include "input.h"
#include "picture.h"
#include "report.h"

namespace {

using namespace Corvane::Synopses;
using namespace Corvane::Velk;

enum Status
{
    allIsWell = 0,
    found = 1, // flaws, or no synopsis that takes the line
    unusable = 2
};

/// A larger graph takes dot minutes, and nobody can read the picture.
constexpr std::size_t maxConnectionsOfPicture = 1000;

struct Options
{
    std::vector<std::string> files;
    std::string file; // of match
    std::vector<std::string> line;
    std::string picture;
    std::size_t lines = 20;
    bool isJson = false;
    bool isPelm = false;
};

using Command = int(const Options& options, std::ostream& out);

int check(const Options& options, std::ostream& out)
{
    const Input input = readFiles(options.files);
    const std::vector<Finding> findings = Corvane::Synopses::check(input.synopses);
    if (options.isJson) {
        writeSarif(findings, input, out);
    } else {
        writeText(findings, input, out);
    }
    return findings.empty() ? allIsWell : found;
}

const char* textOf(Role role)
{
    switch (role) {
    case Role::command:
        return "command";
    case Role::keyword:
        return "keyword";
    case Role::placeholder:
        return "placeholder";
    case Role::ignored:
        break;
    }
    return "ignored";
}

int match(const Options& options, std::ostream& out)
{
    const Input input = readFiles({options.file});
    const Table table(input.synopses);
    const Match match = table.match(options.line);
    if (!match.synopsis) {
        out << "No synopsis takes this line. The usage, as velk and as pelm:\n"
            << table.usage(options.line, Format::velk) << table.usage(options.line, Format::pelm);
        return found;
    }
    const Place& place = input.places[*match.synopsis];
    out << place.file << ':' << place.line << ": " << input.synopses[*match.synopsis].text << '\n';
    for (std::size_t i = 0; i < match.words.size(); ++i) {
        const Word& word = match.words[i];
        out << "  " << options.line[i] << ": " << textOf(word.role)
            << (word.role == Role::placeholder ? " " + word.name : "") << '\n';
    }
    return allIsWell;
}

int usage(const Options& options, std::ostream& out)
{
    const Table table(readFiles(options.files).synopses);
    for (const std::string& command : table.commands()) {
        out << table.usage({command}, options.isPelm ? Format::pelm : Format::velk);
    }
    return allIsWell;
}

int lines(const Options& options, std::ostream& out)
{
    const Table table(readFiles(options.files).synopses);
    for (const std::vector<std::string>& line : table.lines(options.lines)) {
        for (std::size_t i = 0; i < line.size(); ++i) {
            out << (i == 0 ? "" : " ") << line[i];
        }
        out << '\n';
    }
    return allIsWell;
}

int graph(const Options& options, std::ostream& out)
{
    const Table table(readFiles(options.files).synopses);
    if (options.picture.empty()) {
        out << table.dot();
    } else if (table.connections() > maxConnectionsOfPicture && options.picture.rfind(".dot") == std::string::npos) {
        throw Failure("the graph has " + std::to_string(table.connections()) + " connections, a picture can have " +
                      std::to_string(maxConnectionsOfPicture) + "; draw fewer synopses, or write a .dot file");
    } else {
        writePicture(table.dot(), options.picture);
    }
    return allIsWell;
}

int run(Command* command, const Options& options)
{
    try {
        std::ostringstream out;
        const int status = command(options, out);
        const std::string text = out.str();
        if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0) {
            throw Failure(std::string("can't write standard output: ") + std::strerror(errno));
        }
        return status;
    } catch (const std::bad_alloc&) {
        std::cerr << "corvane-velk: not enough memory\n";
    } catch (const std::exception& failure) { // Failure, TooLarge
        std::cerr << "corvane-velk: " << failure.what() << '\n';
    }
    return unusable;
}

/// Reads the command line and runs its command.
int readAndRun(int argc, char** argv)
{
    Options options;
    Command* command = nullptr;
    CLI::App app("Checks, explains and draws the synopses of command tables.", "corvane-velk");
    app.require_subcommand(1);
    app.set_help_flag();
    app.set_help_all_flag("--help", "Print this help and exit");
    app.add_flag_callback(
        "--version",
        [] {
            std::cout << "corvane-velk " CORVANE_VELK_VERSION "\n";
            throw CLI::Success();
        },
        "Print the version and exit");
    app.footer("FILE has one synopsis a line, with the command's name before a tab if the synopsis doesn't begin with\n"
               "it. Lines that begin with # are comments. Without FILE, or for -, standard input is read.\n"
               "Exit status: 0; 1 with findings, or if no synopsis takes the line; 2 if something can't be read or "
               "written.");
    const auto add = [&](const char* name, const char* description, Command* run) {
        CLI::App* const subcommand = app.add_subcommand(name, description);
        subcommand->callback([&command, run] { command = run; });
        return subcommand;
    };
    CLI::App* const checking = add("check", "Find flaws in synopses", check);
    checking->add_flag("--json", options.isJson, "Print the findings as SARIF 2.1.0");
    CLI::App* const matching = add("match", "Tell which synopsis takes a line, and what its words are", match);
    CLI::App* const printing = add("usage", "Print the usage of each command", usage);
    printing->add_flag("--pelm", options.isPelm, "Print it as for the command pelm");
    CLI::App* const listing = add("lines", "List lines that run a command, the shortest first", lines);
    listing->add_option("-n,--number", options.lines, "List at most this many lines (20)");
    CLI::App* const drawing = add("graph", "Draw the graph of the synopses, with Graphviz", graph);
    drawing->add_option("-o,--output", options.picture,
                        "Write FILE.svg, FILE.png or FILE.dot; else dot text is printed");
    for (CLI::App* const subcommand : {checking, printing, listing, drawing}) {
        subcommand->add_option("FILE", options.files, "Files with synopses");
    }
    matching->add_option("FILE", options.file, "File with synopses")->required();
    matching->add_option("WORDS", options.line, "The words of the line, after --")->required();
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& result) {
        return app.exit(result) == 0 ? allIsWell : unusable;
    }
    return run(command, options);
}

} // namespace

int main(int argc, char** argv)
{
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN)); // a closed pipe is reported as a failed write
    try {
        return readAndRun(argc, argv);
    } catch (const std::exception& failure) {
        std::cerr << "corvane-velk: " << failure.what() << '\n';
        return unusable;
    }
}

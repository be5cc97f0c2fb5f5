// SPDX-License-Identifier: MIT
/// The syntax graph: the synopses of all registered commands, merged into one graph of words.
///
/// Construction is in cmdSyntax.cpp, matching and dispatch in cmdSyntaxMatch.cpp, the usage printers in
/// cmdSyntaxPrint.cpp. Depth of a synopsis, of the graph and of a line costs heap, never stack.
#ifndef CORVANE_COMMAND_CMDSYNTAX_H
#define CORVANE_COMMAND_CMDSYNTAX_H

#include <functional>
#include <iosfwd>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "command/src/node.h"
#include "command/src/shellCommandFunction.h"
#include "sync/mutex.h"

namespace Corvane::CmdTableHelper {

/// Threads  any thread may call addCommand(), dispatchCommand(), findCommand() and end(), which take the mutex. The
///          other operations take no lock.
/// Errors   std::system_error if the mutex can't be locked, std::bad_alloc.
class SyntaxGraph
{
public:
    SyntaxGraph();
    ~SyntaxGraph();
    SyntaxGraph(const SyntaxGraph&) = delete;
    SyntaxGraph& operator=(const SyntaxGraph&) = delete;

    /// The nodes after which the next word of a synopsis goes.
    using Frontier = std::vector<NodePtr>;
    using Synopses = std::vector<std::pair<std::string, ShellCommandFunction>>;

    /// What a line led to: a node with a handler, and the function that the handler held. Both live on as long as this
    /// object does.
    struct Command
    {
        /// Calls the function that the handler holds now, once, and shares none from then on.
        int call(int argc, const char* const* argv, std::ostream& out)
        {
            return node->handler.callCommandHandlerFunction(std::move(function), argc, argv, out);
        }

        NodePtr node;
        ShellCommandFunction::SharedFunction function;
    };

    /// Ends the graph: its nodes and handlers are released, it is empty from now on, and addCommand() adds nothing.
    ///
    /// Threads  any; what a handler owns may use the graph while it is destroyed.
    void end(bool isForkedChild = false);

    /// Takes the next token from `cursor`: one of the characters "[{|}]", or a word.
    ///
    /// Returns  false at the end of the text.
    static bool getToken(const char*& cursor, std::string& token);

    /// Reads one sequence of a synopsis. VELK is the name of the syntax of synopses: words, "[ ]" around what may be
    /// left out, and "{ | }" around a choice. Attaches the words after `frontier`, which becomes the nodes at which the
    /// sequence ends.
    ///
    /// Returns  the character that ended the sequence, "|", "]" or "}", or NUL at the end of the text.
    static char processVelkSyntax(const char*& cursor, Frontier& frontier);

    /// Attaches one word after every node of the frontier, which then consists of that word's node.
    static void joinToNode(const std::string& word, Frontier& frontier);

    /// Emits the event ERROR for a synopsis that has more opening than closing brackets of a pair, or fewer.
    static void checkBrackets(const std::string& synopsis, char open, char close);

    /// Adds one synopsis; `function` becomes the handler of every node at which it ends.
    void addSynopsis(const std::string& synopsis, const ShellCommandFunction& function) CORVANE_REQUIRES(mutex);

    /// Makes `commandName` a command, and looks again for the first words of the names that are still pending.
    void registerCommandName(const std::string& commandName) CORVANE_REQUIRES(mutex);

    /// Adds the synopses of one command under its name.
    void addCommand(const std::string& commandName, const Synopses& synopses);

    /// Returns  the root's subnodes that the first word of a line may stand for; none if it is no registered command.
    std::vector<NodePtr> findMatchingRootSubnodes(const std::string& word) const CORVANE_REQUIRES(mutex);

    /// Walks a line from `node` and appends the matched words, each with a blank, to `usedWords` unless it is null.
    ///
    /// It looks at most once in a call at what follows one node for one word of the line, and then at each subnode. So
    /// it takes at most (edges of the graph) x (words of the line) steps, whatever the number of placeholders to choose
    /// from.
    ///
    /// Errors   std::logic_error for a null word.
    /// Returns  the node reached; it may lack a handler.
    NodePtr findCommandArguments(std::shared_ptr<Node> node, std::string* usedWords, unsigned long argc,
                                 const char* const* argv) const CORVANE_REQUIRES(mutex);

    /// Finds the handler that a line leads to, or writes the usage to `out`.
    ///
    /// Returns  the handler, valid until the graph ends (a later registration may replace the function in it), or null.
    const ShellCommandFunction* dispatchCommand(unsigned long argc, const char* const* argv, std::ostream& out) const;

    /// The same for a caller that calls the handler while another thread may end the graph.
    ///
    /// Returns  the command, or one without a node.
    Command findCommand(unsigned long argc, const char* const* argv, std::ostream& out) const;

    /// Writes what may follow `node`, up to the first set of alternatives.
    static void printSyntax(std::shared_ptr<Node> node, std::ostream& out);

    /// Writes what may follow `node` in the format for "pelm", a command word that has one of its own.
    static void printPelmSyntax(std::shared_ptr<Node> node, std::ostream& out);

    /// Writes the words from `node` onward in compact form.
    ///
    /// Returns  the node where it stopped.
    static NodePtr printSimpleSubNodes(std::shared_ptr<Node> node, std::ostream& out);

    /// Writes the path from `from` up to, not including, `stop`.
    ///
    /// Returns  the last node written.
    static NodePtr printSubNodes(std::shared_ptr<Node> from, std::shared_ptr<Node> stop, std::ostream& out);

    /// Guards everything below, and every node; only a handler is called without it.
    mutable Mutex mutex;
    /// The parent of the first words of all synopses; null once the graph has ended.
    NodePtr root CORVANE_GUARDED_BY(mutex);
    /// Names of commands with which no synopsis begins yet.
    std::set<std::string, std::less<>> pendingCommandNames CORVANE_GUARDED_BY(mutex);
    /// The placeholder after the root to which each command leads whose name no synopsis begins with. Every other
    /// command leads to the keyword of its name, which is marked as a command.
    std::map<std::string, NodePtr, std::less<>> commandNodes CORVANE_GUARDED_BY(mutex);

private:
    /// Adds one synopsis and moves the handlers that it replaces into `replaced`.
    void addSynopsis(const std::string& synopsis, const ShellCommandFunction& function,
                     std::vector<ShellCommandFunction>& replaced) CORVANE_REQUIRES(mutex);

    enum class PrintFormat
    {
        usual,
        pelm
    };

    /// Appends what may follow `node`: nothing if it is null.
    static void appendSyntax(const NodePtr& node, PrintFormat format, std::string& text);

    /// Makes `name` a command if it is a keyword after the root.
    ///
    /// Returns  whether it is.
    bool resolveByKeyword(const std::string& name) CORVANE_REQUIRES(mutex);
};

} // namespace Corvane::CmdTableHelper

#endif

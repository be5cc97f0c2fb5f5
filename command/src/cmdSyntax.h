/// The syntax graph: the synopses of all registered commands, merged into one graph of words.
///
/// Construction is in cmdSyntax.cpp, matching and dispatch in cmdSyntaxMatch.cpp, the usage printers in
/// cmdSyntaxPrint.cpp. Depth of a synopsis, of the graph and of a line costs heap, never stack.
#ifndef CORVANE_COMMAND_CMDSYNTAX_H
#define CORVANE_COMMAND_CMDSYNTAX_H

#include <iosfwd>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "command/src/shellCommandFunction.h"
#include "command/src/subnodeIndex.h"

namespace Corvane::CmdTableHelper {

/// One syntax word, and the words that may follow it. Always owned by std::shared_ptr: a node that follows a group has
/// as many parents as there are ways through the group.
///
/// Threads  none of its own; the graph's mutex guards the nodes.
class Node
{
public:
    explicit Node(const std::string& word);

    /// Returns  the subnode with that name, in the list of subnodes, or null.
    const std::shared_ptr<Node>* subnodeNamed(std::string_view subnodeName) const;

    /// Returns  the first subnode with that name, or an empty pointer.
    std::shared_ptr<Node> findExactSubnode(const std::string& subnodeName) const;

    /// Returns  the subnode with that name, made and attached if there was none.
    std::shared_ptr<Node> addNewSubnode(const std::string& subnodeName);

    /// Attaches `node` unless a subnode with its name is there already.
    ///
    /// Returns  `node` itself, also where it was not attached.
    std::shared_ptr<Node> addExistingSubnode(std::shared_ptr<Node> node);

    /// Returns  the subnodes that a typed word may stand for: the keyword with exactly that name or else every
    ///          placeholder, in order.
    std::vector<std::shared_ptr<Node>> findMatchingSubnodes(const std::string& word) const;

    /// The words that may follow, in the order in which they were first attached; no two have the same name. Only the
    /// operations above attach any.
    std::vector<std::shared_ptr<Node>> subnodes;
    /// What runs when a line ends here; holds nothing until a synopsis ends here.
    ShellCommandFunction handler;
    /// Whether the word stands for a value that the user types.
    bool isArgument;
    /// The word as it is written in the synopsis.
    std::string name;

private:
    std::unique_ptr<SubnodeIndex> m_index; // of the subnodes, once there are many
};

/// Threads  addCommand() and dispatchCommand() hold the mutex for their whole run and may be called by any thread. The
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
    using Frontier = std::vector<std::shared_ptr<Node>>;
    using Synopses = std::vector<std::pair<std::string, ShellCommandFunction>>;

    /// Ends the graph: its nodes and handlers are released, it is empty from now on, and addCommand() adds nothing.
    ///
    /// Threads  any; what a handler owns may use the graph while it is destroyed.
    void end();

    /// Takes the next token from `cursor`: one of the characters "[{|}]", or a word.
    ///
    /// Returns  false at the end of the text.
    static bool getToken(const char*& cursor, std::string& token);

    /// Attaches the words of one sequence after `frontier` and leaves in it the nodes at which the sequence ends.
    ///
    /// Returns  the character that ended the sequence, "|", "]" or "}", or NUL at the end of the text.
    static char processVelkSyntax(const char*& cursor, Frontier& frontier);

    /// Attaches one word after every node of the frontier, which then consists of that word's node.
    static void joinToNode(const std::string& word, Frontier& frontier);

    /// Reports a synopsis in which a pair of brackets is out of balance by the event ERROR.
    static void checkBrackets(const std::string& synopsis, char open, char close);

    /// Adds one synopsis; `function` becomes the handler of every node at which it ends.
    void addSynopsis(const std::string& synopsis, const ShellCommandFunction& function);

    /// Makes `commandName` a command, and looks again for the first words of the names that are still pending.
    void registerCommandName(const std::string& commandName);

    /// Adds the synopses of one command under its name.
    void addCommand(const std::string& commandName, const Synopses& synopses);

    /// Returns  the root's subnodes that the first word of a line may stand for; none if it is no registered command.
    std::vector<std::shared_ptr<Node>> findMatchingRootSubnodes(const std::string& word) const;

    /// Walks a line from `node` and appends the matched words, each with a blank, to `usedWords` unless it is null.
    ///
    /// Costs    at most nodes x words, whatever the number of placeholders among which there is a choice.
    /// Errors   std::logic_error for a null word.
    /// Returns  the node reached; it may lack a handler.
    std::shared_ptr<Node> findCommandArguments(std::shared_ptr<Node> node, std::string* usedWords, unsigned long argc,
                                               const char* const* argv) const;

    /// Finds the handler that a line leads to, or writes the usage to `out`.
    ///
    /// Returns  the handler, valid until the graph ends (a later registration may replace the function in it), or null.
    const ShellCommandFunction* dispatchCommand(unsigned long argc, const char* const* argv, std::ostream& out) const;

    /// The same for a caller that calls the handler while another thread may end the graph.
    ///
    /// Owns  the result keeps the handler alive.
    std::shared_ptr<const ShellCommandFunction> findHandler(unsigned long argc, const char* const* argv,
                                                            std::ostream& out) const;

    /// Writes what may follow `node`, up to the first set of alternatives.
    static void printSyntax(std::shared_ptr<Node> node, std::ostream& out);

    /// Writes what may follow `node` in the format of the "pelm" commands.
    static void printPelmSyntax(std::shared_ptr<Node> node, std::ostream& out);

    /// Writes the words from `node` onward in compact form.
    ///
    /// Returns  the node where it stopped.
    static std::shared_ptr<Node> printSimpleSubNodes(std::shared_ptr<Node> node, std::ostream& out);

    /// Writes the path from `from` up to, not including, `stop`.
    ///
    /// Returns  the last node written.
    static std::shared_ptr<Node> printSubNodes(std::shared_ptr<Node> from, std::shared_ptr<Node> stop,
                                               std::ostream& out);

    /// Guards everything below, and every node.
    mutable std::mutex mutex;
    /// The parent of the first words of all synopses; null once the graph has ended.
    std::shared_ptr<Node> root;
    /// Names of commands for which no first word of that very name was found yet.
    std::set<std::string> pendingCommandNames;
    /// The root's subnode that each command leads to.
    std::map<std::string, std::shared_ptr<Node>> commandNodes;

private:
    static void addSynopsis(const std::shared_ptr<Node>& root, const std::string& synopsis,
                            const ShellCommandFunction& function, std::vector<ShellCommandFunction>& replaced);
};

} // namespace Corvane::CmdTableHelper

#endif

/// Helpers for tests that build syntax graphs and look at them.
#ifndef CORVANE_TESTS_COMMAND_GRAPHSUPPORT_H
#define CORVANE_TESTS_COMMAND_GRAPHSUPPORT_H

#include <map>
#include <memory>
#include <ostream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "command/src/cmdSyntax.h"

namespace Corvane::CmdTableHelper::Testing {

// These read a graph, and call operations that need its mutex, under the mutex.

inline NodePtr rootOf(const SyntaxGraph& graph)
{
    const ExclusiveLock lock(graph.mutex);
    return graph.root;
}

inline std::set<std::string> pendingNamesOf(const SyntaxGraph& graph)
{
    const ExclusiveLock lock(graph.mutex);
    return {graph.pendingCommandNames.begin(), graph.pendingCommandNames.end()};
}

inline std::map<std::string, NodePtr> commandNodesOf(const SyntaxGraph& graph)
{
    const ExclusiveLock lock(graph.mutex);
    std::map<std::string, NodePtr> nodes(graph.commandNodes.begin(), graph.commandNodes.end());
    for (const NodePtr& node : graph.root->subnodes) {
        if (node->isCommand) {
            EXPECT_TRUE(nodes.emplace(node->name, node).second) << node->name;
        }
    }
    return nodes;
}

inline std::vector<NodePtr> matchingRootSubnodes(const SyntaxGraph& graph, const std::string& word)
{
    const ExclusiveLock lock(graph.mutex);
    return graph.findMatchingRootSubnodes(word);
}

inline NodePtr walkFrom(const SyntaxGraph& graph, const NodePtr& node, std::string* usedWords, unsigned long argc,
                        const char* const* argv)
{
    const ExclusiveLock lock(graph.mutex);
    return graph.findCommandArguments(node, usedWords, argc, argv);
}

/// A handler that returns `result`, by which tests tell handlers apart.
inline ShellCommandFunction returning(int result)
{
    return std::function<int(int, const char* const*)>([result](int, const char* const*) { return result; });
}

/// What the function returns; -1 for a node without a handler.
inline int resultOf(const ShellCommandFunction& function)
{
    std::ostringstream out;
    return function.callCommandHandlerFunction(0, nullptr, out);
}

template <typename Nodes = std::vector<NodePtr>>
std::vector<std::string> namesOf(const Nodes& nodes)
{
    std::vector<std::string> names;
    for (const NodePtr& node : nodes) {
        names.push_back(node->name);
    }
    return names;
}

inline std::vector<std::string> subnodesOf(const NodePtr& node)
{
    return namesOf(node->subnodes);
}

/// The node reached from `node` over subnodes of these names; empty if there is none.
inline NodePtr at(NodePtr node, const std::vector<std::string>& path)
{
    for (const auto& name : path) {
        node = node ? node->findExactSubnode(name) : nullptr;
    }
    return node;
}

/// Registers one command whose synopses get the handlers `returning(1)`, `returning(2)`, and so on.
inline void add(SyntaxGraph& graph, const std::string& commandName, const std::vector<std::string>& synopses)
{
    SyntaxGraph::Synopses pairs;
    for (const auto& synopsis : synopses) {
        pairs.emplace_back(synopsis, returning(static_cast<int>(pairs.size()) + 1));
    }
    graph.addCommand(commandName, pairs);
}

/// What a line led to: the handler's result (-1 if none was found) and what was written.
struct Dispatched
{
    int result;
    std::string text;
    bool operator==(const Dispatched& other) const { return result == other.result && text == other.text; }
};

inline std::ostream& operator<<(std::ostream& out, const Dispatched& dispatched)
{
    return out << dispatched.result << " \"" << dispatched.text << "\"";
}

inline Dispatched dispatch(const SyntaxGraph& graph, const std::vector<std::string>& words)
{
    std::vector<const char*> argv;
    for (const auto& word : words) {
        argv.push_back(word.c_str());
    }
    std::ostringstream out;
    const ShellCommandFunction* const function = graph.dispatchCommand(argv.size(), argv.data(), out);
    return {function != nullptr ? resultOf(*function) : -1, out.str()};
}

inline std::string syntaxFrom(const NodePtr& node)
{
    std::ostringstream out;
    SyntaxGraph::printSyntax(node, out);
    return out.str();
}

inline std::string pelmSyntaxFrom(const NodePtr& node)
{
    std::ostringstream out;
    SyntaxGraph::printPelmSyntax(node, out);
    return out.str();
}

} // namespace Corvane::CmdTableHelper::Testing

#endif

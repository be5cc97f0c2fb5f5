// SPDX-License-Identifier: MIT
/// The library's syntax graph of a list of synopses, and what the graph itself doesn't keep: which synopsis attached
/// each word, and where each synopsis ends.
#ifndef CORVANE_SYNOPSES_GRAPH_H
#define CORVANE_SYNOPSES_GRAPH_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include <synopses/table.h>

#include "command/src/cmdSyntax.h"

namespace Corvane::Synopses {

using CmdTableHelper::Node;
using CmdTableHelper::NodePtr;
using CmdTableHelper::SyntaxGraph;

/// A word or a bracket of a synopsis, as the library reads it.
struct Token
{
    std::string text;
    std::size_t column;
    bool isBracket() const { return text.size() == 1 && std::string("[{|}]").find(text) != std::string::npos; }
};

/// How the library has read a synopsis.
struct Reading
{
    std::string command;
    std::vector<Token> tokens; ///< up to `stop`
    std::size_t stop = 0;      ///< where the library stopped
    char stoppedBy = '\0';     ///< NUL: at the end
    bool endsAtRoot = false;
};

using NodeId = std::uint32_t;
constexpr NodeId rootId = 0;

struct Edge
{
    NodeId to;
    std::size_t synopsis; ///< that attached it
};

/// A node of the graph, by its number.
struct Vertex
{
    NodePtr node;
    std::vector<Edge> edges; ///< one for each subnode, in their order
    std::size_t parents = 0;
    NodeId from = rootId; ///< the node before it on a shortest way from the root
};

/// An end that a synopsis has taken from an earlier one.
struct SharedEnd
{
    std::size_t synopsis;
    std::size_t earlier;
    NodeId node;
};

/// Threads  as Table. Each operation takes the library's mutex itself.
class Graph
{
public:
    /// Errors  TooLarge.
    explicit Graph(std::vector<Synopsis> list);

    /// Returns  the nodes that the first word of a line leads to.
    std::vector<NodePtr> startsOf(const std::string& word) const;

    /// Returns  the node that a line reaches from `node`, and appends the matched words to `usedWords` unless it is
    /// null.
    NodePtr walk(const NodePtr& node, const char* const* words, std::size_t count, std::string* usedWords) const;

    const Vertex& at(NodeId id) const { return vertices[id]; }
    NodeId idOf(const NodePtr& node) const { return ids.at(node.get()); }
    const NodePtr& root() const { return vertices.front().node; }

    /// Returns  the names of the words on a shortest way from the root to this node.
    std::vector<std::string> wayTo(NodeId id) const;

    const std::vector<Synopsis> synopses;
    std::vector<Reading> readings; // of each synopsis
    std::vector<std::string> commands;
    std::vector<Vertex> vertices;
    std::vector<SharedEnd> sharedEnds;
    std::size_t connections = 0;

private:
    void add(Reading reading);
    void noteEdges(std::size_t synopsis);
    void noteEnd(std::size_t synopsis, NodeId node);
    void noteWays();
    NodeId number(const NodePtr& node);

    SyntaxGraph m_graph;
    std::unordered_map<const Node*, NodeId> ids;
    std::unordered_map<NodeId, std::size_t> m_ends; // the synopsis that ends at a node
};

/// Returns  the synopsis whose handler the node has.
std::size_t synopsisOf(const Node& node);

/// Returns  the C strings of the words, which own them.
std::vector<const char*> pointersTo(const std::vector<std::string>& words);

/// Returns  the words, with quotation marks around them all.
std::string quoted(const std::vector<std::string>& words);
std::string quoted(const std::string& text);

/// Returns  the words, with a blank between them.
std::string joined(const std::vector<std::string>& words);

} // namespace Corvane::Synopses

#endif

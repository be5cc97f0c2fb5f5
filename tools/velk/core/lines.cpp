// SPDX-License-Identifier: MIT
/// Lists the lines that run a handler, and what may follow some words.
#include "graph.h"

#include <algorithm>
#include <set>

namespace Corvane::Synopses {

namespace {

/// Finds lines of one length after another. It never goes a way that leads to no line of that length.
class Lines
{
public:
    Lines(const Graph& graph, std::size_t most) : m_graph(graph), m_most(most)
    {
        m_canEnd.emplace_back();
        for (const Vertex& vertex : graph.vertices) {
            m_canEnd[0].push_back(vertex.node->handler.hasFunction());
        }
    }

    void find(std::size_t mostWords)
    {
        if (m_most != 0 && m_canEnd[0][rootId]) {
            found.emplace_back();
        }
        for (std::size_t words = 1; words <= mostWords && found.size() < m_most; ++words) {
            if (words > 1 && !addWord()) {
                return;
            }
            for (const std::string& command : m_graph.commands) {
                for (const NodePtr& start : m_graph.startsOf(command)) {
                    m_line.assign(1, command);
                    extend(m_graph.idOf(start), words - 1);
                }
            }
        }
    }

    std::vector<std::vector<std::string>> found;

private:
    /// Finds out from which nodes a line can end after one word more than so far.
    ///
    /// Returns  whether it can from any.
    bool addWord()
    {
        const std::vector<bool>& before = m_canEnd.back();
        std::vector<bool> now;
        for (const Vertex& vertex : m_graph.vertices) {
            now.push_back(std::any_of(vertex.edges.begin(), vertex.edges.end(),
                                      [&](const Edge& edge) { return before[edge.to]; }));
        }
        m_canEnd.push_back(std::move(now));
        return std::find(m_canEnd.back().begin(), m_canEnd.back().end(), true) != m_canEnd.back().end();
    }

    // NOLINTNEXTLINE(misc-no-recursion): it goes as deep as a line has words
    void extend(NodeId node, std::size_t words)
    {
        if (found.size() == m_most || !m_canEnd[words][node]) {
            return;
        }
        if (words == 0) {
            if (m_known.insert(m_line).second) {
                found.push_back(m_line);
            }
            return;
        }
        for (const Edge& edge : m_graph.at(node).edges) {
            m_line.push_back(m_graph.at(edge.to).node->name);
            extend(edge.to, words - 1);
            m_line.pop_back();
        }
    }

    const Graph& m_graph;
    std::size_t m_most;
    std::vector<std::vector<bool>> m_canEnd; // after this many words more, from each node
    std::vector<std::string> m_line;
    std::set<std::vector<std::string>> m_known;
};

/// Returns  the nodes that a line of at least one word can lead to, each once.
std::vector<NodePtr> nodesAfter(const Graph& graph, const std::vector<std::string>& line)
{
    std::vector<NodePtr> nodes = graph.startsOf(line.front());
    for (auto word = line.begin() + 1; word != line.end(); ++word) {
        std::vector<NodePtr> next;
        std::set<NodePtr> seen;
        for (const NodePtr& node : nodes) {
            for (const NodePtr& match : node->findMatchingSubnodes(*word)) {
                if (seen.insert(match).second) {
                    next.push_back(match);
                }
            }
        }
        nodes.swap(next);
    }
    return nodes;
}

} // namespace

std::vector<std::vector<std::string>> Table::lines(std::size_t most, std::size_t mostWords) const
{
    Lines lines(*m_graph, most);
    lines.find(mostWords);
    return lines.found;
}

Following Table::following(const std::vector<std::string>& line) const
{
    Following result;
    if (line.empty()) {
        result.mayEnd = m_graph->root()->handler.hasFunction();
        for (const std::string& command : m_graph->commands) {
            if (!m_graph->startsOf(command).empty()) {
                result.words.push_back({Role::command, command});
            }
        }
        return result;
    }
    std::set<std::string> names;
    for (const NodePtr& node : nodesAfter(*m_graph, line)) {
        result.mayEnd = result.mayEnd || node->handler.hasFunction();
        for (const NodePtr& subnode : node->subnodes) {
            if (names.insert(subnode->name).second) {
                result.words.push_back({subnode->isArgument ? Role::placeholder : Role::keyword, subnode->name});
            }
        }
    }
    return result;
}

} // namespace Corvane::Synopses

// SPDX-License-Identifier: MIT
/// Answers what a line leads to.
#include <algorithm>
#include <sstream>

#include "graph.h"

namespace Corvane::Synopses {

namespace {

Role roleOf(const Node& node, std::size_t place)
{
    return place == 0 ? Role::command : node.isArgument ? Role::placeholder : Role::keyword;
}

} // namespace

Table::Table(const std::vector<Synopsis>& synopses) : m_graph(std::make_unique<Graph>(synopses)) {}

Table::~Table() = default;

const std::vector<std::string>& Table::commands() const
{
    return m_graph->commands;
}

std::size_t Table::size() const
{
    return m_graph->vertices.size() - 1;
}

std::size_t Table::connections() const
{
    return m_graph->connections;
}

Match Table::match(const std::vector<std::string>& line) const
{
    const std::vector<const char*> words = pointersTo(line);
    NodePtr node = m_graph->root();
    const NodePtr end = m_graph->walk(node, words.data(), words.size(), nullptr);
    Match result;
    if (!end->handler.hasFunction()) {
        return result;
    }
    result.synopsis = synopsisOf(*end);
    for (std::size_t i = 0; i < line.size(); ++i) {
        const std::vector<NodePtr> matches = i == 0 ? m_graph->startsOf(line[0]) : node->findMatchingSubnodes(line[i]);
        if (matches.empty()) {
            break;
        }
        // The library says which one leads on. Where none does, the line ends at the first one.
        const auto match = std::find_if(matches.begin(), matches.end(), [&](const NodePtr& candidate) {
            const std::size_t used = i + 1;
            return matches.size() == 1 ||
                   m_graph->walk(candidate, words.data() + used, words.size() - used, nullptr)->handler.hasFunction();
        });
        node = match != matches.end() ? *match : matches.front();
        result.words.push_back({roleOf(*node, i), i == 0 ? line[0] : node->name});
        if (match == matches.end()) {
            break;
        }
    }
    for (std::size_t i = result.words.size(); i < line.size(); ++i) {
        result.words.push_back({Role::ignored, line[i]});
    }
    return result;
}

std::string Table::usage(const std::vector<std::string>& line, Format format) const
{
    const std::vector<const char*> words = pointersTo(line);
    std::string usedWords;
    const NodePtr end = m_graph->walk(m_graph->root(), words.data(), words.size(), &usedWords);
    std::ostringstream text;
    text << "Usage: " << usedWords;
    if (format == Format::pelm) {
        SyntaxGraph::printPelmSyntax(end, text);
    } else {
        SyntaxGraph::printSyntax(end, text);
    }
    text << "\n\n";
    return text.str();
}

} // namespace Corvane::Synopses

// SPDX-License-Identifier: MIT
/// Builds the library's graph, and notes what each synopsis adds to it.
#include "graph.h"

#include <algorithm>
#include <ostream>
#include <set>
#include <unordered_set>
#include <utility>

namespace Corvane::Synopses {

namespace {

// Optional words connect each word with all later ones. These keep a graph within some hundred megabytes.
constexpr std::size_t maxWords = 1000;
constexpr std::size_t maxConnections = 2000000;

std::vector<Token> tokensOf(const std::string& text)
{
    std::vector<Token> tokens;
    const char* cursor = text.c_str();
    for (std::string token; SyntaxGraph::getToken(cursor, token);) {
        const auto end = static_cast<std::size_t>(cursor - text.c_str());
        tokens.push_back({token, end - token.size()});
    }
    return tokens;
}

std::string firstWord(const std::vector<Token>& tokens)
{
    const auto word = std::find_if(tokens.begin(), tokens.end(), [](const Token& token) { return !token.isBracket(); });
    return word != tokens.end() ? word->text : "";
}

CmdTableHelper::ShellCommandFunction handlerOf(std::size_t synopsis)
{
    const auto number = static_cast<int>(synopsis);
    return CmdTableHelper::ShellCommandFunction::ArgvFunction([number](int, const char* const*) { return number; });
}

} // namespace

std::size_t synopsisOf(const Node& node)
{
    std::ostream nowhere(nullptr);
    return static_cast<std::size_t>(node.handler.callCommandHandlerFunction(0, nullptr, nowhere));
}

std::string joined(const std::vector<std::string>& words)
{
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : " ") + word;
    }
    return text;
}

std::string quoted(const std::string& text)
{
    return '"' + text + '"';
}

std::string quoted(const std::vector<std::string>& words)
{
    return quoted(joined(words));
}

std::vector<const char*> pointersTo(const std::vector<std::string>& words)
{
    std::vector<const char*> pointers(words.size());
    std::transform(words.begin(), words.end(), pointers.begin(), [](const std::string& word) { return word.c_str(); });
    return pointers;
}

Graph::Graph(std::vector<Synopsis> list) : synopses(std::move(list))
{
    const ExclusiveLock lock(m_graph.mutex);
    number(m_graph.root);
    for (std::size_t i = 0; i < synopses.size(); ++i) {
        Reading reading;
        reading.tokens = tokensOf(synopses[i].text);
        reading.command = synopses[i].command.empty() ? firstWord(reading.tokens) : synopses[i].command;
        if (i != 0 && reading.command != readings.back().command) {
            m_graph.registerCommandName(readings.back().command);
        }
        if (std::find(commands.begin(), commands.end(), reading.command) == commands.end()) {
            commands.push_back(reading.command);
        }
        add(std::move(reading));
    }
    if (!synopses.empty()) {
        m_graph.registerCommandName(readings.back().command);
    }
    noteWays();
}

void Graph::add(Reading reading)
{
    const std::size_t synopsis = readings.size();
    const std::string& text = synopses[synopsis].text;
    if (reading.tokens.size() > maxWords) {
        throw TooLarge("a synopsis has more than " + std::to_string(maxWords) + " words and brackets");
    }
    SyntaxGraph::Frontier frontier{root()};
    const char* cursor = text.c_str();
    reading.stoppedBy = SyntaxGraph::processVelkSyntax(cursor, frontier);
    reading.stop = static_cast<std::size_t>(cursor - text.c_str()) - (reading.stoppedBy != '\0' ? 1 : 0);
    while (!reading.tokens.empty() && reading.tokens.back().column >= reading.stop) {
        reading.tokens.pop_back();
    }
    readings.push_back(std::move(reading));
    noteEdges(synopsis);
    std::set<NodeId> ends;
    for (const NodePtr& node : frontier) {
        if (ends.insert(idOf(node)).second) {
            node->handler = handlerOf(synopsis);
            noteEnd(synopsis, idOf(node));
        }
    }
    if (connections > maxConnections) {
        throw TooLarge("the synopses make a graph of more than " + std::to_string(maxConnections) + " connections");
    }
}

NodeId Graph::number(const NodePtr& node)
{
    const auto [place, isNew] = ids.emplace(node.get(), static_cast<NodeId>(vertices.size()));
    if (isNew) {
        vertices.push_back({node, {}});
    }
    return place->second;
}

/// Looks at every node that words of the synopsis lead to: only they can have a new subnode.
void Graph::noteEdges(std::size_t synopsis)
{
    std::set<std::string> words;
    for (const Token& token : readings[synopsis].tokens) {
        if (!token.isBracket()) {
            words.insert(token.text);
        }
    }
    std::vector<NodeId> open{rootId};
    std::unordered_set<NodeId> seen{rootId};
    while (!open.empty()) {
        const NodeId id = open.back();
        open.pop_back();
        const NodePtr node = vertices[id].node;
        for (std::size_t place = vertices[id].edges.size(); place < node->subnodes.size(); ++place) {
            const NodeId to = number(node->subnodes[place]);
            vertices[id].edges.push_back({to, synopsis});
            ++vertices[to].parents;
            ++connections;
        }
        for (const std::string& word : words) {
            const NodePtr subnode = node->findExactSubnode(word);
            if (subnode && seen.insert(idOf(subnode)).second) {
                open.push_back(idOf(subnode));
            }
        }
    }
}

void Graph::noteEnd(std::size_t synopsis, NodeId node)
{
    readings[synopsis].endsAtRoot = readings[synopsis].endsAtRoot || node == rootId;
    const auto [end, isNew] = m_ends.emplace(node, synopsis);
    if (!isNew) {
        sharedEnds.push_back({synopsis, end->second, node});
        end->second = synopsis;
    }
}

void Graph::noteWays()
{
    std::vector<NodeId> found{rootId};
    std::vector<bool> seen(vertices.size());
    seen[rootId] = true;
    for (std::size_t i = 0; i < found.size(); ++i) {
        const NodeId from = found[i];
        for (const Edge& edge : vertices[from].edges) {
            if (!seen[edge.to]) {
                seen[edge.to] = true;
                vertices[edge.to].from = from;
                found.push_back(edge.to);
            }
        }
    }
}

std::vector<std::string> Graph::wayTo(NodeId id) const
{
    std::vector<std::string> words;
    for (; id != rootId; id = at(id).from) {
        words.insert(words.begin(), at(id).node->name);
    }
    return words;
}

std::vector<NodePtr> Graph::startsOf(const std::string& word) const
{
    const ExclusiveLock lock(m_graph.mutex);
    return m_graph.findMatchingRootSubnodes(word);
}

NodePtr Graph::walk(const NodePtr& node, const char* const* words, std::size_t count, std::string* usedWords) const
{
    const ExclusiveLock lock(m_graph.mutex);
    return m_graph.findCommandArguments(node, usedWords, count, words);
}

} // namespace Corvane::Synopses

// SPDX-License-Identifier: MIT
/// Finds placeholders that take the lines of another placeholder in the same place.
///
/// For each placeholder, all ways of a line after it are compared with all ways after the placeholders before it. This
/// is how automata are compared: there is a set of nodes for each of the two, and each word moves both sets.
#include "checks.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <utility>

namespace Corvane::Synopses {

namespace {

/// Where a line may be; in order, each once.
using Places = std::vector<NodeId>;

/// The line has reached a handler, and what follows is ignored.
constexpr NodeId anywhere = static_cast<NodeId>(-1);

/// The most nodes that one check looks at. What it has not compared by then, it doesn't report.
constexpr long budget = 2000000;

/// Two sets of placeholders, and how the line got from the ones before.
struct State
{
    Places earlier;
    Places later;
    std::size_t from;
    std::string word;
};

struct Comparison
{
    bool isEverChosen = false; // the later placeholder
    std::optional<std::vector<std::string>> lineOfBoth;
};

class Choices
{
public:
    Choices(const Graph& graph, std::vector<Finding>& findings) : m_graph(graph), m_findings(findings) {}

    void check(NodeId parent)
    {
        const std::vector<Edge>& edges = m_graph.at(parent).edges;
        Places earlier;
        for (const Edge& edge : edges) {
            if (!m_graph.at(edge.to).node->isArgument) {
                continue;
            }
            if (!earlier.empty() && m_left > 0) {
                report(parent, earlier, edge);
            }
            earlier.push_back(edge.to);
        }
    }

private:
    void report(NodeId parent, const Places& earlier, const Edge& later)
    {
        const Comparison result = compare(earlier, later.to);
        if (!result.lineOfBoth) {
            return;
        }
        const std::string& name = m_graph.at(later.to).node->name;
        const NodeId taker = takerOf(earlier, *result.lineOfBoth);
        const std::vector<Edge>& edges = m_graph.at(parent).edges;
        const std::size_t other =
            std::find_if(edges.begin(), edges.end(), [&](const Edge& edge) { return edge.to == taker; })->synopsis;
        if (result.isEverChosen && other == later.synopsis) {
            return; // "[<low>] <high>": the author has chosen the order
        }
        const std::string takerName = quoted(m_graph.at(taker).node->name);
        std::vector<std::string> line = m_graph.wayTo(parent);
        line.push_back(name);
        line.insert(line.end(), result.lineOfBoth->begin(), result.lineOfBoth->end());
        const std::string message =
            result.isEverChosen
                ? "the line " + quoted(line) + " fits " + takerName + " too, and " + takerName + " comes first"
                : quoted(name) + " is never chosen: " + takerName +
                      (earlier.size() == 1 ? ", which comes first, takes" : " and others, which come first, take") +
                      " every line that fits it";
        m_findings.push_back(findingAt(m_graph, result.isEverChosen ? Rule::choiceByOrder : Rule::neverChosen,
                                       later.synopsis, name, message));
        if (other != later.synopsis) {
            m_findings.back().other = other;
        }
    }

    /// Returns  the first of the placeholders from which the library reaches a handler.
    NodeId takerOf(const Places& placeholders, const std::vector<std::string>& rest) const
    {
        const std::vector<const char*> words = pointersTo(rest);
        return *std::find_if(placeholders.begin(), placeholders.end(), [&](NodeId id) {
            return m_graph.walk(m_graph.at(id).node, words.data(), words.size(), nullptr)->handler.hasFunction();
        });
    }

    Comparison compare(const Places& earlier, NodeId later)
    {
        Comparison result;
        std::vector<State> states{{sorted(earlier), {later}, 0, ""}};
        std::set<std::pair<Places, Places>> seen{{states[0].earlier, states[0].later}};
        for (std::size_t i = 0; i < states.size() && !(result.isEverChosen && result.lineOfBoth); ++i) {
            if (accepts(states[i].later)) {
                if (!accepts(states[i].earlier)) {
                    result.isEverChosen = true;
                } else if (!result.lineOfBoth) {
                    result.lineOfBoth = lineTo(states, i);
                }
            }
            for (const std::string& word : wordsAfter(states[i])) {
                State next{after(states[i].earlier, word), after(states[i].later, word), i, word};
                if (!next.later.empty() && seen.insert({next.earlier, next.later}).second) {
                    states.push_back(std::move(next));
                }
            }
            if (m_left <= 0) {
                result.isEverChosen = true; // nothing is known against it
                break;
            }
        }
        return result;
    }

    static Places sorted(Places places)
    {
        std::sort(places.begin(), places.end());
        return places;
    }

    static std::vector<std::string> lineTo(const std::vector<State>& states, std::size_t place)
    {
        std::vector<std::string> words;
        for (; place != 0; place = states[place].from) {
            words.insert(words.begin(), states[place].word);
        }
        return words;
    }

    bool accepts(const Places& places) const
    {
        return std::any_of(places.begin(), places.end(),
                           [this](NodeId id) { return id == anywhere || m_graph.at(id).node->handler.hasFunction(); });
    }

    /// Returns  every keyword that may follow, and one word that is no keyword.
    std::set<std::string> wordsAfter(const State& state)
    {
        std::set<std::string> words;
        std::string other = "...";
        for (const Places* places : {&state.earlier, &state.later}) {
            for (const NodeId id : *places) {
                if (id == anywhere) {
                    continue;
                }
                for (const NodePtr& subnode : m_graph.at(id).node->subnodes) {
                    --m_left;
                    if (subnode->isArgument) {
                        other = subnode->name;
                    } else {
                        words.insert(subnode->name);
                    }
                }
            }
        }
        words.insert(other);
        return words;
    }

    /// Returns  where a word leads to from these places.
    Places after(const Places& places, const std::string& word)
    {
        std::set<NodeId> next;
        for (const NodeId id : places) {
            --m_left;
            if (id == anywhere) {
                return {anywhere};
            }
            const NodePtr& node = m_graph.at(id).node;
            const std::vector<NodePtr> matches = node->findMatchingSubnodes(word);
            m_left -= static_cast<long>(matches.size());
            // Where no way leads on, the line ends; where several do, the first placeholder is the last resort.
            const NodePtr& last = matches.empty() ? node : matches.front();
            if (matches.size() != 1 && last->handler.hasFunction()) {
                return {anywhere};
            }
            for (const NodePtr& match : matches) {
                next.insert(m_graph.idOf(match));
            }
        }
        return {next.begin(), next.end()};
    }

    const Graph& m_graph;
    std::vector<Finding>& m_findings;
    long m_left = budget;
};

} // namespace

void checkChoices(const Graph& graph, std::vector<Finding>& findings)
{
    Choices choices(graph, findings);
    for (NodeId id = 0; id < graph.vertices.size(); ++id) {
        choices.check(id);
    }
}

} // namespace Corvane::Synopses

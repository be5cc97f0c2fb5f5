// SPDX-License-Identifier: MIT
/// Finds words that lead back to themselves.
#include "checks.h"

#include <algorithm>
#include <set>

namespace Corvane::Synopses {

namespace {

/// A step from a node over one of its edges.
struct Step
{
    NodeId node;
    std::size_t edge;
};

/// A check looks at no more cycles than this: their number may grow with each word.
constexpr std::size_t maxCycles = 1000;

using Way = std::vector<Step>;

/// The cycle from `begin` to the end of a way belongs to the synopsis that closed it.
Finding findingOf(const Graph& graph, const Way& way, Way::const_iterator begin)
{
    const auto edgeOf = [&](const Step& step) { return graph.at(step.node).edges[step.edge]; };
    Way cycle(begin, way.end());
    const auto closing = std::max_element(cycle.begin(), cycle.end(), [&](const Step& a, const Step& b) {
        return edgeOf(a).synopsis < edgeOf(b).synopsis;
    });
    const std::size_t synopsis = edgeOf(*closing).synopsis;
    if (edgeOf(cycle.back()).synopsis != synopsis) {
        std::rotate(cycle.begin(), closing + 1, cycle.end());
    }
    constexpr std::size_t shown = 8;
    std::vector<std::string> words;
    for (std::size_t i = 0; i < std::min(cycle.size(), shown); ++i) {
        words.push_back(graph.at(cycle[i].node).node->name);
    }
    if (cycle.size() > shown) {
        words.emplace_back("...");
    }
    const std::string& first = graph.at(cycle.front().node).node->name;
    const std::string& last = graph.at(cycle.back().node).node->name;
    return findingAt(graph, Rule::cycle, synopsis, first,
                     quoted(last) + " leads back to " + quoted(first) + ": a line may repeat " + quoted(words));
}

} // namespace

void checkCycles(const Graph& graph, std::vector<Finding>& findings)
{
    std::vector<bool> isSeen(graph.vertices.size());
    std::vector<bool> isOnWay(graph.vertices.size());
    std::set<std::string> said;
    Way way{{rootId, 0}}; // depth first
    for (std::size_t cycles = 0; !way.empty() && cycles < maxCycles;) {
        const Step step = way.back();
        const std::vector<Edge>& edges = graph.at(step.node).edges;
        if (step.edge == edges.size()) {
            isOnWay[step.node] = false;
            way.pop_back();
            if (!way.empty()) {
                ++way.back().edge;
            }
            continue;
        }
        const NodeId to = edges[step.edge].to;
        if (isOnWay[to]) {
            ++cycles;
            const auto begin = std::find_if(way.begin(), way.end(), [&](const Step& s) { return s.node == to; });
            const Finding finding = findingOf(graph, way, begin);
            if (said.insert(std::to_string(finding.synopsis) + finding.message).second) {
                findings.push_back(finding);
            }
        }
        if (isSeen[to]) {
            ++way.back().edge;
        } else {
            isSeen[to] = isOnWay[to] = true;
            way.push_back({to, 0});
        }
    }
}

} // namespace Corvane::Synopses

// SPDX-License-Identifier: MIT
/// Draws the graph in the language of Graphviz' dot.
#include "graph.h"

#include <sstream>

namespace Corvane::Synopses {

namespace {

std::string escaped(const std::string& text)
{
    std::string result;
    for (const char c : text) {
        if (c == '&') {
            result += "&amp;"; // dot reads entities
        } else {
            result += (c == '"' || c == '\\' ? "\\" : "");
            result += c;
        }
    }
    return result;
}

/// Returns  the attributes of a word: a box or an ellipse, the second line of an end, the thick line of a shared word.
std::string look(const std::string& label, bool isPlaceholder, bool isEnd, bool isShared)
{
    return "[label=\"" + escaped(label) + "\", shape=" + (isPlaceholder ? "ellipse" : "box") +
           (isEnd ? ", peripheries=2" : "") + (isShared ? ", style=\"filled,bold\", penwidth=2.5" : "") + "]";
}

constexpr const char* head = R"(digraph synopses {
  graph [rankdir=LR, bgcolor=white, fontname="Helvetica", fontsize=12, ranksep=0.4, nodesep=0.25, pad=0.15]
  node [style=filled, fillcolor=white, color=black, fontcolor=black, fontname="Helvetica", fontsize=12, height=0.35,
        margin="0.1,0.05"]
  edge [color=black, arrowsize=0.7]
)";

} // namespace

std::string Table::dot() const
{
    std::ostringstream text;
    text << head;
    text << "  n0 [label=\"start\", shape=circle, margin=0"
         << (m_graph->root()->handler.hasFunction() ? ", peripheries=2" : "") << "]\n";
    for (NodeId id = 1; id < m_graph->vertices.size(); ++id) {
        const Vertex& vertex = m_graph->at(id);
        text << "  n" << id << " "
             << look(vertex.node->name, vertex.node->isArgument, vertex.node->handler.hasFunction(), vertex.parents > 1)
             << "\n";
    }
    for (NodeId id = 0; id < m_graph->vertices.size(); ++id) {
        for (const Edge& edge : m_graph->at(id).edges) {
            text << "  n" << id << " -> n" << edge.to << "\n";
        }
    }
    text << "  subgraph cluster_legend {\n    label=\"How to read it\"\n    style=dotted\n"
         << "    l1 " << look("keyword", false, false, false) << "\n"
         << "    l2 " << look("<placeholder>", true, false, false) << "\n"
         << "    l3 " << look("a line may end here", false, true, false) << "\n"
         << "    l4 " << look("several ways lead here", false, false, true) << "\n"
         << "  }\n}\n";
    return text.str();
}

} // namespace Corvane::Synopses

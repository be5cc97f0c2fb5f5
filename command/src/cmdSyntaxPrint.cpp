/// Writes the syntax that may follow a node, rebuilt from the graph's shape alone.
///
/// The printers move along one path. A synopsis such as "x [w p] w" makes the graph cyclic, so no node is followed
/// twice in one call: printing ends where it would be, and brackets that are open then are closed.
#include "command/src/cmdSyntax.h"

#include <ostream>
#include <unordered_set>
#include <utility>

namespace Corvane::CmdTableHelper {

namespace {

using NodePtr = std::shared_ptr<Node>;

bool isLeaf(const Node& node)
{
    return node.subnodes.empty();
}

bool beginsLikePlaceholder(const Node& node)
{
    return !node.name.empty() && node.name.front() == '<';
}

void writeAlternatives(const Node& node, std::ostream& out)
{
    const char* separator = "";
    for (const auto& subnode : node.subnodes) {
        out << separator << subnode->name << " ";
        separator = "| ";
    }
}

/// A position on the path that is printed.
class Path
{
public:
    explicit Path(const NodePtr& start) : m_node(&start), m_followed{start.get()} {}

    const Node& node() const { return **m_node; }
    const NodePtr& nodePtr() const { return *m_node; }

    /// Whether the path has come back to a node that it had followed already.
    bool closed() const { return m_closed; }

    /// Moves on to a subnode of the current node.
    void follow(const NodePtr& subnode)
    {
        m_node = &subnode;
        m_closed = m_closed || !m_followed.insert(subnode.get()).second;
    }

private:
    const NodePtr* m_node;
    std::unordered_set<const Node*> m_followed;
    bool m_closed = false;
};

/// Prints nested optional parts in compact form. What would be recursive calls are levels on the heap.
class CompactPrinter
{
public:
    CompactPrinter(Path& path, std::ostream& out) : m_path(path), m_out(out) {}

    /// Prints from the current node onward to the end.
    void printToEnd()
    {
        m_levels.push_back({nullptr, false});
        run();
    }

    /// Prints from the current node up to, not including, `stop`.
    void printUpTo(const Node* stop)
    {
        m_levels.push_back({stop, true});
        run();
    }

private:
    struct Level
    {
        const Node* stop; // of a level with an end
        bool hasEnd;
    };

    void run()
    {
        m_out << m_path.node().name;
        while (!m_levels.empty()) {
            const Level level = m_levels.back();
            const Node& node = m_path.node();
            if (m_path.closed() || isLeaf(node) || (level.hasEnd && isAtEnd(node, level.stop))) {
                m_levels.pop_back();
                m_out << (m_levels.empty() ? "" : "]");
            } else if (node.subnodes.size() > 1) {
                enter({node.subnodes[1].get(), true});
            } else if (!level.hasEnd && node.handler.hasFunction()) {
                enter({nullptr, false});
            } else {
                m_out << " ";
                step();
            }
        }
    }

    static bool isAtEnd(const Node& node, const Node* stop)
    {
        const NodePtr& next = node.subnodes.front();
        return next.get() == stop || isLeaf(*next);
    }

    void enter(Level level)
    {
        m_levels.push_back(level);
        m_out << " [";
        step();
    }

    void step()
    {
        m_path.follow(m_path.node().subnodes.front());
        m_out << m_path.node().name;
    }

    Path& m_path;
    std::ostream& m_out;
    std::vector<Level> m_levels;
};

} // namespace

void SyntaxGraph::printSyntax(std::shared_ptr<Node> node, std::ostream& out)
{
    if (!node) {
        return;
    }
    Path path(node);
    while (!path.closed() && !isLeaf(path.node())) {
        const Node& current = path.node();
        const NodePtr& first = current.subnodes.front();
        if (current.subnodes.size() == 1) {
            const bool isOptional = current.handler.hasFunction() && first->handler.hasFunction() && isLeaf(*first);
            out << (isOptional ? "[ " : "") << first->name << (isOptional ? " ] " : " ");
            path.follow(first);
        } else if (current.subnodes.size() == 2 && !isLeaf(*first) &&
                   first->subnodes.front() == current.subnodes.back()) {
            const NodePtr& second = current.subnodes.back();
            out << "[ " << first->name << " ] " << second->name << " ";
            path.follow(second);
        } else {
            out << "{ ";
            writeAlternatives(current, out);
            out << "} ";
            return;
        }
    }
}

void SyntaxGraph::printPelmSyntax(std::shared_ptr<Node> node, std::ostream& out)
{
    if (!node) {
        return;
    }
    Path path(node);
    for (bool firstPass = true; !path.closed() && !isLeaf(path.node()); firstPass = false) {
        const Node& current = path.node();
        const NodePtr& first = current.subnodes.front();
        const std::size_t count = current.subnodes.size();
        const bool hasHandler = current.handler.hasFunction();
        if (count == 1) {
            path.follow(first);
            if (hasHandler) {
                out << "[";
                CompactPrinter(path, out).printToEnd();
                out << "] ";
            } else {
                out << path.node().name << " ";
            }
            continue;
        }
        const bool firstIsPlaceholder = beginsLikePlaceholder(*first);
        const bool secondIsLookedAt = count == 2 || firstPass;
        const bool secondIsPlaceholder = !secondIsLookedAt || beginsLikePlaceholder(*current.subnodes[1]);
        if ((!firstIsPlaceholder && !hasHandler) || !secondIsPlaceholder) {
            out << "{ ";
            writeAlternatives(current, out);
            out << "} ";
            return;
        }
        if (isLeaf(*first)) {
            out << "[ " << (firstIsPlaceholder ? "" : "{ ");
            writeAlternatives(current, out);
            out << (firstIsPlaceholder ? "" : "}") << " ] ";
            return;
        }
        out << "[";
        path.follow(first);
        if (first->subnodes.front() == current.subnodes[1]) {
            out << first->name;
        } else {
            CompactPrinter(path, out).printUpTo(current.subnodes[1].get());
        }
        out << "] ";
    }
}

std::shared_ptr<Node> SyntaxGraph::printSimpleSubNodes(std::shared_ptr<Node> node, std::ostream& out)
{
    if (!node) {
        return nullptr;
    }
    Path path(node);
    CompactPrinter(path, out).printToEnd();
    return path.nodePtr();
}

std::shared_ptr<Node> SyntaxGraph::printSubNodes(std::shared_ptr<Node> from, std::shared_ptr<Node> stop,
                                                 std::ostream& out)
{
    if (!from) {
        return nullptr;
    }
    Path path(from);
    CompactPrinter(path, out).printUpTo(stop.get());
    return path.nodePtr();
}

} // namespace Corvane::CmdTableHelper

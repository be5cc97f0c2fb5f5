// SPDX-License-Identifier: MIT
/// Writes the syntax that may follow a node, rebuilt from the graph's shape alone.
///
/// A synopsis such as "x [w p] w" makes the graph cyclic. Printing ends where a loop comes to a node for the second
/// time, since it would go on in the same way for ever, and after maxWords words. Brackets that are open then are
/// closed.
#include "command/src/cmdSyntax.h"

#include <cstddef>
#include <ostream>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace Corvane::CmdTableHelper {

namespace {

/// Nobody reads a longer usage. Without a limit, that of a cyclic graph could double with each word before it ends.
constexpr std::size_t maxWords = 65536;

bool isLeaf(const Node& node)
{
    return node.subnodes.empty();
}

bool beginsLikePlaceholder(const Node& node)
{
    return !node.name.empty() && node.name.front() == '<';
}

/// A loop that moves from word to word: the printer's own, or that of a group in compact form.
class Level
{
public:
    /// The printer's own loop.
    static Level outermost() { return {Kind::outermost, nullptr}; }

    /// A group that goes on as long as there are words.
    static Level toTheEnd() { return {Kind::toTheEnd, nullptr}; }

    /// A group that ends before `stop`.
    static Level upTo(const Node* stop) { return {Kind::upTo, stop}; }

    bool isToTheEnd() const { return m_kind == Kind::toTheEnd; }

    /// Returns  whether the loop ends at `node` although words follow it.
    bool endsAt(const Node& node) const
    {
        const NodePtr& next = node.subnodes.front();
        return m_kind == Kind::upTo && (next.get() == m_stop || isLeaf(*next));
    }

    bool operator<(const Level& other) const { return std::tie(m_kind, m_stop) < std::tie(other.m_kind, other.m_stop); }

private:
    enum class Kind
    {
        outermost,
        toTheEnd,
        upTo
    };

    Level(Kind kind, const Node* stop) : m_kind(kind), m_stop(stop) {}

    Kind m_kind;
    const Node* m_stop;
};

/// Moves through the graph and appends to a text. A group inside a group is a level on the heap, not a recursive call.
class Printer
{
public:
    explicit Printer(std::string& text) : m_text(text) {}

    void printSyntax(const NodePtr& start)
    {
        begin(Level::outermost(), start);
        while (!isAtEnd()) {
            const Node& first = *node().subnodes.front();
            if (node().subnodes.size() == 1) {
                writeOnlySubnode();
            } else if (node().subnodes.size() == 2 && !isLeaf(first) &&
                       first.subnodes.front() == node().subnodes.back()) {
                writeOptionalAndSharedWord();
            } else {
                writeChoice();
                return;
            }
        }
    }

    void printPelmSyntax(const NodePtr& start)
    {
        begin(Level::outermost(), start);
        for (bool isFirstPass = true; !isAtEnd(); isFirstPass = false) {
            if (node().subnodes.size() == 1) {
                writeOnlySubnodeOfPelm();
            } else if (!isFollowed(isFirstPass)) {
                writeChoice();
                return;
            } else if (isLeaf(*node().subnodes.front())) {
                writeOptionalChoice();
                return;
            } else {
                writeOptionalGroup();
            }
        }
    }

    /// Prints the group that begins with `first` in compact form.
    ///
    /// Returns  the node at which the group ends.
    NodePtr printGroup(const Level& group, const NodePtr& first)
    {
        const std::size_t outside = m_levels.size();
        begin(group, first);
        writeWord(node());
        while (m_levels.size() > outside) {
            const Level level = m_levels.back().first;
            if (isAtEnd() || level.endsAt(node())) {
                end();
                m_text += m_levels.size() > outside ? "]" : "";
            } else if (node().subnodes.size() > 1) {
                beginInside(Level::upTo(node().subnodes[1].get()));
            } else if (level.isToTheEnd() && node().handler.hasFunction()) {
                beginInside(Level::toTheEnd());
            } else {
                m_text += " ";
                step();
            }
        }
        return *m_node;
    }

private:
    /// A node, and the loop that has come to it.
    using Step = std::pair<Level, const Node*>;

    const Node& node() const { return **m_node; }

    bool isAtEnd() const { return m_isBack || m_wordsLeft == 0 || isLeaf(node()); }

    /// Begins a loop at `first`.
    void begin(const Level& level, const NodePtr& first)
    {
        m_levels.emplace_back(level, m_steps.size());
        moveTo(first);
    }

    void beginInside(const Level& level)
    {
        m_text += " [";
        begin(level, node().subnodes.front());
        writeWord(node());
    }

    /// Ends the innermost loop. The one around it goes on where that has ended.
    void end()
    {
        for (std::size_t count = m_levels.back().second; m_steps.size() > count; m_steps.pop_back()) {
            m_taken.erase(m_steps.back());
        }
        m_levels.pop_back();
        if (!m_levels.empty()) {
            moveTo(*m_node);
        }
    }

    void moveTo(const NodePtr& next)
    {
        m_node = &next;
        const auto [taken, isNew] = m_taken.insert({m_levels.back().first, next.get()});
        if (isNew) {
            m_steps.push_back(taken);
        } else {
            m_isBack = true;
        }
    }

    /// Moves to the first subnode and writes its name.
    void step()
    {
        moveTo(node().subnodes.front());
        writeWord(node());
    }

    void writeWord(const Node& word)
    {
        m_text += word.name;
        --m_wordsLeft;
    }

    void writeAlternatives()
    {
        const char* separator = "";
        for (const NodePtr& subnode : node().subnodes) {
            if (m_wordsLeft == 0) {
                return;
            }
            m_text += separator;
            writeWord(*subnode);
            m_text += " ";
            separator = "| ";
        }
    }

    void writeChoice()
    {
        m_text += "{ ";
        writeAlternatives();
        m_text += "} ";
    }

    void writeOnlySubnode()
    {
        const Node& only = *node().subnodes.front();
        const bool isOptional = node().handler.hasFunction() && only.handler.hasFunction() && isLeaf(only);
        m_text += isOptional ? "[ " : "";
        step();
        m_text += isOptional ? " ] " : " ";
    }

    /// "[ a ] b": the first subnode leads to the second, so it may be left out.
    void writeOptionalAndSharedWord()
    {
        m_text += "[ ";
        writeWord(*node().subnodes.front());
        m_text += " ] ";
        if (m_wordsLeft != 0) {
            moveTo(node().subnodes.back());
            writeWord(node());
            m_text += " ";
        }
    }

    void writeOnlySubnodeOfPelm()
    {
        if (node().handler.hasFunction()) { // so what follows may be left out
            m_text += "[";
            printGroup(Level::toTheEnd(), node().subnodes.front());
            m_text += "] ";
        } else {
            step();
            m_text += " ";
        }
    }

    /// Returns  whether the printer goes into the first of several subnodes as a group that may be left out.
    bool isFollowed(bool isFirstPass) const
    {
        const auto& subnodes = node().subnodes;
        const bool looksAtSecond = subnodes.size() == 2 || isFirstPass;
        return (beginsLikePlaceholder(*subnodes[0]) || node().handler.hasFunction()) &&
               (!looksAtSecond || beginsLikePlaceholder(*subnodes[1]));
    }

    void writeOptionalChoice()
    {
        const bool inBraces = !beginsLikePlaceholder(*node().subnodes.front());
        m_text += inBraces ? "[ { " : "[ ";
        writeAlternatives();
        m_text += inBraces ? "} ] " : " ] ";
    }

    void writeOptionalGroup()
    {
        const NodePtr& first = node().subnodes[0];
        const NodePtr& second = node().subnodes[1];
        m_text += "[";
        printGroup(Level::upTo(second.get()), first);
        m_text += "] ";
    }

    std::string& m_text;
    const NodePtr* m_node = nullptr; // in the list of subnodes of a node that is printed
    std::size_t m_wordsLeft = maxWords;
    std::vector<std::pair<Level, std::size_t>> m_levels; // each with the number of steps before it
    std::set<Step> m_taken;                              // by the loops that go on
    std::vector<std::set<Step>::iterator> m_steps;       // the same in their order
    bool m_isBack = false;                               // a loop has come to a node for the second time
};

/// Nothing to write must not use up the stream's width.
void writeTo(std::ostream& out, const std::string& text)
{
    if (!text.empty()) {
        out << text;
    }
}

NodePtr writeGroup(const Level& group, const NodePtr& first, std::ostream& out)
{
    std::string text;
    NodePtr end = first ? Printer(text).printGroup(group, first) : nullptr;
    writeTo(out, text);
    return end;
}

} // namespace

void SyntaxGraph::appendSyntax(const NodePtr& node, PrintFormat format, std::string& text)
{
    if (node && format == PrintFormat::pelm) {
        Printer(text).printPelmSyntax(node);
    } else if (node) {
        Printer(text).printSyntax(node);
    }
}

void SyntaxGraph::printSyntax(std::shared_ptr<Node> node, std::ostream& out)
{
    std::string text;
    appendSyntax(node, PrintFormat::usual, text);
    writeTo(out, text);
}

void SyntaxGraph::printPelmSyntax(std::shared_ptr<Node> node, std::ostream& out)
{
    std::string text;
    appendSyntax(node, PrintFormat::pelm, text);
    writeTo(out, text);
}

NodePtr SyntaxGraph::printSimpleSubNodes(std::shared_ptr<Node> node, std::ostream& out)
{
    return writeGroup(Level::toTheEnd(), node, out);
}

NodePtr SyntaxGraph::printSubNodes(std::shared_ptr<Node> from, std::shared_ptr<Node> stop, std::ostream& out)
{
    return writeGroup(Level::upTo(stop.get()), from, out);
}

} // namespace Corvane::CmdTableHelper

/// Matches typed lines against the syntax graph and dispatches them.
#include "command/src/cmdSyntax.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <ostream>
#include <string_view>
#include <unordered_map>

namespace Corvane::CmdTableHelper {

namespace {

using NodePtr = std::shared_ptr<Node>;

/// What a typed word may stand for after a node, without a list being made: nothing, the node `first`, or, if there are
/// several, every placeholder among the parent's subnodes, of which `first` is the first.
struct Matches
{
    const NodePtr* first = nullptr;
    bool several = false;
};

/// Returns  the first placeholder among the subnodes from `from` on, or null.
const NodePtr* nextPlaceholder(const Node& parent, const NodePtr* from)
{
    const NodePtr* const end = parent.subnodes.data() + parent.subnodes.size();
    for (; from != end; ++from) {
        if ((*from)->isArgument) {
            return from;
        }
    }
    return nullptr;
}

Matches matchPlaceholders(const Node& parent)
{
    Matches matches;
    matches.first = nextPlaceholder(parent, parent.subnodes.data());
    matches.several = matches.first != nullptr && nextPlaceholder(parent, matches.first + 1) != nullptr;
    return matches;
}

Matches match(const Node& parent, std::string_view word)
{
    const NodePtr* const exact = parent.subnodeNamed(word);
    if (exact != nullptr && !(*exact)->isArgument) {
        return {exact, false};
    }
    return matchPlaceholders(parent);
}

/// Every node that `matches` stands for, in order.
std::vector<NodePtr> listOf(const Node& parent, const Matches& matches)
{
    std::vector<NodePtr> nodes;
    for (const NodePtr* node = matches.first; node != nullptr;
         node = matches.several ? nextPlaceholder(parent, node + 1) : nullptr) {
        nodes.push_back(*node);
    }
    return nodes;
}

/// A null word is the caller's error, and reported as the standard library reports it.
std::string_view textOf(const char* word)
{
    if (word == nullptr) {
        static_cast<void>(std::string(word));
    }
    return word;
}

Matches matchRootWord(const SyntaxGraph& graph, const std::string& name)
{
    const auto command = graph.commandNodes.find(name);
    if (command != graph.commandNodes.end() && command->second) {
        return {&command->second, false};
    }
    return graph.pendingCommandNames.count(name) != 0 ? matchPlaceholders(*graph.root) : Matches();
}

/// One walk of one line through the graph.
class LineWalk
{
public:
    LineWalk(const SyntaxGraph& graph, unsigned long argc, const char* const* argv)
        : m_graph(graph), m_argc(argc), m_argv(argv)
    {
    }

    /// Returns  the node reached from `node`; the words matched on the way are appended to `usedWords`.
    const NodePtr* run(const NodePtr* node, std::string* usedWords)
    {
        for (unsigned long i = 0; i < m_argc; ++i) {
            const Matches matches = matchesOf(*node, i);
            if (matches.first == nullptr) {
                return node;
            }
            if (matches.several) {
                const NodePtr* const end = search(**node, matches.first, i);
                if (end == nullptr) {
                    append(usedWords, m_argv[i]);
                }
                return end != nullptr ? end : matches.first;
            }
            node = matches.first;
            if (i + 1 == m_argc && (*node)->handler.hasFunction()) {
                return node;
            }
            append(usedWords, i == 0 ? std::string_view(m_argv[0]) : (*node)->name);
        }
        return node;
    }

private:
    /// A word that several placeholders match, the first of them, and the one to be tried next (null: none is left).
    struct Choice
    {
        const Node* parent;
        unsigned long word;
        const NodePtr* first;
        const NodePtr* next;
    };

    /// A node and 64 neighbouring words. Where a line has many ways, it meets a node at one word after the other, and
    /// one bit for each of them is enough to remember.
    struct Place
    {
        const Node* node;
        unsigned long words;
        bool operator==(const Place& other) const { return node == other.node && words == other.words; }
    };

    struct PlaceHash
    {
        std::size_t operator()(const Place& place) const
        {
            return std::hash<const Node*>()(place.node) ^ (place.words * 0x9E3779B97F4A7C15U);
        }
    };

    /// Returns  whether `node` has not been tried with this word before in this walk.
    bool isNew(const Node& node, unsigned long word)
    {
        std::uint64_t& tried = m_tried[{&node, word / 64}];
        const std::uint64_t before = tried;
        tried |= std::uint64_t{1} << (word % 64);
        return tried != before;
    }

    static void append(std::string* usedWords, std::string_view word)
    {
        if (usedWords != nullptr) {
            usedWords->append(word).append(" ");
        }
    }

    Matches matchesOf(const NodePtr& node, unsigned long i) const
    {
        return node == m_graph.root ? matchRootWord(m_graph, m_argv[i]) : match(*node, textOf(m_argv[i]));
    }

    /// Tries the placeholders depth first, the earliest registered first. Where none of a choice leads to a handler,
    /// the line ends at the first of them, which may have a handler itself.
    ///
    /// Returns  the node at which the line ends; null if that is the first of the outermost choice.
    const NodePtr* search(const Node& parent, const NodePtr* first, unsigned long word)
    {
        std::vector<Choice> choices{{&parent, word, first, first}};
        while (!choices.empty()) {
            Choice& choice = choices.back();
            const NodePtr* const node = choice.next;
            if (node != nullptr) {
                choice.next = nextPlaceholder(*choice.parent, node + 1);
                if (const NodePtr* const end = follow(node, choice.word + 1, choices)) {
                    return end;
                }
            } else if (choices.size() > 1 && (*choice.first)->handler.hasFunction()) {
                return choice.first;
            } else {
                choices.pop_back();
            }
        }
        return nullptr;
    }

    /// Follows the line from `node` as far as there is no choice, and adds the choice that it meets to `choices`.
    ///
    /// Returns  the node at which the line ends, if it has a handler; otherwise null.
    const NodePtr* follow(const NodePtr* node, unsigned long word, std::vector<Choice>& choices)
    {
        while (word < m_argc) {
            if (!isNew(**node, word)) {
                return nullptr; // has led to no handler before
            }
            const Matches matches = matchesOf(*node, word);
            if (matches.first == nullptr) {
                break;
            }
            if (matches.several) {
                choices.push_back({node->get(), word, matches.first, matches.first});
                return nullptr;
            }
            node = matches.first;
            ++word;
        }
        return (*node)->handler.hasFunction() ? node : nullptr;
    }

    const SyntaxGraph& m_graph;
    unsigned long m_argc;
    const char* const* m_argv;
    std::unordered_map<Place, std::uint64_t, PlaceHash> m_tried;
};

} // namespace

std::vector<std::shared_ptr<Node>> Node::findMatchingSubnodes(const std::string& word) const
{
    return listOf(*this, match(*this, word));
}

std::vector<std::shared_ptr<Node>> SyntaxGraph::findMatchingRootSubnodes(const std::string& word) const
{
    return listOf(*root, matchRootWord(*this, word));
}

std::shared_ptr<Node> SyntaxGraph::findCommandArguments(std::shared_ptr<Node> node, std::string* usedWords,
                                                        unsigned long argc, const char* const* argv) const
{
    return *LineWalk(*this, argc, argv).run(&node, usedWords);
}

const ShellCommandFunction* SyntaxGraph::dispatchCommand(unsigned long argc, const char* const* argv,
                                                         std::ostream& out) const
{
    return findHandler(argc, argv, out).get();
}

std::shared_ptr<const ShellCommandFunction> SyntaxGraph::findHandler(unsigned long argc, const char* const* argv,
                                                                     std::ostream& out) const
{
    const std::lock_guard<std::mutex> lock(mutex);
    std::string usedWords;
    const NodePtr found = findCommandArguments(root, &usedWords, argc, argv);
    if (found && found->handler.hasFunction()) {
        return {found, &found->handler};
    }
    out << "Usage: " << usedWords;
    if (argc != 0 && textOf(argv[0]) == "pelm") {
        printPelmSyntax(found, out);
    } else {
        printSyntax(found, out);
    }
    out << "\n\n";
    return nullptr;
}

} // namespace Corvane::CmdTableHelper

// SPDX-License-Identifier: MIT
/// Matches typed lines against the syntax graph and dispatches them.
#include "command/src/cmdSyntax.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <ostream>
#include <stdexcept>
#include <string_view>
#include <unordered_map>

namespace Corvane::CmdTableHelper {

namespace {

/// Where a node stands in the list of its parent's subnodes.
using Place = std::size_t;

/// What a typed word may stand for after a node: nothing, one node, or every placeholder among the subnodes.
struct Matches
{
    static constexpr Place noPlace = static_cast<Place>(-1);

    bool areNone() const { return only == nullptr && first == noPlace; }
    bool areSeveral() const { return first != noPlace; }

    const NodePtr* only = nullptr; // if there is one
    Place first = noPlace;         // if there are several: that of the first
};

Matches matchPlaceholders(const Node& parent)
{
    const Place end = parent.subnodes.size();
    const Place first = parent.findPlaceholder(0);
    if (first == end) {
        return {};
    }
    return parent.findPlaceholder(first + 1) == end ? Matches{&parent.subnodes[first]} : Matches{nullptr, first};
}

Matches match(const Node& parent, std::string_view word)
{
    const NodePtr* const keyword = parent.findKeyword(word);
    return keyword != nullptr ? Matches{keyword} : matchPlaceholders(parent);
}

/// A null word is the caller's error, and is reported as the standard library reports a string made of it.
std::string_view textOf(const char* word)
{
    if (word == nullptr) {
        throw std::logic_error("basic_string::_M_construct null not valid");
    }
    return word;
}

/// The members of a graph that tell what the first word of a line stands for.
struct FirstWords
{
    const NodePtr& root;
    const std::map<std::string, NodePtr>& commandNodes;
    const std::set<std::string>& pendingCommandNames;

    Matches match(const std::string& word) const
    {
        const auto command = commandNodes.find(word);
        if (command != commandNodes.end()) {
            return {&command->second};
        }
        return pendingCommandNames.count(word) != 0 ? matchPlaceholders(*root) : Matches();
    }
};

/// One walk of one line through the graph.
class LineWalk
{
public:
    LineWalk(const FirstWords& firstWords, unsigned long argc, const char* const* argv)
        : m_firstWords(firstWords), m_argc(argc), m_argv(argv)
    {
    }

    /// Walks from `start` and appends the words matched on the way to `usedWords`.
    ///
    /// Returns  the node reached.
    NodePtr run(const NodePtr& start, std::string* usedWords)
    {
        const NodePtr* node = &start;
        for (unsigned long i = 0; i < m_argc; ++i) {
            const Matches matches = matchesOf(*node, i);
            if (matches.areNone()) {
                return *node;
            }
            if (matches.areSeveral()) {
                NodePtr end = search(**node, matches.first, i);
                if (!end) {
                    append(usedWords, m_argv[i]);
                    end = (*node)->subnodes[matches.first];
                }
                return end;
            }
            node = matches.only;
            if (i + 1 == m_argc && (*node)->handler.hasFunction()) {
                return *node;
            }
            append(usedWords, i == 0 ? std::string_view(m_argv[0]) : (*node)->name);
        }
        return *node;
    }

private:
    /// A word that several placeholders match.
    struct Choice
    {
        const Node* parent;
        unsigned long word;
        Place first; // of the placeholders among the parent's subnodes
        Place next;  // to be tried; the number of subnodes when all have been
    };

    /// A node and 64 neighbouring words. One bit says whether the node was tried with that word.
    struct TriedWords
    {
        const Node* node;
        unsigned long words;
        bool operator==(const TriedWords& other) const { return node == other.node && words == other.words; }
    };

    struct TriedWordsHash
    {
        std::size_t operator()(const TriedWords& tried) const
        {
            return std::hash<const Node*>()(tried.node) ^ (tried.words * 0x9E3779B97F4A7C15U);
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
        const std::string_view word = textOf(m_argv[i]);
        return node == m_firstWords.root ? m_firstWords.match(std::string(word)) : match(*node, word);
    }

    /// Tries the placeholders depth first, the earliest registered first. If no placeholder of an inner choice leads to
    /// a handler, but the first placeholder itself has a handler, the line ends there.
    ///
    /// Returns  the node at which the line ends, which has a handler; null if no way leads to one.
    NodePtr search(const Node& parent, Place first, unsigned long word)
    {
        std::vector<Choice> choices{{&parent, word, first, first}};
        while (!choices.empty()) {
            Choice& choice = choices.back();
            const auto& subnodes = choice.parent->subnodes;
            if (choice.next < subnodes.size()) {
                const NodePtr& node = subnodes[choice.next];
                choice.next = choice.parent->findPlaceholder(choice.next + 1);
                if (NodePtr end = follow(node, choice.word + 1, choices)) {
                    return end;
                }
            } else if (choices.size() > 1 && subnodes[choice.first]->handler.hasFunction()) {
                return subnodes[choice.first];
            } else {
                choices.pop_back();
            }
        }
        return nullptr;
    }

    /// Follows the line from `start` as far as there is no choice, and adds the choice that it meets to `choices`.
    ///
    /// Returns  the node at which the line ends, if it has a handler; otherwise null.
    NodePtr follow(const NodePtr& start, unsigned long word, std::vector<Choice>& choices)
    {
        const NodePtr* node = &start;
        for (; word < m_argc; ++word) {
            if (!isNew(**node, word)) {
                return nullptr; // has led to no handler before
            }
            const Matches matches = matchesOf(*node, word);
            if (matches.areNone()) {
                break;
            }
            if (matches.areSeveral()) {
                choices.push_back({node->get(), word, matches.first, matches.first});
                return nullptr;
            }
            node = matches.only;
        }
        return (*node)->handler.hasFunction() ? *node : nullptr;
    }

    const FirstWords m_firstWords;
    unsigned long m_argc;
    const char* const* m_argv;
    std::unordered_map<TriedWords, std::uint64_t, TriedWordsHash> m_tried;
};

} // namespace

std::vector<NodePtr> SyntaxGraph::findMatchingRootSubnodes(const std::string& word) const
{
    const Matches matches = FirstWords{root, commandNodes, pendingCommandNames}.match(word);
    if (matches.areSeveral()) {
        return root->placeholders();
    }
    return matches.areNone() ? std::vector<NodePtr>() : std::vector<NodePtr>{*matches.only};
}

NodePtr SyntaxGraph::findCommandArguments(std::shared_ptr<Node> node, std::string* usedWords, unsigned long argc,
                                          const char* const* argv) const
{
    return LineWalk({root, commandNodes, pendingCommandNames}, argc, argv).run(node, usedWords);
}

const ShellCommandFunction* SyntaxGraph::dispatchCommand(unsigned long argc, const char* const* argv,
                                                         std::ostream& out) const
{
    const NodePtr found = findCommand(argc, argv, out);
    return found ? &found->handler : nullptr;
}

NodePtr SyntaxGraph::findCommand(unsigned long argc, const char* const* argv, std::ostream& out) const
{
    const ExclusiveLock lock(mutex);
    std::string usedWords;
    NodePtr found = findCommandArguments(root, &usedWords, argc, argv);
    if (found && found->handler.hasFunction()) {
        return found;
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

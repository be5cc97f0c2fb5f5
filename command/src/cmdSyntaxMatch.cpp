// SPDX-License-Identifier: MIT
/// Matches typed lines against the syntax graph and dispatches them.
#include "command/src/cmdSyntax.h"

#include <array>
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
[[noreturn, gnu::cold]] void refuseNull()
{
    throw std::logic_error("basic_string::_M_construct null not valid");
}

inline std::string_view textOf(const char* word)
{
    if (word == nullptr) {
        refuseNull();
    }
    return word;
}

/// Finds what each word of one line may stand for.
struct LineMatcher
{
    const NodePtr& root;
    const std::map<std::string, NodePtr, std::less<>>& commandNodes;
    const std::set<std::string, std::less<>>& pendingCommandNames;
    unsigned long argc;
    const char* const* argv;

    Matches matchFirst(std::string_view word) const
    {
        if (!root) { // the graph has ended
            return {};
        }
        const NodePtr* const keyword = root->findKeyword(word);
        if (keyword != nullptr && (*keyword)->isCommand) {
            return {keyword};
        }
        const auto command = commandNodes.find(word);
        if (command != commandNodes.end()) {
            return {&command->second};
        }
        return pendingCommandNames.find(word) != pendingCommandNames.end() ? matchPlaceholders(*root) : Matches();
    }

    Matches match(const NodePtr& node, unsigned long i) const
    {
        const std::string_view word = textOf(argv[i]);
        return node == root ? matchFirst(word) : CmdTableHelper::match(*node, word);
    }
};

/// A usage that is longer makes its string grow.
constexpr std::size_t usualLength = 100;

/// The way of a line through the graph. Its text is needed for a usage only.
// NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): what isn't counted isn't read, and filling it takes time
class UsedWords
{
public:
    void add(const Node& node)
    {
        if (m_count < fewWords) {
            m_first[m_count++] = &node;
        } else {
            m_further.push_back(&node);
        }
    }

    /// The line took a placeholder among which there was a choice: the last word stands as it was typed.
    void addTyped(const char* word) { m_typed = word; }

    /// Appends the words to `text`. The name of the command stands as it was typed.
    void appendTo(std::string& text, const char* const* argv) const
    {
        for (std::size_t i = 0; i < m_count; ++i) {
            append(text, i == 0 ? std::string_view(argv[0]) : m_first[i]->name);
        }
        for (const Node* const node : m_further) {
            append(text, node->name);
        }
        if (m_typed != nullptr) {
            append(text, m_typed);
        }
    }

private:
    static void append(std::string& text, std::string_view word) { text.append(word).append(1, ' '); }

    static constexpr std::size_t fewWords = 16; // lines of no more words need no memory of the heap
    std::array<const Node*, fewWords> m_first;  // as many as m_count
    std::size_t m_count = 0;
    std::vector<const Node*> m_further;
    const char* m_typed = nullptr;
};

/// Looks for a way on where several placeholders match a word.
class Search
{
public:
    explicit Search(const LineMatcher& line) : m_line(line) {}

    /// Tries the placeholders of `parent` from `first` on for a word, depth first, the earliest registered first. If no
    /// placeholder of an inner choice leads to a handler, but the first placeholder itself has a handler, the line ends
    /// there.
    ///
    /// Returns  the node at which the line ends, which has a handler; null if no way leads to one.
    const NodePtr* run(const Node& parent, Place first, unsigned long word)
    {
        m_choices.push_back({&parent, word, first, first});
        while (!m_choices.empty()) {
            Choice& choice = m_choices.back();
            const Subnodes& subnodes = choice.parent->subnodes;
            if (choice.next < subnodes.size()) {
                const NodePtr& node = subnodes[choice.next];
                choice.next = choice.parent->findPlaceholder(choice.next + 1);
                if (const NodePtr* const end = follow(node, choice.word + 1)) {
                    return end;
                }
            } else if (m_choices.size() > 1 && subnodes[choice.first]->handler.hasFunction()) {
                return &subnodes[choice.first];
            } else {
                m_choices.pop_back();
            }
        }
        return nullptr;
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

    /// Returns  whether `node` has not been tried with this word before in this search.
    bool isNew(const Node& node, unsigned long word)
    {
        std::uint64_t& tried = m_tried[{&node, word / 64}];
        const std::uint64_t before = tried;
        tried |= std::uint64_t{1} << (word % 64);
        return tried != before;
    }

    /// Follows the line from `start` as far as there is no choice, and adds the choice that it meets to the choices.
    ///
    /// Returns  the node at which the line ends, if it has a handler; otherwise null.
    const NodePtr* follow(const NodePtr& start, unsigned long word)
    {
        const NodePtr* node = &start;
        for (; word < m_line.argc; ++word) {
            if (!isNew(**node, word)) {
                return nullptr; // has led to no handler before
            }
            const Matches matches = m_line.match(*node, word);
            if (matches.areNone()) {
                break;
            }
            if (matches.areSeveral()) {
                m_choices.push_back({node->get(), word, matches.first, matches.first});
                return nullptr;
            }
            node = matches.only;
        }
        return (*node)->handler.hasFunction() ? node : nullptr;
    }

    const LineMatcher& m_line;
    std::vector<Choice> m_choices;
    std::unordered_map<TriedWords, std::uint64_t, TriedWordsHash> m_tried;
};

/// Walks a line from `start` and notes the way in `usedWords`.
///
/// Returns  the node reached, in the list of subnodes of its parent.
const NodePtr& walk(const LineMatcher& line, const NodePtr& start, UsedWords& usedWords)
{
    const NodePtr* node = &start;
    for (unsigned long i = 0; i < line.argc; ++i) {
        const Matches matches = line.match(*node, i);
        if (matches.areNone()) {
            break;
        }
        if (matches.areSeveral()) {
            if (const NodePtr* const end = Search(line).run(**node, matches.first, i)) {
                return *end;
            }
            usedWords.addTyped(line.argv[i]);
            return (*node)->subnodes[matches.first];
        }
        node = matches.only;
        if (i + 1 == line.argc && (*node)->handler.hasFunction()) {
            break;
        }
        usedWords.add(**node);
    }
    return *node;
}

} // namespace

std::vector<NodePtr> SyntaxGraph::findMatchingRootSubnodes(const std::string& word) const
{
    const Matches matches = LineMatcher{root, commandNodes, pendingCommandNames, 0, nullptr}.matchFirst(word);
    if (matches.areSeveral()) {
        return root->placeholders();
    }
    return matches.areNone() ? std::vector<NodePtr>() : std::vector<NodePtr>{*matches.only};
}

NodePtr SyntaxGraph::findCommandArguments(std::shared_ptr<Node> node, std::string* usedWords, unsigned long argc,
                                          const char* const* argv) const
{
    UsedWords used;
    NodePtr found = walk({root, commandNodes, pendingCommandNames, argc, argv}, node, used);
    if (usedWords != nullptr) {
        used.appendTo(*usedWords, argv);
    }
    return found;
}

const ShellCommandFunction* SyntaxGraph::dispatchCommand(unsigned long argc, const char* const* argv,
                                                         std::ostream& out) const
{
    const Command found = findCommand(argc, argv, out);
    return found.node ? &found.node->handler : nullptr;
}

SyntaxGraph::Command SyntaxGraph::findCommand(unsigned long argc, const char* const* argv, std::ostream& out) const
{
    const ExclusiveLock lock(mutex);
    UsedWords used;
    const NodePtr& found = walk({root, commandNodes, pendingCommandNames, argc, argv}, root, used);
    if (found && found->handler.hasFunction()) {
        return {found, found->handler.function()};
    }
    const bool isPelm = argc != 0 && textOf(argv[0]) == "pelm";
    std::string usage;
    usage.reserve(usualLength);
    used.appendTo(usage, argv);
    appendSyntax(found, isPelm ? PrintFormat::pelm : PrintFormat::usual, usage);
    usage += "\n\n";
    // One insertion of the stream takes as much as many words. A width that is set on it is meant for the first one.
    out << "Usage: " << usage;
    return {};
}

} // namespace Corvane::CmdTableHelper

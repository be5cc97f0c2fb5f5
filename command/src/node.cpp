// SPDX-License-Identifier: MIT
/// Attaches and finds subnodes.
#include "command/src/node.h"

#include <cstdint>
#include <functional>
#include <utility>

namespace Corvane::CmdTableHelper {

namespace {

bool isPlaceholder(const std::string& name)
{
    return (name.find('<') != std::string::npos && name.find('>') != std::string::npos) || name == "...";
}

} // namespace

/// A hash table of places in the list of subnodes. It takes 8 to 16 bytes for each subnode; a standard container takes
/// six times as many, and three times as long to fill.
///
/// Without it a synopsis of n optional words would take n^3 steps: each word leads to all later ones, and each of them
/// would be looked for among all subnodes of the word.
class Node::Index
{
public:
    /// Fewer nodes than this are looked through as fast as the table is asked.
    static constexpr std::size_t worthwhile = 32;

    explicit Index(const std::vector<NodePtr>& nodes) { enterAll(nodes); }

    /// Enters the last of `nodes`; the others are entered already.
    void enterLast(const std::vector<NodePtr>& nodes)
    {
        if (nodes.size() * 2 > m_slots.size()) {
            enterAll(nodes);
        } else {
            enter(nodes, nodes.size() - 1);
        }
    }

    const NodePtr* find(const std::vector<NodePtr>& nodes, std::string_view word) const
    {
        for (std::size_t slot = firstSlot(word); m_slots[slot] != 0; slot = nextSlot(slot)) {
            const NodePtr& node = nodes[m_slots[slot] - 1];
            if (node->name == word) {
                return &node;
            }
        }
        return nullptr;
    }

private:
    std::size_t firstSlot(std::string_view word) const
    {
        return std::hash<std::string_view>()(word) & (m_slots.size() - 1);
    }

    std::size_t nextSlot(std::size_t slot) const { return (slot + 1) & (m_slots.size() - 1); }

    void enterAll(const std::vector<NodePtr>& nodes)
    {
        std::size_t slots = 2 * worthwhile;
        while (slots < nodes.size() * 2) {
            slots *= 2;
        }
        m_slots.assign(slots, 0);
        for (std::size_t place = 0; place < nodes.size(); ++place) {
            enter(nodes, place);
        }
    }

    void enter(const std::vector<NodePtr>& nodes, std::size_t place)
    {
        std::size_t slot = firstSlot(nodes[place]->name);
        while (m_slots[slot] != 0) {
            slot = nextSlot(slot);
        }
        m_slots[slot] = static_cast<std::uint32_t>(place + 1);
    }

    // Places counted from 1; 0 where nothing is. Their number is a power of two, and at most half of them are taken.
    std::vector<std::uint32_t> m_slots;
};

Node::Node(const std::string& word) : isArgument(isPlaceholder(word)), name(word) {}

Node::~Node() = default;

const NodePtr* Node::findSubnode(std::string_view subnodeName) const
{
    if (m_index) {
        return m_index->find(subnodes, subnodeName);
    }
    for (const NodePtr& subnode : subnodes) {
        if (subnode->name == subnodeName) {
            return &subnode;
        }
    }
    return nullptr;
}

NodePtr Node::findExactSubnode(const std::string& subnodeName) const
{
    const NodePtr* const found = findSubnode(subnodeName);
    return found != nullptr ? *found : nullptr;
}

NodePtr Node::addNewSubnode(const std::string& subnodeName)
{
    if (NodePtr subnode = findExactSubnode(subnodeName)) {
        return subnode;
    }
    return addExistingSubnode(std::make_shared<Node>(subnodeName));
}

NodePtr Node::addExistingSubnode(NodePtr node)
{
    if (findSubnode(node->name) == nullptr) {
        subnodes.push_back(node);
        // Taken out meanwhile: if entering runs out of memory, the node has no index rather than one that lacks a
        // subnode.
        auto index = std::move(m_index);
        if (index) {
            index->enterLast(subnodes);
        } else if (subnodes.size() >= Index::worthwhile) {
            index = std::make_unique<Index>(subnodes);
        }
        m_index = std::move(index);
    }
    return node;
}

std::vector<NodePtr> Node::findMatchingSubnodes(const std::string& word) const
{
    const NodePtr* const keyword = findKeyword(word);
    return keyword != nullptr ? std::vector<NodePtr>{*keyword} : placeholders();
}

std::vector<NodePtr> Node::placeholders() const
{
    std::vector<NodePtr> found;
    for (std::size_t place = findPlaceholder(0); place < subnodes.size(); place = findPlaceholder(place + 1)) {
        found.push_back(subnodes[place]);
    }
    return found;
}

const NodePtr* Node::findKeyword(std::string_view word) const
{
    const NodePtr* const found = findSubnode(word);
    return found != nullptr && !(*found)->isArgument ? found : nullptr;
}

std::size_t Node::findPlaceholder(std::size_t from) const
{
    while (from < subnodes.size() && !subnodes[from]->isArgument) {
        ++from;
    }
    return from;
}

const NodePtr* Node::findOnlyPlaceholder() const
{
    const std::size_t first = findPlaceholder(0);
    const bool isOnly = first < subnodes.size() && findPlaceholder(first + 1) == subnodes.size();
    return isOnly ? &subnodes[first] : nullptr;
}

} // namespace Corvane::CmdTableHelper

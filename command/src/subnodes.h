// SPDX-License-Identifier: MIT
/// The list of the words that may follow a word of the syntax graph.
#ifndef CORVANE_COMMAND_SUBNODES_H
#define CORVANE_COMMAND_SUBNODES_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace Corvane::CmdTableHelper {

class Node;
using NodePtr = std::shared_ptr<Node>;

/// Subnodes in the order in which they were added. If there are many, a hash table finds them by their names.
///
/// Without the table a synopsis of n optional words would take n^3 steps: each word leads to all later ones, and each
/// of them would be looked for among all subnodes of the word.
///
/// Nearly every node has two subnodes, one or none. So a list is only a pointer to one block. The block holds
/// the subnodes, and after them the table.
class Subnodes
{
public:
    using value_type = NodePtr;
    using const_iterator = const NodePtr*;
    using Hash = std::uint32_t;
    static Hash hashOf(std::string_view name);

    Subnodes() = default;
    ~Subnodes();
    Subnodes(const Subnodes&) = delete;
    Subnodes& operator=(const Subnodes&) = delete;

    std::size_t size() const { return m_block != nullptr ? m_block->size : 0; }
    bool empty() const { return m_block == nullptr; }
    const_iterator begin() const { return m_block != nullptr ? m_block->nodes() : nullptr; }
    const_iterator end() const { return begin() + size(); }
    const NodePtr& operator[](std::size_t place) const { return m_block->nodes()[place]; }
    const NodePtr& front() const { return *begin(); }
    const NodePtr& back() const { return *(end() - 1); }

    /// Returns  the subnode with that name, or null.
    const NodePtr* find(std::string_view name) const;

    /// The same for a caller that knows the hash of the name.
    const NodePtr* find(std::string_view name, Hash hash) const;

    /// Adds a subnode.
    ///
    /// Requires no subnode has its name.
    void add(const NodePtr& node);

    /// Moves all subnodes to the end of `nodes`.
    void moveTo(std::vector<NodePtr>& nodes);

private:
    /// The head of a block. The nodes follow it, and then the slots of the table.
    struct alignas(NodePtr) Block
    {
        static Block* make(std::uint32_t capacity);
        static void release(Block* block);

        NodePtr* nodes() { return reinterpret_cast<NodePtr*>(this + 1); }
        std::uint32_t* slots() { return reinterpret_cast<std::uint32_t*>(nodes() + capacity); }
        bool hasTable() const { return slotsFor(capacity) != 0; }
        const NodePtr* find(std::string_view name, Hash hash);
        void append(NodePtr node);

        static std::size_t slotsFor(std::uint32_t capacity);

        std::uint32_t size;
        std::uint32_t capacity; // a power of two
    };

    const NodePtr* findAmongFew(std::string_view name) const;

    Block* m_block = nullptr; // null while there is none
};

} // namespace Corvane::CmdTableHelper

#endif

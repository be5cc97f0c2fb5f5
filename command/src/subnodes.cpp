// SPDX-License-Identifier: MIT
/// Keeps subnodes and finds them by name.
#include "command/src/subnodes.h"

#include <functional>
#include <new>
#include <utility>

#include "command/src/node.h"

namespace Corvane::CmdTableHelper {

namespace {

/// A block for no more nodes than this has no table: they are looked through as fast.
constexpr std::uint32_t fewNodes = 8;

} // namespace

Subnodes::Hash Subnodes::hashOf(std::string_view name)
{
    return static_cast<Hash>(std::hash<std::string_view>()(name));
}

Subnodes::~Subnodes()
{
    Block::release(m_block);
}

inline const NodePtr* Subnodes::findAmongFew(std::string_view name) const
{
    for (const NodePtr& node : *this) {
        if (node->name == name) {
            return &node;
        }
    }
    return nullptr;
}

const NodePtr* Subnodes::find(std::string_view name) const
{
    return m_block != nullptr && m_block->hasTable() ? m_block->find(name, hashOf(name)) : findAmongFew(name);
}

const NodePtr* Subnodes::find(std::string_view name, Hash hash) const
{
    return m_block != nullptr && m_block->hasTable() ? m_block->find(name, hash) : findAmongFew(name);
}

void Subnodes::add(const NodePtr& node)
{
    if (m_block == nullptr) {
        m_block = Block::make(1);
    } else if (m_block->size == m_block->capacity) {
        Block* const larger = Block::make(m_block->capacity * 2);
        for (std::uint32_t place = 0; place < m_block->size; ++place) {
            larger->append(std::move(m_block->nodes()[place]));
        }
        Block::release(std::exchange(m_block, larger));
    }
    m_block->append(node);
}

void Subnodes::moveTo(std::vector<NodePtr>& nodes)
{
    for (std::size_t place = 0; place < size(); ++place) {
        nodes.push_back(std::move(m_block->nodes()[place]));
    }
    Block::release(std::exchange(m_block, nullptr));
}

Subnodes::Block* Subnodes::Block::make(std::uint32_t capacity)
{
    const std::size_t slots = slotsFor(capacity);
    void* const memory = ::operator new(sizeof(Block) + capacity * sizeof(NodePtr) + slots * sizeof(std::uint32_t));
    auto* const block = new (memory) Block{0, capacity};
    std::uninitialized_fill_n(block->slots(), slots, 0);
    return block;
}

void Subnodes::Block::release(Block* block)
{
    if (block != nullptr) {
        std::destroy_n(block->nodes(), block->size);
        ::operator delete(block);
    }
}

/// Returns  the number of slots: a power of two, so large that at most half of them are taken. 0 without a table.
std::size_t Subnodes::Block::slotsFor(std::uint32_t capacity)
{
    return capacity > fewNodes ? capacity * std::size_t{2} : 0;
}

// A slot is 0 while it is free. Otherwise its lower bits, as many as count the slots, are the place of a node counted
// from 1, and the upper ones are those of the hash. The lower bits of the hash say where the search for a slot begins.

const NodePtr* Subnodes::Block::find(std::string_view name, Hash hash)
{
    const auto placeBits = static_cast<std::uint32_t>(slotsFor(capacity) - 1);
    for (std::uint32_t slot = hash & placeBits; slots()[slot] != 0; slot = (slot + 1) & placeBits) {
        const std::uint32_t taken = slots()[slot];
        if (((taken ^ hash) & ~placeBits) == 0) {
            const NodePtr& node = nodes()[(taken & placeBits) - 1];
            if (node->name == name) {
                return &node;
            }
        }
    }
    return nullptr;
}

/// Requires there is room.
void Subnodes::Block::append(NodePtr node)
{
    const Hash hash = node->nameHash;
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.PlacementNew): the nodes follow the block's head in its memory
    new (nodes() + size) NodePtr(std::move(node));
    ++size;
    if (hasTable()) {
        const auto placeBits = static_cast<std::uint32_t>(slotsFor(capacity) - 1);
        std::uint32_t slot = hash & placeBits;
        while (slots()[slot] != 0) {
            slot = (slot + 1) & placeBits;
        }
        slots()[slot] = (hash & ~placeBits) | size;
    }
}

} // namespace Corvane::CmdTableHelper

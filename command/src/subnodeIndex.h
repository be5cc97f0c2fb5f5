/// Finds the subnodes of one node by name where there are too many to look through them all.
///
/// A synopsis of n optional words leads from each of them to all later ones: with every word looked for among all
/// subnodes of all words before it, registration would take n^3 steps.
#ifndef CORVANE_COMMAND_SUBNODEINDEX_H
#define CORVANE_COMMAND_SUBNODEINDEX_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace Corvane::CmdTableHelper {

class Node;

/// A hash table of places in the list of subnodes, which its operations are given: 8 to 16 bytes for each subnode.
class SubnodeIndex
{
public:
    using Nodes = std::vector<std::shared_ptr<Node>>;

    /// Fewer subnodes than this are looked through as fast as the table is asked.
    static constexpr std::size_t worthwhile = 32;

    /// Enters all of `subnodes`.
    explicit SubnodeIndex(const Nodes& subnodes) { enterAll(subnodes); }

    /// Enters the last of `subnodes`; the others are entered already.
    void enterLast(const Nodes& subnodes);

    /// Returns  the subnode of that name, or null.
    const std::shared_ptr<Node>* find(const Nodes& subnodes, std::string_view name) const;

private:
    void enterAll(const Nodes& subnodes);
    void enter(const Nodes& subnodes, std::size_t place);

    // Places counted from 1; 0 where nothing is. A power of two, and never more than half full.
    std::vector<std::uint32_t> m_slots;
};

} // namespace Corvane::CmdTableHelper

#endif

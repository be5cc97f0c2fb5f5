/// Finds subnodes by name.
#include "command/src/subnodeIndex.h"

#include <functional>

#include "command/src/cmdSyntax.h"

namespace Corvane::CmdTableHelper {

void SubnodeIndex::enterLast(const Nodes& subnodes)
{
    if (subnodes.size() * 2 > m_slots.size()) {
        enterAll(subnodes);
    } else {
        enter(subnodes, subnodes.size() - 1);
    }
}

const std::shared_ptr<Node>* SubnodeIndex::find(const Nodes& subnodes, std::string_view name) const
{
    const std::size_t mask = m_slots.size() - 1;
    for (std::size_t slot = std::hash<std::string_view>()(name) & mask; m_slots[slot] != 0; slot = (slot + 1) & mask) {
        const std::shared_ptr<Node>& subnode = subnodes[m_slots[slot] - 1];
        if (subnode->name == name) {
            return &subnode;
        }
    }
    return nullptr;
}

void SubnodeIndex::enterAll(const Nodes& subnodes)
{
    std::size_t slots = 2 * worthwhile;
    while (slots < subnodes.size() * 2) {
        slots *= 2;
    }
    m_slots.assign(slots, 0);
    for (std::size_t place = 0; place < subnodes.size(); ++place) {
        enter(subnodes, place);
    }
}

void SubnodeIndex::enter(const Nodes& subnodes, std::size_t place)
{
    const std::size_t mask = m_slots.size() - 1;
    std::size_t slot = std::hash<std::string_view>()(subnodes[place]->name) & mask;
    while (m_slots[slot] != 0) {
        slot = (slot + 1) & mask;
    }
    m_slots[slot] = static_cast<std::uint32_t>(place + 1);
}

} // namespace Corvane::CmdTableHelper

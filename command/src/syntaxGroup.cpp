// SPDX-License-Identifier: MIT
/// Collects the exits of groups: the nodes after which a line may leave them.
#include "command/src/syntaxGroup.h"

#include <utility>

namespace Corvane::CmdTableHelper {

namespace {

/// A group with more exits keeps each node only once. Duplicates decide where some later words are attached, so fewer
/// are kept; but they double with every optional group that holds an optional group.
constexpr std::size_t maxExitsWithDuplicates = 1024;

/// Returns  the nodes of a list: taken out of it if nobody else holds it, otherwise copied.
NodeList taken(const std::shared_ptr<NodeList>& list)
{
    return list.use_count() == 1 ? std::move(*list) : NodeList(*list);
}

} // namespace

void NodeList::append(NodeList&& later)
{
    m_places.clear();
    later.m_places.clear();
    m_nodes.splice(m_nodes.end(), later.m_nodes);
}

void NodeList::appendNew(NodeList&& later)
{
    keepFirstOccurrences();
    later.keepFirstOccurrences();
    const bool laterIsLonger = later.size() > size();
    NodeList& longer = laterIsLonger ? later : *this;
    NodeList& shorter = laterIsLonger ? *this : later;
    for (auto node = shorter.m_nodes.begin(); node != shorter.m_nodes.end();) {
        const auto [place, isNew] = longer.m_places.emplace(node->get(), node);
        if (isNew) {
            ++node;
        } else if (laterIsLonger) {
            later.m_nodes.erase(place->second);
            place->second = node++;
        } else {
            node = shorter.m_nodes.erase(node);
        }
    }
    m_nodes.splice(m_nodes.end(), later.m_nodes);
    m_places.swap(longer.m_places);
    later.m_places.clear();
}

void NodeList::keepFirstOccurrences()
{
    if (!m_places.empty()) {
        return;
    }
    for (auto node = m_nodes.begin(); node != m_nodes.end();) {
        node = m_places.emplace(node->get(), node).second ? std::next(node) : m_nodes.erase(node);
    }
}

void SyntaxGroup::addExits(const SharedNodes& alternative)
{
    const bool isEmpty = alternative == m_start;
    if (isEmpty && m_startIsExit && !m_keepsDuplicates) {
        return;
    }
    m_startIsExit = m_startIsExit || isEmpty;
    add(m_exits, taken(alternative));
}

SyntaxGroup::SharedNodes SyntaxGroup::takeExits()
{
    if (!m_isOptional) {
        return std::make_shared<NodeList>(std::move(m_exits));
    }
    auto exits = std::make_shared<NodeList>(taken(m_start));
    add(*exits, std::move(m_exits));
    return exits;
}

void SyntaxGroup::add(NodeList& nodes, NodeList&& later)
{
    m_keepsDuplicates = m_keepsDuplicates && nodes.size() + later.size() <= maxExitsWithDuplicates;
    if (m_keepsDuplicates) {
        nodes.append(std::move(later));
    } else {
        nodes.appendNew(std::move(later));
    }
}

} // namespace Corvane::CmdTableHelper

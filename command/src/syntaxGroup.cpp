// SPDX-License-Identifier: MIT
/// Collects the exits of groups: the nodes after which a line may leave them.
#include "command/src/syntaxGroup.h"

#include <iterator>
#include <utility>

namespace Corvane::CmdTableHelper {

namespace {

/// A group with more exits keeps each node only once. Duplicates decide where some later words are attached, so fewer
/// are kept; but they double with every optional group that holds an optional group.
constexpr std::size_t maxExitsWithDuplicates = 1024;

} // namespace

NodeList::NodeList() = default;

NodeList::NodeList(const std::vector<NodePtr>& nodes) : m_nodes(nodes.begin(), nodes.end()) {}

NodeList::NodeList(const NodeList& other) : m_nodes(other.m_nodes) {}

NodeList::NodeList(NodeList&& other) noexcept
{
    swap(other);
}

NodeList::~NodeList() = default;

void NodeList::assign(const NodePtr& node)
{
    m_places.reset();
    m_nodes.assign(1, node);
}

void NodeList::swap(NodeList& other) noexcept
{
    m_nodes.swap(other.m_nodes);
    m_places.swap(other.m_places);
}

void NodeList::append(NodeList&& later)
{
    m_places.reset();
    later.m_places.reset();
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
        const auto [place, isNew] = longer.m_places->emplace(node->get(), node);
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
    later.m_places.reset();
}

void NodeList::keepFirstOccurrences()
{
    if (m_places) {
        return;
    }
    m_places = std::make_unique<Places>();
    for (auto node = m_nodes.begin(); node != m_nodes.end();) {
        node = m_places->emplace(node->get(), node).second ? std::next(node) : m_nodes.erase(node);
    }
}

void SyntaxGroups::goTo(const NodePtr& node)
{
    m_frontier.assign(node);
    m_isAtStart = false;
}

void SyntaxGroups::open(bool isOptional)
{
    const std::size_t place = m_groups.size();
    m_groups.emplace_back(isOptional, m_isAtStart ? m_groups.back().startOwner : place);
    if (!m_isAtStart) {
        m_groups.back().start.swap(m_frontier);
        m_isAtStart = true;
    }
}

void SyntaxGroups::endAlternative()
{
    Group& group = m_groups.back();
    if (!m_isAtStart) {
        group.add(group.exits, std::move(m_frontier));
        m_isAtStart = true;
    } else if (!group.startIsExit || group.keepsDuplicates) {
        group.startIsExit = true;
        group.add(group.exits, NodeList(start()));
    }
}

void SyntaxGroups::close()
{
    endAlternative();
    Group& group = m_groups.back();
    if (group.isOptional) {
        NodeList exits;
        if (group.startOwner == m_groups.size() - 1) {
            exits.swap(group.start);
        } else {
            NodeList(start()).swap(exits);
        }
        group.add(exits, std::move(group.exits));
        m_frontier.swap(exits);
    } else {
        m_frontier.swap(group.exits);
    }
    m_isAtStart = false;
    m_groups.pop_back();
}

void SyntaxGroups::Group::add(NodeList& nodes, NodeList&& later)
{
    keepsDuplicates = keepsDuplicates && nodes.size() + later.size() <= maxExitsWithDuplicates;
    if (keepsDuplicates) {
        nodes.append(std::move(later));
    } else {
        nodes.appendNew(std::move(later));
    }
}

} // namespace Corvane::CmdTableHelper

/// Collects the exits of groups.
#include "command/src/syntaxGroup.h"

#include <utility>

namespace Corvane::CmdTableHelper {

namespace {

/// Past this number of exits a group keeps each node only once: duplicates, which decide where some later words go,
/// would otherwise double with every optional group that holds an optional group.
constexpr std::size_t maxExitsWithDuplicates = 1024;

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
    if (m_mayBeSkipped) {
        m_mayBeSkipped = false;
        m_startIsExit = true;
        add(NodeList(*m_start));
    }
    if (alternative == m_start) { // an empty alternative
        if (m_startIsExit && !m_keepsDuplicates) {
            return;
        }
        m_startIsExit = true;
    }
    // The nodes of a list that only the caller holds are taken, not copied: the caller goes on with another list.
    add(alternative.use_count() == 1 ? std::move(*alternative) : NodeList(*alternative));
}

void SyntaxGroup::add(NodeList&& nodes)
{
    m_keepsDuplicates = m_keepsDuplicates && m_exits.size() + nodes.size() <= maxExitsWithDuplicates;
    if (m_keepsDuplicates) {
        m_exits.append(std::move(nodes));
    } else {
        m_exits.appendNew(std::move(nodes));
    }
}

} // namespace Corvane::CmdTableHelper

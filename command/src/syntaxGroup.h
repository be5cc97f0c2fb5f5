// SPDX-License-Identifier: MIT
/// The groups "[ ]" and "{ }" that are open while a synopsis is read, and the nodes at which they end.
#ifndef CORVANE_COMMAND_SYNTAXGROUP_H
#define CORVANE_COMMAND_SYNTAXGROUP_H

#include <cstddef>
#include <list>
#include <memory>
#include <unordered_map>
#include <vector>

#include "command/src/node.h"

namespace Corvane::CmdTableHelper {

/// A list of nodes. Joining two lists takes only as long as the shorter one: each of a hundred thousand nested groups
/// hands all of its nodes to the group around it.
class NodeList
{
public:
    using Frontier = std::vector<NodePtr>;

    NodeList() = default;
    explicit NodeList(const Frontier& nodes) : m_nodes(nodes.begin(), nodes.end()) {}
    NodeList(const NodeList& other) : m_nodes(other.m_nodes) {}
    NodeList(NodeList&&) = default;
    NodeList& operator=(const NodeList&) = delete;
    NodeList& operator=(NodeList&&) = delete;
    ~NodeList() = default;

    std::size_t size() const { return m_nodes.size(); }
    Frontier frontier() const { return {m_nodes.begin(), m_nodes.end()}; }
    const std::list<NodePtr>& nodes() const { return m_nodes; }

    /// Adds the nodes of `later`, which is left empty.
    void append(NodeList&& later);

    /// Adds the nodes of `later`, which is left empty, and keeps the first occurrence of each node only.
    void appendNew(NodeList&& later);

private:
    void keepFirstOccurrences();

    std::list<NodePtr> m_nodes;
    // The place of each node, if the list holds none twice; empty if it may hold one twice.
    std::unordered_map<const Node*, std::list<NodePtr>::iterator> m_places;
};

/// A group that has been opened and not yet closed. Its exits are the nodes after which a line may leave it. Nested
/// groups share the list of nodes after which they begin, so a list that is shared is never changed.
class SyntaxGroup
{
public:
    using SharedNodes = std::shared_ptr<NodeList>;

    /// Opens a group after the nodes of `start`. If it is optional, these are exits as well, before all others.
    SyntaxGroup(SharedNodes start, bool optional)
        : m_start(std::move(start)), m_isOptional(optional), m_startIsExit(optional)
    {
    }

    /// The nodes after which each alternative begins.
    const SharedNodes& start() const { return m_start; }

    /// Ends an alternative, whose last nodes become exits. Takes the nodes out of a list that only the caller holds.
    void addExits(const SharedNodes& alternative);

    /// Ends the group.
    ///
    /// Returns  its exits.
    SharedNodes takeExits();

private:
    /// Adds `later` to `nodes`.
    void add(NodeList& nodes, NodeList&& later);

    SharedNodes m_start;
    const bool m_isOptional;
    bool m_startIsExit;
    NodeList m_exits; // of the alternatives so far
    bool m_keepsDuplicates = true;
};

} // namespace Corvane::CmdTableHelper

#endif

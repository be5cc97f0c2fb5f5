// SPDX-License-Identifier: MIT
/// The nodes after which the next word of a synopsis goes, while its groups "[ ]" and "{ }" are read.
#ifndef CORVANE_COMMAND_SYNTAXGROUP_H
#define CORVANE_COMMAND_SYNTAXGROUP_H

#include <cstddef>
#include <list>
#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

#include "command/src/node.h"

namespace Corvane::CmdTableHelper {

/// A list of nodes. Joining two lists takes only as long as the shorter one: each of a hundred thousand nested groups
/// hands all of its nodes to the group around it.
class NodeList
{
public:
    NodeList();
    explicit NodeList(const std::vector<NodePtr>& nodes);
    NodeList(const NodeList& other);
    NodeList(NodeList&& other) noexcept;
    NodeList& operator=(const NodeList&) = delete;
    NodeList& operator=(NodeList&&) = delete;
    ~NodeList();

    std::size_t size() const { return m_nodes.size(); }
    const std::list<NodePtr>& nodes() const { return m_nodes; }

    /// Makes the list one of this node.
    void assign(const NodePtr& node);

    /// Gives this list the other's nodes and the other this one's.
    void swap(NodeList& other) noexcept;

    /// Adds the node.
    void append(const NodePtr& node) { m_nodes.push_back(node); }

    /// Adds the nodes of `later`, which is left empty.
    void append(NodeList&& later);

    /// Adds the nodes of `later`, which is left empty, and keeps the first occurrence of each node only.
    void appendNew(NodeList&& later);

private:
    using Places = std::unordered_map<const Node*, std::list<NodePtr>::iterator>;

    void keepFirstOccurrences();

    std::list<NodePtr> m_nodes;
    std::unique_ptr<Places> m_places; // of each node, if the list is known to hold none twice
};

/// The groups that have been opened and not yet closed, and the frontier: the nodes after which the next word goes.
class SyntaxGroups
{
public:
    /// The frontier is of this node.
    explicit SyntaxGroups(const NodePtr& start) { m_frontier.append(start); }

    explicit SyntaxGroups(NodeList frontier) : m_frontier(std::move(frontier)) {}

    bool areOpen() const { return !m_groups.empty(); }

    const std::list<NodePtr>& frontier() const { return m_isAtStart ? start().nodes() : m_frontier.nodes(); }

    /// Makes the frontier the node of a word.
    void goTo(const NodePtr& node);

    /// Opens a group. If it is optional, the nodes after which it begins are exits as well, before all others.
    void open(bool isOptional);

    /// Ends an alternative of the innermost group, whose last nodes become exits of the group.
    void endAlternative();

    /// Ends the innermost group. The frontier is its exits: the nodes after which a line may leave it.
    void close();

private:
    struct Group
    {
        Group(bool optional, std::size_t owner) : isOptional(optional), startIsExit(optional), startOwner(owner) {}

        /// Adds `later`, which is left empty, to `nodes`.
        void add(NodeList& nodes, NodeList&& later);

        bool isOptional;
        bool startIsExit;
        bool keepsDuplicates = true;
        std::size_t startOwner; // the place of the outermost group that begins where this one does
        NodeList start;         // the nodes after which each alternative begins, if this group is their owner
        NodeList exits;         // of the alternatives so far
    };

    const NodeList& start() const { return m_groups[m_groups.back().startOwner].start; }

    std::vector<Group> m_groups;
    NodeList m_frontier;      // unused at the start
    bool m_isAtStart = false; // of an alternative: the frontier is where the innermost group starts
};

} // namespace Corvane::CmdTableHelper

#endif

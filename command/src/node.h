// SPDX-License-Identifier: MIT
/// The nodes of the syntax graph, and how each finds its subnodes.
#ifndef CORVANE_COMMAND_NODE_H
#define CORVANE_COMMAND_NODE_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "command/src/shellCommandFunction.h"
#include "command/src/subnodes.h"

namespace Corvane::CmdTableHelper {

/// One syntax word, and the words that may follow it. Always owned by std::shared_ptr: a node that follows a group has
/// as many parents as there are ways through the group.
///
/// Threads  the graph's mutex guards the nodes. Only a handler is called without it.
class Node
{
public:
    explicit Node(std::string_view word) : Node(word, Subnodes::hashOf(word)) {}
    Node(std::string_view word, Subnodes::Hash hash);
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;
    ~Node() = default;

    /// Returns  the first subnode with that name, or an empty pointer.
    NodePtr findExactSubnode(std::string_view subnodeName) const;

    /// Returns  the subnode with that name, made and attached if there was none.
    NodePtr addNewSubnode(std::string_view subnodeName)
    {
        return addNewSubnode(subnodeName, Subnodes::hashOf(subnodeName));
    }

    /// The same for a caller that knows the hash of the name.
    NodePtr addNewSubnode(std::string_view subnodeName, Subnodes::Hash hash);

    /// Attaches `node` unless a subnode with its name is there already.
    ///
    /// Returns  `node` itself, also where it was not attached.
    NodePtr addExistingSubnode(const NodePtr& node);

    /// Returns  the subnodes that a typed word may stand for: the keyword with exactly that name or else every
    ///          placeholder, in order.
    std::vector<NodePtr> findMatchingSubnodes(std::string_view word) const;

    /// Returns  every placeholder among the subnodes, in order.
    std::vector<NodePtr> placeholders() const;

    /// Returns  the subnode that is the keyword `word`, in the list of subnodes, or null.
    const NodePtr* findKeyword(std::string_view word) const
    {
        const NodePtr* const found = subnodes.find(word);
        return found != nullptr && !(*found)->isArgument ? found : nullptr;
    }

    /// Returns  the index of the first placeholder at or after `from`; subnodes.size() if there is none.
    std::size_t findPlaceholder(std::size_t from) const;

    /// Returns  the placeholder among the subnodes if there is exactly one; otherwise null.
    const NodePtr* findOnlyPlaceholder() const;

    /// The words that may follow, in the order in which they were first attached; no two have the same name. Only the
    /// operations above attach any.
    Subnodes subnodes;
    /// What runs when a line ends here; holds nothing until a synopsis ends here.
    ShellCommandFunction handler;
    /// Whether the word stands for a value that the user types.
    const bool isArgument;
    /// Whether the word is the name of a command, and this node a keyword after the root.
    bool isCommand = false;
    const Subnodes::Hash nameHash;
    /// The word as it is written in the synopsis.
    const std::string name;
};

} // namespace Corvane::CmdTableHelper

#endif

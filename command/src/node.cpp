// SPDX-License-Identifier: MIT
/// Attaches and finds subnodes.
#include "command/src/node.h"

namespace Corvane::CmdTableHelper {

namespace {

bool isPlaceholder(std::string_view name)
{
    return (name.find('<') != std::string_view::npos && name.find('>') != std::string_view::npos) || name == "...";
}

} // namespace

Node::Node(std::string_view word, Subnodes::Hash hash) : isArgument(isPlaceholder(word)), nameHash(hash), name(word) {}

NodePtr Node::findExactSubnode(std::string_view subnodeName) const
{
    const NodePtr* const found = subnodes.find(subnodeName);
    return found != nullptr ? *found : nullptr;
}

NodePtr Node::addNewSubnode(std::string_view subnodeName, Subnodes::Hash hash)
{
    if (const NodePtr* const found = subnodes.find(subnodeName, hash)) {
        return *found;
    }
    auto node = std::make_shared<Node>(subnodeName, hash);
    subnodes.add(node);
    return node;
}

NodePtr Node::addExistingSubnode(const NodePtr& node)
{
    if (subnodes.find(node->name, node->nameHash) == nullptr) {
        subnodes.add(node);
    }
    return node;
}

std::vector<NodePtr> Node::findMatchingSubnodes(std::string_view word) const
{
    const NodePtr* const keyword = findKeyword(word);
    return keyword != nullptr ? std::vector<NodePtr>{*keyword} : placeholders();
}

std::vector<NodePtr> Node::placeholders() const
{
    std::vector<NodePtr> found;
    for (std::size_t place = findPlaceholder(0); place < subnodes.size(); place = findPlaceholder(place + 1)) {
        found.push_back(subnodes[place]);
    }
    return found;
}

std::size_t Node::findPlaceholder(std::size_t from) const
{
    while (from < subnodes.size() && !subnodes[from]->isArgument) {
        ++from;
    }
    return from;
}

const NodePtr* Node::findOnlyPlaceholder() const
{
    const std::size_t first = findPlaceholder(0);
    const bool isOnly = first < subnodes.size() && findPlaceholder(first + 1) == subnodes.size();
    return isOnly ? &subnodes[first] : nullptr;
}

} // namespace Corvane::CmdTableHelper

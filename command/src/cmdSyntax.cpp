// SPDX-License-Identifier: MIT
/// Builds the syntax graph from synopses.
#include "command/src/cmdSyntax.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <list>
#include <optional>
#include <string_view>
#include <utility>

#include "command/src/syntaxGroup.h"
#include "trace/emit.h"

namespace Corvane::CmdTableHelper {

namespace {

/// The lines that events carry. Readers filter on them, so they don't follow the code.
namespace TraceLine {
constexpr unsigned int unbalancedBrackets = 192;
constexpr unsigned int registeredSynopsis = 209;
} // namespace TraceLine

bool isBracket(char c)
{
    return c == '[' || c == '{' || c == '|' || c == '}' || c == ']';
}

bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

/// Returns  the next token, which lies in the text; an empty one at the end.
std::string_view nextToken(const char*& cursor)
{
    while (isBlank(*cursor)) {
        ++cursor;
    }
    const char* const begin = cursor;
    if (isBracket(*cursor)) {
        ++cursor;
    } else {
        for (long depth = 0; *cursor != '\0' && (depth >= 1 || !(isBlank(*cursor) || isBracket(*cursor))); ++cursor) {
            if (*cursor == '<') {
                ++depth;
            } else if (*cursor == '>') {
                --depth;
            }
        }
    }
    return {begin, static_cast<std::size_t>(cursor - begin)};
}

/// Attaches one word after each of `nodes`, of which there is at least one.
///
/// Returns  the node of that word.
NodePtr join(std::string_view word, const std::list<NodePtr>& nodes)
{
    const Subnodes::Hash hash = Subnodes::hashOf(word);
    NodePtr joined;
    for (const NodePtr& node : nodes) {
        if (joined && joined != node) {
            node->addExistingSubnode(joined);
        } else {
            joined = node->addNewSubnode(word, hash);
        }
    }
    return joined;
}

/// Reads a sequence of words and groups, and attaches the words.
///
/// Returns  the character that ended it, NUL at the end of the text.
char readSequence(const char*& cursor, SyntaxGroups& groups)
{
    for (;;) {
        const std::string_view token = nextToken(cursor);
        const char kind = token.empty() ? '\0' : token.front();
        switch (kind) {
        case '[':
        case '{':
            groups.open(kind == '[');
            break;
        case '|':
        case ']':
        case '}':
        case '\0': // ends every open group
            if (!groups.areOpen()) {
                return kind;
            }
            if (kind == '|') {
                groups.endAlternative();
            } else {
                groups.close();
            }
            break;
        default: // a word
            groups.goTo(join(token, groups.frontier()));
        }
    }
}

} // namespace

SyntaxGraph::SyntaxGraph() : root(std::make_shared<Node>(" ")) {}

SyntaxGraph::~SyntaxGraph()
{
    end();
}

void SyntaxGraph::end(bool isForkedChild)
{
    std::vector<NodePtr> doomed(1);
    if (lockAtEnd(mutex, isForkedChild)) {
        doomed.front().swap(root);
        pendingCommandNames.clear();
        commandNodes.clear();
        mutex.unlock();
    }
    // Nodes are taken apart one by one. Releasing each other, they would need as much stack as the graph is deep, and
    // those in a cycle would never be released.
    while (!doomed.empty()) {
        const NodePtr node = std::move(doomed.back());
        doomed.pop_back();
        if (node) { // the root is null if the graph has ended before
            node->subnodes.moveTo(doomed);
        }
    }
}

bool SyntaxGraph::getToken(const char*& cursor, std::string& token)
{
    token = nextToken(cursor);
    return !token.empty();
}

char SyntaxGraph::processVelkSyntax(const char*& cursor, Frontier& frontier)
{
    SyntaxGroups groups{NodeList(frontier)};
    const char end = readSequence(cursor, groups);
    frontier.assign(groups.frontier().begin(), groups.frontier().end());
    return end;
}

void SyntaxGraph::joinToNode(const std::string& word, Frontier& frontier)
{
    const NodePtr joined = join(word, NodeList(frontier).nodes());
    frontier.clear();
    frontier.push_back(joined);
}

void SyntaxGraph::checkBrackets(const std::string& synopsis, char open, char close)
{
    std::uint32_t balance = 0;
    for (const char c : synopsis) {
        if (c == open) {
            ++balance;
        } else if (c == close) {
            --balance;
        }
    }
    if (balance != 0) {
        Trace::error(__FILE__, TraceLine::unbalancedBrackets, [&](std::ostream& msg) {
            msg << "VELK syntax \"" << synopsis << "\": Unbalanced " << open << close << " brackets";
        });
    }
}

void SyntaxGraph::addSynopsis(const std::string& synopsis, const ShellCommandFunction& function)
{
    std::vector<ShellCommandFunction> replaced;
    addSynopsis(synopsis, function, replaced);
}

// NOLINTNEXTLINE(readability-make-member-function-const): it changes the graph, if not the pointer to its root
void SyntaxGraph::addSynopsis(const std::string& synopsis, const ShellCommandFunction& function,
                              std::vector<ShellCommandFunction>& replaced)
{
    Trace::trace2(__FILE__, TraceLine::registeredSynopsis,
                  [&](std::ostream& msg) { msg << "Registered VELK syntax: " << synopsis; });
    if (tracepoint_enabled(com_brimlow_kelpsys_corvane, ERROR)) { // nobody else asks
        checkBrackets(synopsis, '{', '}');
        checkBrackets(synopsis, '[', ']');
        checkBrackets(synopsis, '<', '>');
    }
    SyntaxGroups groups(root);
    const char* cursor = synopsis.c_str();
    readSequence(cursor, groups);
    // All copies come first: if there is no memory for one, all ends of the synopsis keep their handlers.
    auto place = replaced.insert(replaced.end(), groups.frontier().size(), function);
    for (const NodePtr& node : groups.frontier()) {
        node->handler.swap(*place++);
    }
}

// NOLINTNEXTLINE(readability-make-member-function-const): it changes the graph, if not the pointer to its root
bool SyntaxGraph::resolveByKeyword(const std::string& name)
{
    const NodePtr* const keyword = root->findKeyword(name);
    if (keyword == nullptr) {
        return false;
    }
    (*keyword)->isCommand = true;
    const auto placeholder = commandNodes.find(name);
    if (placeholder != commandNodes.end()) {
        commandNodes.erase(placeholder);
    }
    return true;
}

void SyntaxGraph::registerCommandName(const std::string& commandName)
{
    if (!commandName.empty() && commandNodes.find(commandName) == commandNodes.end() &&
        !resolveByKeyword(commandName)) {
        pendingCommandNames.insert(commandName);
    }
    std::optional<const NodePtr*> placeholder; // looked for at most once: the root may have many subnodes
    for (auto pending = pendingCommandNames.begin(); pending != pendingCommandNames.end();) {
        bool isResolved = resolveByKeyword(*pending);
        if (!isResolved) {
            placeholder = placeholder ? placeholder : root->findOnlyPlaceholder();
            if (*placeholder != nullptr) {
                commandNodes[*pending] = **placeholder;
                isResolved = (**placeholder)->name == *pending;
            }
        }
        pending = isResolved ? pendingCommandNames.erase(pending) : std::next(pending);
    }
}

void SyntaxGraph::addCommand(const std::string& commandName, const Synopses& synopses)
{
    // Released after the mutex: the destructor of an application's handler may use the service.
    std::vector<ShellCommandFunction> replaced;
    replaced.reserve(synopses.size());
    const ExclusiveLock lock(mutex);
    if (!root) { // the graph has ended
        return;
    }
    for (const auto& [synopsis, function] : synopses) {
        addSynopsis(synopsis, function, replaced);
    }
    registerCommandName(commandName);
}

} // namespace Corvane::CmdTableHelper

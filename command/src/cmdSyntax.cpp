/// Builds the syntax graph from synopses.
#include "command/src/cmdSyntax.h"

#include <cstdint>
#include <utility>

#include "command/src/syntaxGroup.h"
#include "trace/emit.h"

namespace Corvane::CmdTableHelper {

namespace {

bool isPlaceholder(const std::string& name)
{
    return (name.find('<') != std::string::npos && name.find('>') != std::string::npos) || name == "...";
}

bool isBracket(char c)
{
    return c == '[' || c == '{' || c == '|' || c == '}' || c == ']';
}

bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

} // namespace

Node::Node(const std::string& word) : isArgument(isPlaceholder(word)), name(word) {}

const std::shared_ptr<Node>* Node::subnodeNamed(std::string_view subnodeName) const
{
    if (m_index) {
        return m_index->find(subnodes, subnodeName);
    }
    for (const auto& subnode : subnodes) {
        if (subnode->name == subnodeName) {
            return &subnode;
        }
    }
    return nullptr;
}

std::shared_ptr<Node> Node::findExactSubnode(const std::string& subnodeName) const
{
    const auto* const found = subnodeNamed(subnodeName);
    return found != nullptr ? *found : nullptr;
}

std::shared_ptr<Node> Node::addNewSubnode(const std::string& subnodeName)
{
    if (auto subnode = findExactSubnode(subnodeName)) {
        return subnode;
    }
    return addExistingSubnode(std::make_shared<Node>(subnodeName));
}

std::shared_ptr<Node> Node::addExistingSubnode(std::shared_ptr<Node> node)
{
    if (!findExactSubnode(node->name)) {
        subnodes.push_back(node);
        auto index = std::move(m_index); // for good if there is no memory to enter the node: an index lacks none
        if (index) {
            index->enterLast(subnodes);
        } else if (subnodes.size() >= SubnodeIndex::worthwhile) {
            index = std::make_unique<SubnodeIndex>(subnodes);
        }
        m_index = std::move(index);
    }
    return node;
}

SyntaxGraph::SyntaxGraph() : root(std::make_shared<Node>(" ")) {}

SyntaxGraph::~SyntaxGraph()
{
    end();
}

void SyntaxGraph::end()
{
    std::shared_ptr<Node> first;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        first.swap(root);
        pendingCommandNames.clear();
        commandNodes.clear();
    }
    if (!first) {
        return;
    }
    // One by one: nodes that release each other would need as much stack as the graph is deep, and those of a cyclic
    // graph would never be released.
    std::vector<std::shared_ptr<Node>> doomed{std::move(first)};
    while (!doomed.empty()) {
        const std::shared_ptr<Node> node = std::move(doomed.back());
        doomed.pop_back();
        for (auto& subnode : node->subnodes) {
            doomed.push_back(std::move(subnode));
        }
        node->subnodes.clear();
    }
}

bool SyntaxGraph::getToken(const char*& cursor, std::string& token)
{
    while (isBlank(*cursor)) {
        ++cursor;
    }
    if (isBracket(*cursor)) {
        token.assign(1, *cursor++);
        return true;
    }
    const char* const begin = cursor;
    long depth = 0;
    while (*cursor != '\0' && (depth >= 1 || !(isBlank(*cursor) || isBracket(*cursor)))) {
        if (*cursor == '<') {
            ++depth;
        } else if (*cursor == '>') {
            --depth;
        }
        ++cursor;
    }
    token.assign(begin, cursor);
    return !token.empty();
}

char SyntaxGraph::processVelkSyntax(const char*& cursor, Frontier& frontier)
{
    std::vector<SyntaxGroup> groups;
    auto current = std::make_shared<NodeList>(frontier);
    char end = '\0';
    std::string token;
    bool atEnd = false;
    while (!atEnd || !groups.empty()) {
        // The end of the text ends every open group.
        atEnd = atEnd || !getToken(cursor, token);
        const char first = atEnd ? '\0' : token.front();
        if (first == '[' || first == '{') {
            groups.emplace_back(current, first == '[');
        } else if (first == '\0' || isBracket(first)) {
            if (groups.empty()) {
                end = first;
                break;
            }
            SyntaxGroup& group = groups.back();
            group.addExits(current);
            if (first == '|') {
                current = group.start();
            } else {
                current = group.takeExits();
                groups.pop_back();
            }
        } else {
            Frontier joined = current->frontier();
            joinToNode(token, joined);
            current = std::make_shared<NodeList>(joined);
        }
    }
    frontier = current->frontier();
    return end;
}

void SyntaxGraph::joinToNode(const std::string& word, Frontier& frontier)
{
    std::shared_ptr<Node> joined;
    for (const auto& node : frontier) {
        if (joined && joined != node) {
            node->addExistingSubnode(joined);
        } else {
            joined = node->addNewSubnode(word);
        }
    }
    frontier.assign(1, joined);
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
        Trace::error(__FILE__, 192, [&](std::ostream& msg) {
            msg << "VELK syntax \"" << synopsis << "\": Unbalanced " << open << close << " brackets";
        });
    }
}

// NOLINTNEXTLINE(readability-make-member-function-const): it changes the graph, if not the root pointer
void SyntaxGraph::addSynopsis(const std::string& synopsis, const ShellCommandFunction& function)
{
    std::vector<ShellCommandFunction> replaced;
    addSynopsis(root, synopsis, function, replaced);
}

void SyntaxGraph::addSynopsis(const std::shared_ptr<Node>& root, const std::string& synopsis,
                              const ShellCommandFunction& function, std::vector<ShellCommandFunction>& replaced)
{
    Trace::trace2(__FILE__, 209, [&](std::ostream& msg) { msg << "Registered VELK syntax: " << synopsis; });
    checkBrackets(synopsis, '{', '}');
    checkBrackets(synopsis, '[', ']');
    checkBrackets(synopsis, '<', '>');
    Frontier frontier{root};
    const char* cursor = synopsis.c_str();
    processVelkSyntax(cursor, frontier);
    for (const auto& node : frontier) {
        replaced.emplace_back(function);
        node->handler.swap(replaced.back());
    }
}

void SyntaxGraph::registerCommandName(const std::string& commandName)
{
    if (!commandName.empty() && commandNodes.count(commandName) == 0) {
        pendingCommandNames.insert(commandName);
    }
    for (auto pending = pendingCommandNames.begin(); pending != pendingCommandNames.end();) {
        const auto matches = root->findMatchingSubnodes(*pending);
        if (matches.size() == 1) {
            commandNodes[*pending] = matches.front();
        }
        if (matches.size() == 1 && matches.front()->name == *pending) {
            pending = pendingCommandNames.erase(pending);
        } else {
            ++pending;
        }
    }
}

void SyntaxGraph::addCommand(const std::string& commandName, const Synopses& synopses)
{
    // Released after the mutex: the destructor of an application's handler may use the service.
    std::vector<ShellCommandFunction> replaced;
    const std::lock_guard<std::mutex> lock(mutex);
    if (!root) {
        return;
    }
    for (const auto& [synopsis, function] : synopses) {
        addSynopsis(root, synopsis, function, replaced);
    }
    registerCommandName(commandName);
}

} // namespace Corvane::CmdTableHelper

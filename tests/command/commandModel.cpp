/// The rules of the command tables, written down as plainly as possible.
#include "tests/command/commandModel.h"

#include <algorithm>

namespace Corvane::CmdTableHelper::Testing {

struct CommandModel::Node
{
    explicit Node(const std::string& word)
        : name(word),
          isArgument((word.find('<') != std::string::npos && word.find('>') != std::string::npos) || word == "...")
    {
    }
    Nodes subnodes;
    std::optional<int> handler;
    std::string name;
    bool isArgument;
};

CommandModel::CommandModel(std::size_t maxWords)
    : m_root(std::make_shared<Node>(" ")), m_simple(std::make_shared<Node>("")), m_maxWords(maxWords)
{
}

CommandModel::~CommandModel()
{
    // Random synopses make cycles.
    std::vector<NodePtr> open{m_root};
    while (!open.empty()) {
        const NodePtr node = open.back();
        open.pop_back();
        open.insert(open.end(), node->subnodes.begin(), node->subnodes.end());
        node->subnodes.clear();
    }
}

CommandModel::NodePtr CommandModel::exactSubnode(const NodePtr& node, const std::string& name)
{
    for (const auto& subnode : node->subnodes) {
        if (subnode->name == name) {
            return subnode;
        }
    }
    return nullptr;
}

bool CommandModel::getToken(const char*& cursor, std::string& token)
{
    const std::string brackets = "[{|}]";
    while (*cursor == ' ' || *cursor == '\t') {
        ++cursor;
    }
    if (*cursor != '\0' && brackets.find(*cursor) != std::string::npos) {
        token = std::string(1, *cursor++);
        return true;
    }
    token.clear();
    for (int depth = 0; *cursor != '\0'; ++cursor) {
        if (depth < 1 && (" \t" + brackets).find(*cursor) != std::string::npos) {
            break;
        }
        token += *cursor;
        depth += *cursor == '<' ? 1 : *cursor == '>' ? -1 : 0;
    }
    return !token.empty();
}

char CommandModel::process(const char*& cursor, Nodes& frontier)
{
    for (std::string token; getToken(cursor, token);) {
        if (token == "|" || token == "]" || token == "}") {
            return token.front();
        }
        if (token != "[" && token != "{") {
            join(token, frontier);
            continue;
        }
        Nodes exits;
        if (token == "[") {
            exits = frontier;
        }
        char end = '|';
        while (end == '|') {
            Nodes branch = frontier;
            end = process(cursor, branch);
            exits.insert(exits.end(), branch.begin(), branch.end());
        }
        if (exits.size() > 1024) { // duplicates double with every optional group that holds an optional group
            keepFirstOccurrences(exits);
        }
        frontier = exits;
    }
    return '\0';
}

void CommandModel::join(const std::string& word, Nodes& frontier)
{
    NodePtr joined;
    for (const NodePtr& node : frontier) {
        const NodePtr present = exactSubnode(node, joined && joined != node ? joined->name : word);
        if (joined && joined != node) {
            if (!present) {
                node->subnodes.push_back(joined);
            }
        } else if (present) {
            joined = present;
        } else {
            joined = std::make_shared<Node>(word);
            node->subnodes.push_back(joined);
        }
    }
    frontier = {joined};
}

void CommandModel::keepFirstOccurrences(Nodes& nodes)
{
    std::set<NodePtr> met;
    Nodes kept;
    for (const NodePtr& node : nodes) {
        if (met.insert(node).second) {
            kept.push_back(node);
        }
    }
    nodes = kept;
}

void CommandModel::checkBrackets(const std::string& synopsis, char open, char close)
{
    if (std::count(synopsis.begin(), synopsis.end(), open) != std::count(synopsis.begin(), synopsis.end(), close)) {
        const std::string text = "192 VELK syntax \"" + synopsis + "\": Unbalanced " + open + close + " brackets";
        emissions.emplace_back(text.c_str());
    }
}

void CommandModel::addCommand(const std::string& commandName, const std::vector<std::string>& synopses,
                              int firstHandler)
{
    for (const auto& synopsis : synopses) {
        emissions.emplace_back(("209 Registered VELK syntax: " + synopsis).c_str());
        checkBrackets(synopsis, '{', '}');
        checkBrackets(synopsis, '[', ']');
        checkBrackets(synopsis, '<', '>');
        Nodes frontier{m_root};
        const char* cursor = synopsis.c_str();
        process(cursor, frontier);
        for (const NodePtr& node : frontier) {
            node->handler = firstHandler;
        }
        ++firstHandler;
    }
    if (!commandName.empty() && m_commandNodes.count(commandName) == 0) {
        m_pending.insert(commandName);
    }
    for (const auto& name : std::set<std::string>(m_pending)) {
        const Nodes matches = matching(m_root, name);
        if (matches.size() == 1) {
            m_commandNodes[name] = matches.front();
            if (matches.front()->name == name) {
                m_pending.erase(name);
            }
        }
    }
}

CommandModel::Nodes CommandModel::matching(const NodePtr& node, const std::string& word)
{
    Nodes arguments;
    for (const NodePtr& subnode : node->subnodes) {
        if (!subnode->isArgument && subnode->name == word) {
            return {subnode};
        }
        if (subnode->isArgument) {
            arguments.push_back(subnode);
        }
    }
    return arguments;
}

CommandModel::Nodes CommandModel::matchingRoot(const std::string& word) const
{
    const auto command = m_commandNodes.find(word);
    if (command != m_commandNodes.end()) {
        return {command->second};
    }
    Nodes arguments;
    if (m_pending.count(word) != 0) {
        for (const NodePtr& subnode : m_root->subnodes) {
            if (subnode->isArgument) {
                arguments.push_back(subnode);
            }
        }
    }
    return arguments;
}

CommandModel::NodePtr CommandModel::walk(NodePtr node, std::string* usedWords, const std::vector<std::string>& words)
{
    for (std::size_t i = 0; i < words.size(); ++i) {
        const Nodes matches = node == m_root ? matchingRoot(words[i]) : matching(node, words[i]);
        if (matches.empty()) {
            return node;
        }
        if (matches.size() > 1) {
            for (const NodePtr& candidate : matches) {
                const std::vector<std::string> rest(words.begin() + static_cast<std::ptrdiff_t>(i) + 1, words.end());
                const NodePtr found = walkOnce(candidate, rest);
                if (found && found->handler) {
                    return found;
                }
            }
            if (usedWords != nullptr) {
                *usedWords += words[i] + " ";
            }
            return matches.front();
        }
        const NodePtr& match = matches.front();
        if (match->handler && i == words.size() - 1) {
            return match;
        }
        node = match;
        if (usedWords != nullptr) {
            *usedWords += (i == 0 ? words[0] : match->name) + " ";
        }
    }
    return node;
}

/// The ways from one node over the same words are looked at once: their number may double with each word.
CommandModel::NodePtr CommandModel::walkOnce(const NodePtr& node, const std::vector<std::string>& words)
{
    const std::pair<NodePtr, std::size_t> key{node, words.size()};
    const auto known = m_walked.find(key);
    return known != m_walked.end() ? known->second : m_walked[key] = walk(node, nullptr, words);
}

std::optional<int> CommandModel::walkFromRoot(std::string& usedWords, const std::vector<std::string>& words)
{
    m_walked.clear();
    return walk(m_root, &usedWords, words)->handler;
}

CommandModel::Answer CommandModel::dispatch(const std::vector<std::string>& words)
{
    std::string usedWords;
    m_walked.clear();
    const NodePtr found = walk(m_root, &usedWords, words);
    if (found->handler) {
        return {found->handler, ""};
    }
    m_out = "Usage: " + usedWords;
    m_followed = {{found, nullptr}};
    m_openBrackets = 0;
    m_words = 0;
    if (!words.empty() && words[0] == "pelm") {
        printPelmSyntax(found);
    } else {
        printSyntax(found);
    }
    return {std::nullopt, m_out + "\n\n"};
}

void CommandModel::follow(const NodePtr& node, const NodePtr& way)
{
    if (!m_followed.insert({node, way}).second) {
        const std::string closed = std::string(m_openBrackets, ']') + (m_openBrackets != 0 ? " " : "");
        throw ComesBack{m_out + closed + "\n\n"};
    }
}

CommandModel::NodePtr CommandModel::group(const std::string& open, const NodePtr& from, const NodePtr& stop,
                                          const std::string& close)
{
    m_out += open;
    ++m_openBrackets;
    const auto followedOutside = m_followed;
    NodePtr end = stop == m_simple ? printSimpleSubNodes(from) : printSubNodes(from, stop);
    m_followed = followedOutside;
    --m_openBrackets;
    m_out += close;
    return end;
}

void CommandModel::writeName(const NodePtr& node)
{
    if (m_words++ == m_maxWords) {
        throw TooLong{m_out};
    }
    m_out += node->name;
}

void CommandModel::writeAlternatives(const NodePtr& node)
{
    for (std::size_t i = 0; i < node->subnodes.size(); ++i) {
        m_out += i == 0 ? "" : "| ";
        writeName(node->subnodes[i]);
        m_out += " ";
    }
}

void CommandModel::printSyntax(NodePtr node)
{
    while (true) {
        const Nodes& subnodes = node->subnodes;
        if (subnodes.empty()) {
            return;
        }
        if (subnodes.size() == 1) {
            const NodePtr& c = subnodes[0];
            const bool isOptional = node->handler && c->handler && c->subnodes.empty();
            m_out += isOptional ? "[ " : "";
            writeName(c);
            m_out += isOptional ? " ] " : " ";
            node = c;
            follow(node, nullptr);
        } else if (subnodes.size() == 2 && !subnodes[0]->subnodes.empty() && subnodes[0]->subnodes[0] == subnodes[1]) {
            m_out += "[ ";
            writeName(subnodes[0]);
            m_out += " ] ";
            writeName(subnodes[1]);
            m_out += " ";
            node = subnodes[1];
            follow(node, nullptr);
        } else {
            m_out += "{ ";
            writeAlternatives(node);
            m_out += "} ";
            return;
        }
    }
}

CommandModel::NodePtr CommandModel::printSubNodes(const NodePtr& from, const NodePtr& stop)
{
    NodePtr cur = from;
    writeName(cur);
    follow(cur, stop);
    if (cur->subnodes.empty()) {
        return from;
    }
    NodePtr child = cur->subnodes[0];
    if (child == stop) {
        return cur;
    }
    while (true) {
        if (child->subnodes.empty()) {
            return cur;
        }
        if (cur->subnodes.size() == 1) {
            m_out += " ";
            writeName(child);
            cur = child;
            follow(cur, stop);
            child = child->subnodes[0];
        } else {
            cur = group(" [", cur->subnodes[0], cur->subnodes[1], "]");
            follow(cur, stop);
            if (cur->subnodes.empty()) {
                return cur;
            }
            child = cur->subnodes[0];
        }
        if (child == stop) {
            return cur;
        }
    }
}

CommandModel::NodePtr CommandModel::printSimpleSubNodes(NodePtr node)
{
    NodePtr cur = std::move(node);
    writeName(cur);
    follow(cur, m_simple);
    while (!cur->subnodes.empty()) {
        if (cur->subnodes.size() > 1) {
            cur = group(" [", cur->subnodes[0], cur->subnodes[1], "]");
        } else if (cur->handler) {
            cur = group(" [", cur->subnodes[0], m_simple, "]");
        } else {
            m_out += " ";
            writeName(cur->subnodes[0]);
            cur = NodePtr(cur->subnodes[0]);
        }
        follow(cur, m_simple);
    }
    return cur;
}

void CommandModel::printPelmSyntax(NodePtr node)
{
    for (int pass = 1;; ++pass) {
        const Nodes subnodes = node->subnodes;
        const std::size_t n = subnodes.size();
        if (n == 0) {
            return;
        }
        const bool f = subnodes[0]->name.rfind('<', 0) == 0;
        const bool h = node->handler.has_value();
        const bool s = n == 2 || (n > 2 && pass == 1) ? subnodes[1]->name.rfind('<', 0) == 0 : true;
        if (n == 1) {
            if (h) {
                node = group("[", subnodes[0], m_simple, "] ");
            } else {
                node = subnodes[0];
                writeName(node);
                m_out += " ";
            }
            follow(node, nullptr);
            continue;
        }
        if ((!f && !h) || !s) {
            break;
        }
        const NodePtr& first = subnodes[0];
        if (first->subnodes.empty()) {
            m_out += "[ ";
            m_out += f ? "" : "{ ";
            writeAlternatives(node);
            m_out += f ? "" : "}";
            m_out += " ] ";
            return;
        }
        if (first->subnodes[0] == subnodes[1]) {
            m_out += "[";
            writeName(first);
            m_out += "] ";
            node = first;
        } else {
            node = group("[", first, subnodes[1], "] ");
        }
        follow(node, nullptr);
    }
    m_out += "{ ";
    writeAlternatives(node);
    m_out += "} ";
}

} // namespace Corvane::CmdTableHelper::Testing

// SPDX-License-Identifier: MIT
/// Runs all checks.
#include "checks.h"

#include <algorithm>
#include <set>
#include <tuple>

namespace Corvane::Synopses {

const std::array<RuleInfo, 10> rules = {{
    {Rule::unbalancedBrackets, Severity::error, "unbalanced-brackets",
     "A synopsis has as many opening as closing brackets of each kind."},
    {Rule::wrongBracket, Severity::error, "wrong-bracket", "A group is closed by the bracket of its own kind."},
    {Rule::unclosedPlaceholder, Severity::error, "unclosed-placeholder", R"(Each "<" of a placeholder has a ">".)"},
    {Rule::lostWords, Severity::error, "lost-words",
     R"(The library reads a synopsis only up to a "|", "]" or "}" outside every group.)"},
    {Rule::unreachableCommand, Severity::error, "unreachable-command",
     "A synopsis begins with the name of its command: no other line reaches it."},
    {Rule::catchesEveryLine, Severity::warning, "catches-every-line",
     "A synopsis all of which may be left out runs for every line that begins with no command."},
    {Rule::neverChosen, Severity::error, "never-chosen",
     "Of the placeholders in one place, the first one from which the line reaches an end is taken."},
    {Rule::choiceByOrder, Severity::warning, "choice-by-order",
     "A line that fits placeholders of several synopses goes to the one that was registered first."},
    {Rule::sharedEnd, Severity::warning, "shared-end",
     "Where two synopses end at the same word, the handler of the later one replaces the other."},
    {Rule::cycle, Severity::warning, "cycle",
     "Where a word leads back to an earlier one, a line may repeat words, which no synopsis says."},
}};

const RuleInfo& infoOf(Rule rule)
{
    return rules.at(static_cast<std::size_t>(rule));
}

const char* nameOf(Severity severity)
{
    return severity == Severity::error ? "error" : "warning";
}

std::string excerpt(const std::string& line, std::size_t column, std::size_t length)
{
    std::string marks;
    for (std::size_t i = 0; i < line.size() && i < column + length; ++i) {
        const bool isContinued = (static_cast<unsigned char>(line[i]) & 0xC0U) == 0x80U; // a character of UTF-8
        if (!isContinued) {
            marks += i > column ? '~' : i == column ? '^' : line[i] == '\t' ? '\t' : ' '; // tabs are as wide as tabs
        }
    }
    return "  " + line + "\n  " + marks + (column >= line.size() ? "^" : "") + "\n";
}

Finding findingAt(const Graph& graph, Rule rule, std::size_t synopsis, const std::string& word,
                  const std::string& message)
{
    const std::vector<Token>& tokens = graph.readings[synopsis].tokens;
    const auto token = std::find_if(tokens.rbegin(), tokens.rend(), [&](const Token& t) { return t.text == word; });
    return token != tokens.rend() ? Finding{rule, synopsis, token->column, word.size(), message}
                                  : Finding{rule, synopsis, 0, graph.synopses[synopsis].text.size(), message};
}

namespace {

/// Returns  the nodes after the root with which this synopsis begins.
std::vector<NodePtr> firstNodes(const Graph& graph, std::size_t synopsis)
{
    SyntaxGraph alone;
    const ExclusiveLock lock(alone.mutex);
    SyntaxGraph::Frontier frontier{alone.root};
    const char* cursor = graph.synopses[synopsis].text.c_str();
    SyntaxGraph::processVelkSyntax(cursor, frontier);
    std::vector<NodePtr> nodes;
    for (const NodePtr& first : alone.root->subnodes) {
        nodes.push_back(graph.root()->findExactSubnode(first->name));
    }
    return nodes;
}

void checkCommand(const Graph& graph, std::size_t synopsis, const std::set<NodePtr>& reachable,
                  std::vector<Finding>& findings)
{
    const std::string& name = graph.readings[synopsis].command;
    const bool isNamed = !graph.synopses[synopsis].command.empty();
    const std::vector<NodePtr> starts = graph.startsOf(name);
    bool isLedTo = false;
    std::string first;
    for (const NodePtr& node : firstNodes(graph, synopsis)) {
        first = first.empty() ? node->name : first;
        isLedTo = isLedTo || std::find(starts.begin(), starts.end(), node) != starts.end();
        const std::string start = "no line reaches " + quoted(node->name) + ": ";
        if (!isNamed && node->isArgument) {
            findings.push_back(findingAt(graph, Rule::unreachableCommand, synopsis, node->name,
                                         start + "a synopsis that begins with a placeholder needs a command's name"));
        } else if (reachable.count(node) == 0) {
            findings.push_back(findingAt(graph, Rule::unreachableCommand, synopsis, node->name,
                                         start + "the command's name is " + quoted(name)));
            isLedTo = true; // said already
        }
    }
    if (!first.empty() && !isLedTo) {
        findings.push_back(
            findingAt(graph, Rule::unreachableCommand, synopsis, first,
                      "no line that begins with the command's name, " + quoted(name) + ", reaches this synopsis"));
    }
}

void checkEnds(const Graph& graph, std::vector<Finding>& findings)
{
    std::set<std::pair<std::size_t, std::size_t>> said;
    for (const SharedEnd& end : graph.sharedEnds) {
        if (said.insert({end.synopsis, end.earlier}).second) {
            const std::string& earlier = graph.synopses[end.earlier].text;
            const std::string& name = graph.at(end.node).node->name;
            const std::string where = end.node == rootId ? "" : " at " + quoted(name);
            findings.push_back(findingAt(graph, Rule::sharedEnd, end.synopsis, name,
                                         quoted(earlier) + " ends here" + where +
                                             " too: the handler of this synopsis replaces the other one"));
            findings.back().other = end.earlier;
        }
    }
}

} // namespace

std::vector<Finding> check(const std::vector<Synopsis>& synopses)
{
    return Table(synopses).check();
}

std::vector<Finding> Table::check() const
{
    std::vector<Finding> findings;
    std::set<NodePtr> reachable;
    for (const std::string& name : m_graph->commands) {
        const std::vector<NodePtr> starts = m_graph->startsOf(name);
        reachable.insert(starts.begin(), starts.end());
    }
    for (std::size_t i = 0; i < m_graph->synopses.size(); ++i) {
        checkBrackets(*m_graph, i, findings);
        checkCommand(*m_graph, i, reachable, findings);
        if (m_graph->readings[i].endsAtRoot) {
            findings.push_back({Rule::catchesEveryLine, i, 0, m_graph->synopses[i].text.size(),
                                "all of this synopsis may be left out: it runs for every line that begins with no "
                                "command"});
        }
    }
    checkEnds(*m_graph, findings);
    checkChoices(*m_graph, findings);
    checkCycles(*m_graph, findings);
    std::stable_sort(findings.begin(), findings.end(), [](const Finding& a, const Finding& b) {
        return std::tie(a.synopsis, a.column) < std::tie(b.synopsis, b.column);
    });
    return findings;
}

} // namespace Corvane::Synopses

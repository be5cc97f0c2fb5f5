// SPDX-License-Identifier: MIT
/// Finds flaws of brackets, and words that are lost because of them.
#include "checks.h"

#include "trace/emit.h"

namespace Corvane::Synopses {

namespace {

constexpr std::size_t nowhere = static_cast<std::size_t>(-1);

/// Returns  the first bracket of the pair that has no partner.
std::size_t findLone(const std::string& text, char open, char close)
{
    std::vector<std::size_t> opened;
    for (std::size_t column = 0; column < text.size(); ++column) {
        if (text[column] == open) {
            opened.push_back(column);
        } else if (text[column] == close && !opened.empty()) {
            opened.pop_back();
        } else if (text[column] == close) {
            return column;
        }
    }
    return opened.empty() ? nowhere : opened.front();
}

/// The library says whether the brackets are balanced, and this says which one is too many.
void checkBalance(std::size_t synopsis, const std::string& text, char open, char close, std::vector<Finding>& findings)
{
    const unsigned long before = Trace::reportedErrors;
    SyntaxGraph::checkBrackets(text, open, close);
    if (Trace::reportedErrors == before) {
        return;
    }
    const std::size_t lone = findLone(text, open, close);
    const std::string brackets = std::string(1, open) + ' ' + close;
    findings.push_back({Rule::unbalancedBrackets, synopsis, lone, 1,
                        "unbalanced " + quoted(brackets) + ": nothing " + (text[lone] == open ? "closes" : "opens") +
                            " this " + quoted(std::string(1, text[lone]))});
}

void checkKinds(std::size_t synopsis, const std::vector<Token>& tokens, std::vector<Finding>& findings)
{
    std::vector<char> opened;
    for (const Token& token : tokens) {
        const char kind = token.isBracket() ? token.text.front() : '\0';
        if (kind == '[' || kind == '{') {
            opened.push_back(kind);
        } else if (kind == ']' || kind == '}') {
            if (opened.back() != (kind == ']' ? '[' : '{')) {
                findings.push_back({Rule::wrongBracket, synopsis, token.column, 1,
                                    "this " + quoted(token.text) + " closes a group that " +
                                        quoted(std::string(1, opened.back())) + " has opened"});
            }
            opened.pop_back();
        }
    }
}

void checkPlaceholder(std::size_t synopsis, const Token& last, std::vector<Finding>& findings)
{
    long depth = 0;
    std::size_t opened = 0;
    for (std::size_t i = 0; i < last.text.size(); ++i) {
        if (last.text[i] == '<') {
            opened = depth == 0 ? i : opened;
            ++depth;
        } else if (last.text[i] == '>') {
            --depth;
        }
    }
    if (depth > 0) {
        findings.push_back(
            {Rule::unclosedPlaceholder, synopsis, last.column + opened, last.text.size() - opened,
             R"(no ">" closes this "<": the rest of the synopsis belongs to the word )" + quoted(last.text)});
    }
}

void checkLost(std::size_t synopsis, const std::string& text, const Reading& reading, std::vector<Finding>& findings)
{
    if (reading.stoppedBy == '\0') {
        return;
    }
    const std::size_t lost = text.find_first_not_of(" \t", reading.stop + 1);
    const std::string what = lost != std::string::npos ? ", and " + quoted(text.substr(lost)) + " is lost" : "";
    findings.push_back(
        {Rule::lostWords, synopsis, reading.stop, text.size() - reading.stop,
         "the synopsis ends at this " + quoted(std::string(1, reading.stoppedBy)) + ", which is in no group" + what});
}

} // namespace

void checkBrackets(const Graph& graph, std::size_t synopsis, std::vector<Finding>& findings)
{
    const std::string& text = graph.synopses[synopsis].text;
    const Reading& reading = graph.readings[synopsis];
    checkBalance(synopsis, text, '{', '}', findings);
    checkBalance(synopsis, text, '[', ']', findings);
    checkBalance(synopsis, text, '<', '>', findings);
    checkKinds(synopsis, reading.tokens, findings);
    if (!reading.tokens.empty()) {
        checkPlaceholder(synopsis, reading.tokens.back(), findings);
    }
    checkLost(synopsis, text, reading, findings);
}

} // namespace Corvane::Synopses

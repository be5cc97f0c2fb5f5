// SPDX-License-Identifier: MIT
/// What is wrong with synopses: flaws that the library doesn't report, or only reports in a trace.
#ifndef CORVANE_SYNOPSES_FINDING_H
#define CORVANE_SYNOPSES_FINDING_H

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace Corvane::Synopses {

/// A synopsis, and the name of the command under which it is registered.
struct Synopsis
{
    /// As it is registered.
    std::string text;
    /// If it is empty, the command is the first word of the synopsis.
    std::string command = std::string();
};

/// How bad a flaw is.
enum class Severity
{
    warning, ///< the synopsis works, but probably not as its author expects
    error    ///< a part of the synopsis is lost, or can never be used
};

/// What can be wrong with a synopsis.
enum class Rule
{
    unbalancedBrackets,  ///< the library reports it too, by the event ERROR
    wrongBracket,        ///< "[ x }" or "{ x ]"
    unclosedPlaceholder, ///< "<" without ">"
    lostWords,           ///< the library reads the synopsis only up to a "|", "]" or "}" that is in no group
    unreachableCommand,  ///< the first word of the synopsis isn't the name of its command
    catchesEveryLine,    ///< all of it may be left out
    neverChosen,         ///< another placeholder takes every line that this one takes
    choiceByOrder,       ///< a line fits placeholders of two synopses, and the first one registered takes it
    sharedEnd,           ///< the later handler replaces the earlier one
    cycle                ///< a line may repeat words
};

/// What is known about a rule.
struct RuleInfo
{
    Rule rule;               ///< which rule
    Severity severity;       ///< of all its findings
    const char* name;        ///< as tools print it, such as "lost-words"
    const char* description; ///< one sentence
};

/// All rules, in the order of their numbers.
extern const std::array<RuleInfo, 10> rules;

/// Returns  what is known about the rule.
const RuleInfo& infoOf(Rule rule);

struct Finding
{
    /// Which rule the synopsis breaks.
    Rule rule;
    /// The place of the synopsis in the list that was checked.
    std::size_t synopsis;
    /// Where the flaw begins in the synopsis. Units: bytes, from 0 on.
    std::size_t column;
    /// Units: bytes; at least 1, except for an empty synopsis.
    std::size_t length;
    /// One sentence without a full stop.
    std::string message;
    /// The place of another synopsis that is part of the flaw.
    std::optional<std::size_t> other = std::nullopt;
};

/// Checks synopses as an application registers them: in this order, all in one process. Synopses that follow each other
/// and have the same command are one table.
///
/// Returns  the findings, in the order of the synopses and of their columns.
/// Errors   TooLarge (synopses/table.h), std::bad_alloc.
/// Threads  any.
std::vector<Finding> check(const std::vector<Synopsis>& synopses);

/// Returns  two lines: the given line, and under it a caret and tildes that mark a part of it. Each begins with two
///          blanks and ends with a line feed. The text is taken as UTF-8.
std::string excerpt(const std::string& line, std::size_t column, std::size_t length);

/// Returns  "error" or "warning".
const char* nameOf(Severity severity);

} // namespace Corvane::Synopses

#endif

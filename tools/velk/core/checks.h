// SPDX-License-Identifier: MIT
/// The parts of a check. Each adds its findings.
#ifndef CORVANE_SYNOPSES_CHECKS_H
#define CORVANE_SYNOPSES_CHECKS_H

#include <cstddef>
#include <string>
#include <vector>

#include "graph.h"

namespace Corvane::Synopses {

/// Flaws of brackets in one synopsis, and what is lost by them.
void checkBrackets(const Graph& graph, std::size_t synopsis, std::vector<Finding>& findings);

/// Placeholders in one place. It stops without a finding where it would take too long.
void checkChoices(const Graph& graph, std::vector<Finding>& findings);

/// Words that lead back to themselves: one finding for each set of words that lead to each other.
void checkCycles(const Graph& graph, std::vector<Finding>& findings);

/// Returns  a finding whose place is the last word of the synopsis with that name, or the whole synopsis.
Finding findingAt(const Graph& graph, Rule rule, std::size_t synopsis, const std::string& word,
                  const std::string& message);

} // namespace Corvane::Synopses

#endif

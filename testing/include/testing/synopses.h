// SPDX-License-Identifier: MIT
/// Finds flaws in the synopses of command tables: words that the library loses, commands that it can't reach, and
/// synopses that mean something else than their author expects. The library refuses no synopsis, so let a test check
/// them:
///
///     EXPECT_EQ(Corvane::Testing::checkSynopses("show", showTable()).text(), "");
///
/// Nothing is registered and no handler is called. The program `corvane-velk check` has the same findings. Its man page
/// describes each of them.
///
/// Since  0.1.0
#ifndef CORVANE_TESTING_SYNOPSES_H
#define CORVANE_TESTING_SYNOPSES_H

#include <iosfwd>
#include <string>
#include <utility>
#include <vector>

#include <synopses/finding.h>

namespace Corvane::Testing {

/// What was found.
class SynopsisFindings
{
public:
    /// Requires  the findings are about these synopses.
    SynopsisFindings(std::vector<Synopses::Synopsis> synopses, std::vector<Synopses::Finding> findings)
        : m_synopses(std::move(synopses)), m_findings(std::move(findings))
    {
    }

    /// Returns  true if nothing was found.
    bool empty() const { return m_findings.empty(); }
    /// Returns  what was found, in the order of the records.
    const std::vector<Synopses::Finding>& findings() const { return m_findings; }

    /// Returns  for each finding, the number of the record (from 1 on), what is wrong, the synopsis, and a caret that
    ///          marks the place; "" if nothing was found.
    std::string text() const;

private:
    std::vector<Synopses::Synopsis> m_synopses;
    std::vector<Synopses::Finding> m_findings;
};

/// Writes the text of the findings. Test frameworks use it to show them.
std::ostream& operator<<(std::ostream& out, const SynopsisFindings& findings);

/// Returns  the synopses of a table with records of any kind. If an application has several tables, put the synopses of
///          all tables into one list, in the order in which the application registers them.
template <typename Record>
std::vector<Synopses::Synopsis> synopsesOf(const std::string& commandName, const std::vector<Record>& table)
{
    std::vector<Synopses::Synopsis> synopses;
    for (const Record& record : table) {
        synopses.push_back({record.synopsis, commandName});
    }
    return synopses;
}

/// Checks a list of synopses, in the order in which an application registers them.
///
/// Errors   Synopses::TooLarge (synopses/table.h), std::bad_alloc.
/// Threads  any.
SynopsisFindings checkSynopses(const std::vector<Synopses::Synopsis>& synopses);

/// Checks a table that is registered under this name.
template <typename Record>
SynopsisFindings checkSynopses(const std::string& commandName, const std::vector<Record>& table)
{
    return checkSynopses(synopsesOf(commandName, table));
}

} // namespace Corvane::Testing

#endif

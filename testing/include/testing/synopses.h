// SPDX-License-Identifier: MIT
/// Finds flaws in the synopses of command tables: what the library loses, can't reach or takes in another way than its
/// author means. The library refuses no synopsis, so a test has to ask:
///
///     EXPECT_EQ(Corvane::Testing::checkSynopses("show", showTable()).text(), "");
///
/// Nothing is registered and no handler is called. The same findings come from `corvane-velk check`; its man page
/// describes each.
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

    /// Returns  what is wrong with which record (counted from 1), with its synopsis and a caret; "" if there is
    /// nothing.
    std::string text() const;

private:
    std::vector<Synopses::Synopsis> m_synopses;
    std::vector<Synopses::Finding> m_findings;
};

/// Writes the text of the findings. Test frameworks show them with it.
std::ostream& operator<<(std::ostream& out, const SynopsisFindings& findings);

/// Returns  the synopses of a table with records of any kind. For an application of several tables, put those of all
///          tables behind each other, in the order in which it registers them.
template <typename Record>
std::vector<Synopses::Synopsis> synopsesOf(const std::string& commandName, const std::vector<Record>& table)
{
    std::vector<Synopses::Synopsis> synopses;
    for (const Record& record : table) {
        synopses.push_back({record.synopsis, commandName});
    }
    return synopses;
}

/// Checks synopses as an application registers them.
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

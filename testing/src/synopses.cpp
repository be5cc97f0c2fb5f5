// SPDX-License-Identifier: MIT
/// Puts findings about synopses into words.
#include <testing/synopses.h>

#include <ostream>

namespace Corvane::Testing {

std::string SynopsisFindings::text() const
{
    std::string text;
    for (const Synopses::Finding& finding : m_findings) {
        const Synopses::RuleInfo& rule = Synopses::infoOf(finding.rule);
        text += "record " + std::to_string(finding.synopsis + 1) + ", column " + std::to_string(finding.column + 1) +
                ": " + Synopses::nameOf(rule.severity) + ": " + finding.message + " [" + rule.name + "]\n" +
                Synopses::excerpt(m_synopses[finding.synopsis].text, finding.column, finding.length);
    }
    return text;
}

std::ostream& operator<<(std::ostream& out, const SynopsisFindings& findings)
{
    return out << findings.text();
}

SynopsisFindings checkSynopses(const std::vector<Synopses::Synopsis>& synopses)
{
    return {synopses, Synopses::check(synopses)};
}

} // namespace Corvane::Testing

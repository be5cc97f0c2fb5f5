// SPDX-License-Identifier: MIT
/// Prints findings: as compilers do, or as SARIF for editors and code hosts.
#ifndef CORVANE_VELK_REPORT_H
#define CORVANE_VELK_REPORT_H

#include <iosfwd>
#include <vector>

#include "input.h"

namespace Corvane::Velk {

/// FILE:LINE:COLUMN: warning: TEXT [RULE], the line, and a caret; columns count bytes, from 1 on.
void writeText(const std::vector<Synopses::Finding>& findings, const Input& input, std::ostream& out);

/// A log of SARIF 2.1.0; columns count characters, from 1 on.
void writeSarif(const std::vector<Synopses::Finding>& findings, const Input& input, std::ostream& out);

} // namespace Corvane::Velk

#endif

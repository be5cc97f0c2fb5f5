// SPDX-License-Identifier: MIT
/// Gives each test an empty directory of in-memory files.
///
///     Corvane::Testing::resetFiles(); // in the set-up of a test
///
/// Since  0.1.0
#ifndef CORVANE_TESTING_FILES_H
#define CORVANE_TESTING_FILES_H

namespace Corvane::Testing {

/// Takes all files out of the directory. Open handles still work, but nobody can open their files any more.
///
/// Automatic reference numbers go on: if files were created before, the first file of a test doesn't get number 1.
///
/// Threads  any.
/// Errors   std::bad_alloc, if the removal is traced.
void resetFiles();

} // namespace Corvane::Testing

#endif

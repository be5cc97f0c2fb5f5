// SPDX-License-Identifier: MIT
/// Empties the directory of in-memory files.
#include <testing/files.h>

#include <ramfs/fileManagerIf.h>

namespace Corvane::Testing {

void resetFiles()
{
    RamFs::V1::FileManagerIf::getInstance().removeAll();
}

} // namespace Corvane::Testing

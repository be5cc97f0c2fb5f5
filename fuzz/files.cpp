/// Operations on files: the directory, several handles and several stream buffers. The bytes of an input choose them.
#include <string>

#include "fuzz/fuzzing.h"
#include "tests/ramfs/fileComparison.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace Corvane::Fuzz;
    Input input(data, size);
    Corvane::RamFs::V1::FileComparison comparison([&](unsigned int end) { return input.below(end); }, recorder());
    while (!input.isEmpty()) {
        const std::string difference = comparison.operate();
        if (!difference.empty()) {
            Report report;
            for (const std::string& operation : comparison.history()) {
                report.add(operation);
            }
            report.fail(difference);
        }
    }
    return 0;
}

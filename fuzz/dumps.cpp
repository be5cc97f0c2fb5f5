/// The readable forms of a file: dump() and readReadable(), from any position.
#include <optional>
#include <sstream>
#include <string>

#include "fuzz/fuzzing.h"
#include "tests/ramfs/fileModel.h"
#include "tests/ramfs/ramfsTestSupport.h"

namespace {

using namespace Corvane::Fuzz;
using Corvane::Testing::Emissions;
using Corvane::Testing::ModelFile;
using Corvane::Testing::ModelHandle;

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace Corvane::RamFs::V1;
    Input input(data, size);
    const unsigned int headerSize = input.below(3) * input.below(20);
    const unsigned int footerSize = input.below(3) * input.below(20);
    const unsigned int firstPos = input.below(3) * input.below(50);
    const unsigned int maxLength = input.below(256);
    const std::string header = input.bytes(headerSize);
    const std::string footer = input.bytes(footerSize);
    const std::string content = input.rest();

    Report report;
    report.add("header " + quoted(header) + ", content " + quoted(content) + ", footer " + quoted(footer) +
               ", position " + std::to_string(firstPos) + ", limit " + std::to_string(maxLength));
    recorder().take();
    Emissions emissions;
    const auto modelFile = std::make_shared<ModelFile>();
    FileHandleImpl handle("f", FileEntry::create(0, 0));
    ModelHandle model("f", modelFile, emissions);
    handle.insertHeader(bytes(header.data()), static_cast<unsigned int>(header.size()));
    handle.write(content);
    handle.appendFooter(bytes(footer.data()), static_cast<unsigned int>(footer.size()));
    *modelFile = {0, header, content, footer};
    recorder().take();
    emissions.clear();

    for (const bool isLimited : {true, false}) {
        handle.setPos(firstPos);
        model.setPos(firstPos);
        std::ostringstream out;
        std::string modelOut;
        const auto limit = isLimited ? std::make_optional(maxLength) : std::nullopt;
        const auto result = isLimited ? handle.readReadable(out, maxLength) : handle.dump(out);
        report.expectSame("result", static_cast<unsigned int>(result), model.dump(modelOut, limit));
        report.expectSame("text", out.str(), modelOut);
        report.expectSame("position", static_cast<std::size_t>(FileHandleTestAccess::pos(handle)), model.pos);
        report.expectSame("emissions", takeEmissions(), emissions);
        emissions.clear();
    }
    return 0;
}

/// Runs the same random operations on the library and on the model, and compares every result, every text that is
/// written or emitted, every field of an event, and every byte.
///
/// CORVANE_TEST_SEED repeats a run; CORVANE_TEST_OPERATIONS makes it longer.
#include <cstdlib>
#include <iostream>
#include <random>
#include <set>

#include <gtest/gtest.h>

#include "tests/ramfs/fileModel.h"
#include "tests/ramfs/ramfsTestSupport.h"
#include "tests/support/probeRecorder.h"

namespace Corvane::RamFs::V1 {
namespace {

using Testing::ModelDirectory;
using Testing::ModelHandle;

unsigned int numberFrom(const char* variable, unsigned int otherwise)
{
    const char* const given = std::getenv(variable);
    return given != nullptr ? static_cast<unsigned int>(std::strtoul(given, nullptr, 10)) : otherwise;
}

/// A handle of the library beside its model.
struct HandlePair
{
    Handle real;
    ModelHandle model;
};

/// A stream buffer beside its model: a handle and the text that waits.
struct BufferPair
{
    std::shared_ptr<FileStreamBufIf> real;
    std::optional<ModelHandle> model;
    std::string pending;
};

class FileModelTest : public testing::Test
{
protected:
    FileModelTest() { manager.removeAll(); }
    ~FileModelTest() override { manager.removeAll(); }

    unsigned int below(unsigned int end) { return std::uniform_int_distribution<unsigned int>(0, end - 1)(random); }

    template <typename Value, std::size_t count>
    const Value& oneOf(const Value (&values)[count])
    {
        return values[below(count)];
    }

    std::string someName()
    {
        static const std::string names[] = {"",
                                            "a",
                                            "ab",
                                            "abc",
                                            "b",
                                            "log_<date>",
                                            "log_",
                                            "<date>",
                                            "a>b<date>c",
                                            "log_<date>2",
                                            "x>",
                                            "b<date><date>",
                                            "2",
                                            "log_2",
                                            "a>b<date>b<date>c"};
        return oneOf(names);
    }

    int someRef()
    {
        static const int refs[] = {0, 0, 0, 1, 2, 3, 5, -1, -1};
        return below(4) == 0 && !model.files.empty() ? model.files.begin()->second->ref : oneOf(refs);
    }

    std::string someBytes()
    {
        static const unsigned int lengths[] = {0, 1, 2, 7, 30, 300};
        std::string text(oneOf(lengths), '\0');
        const bool binary = below(3) == 0;
        for (char& byte : text) {
            byte = static_cast<char>(binary ? below(256) : below(20) == 0 ? '\n' : ' ' + below(95));
        }
        return text;
    }

    /// Returns  the names in the order in which the library visits its files.
    ModelDirectory::Order order()
    {
        ModelDirectory::Order names;
        for (const Handle& handle : manager.openAll()) {
            names.push_back(handle->getFileName());
        }
        recorder.take();
        return names;
    }

    void keep(const Handle& real, const std::optional<ModelHandle>& modelHandle)
    {
        ASSERT_EQ(real != nullptr, modelHandle.has_value());
        if (real) {
            EXPECT_EQ(real->getFileName(), modelHandle->name);
            handles.push_back({real, *modelHandle});
        }
    }

    void useDirectory();
    void removeSome();
    void useHandle(HandlePair& pair);
    void writeSome(HandlePair& pair);
    void askHandle(HandlePair& pair);
    void useBuffer(BufferPair& pair);
    void syncModel(BufferPair& pair);
    void compareBytes(const HandlePair& pair);
    void compareEmissions();

    /// Counts cases. A run in which one of them is rare tests too little.
    struct
    {
        int created = 0;
        int taken = 0;
        int opened = 0;
        int tookOut = 0;
        int sharedNumber = 0;
        int replaced = 0;
        int removedSeveral = 0;
        int removedToCout = 0;
        int cut = 0;
        int streamed = 0;
    } met;

    const unsigned int seed = numberFrom("CORVANE_TEST_SEED", std::random_device()());
    std::mt19937 random{seed};
    FileManagerImpl& manager = dynamic_cast<FileManagerImpl&>(FileManagerIf::getInstance());
    ModelDirectory model{FileManagerTestAccess::fileRefCounter(manager)};
    Testing::ProbeRecorder recorder;
    std::vector<HandlePair> handles;
    std::vector<BufferPair> buffers;
};

void FileModelTest::useDirectory()
{
    const std::string name = someName();
    const int ref = someRef();
    const ModelDirectory::Order names = order();
    switch (below(9)) {
    case 0:
    case 1:
    case 2: {
        const unsigned int size = below(3) * 20;
        const Handle real = manager.create(name, size, ref);
        const std::time_t time = real ? FileHandleTestAccess::entry(*real).getCreationTime() : 0;
        keep(real, model.create(name, size, ref, time));
        ++(real ? met.created : met.taken);
        met.replaced += real && model.files.size() == names.size() ? 1 : 0;
        break;
    }
    case 3:
        keep(manager.open(name), model.open(name));
        break;
    case 4: {
        met.sharedNumber += model.countOf(ref) > 1 ? 1 : 0;
        const Handle real = manager.open(ref);
        keep(real, model.open(ref, names));
        met.opened += real ? 1 : 0;
        met.tookOut += model.files.size() < names.size() ? 1 : 0;
        break;
    }
    case 5:
        EXPECT_EQ(manager.setDelayedDelete(ref), model.setDelayedDelete(ref, names));
        break;
    case 6: {
        const auto real = manager.openAll();
        const auto modelled = model.openAll(names);
        ASSERT_EQ(real.size(), modelled.size());
        for (std::size_t at = 0; at < real.size(); ++at) {
            compareBytes({real[at], modelled[at]});
        }
        break;
    }
    default:
        EXPECT_EQ(manager.exists(name), model.exists(name));
        EXPECT_EQ(manager.exists(ref), model.exists(ref));
        EXPECT_EQ(FileManagerTestAccess::fileCount(manager), model.files.size());
        break;
    }
}

void FileModelTest::removeSome()
{
    const ModelDirectory::Order names = order();
    const bool verbose = below(2) == 0;
    std::ostringstream out;
    const bool toCout = below(2) == 0; // where the operations without a stream write to
    std::streambuf* const cout = std::cout.rdbuf(toCout ? out.rdbuf() : std::cout.rdbuf());
    std::string modelOut;
    const unsigned int choice = below(20);
    if (choice == 0) {
        manager.removeAll();
        model.removeAll();
    } else if (choice < 10) {
        const int ref = someRef();
        EXPECT_EQ(toCout ? manager.remove(ref, verbose) : manager.remove(ref, out, verbose),
                  model.remove(ref, modelOut, verbose));
    } else {
        const std::string name = someName();
        EXPECT_EQ(toCout ? manager.remove(name, verbose) : manager.remove(name, out, verbose),
                  model.remove(name, modelOut, verbose, names));
    }
    std::cout.rdbuf(cout);
    EXPECT_EQ(out.str(), modelOut);
    met.removedToCout += toCout && !modelOut.empty() ? 1 : 0;
    met.removedSeveral += choice != 0 && model.files.size() + 1 < names.size() ? 1 : 0;
}

void FileModelTest::writeSome(HandlePair& pair)
{
    const std::string data = someBytes();
    const bool null = below(20) == 0;
    const auto length = static_cast<unsigned int>(data.size());
    const char* const text = null ? nullptr : data.data();
    const auto modelData = null ? std::nullopt : std::make_optional(data);
    switch (below(9)) {
    case 0:
        EXPECT_EQ(pair.real->write(bytes(text), length), pair.model.write(modelData, length));
        break;
    case 1:
        EXPECT_EQ(pair.real->write(text, length), pair.model.write(modelData, length));
        break;
    case 2:
        EXPECT_EQ(pair.real->write(data), pair.model.write(data, length));
        break;
    case 3:
        EXPECT_EQ(pair.real->append(bytes(text), length), pair.model.append(modelData, length, false));
        break;
    case 4:
        EXPECT_EQ(pair.real->append(text, length), pair.model.append(modelData, length, false));
        break;
    case 5:
        EXPECT_EQ(pair.real->append(data), pair.model.append(data, length, true));
        break;
    case 6:
        pair.real->insertHeader(bytes(text), length);
        pair.model.insertHeader(modelData, length, false);
        break;
    case 7:
        pair.real->insertHeader(data);
        pair.model.insertHeader(data, length, true);
        break;
    default:
        pair.real->appendFooter(bytes(text), length);
        pair.model.appendFooter(modelData, length);
        break;
    }
}

void FileModelTest::askHandle(HandlePair& pair)
{
    EXPECT_EQ(pair.real->getFileName(), pair.model.name);
    EXPECT_EQ(pair.real->getFileRef(), pair.model.file->ref);
    EXPECT_EQ(pair.real->getFileSize(), pair.model.file->all().size());
    EXPECT_EQ(pair.real->getUserCount(), pair.model.file.use_count() + 1);
    EXPECT_EQ(textOf(pair.real->readHeader()), pair.model.readHeader());
    EXPECT_EQ(textOf(pair.real->readFooter()), pair.model.readFooter());
    EXPECT_GT(pair.real->getCreationTime(), 0);
    pair.model.getCreationTime();
}

void FileModelTest::useHandle(HandlePair& pair)
{
    std::ostringstream out;
    std::string modelOut;
    switch (below(8)) {
    case 0: {
        static const unsigned long offsets[] = {0, 1, 5, 40, 1000, 0x100000001};
        const unsigned long offset = oneOf(offsets);
        pair.real->setPos(offset);
        pair.model.setPos(offset);
        break;
    }
    case 1: {
        const unsigned int length = below(50);
        EXPECT_EQ(readText(*pair.real, length), pair.model.read(length));
        EXPECT_EQ(pair.real->read(nullptr, length), 0U);
        break;
    }
    case 2:
        EXPECT_EQ(pair.real->dump(out), pair.model.dump(modelOut, std::nullopt));
        break;
    case 3: {
        const unsigned int limit = below(12) * (1 + below(10));
        const unsigned int result = pair.real->readReadable(out, limit);
        EXPECT_EQ(result, pair.model.dump(modelOut, limit));
        met.cut += result == 0xFFFFFFFF ? 1 : 0;
        break;
    }
    case 4: {
        const unsigned int size = below(100) * (1 + below(10));
        EXPECT_EQ(pair.real->contentResize(size), pair.model.contentResize(size));
        break;
    }
    case 5:
        askHandle(pair);
        break;
    default:
        writeSome(pair);
        break;
    }
    EXPECT_EQ(out.str(), modelOut);
    compareBytes(pair);
}

void FileModelTest::syncModel(BufferPair& pair)
{
    if (pair.model) {
        pair.model->write(pair.pending, pair.pending.size());
    }
    pair.pending.clear();
}

void FileModelTest::useBuffer(BufferPair& pair)
{
    const ModelDirectory::Order names = order();
    const int ref = someRef();
    std::ostream out(pair.real.get());
    const unsigned int choice = below(12);
    if (choice == 0) {
        const std::string name = someName();
        const bool opened = pair.real->create(name, 10, ref);
        const std::time_t time =
            opened ? FileHandleTestAccess::entry(*FileStreamBufTestAccess::handle(*pair.real)).getCreationTime() : 0;
        syncModel(pair);
        pair.model.reset();
        pair.model = model.create(name, 10, ref, time);
        EXPECT_EQ(opened, pair.model.has_value());
    } else if (choice == 1) {
        const bool opened = pair.real->open(ref);
        syncModel(pair);
        pair.model.reset();
        pair.model = model.open(ref, names);
        EXPECT_EQ(opened, pair.model.has_value());
    } else if (choice == 2) {
        pair.real->close();
        syncModel(pair);
        pair.model.reset();
    } else if (choice == 3) {
        pair.real = manager.getFileStreamBuf(); // releases the former one
        if (pair.model) {
            syncModel(pair);
        }
        pair.model.reset();
        pair.pending.clear();
    } else if (choice < 6) {
        out.flush();
        met.streamed += pair.pending.empty() ? 0 : 1;
        syncModel(pair);
    } else {
        const std::string text = someBytes();
        out.write(text.data(), static_cast<std::streamsize>(text.size()));
        pair.pending += pair.model ? text : "";
    }
    EXPECT_EQ(pair.real->isOpen(), pair.model.has_value());
    if (pair.model) {
        EXPECT_EQ(pair.real->getFileName(), pair.model->name);
        EXPECT_EQ(pair.real->getFileRef(), pair.model->file->ref);
        compareBytes({FileStreamBufTestAccess::handle(*pair.real), *pair.model});
    }
}

void FileModelTest::compareBytes(const HandlePair& pair)
{
    EXPECT_EQ(wholeFile(*pair.real), pair.model.file->all());
    EXPECT_EQ(FileHandleTestAccess::pos(*pair.real), pair.model.pos);
    EXPECT_EQ(FileEntryTestAccess::storage(FileHandleTestAccess::entry(*pair.real)), pair.model.file->storage);
}

/// Returns  the source file that emits at a line.
std::string sourceOf(unsigned int line)
{
    static const std::set<unsigned int> linesOfManager = {47, 91, 95, 104, 126, 180, 269, 303, 310};
    return line == 28                        ? "src/fileEntry.cpp"
           : linesOfManager.count(line) != 0 ? "src/fileManagerImpl.cpp"
                                             : "src/fileHandleImpl.cpp";
}

void FileModelTest::compareEmissions()
{
    Testing::Emissions emitted;
    for (const auto& record : recorder.take()) {
        EXPECT_EQ(record.file, sourceOf(record.line));
        EXPECT_EQ(record.event, record.line == 95 ? Testing::ProbedEvent::Error : Testing::ProbedEvent::Trace1);
        EXPECT_EQ(record.obj, record.line == 95 ? "" : "-");
        emitted.push_back(std::to_string(record.line) + " " + record.msg);
    }
    EXPECT_EQ(emitted, model.emissions);
    model.emissions.clear();
}

TEST_F(FileModelTest, AgreesWithTheLibraryOnRandomOperations)
{
    const unsigned int operations = numberFrom("CORVANE_TEST_OPERATIONS", 100'000);
    std::cout << "CORVANE_TEST_SEED=" << seed << " CORVANE_TEST_OPERATIONS=" << operations << "\n";
    for (int count = 0; count < 3; ++count) {
        buffers.push_back({manager.getFileStreamBuf(), std::nullopt, ""});
    }
    recorder.take();
    for (unsigned int operation = 0; operation < operations && !HasFailure(); ++operation) {
        SCOPED_TRACE("operation " + std::to_string(operation) + " of seed " + std::to_string(seed));
        const unsigned int choice = below(20);
        if (choice < 4) {
            useDirectory();
        } else if (choice < 5) {
            removeSome();
        } else if (choice < 8) {
            useBuffer(buffers[below(3)]);
        } else if (!handles.empty()) {
            const unsigned int which = below(static_cast<unsigned int>(handles.size()));
            useHandle(handles[which]);
            if (handles.size() > 8 || below(20) == 0) {
                manager.close(handles[which].real);
                EXPECT_EQ(handles[which].real, nullptr);
                handles.erase(handles.begin() + which);
            }
        }
        compareEmissions();
    }
    if (operations >= 100'000) {
        for (const int count : {met.created, met.taken, met.opened, met.tookOut, met.sharedNumber, met.replaced,
                                met.removedSeveral, met.removedToCout, met.cut, met.streamed}) {
            EXPECT_GT(count, 20);
        }
    }
}

} // namespace
} // namespace Corvane::RamFs::V1

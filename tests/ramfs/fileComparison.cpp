/// Chooses operations, does them twice and compares.
#include "tests/ramfs/fileComparison.h"

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <set>
#include <sstream>
#include <type_traits>
#include <utility>

namespace Corvane::RamFs::V1 {

using Testing::ModelDirectory;
using Testing::ModelHandle;

namespace {

template <typename Number>
std::string shown(const Number& number)
{
    return std::to_string(number);
}

std::string shown(const std::string& text)
{
    return "\"" + text + "\"";
}

std::string shown(const Testing::Emissions& emissions)
{
    std::string all;
    for (const std::string& emission : emissions) {
        all += "\n    " + emission;
    }
    return all;
}

std::string shown(Testing::EventName event)
{
    std::ostringstream name;
    name << event;
    return name.str();
}

/// Returns  the source file that emits at a line.
std::string sourceOf(unsigned int line)
{
    static const std::set<unsigned int> linesOfManager = {47, 91, 95, 104, 126, 180, 269, 303, 310};
    return line == 28                        ? "src/fileEntry.cpp"
           : linesOfManager.count(line) != 0 ? "src/fileManagerImpl.cpp"
                                             : "src/fileHandleImpl.cpp";
}

} // namespace

FileComparison::FileComparison(Choose choose, Testing::EventRecorder& recorder)
    : m_choose(std::move(choose)), m_recorder(recorder)
{
    m_manager.removeAll();
    for (int count = 0; count < 3; ++count) {
        m_buffers.push_back({m_manager.getFileStreamBuf(), std::nullopt, ""});
    }
    m_recorder.take();
}

FileComparison::~FileComparison()
{
    m_handles.clear();
    m_buffers.clear();
    m_manager.removeAll();
}

template <typename Real, typename Model>
void FileComparison::expectSame(const char* what, const Real& real, const Model& model)
{
    using Common = std::common_type_t<Real, Model>;
    if (Common(real) != Common(model)) {
        m_difference += std::string(what) + "\n  library: " + shown(real) + "\n  model:   " + shown(model) + "\n";
    }
}

/// A name made of few parts, so that names meet each other, and the patterns that remove files.
std::string FileComparison::someName()
{
    static const std::string parts[] = {"", "a", "b", "<date>", "log_", "2", ">", "<", "a>b<date>", "c"};
    std::string name;
    for (unsigned int count = m_choose(4); count > 0; --count) {
        name += oneOf(parts);
    }
    return name;
}

int FileComparison::someRef()
{
    static const int refs[] = {0, 0, 0, 1, 2, 3, 5, -1, -1, INT32_MAX, INT32_MIN};
    return m_choose(4) == 0 && !m_model.files.empty() ? m_model.files.begin()->second->ref : oneOf(refs);
}

std::string FileComparison::someBytes()
{
    static const unsigned int lengths[] = {0, 1, 2, 7, 30, 300};
    std::string text(m_choose(200) == 1 ? 70000 : oneOf(lengths), '\0');
    const unsigned int kind = m_choose(3);
    unsigned int state = m_choose(256);
    for (char& byte : text) {
        state = (state * 1664525U + 1013904223U);
        const unsigned int number = state >> 16U;
        byte = static_cast<char>(kind == 0 ? number % 256 : number % 20 == 0 ? '\n' : ' ' + number % 95);
    }
    return text;
}

/// Returns  the names in the order in which the library visits its files.
ModelDirectory::Order FileComparison::order()
{
    ModelDirectory::Order names;
    for (const Handle& handle : m_manager.openAll()) {
        if (m_model.exists(handle->getFileName())) {
            names.push_back(handle->getFileName());
        } else {
            expectSame("listed", "the file " + handle->getFileName(), std::string("no such file"));
        }
    }
    expectSame("number of files", names.size(), m_model.files.size());
    m_recorder.take();
    return names;
}

void FileComparison::keep(const Handle& real, const std::optional<ModelHandle>& model)
{
    expectSame("is there a handle", real != nullptr, model.has_value());
    if (real && model) {
        expectSame("name of the handle", real->getFileName(), model->name);
        m_handles.push_back({real, *model});
    }
}

void FileComparison::create(const std::string& name, int ref, std::size_t filesBefore)
{
    const unsigned int size = m_choose(100) == 1 ? 200000 : m_choose(3) * 20;
    const Handle real = m_manager.create(name, size, ref);
    const std::time_t time = real ? FileHandleTestAccess::entry(*real).getCreationTime() : 0;
    keep(real, m_model.create(name, size, ref, time));
    ++(real ? met.created : met.taken);
    met.replaced += real && m_model.files.size() == filesBefore ? 1 : 0;
}

void FileComparison::openAll(const ModelDirectory::Order& names)
{
    const auto real = m_manager.openAll();
    const auto modelled = m_model.openAll(names);
    expectSame("number of files", real.size(), modelled.size());
    for (std::size_t at = 0; at < std::min(real.size(), modelled.size()); ++at) {
        compareBytes({real[at], modelled[at]});
    }
}

void FileComparison::useDirectory()
{
    const std::string name = someName();
    const int ref = someRef();
    const ModelDirectory::Order names = order();
    switch (m_choose(9)) {
    case 0:
    case 1:
    case 2:
        create(name, ref, names.size());
        break;
    case 3:
        keep(m_manager.open(name), m_model.open(name));
        break;
    case 4: {
        met.sharedNumber += m_model.countOf(ref) > 1 ? 1 : 0;
        const Handle real = m_manager.open(ref);
        keep(real, m_model.open(ref, names));
        met.opened += real ? 1 : 0;
        met.tookOut += m_model.files.size() < names.size() ? 1 : 0;
        break;
    }
    case 5:
        expectSame("setDelayedDelete()", m_manager.setDelayedDelete(ref), m_model.setDelayedDelete(ref, names));
        break;
    case 6:
        openAll(names);
        break;
    default:
        expectSame("exists(name)", m_manager.exists(name), m_model.exists(name));
        expectSame("exists(number)", m_manager.exists(ref), m_model.exists(ref));
        expectSame("number of files", FileManagerTestAccess::fileCount(m_manager), m_model.files.size());
        break;
    }
}

void FileComparison::removeSome()
{
    const ModelDirectory::Order names = order();
    const bool verbose = m_choose(2) == 0;
    std::ostringstream out;
    const bool toCout = m_choose(2) == 0; // where the operations without a stream write to
    std::streambuf* const cout = std::cout.rdbuf(toCout ? out.rdbuf() : std::cout.rdbuf());
    std::string modelOut;
    const unsigned int choice = m_choose(20);
    if (choice == 0) {
        m_manager.removeAll();
        m_model.removeAll();
    } else if (choice < 10) {
        const int ref = someRef();
        expectSame("remove(number)", toCout ? m_manager.remove(ref, verbose) : m_manager.remove(ref, out, verbose),
                   m_model.remove(ref, modelOut, verbose));
    } else {
        const std::string name = someName();
        expectSame("remove(name)", toCout ? m_manager.remove(name, verbose) : m_manager.remove(name, out, verbose),
                   m_model.remove(name, modelOut, verbose, names));
    }
    std::cout.rdbuf(cout);
    expectSame("written by remove()", out.str(), modelOut);
    met.removedToCout += toCout && !modelOut.empty() ? 1 : 0;
    met.removedSeveral += choice != 0 && m_model.files.size() + 1 < names.size() ? 1 : 0;
}

void FileComparison::writeSome(HandlePair& pair)
{
    const std::string data = someBytes();
    const bool null = m_choose(20) == 1;
    const auto length = static_cast<unsigned int>(data.size());
    const char* const text = null ? nullptr : data.data();
    const auto modelData = null ? std::nullopt : std::make_optional(data);
    switch (m_choose(9)) {
    case 0:
        expectSame("write()", pair.real->write(bytes(text), length), pair.model.write(modelData, length));
        break;
    case 1:
        expectSame("write(char)", pair.real->write(text, length), pair.model.write(modelData, length));
        break;
    case 2:
        expectSame("write(string)", pair.real->write(data), pair.model.write(data, length));
        break;
    case 3:
        expectSame("append()", pair.real->append(bytes(text), length), pair.model.append(modelData, length, false));
        break;
    case 4:
        expectSame("append(char)", pair.real->append(text, length), pair.model.append(modelData, length, false));
        break;
    case 5:
        expectSame("append(string)", pair.real->append(data), pair.model.append(data, length, true));
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

void FileComparison::askHandle(HandlePair& pair)
{
    expectSame("getFileName()", pair.real->getFileName(), pair.model.name);
    expectSame("getFileRef()", pair.real->getFileRef(), pair.model.file->ref);
    expectSame("getFileSize()", pair.real->getFileSize(), pair.model.file->all().size());
    expectSame("getUserCount()", pair.real->getUserCount(), pair.model.file.use_count() + 1);
    expectSame("readHeader()", textOf(pair.real->readHeader()), pair.model.readHeader());
    expectSame("readFooter()", textOf(pair.real->readFooter()), pair.model.readFooter());
    expectSame("getCreationTime() > 0", pair.real->getCreationTime() > 0, true);
    pair.model.getCreationTime();
}

void FileComparison::useHandle(HandlePair& pair)
{
    std::ostringstream out;
    std::string modelOut;
    switch (m_choose(8)) {
    case 0: {
        static const unsigned long offsets[] = {0, 1, 5, 40, 1000, 0x100000001};
        const unsigned long offset = m_choose(2) == 0 ? oneOf(offsets) : m_choose(400);
        pair.real->setPos(offset);
        pair.model.setPos(offset);
        break;
    }
    case 1: {
        const unsigned int length = m_choose(50) * (m_choose(20) == 1 ? 2000 : 1);
        m_history.push_back("read " + std::to_string(length) + " bytes of " + pair.model.name);
        expectSame("read()", readText(*pair.real, length), pair.model.read(length));
        expectSame("read(null)", pair.real->read(nullptr, length), 0U);
        break;
    }
    case 2:
        expectSame("dump()", pair.real->dump(out), pair.model.dump(modelOut, std::nullopt));
        break;
    case 3: {
        const unsigned int limit = m_choose(12) * (1 + m_choose(10));
        const unsigned int result = pair.real->readReadable(out, limit);
        expectSame("readReadable()", result, pair.model.dump(modelOut, limit));
        met.cut += result == 0xFFFFFFFF ? 1 : 0;
        break;
    }
    case 4: {
        const unsigned int size = m_choose(100) * (1 + m_choose(10)) * (m_choose(100) == 1 ? 1000 : 1);
        expectSame("contentResize()", pair.real->contentResize(size), pair.model.contentResize(size));
        break;
    }
    case 5:
        askHandle(pair);
        break;
    default:
        writeSome(pair);
        break;
    }
    expectSame("written text", out.str(), modelOut);
    compareBytes(pair);
}

void FileComparison::syncModel(BufferPair& pair)
{
    if (pair.model) {
        pair.model->write(pair.pending, pair.pending.size());
    }
    pair.pending.clear();
}

void FileComparison::openBuffer(BufferPair& pair)
{
    const ModelDirectory::Order names = order();
    const int ref = someRef();
    const bool creates = m_choose(2) == 0;
    const std::string name = creates ? someName() : "";
    const bool opened = creates ? pair.real->create(name, 10, ref) : pair.real->open(ref);
    const std::time_t time =
        opened ? FileHandleTestAccess::entry(*FileStreamBufTestAccess::handle(*pair.real)).getCreationTime() : 0;
    syncModel(pair);
    pair.model.reset();
    auto model = creates ? m_model.create(name, 10, ref, time) : m_model.open(ref, names);
    if (model) {
        pair.model.emplace(*model);
    }
}

void FileComparison::useBuffer(BufferPair& pair)
{
    std::ostream out(pair.real.get());
    const unsigned int choice = m_choose(12);
    if (choice < 2) {
        openBuffer(pair);
    } else if (choice == 2) {
        pair.real->close();
        syncModel(pair);
        pair.model.reset();
    } else if (choice == 3) {
        pair.real = m_manager.getFileStreamBuf(); // releases the former one
        if (pair.model) {
            syncModel(pair);
        }
        pair.model.reset();
        pair.pending.clear();
    } else if (choice < 6) {
        m_history.push_back("flush");
        out.flush();
        met.streamed += pair.pending.empty() ? 0 : 1;
        syncModel(pair);
    } else {
        const std::string text = someBytes();
        m_history.push_back("stream " + std::to_string(text.size()) + " bytes");
        choice < 9 ? out.write(text.data(), static_cast<std::streamsize>(text.size())) : out << text;
        pair.pending += pair.model ? text : "";
        expectSame("state of the stream", out.good(), true);
    }
    expectSame("isOpen()", pair.real->isOpen(), pair.model.has_value());
    if (pair.real->isOpen() && pair.model) {
        expectSame("getFileName()", pair.real->getFileName(), pair.model->name);
        expectSame("getFileRef()", pair.real->getFileRef(), pair.model->file->ref);
        compareBytes({FileStreamBufTestAccess::handle(*pair.real), *pair.model});
    }
}

void FileComparison::compareBytes(const HandlePair& pair)
{
    const FileEntry& entry = FileHandleTestAccess::entry(*pair.real);
    expectSame("content", wholeFile(*pair.real), pair.model.file->all());
    expectSame("position", FileHandleTestAccess::pos(*pair.real), pair.model.pos);
    expectSame("storage", FileEntryTestAccess::storage(entry), pair.model.file->storage);
    const std::string reserve = FileEntryTestAccess::content(entry).substr(FileEntryTestAccess::contentSize(entry));
    expectSame("first byte of the reserve that isn't 0", reserve.find_first_not_of('\0'), std::string::npos);
}

void FileComparison::compareEmissions()
{
    Testing::Emissions emitted;
    for (const auto& record : m_recorder.take()) {
        const bool isError = record.line == 95;
        expectSame("file", record.file, sourceOf(record.line));
        expectSame("event", record.name, isError ? Testing::EventName::Error : Testing::EventName::Trace1);
        expectSame("obj", record.obj, std::string(isError ? "" : "-"));
        emitted.push_back(std::to_string(record.line) + " " + record.msg);
    }
    expectSame("emissions", emitted, m_model.emissions);
    m_history.insert(m_history.end(), m_model.emissions.begin(), m_model.emissions.end());
    m_model.emissions.clear();
}

std::string FileComparison::operate()
{
    m_difference.clear();
    const unsigned int choice = m_choose(20);
    if (choice < 4) {
        useDirectory();
    } else if (choice < 5) {
        removeSome();
    } else if (choice < 8) {
        useBuffer(m_buffers[m_choose(3)]);
    } else if (!m_handles.empty()) {
        const unsigned int which = m_choose(static_cast<unsigned int>(m_handles.size()));
        useHandle(m_handles[which]);
        if (m_handles.size() > 8 || m_choose(20) == 1) {
            m_manager.close(m_handles[which].real);
            expectSame("is the handle empty", m_handles[which].real == nullptr, true);
            m_handles.erase(m_handles.begin() + which);
        }
    }
    compareEmissions();
    return m_difference;
}

} // namespace Corvane::RamFs::V1

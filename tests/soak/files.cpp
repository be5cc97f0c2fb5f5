/// Directory, handles and stream buffers, from several threads at once.
#include "tests/soak/files.h"

#include <algorithm>
#include <map>
#include <utility>

namespace Corvane::Soak {

using RamFs::V1::FileManagerIf;
using Testing::ModelHandle;

namespace {

constexpr const char* sharedName = "shared";
constexpr std::size_t largestSharedFile = 100'000;
constexpr std::size_t largestFile = 60'000;

FileManagerIf& manager()
{
    return FileManagerIf::getInstance();
}

std::string read(RamFs::V1::FileHandleIf& handle, std::size_t length)
{
    std::string text(length, '\0');
    text.resize(handle.read(reinterpret_cast<unsigned char*>(text.data()), static_cast<unsigned int>(length)));
    return text;
}

const unsigned char* bytes(const std::string& text)
{
    return reinterpret_cast<const unsigned char*>(text.data());
}

std::string sorted(std::string text)
{
    std::sort(text.begin(), text.end());
    return text;
}

std::string recordOf(unsigned int thread, unsigned int number)
{
    return std::to_string(thread) + " " + std::to_string(number) + " " + std::string(number % 60, '.');
}

std::string asText(const std::vector<unsigned char>& data)
{
    return {data.begin(), data.end()};
}

} // namespace

Files::Files(Worker& worker)
    : m_worker(worker), m_prefix("f" + std::to_string(worker.thread()) + "_"),
      m_names({m_prefix + "a", m_prefix + "b", m_prefix + "c", m_prefix + "log_<date>", m_prefix + "<date>.txt"}),
      m_nextRef(static_cast<int>(100'000'000 * (worker.thread() + 1)))
{
}

std::string Files::someBytes()
{
    std::string text(m_worker.oneOf(std::vector<unsigned int>{0, 1, 7, 100, 3000}), '\0');
    unsigned int state = m_worker.below(1000);
    for (char& byte : text) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<char>(state % 1000 < 900 ? ' ' + (state >> 16U) % 95 : state >> 24U);
    }
    return text;
}

/// Returns  the number of a file of this thread; at times one that no file has.
int Files::someRef()
{
    return m_model.files.empty() || m_worker.below(8) == 0 ? -7 : m_worker.oneOf(m_model.files).second->ref;
}

Testing::ModelDirectory::Order Files::order() const
{
    Testing::ModelDirectory::Order names;
    for (const auto& [name, file] : m_model.files) {
        names.push_back(name);
    }
    return names;
}

void Files::compareBytes(HandlePair& pair)
{
    const std::string all = pair.model.file->all();
    m_worker.expectSame("size", pair.real->getFileSize(), all.size());
    pair.real->setPos(0);
    m_worker.expectSame("content", read(*pair.real, all.size() + 1), all);
    pair.real->setPos(pair.model.pos);
    pair.model.setPos(pair.model.pos); // to the end at most, where header or footer got shorter
}

void Files::keep(const Handle& real, const std::optional<ModelHandle>& model)
{
    m_worker.expectSame("is there a handle", real != nullptr, model.has_value());
    if (real && model) {
        m_worker.expectSame("name", real->getFileName(), model->name);
        m_worker.expectSame("number", real->getFileRef(), model->file->ref);
        m_handles.push_back({real, *model});
        compareBytes(m_handles.back());
    }
    if (m_handles.size() > 6) {
        const auto oldest = m_handles.begin();
        manager().close(oldest->real);
        m_handles.erase(oldest);
    }
}

void Files::create()
{
    m_worker.enter("creates a file");
    const std::string& name = m_worker.oneOf(m_names);
    const unsigned int size = m_worker.below(3) * 50;
    const int ref = m_worker.below(3) == 0 ? 0 : ++m_nextRef;
    const Handle real = manager().create(name, size, ref);
    // Other threads take automatic numbers too, so the model is told which one this file got.
    const int modelRef = real && ref == 0 ? real->getFileRef() : std::max(ref, 1);
    m_worker.expectSame("is an automatic number", modelRef > 0, true);
    keep(real, m_model.create(name, size, modelRef, real ? real->getCreationTime() : 0));
}

void Files::open()
{
    m_worker.enter("opens a file");
    const int ref = someRef();
    switch (m_worker.below(4)) {
    case 0: {
        const std::string name = m_model.files.empty() ? m_prefix : m_worker.oneOf(m_model.files).first;
        keep(manager().open(name), m_model.open(name));
        break;
    }
    case 1:
        keep(manager().open(ref), m_model.open(ref, order()));
        break;
    case 2:
        m_worker.expectSame("setDelayedDelete()", manager().setDelayedDelete(ref),
                            m_model.setDelayedDelete(ref, order()));
        break;
    default:
        m_worker.expectSame("exists(number)", manager().exists(ref), m_model.exists(ref));
        break;
    }
}

void Files::remove()
{
    m_worker.enter("removes files");
    const bool verbose = m_worker.below(2) == 0;
    std::ostringstream out;
    std::string modelOut;
    if (m_worker.below(2) == 0) {
        const int ref = someRef();
        m_worker.expectSame("remove(number)", manager().remove(ref, out, verbose),
                            m_model.remove(ref, modelOut, verbose));
    } else {
        const std::string name = m_worker.below(4) == 0 ? m_prefix : m_worker.oneOf(m_names);
        m_worker.expectSame("remove(name)", manager().remove(name, out, verbose),
                            m_model.remove(name, modelOut, verbose, order()));
    }
    m_worker.expectSame("report, whatever its order", sorted(out.str()), sorted(modelOut));
}

void Files::list()
{
    m_worker.enter("opens all files");
    std::size_t own = 0;
    for (const Handle& handle : manager().openAll()) {
        const std::string name = handle->getFileName();
        if (name.compare(0, m_prefix.size(), m_prefix) == 0) {
            ++own;
            m_worker.expectSame(name.c_str(), m_model.exists(name), true);
            HandlePair pair{handle, ModelHandle(name, m_model.files.at(name), m_model.emissions)};
            compareBytes(pair);
        }
    }
    m_worker.expectSame("number of files", own, m_model.files.size());
}

void Files::change(HandlePair& pair)
{
    const std::string data = someBytes();
    const auto size = static_cast<unsigned int>(data.size());
    switch (m_worker.below(8)) {
    case 0:
    case 1:
        m_worker.expectSame("write()", pair.real->write(data), pair.model.write(data, size));
        break;
    case 2:
        m_worker.expectSame("write(bytes)", pair.real->write(bytes(data), size), pair.model.write(data, size));
        break;
    case 3:
    case 4:
        m_worker.expectSame("append()", pair.real->append(data), pair.model.append(data, size, true));
        break;
    case 5:
        pair.real->insertHeader(data);
        pair.model.insertHeader(data, size, true);
        break;
    case 6:
        pair.real->appendFooter(bytes(data), size);
        pair.model.appendFooter(data, size);
        break;
    default:
        m_worker.expectSame("contentResize()", pair.real->contentResize(size * 2), pair.model.contentResize(size * 2));
        break;
    }
    if (pair.model.file->content.size() > largestFile) {
        const int ref = pair.model.file->ref;
        std::string none;
        m_worker.expectSame("remove(number)", manager().remove(ref, false), m_model.remove(ref, none, false));
    }
}

void Files::useHandle(HandlePair& pair)
{
    m_worker.enter("uses a handle");
    std::ostringstream out;
    std::string modelOut;
    const unsigned int number = m_worker.below(400);
    switch (m_worker.below(8)) {
    case 0:
        pair.real->setPos(number);
        pair.model.setPos(number);
        break;
    case 1:
        m_worker.expectSame("read()", read(*pair.real, number), pair.model.read(number));
        break;
    case 2:
        m_worker.expectSame("dump()", pair.real->dump(out), pair.model.dump(modelOut, std::nullopt));
        break;
    case 3:
        m_worker.expectSame("readReadable()", pair.real->readReadable(out, number), pair.model.dump(modelOut, number));
        break;
    case 4:
        m_worker.expectSame("readHeader()", asText(pair.real->readHeader()), pair.model.readHeader());
        m_worker.expectSame("readFooter()", asText(pair.real->readFooter()), pair.model.readFooter());
        break;
    default:
        change(pair);
        break;
    }
    m_worker.expectSame("written text", out.str(), modelOut);
    compareBytes(pair);
}

void Files::stream()
{
    m_worker.enter("streams into a file");
    const std::string name = m_prefix + "stream";
    const auto buffer = manager().getFileStreamBuf();
    const int ref = ++m_nextRef;
    m_worker.expectSame("create()", buffer->create(name, 0, ref), true);
    std::optional<ModelHandle> model = m_model.create(name, 0, ref, 0);
    std::ostream out(buffer.get());
    std::string waiting;
    for (unsigned int count = 1 + m_worker.below(5); count > 0; --count) {
        const std::string text = someBytes();
        out << text;
        waiting += text;
        if (m_worker.below(2) == 0) {
            out.flush();
            model->write(std::exchange(waiting, ""), 0);
        }
    }
    buffer->close();
    model->write(waiting, 0);
    m_worker.expectSame("state of the stream", out.good() && !buffer->isOpen(), true);
    const Handle written = manager().open(ref);
    m_worker.expectSame("is there a handle", written != nullptr, true);
    HandlePair pair{written, *model};
    compareBytes(pair);
    std::string none;
    m_worker.expectSame("remove(name)", manager().remove(name, false), m_model.remove(name, none, false, order()));
}

void Files::appendToSharedFile()
{
    m_worker.enter("appends to the shared file");
    Handle file = manager().open(sharedName);
    if (!file) {
        file = manager().create(sharedName, 0, 0);
    }
    if (file) { // else another thread has just created it
        const std::string record = recordOf(m_worker.thread(), ++m_sharedRecords) + "\n";
        m_worker.expectSame("append()", file->append(record), record.size());
        m_worker.expectSame("number of owners is plausible", file->getUserCount() >= 2, true);
        if (file->getFileSize() > largestSharedFile) {
            manager().remove(sharedName, false);
        }
    }
}

/// Each record is whole, and those of one thread are in their order.
void Files::readSharedFile()
{
    m_worker.enter("reads the shared file");
    const Handle file = manager().open(sharedName);
    std::istringstream records(file ? read(*file, file->getFileSize()) : "");
    std::map<unsigned int, unsigned int> last;
    for (std::string record; std::getline(records, record);) {
        std::istringstream words(record);
        unsigned int thread = 0;
        unsigned int number = 0;
        words >> thread >> number;
        m_worker.expectSame("record", record, recordOf(thread, number));
        m_worker.expectSame("records of a thread are in order", number > std::exchange(last[thread], number), true);
    }
}

void Files::operate()
{
    const unsigned int choice = m_worker.below(20);
    if (choice < 3) {
        create();
    } else if (choice < 5) {
        open();
    } else if (choice == 5) {
        remove();
    } else if (choice == 6) {
        list();
    } else if (choice == 7) {
        stream();
    } else if (choice < 11) {
        appendToSharedFile();
    } else if (choice == 11) {
        readSharedFile();
    } else if (!m_handles.empty()) {
        useHandle(m_handles[m_worker.below(static_cast<unsigned int>(m_handles.size()))]);
    }
    m_model.emissions.clear();
}

} // namespace Corvane::Soak

/// The rules of the file system, written down a second time.
#include "tests/ramfs/fileModel.h"

#include <algorithm>
#include <iomanip>
#include <sstream>
#include <utility>

namespace Corvane::Testing {

ModelHandle::ModelHandle(const std::string& fileName, std::shared_ptr<ModelFile> entry, Emissions& emissions)
    : name(fileName), file(std::move(entry)), m_emissions(&emissions)
{
    emit(29, "FileHandleImpl: " + id());
}

void ModelHandle::setPos(unsigned long offset)
{
    emit(34, "setPos: " + id() + ", offset(" + std::to_string(offset) + ")");
    pos = std::min<std::size_t>(offset, file->all().size());
}

std::string ModelHandle::read(std::size_t length)
{
    const std::string all = file->all();
    std::string result;
    while (result.size() < length && pos < all.size()) {
        result += all[pos++];
    }
    return result;
}

std::pair<unsigned int, std::string> ModelHandle::writeAt(std::size_t& at, const std::optional<std::string>& data)
{
    std::string text = std::to_string(file->ref);
    if (!data) {
        return {0, text + " p_buffer is empty"};
    }
    if (at < file->header.size()) {
        text += " can't update header, Move the offset to the start of the content \n";
        at = file->header.size();
    }
    if (at > file->header.size() + file->content.size()) {
        text += " can't update header, Move the offset to the end of the content \n";
        at = file->header.size() + file->content.size();
    }
    const std::size_t needed = std::max(file->content.size(), at - file->header.size() + data->size());
    if (needed > file->storage) {
        file->storage = needed * 11 / 10;
        text += " FileEntry::lockFreeWrite() extending file vector to " + std::to_string(file->storage) + " bytes";
    }
    for (const char byte : *data) {
        const std::size_t index = at++ - file->header.size();
        if (index == file->content.size()) {
            file->content += byte;
        } else {
            file->content[index] = byte;
        }
    }
    return {static_cast<unsigned int>(data->size()), text};
}

unsigned int ModelHandle::write(const std::optional<std::string>& data, std::size_t length)
{
    emit(151, "write: " + id() + ", length(" + std::to_string(length) + ")");
    const auto [written, text] = writeAt(pos, data);
    emit(159, "write: FileEntry::write() returns <" + text + ">");
    return written;
}

unsigned int ModelHandle::append(const std::optional<std::string>& data, std::size_t length, bool byString)
{
    emit(byString ? 192 : 175, "append: " + id() + ", length(" + std::to_string(length) + ")");
    pos = file->all().size();
    const auto [written, text] = writeAt(pos, data);
    emit(byString ? 198 : 181, "append: FileEntry::write() returns <" + text + ">");
    return written;
}

void ModelHandle::insertHeader(const std::optional<std::string>& data, std::size_t length, bool byString)
{
    if (byString) {
        emit(210, "insertHeader: " + id());
    } else {
        emit(204, "insertHeader: " + id() + ", length('" + std::to_string(length) + "')");
    }
    if (data || length == 0) {
        file->header = data.value_or("");
    }
}

void ModelHandle::appendFooter(const std::optional<std::string>& data, std::size_t length)
{
    emit(216, "appendFooter: " + id() + ", length(" + std::to_string(length) + ")");
    if (data || length == 0) {
        file->footer = data.value_or("");
    }
}

std::string ModelHandle::readHeader()
{
    emit(223, "readHeader: " + id());
    return file->header;
}

std::string ModelHandle::readFooter()
{
    emit(229, "readFooter: " + name + "(fileRef=" + std::to_string(file->ref) + ")");
    return file->footer;
}

void ModelHandle::getCreationTime()
{
    emit(251, "getCreationTime: calling m_fileEntry->getCreationTime() with m_fileRef = " + std::to_string(file->ref));
}

bool ModelHandle::contentResize(std::size_t newSize)
{
    const bool grows = newSize > file->storage;
    file->storage = std::max(file->storage, newSize);
    emit(grows ? 268 : 264,
         "contentResize: calling m_fileEntry->contentResize() with m_fileRef = " + std::to_string(file->ref) +
             ", new size = " + std::to_string(newSize) + (grows ? " succeeds" : " failed"));
    return grows;
}

unsigned int ModelHandle::dump(std::string& out, std::optional<unsigned int> maxLength)
{
    const std::size_t headerSize = readHeader().size();
    const std::size_t footerSize = readFooter().size();
    const std::size_t beforeFooter = file->all().size() - footerSize;
    std::string written;
    bool text = true;
    unsigned int count = 0;
    char last = '\0';
    for (const std::string all = file->all(); pos < all.size();) {
        last = all[pos++];
        ++count;
        const bool isText = (last >= ' ' && last <= '~') || (last >= '\t' && last <= '\r');
        if (text && isText) {
            written += last;
        } else {
            const auto byte = static_cast<unsigned char>(last);
            written += "0123456789ABCDEF"[byte / 16];
            written += "0123456789ABCDEF"[byte % 16];
            text = false;
        }
        if (footerSize > 0 && count >= beforeFooter) {
            text = true;
        } else if (headerSize > 0 && count >= headerSize) {
            text = false;
        }
        if (maxLength && *maxLength >= 2 && written.size() >= *maxLength - 2) {
            out += written;
            return 0xFFFFFFFF;
        }
    }
    out += written;
    if (maxLength) {
        return static_cast<unsigned int>(written.size());
    }
    if (text && last == '\n') {
        return count;
    }
    out += "\n";
    return count + 1;
}

std::optional<ModelHandle> ModelDirectory::create(const std::string& name, std::size_t initialSize, int ref,
                                                  std::time_t time)
{
    emit(47, "create: fileName=" + name + ",initialSize=" + std::to_string(initialSize) +
                 ",fileRef=" + std::to_string(ref) + ")");
    if (exists(name)) {
        emit(91, "create: " + std::to_string(ref) + ",fileName=" + name + ",fileReference=" + std::to_string(ref));
        emit(95, "file (" + name + ") already exists");
        return std::nullopt;
    }
    const auto file = std::make_shared<ModelFile>();
    file->ref = ref == 0 ? ++m_counter : ref;
    file->storage = initialSize;
    emit(28, "FileEntry: " + std::to_string(file->ref) + ", initialSize=" + std::to_string(initialSize));
    std::string finalName = name;
    if (const std::size_t at = name.find("<date>"); at != std::string::npos) {
        std::tm local = {}; // std::localtime() shares one among threads
        ::localtime_r(&time, &local);
        std::ostringstream date;
        date << std::put_time(&local, "%Y%b%d-%H_%M_%S");
        finalName = name.substr(0, at) + date.str() + name.substr(at + 6);
    }
    files[finalName] = file;
    emit(91, "create: " + std::to_string(ref) + ",fileName=" + name + ",fileReference=" + std::to_string(file->ref));
    return ModelHandle(finalName, file, emissions);
}

std::optional<ModelHandle> ModelDirectory::openFound(const std::string& name)
{
    const auto file = files.at(name);
    if (file->marked) {
        files.erase(name);
    }
    return ModelHandle(name, file, emissions);
}

std::optional<ModelHandle> ModelDirectory::open(const std::string& name)
{
    emit(104, "open: fileName(" + name + ")");
    return exists(name) ? openFound(name) : std::nullopt;
}

const std::string* ModelDirectory::find(int ref, const Order& order) const
{
    const auto found =
        std::find_if(order.begin(), order.end(), [&](const std::string& name) { return files.at(name)->ref == ref; });
    return found == order.end() ? nullptr : &*found;
}

std::optional<ModelHandle> ModelDirectory::open(int ref, const Order& order)
{
    emit(126, "open: fileRef(" + std::to_string(ref) + ")");
    const std::string* const name = find(ref, order);
    return name != nullptr ? openFound(*name) : std::nullopt;
}

bool ModelDirectory::remove(const std::string& name, std::string& out, bool verbose, const Order& order)
{
    emit(180, "remove: filename(" + name + ")");
    std::string report = "File '";
    bool removed = false;
    if (files.erase(name) == 1) {
        report += name + "' deleted";
        removed = true;
    } else {
        const std::size_t date = name.find("<date>");
        const bool hasDate = date != std::string::npos;
        const std::string prefix = name.substr(0, date);
        const std::string suffix = hasDate ? name.substr(name.find('>') + 1) : "";
        for (const std::string& candidate : order) {
            if (candidate.substr(0, prefix.size()) == prefix && candidate.find(suffix) != std::string::npos) {
                files.erase(candidate);
                report += candidate + "' deleted - it " + (hasDate ? "contains" : "starts with") +
                          " entered pattern '" + name + "'";
                removed = true;
            }
        }
    }
    out += verbose ? report : "";
    return removed;
}

bool ModelDirectory::remove(int ref, std::string& out, bool verbose)
{
    emit(269, "remove fileRef(" + std::to_string(ref) + ")");
    bool removed = false;
    for (auto file = files.begin(); file != files.end();) {
        if (file->second->ref == ref) {
            file = files.erase(file);
            removed = true;
        } else {
            ++file;
        }
    }
    if (removed && verbose) {
        out += "File with reference number " + std::to_string(ref) + " was deleted\n";
    }
    return removed;
}

void ModelDirectory::removeAll()
{
    emit(303, "removeAll");
    files.clear();
}

long ModelDirectory::countOf(int ref) const
{
    return std::count_if(files.begin(), files.end(), [&](const auto& file) { return file.second->ref == ref; });
}

bool ModelDirectory::setDelayedDelete(int ref, const Order& order)
{
    emit(310, "setDelayedDelete fileRef(" + std::to_string(ref) + ")");
    const std::string* const name = find(ref, order);
    if (name == nullptr) {
        return false;
    }
    files.at(*name)->marked = true;
    return true;
}

std::vector<ModelHandle> ModelDirectory::openAll(const Order& order)
{
    std::vector<ModelHandle> handles;
    for (const std::string& name : order) {
        handles.emplace_back(name, files.at(name), emissions);
    }
    return handles;
}

} // namespace Corvane::Testing

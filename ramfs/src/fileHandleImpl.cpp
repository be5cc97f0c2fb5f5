// SPDX-License-Identifier: MIT
/// File handles: the traced operations on a file entry, and the readable dump.
#include "ramfs/src/fileHandleImpl.h"

#include <algorithm>
#include <cctype>
#include <new>
#include <ostream>
#include <streambuf>

#include "trace/emit.h"

namespace Corvane::RamFs::V1 {

namespace {

namespace TraceLine {
constexpr unsigned int construction = 29, setPos = 34, write = 151, writeResult = 159, append = 175, appendResult = 181,
                       appendString = 192, appendStringResult = 198, insertHeader = 204, insertHeaderString = 210,
                       appendFooter = 216, readHeader = 223, readFooter = 229, getCreationTime = 251,
                       contentResizeFailed = 264, contentResized = 268;
}

/// What a limited dump returns when it was cut.
constexpr unsigned int outputCut = UINT32_MAX;

const unsigned char* bytesOf(const char* data)
{
    return reinterpret_cast<const unsigned char*>(data);
}

const unsigned char* bytesOf(const std::string& data)
{
    return bytesOf(data.data());
}

/// Whether the most frequent operations have to be traced. What it takes to make their texts is kept out of them: it
/// would cost each of them as much as a small write.
bool isTraced()
{
    return tracepoint_enabled(com_brimlow_kelpsys_corvane, TRACE1);
}

/// Reaches the put area of any stream buffer.
struct PutArea : std::streambuf
{
    static bool hasRoom(const std::streambuf& buffer)
    {
        return (buffer.*&PutArea::pptr)() < (buffer.*&PutArea::epptr)();
    }
};

/// Does what os.put() does. A character that only goes into the put area is put there at once: os.put() would take
/// several times as long to find out that nothing else is to be done.
void put(std::ostream& os, char c)
{
    if (os.good() && os.tie() == nullptr && (os.flags() & std::ios_base::unitbuf) == 0 &&
        PutArea::hasRoom(*os.rdbuf())) {
        os.rdbuf()->sputc(c);
    } else {
        os.put(c);
    }
}

void putHex(std::ostream& os, unsigned char byte)
{
    static constexpr char digits[] = "0123456789ABCDEF";
    put(os, digits[byte >> 4U]);
    put(os, digits[byte & 0xFU]);
}

} // namespace

FileHandleIf::~FileHandleIf() = default;

// NOLINTNEXTLINE(modernize-pass-by-value): the directory still needs both
FileHandleImpl::FileHandleImpl(const std::string& name, const std::shared_ptr<FileEntry>& entry)
    : m_fileName(name), m_fileEntry(entry)
{
    Trace::trace1(__FILE__, TraceLine::construction, [&](std::ostream& msg) {
        msg << "FileHandleImpl: " << m_fileName << " fileRef(" << m_fileEntry->getFileRef() << ")";
    });
}

[[gnu::noinline, gnu::cold]] void FileHandleImpl::traceSetPos(unsigned long offset) const
{
    Trace::trace1(__FILE__, TraceLine::setPos, [&](std::ostream& msg) {
        msg << "setPos: " << m_fileName << " fileRef(" << m_fileEntry->getFileRef() << "), offset(" << offset << ")";
    });
}

void FileHandleImpl::setPos(unsigned long offset)
{
    if (isTraced()) {
        traceSetPos(offset);
    }
    // A file may be larger than the largest position.
    const std::uint64_t end = std::min<std::uint64_t>(getFileSize(), FileEntry::maxSize);
    m_pos = static_cast<unsigned int>(std::min<std::uint64_t>(offset, end));
}

unsigned int FileHandleImpl::read(unsigned char* buffer, unsigned int length)
{
    return m_fileEntry->read(m_pos, buffer, length);
}

unsigned int FileHandleImpl::dump(std::ostream& os)
{
    return dump(os, 0, false);
}

unsigned int FileHandleImpl::readReadable(std::ostream& os, unsigned int maxLength)
{
    return dump(os, maxLength, true);
}

unsigned int FileHandleImpl::dump(std::ostream& os, unsigned int maxLength, bool limited)
{
    constexpr std::uint64_t never = std::uint64_t{UINT32_MAX} + 1;
    const std::size_t headerSize = readHeader().size();
    const std::size_t footerSize = readFooter().size();
    // Both boundaries count from the start of this call, wherever in the file it began. All is counted in 32 bits: so a
    // limit of 0 or 1 wraps round to one that is never reached.
    const auto endOfContent = static_cast<unsigned int>(getFileSize() - footerSize);
    const std::uint64_t contentStart = headerSize != 0 ? headerSize : never;
    const std::uint64_t footerStart = footerSize != 0 ? endOfContent : never;
    const std::uint64_t limit = limited ? maxLength - 2 : never;
    bool textMode = true;
    unsigned int count = 0;
    unsigned int outLength = 0;
    unsigned char byte = 0;
    while (read(&byte, 1) == 1) {
        ++count;
        if (textMode && (std::isprint(byte) != 0 || std::isspace(byte) != 0)) {
            put(os, static_cast<char>(byte));
            outLength += 1;
        } else {
            putHex(os, byte);
            outLength += 2;
            textMode = false;
        }
        if (footerStart <= count) {
            textMode = true;
        } else if (contentStart <= count) {
            textMode = false;
        }
        if (outLength >= limit) {
            return outputCut;
        }
    }
    if (limited) {
        return outLength;
    }
    if (textMode && byte == '\n') {
        return count;
    }
    put(os, '\n');
    return count + 1;
}

/// An operation that copies bytes into the file, and what the trace says about it.
struct FileHandleImpl::Transfer
{
    unsigned int (FileEntry::*operation)(unsigned int&, const unsigned char*, std::uint64_t, FileEntry::Notes*);
    const char* name;
    unsigned int line;
    unsigned int resultLine;
};

const FileHandleImpl::Transfer FileHandleImpl::writing{&FileEntry::tryWrite, "write", TraceLine::write,
                                                       TraceLine::writeResult};
const FileHandleImpl::Transfer FileHandleImpl::appending{&FileEntry::tryAppend, "append", TraceLine::append,
                                                         TraceLine::appendResult};
const FileHandleImpl::Transfer FileHandleImpl::appendingString{&FileEntry::tryAppend, "append", TraceLine::appendString,
                                                               TraceLine::appendStringResult};

[[gnu::noinline, gnu::cold]] unsigned int FileHandleImpl::traced(const Transfer& transfer, const unsigned char* data,
                                                                 std::uint64_t length)
{
    Trace::trace1(__FILE__, transfer.line, [&](std::ostream& msg) {
        msg << transfer.name << ": " << m_fileName << " fileRef(" << m_fileEntry->getFileRef() << "), length(" << length
            << ")";
    });
    FileEntry::Notes notes;
    const unsigned int bytesWritten = ((*m_fileEntry).*transfer.operation)(m_pos, data, length, &notes);
    try {
        Trace::trace1(__FILE__, transfer.resultLine, [&](std::ostream& msg) {
            msg << transfer.name << ": FileEntry::write() returns <" << m_fileEntry->textOf(notes) << ">";
        });
    } catch (const std::bad_alloc&) {
        // The bytes are written. A caller that got this exception would write them again.
    }
    return bytesWritten;
}

unsigned int FileHandleImpl::writeFrom(const unsigned char* data, std::uint64_t length)
{
    return isTraced() ? traced(writing, data, length) : m_fileEntry->tryWrite(m_pos, data, length, nullptr);
}

unsigned int FileHandleImpl::write(const unsigned char* data, unsigned int length)
{
    return writeFrom(data, length);
}

unsigned int FileHandleImpl::write(const char* data, unsigned int length)
{
    return write(bytesOf(data), length);
}

unsigned int FileHandleImpl::write(const std::string& data)
{
    return data.size() > FileEntry::maxSize ? writeFrom(bytesOf(data), data.size())
                                            : write(bytesOf(data), static_cast<unsigned int>(data.size()));
}

unsigned int FileHandleImpl::append(const unsigned char* data, unsigned int length)
{
    return isTraced() ? traced(appending, data, length) : m_fileEntry->tryAppend(m_pos, data, length, nullptr);
}

unsigned int FileHandleImpl::append(const char* data, unsigned int length)
{
    return append(bytesOf(data), length);
}

unsigned int FileHandleImpl::append(const std::string& data)
{
    return isTraced() ? traced(appendingString, bytesOf(data), data.size())
                      : m_fileEntry->tryAppend(m_pos, bytesOf(data), data.size(), nullptr);
}

void FileHandleImpl::insertHeader(const unsigned char* data, unsigned int length)
{
    Trace::trace1(__FILE__, TraceLine::insertHeader, [&](std::ostream& msg) {
        msg << "insertHeader: " << m_fileName << " fileRef(" << m_fileEntry->getFileRef() << "), length('" << length
            << "')";
    });
    m_fileEntry->insertHeader(data, length);
}

void FileHandleImpl::insertHeader(const std::string& data)
{
    Trace::trace1(__FILE__, TraceLine::insertHeaderString, [&](std::ostream& msg) {
        msg << "insertHeader: " << m_fileName << " fileRef(" << m_fileEntry->getFileRef() << ")";
    });
    if (data.size() <= FileEntry::maxSize) {
        m_fileEntry->insertHeader(bytesOf(data), static_cast<unsigned int>(data.size()));
    }
}

void FileHandleImpl::appendFooter(const unsigned char* data, unsigned int length)
{
    Trace::trace1(__FILE__, TraceLine::appendFooter, [&](std::ostream& msg) {
        msg << "appendFooter: " << m_fileName << " fileRef(" << m_fileEntry->getFileRef() << "), length(" << length
            << ")";
    });
    m_fileEntry->appendFooter(data, length);
}

std::vector<unsigned char> FileHandleImpl::readHeader()
{
    Trace::trace1(__FILE__, TraceLine::readHeader, [&](std::ostream& msg) {
        msg << "readHeader: " << m_fileName << " fileRef(" << m_fileEntry->getFileRef() << ")";
    });
    return m_fileEntry->readHeader();
}

std::vector<unsigned char> FileHandleImpl::readFooter()
{
    Trace::trace1(__FILE__, TraceLine::readFooter, [&](std::ostream& msg) {
        msg << "readFooter: " << m_fileName << "(fileRef=" << m_fileEntry->getFileRef() << ")";
    });
    return m_fileEntry->readFooter();
}

std::string FileHandleImpl::getFileName() const
{
    return m_fileName;
}

int FileHandleImpl::getFileRef() const
{
    return m_fileEntry->getFileRef();
}

std::size_t FileHandleImpl::getFileSize() const
{
    return m_fileEntry->getFileSize();
}

std::time_t FileHandleImpl::getCreationTime() const
{
    Trace::trace1(__FILE__, TraceLine::getCreationTime, [&](std::ostream& msg) {
        msg << "getCreationTime: calling m_fileEntry->getCreationTime() with m_fileRef = " << m_fileEntry->getFileRef();
    });
    return m_fileEntry->getCreationTime();
}

bool FileHandleImpl::contentResize(unsigned int newSize)
{
    const bool grew = m_fileEntry->contentResize(newSize);
    Trace::trace1(__FILE__, grew ? TraceLine::contentResized : TraceLine::contentResizeFailed, [&](std::ostream& msg) {
        msg << "contentResize: calling m_fileEntry->contentResize() with m_fileRef = " << m_fileEntry->getFileRef()
            << ", new size = " << newSize << (grew ? " succeeds" : " failed");
    });
    return grew;
}

unsigned int FileHandleImpl::getUserCount() const
{
    return m_fileEntry->getUserCount();
}

} // namespace Corvane::RamFs::V1

/// File handles: the traced operations on a file entry, and the readable dump.
#include "ramfs/src/fileHandleImpl.h"

#include <algorithm>
#include <cctype>
#include <ostream>

#include "trace/emit.h"

namespace Corvane::RamFs::V1 {

namespace {

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

void putHex(std::ostream& os, unsigned char byte)
{
    constexpr char digits[] = "0123456789ABCDEF";
    os.put(digits[byte >> 4U]);
    os.put(digits[byte & 0xFU]);
}

} // namespace

FileHandleIf::~FileHandleIf() = default;

// NOLINTNEXTLINE(modernize-pass-by-value): the directory goes on using both
FileHandleImpl::FileHandleImpl(const std::string& name, const std::shared_ptr<FileEntry>& entry)
    : m_fileName(name), m_fileEntry(entry)
{
    Trace::trace1(__FILE__, 29, [&](std::ostream& msg) {
        msg << "FileHandleImpl: " << m_fileName << " fileRef(" << m_fileEntry->getFileRef() << ")";
    });
}

void FileHandleImpl::setPos(unsigned long offset)
{
    Trace::trace1(__FILE__, 34, [&](std::ostream& msg) {
        msg << "setPos: " << m_fileName << " fileRef(" << m_fileEntry->getFileRef() << "), offset(" << offset << ")";
    });
    // A file that is larger than the largest position ends at that position here.
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
    const std::size_t headerSize = readHeader().size();
    const std::size_t footerSize = readFooter().size();
    const auto footerStart = static_cast<unsigned int>(getFileSize() - footerSize);
    bool textMode = true;
    unsigned int count = 0;
    unsigned int outLength = 0;
    unsigned char byte = 0;
    while (read(&byte, 1) == 1) {
        ++count;
        if (textMode && (std::isprint(byte) != 0 || std::isspace(byte) != 0)) {
            os.put(static_cast<char>(byte));
            outLength += 1;
        } else {
            putHex(os, byte);
            outLength += 2;
            textMode = false;
        }
        // Both boundaries count from the start of this call, wherever in the file it began.
        if (footerSize != 0 && footerStart <= count) {
            textMode = true;
        } else if (headerSize != 0 && headerSize <= count) {
            textMode = false;
        }
        // A limit below 2 wraps round and so is none.
        if (limited && outLength >= maxLength - 2) {
            return outputCut;
        }
    }
    if (limited) {
        return outLength;
    }
    if (textMode && byte == '\n') {
        return count;
    }
    os.put('\n');
    return count + 1;
}

void FileHandleImpl::traceWrite(std::uint64_t length) const
{
    Trace::trace1(__FILE__, 151, [&](std::ostream& msg) {
        msg << "write: " << m_fileName << " fileRef(" << m_fileEntry->getFileRef() << "), length(" << length << ")";
    });
}

void FileHandleImpl::traceWriteResult(const std::string& text) const
{
    Trace::trace1(__FILE__, 159,
                  [&](std::ostream& msg) { msg << "write: FileEntry::write() returns <" << text << ">"; });
}

unsigned int FileHandleImpl::write(const unsigned char* data, unsigned int length)
{
    traceWrite(length);
    const FileEntry::WriteResult result = m_fileEntry->write(m_pos, data, length);
    traceWriteResult(result.text);
    return result.bytesWritten;
}

unsigned int FileHandleImpl::write(const char* data, unsigned int length)
{
    return write(bytesOf(data), length);
}

unsigned int FileHandleImpl::write(const std::string& data)
{
    if (data.size() > FileEntry::maxSize) { // too long for a length, so too long for every file
        traceWrite(data.size());
        traceWriteResult(m_fileEntry->sizeLimitText());
        return 0;
    }
    return write(bytesOf(data), static_cast<unsigned int>(data.size()));
}

unsigned int FileHandleImpl::append(const unsigned char* data, unsigned int length)
{
    return appendFrom(data, length, 175, 181);
}

unsigned int FileHandleImpl::append(const char* data, unsigned int length)
{
    return append(bytesOf(data), length);
}

unsigned int FileHandleImpl::append(const std::string& data)
{
    return appendFrom(bytesOf(data), data.size(), 192, 198);
}

unsigned int FileHandleImpl::appendFrom(const unsigned char* data, std::uint64_t length, unsigned int callLine,
                                        unsigned int resultLine)
{
    Trace::trace1(__FILE__, callLine, [&](std::ostream& msg) {
        msg << "append: " << m_fileName << " fileRef(" << m_fileEntry->getFileRef() << "), length(" << length << ")";
    });
    FileEntry::AppendResult result{m_pos, 0, {}};
    if (length > FileEntry::maxSize) {
        result.text = m_fileEntry->sizeLimitText();
    } else {
        result = m_fileEntry->append(data, static_cast<unsigned int>(length));
    }
    // Data that were given and not written were too many, and that leaves the position alone.
    const bool refused = data != nullptr && result.bytesWritten < length;
    if (!refused) {
        m_pos = result.position;
    }
    Trace::trace1(__FILE__, resultLine,
                  [&](std::ostream& msg) { msg << "append: FileEntry::write() returns <" << result.text << ">"; });
    return result.bytesWritten;
}

void FileHandleImpl::insertHeader(const unsigned char* data, unsigned int length)
{
    Trace::trace1(__FILE__, 204, [&](std::ostream& msg) {
        msg << "insertHeader: " << m_fileName << " fileRef(" << m_fileEntry->getFileRef() << "), length('" << length
            << "')";
    });
    m_fileEntry->insertHeader(data, length);
}

void FileHandleImpl::insertHeader(const std::string& data)
{
    Trace::trace1(__FILE__, 210, [&](std::ostream& msg) {
        msg << "insertHeader: " << m_fileName << " fileRef(" << m_fileEntry->getFileRef() << ")";
    });
    if (data.size() <= FileEntry::maxSize) {
        m_fileEntry->insertHeader(bytesOf(data), static_cast<unsigned int>(data.size()));
    }
}

void FileHandleImpl::appendFooter(const unsigned char* data, unsigned int length)
{
    Trace::trace1(__FILE__, 216, [&](std::ostream& msg) {
        msg << "appendFooter: " << m_fileName << " fileRef(" << m_fileEntry->getFileRef() << "), length(" << length
            << ")";
    });
    m_fileEntry->appendFooter(data, length);
}

std::vector<unsigned char> FileHandleImpl::readHeader()
{
    Trace::trace1(__FILE__, 223, [&](std::ostream& msg) {
        msg << "readHeader: " << m_fileName << " fileRef(" << m_fileEntry->getFileRef() << ")";
    });
    return m_fileEntry->readHeader();
}

std::vector<unsigned char> FileHandleImpl::readFooter()
{
    Trace::trace1(__FILE__, 229, [&](std::ostream& msg) {
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
    Trace::trace1(__FILE__, 251, [&](std::ostream& msg) {
        msg << "getCreationTime: calling m_fileEntry->getCreationTime() with m_fileRef = " << m_fileEntry->getFileRef();
    });
    return m_fileEntry->getCreationTime();
}

bool FileHandleImpl::contentResize(unsigned int newSize)
{
    const bool grew = m_fileEntry->contentResize(newSize);
    const auto writeText = [&](std::ostream& msg) {
        msg << "contentResize: calling m_fileEntry->contentResize() with m_fileRef = " << m_fileEntry->getFileRef()
            << ", new size = " << newSize << (grew ? " succeeds" : " failed");
    };
    if (grew) {
        Trace::trace1(__FILE__, 268, writeText);
    } else {
        Trace::trace1(__FILE__, 264, writeText);
    }
    return grew;
}

unsigned int FileHandleImpl::getUserCount() const
{
    return m_fileEntry->getUserCount();
}

} // namespace Corvane::RamFs::V1

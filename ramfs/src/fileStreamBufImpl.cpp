/// Collects streamed text and moves it into a file.
#include "ramfs/src/fileStreamBufImpl.h"

#include <cstdint>
#include <exception>

#include <ramfs/fileManagerIf.h>

namespace Corvane::RamFs::V1 {

FileStreamBufIf::~FileStreamBufIf() = default;

FileStreamBufImpl::~FileStreamBufImpl()
{
    if (m_fileHandle) {
        try {
            writePendingText();
        } catch (const std::exception&) {
            // Nobody is left to hear of it: the text is lost like that of any failed transfer.
        }
        // Not through the directory, which does no more than this: at the end of the process it may be gone already.
        m_fileHandle.reset();
    }
}

bool FileStreamBufImpl::create(const std::string& fileName, unsigned int initialSize, int fileRef)
{
    close();
    m_fileHandle = FileManagerIf::getInstance().create(fileName, initialSize, fileRef);
    return isOpen();
}

bool FileStreamBufImpl::open(int fileRef)
{
    close();
    m_fileHandle = FileManagerIf::getInstance().open(fileRef);
    return isOpen();
}

bool FileStreamBufImpl::isOpen() const
{
    return m_fileHandle != nullptr;
}

void FileStreamBufImpl::close()
{
    sync();
    FileManagerIf::getInstance().close(m_fileHandle);
}

std::string FileStreamBufImpl::getFileName() const
{
    return m_fileHandle->getFileName();
}

int FileStreamBufImpl::getFileRef() const
{
    return m_fileHandle->getFileRef();
}

int FileStreamBufImpl::sync()
{
    if (m_fileHandle) {
        writePendingText();
    }
    m_stream.str(std::string());
    return 0;
}

FileStreamBufImpl::int_type FileStreamBufImpl::overflow(int_type c)
{
    if (traits_type::eq_int_type(c, traits_type::eof())) {
        return traits_type::eof();
    }
    if (isOpen()) {
        // Past the stream, which would swallow a failed allocation and then drop all further text.
        m_stream.rdbuf()->sputc(traits_type::to_char_type(c));
    }
    return c;
}

void FileStreamBufImpl::writePendingText()
{
    const std::string text = m_stream.str();
    if (text.size() > UINT32_MAX) {
        m_fileHandle->write(text); // refuses what no length can tell
    } else {
        m_fileHandle->write(text.data(), static_cast<unsigned int>(text.size()));
    }
}

} // namespace Corvane::RamFs::V1

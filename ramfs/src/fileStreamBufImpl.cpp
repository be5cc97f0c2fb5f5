// SPDX-License-Identifier: MIT
/// Collects streamed text and moves it into a file.
#include "ramfs/src/fileStreamBufImpl.h"

#include <algorithm>
#include <cstdint>
#include <exception>

#include <ramfs/fileManagerIf.h>

namespace Corvane::RamFs::V1 {

namespace {

/// A flush keeps this much memory for the next text and gives the rest back.
constexpr std::size_t keptCapacity = 4096;

/// Room for further characters is made in steps, so that a large text touches little memory that it may never use.
constexpr std::size_t roomStep = 4096;

} // namespace

FileStreamBufIf::~FileStreamBufIf() = default;

FileStreamBufImpl::~FileStreamBufImpl()
{
    if (m_fileHandle) {
        try {
            writePendingText();
        } catch (const std::exception&) {
            // A destructor can't report it: the text is lost.
        }
        FileManagerIf::getInstance().close(m_fileHandle);
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
    FileManagerIf::getInstance().close(m_fileHandle); // closing a file is the directory's task
    freeText();
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
    m_length = 0;
    if (m_text.capacity() > keptCapacity) {
        freeText();
    }
    return 0;
}

FileStreamBufImpl::int_type FileStreamBufImpl::overflow(int_type c)
{
    if (traits_type::eq_int_type(c, traits_type::eof())) {
        return traits_type::eof();
    }
    if (isOpen()) {
        if (m_length == m_text.size()) {
            growText();
        }
        m_text[m_length++] = traits_type::to_char_type(c);
    }
    return c;
}

[[gnu::noinline, gnu::cold]] void FileStreamBufImpl::growText()
{
    m_text.resize(m_length + 1);
    m_text.resize(std::min(m_text.capacity(), m_length + roomStep));
}

void FileStreamBufImpl::freeText()
{
    m_text.resize(m_length); // not nothing, if a class derived from this one keeps the text
    m_text.shrink_to_fit();
}

void FileStreamBufImpl::writePendingText()
{
    if (m_length > UINT32_MAX) {
        m_text.resize(m_length);
        m_fileHandle->write(m_text); // refused: no file can hold it, and no 32-bit length can express it
    } else {
        m_fileHandle->write(m_text.data(), static_cast<unsigned int>(m_length));
    }
}

} // namespace Corvane::RamFs::V1

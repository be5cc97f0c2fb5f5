/// What the files are measured beside: floors, which do the same duty by hand with the same locks and copies, and
/// peers.
#ifndef CORVANE_BENCH_RAMFSPEERS_H
#define CORVANE_BENCH_RAMFSPEERS_H

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstring>
#include <memory>
#include <mutex>
#include <ostream>
#include <shared_mutex>
#include <sstream>
#include <streambuf>
#include <string>
#include <unordered_map>
#include <vector>

#ifdef CORVANE_HAS_LEVELDB
#include <leveldb/env.h>
#include <leveldb/helpers/memenv.h>
#endif

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <ramfs/fileManagerIf.h>

#include "bench/sink.h"

namespace Corvane::Bench {

inline const std::string tmpfs = "/dev/shm/";

inline RamFs::V1::FileManagerIf& directory()
{
    return RamFs::V1::FileManagerIf::getInstance();
}

// Files. Each is new and empty, with room for `reserve` bytes if it can have that, and is gone with its object.

class OurFile
{
public:
    explicit OurFile(std::size_t reserve) : m_handle(directory().create("file", static_cast<unsigned int>(reserve), 0))
    {
    }
    ~OurFile() { directory().remove("file", false); }
    OurFile(const OurFile&) = delete;
    OurFile& operator=(const OurFile&) = delete;

    void append(const char* data, std::size_t length) { m_handle->append(data, static_cast<unsigned int>(length)); }
    void writeAndReadBack(const char* data, char* buffer, std::size_t length)
    {
        m_handle->setPos(0);
        m_handle->write(data, static_cast<unsigned int>(length));
        m_handle->setPos(0);
        m_handle->read(reinterpret_cast<unsigned char*>(buffer), static_cast<unsigned int>(length));
    }

private:
    std::shared_ptr<RamFs::V1::FileHandleIf> m_handle;
};

class FloorFile
{
public:
    explicit FloorFile(std::size_t reserve) : m_content(reserve) {}
    virtual ~FloorFile() = default;
    FloorFile(const FloorFile&) = delete;
    FloorFile& operator=(const FloorFile&) = delete;

    void setPos(std::size_t offset)
    {
        const std::shared_lock<std::shared_mutex> lock(m_mutex);
        m_pos = std::min(offset, m_size);
    }
    void append(const char* data, std::size_t length)
    {
        const std::unique_lock<std::shared_mutex> lock(m_mutex);
        std::memcpy(m_content.data() + m_size, data, length);
        m_size += length;
    }
    void write(const char* data, std::size_t length)
    {
        const std::unique_lock<std::shared_mutex> lock(m_mutex);
        std::memcpy(m_content.data() + m_pos, data, length);
        m_pos += length;
        m_size = std::max(m_size, m_pos);
    }
    [[gnu::noinline]] virtual std::size_t read(char* buffer, std::size_t length)
    {
        const std::shared_lock<std::shared_mutex> lock(m_mutex);
        const std::size_t count = std::min(length, m_size - m_pos);
        std::memcpy(buffer, m_content.data() + m_pos, count);
        m_pos += count;
        return count;
    }
    void writeAndReadBack(const char* data, char* buffer, std::size_t length)
    {
        setPos(0);
        write(data, length);
        setPos(0);
        read(buffer, length);
    }

private:
    std::vector<char> m_content;
    std::size_t m_size = 0;
    std::size_t m_pos = 0;
    std::shared_mutex m_mutex;
};

/// Grows by a tenth as ours does, with the means of the standard library and without a lock.
class VectorFile
{
public:
    explicit VectorFile(std::size_t reserve) : m_content(reserve) {}

    void append(const char* data, std::size_t length)
    {
        const std::size_t newSize = m_size + length;
        if (m_content.size() < newSize) {
            m_content.resize(newSize + newSize / 10);
        }
        std::memcpy(m_content.data() + m_size, data, length);
        m_size = newSize;
    }

private:
    std::vector<char> m_content;
    std::size_t m_size = 0;
};

/// A file of the kernel, in memory.
class KernelFile
{
public:
    ~KernelFile() { close(m_file); }
    KernelFile(const KernelFile&) = delete;
    KernelFile& operator=(const KernelFile&) = delete;

    void append(const char* data, std::size_t length) { m_failed |= ::write(m_file, data, length) < 0; }
    void writeAndReadBack(const char* data, char* buffer, std::size_t length)
    {
        m_failed |= pwrite(m_file, data, length, 0) < 0 || pread(m_file, buffer, length, 0) < 0;
    }

protected:
    explicit KernelFile(int file) : m_file(file) {}

private:
    int m_file;
    bool m_failed = false;
};

class MemfdFile : public KernelFile
{
public:
    explicit MemfdFile(std::size_t) : KernelFile(memfd_create("file", 0)) {}
};

class TmpfsFile : public KernelFile
{
public:
    explicit TmpfsFile(std::size_t) : KernelFile(open(tmpfs.c_str(), O_TMPFILE | O_RDWR, 0600)) {}
};

class StringStreamFile
{
public:
    explicit StringStreamFile(std::size_t) {}

    void append(const char* data, std::size_t length) { m_stream.write(data, static_cast<std::streamsize>(length)); }
    void writeAndReadBack(const char* data, char* buffer, std::size_t length)
    {
        m_stream.seekp(0);
        m_stream.write(data, static_cast<std::streamsize>(length));
        m_stream.seekg(0);
        m_stream.read(buffer, static_cast<std::streamsize>(length));
    }

private:
    std::stringstream m_stream;
};

#ifdef CORVANE_HAS_LEVELDB
class LevelDbFile
{
public:
    explicit LevelDbFile(std::size_t) : m_directory(leveldb::NewMemEnv(leveldb::Env::Default()))
    {
        leveldb::WritableFile* file = nullptr;
        m_directory->NewWritableFile("/file", &file);
        m_file.reset(file);
    }

    void append(const char* data, std::size_t length) { m_file->Append(leveldb::Slice(data, length)); }

private:
    std::unique_ptr<leveldb::Env> m_directory;
    std::unique_ptr<leveldb::WritableFile> m_file;
};
#endif

// Directories.

struct OurDirectory
{
    void create(const std::string& name) { directory().create(name, 0, 0); }
    void open(const std::string& name) { directory().open(name); }
    bool exists(const std::string& name) { return directory().exists(name); }
    void remove(const std::string& name) { directory().remove(name, false); }
};

class FloorDirectory
{
public:
    void create(const std::string& name)
    {
        std::shared_ptr<FloorFile> file;
        {
            const std::unique_lock<std::shared_mutex> lock(m_mutex);
            if (m_files.find(name) == m_files.end()) {
                file = std::make_shared<FloorFile>(0);
                m_files.emplace(name, file);
            }
        }
        std::make_shared<Handle>(Handle{name, file});
    }
    void open(const std::string& name)
    {
        const std::unique_lock<std::shared_mutex> lock(m_mutex);
        const auto file = m_files.find(name);
        if (file != m_files.end()) {
            std::make_shared<Handle>(Handle{name, file->second});
        }
    }
    bool exists(const std::string& name)
    {
        const std::shared_lock<std::shared_mutex> lock(m_mutex);
        return m_files.find(name) != m_files.end();
    }
    void remove(const std::string& name)
    {
        decltype(m_files)::node_type file; // freed after the lock
        const std::unique_lock<std::shared_mutex> lock(m_mutex);
        file = m_files.extract(name);
    }

private:
    struct Handle
    {
        std::string name;
        std::shared_ptr<FloorFile> file;
    };

    std::unordered_map<std::string, std::shared_ptr<FloorFile>> m_files;
    std::shared_mutex m_mutex;
};

class TmpfsDirectory
{
public:
    TmpfsDirectory() { m_failed |= mkdtemp(m_folder.data()) == nullptr; }
    ~TmpfsDirectory() { rmdir(m_folder.c_str()); }
    TmpfsDirectory(const TmpfsDirectory&) = delete;
    TmpfsDirectory& operator=(const TmpfsDirectory&) = delete;

    void create(const std::string& name) { close(::open(path(name).c_str(), O_RDWR | O_CREAT | O_EXCL, 0600)); }
    void open(const std::string& name) { close(::open(path(name).c_str(), O_RDWR)); }
    bool exists(const std::string& name) { return access(path(name).c_str(), F_OK) == 0; }
    void remove(const std::string& name) { m_failed |= unlink(path(name).c_str()) != 0; }

private:
    std::string path(const std::string& name) const { return m_folder + "/" + name; }

    std::string m_folder = tmpfs + "corvane-bench.XXXXXX";
    bool m_failed = false;
};

// Streams.

/// Takes every character through overflow() and moves the text into a file at each flush; keeps little memory then.
class FloorStreamBuf : public std::streambuf
{
public:
    explicit FloorStreamBuf(FloorFile& file) : m_file(file) {}

protected:
    int sync() override
    {
        m_file.write(m_text.data(), m_text.size());
        m_text.clear();
        if (m_text.capacity() > 4096) {
            m_text.shrink_to_fit();
        }
        return 0;
    }
    int_type overflow(int_type c) override
    {
        if (traits_type::eq_int_type(c, traits_type::eof())) {
            return traits_type::eof();
        }
        m_text.push_back(traits_type::to_char_type(c));
        return c;
    }

private:
    FloorFile& m_file;
    std::string m_text;
};

/// Does what a dump of a content without header and footer has to do.
template <typename Put>
void dumpFloor(FloorFile& file, const Put& put)
{
    static constexpr char digits[] = "0123456789ABCDEF";
    bool isText = true;
    char byte = 0;
    while (file.read(&byte, 1) == 1) {
        const auto value = static_cast<unsigned char>(byte);
        if (isText && (std::isprint(value) != 0 || std::isspace(value) != 0)) {
            put(byte);
        } else {
            put(digits[value >> 4U]);
            put(digits[value & 0xFU]);
            isText = false;
        }
    }
}

} // namespace Corvane::Bench

#endif

/// A second, plain implementation of the file system's rules: strings and maps, one byte at a time, one thread, no
/// limits. What it emits is a list of lines such as "151 write: ...".
#ifndef CORVANE_TESTS_RAMFS_FILEMODEL_H
#define CORVANE_TESTS_RAMFS_FILEMODEL_H

#include <ctime>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Corvane::Testing {

struct ModelFile
{
    int ref = 0;
    std::string header;
    std::string content;
    std::string footer;
    std::size_t storage = 0;
    bool marked = false;

    std::string all() const { return header + content + footer; }
};

using Emissions = std::vector<std::string>;

/// A handle. An empty optional stands for null data.
class ModelHandle
{
public:
    ModelHandle(const std::string& name, std::shared_ptr<ModelFile> file, Emissions& emissions);

    void setPos(unsigned long offset);
    std::string read(std::size_t length);
    unsigned int write(const std::optional<std::string>& data, std::size_t length);
    unsigned int append(const std::optional<std::string>& data, std::size_t length, bool byString);
    void insertHeader(const std::optional<std::string>& data, std::size_t length, bool byString);
    void appendFooter(const std::optional<std::string>& data, std::size_t length);
    std::string readHeader();
    std::string readFooter();
    void getCreationTime();
    bool contentResize(std::size_t newSize);
    /// With a limit it is readReadable().
    unsigned int dump(std::string& out, std::optional<unsigned int> maxLength);

    std::string name;
    std::shared_ptr<ModelFile> file;
    std::size_t pos = 0;

private:
    std::string id() const { return name + " fileRef(" + std::to_string(file->ref) + ")"; }
    void emit(int line, const std::string& text) { m_emissions->push_back(std::to_string(line) + " " + text); }
    /// Returns  the number of bytes written and the text about it.
    std::pair<unsigned int, std::string> writeAt(std::size_t& at, const std::optional<std::string>& data);

    Emissions* m_emissions;
};

/// The directory. If a result depends on the order in which files are visited, the caller passes that order.
class ModelDirectory
{
public:
    using Order = std::vector<std::string>;

    explicit ModelDirectory(int counter) : m_counter(counter) {}

    /// `time` is the creation time, if a file is created.
    std::optional<ModelHandle> create(const std::string& name, std::size_t initialSize, int ref, std::time_t time);
    std::optional<ModelHandle> open(const std::string& name);
    std::optional<ModelHandle> open(int ref, const Order& order);
    bool remove(const std::string& name, std::string& out, bool verbose, const Order& order);
    bool remove(int ref, std::string& out, bool verbose);
    void removeAll();
    bool exists(int ref) const { return countOf(ref) > 0; }
    bool exists(const std::string& name) const { return files.count(name) != 0; }
    bool setDelayedDelete(int ref, const Order& order);
    std::vector<ModelHandle> openAll(const Order& order);

    /// Returns  the number of files with the number.
    long countOf(int ref) const;

    std::map<std::string, std::shared_ptr<ModelFile>> files;
    Emissions emissions;

private:
    void emit(int line, const std::string& text) { emissions.push_back(std::to_string(line) + " " + text); }
    /// Returns  the first file with the number; null if there is none.
    const std::string* find(int ref, const Order& order) const;
    std::optional<ModelHandle> openFound(const std::string& name);

    int m_counter;
};

} // namespace Corvane::Testing

#endif

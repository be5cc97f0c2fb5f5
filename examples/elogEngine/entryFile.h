/// A file that entries are appended to, and that holds them through a loss of power once append() has returned.
#ifndef ELOGENGINE_ENTRYFILE_H
#define ELOGENGINE_ENTRYFILE_H

#include <string>

namespace ElogEngine {

class EntryFile
{
public:
    /// Opens the file, or creates it. A last line that was cut off is ended, so that no entry is joined to it.
    ///
    /// Errors  std::system_error
    explicit EntryFile(const std::string& path);
    ~EntryFile();

    /// Errors  std::system_error; part of `lines` may be in the file then.
    void append(const std::string& lines);

    EntryFile(const EntryFile&) = delete;
    EntryFile& operator=(const EntryFile&) = delete;

private:
    const std::string m_path;
    const int m_fd;
};

} // namespace ElogEngine

#endif

/// Where the shell's lines come from: a file or a pipe, or a terminal.
#ifndef UNITSHELL_LINESOURCE_H
#define UNITSHELL_LINESOURCE_H

#include <array>
#include <cstddef>
#include <memory>
#include <string>

namespace UnitShell {

constexpr const char* prompt = "unit> ";

/// A longer line is not kept whole: its first maxLineLength + 1 bytes stand for it.
constexpr std::size_t maxLineLength = std::size_t{1024} * 1024;

class LineSource
{
public:
    virtual ~LineSource() = default;

    /// Sets `line` to the next line, without its line feed. Returns false at the end of input and after an interrupt.
    virtual bool next(std::string& line) = 0;
};

/// Lines read from a file descriptor.
class FileLines : public LineSource
{
public:
    /// Reads from `descriptor`, standard input, which stays the caller's, each line after a prompt.
    explicit FileLines(int descriptor, const char* promptText = "");
    /// Opens a file; throws std::system_error if that fails.
    explicit FileLines(const std::string& path);
    ~FileLines() override;
    FileLines(const FileLines&) = delete;
    FileLines& operator=(const FileLines&) = delete;

    bool next(std::string& line) override;

private:
    bool fill();

    std::string m_name; // in messages
    int m_descriptor;
    bool m_isOwn;
    std::string m_prompt;
    std::array<char, 4096> m_buffer = {};
    std::size_t m_pos = 0;
    std::size_t m_end = 0;
};

/// Returns lines typed at the terminal that is standard input and output, each after a prompt; with line editing and
/// history if the shell was built with them.
std::unique_ptr<LineSource> terminalLines();

} // namespace UnitShell

#endif

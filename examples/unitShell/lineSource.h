// SPDX-License-Identifier: MIT
/// Where the shell's lines come from: a file or a pipe, or a terminal.
#ifndef UNITSHELL_LINESOURCE_H
#define UNITSHELL_LINESOURCE_H

#include <array>
#include <cstddef>
#include <memory>
#include <string>

namespace UnitShell {

constexpr const char* prompt = "unit> ";

/// Of a longer line only the first maxLineLength + 1 bytes are kept.
constexpr std::size_t maxLineLength = std::size_t{1024} * 1024;

class LineSource
{
public:
    virtual ~LineSource() = default;

    /// Sets `line` to the next line, without its line feed.
    ///
    /// Returns  false at the end of input and after a signal.
    virtual bool next(std::string& line) = 0;
};

/// Lines read from a file descriptor, which stays the caller's.
class FileLines : public LineSource
{
public:
    /// `name` stands for the file in messages. `promptText` is written before each line.
    FileLines(int descriptor, std::string name, const char* promptText = "");

    bool next(std::string& line) override;

private:
    bool fill();

    const std::string m_name;
    const int m_descriptor;
    const std::string m_prompt;
    std::array<char, 4096> m_buffer = {};
    std::size_t m_pos = 0;
    std::size_t m_end = 0;
};

/// Returns  lines typed at the terminal, which is standard input and output, each after a prompt; with line editing and
///          history if the shell is built with libedit.
std::unique_ptr<LineSource> terminalLines();

} // namespace UnitShell

#endif

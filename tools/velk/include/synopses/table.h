// SPDX-License-Identifier: MIT
/// Questions about synopses: what a line means, which lines there are, what may follow some words, and a drawing.
///
/// The answers come from a syntax graph. The library's own code builds it from the synopses. No handler runs, and
/// nothing is traced. The tables that the process has registered stay as they are.
#ifndef CORVANE_SYNOPSES_TABLE_H
#define CORVANE_SYNOPSES_TABLE_H

#include <cstddef>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <synopses/finding.h>

namespace Corvane::Synopses {

class Graph;

/// Thrown for a synopsis of more than 1,000 words, and for synopses whose graph has more than 2,000,000 connections
/// between words.
class TooLarge : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// What a word of a line is.
enum class Role
{
    command,     ///< the name of a command
    keyword,     ///< typed as it is written in the synopsis
    placeholder, ///< a value that the user chooses
    ignored      ///< the handler gets the word, but the synopsis has no such word
};

struct Word
{
    /// What it is.
    Role role;
    /// The word as it is written in the synopsis; if it is ignored, the word as it was typed.
    std::string name;
    bool operator==(const Word& other) const { return role == other.role && name == other.name; }
};

/// The two forms in which the library prints a usage. It takes `pelm` for lines that begin with "pelm".
enum class Format
{
    velk,
    pelm
};

/// What a line leads to.
struct Match
{
    /// The place of the synopsis whose handler runs; none if the library prints the usage.
    std::optional<std::size_t> synopsis;
    /// What each word of the line is. Empty if no handler runs.
    std::vector<Word> words;
};

/// What may come after some words.
struct Following
{
    /// Each word once, in the order of the synopses. If one of them is a placeholder, any word may follow.
    std::vector<Word> words;
    /// Whether the line may end here. If it may, a handler runs.
    bool mayEnd = false;
};

/// A list of synopses.
///
/// Threads  any. Several threads may use the same object at the same time.
/// Errors   std::bad_alloc.
class Table
{
public:
    /// Registers the synopses as check() does. Errors: TooLarge.
    explicit Table(const std::vector<Synopsis>& synopses);
    Table(const Table&) = delete;
    Table& operator=(const Table&) = delete;

    /// Forgets the synopses.
    ~Table();

    /// Returns  the findings, in the order of the synopses and of their columns.
    std::vector<Finding> check() const;

    /// Returns  the name of each command once, in the order of the synopses.
    const std::vector<std::string>& commands() const;

    /// Returns  which synopsis takes the line, and what its words are.
    Match match(const std::vector<std::string>& line) const;

    /// Returns  the usage for this line in the given format, also if the line runs a handler. It has the same bytes as
    ///          the usage that the library prints, with the blanks and line feeds at its end.
    std::string usage(const std::vector<std::string>& line, Format format) const;

    /// Returns  lines that run a handler, at most `most` lines. The shortest comes first. Lines of the same length are
    ///          in the order of the synopses. Each placeholder is written as its name. Lines of more than `mostWords`
    ///          words are left out.
    std::vector<std::vector<std::string>> lines(std::size_t most, std::size_t mostWords = 64) const;

    /// Returns  what may come after these words, for completion. If no line begins with these words, nothing may
    ///          follow. If several placeholders fit a word, the result has all that may follow any of them.
    Following following(const std::vector<std::string>& line) const;

    /// Returns  the number of words in the graph.
    std::size_t size() const;

    /// Returns  the number of its connections.
    std::size_t connections() const;

    /// Returns  a drawing of the graph with a legend, in the language of Graphviz' dot. Keywords, placeholders, ends,
    ///          and words that several ways share have different shapes and lines. So they need no colours.
    std::string dot() const;

private:
    std::unique_ptr<const Graph> m_graph;
};

} // namespace Corvane::Synopses

#endif

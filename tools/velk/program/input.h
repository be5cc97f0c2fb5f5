// SPDX-License-Identifier: MIT
/// Reads synopses from files. Each line has one synopsis; before it, the command's name and a tab may stand.
#ifndef CORVANE_VELK_INPUT_H
#define CORVANE_VELK_INPUT_H

#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

#include <synopses/finding.h>

namespace Corvane::Velk {

/// Something that can't be read or written; the text says what and why.
class Failure : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Where a synopsis stands.
struct Place
{
    std::string file;
    std::size_t line;   // from 1 on
    std::string text;   // the whole line
    std::size_t column; // of the synopsis in it, in bytes
};

struct Input
{
    std::vector<Synopses::Synopsis> synopses;
    std::vector<Place> places; // of each
};

/// Reads these files in their order, and standard input for "-" or if there are none.
///
/// Errors  Failure.
Input readFiles(const std::vector<std::string>& files);

} // namespace Corvane::Velk

#endif

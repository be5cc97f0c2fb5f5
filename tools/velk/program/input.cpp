// SPDX-License-Identifier: MIT
/// Reads synopses from files.
#include "input.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>

namespace Corvane::Velk {

namespace {

constexpr std::size_t maxBytes = std::size_t{4} * 1024 * 1024;

class Reader
{
public:
    void read(std::istream& from, const std::string& name)
    {
        std::string text;
        for (std::size_t line = 1; std::getline(from, text); ++line) {
            if (!text.empty() && text.back() == '\r') {
                text.pop_back();
            }
            m_bytes += text.size();
            if (m_bytes > maxBytes) {
                throw Failure(name + ": more than 4 MiB of synopses");
            }
            if (text.find('\0') != std::string::npos) {
                throw Failure(name + ":" + std::to_string(line) + ": there is a NUL in this line");
            }
            const std::size_t begin = text.find_first_not_of(" \t");
            if (begin != std::string::npos && text[begin] != '#') {
                add({name, line, text, begin});
            }
        }
        if (from.bad()) {
            throw Failure(name + ": " + std::strerror(errno));
        }
    }

    Input input;

private:
    /// What stands before the first tab is a name if it is one word.
    void add(Place place)
    {
        std::string name;
        const std::size_t tab = place.text.find('\t', place.column);
        if (tab != std::string::npos && place.text.find_first_of(" []{}|<>", place.column) >= tab) {
            name = place.text.substr(place.column, tab - place.column);
            place.column = std::min(place.text.find_first_not_of(" \t", tab), place.text.size());
        }
        input.synopses.push_back({place.text.substr(place.column), name});
        input.places.push_back(std::move(place));
    }

    std::size_t m_bytes = 0;
};

} // namespace

Input readFiles(const std::vector<std::string>& files)
{
    Reader reader;
    for (const std::string& name : files.empty() ? std::vector<std::string>{"-"} : files) {
        if (name == "-") {
            reader.read(std::cin, "<stdin>");
            continue;
        }
        std::ifstream file(name);
        file.peek(); // a folder can be opened, but not read
        if (!file.is_open() || file.bad()) {
            throw Failure(name + ": " + std::strerror(errno));
        }
        file.clear();
        reader.read(file, name);
    }
    if (reader.input.synopses.empty()) {
        throw Failure((files.empty() ? "<stdin>" : files.back()) + ": no synopses");
    }
    return std::move(reader.input);
}

} // namespace Corvane::Velk

// SPDX-License-Identifier: MIT
/// Lines from a terminal, with the line editing and the history of libedit.
#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cwchar>
#include <iostream>
#include <system_error>

#include <histedit.h>
#include <unistd.h>

#include "interrupts.h"
#include "lineSource.h"

namespace UnitShell {

namespace {

constexpr int historyLength = 500;

const char* promptText(EditLine*)
{
    return prompt;
}

/// Reads one character for libedit, whose own function would go on waiting after a signal.
///
/// Returns  1; 0 at the end of input; -1 for a signal or an error.
int readCharacter(EditLine*, wchar_t* character)
{
    std::mbstate_t state = {};
    while (Interrupts::waitForInput(STDIN_FILENO)) {
        char byte = '\0';
        const ssize_t count = read(STDIN_FILENO, &byte, 1);
        if (count < 0 && (errno == EINTR || errno == EAGAIN)) {
            continue;
        }
        if (count <= 0) {
            return static_cast<int>(count);
        }
        constexpr auto noCharacter = static_cast<std::size_t>(-1);
        const bool isInside = std::mbsinit(&state) == 0;
        std::size_t length = std::mbrtowc(character, &byte, 1, &state);
        if (length == noCharacter && isInside) { // the byte that cuts a character off begins the next one
            state = {};
            length = std::mbrtowc(character, &byte, 1, &state);
        }
        if (length == 0 || length == 1) {
            return 1;
        }
        if (length == noCharacter) {
            state = {}; // not a character of the user's locale: skip it
        }
    }
    return -1;
}

class EditedLines : public LineSource
{
public:
    EditedLines()
    {
        if (m_edit == nullptr || m_history == nullptr) {
            throw std::system_error(ENOMEM, std::generic_category(), "line editing");
        }
        HistEvent event = {};
        history(m_history.get(), &event, H_SETSIZE, historyLength);
        history(m_history.get(), &event, H_SETUNIQUE, 1);
        el_set(m_edit.get(), EL_EDITOR, "emacs");
        el_set(m_edit.get(), EL_PROMPT, promptText);
        el_set(m_edit.get(), EL_HIST, history, m_history.get());
        el_set(m_edit.get(), EL_GETCFN, readCharacter);
    }

    bool next(std::string& line) override
    {
        std::cout << std::flush;
        // libedit alone would prepare the terminal only after the prompt: a Ctrl-D typed in between would be lost.
        el_set(m_edit.get(), EL_PREP_TERM, 1);
        int length = 0;
        const char* const text = el_gets(m_edit.get(), &length);
        if (text == nullptr || length <= 0 || Interrupts::received() != 0) {
            std::cout << "\n"; // the next output begins on a new line
            return false;
        }
        line = text;
        if (!line.empty() && line.back() == '\n') {
            line.pop_back();
        }
        if (line.find_first_not_of(" \t") != std::string::npos) {
            HistEvent event = {};
            history(m_history.get(), &event, H_ENTER, line.c_str());
        }
        return true;
    }

private:
    const std::unique_ptr<History, decltype(&history_end)> m_history{history_init(), history_end};
    const std::unique_ptr<EditLine, decltype(&el_end)> m_edit{el_init("unitShell", stdin, stdout, stderr), el_end};
};

} // namespace

std::unique_ptr<LineSource> terminalLines()
{
    static_cast<void>(std::setlocale(LC_CTYPE, "")); // only this category: numbers keep the form of the C locale
    return std::make_unique<EditedLines>();
}

} // namespace UnitShell

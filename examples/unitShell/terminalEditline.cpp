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

/// Reads one character for libedit, which by itself would sleep on after an interrupt. Returns 1, 0 at the end of input
/// or -1 for an interrupt or an error.
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
        if (length == noCharacter && isInside) { // what breaks a character off begins another: a key, say
            state = {};
            length = std::mbrtowc(character, &byte, 1, &state);
        }
        if (length == 0 || length == 1) {
            return 1;
        }
        if (length == noCharacter) {
            state = {}; // not a character of the user's locale: leave it out
        }
    }
    return -1;
}

class EditedLines : public LineSource
{
public:
    EditedLines() : m_edit(el_init("unitShell", stdin, stdout, stderr)), m_history(history_init())
    {
        if (m_edit == nullptr || m_history == nullptr) {
            throw std::system_error(ENOMEM, std::generic_category(), "line editing");
        }
        HistEvent event = {};
        history(m_history, &event, H_SETSIZE, historyLength);
        history(m_history, &event, H_SETUNIQUE, 1);
        el_set(m_edit, EL_EDITOR, "emacs");
        el_set(m_edit, EL_PROMPT, promptText);
        el_set(m_edit, EL_HIST, history, m_history);
        el_set(m_edit, EL_GETCFN, readCharacter);
    }

    ~EditedLines() override
    {
        el_end(m_edit);
        history_end(m_history);
    }

    EditedLines(const EditedLines&) = delete;
    EditedLines& operator=(const EditedLines&) = delete;

    bool next(std::string& line) override
    {
        std::cout << std::flush;
        // By itself libedit prepares the terminal after the prompt: an end of input typed in between would be lost.
        el_set(m_edit, EL_PREP_TERM, 1);
        int length = 0;
        const char* const text = el_gets(m_edit, &length);
        if (text == nullptr || length <= 0 || Interrupts::received() != 0) {
            std::cout << "\n"; // whatever comes next begins a line of its own
            return false;
        }
        line = text;
        if (!line.empty() && line.back() == '\n') {
            line.pop_back();
        }
        if (line.find_first_not_of(" \t") != std::string::npos) {
            HistEvent event = {};
            history(m_history, &event, H_ENTER, line.c_str());
        }
        return true;
    }

private:
    EditLine* m_edit;
    History* m_history;
};

} // namespace

std::unique_ptr<LineSource> terminalLines()
{
    static_cast<void>(std::setlocale(
        LC_CTYPE, "")); // what is a character is the user's choice; numbers keep the form of the C locale
    return std::make_unique<EditedLines>();
}

} // namespace UnitShell

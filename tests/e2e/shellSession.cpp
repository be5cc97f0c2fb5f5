/// A run of the example shell.
#include "tests/e2e/shellSession.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <stdexcept>
#include <system_error>

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include "tests/support/emulation.h"

namespace Corvane::Testing {

namespace {

constexpr int silenceMs = 60 * 1000;

[[noreturn]] void throwError(const char* what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

std::array<int, 2> makePipe()
{
    std::array<int, 2> ends = {};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        throwError("pipe");
    }
    return ends;
}

/// Runs in the new process. The shell starts with the signals of a user's shell, whatever those of the test program
/// are.
[[noreturn]] void become(char* const* argv, bool ignoreInterrupt)
{
    std::signal(SIGINT, ignoreInterrupt ? SIG_IGN : SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
    std::signal(SIGPIPE, SIG_DFL);
    execvp(argv[0], argv);
    _exit(127);
}

void closeAndForget(int& descriptor)
{
    if (descriptor >= 0) {
        close(descriptor);
        descriptor = -1;
    }
}

} // namespace

ShellSession::ShellSession(Stdin kind, const std::vector<std::string>& arguments, bool ignoreInterrupt)
{
    std::vector<std::string> words{UNIT_SHELL};
    words.insert(words.end(), arguments.begin(), arguments.end());
    words = runnable(std::move(words));
    std::vector<char*> argv;
    for (std::string& word : words) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);
    if (kind == Stdin::terminal) {
        startOnTerminal(argv);
    } else {
        startOnPipes(argv, ignoreInterrupt);
    }
}

ShellSession::~ShellSession()
{
    if (m_pid > 0) {
        kill(m_pid, SIGKILL);
        waitpid(m_pid, nullptr, 0);
    }
    if (m_output != m_input) {
        closeAndForget(m_output);
    }
    closeAndForget(m_input);
    closeAndForget(m_error);
}

void ShellSession::startOnTerminal(std::vector<char*>& argv)
{
    winsize size = {};
    size.ws_row = 24;
    size.ws_col = 80;
    m_pid = forkpty(&m_input, nullptr, nullptr, &size);
    if (m_pid < 0) {
        throwError("forkpty");
    }
    if (m_pid == 0) {
        setenv("TERM", "xterm", 1);
        setenv("LC_ALL", "C.UTF-8", 1);
        become(argv.data(), false);
    }
    fcntl(m_input, F_SETFD, FD_CLOEXEC);
    m_output = m_input;
}

void ShellSession::startOnPipes(std::vector<char*>& argv, bool ignoreInterrupt)
{
    const auto input = makePipe();
    const auto output = makePipe();
    const auto error = makePipe();
    m_pid = fork();
    if (m_pid < 0) {
        throwError("fork");
    }
    if (m_pid == 0) {
        dup2(input[0], STDIN_FILENO);
        dup2(output[1], STDOUT_FILENO);
        dup2(error[1], STDERR_FILENO);
        become(argv.data(), ignoreInterrupt);
    }
    close(input[0]);
    close(output[1]);
    close(error[1]);
    m_input = input[1];
    m_output = output[0];
    m_error = error[0];
}

void ShellSession::type(const std::string& text)
{
    std::size_t written = 0;
    while (written < text.size()) {
        const ssize_t count = write(m_input, text.data() + written, text.size() - written);
        if (count < 0 && errno != EINTR) {
            throwError("write");
        }
        written += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
}

void ShellSession::typeUntilOutputIsFull(const std::string& text)
{
    const int size = fcntl(m_output, F_SETPIPE_SZ, 1); // the system rounds it up
    if (size < 0) {
        throwError("F_SETPIPE_SZ");
    }
    type(text);
    for (int unread = 0; unread < size; sched_yield()) {
        if (ioctl(m_output, FIONREAD, &unread) != 0) {
            throwError("FIONREAD");
        }
    }
}

void ShellSession::waitFor(const std::string& text)
{
    std::size_t position = 0;
    while ((position = m_out.find(text, m_found)) == std::string::npos) {
        if (!readSome()) {
            throw std::runtime_error("the shell ended before it wrote '" + text + "'; it wrote: " + m_out + m_err);
        }
    }
    m_found = position + text.size();
}

void ShellSession::signal(int number)
{
    kill(m_pid, number);
}

void ShellSession::endInput()
{
    closeAndForget(m_input);
}

int ShellSession::waitForEnd()
{
    while (readSome()) {
    }
    int status = 0;
    while (waitpid(m_pid, &status, 0) < 0) {
        if (errno != EINTR) {
            throwError("waitpid");
        }
    }
    m_pid = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

bool ShellSession::terminalIsAsBefore() const
{
    termios mode = {};
    if (tcgetattr(m_input, &mode) != 0) {
        throwError("tcgetattr");
    }
    constexpr tcflag_t wanted = ICANON | ECHO | ISIG;
    return (mode.c_lflag & wanted) == wanted;
}

/// Waits for output and keeps it.
///
/// Returns  false once all output has ended.
bool ShellSession::readSome()
{
    std::array<pollfd, 2> waited = {{{m_output, POLLIN, 0}, {m_error, POLLIN, 0}}};
    if (m_output < 0 && m_error < 0) {
        return false;
    }
    const int ready = poll(waited.data(), waited.size(), silenceMs);
    if (ready < 0 && errno != EINTR) {
        throwError("poll");
    }
    if (ready == 0) {
        throw std::runtime_error("the shell is silent; it wrote: " + m_out + m_err);
    }
    const auto take = [](const pollfd& source, int& descriptor, std::string& text, bool isTerminal) {
        if (source.revents == 0) {
            return;
        }
        std::array<char, 4096> buffer = {};
        const ssize_t count = read(source.fd, buffer.data(), buffer.size());
        if (count > 0) {
            text.append(buffer.data(), static_cast<std::size_t>(count));
        } else if (isTerminal) {
            descriptor = -1; // still open for tcgetattr()
        } else {
            closeAndForget(descriptor);
        }
    };
    take(waited[0], m_output, m_out, m_output == m_input);
    take(waited[1], m_error, m_err, false);
    return true;
}

ShellResult runShell(const std::vector<std::string>& arguments, const std::string& input)
{
    ShellSession session(Stdin::pipe, arguments);
    session.type(input);
    session.endInput();
    const int status = session.waitForEnd();
    return {status, session.out(), session.err()};
}

} // namespace Corvane::Testing

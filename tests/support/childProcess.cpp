/// Runs programs for tests.
#include "tests/support/childProcess.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/emulation.h"

namespace Corvane::Testing {

namespace {

constexpr int hangMilliseconds = 120'000;

int checked(int result, const std::string& what)
{
    if (result < 0) {
        throw std::system_error(errno, std::generic_category(), what);
    }
    return result;
}

class FileDescriptor
{
public:
    explicit FileDescriptor(int fd) : m_fd(fd) {}
    ~FileDescriptor()
    {
        if (m_fd >= 0) {
            close(m_fd);
        }
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    int get() const { return m_fd; }
    int release() { return std::exchange(m_fd, -1); }

private:
    int m_fd;
};

std::vector<char*> pointersTo(std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

std::vector<std::string> joinEnvironment(const std::vector<std::string>& additions)
{
    std::vector<std::string> joined = additions;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        const std::string text = *variable;
        const std::string prefix = text.substr(0, text.find('=') + 1);
        bool replaced = false;
        for (const std::string& addition : additions) {
            replaced = replaced || addition.compare(0, prefix.size(), prefix) == 0;
        }
        if (!replaced) {
            joined.push_back(text);
        }
    }
    return joined;
}

/// The standard files of the program. All other files of this process are closed in it.
int start(std::vector<std::string> command, std::vector<std::string> environment, int in, int out, int err)
{
    command = runnable(std::move(command), environment);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in, 0);
    posix_spawn_file_actions_adddup2(&actions, out, 1);
    posix_spawn_file_actions_adddup2(&actions, err, 2);
#if __GLIBC_PREREQ(2, 34)
    posix_spawn_file_actions_addclosefrom_np(&actions, 3);
#else // no call for it: one by one, where a file that is closed already does no harm
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        const int file = std::stoi(entry.path().filename().string());
        if (file > 2) {
            posix_spawn_file_actions_addclose(&actions, file);
        }
    }
#endif
    std::vector<std::string> variables = joinEnvironment(environment);
    pid_t pid = -1;
    const int error = posix_spawnp(&pid, command.at(0).c_str(), &actions, nullptr, pointersTo(command).data(),
                                   pointersTo(variables).data());
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) {
        throw std::system_error(error, std::generic_category(), command.at(0));
    }
    return pid;
}

bool becomesReadable(int fd)
{
    pollfd polled{fd, POLLIN, 0};
    return TEMP_FAILURE_RETRY(poll(&polled, 1, hangMilliseconds)) > 0;
}

/// Waits for the end of a program. Kills one that hangs.
///
/// Returns  how it ended.
int waitForEnd(pid_t pid, bool& hung)
{
    const FileDescriptor process(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)));
    hung = process.get() < 0 || !becomesReadable(process.get());
    if (hung) {
        kill(pid, SIGKILL);
    }
    int status = 0;
    TEMP_FAILURE_RETRY(waitpid(pid, &status, 0));
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

std::string contentOf(int file)
{
    std::string content;
    std::array<char, 65536> buffer;
    off_t offset = 0;
    ssize_t length = 0;
    while ((length = pread(file, buffer.data(), buffer.size(), offset)) > 0) {
        content.append(buffer.data(), static_cast<std::size_t>(length));
        offset += length;
    }
    return content;
}

} // namespace

ProgramResult runProgram(const std::vector<std::string>& command, const std::vector<std::string>& environment)
{
    const FileDescriptor in(checked(open("/dev/null", O_RDONLY | O_CLOEXEC), "/dev/null"));
    const FileDescriptor out(checked(memfd_create("out", MFD_CLOEXEC), "memfd_create"));
    const FileDescriptor err(checked(memfd_create("err", MFD_CLOEXEC), "memfd_create"));
    const pid_t pid = start(command, environment, in.get(), out.get(), err.get());
    bool hung = false;
    ProgramResult result;
    result.pid = pid;
    result.status = waitForEnd(pid, hung);
    result.out = contentOf(out.get());
    result.err = contentOf(err.get());
    if (hung) {
        throw std::runtime_error(command.at(0) + " hangs; it wrote: " + result.out + result.err);
    }
    return result;
}

Companion::Companion(const std::vector<std::string>& command, const std::vector<std::string>& environment)
{
    std::array<int, 2> input;
    std::array<int, 2> output;
    checked(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, input.data()),
            "socketpair"); // so that writing never raises SIGPIPE
    const FileDescriptor inputEnd(input[0]);
    FileDescriptor inputStart(input[1]);
    checked(pipe2(output.data(), O_CLOEXEC), "pipe2");
    FileDescriptor outputEnd(output[0]);
    const FileDescriptor outputStart(output[1]);
    m_pid = start(command, environment, inputEnd.get(), outputStart.get(), STDERR_FILENO);
    m_input = inputStart.release();
    m_output = outputEnd.release();
}

Companion::~Companion()
{
    finish();
    close(m_output);
}

void Companion::writeLine(const std::string& line)
{
    const std::string text = line + '\n';
    for (std::size_t written = 0; written < text.size();) {
        const ssize_t result = send(m_input, text.data() + written, text.size() - written, MSG_NOSIGNAL);
        written += static_cast<std::size_t>(checked(static_cast<int>(result), "write to a companion"));
    }
}

int Companion::finish()
{
    if (!m_isOver) {
        close(m_input);
        bool hung = false;
        m_status = waitForEnd(m_pid, hung);
        m_isOver = true;
    }
    return m_status;
}

std::string Companion::readLine()
{
    std::string line;
    char c = '\0';
    while (becomesReadable(m_output) && TEMP_FAILURE_RETRY(read(m_output, &c, 1)) == 1 && c != '\n') {
        line += c;
    }
    return line;
}

} // namespace Corvane::Testing

/// Records live, through the command line tools of LTTng and Babeltrace.
#include "tests/support/liveSession.h"

#include <cerrno>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <system_error>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace Corvane::Testing {

namespace fs = std::filesystem;

/// The lock of this user's recordings on this machine.
class LiveSession::Lock
{
public:
    Lock()
    {
        const fs::path path = fs::temp_directory_path() / ("corvane-lttng-" + std::to_string(getuid()) + ".lock");
        m_file = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
        if (m_file < 0 || TEMP_FAILURE_RETRY(flock(m_file, LOCK_EX)) != 0) {
            const int error = errno;
            close(m_file);
            throw std::system_error(error, std::generic_category(), path);
        }
    }

    ~Lock() { close(m_file); }

    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

private:
    int m_file = -1;
};

namespace {

/// Returns  true if a program of that name is on the path.
bool isInstalled(const std::string& name)
{
    const char* const variable = std::getenv("PATH");
    std::istringstream path(variable != nullptr ? variable : "");
    for (std::string folder; std::getline(path, folder, ':');) {
        if (access((fs::path(folder) / name).c_str(), X_OK) == 0) {
            return true;
        }
    }
    return false;
}

fs::path makeFolder()
{
    std::string path = fs::temp_directory_path() / "corvane-live-XXXXXX";
    if (mkdtemp(path.data()) == nullptr) {
        throw std::system_error(errno, std::generic_category(), path);
    }
    return path;
}

/// Returns  the folders of the traces of `processes`. Each process has one, named "NAME-PID-TIME".
std::vector<std::string> findTraces(const fs::path& folder, const std::vector<int>& processes)
{
    std::vector<std::string> traces;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        if (entry.path().filename() == "metadata") {
            const fs::path trace = entry.path().parent_path();
            for (const int pid : processes) {
                if (trace.string().find("-" + std::to_string(pid) + "-") != std::string::npos) {
                    traces.push_back(trace);
                }
            }
        }
    }
    return traces;
}

std::string readTraces(const std::vector<std::string>& options, const std::vector<std::string>& traces)
{
    std::vector<std::string> command = {"babeltrace2", "--color=never"};
    command.insert(command.end(), options.begin(), options.end());
    command.insert(command.end(), traces.begin(), traces.end());
    const ProgramResult result = runProgram(command);
    // babeltrace2 reports lost events as a warning.
    if (result.status != 0 || result.err.find("discarded") != std::string::npos) {
        throw std::runtime_error("babeltrace2 ends with " + std::to_string(result.status) + ": " + result.err);
    }
    return result.out;
}

} // namespace

LiveSession::LiveSession()
{
    for (const char* const tool : {"lttng", "lttng-sessiond", "babeltrace2"}) {
        if (!isInstalled(tool)) {
            m_whyNot = std::string("no live recording on this machine: ") + tool + " is not installed";
            return;
        }
    }
    try {
        m_lock = std::make_unique<Lock>();
        m_folder = makeFolder();
        startDaemon();
        startSession();
    } catch (...) { // an object that isn't complete has no destructor
        cleanUp();
        throw;
    }
}

LiveSession::~LiveSession()
{
    cleanUp();
}

void LiveSession::cleanUp()
{
    if (!m_sessionName.empty()) {
        try {
            lttng({"destroy", m_sessionName});
        } catch (const std::exception& error) {
            std::cerr << "The LTTng session " << m_sessionName << " can't be destroyed: " << error.what() << "\n";
        }
    }
    m_daemon.reset();
    if (!m_folder.empty()) {
        std::error_code ignored;
        fs::remove_all(m_folder, ignored);
    }
}

std::vector<std::string> LiveSession::environment() const
{
    return {"LTTNG_HOME=" + m_folder.string(), "LTTNG_UST_REGISTER_TIMEOUT=-1"};
}

ProgramResult LiveSession::run(const std::vector<std::string>& command, const std::vector<std::string>& environment)
{
    std::vector<std::string> variables = this->environment();
    variables.insert(variables.end(), environment.begin(), environment.end());
    ProgramResult result = runProgram(command, variables);
    follow(result.pid);
    return result;
}

void LiveSession::follow(int pid)
{
    m_followed.push_back(pid);
}

Recording LiveSession::finish()
{
    needLttng({"stop", m_sessionName});
    needLttng({"destroy", m_sessionName});
    m_sessionName.clear();
    Recording recording;
    const std::vector<std::string> traces = findTraces(m_folder, m_followed);
    if (!traces.empty()) {
        recording.metadata = readTraces({"--output-format=ctf-metadata"}, {traces.front()});
        recording.declared = parseMetadata(recording.metadata);
        recording.events = parseEvents(readTraces({"--no-delta", "--names=payload", "--fields=loglevel"}, traces));
    }
    return recording;
}

void LiveSession::startDaemon()
{
    if (lttng({"list"}).status == 0) {
        return;
    }
    m_daemon = std::make_unique<Companion>(std::vector<std::string>{CORVANE_SESSION_DAEMON_SCRIPT}, environment());
    if (m_daemon->readLine() != "ready") {
        throw std::runtime_error("lttng-sessiond doesn't start");
    }
}

void LiveSession::startSession()
{
    const std::string name = m_folder.filename(); // unique on this machine, because the folder is
    needLttng({"create", name, "--output=" + (m_folder / "trace").string()});
    m_sessionName = name;
    // Separate buffers for each process keep the programs of this test apart from all others.
    needLttng({"enable-channel", "--userspace", "--session=" + name, "--buffers-pid", "--subbuf-size=1M",
               "--num-subbuf=4", "events"});
    needLttng(
        {"enable-event", "--userspace", "--session=" + name, "--channel=events", "com_brimlow_kelpsys_corvane:*"});
    needLttng({"start", name});
}

ProgramResult LiveSession::lttng(const std::vector<std::string>& arguments) const
{
    std::vector<std::string> command = {"lttng", "--no-sessiond"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return runProgram(command, environment());
}

void LiveSession::needLttng(const std::vector<std::string>& arguments) const
{
    const ProgramResult result = lttng(arguments);
    if (result.status != 0) {
        throw std::runtime_error("lttng " + arguments.front() + ": " + result.out + result.err);
    }
}

} // namespace Corvane::Testing

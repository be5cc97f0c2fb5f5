/// Puts the emulator in front of the programs of this build.
#include "tests/support/emulation.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <elf.h>

namespace Corvane::Testing {

namespace {

constexpr const char* ownProgram = "/proc/self/exe";

#ifdef __aarch64__
constexpr Elf64_Half ownMachine = EM_AARCH64;
#else
constexpr Elf64_Half ownMachine = EM_X86_64;
#endif

bool isOfThisBuild(const std::string& program)
{
    if (program.find('/') == std::string::npos) {
        return false; // found in the path: a tool of this machine
    }
    Elf64_Ehdr header = {};
    std::ifstream file(program, std::ios::binary);
    file.read(reinterpret_cast<char*>(&header), sizeof(header));
    return file && std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0 && header.e_machine == ownMachine;
}

std::vector<std::string> emulator()
{
    std::istringstream words(CORVANE_TEST_EMULATOR);
    std::vector<std::string> emulator;
    for (std::string word; std::getline(words, word, '|');) {
        emulator.push_back(word);
    }
    return emulator;
}

} // namespace

bool isEmulated()
{
    return !emulator().empty();
}

std::vector<std::string> runnable(std::vector<std::string> command, std::vector<std::string>& environment)
{
    if (command.at(0) == ownProgram) {
        command[0] = std::filesystem::read_symlink(ownProgram);
    }
    if (!isEmulated() || !isOfThisBuild(command[0])) {
        return command;
    }
    std::vector<std::string> emulated = emulator();
    const auto forLoader =
        std::stable_partition(environment.begin(), environment.end(), [](const std::string& variable) {
            return variable.rfind("LD_", 0) != 0 && variable.rfind("GLIBC_TUNABLES=", 0) != 0;
        });
    for (auto variable = forLoader; variable != environment.end(); ++variable) {
        emulated.insert(emulated.end(), {"-E", *variable});
    }
    environment.erase(forLoader, environment.end());
    emulated.insert(emulated.end(), command.begin(), command.end());
    return emulated;
}

std::vector<std::string> runnable(std::vector<std::string> command)
{
    std::vector<std::string> none;
    return runnable(std::move(command), none);
}

const char* deathTestStyle()
{
    return isEmulated() ? "fast" : "threadsafe";
}

} // namespace Corvane::Testing

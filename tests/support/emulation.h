/// How a test starts a program of this build: as it is, or through the emulator of the machine that it is built for.
///
/// The kernel runs the tools of this machine from an emulated test as from any other; only programs that are built like
/// the test itself need the emulator in front.
#ifndef CORVANE_TESTS_SUPPORT_EMULATION_H
#define CORVANE_TESTS_SUPPORT_EMULATION_H

#include <string>
#include <vector>

namespace Corvane::Testing {

/// Returns  whether this build runs under an emulator.
bool isEmulated();

/// Returns  `command` with the emulator in front where its program needs one.
///
/// `environment` are the variables, "NAME=value", that are set for the program alone. Those that instruct a dynamic
/// loader are then told to the emulator, for its program, and are no longer in it.
std::vector<std::string> runnable(std::vector<std::string> command, std::vector<std::string>& environment);

/// The same without any such variables.
std::vector<std::string> runnable(std::vector<std::string> command);

/// Returns  the style of GoogleTest's death tests that works here: an emulated test can't start itself anew, as
///          "threadsafe" ones do; it forks.
const char* deathTestStyle();

} // namespace Corvane::Testing

#endif

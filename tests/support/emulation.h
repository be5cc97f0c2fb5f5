/// How a test starts a program of this build: directly, or through the emulator if this is a cross build.
///
/// Tools of this machine run without the emulator, from an emulated test too. Only programs that are built like the
/// test itself need it.
#ifndef CORVANE_TESTS_SUPPORT_EMULATION_H
#define CORVANE_TESTS_SUPPORT_EMULATION_H

#include <string>
#include <vector>

namespace Corvane::Testing {

/// Returns  true if this build runs under an emulator.
bool isEmulated();

/// Returns  `command`, with the emulator in front if its program needs one.
///
/// `environment` are the variables, "NAME=value", of this program. Variables for a dynamic loader (LD_...) are moved to
/// the emulator's options, so that they reach the program and not the emulator.
std::vector<std::string> runnable(std::vector<std::string> command, std::vector<std::string>& environment);

/// The same without variables.
std::vector<std::string> runnable(std::vector<std::string> command);

/// Returns  the style of death tests that works here. "threadsafe" starts the test program again. An emulated test
///          can't do that; it must fork.
const char* deathTestStyle();

} // namespace Corvane::Testing

#endif

# The unit's architecture: Debian's cross compiler, and user-mode emulation for the programs that build and tests run.

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)

find_program(CORVANE_QEMU qemu-aarch64 NO_CMAKE_FIND_ROOT_PATH)
mark_as_advanced(CORVANE_QEMU)
if(NOT CORVANE_QEMU)
  message(FATAL_ERROR "There is no qemu-aarch64. Install it with: tools/prerequisites unit")
endif()
# The emulator's own algorithm for pointer authentication: the architecture's would take most of the time of a run.
# Behind -L: the folder with the loader and the C library of Debian's cross compiler.
set(CMAKE_CROSSCOMPILING_EMULATOR "${CORVANE_QEMU}" -cpu max,pauth-impdef=on -L /usr/aarch64-linux-gnu)

# Never take headers and libraries of the building machine.
list(APPEND CMAKE_FIND_ROOT_PATH /usr/aarch64-linux-gnu) # besides those of the command line
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

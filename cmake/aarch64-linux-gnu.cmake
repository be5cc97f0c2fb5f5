# The unit's architecture: Debian's cross compiler, and user-mode emulation for what is run in the build and the tests.

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)

# The cross compiler brings its own C library and lays it out there, loader included.
find_program(CORVANE_QEMU qemu-aarch64 REQUIRED NO_CMAKE_FIND_ROOT_PATH)
mark_as_advanced(CORVANE_QEMU)
# Pointer authentication in an algorithm of the emulator's own: the architecture's takes most of a run's time.
set(CMAKE_CROSSCOMPILING_EMULATOR "${CORVANE_QEMU}" -cpu max,pauth-impdef=on -L /usr/aarch64-linux-gnu)

# Headers and libraries of the machine that builds are never the unit's.
list(APPEND CMAKE_FIND_ROOT_PATH /usr/aarch64-linux-gnu) # beside those that the command line names
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

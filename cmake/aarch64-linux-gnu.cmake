# The unit's architecture: built against the sysroot of tools/sdk. User-mode emulation runs the programs, with the loader
# and the libraries of the sysroot.

set(CMAKE_SYSTEM_PROCESSOR aarch64)
include("${CMAKE_CURRENT_LIST_DIR}/Sysroot.cmake")

find_program(CORVANE_QEMU qemu-aarch64 NO_CMAKE_FIND_ROOT_PATH)
mark_as_advanced(CORVANE_QEMU)
if(NOT CORVANE_QEMU)
  message(FATAL_ERROR "There is no qemu-aarch64. Install it with: tools/prerequisites unit")
endif()
# Pointer authentication uses the emulator's own algorithm. The architecture's would take most of the time of a run.
set(CMAKE_CROSSCOMPILING_EMULATOR "${CORVANE_QEMU}" -cpu max,pauth-impdef=on -L "${CMAKE_SYSROOT}")

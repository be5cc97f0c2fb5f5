# Units of this architecture: built against the sysroot of tools/sdk, whose loader and libraries run the programs.

set(CMAKE_SYSTEM_PROCESSOR x86_64)
include("${CMAKE_CURRENT_LIST_DIR}/Sysroot.cmake")

set(corvane_sysroot_libraries "${CMAKE_SYSROOT}/lib/x86_64-linux-gnu:${CMAKE_SYSROOT}/usr/lib/x86_64-linux-gnu")
set(CMAKE_CROSSCOMPILING_EMULATOR
  "${CMAKE_SYSROOT}/lib64/ld-linux-x86-64.so.2" --library-path "${corvane_sysroot_libraries}")
unset(corvane_sysroot_libraries)

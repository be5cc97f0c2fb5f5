# What the toolchain files have in common: clang and lld with the headers and libraries of a sysroot only. g++ would find
# this machine's libraries too.

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_LIBRARY_ARCHITECTURE "${CMAKE_SYSTEM_PROCESSOR}-linux-gnu")
if(CMAKE_SYSTEM_PROCESSOR STREQUAL "aarch64")
  set(corvane_sysroot_arch arm64)
else()
  set(corvane_sysroot_arch amd64)
endif()
execute_process(COMMAND "${CMAKE_CURRENT_LIST_DIR}/../tools/sdk" --path ${corvane_sysroot_arch}
  OUTPUT_VARIABLE CMAKE_SYSROOT OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
if(NOT EXISTS "${CMAKE_SYSROOT}/usr/include")
  message(FATAL_ERROR "There is no sysroot ${CMAKE_SYSROOT}. Make it with: tools/sdk ${corvane_sysroot_arch}")
endif()

set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_READELF readelf) # of binutils; llvm-readelf doesn't show debug information
set(CMAKE_CXX_COMPILER_TARGET "${CMAKE_LIBRARY_ARCHITECTURE}")
set(CMAKE_CXX_COMPILER_EXTERNAL_TOOLCHAIN "${CMAKE_SYSROOT}/usr")
foreach(kind EXE SHARED MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT "-fuse-ld=lld -Wl,--build-id=sha1") # debuggers look for ids of that length
endforeach()

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
unset(corvane_sysroot_arch)

# What every target of this tree has in common. Nothing here reaches the targets of a user.

find_package(Threads REQUIRED)
include(Hardening)

# __FILE__ and debug information name files of this tree, wherever it lies and is built, and the SDK's as the system's:
# the same sources give the same bytes. GCC takes the last map that fits a path, clang another; there the build folder
# is named by an option of its own.
set(corvane_path_maps "-ffile-prefix-map=${PROJECT_SOURCE_DIR}/=" "-ffile-prefix-map=${PROJECT_BINARY_DIR}=build")
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  list(APPEND corvane_path_maps "-ffile-compilation-dir=build")
endif()

function(corvane_target_defaults target)
  target_compile_features(${target} PRIVATE cxx_std_17)
  set_target_properties(${target} PROPERTIES
    CXX_EXTENSIONS OFF
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
  target_compile_options(${target} PRIVATE
    ${corvane_path_maps}
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast -Wnon-virtual-dtor
    -Woverloaded-virtual -Wcast-align -Wcast-qual -Wformat=2 -Wundef -Wunused -Wimplicit-fallthrough
    $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety>
    $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond -Wduplicated-branches -Wlogical-op>
    $<$<BOOL:${CORVANE_WERROR}>:-Werror>)
  corvane_harden(${target})
  if(CORVANE_SANITIZE)
    target_compile_options(${target} PRIVATE
      "-fsanitize=${CORVANE_SANITIZE}" -fno-sanitize-recover=all -fno-omit-frame-pointer
      # In instrumented code of <regex> GCC 12 sees uninitialised values where there are none.
      $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
    target_link_options(${target} PRIVATE "-fsanitize=${CORVANE_SANITIZE}")
  endif()
endfunction()

# A stand-in for one of the unit's closed libraries: same soname, same symbols. MAP names those of a library that has
# more inside than its symbols.
function(corvane_add_standin target soversion)
  cmake_parse_arguments(PARSE_ARGV 2 arg "" "MAP" "SOURCES")
  add_library(${target} SHARED ${arg_SOURCES})
  corvane_target_defaults(${target})
  set_target_properties(${target} PROPERTIES
    CXX_VISIBILITY_PRESET default
    SOVERSION ${soversion}
    BUILD_WITH_INSTALL_RPATH ON) # it needs nothing but the system
  if(NOT CMAKE_LIBRARY_OUTPUT_DIRECTORY) # beside libcorvane, as in an installation
    set_target_properties(${target} PROPERTIES LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}")
  endif()
  target_include_directories(${target} PUBLIC "${PROJECT_SOURCE_DIR}/platform/include")
  if(CORVANE_SYSTEM_PATHS) # nobody debugs them where they are installed
    target_link_options(${target} PRIVATE "LINKER:--strip-all")
  endif()
  if(arg_MAP)
    set_target_properties(${target} PROPERTIES LINK_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/${arg_MAP}")
    target_link_options(${target} PRIVATE "LINKER:--version-script=${CMAKE_CURRENT_SOURCE_DIR}/${arg_MAP}")
  endif()
  install(TARGETS ${target} LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" NAMELINK_SKIP COMPONENT standins)
endfunction()

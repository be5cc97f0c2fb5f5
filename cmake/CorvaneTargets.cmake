# Settings of all targets of this tree. A project that uses the library gets none of them.

find_package(Threads REQUIRED)
include(Hardening)

# __FILE__ and debug information name each file by its place in the tree, so that the same sources give the same bytes in
# every folder. Where several maps fit a path, GCC takes the last and clang another one; so clang gets the build folder
# by an option of its own.
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
      # GCC 12 wrongly reports uninitialised values in the instrumented code of <regex>.
      $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
    target_link_options(${target} PRIVATE "-fsanitize=${CORVANE_SANITIZE}")
  endif()
endfunction()

# Adds a stand-in for one of the unit's closed libraries, with the same soname and symbols. MAP is the version script of a
# stand-in that has other global symbols too.
function(corvane_add_standin target soversion)
  cmake_parse_arguments(PARSE_ARGV 2 arg "" "MAP" "SOURCES")
  add_library(${target} SHARED ${arg_SOURCES})
  corvane_target_defaults(${target})
  set_target_properties(${target} PROPERTIES
    CXX_VISIBILITY_PRESET default
    SOVERSION ${soversion}
    BUILD_WITH_INSTALL_RPATH ON) # it needs system libraries only
  if(NOT CMAKE_LIBRARY_OUTPUT_DIRECTORY) # beside libcorvane, as in an installation
    set_target_properties(${target} PROPERTIES LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}")
  endif()
  target_include_directories(${target} PUBLIC "${PROJECT_SOURCE_DIR}/platform/include")
  if(CORVANE_SYSTEM_PATHS) # installed stand-ins are not debugged
    target_link_options(${target} PRIVATE "LINKER:--strip-all")
  endif()
  if(arg_MAP)
    set_target_properties(${target} PROPERTIES LINK_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/${arg_MAP}")
    target_link_options(${target} PRIVATE "LINKER:--version-script=${CMAKE_CURRENT_SOURCE_DIR}/${arg_MAP}")
  endif()
  install(TARGETS ${target} LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" NAMELINK_SKIP COMPONENT standins)
endfunction()

# Lets applications link a static library, whose headers are in include/, as Corvane::NAME, and installs it. EXPORT is the
# set of exported targets that it belongs to; install(EXPORT) writes it to Corvane-NAME.cmake.
function(corvane_offer_library target name export component)
  set_target_properties(${target} PROPERTIES EXPORT_NAME ${name} POSITION_INDEPENDENT_CODE ON)
  add_library(Corvane::${name} ALIAS ${target})
  target_compile_features(${target} INTERFACE cxx_std_17)
  target_include_directories(${target} PUBLIC
    "$<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/include>"
    "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/corvane>")
  if(CORVANE_SYSTEM_PATHS) # installed static libraries are not debugged
    add_custom_command(TARGET ${target} POST_BUILD VERBATIM
      COMMAND "${CMAKE_OBJCOPY}" --strip-debug --remove-section=.comment "$<TARGET_FILE:${target}>")
  endif()
  install(TARGETS ${target} EXPORT ${export}
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT ${component})
  install(DIRECTORY include/ DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/corvane" COMPONENT ${component})
endfunction()

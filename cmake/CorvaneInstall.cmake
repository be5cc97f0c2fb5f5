# Installation: the library with its headers and package files. The stand-ins, their headers and the programs are
# components of their own.

include(CMakePackageConfigHelpers)

set(corvane_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/Corvane")

install(TARGETS corvane EXPORT CorvaneTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT development)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/corvane"
  COMPONENT development FILES_MATCHING PATTERN "*.h")
install(FILES "${PROJECT_BINARY_DIR}/include/version/corvaneVersion.h"
  DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/corvane/version" COMPONENT development)
install(EXPORT CorvaneTargets NAMESPACE Corvane:: DESTINATION "${corvane_package_dir}" COMPONENT development)

if(CORVANE_SYSTEM_PATHS)
  set(corvane_debug_dir "${PROJECT_BINARY_DIR}/debug")
  add_custom_command(TARGET corvane POST_BUILD VERBATIM COMMAND "${CMAKE_COMMAND}"
    "-DLIBRARY=$<TARGET_FILE:corvane>" "-DFOLDER=${corvane_debug_dir}" "-DREADELF=${CMAKE_READELF}"
    "-DOBJCOPY=${CMAKE_OBJCOPY}" -P "${PROJECT_SOURCE_DIR}/cmake/SplitDebugSymbols.cmake")
  set_property(TARGET corvane APPEND PROPERTY LINK_DEPENDS "${PROJECT_SOURCE_DIR}/cmake/SplitDebugSymbols.cmake")
  install(DIRECTORY "${corvane_debug_dir}/" DESTINATION lib/debug/.build-id COMPONENT debug)
endif()

# The package files of an installation on this machine name the folders of its sysroot.
set(corvane_config_lttng_includes "")
set(corvane_config_lttng_libdir "")
set(corvane_config_platform_libdir "")
set(corvane_pc_lttng_cflags "")
set(corvane_pc_lttng_libs "")
if(CORVANE_LTTNG STREQUAL "sdk" AND NOT CORVANE_SYSTEM_PATHS)
  set(corvane_config_lttng_includes "${corvane_lttng_includes}")
  set(corvane_config_lttng_libdir "${corvane_lttng_libdir}")
  list(JOIN corvane_lttng_includes " -isystem" corvane_pc_lttng_cflags)
  set(corvane_pc_lttng_cflags " -isystem${corvane_pc_lttng_cflags}")
  set(corvane_pc_lttng_libs " -Wl,-rpath-link,${corvane_lttng_libdir}")
endif()
if(NOT CORVANE_SYSTEM_PATHS)
  set(corvane_config_platform_libdir "${corvane_platform_libdir}")
endif()
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/CorvaneConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/CorvaneConfig.cmake" INSTALL_DESTINATION "${corvane_package_dir}")
# docs/compatibility.md says the same in words.
set(corvane_compatibility SameMajorVersion)
if(PROJECT_VERSION_MAJOR EQUAL 0)
  set(corvane_compatibility SameMinorVersion)
endif()
write_basic_package_version_file("${PROJECT_BINARY_DIR}/CorvaneConfigVersion.cmake"
  COMPATIBILITY ${corvane_compatibility})
install(FILES "${PROJECT_BINARY_DIR}/CorvaneConfig.cmake" "${PROJECT_BINARY_DIR}/CorvaneConfigVersion.cmake"
  "${PROJECT_SOURCE_DIR}/cmake/CorvaneCheckSynopses.cmake"
  DESTINATION "${corvane_package_dir}" COMPONENT development)

file(RELATIVE_PATH corvane_pc_prefix
  "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/") # relative to the file, so that an installation can be moved
string(REGEX REPLACE "/$" "" corvane_pc_prefix "${corvane_pc_prefix}")
configure_file("${PROJECT_SOURCE_DIR}/cmake/corvane.pc.in" "${PROJECT_BINARY_DIR}/corvane.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/corvane.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT development)

if(CORVANE_PLATFORM STREQUAL "host") # for those who write an engine or tests
  configure_file("${PROJECT_SOURCE_DIR}/cmake/corvane-testing.pc.in" "${PROJECT_BINARY_DIR}/corvane-testing.pc" @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/corvane-testing.pc"
    DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT testing)
  configure_file("${PROJECT_SOURCE_DIR}/cmake/corvane-platform.pc.in" "${PROJECT_BINARY_DIR}/corvane-platform.pc" @ONLY)
  install(TARGETS zel LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" NAMELINK_ONLY COMPONENT standins_development)
  install(FILES
    "${PROJECT_SOURCE_DIR}/platform/include/zel.h" "${PROJECT_SOURCE_DIR}/platform/standins/zel/zelStandin.h"
    DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/corvane-platform" COMPONENT standins_development)
  install(FILES "${PROJECT_BINARY_DIR}/corvane-platform.pc"
    DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT standins_development)
endif()

# Installs a program, and what lies beside its sources under its name: man page (.1), completion file (.bash), and a
# systemd unit (.service), which a user's service manager runs.
function(corvane_install_program target)
  set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE ON)
  target_link_options(${target} PRIVATE -pie) # not every compiler's default
  if(CORVANE_SYSTEM_PATHS) # installed programs are not debugged
    set_target_properties(${target} PROPERTIES BUILD_WITH_INSTALL_RPATH ON)
    target_link_options(${target} PRIVATE "LINKER:--strip-all")
  else()
    set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
  endif()
  install(TARGETS ${target} RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT tools)
  install(FILES ${target}.1 DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT tools)
  install(FILES ${target}.bash RENAME ${target}
    DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" COMPONENT tools)
  if(CORVANE_SYSTEM_PATHS AND EXISTS "${CMAKE_CURRENT_SOURCE_DIR}/${target}.service")
    install(FILES ${target}.service DESTINATION lib/systemd/user COMPONENT tools)
  endif()
  set_property(GLOBAL APPEND PROPERTY CORVANE_PROGRAMS ${target})
endfunction()

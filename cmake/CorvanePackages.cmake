# Debian packages, made by `cpack` in a build with CORVANE_SYSTEM_PATHS: see tools/package.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME corvane)
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_CONTACT "The libcorvane developers <libcorvane@localhost>" CACHE STRING "Maintainer that packages name")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has its own
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/packages")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime development debug)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE "${corvane_arch}")
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# Written by hand, because a cross build has no package database to look them up. A test compares the versions with the
# symbol versions that the files need.
if(corvane_lttng_version STREQUAL "2.12")
  set(corvane_tracer "liblttng-ust0 (>= 2.12)")
  set(corvane_tracer_headers "liblttng-ust-dev (>= 2.12), liblttng-ust-dev (<< 2.13)")
else()
  set(corvane_tracer "liblttng-ust1 (>= 2.13)")
  set(corvane_tracer_headers "liblttng-ust-dev (>= 2.13)")
endif()
set(corvane_c_runtime "libc6 (>= 2.34), libgcc-s1 (>= 3.0)")

# Updates the loader's cache, and tells other packages' builds on what to depend.
set(corvane_control "${PROJECT_BINARY_DIR}/control")
file(CONFIGURE OUTPUT "${corvane_control}/triggers" CONTENT "activate-noawait ldconfig\n")
file(CONFIGURE OUTPUT "${corvane_control}/shlibs" CONTENT "libcorvane 0 libcorvane0 (>= ${PROJECT_VERSION})\n")

# libzel.so.1, libpindle.so.0 and libtpx.so.0 belong to the unit, in packages of other names. If the library depended on
# them, apt could install the stand-ins over the unit's libraries. So the library only suggests the stand-ins.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libcorvane0)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "${corvane_c_runtime}, ${corvane_tracer}, libstdc++6 (>= 11)")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SUGGESTS "corvane-platform-standins")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA "${corvane_control}/shlibs;${corvane_control}/triggers")
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "command tables, in-memory files and event-log client
A library for the application processes of a radio unit: it matches typed
command lines with registered tables, keeps files in process memory, and
sends event-log entries to a separate process. What it does is traced
with LTTng-UST.

It needs the platform libraries libzel.so.1, libpindle.so.0 and
libtpx.so.0. On a unit they are there; on another machine the package
corvane-platform-standins has them.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libcorvane-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libcorvane0 (= ${PROJECT_VERSION}), ${corvane_tracer_headers}")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "corvane-platform-standins")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "command tables, in-memory files and event-log client (headers)
Headers, CMake package and pkg-config file for applications that use
libcorvane.

Linking an application takes the platform libraries too: those of a unit,
or the ones of the package corvane-platform-standins.")

set(CPACK_DEBIAN_DEBUG_PACKAGE_NAME libcorvane0-dbgsym)
set(CPACK_DEBIAN_DEBUG_PACKAGE_SECTION debug)
set(CPACK_DEBIAN_DEBUG_PACKAGE_DEPENDS "libcorvane0 (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_DEBUG_DESCRIPTION "debug symbols for libcorvane0
Debuggers find them by the library's build id.")

if(CORVANE_PLATFORM STREQUAL "host")
  list(APPEND CPACK_COMPONENTS_ALL standins)
  set(CPACK_DEBIAN_STANDINS_PACKAGE_NAME corvane-platform-standins)
  set(CPACK_DEBIAN_STANDINS_PACKAGE_SECTION libs)
  set(CPACK_DEBIAN_STANDINS_PACKAGE_DEPENDS "${corvane_c_runtime}, libstdc++6 (>= 12)")
  # A unit's own packages may provide the platform too. Without shlibs, no package comes to depend on the stand-ins.
  set(CPACK_DEBIAN_STANDINS_PACKAGE_PROVIDES corvane-platform)
  set(CPACK_DEBIAN_STANDINS_PACKAGE_CONFLICTS corvane-platform)
  set(CPACK_DEBIAN_STANDINS_PACKAGE_CONTROL_EXTRA "${corvane_control}/triggers")
  set(CPACK_DEBIAN_STANDINS_DESCRIPTION "stand-ins for a radio unit's platform libraries
libzel.so.1, libpindle.so.0 and libtpx.so.0 for machines other than a
unit: libcorvane and its applications can be built, run and tested with
them. They must not be installed on a unit, which has its own.")
endif()

# Each package carries the license, and this version's part of CHANGELOG.md in Debian's form.
if(CORVANE_SYSTEM_PATHS)
  find_program(CORVANE_GZIP gzip REQUIRED)
  mark_as_advanced(CORVANE_GZIP)
  file(READ "${PROJECT_SOURCE_DIR}/CHANGELOG.md" corvane_changes)
  string(REGEX REPLACE "^.*\n## ${PROJECT_VERSION}[^\n]*\n+" "" corvane_changes "${corvane_changes}")
  string(REGEX REPLACE "\n+## .*$" "" corvane_changes "${corvane_changes}")
  string(REGEX REPLACE "\n+$" "" corvane_changes "${corvane_changes}")
  string(REPLACE "\n" "\n  " corvane_changes "  ${corvane_changes}")
  string(REPLACE "  - " "  * " corvane_changes "${corvane_changes}")
  string(TIMESTAMP corvane_date "%a, %d %b %Y %H:%M:%S +0000" UTC) # of SOURCE_DATE_EPOCH, if set
  file(CONFIGURE OUTPUT "${corvane_control}/changelog" @ONLY CONTENT
"corvane (${PROJECT_VERSION}) unstable; urgency=medium

${corvane_changes}

 -- ${CPACK_PACKAGE_CONTACT}  ${corvane_date}
")
  execute_process(COMMAND "${CORVANE_GZIP}" --best --no-name --force "${corvane_control}/changelog"
    COMMAND_ERROR_IS_FATAL ANY)
  foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER "${component}" variable)
    install(FILES "${corvane_control}/changelog.gz" COMPONENT ${component}
      DESTINATION "share/doc/${CPACK_DEBIAN_${variable}_PACKAGE_NAME}")
    install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" RENAME copyright COMPONENT ${component}
      DESTINATION "share/doc/${CPACK_DEBIAN_${variable}_PACKAGE_NAME}")
  endforeach()
endif()

include(CPack)

# Debian packages, made by `cpack` in a build with CORVANE_SYSTEM_PATHS: see tools/package.
#
# CPack makes them, not debhelper. A preset cross-builds the packages for a unit against a sysroot. debhelper can't do
# that: it has its own build, and its dpkg-shlibdeps asks this machine's package database. With CPack there is also only
# one list of what is installed where, for `cmake --install` and for the packages. lintian checks the result.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME corvane)
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
# Mail to .invalid goes nowhere: whoever ships the packages is their maintainer, and says so.
set(CPACK_PACKAGE_CONTACT "The libcorvane developers <libcorvane@corvane.invalid>" CACHE STRING
  "Maintainer that packages name")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has its own
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/packages")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL "")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE "${corvane_arch}")
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/packaging/finishPackages.cmake")

# LTTng-UST's library package is named after its soname; finishPackages.cmake reads that from the built files. The package
# of its headers has the same name in all versions.
set(CPACK_CORVANE_TRACER_VERSION "${corvane_lttng_version}")
set(corvane_tracer_headers "liblttng-ust-dev (>= ${corvane_lttng_version})")
if(corvane_lttng_version VERSION_LESS 2.13)
  string(APPEND corvane_tracer_headers ", liblttng-ust-dev (<< 2.13)") # the library of 2.13 has another soname
endif()

# Updates the loader's cache, and tells the builds of other packages which package they need.
set(corvane_control "${PROJECT_BINARY_DIR}/control")
file(CONFIGURE OUTPUT "${corvane_control}/triggers" CONTENT "activate-noawait ldconfig\n")
file(CONFIGURE OUTPUT "${corvane_control}/shlibs" CONTENT "libcorvane 0 libcorvane0 (>= ${PROJECT_VERSION})\n")

# Each package carries the license, and this version's part of CHANGELOG.md in Debian's form. packaging/NAME.copyright has
# the licenses of others whose code is compiled into a package.
file(READ "${PROJECT_SOURCE_DIR}/LICENSE" corvane_license)
string(REGEX MATCH "Copyright \\(c\\) ([^\n]+)\n+(.*)" corvane_license "${corvane_license}")
set(corvane_holder "${CMAKE_MATCH_1}")
string(STRIP "${CMAKE_MATCH_2}" corvane_license)
string(REPLACE "\n" "\n " corvane_license "${corvane_license}")
string(REPLACE "\n \n" "\n .\n" corvane_license "${corvane_license}")
file(CONFIGURE OUTPUT "${corvane_control}/copyright" @ONLY CONTENT
"Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/
Upstream-Name: libcorvane

Files: *
Copyright: ${corvane_holder}
License: Expat
 ${corvane_license}
")

file(READ "${PROJECT_SOURCE_DIR}/CHANGELOG.md" corvane_changes)
string(REGEX REPLACE "^.*\n## ${PROJECT_VERSION}[^\n]*\n+" "" corvane_changes "${corvane_changes}")
string(REGEX REPLACE "\n+## .*$" "" corvane_changes "${corvane_changes}")
file(CONFIGURE OUTPUT "${corvane_control}/changes" CONTENT "${corvane_changes}" @ONLY)
execute_process(COMMAND fmt --tagged-paragraph --width=76 "${corvane_control}/changes"
  OUTPUT_VARIABLE corvane_changes COMMAND_ERROR_IS_FATAL ANY)
string(STRIP "${corvane_changes}" corvane_changes)
string(REPLACE "\n" "\n  " corvane_changes "  ${corvane_changes}")
string(REPLACE "  - " "  * " corvane_changes "${corvane_changes}")
string(TIMESTAMP corvane_date "%a, %d %b %Y %H:%M:%S +0000" UTC) # of SOURCE_DATE_EPOCH, if set
file(CONFIGURE OUTPUT "${corvane_control}/changelog" @ONLY CONTENT
"corvane (${PROJECT_VERSION}) unstable; urgency=medium

${corvane_changes}

 -- ${CPACK_PACKAGE_CONTACT}  ${corvane_date}
")
execute_process(COMMAND gzip --best --no-name --force "${corvane_control}/changelog" COMMAND_ERROR_IS_FATAL ANY)

# Makes a package of a component. DEPENDS names only what can't be read from its programs and libraries. CONTROL_EXTRA
# are control files; packaging/NAME.lintian-overrides comes along, if there is one.
function(corvane_add_package component)
  cmake_parse_arguments(PARSE_ARGV 1 arg ""
    "NAME;SECTION;DESCRIPTION;DEPENDS;RECOMMENDS;SUGGESTS;PROVIDES;CONFLICTS" "CONTROL_EXTRA")
  string(TOUPPER "CPACK_DEBIAN_${component}" prefix)
  foreach(field NAME SECTION DEPENDS RECOMMENDS SUGGESTS PROVIDES CONFLICTS CONTROL_EXTRA)
    if(arg_${field})
      set(${prefix}_PACKAGE_${field} "${arg_${field}}" PARENT_SCOPE)
    endif()
  endforeach()
  set(${prefix}_DESCRIPTION "${arg_DESCRIPTION}" PARENT_SCOPE)
  set(CPACK_COMPONENTS_ALL ${CPACK_COMPONENTS_ALL} ${component} PARENT_SCOPE)
  set(copyright "${corvane_control}/copyright")
  set(others "${PROJECT_SOURCE_DIR}/packaging/${arg_NAME}.copyright")
  if(EXISTS "${others}")
    file(READ "${copyright}" all)
    file(READ "${others}" others)
    set(copyright "${corvane_control}/${arg_NAME}/copyright")
    file(CONFIGURE OUTPUT "${copyright}" @ONLY CONTENT "${all}\n${others}")
  endif()
  install(FILES "${corvane_control}/changelog.gz" "${copyright}"
    DESTINATION "share/doc/${arg_NAME}" COMPONENT ${component})
  set(overrides "${PROJECT_SOURCE_DIR}/packaging/${arg_NAME}.lintian-overrides")
  if(EXISTS "${overrides}")
    install(FILES "${overrides}" DESTINATION share/lintian/overrides RENAME ${arg_NAME} COMPONENT ${component})
  endif()
endfunction()

# libzel.so.1, libpindle.so.0 and libtpx.so.0 belong to the unit, in packages of other names. If the library depended on
# them, apt could install the stand-ins over the unit's libraries. So the library only suggests the stand-ins.
corvane_add_package(runtime NAME libcorvane0 SECTION libs
  SUGGESTS "corvane-platform-standins"
  CONTROL_EXTRA "${corvane_control}/shlibs" "${corvane_control}/triggers"
  DESCRIPTION "command tables, in-memory files and event-log client
A library for the application processes of a radio unit: it matches typed
command lines with registered tables, keeps files in process memory, and
sends event-log entries to a separate process. What it does is traced
with LTTng-UST.

It needs the platform libraries libzel.so.1, libpindle.so.0 and
libtpx.so.0. On a unit they are there; on another machine the package
corvane-platform-standins has them.")

# Without the platform libraries no program can be linked. But they may be there without a package.
corvane_add_package(development NAME libcorvane-dev SECTION libdevel
  DEPENDS "libcorvane0 (= ${PROJECT_VERSION}), ${corvane_tracer_headers}"
  RECOMMENDS "corvane-platform-standins | corvane-platform"
  DESCRIPTION "command tables, in-memory files and event-log client (headers)
Headers, CMake package and pkg-config file for applications that use
libcorvane.

Linking an application takes the platform libraries too: those of a unit,
or the ones of the package corvane-platform-standins.")

corvane_add_package(debug NAME libcorvane0-dbgsym SECTION debug
  DEPENDS "libcorvane0 (= ${PROJECT_VERSION})"
  DESCRIPTION "debug symbols for libcorvane0
Debuggers find them by the library's build id.")

if(CORVANE_PLATFORM STREQUAL "host")
  # A unit's own packages may provide the platform too.
  corvane_add_package(standins NAME corvane-platform-standins SECTION libs
    PROVIDES corvane-platform
    CONFLICTS corvane-platform
    CONTROL_EXTRA "${corvane_control}/triggers"
    DESCRIPTION "stand-ins for a radio unit's platform libraries
libzel.so.1, libpindle.so.0 and libtpx.so.0 for machines other than a
unit: libcorvane and its applications can be built, run and tested with
them. They must not be installed on a unit, which has its own.")

  corvane_add_package(standins_development NAME corvane-platform-dev SECTION libdevel
    DEPENDS "corvane-platform-standins (= ${PROJECT_VERSION})"
    DESCRIPTION "stand-in for a radio unit's messaging library (headers)
Headers and pkg-config file of libzel, for those who write an event-log
engine or tests: mailboxes, messages, and what the stand-in adds for a
process that receives messages from processes it doesn't trust.

Applications don't need it: libcorvane-dev is enough for them.")

  corvane_add_package(testing NAME libcorvane-testing-dev SECTION libdevel
    DEPENDS "libcorvane-dev (= ${PROJECT_VERSION}), corvane-platform-dev (= ${PROJECT_VERSION})"
    DESCRIPTION "test support for applications that use libcorvane
A static library with headers, for any test framework: it runs typed
lines, records the trace events of the test process without a tracing
daemon, and receives event-log entries in place of the engine.")
endif()

get_property(corvane_programs GLOBAL PROPERTY CORVANE_PROGRAMS)
if(corvane_programs)
  corvane_add_package(tools NAME corvane-tools SECTION utils
    DEPENDS "corvane-platform-standins (= ${PROJECT_VERSION})"
    SUGGESTS graphviz
    DESCRIPTION "event-log engine and synopsis checker for users of libcorvane
corvane-velk finds flaws in the synopses of command tables, tells which
synopsis takes a line, lists lines and draws the graph of synopses.

elogEngine receives the event-log entries of a user's applications, and
prints a line or a JSON object for each. It can run as a service of the
user. It needs the stand-ins for a unit's platform libraries, because it
checks messages by what they add. It can't run with a unit's own
libraries.")
endif()

include(CPack)

# Corvane::lttng_ust: the LTTng-UST to compile and link with. corvane_lttng_version is its version: 2.12 or 2.13.

if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
  set(corvane_arch arm64)
  set(corvane_multiarch aarch64-linux-gnu)
else()
  set(corvane_arch amd64)
  set(corvane_multiarch x86_64-linux-gnu)
endif()

add_library(corvane_lttng_ust INTERFACE)
add_library(Corvane::lttng_ust ALIAS corvane_lttng_ust)

if(CORVANE_LTTNG STREQUAL "sdk")
  set(corvane_sdk "${CORVANE_SDK_DIR}")
  if(NOT corvane_sdk)
    execute_process(COMMAND "${PROJECT_SOURCE_DIR}/tools/sdk" --path ${corvane_arch}
      OUTPUT_VARIABLE corvane_sdk OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  endif()
  set(corvane_lttng_includes "${corvane_sdk}/lttng/include")
  set(corvane_lttng_libdir "${corvane_sdk}/lttng/lib")
  if(NOT EXISTS "${corvane_lttng_libdir}/liblttng-ust.so.0")
    message(FATAL_ERROR "No LTTng-UST 2.12 in ${corvane_sdk}. Get it with: tools/sdk ${corvane_arch}")
  endif()
  list(APPEND corvane_path_maps "-ffile-prefix-map=${corvane_lttng_includes}/=/usr/include/${corvane_multiarch}/")
  target_link_libraries(corvane_lttng_ust INTERFACE "${corvane_lttng_libdir}/liblttng-ust.so" ${CMAKE_DL_LIBS})
  # The sysroot's libraries need each other and don't say where they are. With a DT_RPATH the loader looks in the sysroot
  # for the needs of those libraries too; a DT_RUNPATH holds for the library's own needs only. The price is that DT_RPATH
  # comes before LD_LIBRARY_PATH.
  add_link_options("LINKER:--disable-new-dtags" "LINKER:-rpath-link,${corvane_lttng_libdir}")
  list(APPEND CMAKE_BUILD_RPATH "${corvane_lttng_libdir}")
elseif(CORVANE_LTTNG STREQUAL "system")
  set(corvane_lttng_libdir "")
  find_path(CORVANE_LTTNG_INCLUDE_DIR lttng/tracepoint.h REQUIRED)
  find_library(CORVANE_LTTNG_LIBRARY lttng-ust REQUIRED)
  mark_as_advanced(CORVANE_LTTNG_INCLUDE_DIR CORVANE_LTTNG_LIBRARY)
  set(corvane_lttng_includes "${CORVANE_LTTNG_INCLUDE_DIR}")
  target_link_libraries(corvane_lttng_ust INTERFACE "${CORVANE_LTTNG_LIBRARY}" ${CMAKE_DL_LIBS})
  if(CMAKE_SYSROOT)
    list(APPEND corvane_path_maps "-ffile-prefix-map=${CMAKE_SYSROOT}/=/")
  endif()
else()
  message(FATAL_ERROR "CORVANE_LTTNG is '${CORVANE_LTTNG}'; it must be sdk or system")
endif()
target_include_directories(corvane_lttng_ust SYSTEM INTERFACE ${corvane_lttng_includes})

file(STRINGS "${corvane_lttng_includes}/lttng/ust-version.h" corvane_lttng_version REGEX "_(MAJOR|MINOR)_VERSION")
string(REGEX REPLACE "[^;0-9]" "" corvane_lttng_version "${corvane_lttng_version}")
list(JOIN corvane_lttng_version "." corvane_lttng_version)

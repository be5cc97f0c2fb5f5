# cpack runs this when the files of each package are in a folder of their own: compresses the man pages, and writes the
# packages that the files need in front of what the package depends on anyway.

file(GLOB pages "${CPACK_TEMPORARY_DIRECTORY}/*/usr/share/man/man*/*")
foreach(page IN LISTS pages)
  execute_process(COMMAND gzip --best --no-name "${page}" COMMAND_ERROR_IS_FATAL ANY)
endforeach()

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  file(GLOB_RECURSE files LIST_DIRECTORIES false
    "${CPACK_TEMPORARY_DIRECTORY}/${component}/usr/bin/*" "${CPACK_TEMPORARY_DIRECTORY}/${component}/usr/lib/*.so.*")
  set(binaries "")
  foreach(file IN LISTS files)
    if(NOT IS_SYMLINK "${file}")
      list(APPEND binaries "${file}")
    endif()
  endforeach()
  if(binaries)
    execute_process(COMMAND "${CMAKE_CURRENT_LIST_DIR}/dependencies"
      "${CPACK_PACKAGE_VERSION}" "${CPACK_CORVANE_TRACER_VERSION}" ${binaries}
      OUTPUT_VARIABLE needs OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    string(TOUPPER "CPACK_DEBIAN_${component}_PACKAGE_DEPENDS" variable)
    if(${variable})
      string(PREPEND ${variable} "${needs}, ")
    else()
      set(${variable} "${needs}")
    endif()
  endif()
endforeach()

# Runs after a library is linked. Moves its debug symbols to a file that debuggers find by the library's build id.
#
#   cmake -DLIBRARY=file -DFOLDER=folder -DREADELF=... -DOBJCOPY=... -P SplitDebugSymbols.cmake
#
# FOLDER gets the files for /usr/lib/debug/.build-id. A library without debug symbols is only stripped.

execute_process(COMMAND "${READELF}" --notes "${LIBRARY}" OUTPUT_VARIABLE notes COMMAND_ERROR_IS_FATAL ANY)
if(NOT notes MATCHES "Build ID: ([0-9a-f][0-9a-f])([0-9a-f]+)")
  message(FATAL_ERROR "${LIBRARY} has no build id")
endif()
set(file "${FOLDER}/${CMAKE_MATCH_1}/${CMAKE_MATCH_2}.debug")

file(REMOVE_RECURSE "${FOLDER}") # from an earlier link
file(MAKE_DIRECTORY "${FOLDER}/${CMAKE_MATCH_1}")
# Not compressed: objcopy leaves some bytes of a compressed section's header unset, and packages are compressed anyway.
execute_process(COMMAND "${OBJCOPY}" --only-keep-debug "${LIBRARY}" "${file}"
  COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND "${OBJCOPY}" --strip-unneeded "--add-gnu-debuglink=${file}" "${LIBRARY}"
  COMMAND_ERROR_IS_FATAL ANY)
file(CHMOD "${file}" PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)

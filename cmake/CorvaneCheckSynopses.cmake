# corvane_check_synopses(TARGET FILE...): checks files with synopses, one on each line, before TARGET is built. If
# `corvane-velk check` finds a flaw, the build fails and its output shows the flaw. Call it once for a target.
function(corvane_check_synopses target)
  if(TARGET corvane-velk) # this project builds it
    set(program corvane-velk)
  elseif(CORVANE_VELK)
    set(program "${CORVANE_VELK}")
  else()
    message(FATAL_ERROR "corvane_check_synopses: the program corvane-velk was not found. Install the package "
      "corvane-tools, or set CORVANE_VELK to the program's file.")
  endif()
  if(NOT ARGN)
    message(FATAL_ERROR "corvane_check_synopses(${target}): there are no files to check.")
  endif()
  set(files "")
  foreach(file IN LISTS ARGN)
    get_filename_component(file "${file}" ABSOLUTE)
    list(APPEND files "${file}")
  endforeach()
  set(stamp "${CMAKE_CURRENT_BINARY_DIR}/${target}.synopses")
  add_custom_command(OUTPUT "${stamp}" VERBATIM
    COMMAND "${program}" check ${files}
    COMMAND "${CMAKE_COMMAND}" -E touch "${stamp}"
    DEPENDS ${files} "${program}"
    COMMENT "Checking the synopses of ${target}")
  add_custom_target(${target}_synopses DEPENDS "${stamp}")
  add_dependencies(${target} ${target}_synopses)
endfunction()

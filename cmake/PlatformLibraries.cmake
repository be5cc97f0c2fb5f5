# The unit's platform libraries, from a sysroot. Their interfaces are this tree's own, in platform/include.

# Sets `result` to the file of a platform library in CORVANE_PLATFORM_DIR. The soname is enough: libX.so may be missing.
# Nothing is cached, so that a change of CORVANE_PLATFORM_DIR takes effect.
function(corvane_find_platform_library result name soname)
  if(CORVANE_PLATFORM_DIR)
    set(folders "lib/${corvane_multiarch}" lib64 lib "usr/lib/${corvane_multiarch}" usr/lib64 usr/lib)
    list(TRANSFORM folders PREPEND "${CORVANE_PLATFORM_DIR}/")
    find_library(corvane_platform_library NAMES ${name} ${soname} PATHS ${folders} NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
    list(JOIN folders ", " looked_in)
  else()
    find_library(corvane_platform_library NAMES ${name} ${soname})
    set(looked_in "the folders that CMake looks in for libraries")
  endif()
  set(library "${corvane_platform_library}")
  unset(corvane_platform_library CACHE)
  if(NOT library)
    message(FATAL_ERROR "CORVANE_PLATFORM=sdk: there is no ${soname} in ${looked_in}. "
      "CORVANE_PLATFORM_DIR names the sysroot that has the unit's platform libraries.")
  endif()
  set(${result} "${library}" PARENT_SCOPE)
endfunction()

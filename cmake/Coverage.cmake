# The library and the stand-ins count how often each line and branch runs, for tools/coverage. Tests and other programs
# are compiled as always.
foreach(target corvane_objects pindle tpx zel)
  target_compile_options(${target} PRIVATE --coverage -fprofile-update=atomic -O0 -U_FORTIFY_SOURCE
    "-fprofile-prefix-map=${PROJECT_SOURCE_DIR}=${PROJECT_SOURCE_DIR}") # the counts are written beside the objects
endforeach()
foreach(target corvane pindle tpx zel)
  target_link_options(${target} PRIVATE --coverage)
endforeach()
target_link_options(corvane_internal INTERFACE --coverage)

# What a distribution hardens its programs and libraries with. Says what `tests/hardening` then reads from the files.

# Marks a target's code and files as hardened.
function(corvane_harden target)
  target_compile_options(${target} PRIVATE -fstack-protector-strong)
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
    target_compile_options(${target} PRIVATE -mbranch-protection=standard)
  endif()
  if(NOT CORVANE_SANITIZE) # the sanitizers look at the calls that it would replace
    # It needs an optimised build. A compiler that defines it by itself would warn of the second definition.
    target_compile_options(${target} PRIVATE
      "$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
  endif()
  target_link_options(${target} PRIVATE
    "LINKER:-z,relro" "LINKER:-z,now" "LINKER:-z,text" "LINKER:-z,noexecstack")
endfunction()

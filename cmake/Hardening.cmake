# The compiler and linker options with which a distribution hardens its files. tests/hardening reads the result from the
# built files.
#
# AArch64: the code has landing pads for indirect branches (BTI) and signs return addresses (PAC). PAC works. BTI is not
# in force: the loader guards a file only if its note asks for it, and the linker writes the note only if all objects
# have it. Debian 11's start files don't: `readelf --notes` shows no such mark in crti.o. A sysroot with marked start
# files gives the note without a change here.
#
# x86-64: not compiled with -fcf-protection. Debian 12's crti.o has no mark there either, and its C library doesn't
# switch the protection on.

# Hardens a target.
function(corvane_harden target)
  target_compile_options(${target} PRIVATE -fstack-protector-strong)
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
    target_compile_options(${target} PRIVATE -mbranch-protection=standard)
  endif()
  if(NOT CORVANE_SANITIZE) # the sanitizers check the same calls themselves
    # It needs optimisation. -U comes first because some compilers define it themselves and would warn.
    target_compile_options(${target} PRIVATE
      "$<$<OR:$<CONFIG:Release>,$<CONFIG:RelWithDebInfo>,$<CONFIG:MinSizeRel>>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
  endif()
  target_link_options(${target} PRIVATE
    "LINKER:-z,relro" "LINKER:-z,now" "LINKER:-z,text" "LINKER:-z,noexecstack")
endfunction()

/// A library that hardening changes: it has a call that can be checked, a frame with an array, and an indirect branch.
#include <cstddef>
#include <cstring>

using Callback = void (*)(char*);

[[gnu::visibility("default")]] std::size_t corvaneHardeningSample(const char* text, std::size_t length, Callback call);

std::size_t corvaneHardeningSample(const char* text, std::size_t length, Callback call)
{
    char copy[16];
    std::memcpy(copy, text, length);
    call(copy);
    return std::strlen(copy);
}

#ifdef CORVANE_TEST_TEXT_RELOCATION
// An address in the code, which the loader must relocate there.
asm(".text\n"
    "    .8byte strlen\n");
#endif

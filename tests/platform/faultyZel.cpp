/// A messaging library with a fault, which the conformance suite must find: the stand-in, with another __zel_send().
///
/// CORVANE_TEST_ZEL_FAULT says what happens to messages: "duplicate" sends each twice, "drop" drops every second one,
/// "tear" changes the last byte of each, and "none" sends them as they are.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include <zelStandin.h>

#undef __zel_send // where the stand-in's own sources say so, that is soundSend

extern "C" void __zel_send(zel_msg** msg, std::uint32_t to, std::uint32_t from, const char* file, int line)
{
    const char* const variable = std::getenv("CORVANE_TEST_ZEL_FAULT");
    const std::string fault = variable != nullptr ? variable : "none";
    const std::size_t size = zel_standin_size(*msg);
    static thread_local unsigned int count = 0;
    if (fault == "drop" && ++count % 2 == 0) {
        __zel_free(msg, file, line);
        return;
    }
    if (fault == "tear") {
        reinterpret_cast<unsigned char*>(*msg)[size - 1] ^= 1U;
    }
    if (fault == "duplicate") {
        zel_msg* second = __zel_alloc(size, 0, file, line);
        std::memcpy(second, *msg, size);
        soundSend(&second, to, from, file, line);
    }
    soundSend(msg, to, from, file, line);
}

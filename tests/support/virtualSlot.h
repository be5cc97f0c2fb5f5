/// The places of virtual operations in their virtual table, read from pointers to members as the Itanium C++ ABI has
/// them.
#ifndef CORVANE_TESTS_SUPPORT_VIRTUALSLOT_H
#define CORVANE_TESTS_SUPPORT_VIRTUALSLOT_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>

namespace Corvane::Testing {

/// The signature chooses an overload: slotOf<void(int) const>(&Class::operation).
///
/// Returns  the operation's place in the virtual table of the class, from 0.
/// Errors   std::invalid_argument if the operation isn't virtual.
template <typename Signature, typename Class>
std::size_t slotOf(Signature Class::*operation)
{
    struct
    {
        std::uintptr_t function;
        std::ptrdiff_t adjustment;
    } parts;
    static_assert(sizeof parts == sizeof operation);
    std::memcpy(&parts, &operation, sizeof parts);
    // Bit 0 marks a virtual operation. On ARM that bit may be part of an address, so the mark is in the other word.
#if defined(__aarch64__) || defined(__arm__)
    const bool isVirtual = (parts.adjustment & 1) != 0;
    const std::uintptr_t offset = parts.function;
#else
    const bool isVirtual = (parts.function & 1U) != 0;
    const std::uintptr_t offset = parts.function - 1U;
#endif
    if (!isVirtual) {
        throw std::invalid_argument("not a virtual operation");
    }
    return offset / sizeof(void*);
}

} // namespace Corvane::Testing

#endif

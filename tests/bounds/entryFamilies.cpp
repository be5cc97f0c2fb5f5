/// Entries of the event log that grow in number and in length. A fake of the platform takes them.
#include <string>
#include <vector>

#include "elog/src/elogImpl_V2.h"
#include "tests/bounds/family.h"
#include "tests/elog/fakePlatform.h"

namespace {

using Corvane::Elog::V2::ElogImpl;
using Corvane::Testing::Cost;
using Corvane::Testing::costOf;
using Corvane::Testing::FakePlatform;
using Params = std::vector<unsigned int>;

/// Writes n entries, which wait.
Cost entries(std::size_t n)
{
    const FakePlatform platform;
    ElogImpl elog;
    return costOf([&] {
        for (std::size_t i = 0; i < n; ++i) {
            elog.elogWrite(1, "carrier down", {1, 2, 3});
        }
    });
}

/// Sends n entries that have waited.
Cost sending(std::size_t n)
{
    FakePlatform platform;
    ElogImpl elog;
    for (std::size_t i = 0; i < n; ++i) {
        elog.elogWrite(1, "carrier down", {1, 2, 3});
    }
    return costOf([&] { platform.run(); });
}

/// Writes one entry and sends it.
Cost entry(const std::string& text, const Params& params)
{
    FakePlatform platform;
    ElogImpl elog;
    return costOf([&] {
        elog.elogWrite(1, text, params);
        platform.run();
    });
}

} // namespace

std::vector<Corvane::Testing::Family> Corvane::Testing::entryFamilies()
{
    return {
        {"waiting entries", "write n entries without an engine", 500, Law::linear, Law::linear, entries},
        {"sent entries", "send n entries that have waited", 500, Law::linear, Law::linear, sending},
        {"long entry", "write and send a text of n bytes", 16000, Law::constant, Law::linear,
         [](std::size_t n) { return entry(std::string(n, 'x'), {}); }},
        {"parameters", "write and send n parameters", 4000, Law::constant, Law::linear,
         [](std::size_t n) { return entry("", Params(n, 1)); }},
    };
}

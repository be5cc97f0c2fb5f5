/// What the provider declares: names, signatures, log levels and order, read from its own objects and from what it
/// registers.
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/noTracer.h"
#include "tests/support/tracepointObjects.h"

// The linker's names for the ends of the section that lists the objects for their registration.
extern "C" {
#if CORVANE_TEST_OLD_LTTNG
[[gnu::visibility("hidden")]] extern lttng_ust_tracepoint* const __start___tracepoints_ptrs[];
[[gnu::visibility("hidden")]] extern lttng_ust_tracepoint* const __stop___tracepoints_ptrs[];
#else
[[gnu::visibility("hidden")]] extern lttng_ust_tracepoint* const __start_lttng_ust_tracepoints_ptrs[];
[[gnu::visibility("hidden")]] extern lttng_ust_tracepoint* const __stop_lttng_ust_tracepoints_ptrs[];
#endif
}

namespace {

using Corvane::Testing::fullName;
using Corvane::Testing::tracepointObjects;
using testing::ElementsAreArray;

struct Declaration
{
    std::string name;
    std::string signature;
    int logLevel;
};

const std::string timedSignature =
    "const char*, file, unsigned int, line, unsigned int, sec, unsigned int, usec, const char*, process, const char*, "
    "msg, const char*, data, size_t, datalen";
const std::string dataSignature =
    "const char*, file, unsigned int, line, const char*, obj, const char*, msg, const char*, data, size_t, datalen";
const std::string sendSigSignature = "const char*, file, unsigned int, line, const char*, obj, unsigned int, sig_no, "
                                     "unsigned int, pid, const char*, msg";
const std::string recSigSignature =
    "const char*, file, unsigned int, line, const char*, obj, unsigned int, sig_no, const char*, msg";
const std::string plainSignature = "const char*, file, unsigned int, line, const char*, obj, const char*, msg";
const std::string noticeSignature = "const char*, file, unsigned int, line, const char*, msg";

const std::vector<Declaration> declarations = {
    {"TRACE_UTS7", timedSignature, 14}, {"TRACE_UTS6", timedSignature, 13}, {"TRACE_UTS5", timedSignature, 12},
    {"TRACE_UTS4", timedSignature, 11}, {"TRACE_UTS3", timedSignature, 10}, {"TRACE_UTS2", timedSignature, 9},
    {"TRACE_UTS1", timedSignature, 8},  {"DATA", dataSignature, 14},        {"SEND_SIG", sendSigSignature, 7},
    {"REC_SIG", recSigSignature, 7},    {"TRACE7", plainSignature, 14},     {"TRACE6", plainSignature, 13},
    {"TRACE5", plainSignature, 12},     {"TRACE4", plainSignature, 11},     {"TRACE3", plainSignature, 10},
    {"TRACE2", plainSignature, 9},      {"TRACE1", plainSignature, 8},      {"STATE_CHANGE", plainSignature, 7},
    {"INFO", noticeSignature, 6},       {"ERROR", noticeSignature, 3},
};

TEST(Provider, DeclaresEverySignatureToTheLetter)
{
    ASSERT_EQ(tracepointObjects().size(), declarations.size());
    for (std::size_t i = 0; i < declarations.size(); ++i) {
        EXPECT_EQ(fullName(*tracepointObjects()[i]), "com_brimlow_kelpsys_corvane:" + declarations[i].name);
        EXPECT_EQ(tracepointObjects()[i]->signature, declarations[i].signature) << declarations[i].name;
    }
}

TEST(Provider, RegistersItsEventsInTheirOrder)
{
    for (unsigned int i = 0; i < declarations.size(); ++i) {
        ASSERT_NE(corvaneTestRegisteredEvent(i), nullptr);
        EXPECT_EQ(corvaneTestRegisteredEvent(i), declarations[i].name);
        EXPECT_EQ(corvaneTestRegisteredSignature(i), declarations[i].signature) << declarations[i].name;
        EXPECT_EQ(corvaneTestRegisteredLogLevel(i), declarations[i].logLevel) << declarations[i].name;
    }
    EXPECT_EQ(corvaneTestRegisteredEvent(static_cast<unsigned int>(declarations.size())), nullptr);
}

TEST(Provider, ListsItsTracepointObjectsInTheirOrder)
{
#if CORVANE_TEST_OLD_LTTNG
    const std::vector<const lttng_ust_tracepoint*> listed(__start___tracepoints_ptrs, __stop___tracepoints_ptrs);
#else
    const std::vector<const lttng_ust_tracepoint*> listed(__start_lttng_ust_tracepoints_ptrs,
                                                          __stop_lttng_ust_tracepoints_ptrs);
#endif
    EXPECT_THAT(listed, ElementsAreArray(tracepointObjects()));
}

} // namespace

/// Compares what the dynamic loader sees of libcorvane.so.0 with lists: its symbols, its soname, the libraries that it
/// needs, and the names that it looks up while it is loaded.
#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/childProcess.h"

namespace {

using Corvane::Testing::ProgramResult;
using Corvane::Testing::runProgram;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::UnorderedElementsAreArray;

// What LTTng's macros look up while the library is loaded and unloaded, and their error texts.

#ifdef CORVANE_TEST_LTTNG_2_12
constexpr const char* tracepointList = CORVANE_TEST_SOURCE_DIR "/tracepoints-2.12.symbols";
const std::string objectPrefix = "__tracepoint_com_brimlow_kelpsys_corvane___";
const std::string tracer = "liblttng-ust.so.0";
const std::vector<std::string> loadTimeTexts = {"liblttng-ust-tracepoint.so.0",
                                                "tracepoint_register_lib",
                                                "tracepoint_unregister_lib",
                                                "tp_rcu_read_lock_bp",
                                                "tp_rcu_read_unlock_bp",
                                                "tp_rcu_dereference_sym_bp",
                                                "tp_disable_destructors",
                                                "tp_get_destructors_state",
                                                "__tracepoints__disable_destructors",
                                                "LTTng-UST: Error (%d) while registering tracepoint probe.\n",
                                                "Error (%d) in dlclose\n"};
#else
constexpr const char* tracepointList = CORVANE_TEST_SOURCE_DIR "/tracepoints-2.13.symbols";
const std::string objectPrefix = "lttng_ust_tracepoint_com_brimlow_kelpsys_corvane___";
const std::string tracer = "liblttng-ust.so.1";
const std::vector<std::string> loadTimeTexts = {"liblttng-ust-tracepoint.so.1",
                                                "LTTng-UST: Error while registering tracepoint probe.\n",
                                                "Error (%d) in dlclose\n"};
#endif

std::vector<std::string> linesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::string contentOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// Returns  the list without its comments.
std::vector<std::string> readList(const std::string& path)
{
    std::vector<std::string> names = linesOf(contentOf(path));
    names.erase(std::remove_if(names.begin(), names.end(), [](const std::string& line) { return line[0] == '#'; }),
                names.end());
    return names;
}

class DynamicSymbols : public testing::Test
{
protected:
    void SetUp() override
    {
#ifdef CORVANE_TEST_SANITIZED
        GTEST_SKIP() << "a sanitizer adds symbols and libraries of its own";
#endif
    }

    /// Returns  what a tool prints about the library.
    static std::string print(const std::string& tool, const std::vector<std::string>& options)
    {
        std::vector<std::string> command = {tool};
        command.insert(command.end(), options.begin(), options.end());
        command.emplace_back(CORVANE_TEST_LIBRARY);
        const ProgramResult result = runProgram(command, {"LC_ALL=C"});
        EXPECT_EQ(result.status, 0) << result.err;
        return result.out;
    }

    /// Returns  the values of all entries of one kind in the dynamic section, in their order.
    static std::vector<std::string> dynamicEntries(const std::string& kind)
    {
        std::vector<std::string> values;
        for (const std::string& line : linesOf(print(CORVANE_TEST_READELF, {"--dynamic", "--wide"}))) {
            if (line.find("(" + kind + ")") != std::string::npos) {
                const std::size_t begin = line.find('[') + 1;
                values.push_back(line.substr(begin, line.rfind(']') - begin));
            }
        }
        return values;
    }

    /// Returns  the dynamic symbols that the library defines, with their addresses.
    static std::map<std::string, std::string> definedSymbols()
    {
        std::map<std::string, std::string> symbols;
        for (const std::string& line : linesOf(print(CORVANE_TEST_NM, {"--dynamic", "--defined-only"}))) {
            symbols[line.substr(line.rfind(' ') + 1)] = line.substr(0, line.find(' '));
        }
        return symbols;
    }
};

TEST_F(DynamicSymbols, AreExactlyTheListedOnes)
{
    std::vector<std::string> expected = readList(CORVANE_TEST_SOURCE_DIR "/interfaces.symbols");
    const std::vector<std::string> tracepoints = readList(tracepointList);
    expected.insert(expected.end(), tracepoints.begin(), tracepoints.end());

    std::vector<std::string> defined;
    for (const auto& [name, address] : definedSymbols()) {
        defined.push_back(name);
    }
    EXPECT_THAT(defined, UnorderedElementsAreArray(expected));
}

TEST_F(DynamicSymbols, AreListedInOrderAndOnce)
{
    for (const std::string path : {CORVANE_TEST_SOURCE_DIR "/interfaces.symbols", tracepointList}) {
        std::vector<std::string> sorted = readList(path);
        std::sort(sorted.begin(), sorted.end());
        sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());
        EXPECT_THAT(readList(path), ElementsAreArray(sorted)) << path;
    }
}

TEST_F(DynamicSymbols, HaveTheTracepointObjectsInTheOrderOfTheirRegistration)
{
    std::map<std::string, std::string> namesByAddress; // nm prints addresses of one length
    for (const auto& [name, address] : definedSymbols()) {
        if (name.compare(0, objectPrefix.size(), objectPrefix) == 0) {
            namesByAddress[address] = name.substr(objectPrefix.size());
        }
    }
    std::vector<std::string> names;
    for (const auto& [address, name] : namesByAddress) {
        names.push_back(name);
    }
    EXPECT_THAT(names, ElementsAre("TRACE_UTS7", "TRACE_UTS6", "TRACE_UTS5", "TRACE_UTS4", "TRACE_UTS3", "TRACE_UTS2",
                                   "TRACE_UTS1", "DATA", "SEND_SIG", "REC_SIG", "TRACE7", "TRACE6", "TRACE5", "TRACE4",
                                   "TRACE3", "TRACE2", "TRACE1", "STATE_CHANGE", "INFO", "ERROR"));
}

TEST_F(DynamicSymbols, BelongToTheLibrarysSoname)
{
    EXPECT_THAT(dynamicEntries("SONAME"), ElementsAre("libcorvane.so.0"));
}

TEST_F(DynamicSymbols, NeedNoOtherLibraries)
{
    // In the order of linking, in which the loader also looks for symbols.
#if __GLIBC_PREREQ(2, 34)
    std::vector<std::string> expected = {tracer,           "libpindle.so.0", "libtpx.so.0", "libzel.so.1",
                                         "libstdc++.so.6", "libgcc_s.so.1",  "libc.so.6"};
#else // the C library has dlopen() and threads in files of their own
    std::vector<std::string> expected = {"libdl.so.2",     tracer,          "libpindle.so.0",
                                         "libtpx.so.0",    "libzel.so.1",   "libpthread.so.0",
                                         "libstdc++.so.6", "libgcc_s.so.1", "libc.so.6"};
#endif
#ifdef __aarch64__
    expected.emplace_back("ld-linux-aarch64.so.1"); // it has the stack protector's value
#endif
    EXPECT_THAT(dynamicEntries("NEEDED"), ElementsAreArray(expected));
}

TEST_F(DynamicSymbols, AreLookedUpByNamesThatTheLibraryContains)
{
    const std::string library = contentOf(CORVANE_TEST_LIBRARY);
    for (const std::string& text : loadTimeTexts) {
        EXPECT_NE(library.find('\0' + text + '\0'), std::string::npos) << text;
    }
}

} // namespace

/// A program that loads the library, or an empty one with the same dependencies, and ends.
///
///     load_ours [commands|files|elog]    use that service for the first time
///     load_empty
///
/// Writes the nanoseconds of CPU time that the first use took.
#include <cstdio>
#include <cstring>
#include <ctime>

#ifndef CORVANE_LOAD_EMPTY

#include <sstream>

#include <command/cmdTableHelperIf.h>
#include <elog/elogIf.h>
#include <ramfs/fileManagerIf.h>

namespace {

void use(const char* service)
{
    if (std::strcmp(service, "commands") == 0) {
        std::ostringstream out;
        Corvane::CmdTableHelper::V2::CmdTableHelperIf::getInstance().executeCmd({"nothing"}, out);
    } else if (std::strcmp(service, "files") == 0) {
        Corvane::RamFs::V1::FileManagerIf::getInstance().exists("nothing");
    } else {
        Corvane::Elog::V2::ElogIf::getInstance();
    }
}

long cpuTime()
{
    timespec time = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return time.tv_sec * 1'000'000'000 + time.tv_nsec;
}

} // namespace

#endif

int main(int argc, char** argv)
{
#ifndef CORVANE_LOAD_EMPTY
    if (argc > 1) {
        const long start = cpuTime();
        use(argv[1]);
        std::printf("%ld\n", cpuTime() - start);
    }
#endif
    return argc > 0 && argv[0] != nullptr ? 0 : 1;
}

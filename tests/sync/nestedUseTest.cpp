/// Services that are used inside each other: handlers, hooks, streams and destructors call the library. Two threads do
/// this in opposite orders. ThreadSanitizer records the order in which locks are taken, and a cycle ends the test.
#include <atomic>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <command/cmdTableHelperIf.h>
#include <elog/elogIf.h>
#include <ramfs/fileHandleIf.h>
#include <ramfs/fileManagerIf.h>
#include <ramfs/fileStreamBufIf.h>

#include "tests/support/runtimeFolder.h"
#include "tests/support/startTogether.h"

namespace {

using Corvane::CmdTableHelper::CmdDefinitionCpp;
using Corvane::CmdTableHelper::V2::CmdTableHelperIf;
using Corvane::Elog::V2::ElogIf;
using Corvane::RamFs::V1::FileManagerIf;
using Corvane::RamFs::V1::FileStreamBufIf;
using Words = std::vector<std::string>;

CmdTableHelperIf& commands()
{
    return CmdTableHelperIf::getInstance();
}

FileManagerIf& files()
{
    return FileManagerIf::getInstance();
}

/// Each thread runs the hooks of both, so no two files may have the same name.
std::string newName()
{
    static std::atomic<int> count{0};
    return "file" + std::to_string(++count) + ".";
}

/// A stream into a file of its own.
class FileStream
{
public:
    FileStream() : m_buffer(files().getFileStreamBuf()), m_out(nullptr)
    {
        m_buffer->create(m_name, 0, 0);
        m_out.rdbuf(m_buffer.get());
    }
    ~FileStream() { files().remove(m_name, false); }
    FileStream(const FileStream&) = delete;
    FileStream& operator=(const FileStream&) = delete;

    std::ostream& out() { return m_out; }

private:
    const std::string m_name = newName();
    std::shared_ptr<FileStreamBufIf> m_buffer;
    std::ostream m_out;
};

/// Uses all services when it is destroyed, as what a handler or a hook owns may.
struct LastWords
{
    LastWords() = default;
    LastWords(const LastWords&) = delete;
    LastWords& operator=(const LastWords&) = delete;
    ~LastWords()
    {
        commands().deregisterPostExecutionHook(0);
        files().remove("none", false);
        ElogIf::getInstance().elogWrite(1, "last words", {});
    }
};

/// Writes a file, dumps it into another one, reports removals into a third.
void useFiles(std::ostream& out)
{
    FileStream copy;
    const std::string name = newName();
    const auto file = files().create(name, 0, 0);
    file->append("content\n");
    file->setPos(0);
    file->dump(copy.out());
    file->setPos(0);
    file->dump(out);
    FileStream report;
    files().remove(name, report.out(), true);
}

/// A handler that uses files, the log and the command tables, and replaces itself.
int work(const std::string& name, std::ostream& out);

void registerWork(const std::string& name)
{
    const auto last = std::make_shared<LastWords>();
    const std::vector<CmdDefinitionCpp> table = {
        {name + " <file>", [name, last](const Words&, std::ostream& out) { return work(name, out); }, ""}};
    commands().registerCmdTable(name, table);
}

int work(const std::string& name, std::ostream& out)
{
    useFiles(out);
    ElogIf::getInstance().elogWrite(1, name, {1});
    registerWork(name);
    return 0;
}

/// A hook that writes a file and executes a line, whose hooks include another one.
unsigned int addHook(const std::string& name)
{
    const auto last = std::make_shared<LastWords>();
    return commands().registerPostExecutionHook([name, last](int result, int argc, const char* const* /*argv*/) {
        if (result == 0 && argc == 2) { // not for the line of a hook
            FileStream stream;
            const unsigned int inner = commands().registerPostExecutionHook(
                [name, last](int, int, const char* const*) { files().exists(name); });
            commands().executeCmd({name}, stream.out()); // a usage
            commands().executeCmd({name, "a", "b"}, stream.out());
            commands().deregisterPostExecutionHook(inner);
        }
    });
}

void useCommands(const std::string& name)
{
    registerWork(name);
    const unsigned int hook = addHook(name);
    FileStream stream;
    EXPECT_EQ(commands().executeCmd({name, "a"}, stream.out()), 0);
    EXPECT_EQ(commands().executeCmd({name}, stream.out()), 20);
    commands().deregisterPostExecutionHook(hook);
}

TEST(NestedUse, TakesLocksInOneOrder)
{
    const Corvane::Testing::RuntimeFolder folder; // no engine gets the entries
    const auto fileLast = [](const std::string& name) {
        for (int i = 0; i < 20; ++i) {
            useCommands(name);
            ElogIf::getInstance().elogWrite(2, name, {});
            files().remove(name, false);
        }
    };
    const auto fileFirst = [](const std::string& name) {
        for (int i = 0; i < 20; ++i) {
            FileStream stream;
            useFiles(stream.out());
            ElogIf::getInstance().elogWrite(3, name, {});
            useCommands(name);
            files().openAll();
            files().remove(name, stream.out(), true);
        }
    };
    Corvane::Testing::startTogether({[&] { fileLast("alpha"); }, [&] { fileFirst("beta"); }});
    EXPECT_TRUE(files().openAll().empty());
}

} // namespace

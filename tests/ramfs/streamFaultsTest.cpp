/// Files are written in readable form to streams that throw and to devices that are full.
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "tests/ramfs/ramfsTestSupport.h"
#include "tests/support/fullBuffer.h"

namespace Corvane::RamFs::V1 {
namespace {

using Testing::ThrowingStream;

class FileStreamFaults : public testing::Test
{
protected:
    FileStreamFaults()
    {
        handle.insertHeader("HDR:");
        handle.append(std::string("\x01\x41\xFF", 3));
        handle.appendFooter(bytes("END\n"), 4);
        handle.setPos(0);
    }

    /// Expects  the file as it was, and usable.
    void expectIntact()
    {
        EXPECT_TRUE(FileEntryTestAccess::isUnlocked(*entry));
        handle.setPos(0);
        std::ostringstream out;
        handle.dump(out);
        EXPECT_EQ(out.str(), text);
        handle.setPos(0);
    }

    const std::string text = "HDR:0141FFEND\n";
    std::shared_ptr<FileEntry> entry = FileEntry::create(3, 0);
    FileHandleImpl handle{"a", entry};
};

TEST_F(FileStreamFaults, AtAnyCharacterOfADumpReachTheCallerAndLeaveTheFile)
{
    for (std::size_t room = 0; room < text.size(); ++room) {
        ThrowingStream out(room);
        EXPECT_THROW(handle.dump(out), std::runtime_error) << room;
        EXPECT_EQ(out.text(), text.substr(0, room));
        expectIntact();
    }
}

TEST_F(FileStreamFaults, AtAnyCharacterOfALimitedDumpReachTheCallerAndLeaveTheFile)
{
    for (std::size_t room = 0; room < text.size(); ++room) {
        ThrowingStream out(room);
        EXPECT_THROW(handle.readReadable(out, 100), std::runtime_error) << room;
        EXPECT_EQ(out.text(), text.substr(0, room));
        expectIntact();
    }
}

TEST_F(FileStreamFaults, OfAFullDeviceShowInTheStreamAlone)
{
    std::ofstream full("/dev/full");
    ASSERT_TRUE(full.good());
    EXPECT_EQ(handle.dump(full), 11U);
    EXPECT_FALSE(full.flush().good());
    expectIntact();
    FileManagerImpl manager;
    manager.create("b", 0, 7);
    full.clear();
    EXPECT_TRUE(manager.remove(7, full, true)); // it flushes
    EXPECT_TRUE(full.bad());
    EXPECT_FALSE(manager.exists(7));
}

} // namespace
} // namespace Corvane::RamFs::V1

/// What compiled applications rely on: the slots of virtual operations, and the order of members.
#include <algorithm>
#include <type_traits>

#include <gtest/gtest.h>

#include "tests/ramfs/ramfsTestSupport.h"
#include "tests/support/virtualSlot.h"

namespace Corvane::RamFs::V1 {
namespace {

using Bytes = std::vector<unsigned char>;
using Testing::slotOf;

TEST(RamFsSlots, TheHandlesOperationsFollowTheTwoDestructorSlots)
{
    EXPECT_EQ(slotOf<void(unsigned long)>(&FileHandleIf::setPos), 2U);
    EXPECT_EQ((slotOf<unsigned int(unsigned char*, unsigned int)>(&FileHandleIf::read)), 3U);
    EXPECT_EQ(slotOf<unsigned int(std::ostream&)>(&FileHandleIf::dump), 4U);
    EXPECT_EQ((slotOf<unsigned int(std::ostream&, unsigned int)>(&FileHandleIf::readReadable)), 5U);
    EXPECT_EQ((slotOf<unsigned int(const unsigned char*, unsigned int)>(&FileHandleIf::write)), 6U);
    EXPECT_EQ((slotOf<unsigned int(const char*, unsigned int)>(&FileHandleIf::write)), 7U);
    EXPECT_EQ(slotOf<unsigned int(const std::string&)>(&FileHandleIf::write), 8U);
    EXPECT_EQ((slotOf<unsigned int(const unsigned char*, unsigned int)>(&FileHandleIf::append)), 9U);
    EXPECT_EQ((slotOf<unsigned int(const char*, unsigned int)>(&FileHandleIf::append)), 10U);
    EXPECT_EQ(slotOf<unsigned int(const std::string&)>(&FileHandleIf::append), 11U);
    EXPECT_EQ((slotOf<void(const unsigned char*, unsigned int)>(&FileHandleIf::insertHeader)), 12U);
    EXPECT_EQ(slotOf<void(const std::string&)>(&FileHandleIf::insertHeader), 13U);
    EXPECT_EQ((slotOf<void(const unsigned char*, unsigned int)>(&FileHandleIf::appendFooter)), 14U);
    EXPECT_EQ(slotOf<Bytes()>(&FileHandleIf::readHeader), 15U);
    EXPECT_EQ(slotOf<Bytes()>(&FileHandleIf::readFooter), 16U);
    EXPECT_EQ(slotOf<std::string() const>(&FileHandleIf::getFileName), 17U);
    EXPECT_EQ(slotOf<int() const>(&FileHandleIf::getFileRef), 18U);
    EXPECT_EQ(slotOf<std::size_t() const>(&FileHandleIf::getFileSize), 19U);
    EXPECT_EQ(slotOf<std::time_t() const>(&FileHandleIf::getCreationTime), 20U);
    EXPECT_EQ(slotOf<bool(unsigned int)>(&FileHandleIf::contentResize), 21U);
    EXPECT_EQ(slotOf<unsigned int() const>(&FileHandleIf::getUserCount), 22U);
}

/// Its operation gets the first slot after those of the base.
template <typename Base>
class OneMore : public Base
{
public:
    virtual void next() {}
};

TEST(RamFsSlots, TheHandleHasNoOtherSlot)
{
    EXPECT_EQ(slotOf<void()>(&OneMore<FileHandleIf>::next), 23U);
}

TEST(RamFsSlots, TheManagersDestructorComesAfterItsOperations)
{
    EXPECT_EQ((slotOf<Handle(const std::string&, unsigned int, int)>(&FileManagerIf::create)), 0U);
    EXPECT_EQ(slotOf<Handle(const std::string&)>(&FileManagerIf::open), 1U);
    EXPECT_EQ(slotOf<Handle(int)>(&FileManagerIf::open), 2U);
    EXPECT_EQ(slotOf<void(Handle&)>(&FileManagerIf::close), 3U);
    EXPECT_EQ((slotOf<bool(const std::string&, std::ostream&, bool)>(&FileManagerIf::remove)), 4U);
    EXPECT_EQ((slotOf<bool(const std::string&, bool)>(&FileManagerIf::remove)), 5U);
    EXPECT_EQ((slotOf<bool(int, std::ostream&, bool)>(&FileManagerIf::remove)), 6U);
    EXPECT_EQ((slotOf<bool(int, bool)>(&FileManagerIf::remove)), 7U);
    EXPECT_EQ(slotOf<void()>(&FileManagerIf::removeAll), 8U);
    EXPECT_EQ(slotOf<bool(int) const>(&FileManagerIf::exists), 9U);
    EXPECT_EQ(slotOf<bool(const std::string&) const>(&FileManagerIf::exists), 10U);
    EXPECT_EQ(slotOf<bool(int)>(&FileManagerIf::setDelayedDelete), 11U);
    EXPECT_EQ(slotOf<std::vector<Handle>()>(&FileManagerIf::openAll), 12U);
    EXPECT_EQ(slotOf<std::shared_ptr<FileStreamBufIf>()>(&FileManagerIf::getFileStreamBuf), 13U);
    // The destructor has two slots.
    EXPECT_EQ(slotOf<void()>(&OneMore<FileManagerIf>::next), 16U);
}

/// Has access to the standard operations, which are protected.
class StreamBufSlots : public FileStreamBufIf
{
public:
    static std::vector<std::size_t> standard()
    {
        using B = std::streambuf;
        return {slotOf<void(const std::locale&)>(&StreamBufSlots::imbue),
                slotOf<B*(char*, std::streamsize)>(&StreamBufSlots::setbuf),
                slotOf<pos_type(off_type, std::ios_base::seekdir, std::ios_base::openmode)>(&StreamBufSlots::seekoff),
                slotOf<pos_type(pos_type, std::ios_base::openmode)>(&StreamBufSlots::seekpos),
                slotOf<int()>(&StreamBufSlots::sync),
                slotOf<std::streamsize()>(&StreamBufSlots::showmanyc),
                slotOf<std::streamsize(char*, std::streamsize)>(&StreamBufSlots::xsgetn),
                slotOf<int_type()>(&StreamBufSlots::underflow),
                slotOf<int_type()>(&StreamBufSlots::uflow),
                slotOf<int_type(int_type)>(&StreamBufSlots::pbackfail),
                slotOf<std::streamsize(const char*, std::streamsize)>(&StreamBufSlots::xsputn),
                slotOf<int_type(int_type)>(&StreamBufSlots::overflow)};
    }
};

TEST(RamFsSlots, TheStreamBuffersOwnOperationsFollowTheStandardOnes)
{
    EXPECT_EQ(StreamBufSlots::standard(), (std::vector<std::size_t>{2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13}));
    EXPECT_EQ((slotOf<bool(const std::string&, unsigned int, int)>(&FileStreamBufIf::create)), 14U);
    EXPECT_EQ(slotOf<bool(int)>(&FileStreamBufIf::open), 15U);
    EXPECT_EQ(slotOf<bool() const>(&FileStreamBufIf::isOpen), 16U);
    EXPECT_EQ(slotOf<void()>(&FileStreamBufIf::close), 17U);
    EXPECT_EQ(slotOf<std::string() const>(&FileStreamBufIf::getFileName), 18U);
    EXPECT_EQ(slotOf<int() const>(&FileStreamBufIf::getFileRef), 19U);
    EXPECT_EQ(slotOf<void()>(&OneMore<FileStreamBufIf>::next), 20U);
}

std::ptrdiff_t offsetIn(const void* object, const void* member)
{
    return static_cast<const char*>(member) - static_cast<const char*>(object);
}

TEST(RamFsLayout, TheEntryBeginsWithItsWeakSelfReference)
{
    FileEntry entry(1, 0);
    const auto members = FileEntryTestAccess::members(entry);
    EXPECT_EQ(offsetIn(&entry, static_cast<std::enable_shared_from_this<FileEntry>*>(&entry)), 0);
    EXPECT_EQ(offsetIn(&entry, members.front()), static_cast<std::ptrdiff_t>(sizeof(std::weak_ptr<FileEntry>)));
    EXPECT_TRUE(std::is_sorted(members.begin(), members.end()));
    EXPECT_EQ(sizeof(ContentStorage), sizeof(std::vector<unsigned char>));
}

TEST(RamFsLayout, TheHandleHoldsNameEntryAndPosition)
{
    const FileHandleImpl handle("a", FileEntry::create(1, 0));
    const auto members = FileHandleTestAccess::members(handle);
    EXPECT_EQ(offsetIn(&handle, members.front()), static_cast<std::ptrdiff_t>(sizeof(void*)));
    EXPECT_TRUE(std::is_sorted(members.begin(), members.end()));
    EXPECT_EQ(sizeof(FileHandleIf), sizeof(void*));
}

TEST(RamFsLayout, TheManagerHoldsFilesCounterAndLock)
{
    const FileManagerImpl manager;
    const auto members = FileManagerTestAccess::members(manager);
    EXPECT_EQ(offsetIn(&manager, members.front()), static_cast<std::ptrdiff_t>(sizeof(void*)));
    EXPECT_TRUE(std::is_sorted(members.begin(), members.end()));
    EXPECT_EQ(sizeof(FileManagerIf), sizeof(void*));
    EXPECT_FALSE(std::is_copy_constructible_v<FileManagerImpl>);
}

TEST(RamFsLayout, TheStreamBufferHoldsHandleAndPendingText)
{
    const FileStreamBufImpl buffer;
    const auto members = FileStreamBufTestAccess::members(buffer);
    EXPECT_EQ(offsetIn(&buffer, members.front()), static_cast<std::ptrdiff_t>(sizeof(std::streambuf)));
    EXPECT_TRUE(std::is_sorted(members.begin(), members.end()));
    EXPECT_EQ(sizeof(FileStreamBufIf), sizeof(std::streambuf));
    EXPECT_FALSE(std::is_copy_constructible_v<FileStreamBufImpl>);
    EXPECT_FALSE(std::is_copy_assignable_v<FileStreamBufIf>);
}

} // namespace
} // namespace Corvane::RamFs::V1

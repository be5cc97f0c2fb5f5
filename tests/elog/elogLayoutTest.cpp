/// What compiled applications rely on: the slots of virtual operations, and the order of members.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>
#include <zel.h>

#include "elog/src/elogImpl_V2.h"
#include "tests/elog/fakePlatform.h"
#include "tests/support/virtualSlot.h"

namespace Corvane::Elog::V2 {

struct ElogTestAccess
{
    static const auto& activeObject(const ElogImpl& client) { return client.activeObject; }
    static const auto& elogEngineMbox(const ElogImpl& client) { return client.elogEngineMbox; }
};

namespace {

using Access = ElogTestAccess;
using ActiveObject = std::shared_ptr<Pindle::ActiveObject::V1::ActiveObjectIf>;
using Testing::FakePlatform;
using Testing::slotOf;

/// Its one operation takes the first slot that the base leaves free.
template <typename Base>
class OneMore : public Base
{
public:
    virtual void next() {}
};

TEST(ElogSlots, TheDestructorsTwoFollowTheOneOperation)
{
    using ElogWrite = void(unsigned int, const std::string&, const std::vector<unsigned int>&);
    EXPECT_EQ(slotOf<ElogWrite>(&ElogIf::elogWrite), 0U);
    EXPECT_EQ(slotOf<ElogWrite>(&ElogImpl::elogWrite), 0U);
    EXPECT_EQ(slotOf<void()>(&OneMore<ElogIf>::next), 3U);
    EXPECT_EQ(slotOf<void()>(&OneMore<ElogImpl>::next), 3U);
    EXPECT_TRUE(std::has_virtual_destructor_v<ElogIf>);
    EXPECT_TRUE(std::is_abstract_v<ElogIf>);
}

TEST(ElogSlots, TheClientIsReachedThroughAStaticOperation)
{
    EXPECT_TRUE((std::is_same_v<decltype(&ElogIf::getInstance), ElogIf& (*)()>));
}

std::ptrdiff_t offsetIn(const void* object, const void* member)
{
    return static_cast<const char*>(member) - static_cast<const char*>(object);
}

TEST(ElogLayout, TheClientHoldsActiveObjectAndMailbox)
{
    FakePlatform platform;
    const ElogImpl client;
    EXPECT_EQ(offsetIn(&client, static_cast<const ElogIf*>(&client)), 0);
    EXPECT_EQ(sizeof(ElogIf), sizeof(void*));

    const auto& activeObject = Access::activeObject(client);
    const auto& mailbox = Access::elogEngineMbox(client);
    EXPECT_TRUE((std::is_same_v<decltype(activeObject), const ActiveObject&>));
    EXPECT_TRUE((std::is_same_v<decltype(mailbox), const std::uint32_t&>));
    EXPECT_EQ(offsetIn(&client, &activeObject), static_cast<std::ptrdiff_t>(sizeof(void*)));
    EXPECT_EQ(offsetIn(&client, &mailbox), static_cast<std::ptrdiff_t>(sizeof(void*) + sizeof(ActiveObject)));
}

TEST(ElogLayout, TheEnginesMailboxIsUnsetUntilTheEngineIsLocated)
{
    FakePlatform platform;
    const ElogImpl client;
    EXPECT_NE(Access::activeObject(client), nullptr);
    EXPECT_EQ(Access::elogEngineMbox(client), ZEL_NO_MAILBOX);
    platform.run();
    EXPECT_EQ(Access::elogEngineMbox(client), platform.engineId);
}

TEST(ElogLayout, TheEnginesMailboxStaysUnsetInAClientWithoutAMailbox)
{
    FakePlatform platform;
    platform.mailboxId = ZEL_NO_MAILBOX;
    const ElogImpl client;
    platform.run();
    EXPECT_EQ(Access::elogEngineMbox(client), ZEL_NO_MAILBOX);
}

} // namespace
} // namespace Corvane::Elog::V2

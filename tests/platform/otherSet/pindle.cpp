/// Another libpindle.so.0: its active objects have no thread; each job runs where it is posted. It says what it does.
#include <cstdio>
#include <functional>
#include <memory>

#include <pindle/activeObjectIf.h>

namespace Pindle::ActiveObject::V1 {

namespace {

class CallingThread final : public ActiveObjectIf
{
public:
    void post(std::function<void()> job) override
    {
        std::puts("the other libpindle.so.0 runs a job");
        job();
    }
};

} // namespace

ActiveObjectIf::~ActiveObjectIf() = default;

std::shared_ptr<ActiveObjectIf> ActiveObjectIf::create(const std::function<void()>& init,
                                                       const SchedulingPolicy& /*policy*/)
{
    std::puts("the other libpindle.so.0 creates an active object");
    init();
    return std::make_shared<CallingThread>();
}

} // namespace Pindle::ActiveObject::V1

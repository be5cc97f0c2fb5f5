/// An application that records some of its own events. It emits three times as many INFO events as its argument says.
/// During the second third it has a recorder. Then it prints how many events the recorder has recorded.
#include <iostream>
#include <string>

#include <testing/eventRecorder.h>
#include <trace/corvaneTracepoints.h>

namespace {

void emit(unsigned int first, unsigned int count)
{
    for (unsigned int line = first; line < first + count; ++line) {
        tracepoint(com_brimlow_kelpsys_corvane, INFO, "app.cpp", line, "text");
    }
}

} // namespace

int main(int, char** argv)
{
    const auto count = static_cast<unsigned int>(std::stoul(argv[1]));
    emit(0, count);
    {
        Corvane::Testing::EventRecorder recorder({Corvane::Testing::EventName::Info});
        emit(count, count);
        std::cout << recorder.take().size() << "\n";
    }
    emit(2 * count, count);
    return 0;
}

/// Where the benchmarks of dumps and streams write to.
#ifndef CORVANE_BENCH_SINK_H
#define CORVANE_BENCH_SINK_H

#include <streambuf>

namespace Corvane::Bench {

/// Takes all text and forgets it.
class Sink : public std::streambuf
{
public:
    Sink() { setp(m_room, m_room + sizeof m_room); }

protected:
    int_type overflow(int_type c) override
    {
        setp(m_room, m_room + sizeof m_room);
        return traits_type::eq_int_type(c, traits_type::eof()) ? 0 : sputc(traits_type::to_char_type(c));
    }

private:
    char m_room[65536] = {};
};

} // namespace Corvane::Bench

#endif

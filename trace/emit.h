// SPDX-License-Identifier: MIT
/// The one way in which the library emits its trace events.
///
/// Each function tests its event first. While the event is off nothing else happens: `writeText` is not called, no
/// stream is made and no path is shortened, so a site costs one load and one branch. While it is on, `writeText` gets
/// an output stream to write the message to.
///
/// `path` is the source file that emits (__FILE__, which the build maps to a path in this tree). `line` is part of the
/// trace format that readers filter on: it is a constant at the site, and stays the same when the code moves.
///
/// Threads  any, without a lock.
/// Errors   std::bad_alloc, and whatever `writeText` throws; only while the event is on.
#ifndef CORVANE_TRACE_EMIT_H
#define CORVANE_TRACE_EMIT_H

#include <locale>
#include <new>
#include <ostream>
#include <sstream>

#include <tpx.h>
#include <trace/corvaneTracepoints.h>

namespace Corvane::Trace {

namespace Detail {

/// The text of an event. It is read in the buffer itself, because a std::ostringstream hands out only copies.
///
/// Its operations are out of line, so that the sites share them.
class Text : private std::stringbuf
{
public:
    [[gnu::noinline]] Text() : std::stringbuf(std::ios_base::out), m_stream(this)
    {
        if (m_stream.getloc() != std::locale::classic()) { // a locale of the application may group digits
            m_stream.imbue(std::locale::classic());
        }
    }
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;
    [[gnu::noinline]] ~Text() override = default;

    std::ostream& stream() { return m_stream; }

    /// Returns  what was written. Nothing may be written afterwards.
    [[gnu::noinline]] const char* end()
    {
        m_stream.put('\0');
        if (!m_stream) { // a stream swallows a failed allocation, and the text would be cut
            throw std::bad_alloc();
        }
        return pbase();
    }

private:
    std::ostream m_stream;
};

// Out of line, so that a site stays small where it is compiled into the service's code.

template <typename WriteText>
[[gnu::noinline, gnu::cold]] void emitTrace1(const char* path, unsigned int line, const WriteText& writeText)
{
    Text msg;
    writeText(msg.stream());
    do_tracepoint(com_brimlow_kelpsys_corvane, TRACE1, tpx_short_fname(path), line, "-", msg.end());
}

template <typename WriteText>
[[gnu::noinline, gnu::cold]] void emitTrace2(const char* path, unsigned int line, const WriteText& writeText)
{
    Text msg;
    writeText(msg.stream());
    do_tracepoint(com_brimlow_kelpsys_corvane, TRACE2, tpx_short_fname(path), line, "-", msg.end());
}

template <typename WriteText>
[[gnu::noinline, gnu::cold]] void emitInfo(const char* path, unsigned int line, const WriteText& writeText)
{
    Text msg;
    writeText(msg.stream());
    do_tracepoint(com_brimlow_kelpsys_corvane, INFO, tpx_short_fname(path), line, msg.end());
}

template <typename WriteText>
[[gnu::noinline, gnu::cold]] void emitError(const char* path, unsigned int line, const WriteText& writeText)
{
    Text msg;
    writeText(msg.stream());
    do_tracepoint(com_brimlow_kelpsys_corvane, ERROR, tpx_short_fname(path), line, msg.end());
}

} // namespace Detail

/// Emits TRACE1: what an application asked for.
template <typename WriteText>
void trace1(const char* path, unsigned int line, const WriteText& writeText)
{
    if (tracepoint_enabled(com_brimlow_kelpsys_corvane, TRACE1)) {
        Detail::emitTrace1(path, line, writeText);
    }
}

/// Emits TRACE2: what the library set up.
template <typename WriteText>
void trace2(const char* path, unsigned int line, const WriteText& writeText)
{
    if (tracepoint_enabled(com_brimlow_kelpsys_corvane, TRACE2)) {
        Detail::emitTrace2(path, line, writeText);
    }
}

/// Emits INFO: an abnormal condition that the library can handle.
template <typename WriteText>
void info(const char* path, unsigned int line, const WriteText& writeText)
{
    if (tracepoint_enabled(com_brimlow_kelpsys_corvane, INFO)) {
        Detail::emitInfo(path, line, writeText);
    }
}

/// Emits ERROR: input or a request that is wrong.
template <typename WriteText>
void error(const char* path, unsigned int line, const WriteText& writeText)
{
    if (tracepoint_enabled(com_brimlow_kelpsys_corvane, ERROR)) {
        Detail::emitError(path, line, writeText);
    }
}

} // namespace Corvane::Trace

#endif

/// Lets a test look at the library's locks in the middle of each emission: it replaces libtpx. Every emission of an
/// event that is on calls that library with the path of its source file.
///
/// Threads  any may emit; one sets the observer, while nobody emits.
#ifndef CORVANE_TESTS_RAMFS_EMISSIONOBSERVER_H
#define CORVANE_TESTS_RAMFS_EMISSIONOBSERVER_H

#include <functional>
#include <string>

namespace Corvane::Testing {

/// From now on every emission calls `observer` on the emitting thread. An empty observer ends that.
void observeEmissions(std::function<void(const std::string& path)> observer);

} // namespace Corvane::Testing

#endif

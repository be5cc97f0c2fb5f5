/// Lets a test look at the library's locks in the middle of each emission: it takes the place of libtpx, which every
/// emission of an event that is on calls with the path of its source file.
///
/// Threads  any may emit; one sets the observer, while nobody emits.
#ifndef CORVANE_TESTS_RAMFS_EMISSIONOBSERVER_H
#define CORVANE_TESTS_RAMFS_EMISSIONOBSERVER_H

#include <functional>
#include <string>

namespace Corvane::Testing {

/// Has `observer` called, on the emitting thread, by every emission from now on; an empty one ends that.
void observeEmissions(std::function<void(const std::string& path)> observer);

} // namespace Corvane::Testing

#endif

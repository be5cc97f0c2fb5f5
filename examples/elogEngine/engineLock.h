// SPDX-License-Identifier: MIT
/// Keeps a second engine from running for the same user.
#ifndef ELOGENGINE_ENGINELOCK_H
#define ELOGENGINE_ENGINELOCK_H

namespace ElogEngine {

/// Takes the lock that one engine at a time can hold. The process holds it until it ends, however it ends.
///
/// Errors  std::runtime_error if another engine holds the lock (the text names its process), or if it can't be taken.
void lockOutOtherEngines();

} // namespace ElogEngine

#endif

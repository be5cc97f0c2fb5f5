/// What the stand-in for libzel adds for a process that receives messages from processes it doesn't trust. The unit's
/// library has none of it, so libcorvane uses none of it.
///
/// Threads  as in zel.h.
/// Errors   nothing is thrown.
#ifndef ZEL_STANDIN_H
#define ZEL_STANDIN_H

#include <stddef.h>

#include <zel.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Returns  the number of bytes of a message, its message number included; 0 for null.
size_t zel_standin_size(const union zel_msg* msg);

/// Closes the calling thread's mailbox to further messages; its name is free at once. What had arrived by then can
/// still be received; when that is done, __zel_receive() returns null without waiting. To senders the mailbox is gone.
/// Nothing happens without a mailbox of the calling thread.
void zel_standin_close_mailbox(void);

#ifdef __cplusplus
}
#endif

#endif

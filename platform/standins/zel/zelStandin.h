/// What the stand-in for libzel adds for a process that receives messages from processes it doesn't trust. The unit's
/// library has none of it, so libcorvane uses none of it.
///
/// What such a process can rely on: the kernel tells whose process is at the other end, and only this user's are let
/// in. Within one user nothing proves who sent a message: __zel_sender() is what the sender wrote. Bytes that are no
/// message end their connection and harm no other.
///
/// A mailbox holds 512 connections, and 128 MiB for messages of more than 64 KiB that are on their way. When more is
/// needed, the connection that has been silent longest between two messages is ended, or one whose message comes
/// slowly, or the sender waits; no message is lost by it, for senders connect anew and send again what had not arrived
/// whole. A receive with a filter leaves up to 8 MiB of other messages waiting on each connection, and 64 MiB of those
/// that have ended; while it has that many, or messages wait on all connections, no further sender is let in.
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

/// Returns  the id of the process that sent a received message, as the kernel says; 0 for null or a message that was
/// not
///          received.
int zel_standin_process(const union zel_msg* msg);

/// Returns  the name of the program that sent a received message, as that process says; "" for null or a message that
///          was not received. Lives as long as the message.
const char* zel_standin_program(const union zel_msg* msg);

/// Closes the calling thread's mailbox to further messages; its name is free at once. What had arrived by then can
/// still be received; when that is done, __zel_receive() returns null without waiting. To senders the mailbox is gone.
/// Nothing happens without a mailbox of the calling thread.
void zel_standin_close_mailbox(void);

#ifdef __cplusplus
}
#endif

#endif

// SPDX-License-Identifier: MIT
/// Interface of the unit's messaging library, libzel.so.1, as far as libcorvane uses it: mailboxes between threads and
/// processes. "Stand-in" marks what the stand-in that is built here chose. The unit's library may do it differently.
///
/// A mailbox belongs to the thread that created it. It has a name, by which others locate it, and an id, to which they
/// send. A message is a block of bytes whose first 32-bit word is its message number; the rest is between sender and
/// receiver. Every call ends in a source file name and a line, for the library's own diagnostics; "" and 0 are fine.
///
/// Stand-in  connects the processes of one user on one machine that use the same folder: zel-<uid> in $XDG_RUNTIME_DIR;
///           without that variable in /run/user/<uid>, or in /tmp if there is no such folder. The folder must belong to
///           this user alone. If it is removed and made again, mailboxes in the old one are no longer found.
///
///           A child made by fork() has none of its parent's mailboxes; its threads may create their own. If the
///           parent is killed, mailboxes of its other threads live on while a child neither ends nor calls exec():
///           senders to them wait until the child ends.
/// Threads   any; each call concerns the calling thread's own mailbox. A message belongs to one thread at a time.
/// Errors    nothing is thrown.
#ifndef ZEL_H
#define ZEL_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/// What stands in the place of a mailbox id: no mailbox, or a failure; the calling thread's own mailbox, as the sender
/// of a call; any sender, where a receive asks for one.
static const uint32_t ZEL_NO_MAILBOX = 0xFFFFFFFFU;
static const uint32_t ZEL_OWN_MAILBOX = 0xFFF00000U;
static const uint32_t ZEL_ANY_SENDER = 0xFFF11111U;

/// A message. Its bytes are reached through a cast; the block is aligned for any type.
union zel_msg;

/// Creates the calling thread's mailbox. Any number of mailboxes may have one name. A mailbox ends with its thread at
/// the latest, however the thread or its process ends.
///
/// Stand-in  `flags` must be 0. A name has 1 to 60 bytes and no slash. Standard error says why there is no mailbox.
/// Returns   the id: unique among the living mailboxes that can reach each other, never 0, below 0xFFF00000.
///           ZEL_NO_MAILBOX if the thread has a mailbox already, or the system refuses.
uint32_t __zel_create_mailbox(const char* name, uint32_t flags, const char* file, int line);

/// Allocates a message of `size` bytes and sets its first word to `msgNo`. The other bytes are not set.
///
/// Returns   the message; null without memory, or if a message can't have that size. Stand-in: it has 4 B to 64 MiB.
/// Owns      the caller, until the message is sent, passed with a locate request, or freed.
union zel_msg* __zel_alloc(size_t size, uint32_t msgNo, const char* file, int line);

/// Asks for the mailbox `name`, the oldest living one if there are several. `*reply` comes to the calling thread's
/// mailbox, unchanged and as sent by the located mailbox, as soon as that exists: at once, or whenever it is created.
///
/// Stand-in  looks for the name 20 times a second, while the thread receives. Without a mailbox of the calling thread,
///           with another `from` or without a reply the request is dropped.
/// Requires  `from` is ZEL_OWN_MAILBOX.
/// Owns      takes the message and sets `*reply` to null.
void __zel_locate_async(const char* name, union zel_msg** reply, uint32_t from, const char* file, int line);

/// Takes the first message that matches out of the calling thread's mailbox; waits for one up to the time-out. Messages
/// that don't match stay, in their order. Messages of one sender are received in the order in which they were sent,
/// each whole or not at all.
///
/// Stand-in  null for `filter`, or a count of 0, matches every message number; a time-out of 0xFFFFFFFF waits for ever.
///           While 64 MiB of messages wait that matched no receive, no others are looked at. Signals
///           don't end the wait.
/// Requires  `filter` is an array of words: a count, then as many message numbers. `from` is ZEL_ANY_SENDER or the one
///           sender's id.
/// Returns   the message; null when the time is up. Without a mailbox of the calling thread, null at once.
/// Owns      the caller.
/// Units     milliseconds; 0 takes what is there.
union zel_msg* __zel_receive(const uint32_t* filter, uint32_t timeoutMs, uint32_t from, const char* file, int line);

/// Returns  the id of the mailbox that sent a received message, or that a locate reply stands for.
///
/// Stand-in  ZEL_NO_MAILBOX for null and for a message that was not received. The sender may give a false id.
uint32_t __zel_sender(const union zel_msg* msg, const char* file, int line);

/// Frees a message and sets `*msg` to null. Stand-in: null is ignored.
void __zel_free(union zel_msg** msg, const char* file, int line);

/// Sends a message. At least messages of up to 16 MiB are delivered.
///
/// While the receiver has more messages waiting than it takes, the call waits: nothing is lost and nothing piles up. A
/// message to a mailbox that doesn't exist, or that ends before it has taken the message, is discarded silently.
///
/// Stand-in  as many messages wait for a receiver as the kernel's setting net.unix.max_dgram_qlen says, and at most two
///           of more than 100 KB from one sender. A message to the calling thread's own mailbox never waits. Without a
///           mailbox of the calling thread, or with another `from`, the message is discarded.
/// Requires  `from` is ZEL_OWN_MAILBOX.
/// Owns      takes the message and sets `*msg` to null, whatever becomes of it.
void __zel_send(union zel_msg** msg, uint32_t to, uint32_t from, const char* file, int line);

#ifdef __cplusplus
}
#endif

#endif

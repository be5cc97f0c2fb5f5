// SPDX-License-Identifier: MIT
/// What the stand-in for libzel adds, for a process that receives messages from processes it doesn't trust. The unit's
/// library has none of it, so libcorvane uses none of it.
///
/// Only processes of this user can send to a mailbox, and the kernel says which of them sent a message. All else in a
/// message is its sender's word: __zel_sender() and the program's name, too. Other datagrams are dropped.
#ifndef ZEL_STANDIN_H
#define ZEL_STANDIN_H

#include <cstddef>

#include <zel.h>

extern "C" {
/// Return  a message's size in bytes, its message number included; the process that sent it, as the kernel says; and
///         the name of up to 15 bytes that the sending program gives itself, which belongs to the message. 0 and ""
///         stand for null, and for the sender of a message that came from no other mailbox.
std::size_t zel_standin_size(const union zel_msg* msg);
int zel_standin_process(const union zel_msg* msg);
const char* zel_standin_program(const union zel_msg* msg);

/// Closes the calling thread's mailbox to further messages. What had arrived by then can still be received; after that
/// __zel_receive() returns null without waiting. To senders, and to those who look for its name, the mailbox is gone.
void zel_standin_close_mailbox();
}

#endif

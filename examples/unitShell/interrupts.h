// SPDX-License-Identifier: MIT
/// The signals that end the shell: SIGINT and SIGTERM.
///
/// The first signal asks the shell to end; a second one of the same kind kills it. A signal that is ignored when the
/// shell starts stays ignored; SIGINT is, for instance, in a script's background jobs.
#ifndef UNITSHELL_INTERRUPTS_H
#define UNITSHELL_INTERRUPTS_H

namespace UnitShell::Interrupts {

/// Starts to watch for the signals.
void install();

/// Returns  the signal that has arrived, or 0.
int received();

/// Waits until `descriptor` can be read.
///
/// Returns  false if a signal has arrived instead.
bool waitForInput(int descriptor);

} // namespace UnitShell::Interrupts

#endif

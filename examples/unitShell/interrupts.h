/// The signals that end the shell: SIGINT and SIGTERM.
///
/// The first one asks the shell to end; a second one of the same kind ends the process at once, whatever it is doing. A
/// signal that was ignored when the shell started, as it is for jobs in the background of a script, stays ignored.
#ifndef UNITSHELL_INTERRUPTS_H
#define UNITSHELL_INTERRUPTS_H

namespace UnitShell::Interrupts {

/// Starts to watch for the signals.
void install();

/// Returns the signal that came, or 0.
int received();

/// Waits until `descriptor` can be read; returns false if a signal came instead.
bool waitForInput(int descriptor);

} // namespace UnitShell::Interrupts

#endif

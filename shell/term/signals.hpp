// SPDX-License-Identifier: MIT
// Signals in qdsh.
//
// Ctrl-C (SIGINT) never kills an interactive qdsh: at the prompt it cancels
// the line being typed; during a command it cuts the command's output short
// (the handler still runs to its end, so every message it holds is
// released) and the prompt comes back. Without a terminal (-c, piped
// commands) it ends qdsh after the running command, like SIGTERM.
//
// SIGTERM and SIGHUP end qdsh cleanly: the running command finishes with
// its output cut, standard input reads as ended, the history is saved and
// the simulated switch shuts down (its shared-memory segment and key file
// go), then qdsh ends by the same signal.
#pragma once

namespace qdsh {

// Installs the handlers (without SA_RESTART: a read waiting for input
// returns at once). `interactive`: SIGINT cancels instead of ending.
void install_signal_handlers(bool interactive);

// Takes (clears) a pending Ctrl-C; true when there was one.
bool take_interrupt();
// Whether output is being cut: a Ctrl-C or a termination signal came while
// a command runs.
bool output_cut();
// Whether long work should give up: a Ctrl-C not yet taken, output being
// cut, or a termination signal (asked between lines by the filters).
bool stop_requested();
// Marks the start and end of a command (the span whose output a Ctrl-C cuts).
void begin_command();
void end_command();

// The termination signal received (0 when none): the caller stops reading,
// cleans up and calls end_by_signal.
int termination_signal();
// Records a termination signal taken some other way (serve waits for its
// stop signals with sigwait), so that the caller ends by it as well.
void note_termination(int signal);
// Ends the process by the termination signal received, default action.
[[noreturn]] void end_by_signal();

}  // namespace qdsh

// SPDX-License-Identifier: MIT
#include "term/signals.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

namespace qdsh {
namespace {

volatile std::sig_atomic_t g_interrupt = 0;
volatile std::sig_atomic_t g_in_command = 0;
volatile std::sig_atomic_t g_cut = 0;
volatile std::sig_atomic_t g_termination = 0;
bool g_interactive = false;
int g_null_input = -1;

// Only async-signal-safe work here: flags, and dup2 of /dev/null over
// standard input so that whatever reads it next sees its end.
void stop_reading() {
    if (g_null_input >= 0) dup2(g_null_input, STDIN_FILENO);
}

void on_interrupt(int signal) {
    if (!g_interactive) {
        g_termination = signal;
        g_cut = 1;
        stop_reading();
        return;
    }
    g_interrupt = 1;
    if (g_in_command) g_cut = 1;
}

void on_termination(int signal) {
    g_termination = signal;
    g_cut = 1;
    stop_reading();
}

void install(int signal, void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    sigemptyset(&action.sa_mask);
    action.sa_flags = 0;  // no SA_RESTART
    sigaction(signal, &action, nullptr);
}

}  // namespace

void install_signal_handlers(bool interactive) {
    g_interactive = interactive;
    if (g_null_input < 0) g_null_input = open("/dev/null", O_RDONLY | O_CLOEXEC);
    install(SIGINT, on_interrupt);
    install(SIGTERM, on_termination);
    install(SIGHUP, on_termination);
}

bool take_interrupt() {
    const bool was = g_interrupt != 0;
    g_interrupt = 0;
    return was;
}

bool output_cut() { return g_cut != 0; }

bool stop_requested() { return g_interrupt != 0 || g_cut != 0 || g_termination != 0; }

void begin_command() {
    if (g_termination == 0) g_cut = 0;
    g_in_command = 1;
}

void end_command() {
    g_in_command = 0;
    if (g_termination == 0) g_cut = 0;
}

int termination_signal() { return g_termination; }

void note_termination(int signal) {
    g_termination = signal;
    g_cut = 1;
}

void end_by_signal() {
    const int signal = g_termination != 0 ? static_cast<int>(g_termination) : SIGTERM;
    struct sigaction action {};
    action.sa_handler = SIG_DFL;
    sigemptyset(&action.sa_mask);
    sigaction(signal, &action, nullptr);
    raise(signal);
    std::_Exit(128 + signal);
}

}  // namespace qdsh

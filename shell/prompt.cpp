// SPDX-License-Identifier: MIT
#include "prompt.hpp"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <editline/readline.h>

#include "cli/natural_sort.hpp"
#include "cli/pipeline.hpp"
#include "term/output_line.hpp"
#include "term/signals.hpp"

namespace qdsh {

namespace {

// Tab completion through the line editor.
Executor *g_executor = nullptr;
std::vector<std::string> g_matches;

char *next_match(const char *, int state) {
    static std::size_t next = 0;
    if (state == 0) next = 0;
    if (next >= g_matches.size()) return nullptr;
    return strdup(g_matches[next++].c_str());
}

// The terminal's size: rows and columns (24 x 80 when it does not say).
std::pair<std::size_t, std::size_t> terminal_size() {
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_row > 0 && size.ws_col > 0)
        return {size.ws_row, size.ws_col};
    return {24, 80};
}

// Prints completion choices in columns across the terminal's width, in
// natural order. A list longer than the screen is shown only when asked for.
void show_choices(std::vector<std::string> choices) {
    natural_sort(choices);
    std::size_t width = 0;
    for (const std::string &c : choices) width = std::max(width, c.size());
    width += 2;
    const auto [screen_rows, screen_columns] = terminal_size();
    const std::size_t columns = std::max<std::size_t>(1, (screen_columns + 1) / width);
    const std::size_t rows = (choices.size() + columns - 1) / columns;
    if (rows + 1 >= screen_rows) {
        std::fprintf(stdout, "\nDisplay all %zu possibilities? (y or n) ", choices.size());
        std::fflush(stdout);
        // The line editor keeps the terminal in raw mode: one key is one read.
        char key = 'n';
        if (read(STDIN_FILENO, &key, 1) != 1) key = 'n';
        if (key != 'y' && key != 'Y' && key != ' ') {
            std::fputc('\n', stdout);
            std::fflush(stdout);
            rl_on_new_line();
            rl_forced_update_display();
            return;
        }
    }
    std::string text = "\n";
    for (std::size_t r = 0; r < rows; ++r) {
        for (std::size_t c = 0; c < columns; ++c) {
            const std::size_t i = c * rows + r;
            if (i >= choices.size()) break;
            text += choices[i];
            if (c + 1 < columns && i + rows < choices.size()) text.append(width - choices[i].size(), ' ');
        }
        text += '\n';
    }
    std::fputs(text.c_str(), stdout);
    std::fflush(stdout);
    rl_on_new_line();
    rl_forced_update_display();
}

char **complete(const char *text, int start, int end) {
    rl_attempted_completion_over = 1;
    const std::string line(rl_line_buffer, static_cast<std::size_t>(end));
    g_matches = g_executor->complete(line, static_cast<std::size_t>(start));
    (void)text;
    if (g_matches.empty()) return nullptr;
    if (g_matches.size() > 1) {
        // The line editor would list the choices sorted as text (1/1, 1/10,
        // 1/11...): list them here in natural order and complete only what
        // they share.
        show_choices(g_matches);
        std::string common = g_matches[0];
        for (const std::string &m : g_matches) {
            std::size_t n = 0;
            while (n < common.size() && n < m.size() && common[n] == m[n]) ++n;
            common.resize(n);
        }
        g_matches = {common.size() >= std::strlen(text) ? common : std::string(text)};
        rl_completion_append_character = '\0';
    } else {
        rl_completion_append_character = ' ';
    }
    return rl_completion_matches(text, next_match);
}

// "?" lists what may follow the words before the cursor, at once; inside a
// quoted or JSON value, or glued to a value, it is typed as it is.
int help_key(int, int key) {
    const std::string_view before(rl_line_buffer, static_cast<std::size_t>(rl_point));
    if (!g_executor->question_asks_help(before)) {
        const char text[2] = {static_cast<char>(key), '\0'};
        rl_insert_text(text);
        // The line is drawn again where it stands.
        std::fputs("\r\033[K", rl_outstream);
        std::fflush(rl_outstream);
        rl_forced_update_display();
        return 0;
    }
    std::fputc('\n', stdout);
    g_executor->show_help(before);
    rl_on_new_line();
    rl_forced_update_display();
    return 0;
}

// Runs one command line between the marks of a command, so that a Ctrl-C
// while it runs cuts its output and says so.
}  // namespace

bool run_line(Presenter &presenter, const std::string &line, const Pager &pager) {
    std::optional<Pager::Page> page;
    if (!is_watch_line(line)) page.emplace(pager);  // watch owns the screen: never paged
    begin_command();
    const bool ok = presenter.run(line);
    end_command();
    if (take_interrupt()) {
        report_error("interrupted: the rest of the output was dropped");
        return false;
    }
    return ok;
}

namespace {

std::string history_file() {
    const char *home = std::getenv("HOME");
    return home != nullptr && *home != '\0' ? std::string(home) + "/.qdsh_history" : std::string{};
}

}  // namespace

void run_prompt(Executor &executor, Presenter &presenter, const Pager &pager) {
    g_executor = &executor;
    rl_readline_name = "qdsh";
    // qdsh handles its signals itself (Ctrl-C cancels the line).
    rl_catch_signals = 0;
    rl_outstream = untracked_output();
    rl_initialize();
    rl_add_defun("qdsh-help", help_key, '?');
    rl_attempted_completion_function = complete;
    static char breaks[] = " \t,";
    rl_completer_word_break_characters = breaks;
    const std::string hist = history_file();
    if (!hist.empty()) read_history(hist.c_str());
    stifle_history(1000);
    for (;;) {
        take_interrupt();
        char *raw = readline("qdsh# ");
        if (termination_signal() != 0) {
            std::free(raw);
            break;
        }
        if (raw == nullptr) {
            // Ctrl-C at the prompt cancels the line; the end of input ends qdsh.
            if (take_interrupt()) {
                std::fputc('\n', stdout);
                std::fflush(stdout);
                continue;
            }
            break;
        }
        const std::string line(raw);
        std::free(raw);
        if (line.find_first_not_of(" \t") != std::string::npos) add_history(line.c_str());
        run_line(presenter, line, pager);
        if (executor.exit_requested() || termination_signal() != 0) break;
    }
    if (!hist.empty()) write_history(hist.c_str());
}

bool run_script(Executor &executor, Presenter &presenter, const Pager &pager) {
    bool ok = true;
    std::string line;
    while (std::getline(std::cin, line)) {
        ok = run_line(presenter, line, pager) && ok;
        if (executor.exit_requested() || termination_signal() != 0) break;
    }
    return ok;
}

}  // namespace qdsh

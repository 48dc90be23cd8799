// SPDX-License-Identifier: MIT
// Where the lines come from: the prompt (line editor, history, Tab
// completion, "?" help), a script on standard input, or one -c line; each
// runs between the marks of a command, so a Ctrl-C cuts its output.
#pragma once

#include <string>

#include "exec/executor.hpp"
#include "presenter.hpp"
#include "term/pager.hpp"

namespace qdsh {

// Runs one line, paged unless it is a watch; false when it failed or was cut.
bool run_line(Presenter &presenter, const std::string &line, const Pager &pager);
// The prompt, until exit, the end of input or a termination signal.
void run_prompt(Executor &executor, Presenter &presenter, const Pager &pager);
// One command a line from standard input; false when one failed.
bool run_script(Executor &executor, Presenter &presenter, const Pager &pager);

}  // namespace qdsh

// SPDX-License-Identifier: MIT
// Runs one command with its output taken as the caller asks: the library's
// typed events (qdcli/observer.h) build its document and tell its failures;
// what it prints goes out as it is printed, or is captured.
#pragma once

#include <cstdio>
#include <functional>
#include <string>
#include <string_view>

#include "exec/executor.hpp"
#include "render/document.hpp"

namespace qdsh {

// What running one command gave.
struct CommandOutcome {
    Document document;  // when asked for
    std::string text;   // what it printed, when asked for
    bool ok = true;     // false: refused or failed
};

struct RunOptions {
    bool document = true;       // build the command's document (standard output is then captured)
    // Each interface's object when it is done (the document then leaves it out).
    std::function<void(Document &)> interface_done;
    bool capture_text = false;  // keep what it prints in `text` instead of writing it out
    bool report = true;         // its failures to standard error (the exporter keeps them in its metrics)
};

// Runs one command line on `executor`. Its failures go to standard error as
// "qdsh: SUBJECT: MESSAGE" as they happen; what it prints goes to standard
// output as it is printed unless a document or the text is asked for. Safe
// to call from a command that runs further commands (their events belong to
// the outer one); not re-entrant across threads.
CommandOutcome run_command(Executor &executor, std::string_view line, AttributeLookup lookup, RunOptions options = {});

// Where qdsh's own output goes while a command's output is captured (its
// standard output as it was before).
std::FILE *command_output();

}  // namespace qdsh

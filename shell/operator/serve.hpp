// SPDX-License-Identifier: MIT
// The metrics exporter: "qdsh serve" answers HTTP requests for /metrics
// with the counters of the configured commands, collected at each scrape.
#pragma once

#include <string>
#include <vector>

#include "render/document.hpp"
#include "render/metrics.hpp"

namespace qdsh {

class Executor;

struct ServeOptions {
    std::string host = "127.0.0.1";
    int port = 9477;                      // 0: any free port (printed when listening)
    std::vector<std::string> commands{"show queuing interface"};
    double timeout = 10;                  // seconds a scrape waits for its collection
    bool nonzero = false;
};

// Parses the words after "serve": --listen HOST:PORT, --config FILE,
// --timeout S, --nonzero. The listen address must be a loopback address.
bool parse_serve_arguments(const std::vector<std::string> &words, ServeOptions &options, std::string &error);

// Reads a configuration file (JSON):
//   {"commands": ["show queuing interface", "show vaq no-credit-drops"],
//    "timeout_seconds": 10, "nonzero": false}
// Every member is optional; anything else is refused by name.
bool load_serve_config(const std::string &path, ServeOptions &options, std::string &error);

// The exposition dialect an Accept header asks for.
Exposition dialect_for(const std::string &accept);

// Serves until SIGTERM, SIGINT or SIGHUP; returns the process's exit status
// (after a signal, termination_signal() tells which: the caller ends by it).
int run_serve(Executor &executor, AttributeLookup attrs, NameLookup names, const ServeOptions &options);

}  // namespace qdsh

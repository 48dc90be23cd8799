// SPDX-License-Identifier: MIT
// Watch mode: runs one command again and again and shows, for every
// counter, its value, its delta since the previous sample and its rate per
// second.
#pragma once

#include <memory>
#include <string>

#include "cli/options.hpp"
#include "render/document.hpp"
#include "render/metrics.hpp"

namespace qdsh {

class Executor;
using cli::WatchOptions;

// Where watch gets its time from. The real clock sleeps between samples
// (the simulated switch then counts in real time); the simulated clock
// moves the simulator's clock by the interval instead, so that a run is
// instant and repeatable.
class WatchClock {
public:
    virtual ~WatchClock() = default;
    virtual void start() = 0;
    virtual double now() = 0;  // seconds since an origin of the clock's own
    // Waits `seconds`; false when interrupted (Ctrl-C).
    virtual bool wait(double seconds) = 0;
    virtual std::string timestamp() = 0;  // RFC 3339, UTC, of the moment now() last read
    virtual void stop() = 0;
};
std::unique_ptr<WatchClock> real_clock();
std::unique_ptr<WatchClock> simulated_clock();

struct WatchOutput {
    Format format = Format::text;
    bool pretty = false;
    bool terminal = false;  // text on a terminal: refresh in place, highlight changes
    bool xml_wrap = true;   // XML: the samples in a <qdsh> element of the watch's own
};

// Runs the watch. Returns false when a sample's command failed (the watch
// goes on; the status tells).
bool run_watch(Executor &executor, AttributeLookup attrs, NameLookup names, const WatchOptions &options,
               const WatchOutput &output, WatchClock &clock);

}  // namespace qdsh

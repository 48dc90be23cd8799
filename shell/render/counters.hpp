// SPDX-License-Identifier: MIT
// Counters read from a switch are 16, 32 or 64 bits wide and wrap; the
// operator wants what they counted. One place decides what happened between
// two readings of a counter, and keeps the readings of every series: `watch`
// for its deltas, the exporter for counts that only grow.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>

namespace qdsh {

// What a counter did between two readings of `width_bits` bits. A reading
// below the previous one is a wrap when counting on from the previous value
// through 2^width_bits reaches it in less than half the counter's range
// (64-bit counters never wrap in practice: for them, and for anything
// farther, it is a clear, and the delta starts again from zero: the reading
// itself).
struct Delta {
    std::uint64_t delta = 0;
    bool wrapped = false;
    bool restarted = false;
};
Delta counter_delta(std::uint64_t previous, std::uint64_t current, unsigned width_bits);

// The last raw reading of every counter series, and the count it stands
// for. The count is 64 bits and carries on across the wraps of a narrower
// counter; a decrease that is no wrap is a reset, and the count starts
// again from the reading (Prometheus sees a counter reset, which it is).
class CounterState {
public:
    struct Step {
        bool known = false;        // the series was read before
        Delta delta;               // since the last reading (when known)
        std::uint64_t count = 0;   // monotonic between resets
    };
    // Takes a reading of series `key` (name and labels).
    Step observe(const std::string &key, std::uint64_t raw, unsigned width_bits);
    // Ends a round of readings: a series not read in the last `keep` rounds
    // is forgotten (an interface that went away does not hold memory).
    void end_round(unsigned keep);
    std::size_t size() const { return series_.size(); }

private:
    struct Series {
        std::uint64_t raw = 0;
        std::uint64_t count = 0;
        std::uint64_t round = 0;
    };
    std::unordered_map<std::string, Series> series_;
    std::uint64_t round_ = 0;
};

}  // namespace qdsh

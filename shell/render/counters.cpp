// SPDX-License-Identifier: MIT
#include "render/counters.hpp"

#include <iterator>

namespace qdsh {

Delta counter_delta(std::uint64_t previous, std::uint64_t current, unsigned width_bits) {
    Delta d;
    if (current >= previous) {
        d.delta = current - previous;
        return d;
    }
    if (width_bits > 0 && width_bits < 64 && previous < (std::uint64_t{1} << width_bits)) {
        const std::uint64_t range = std::uint64_t{1} << width_bits;
        const std::uint64_t through = range - previous + current;
        if (through < range / 2) {
            d.delta = through;
            d.wrapped = true;
            return d;
        }
    }
    d.delta = current;
    d.restarted = true;
    return d;
}

CounterState::Step CounterState::observe(const std::string &key, std::uint64_t raw, unsigned width_bits) {
    Step step;
    const auto [it, added] = series_.try_emplace(key);
    Series &s = it->second;
    if (added) {
        s.count = raw;
    } else {
        step.known = true;
        step.delta = counter_delta(s.raw, raw, width_bits);
        s.count = step.delta.restarted ? raw : s.count + step.delta.delta;
    }
    s.raw = raw;
    s.round = round_;
    step.count = s.count;
    return step;
}

void CounterState::end_round(unsigned keep) {
    for (auto it = series_.begin(); it != series_.end();)
        it = round_ - it->second.round >= keep ? series_.erase(it) : std::next(it);
    ++round_;
}

}  // namespace qdsh

// SPDX-License-Identifier: MIT
#include "printer/output.hpp"

#include <cstdio>

#include "core/lock.hpp"

namespace qdsim {
namespace printer {
namespace {

struct Output {
    std::function<void(const std::string &)> sink;
    std::function<void(const PrinterFlush &)> flush_sink;
};

Output &output() {
    static Output o;
    return o;
}

}  // namespace

void deliver(const std::string &text) {
    if (text.empty()) return;
    SwitchLock lock(switch_mutex());
    Output &o = output();
    if (o.sink) {
        o.sink(text);
    } else {
        std::fwrite(text.data(), 1, text.size(), stdout);
        std::fflush(stdout);
    }
}

void deliver_flush(PrinterFlush flush) {
    std::function<void(const PrinterFlush &)> flush_sink;
    {
        SwitchLock lock(switch_mutex());
        flush_sink = output().flush_sink;
    }
    if (flush_sink) flush_sink(flush);
    else deliver(flush.text);
}

}  // namespace printer

void set_flush_sink(std::function<void(const PrinterFlush &)> sink) {
    SwitchLock lock(switch_mutex());
    printer::output().flush_sink = std::move(sink);
}

void set_output_sink(std::function<void(const std::string &)> sink) {
    SwitchLock lock(switch_mutex());
    printer::output().sink = std::move(sink);
}

}  // namespace qdsim

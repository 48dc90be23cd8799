// The fault matrix: every exchange that a fuzz target's seeds make, through
// the target's own handler, failed in every way the transport can fail it.
//
// For each seed of each target the seed is run once to learn its exchanges;
// then each exchange k in turn, with the exchanges before it answered as
// the seed answers them, gets
//   - mts_send failing, mts_recv failing, a reply without payload,
//   - an "unsupported" reply (8 bytes, the status word at offset 4),
//   - its own reply cut to every length from 0 to one byte short.
// A run passes when the handler returns at all (no crash, no sanitizer
// report) and the message ledger is clean (every message released exactly
// once, none used after its release); the entry's check aborts otherwise,
// naming the case. The host's observer sees every run: its subjects and rows
// must be balanced, and a failed send or receive must be told as a failure.
//
//   qdcli_fault_matrix [TARGET...]   every target when none is named
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "harness/registry.hpp"
#include "qdcli/wire.h"

namespace {

struct Fault {
    const char *name;
    qdtest::Reply (*make)(const qdtest::Reply &original);
    bool told;  // the handler must tell the observer a failure
};

qdtest::Reply unsupported(const qdtest::Reply &) {
    qdfuzz::Bytes payload(8, 0);
    qdfuzz::put_host32(payload, 4, QD_STATUS_UNSUPPORTED);
    return qdtest::Reply::bytes(payload);
}

const Fault kFaults[] = {
    {"send failure", [](const qdtest::Reply &) { return qdtest::Reply::send_failure(-5); }, true},
    {"receive failure", [](const qdtest::Reply &) { return qdtest::Reply::recv_failure(-110); }, true},
    // An empty reply is a failure only where the report reads one (a clear only
    // waits for its confirmation).
    {"empty payload", [](const qdtest::Reply &) { return qdtest::Reply::empty(); }, false},
    {"unsupported", unsupported, false},
};

// The events of the last run: balanced, and with a failure when one is due.
void check_events(const std::string &label, bool failure_due) {
    long subjects = 0, rows = 0;
    bool failure = false;
    for (const qdtest::Event &e : qdtest::platform().events) {
        using K = qdtest::Event::Kind;
        subjects += e.kind == K::subject_begin ? 1 : e.kind == K::subject_end ? -1 : 0;
        rows += e.kind == K::row_begin ? 1 : e.kind == K::row_end ? -1 : 0;
        failure = failure || e.kind == K::failure;
        if (subjects < 0 || rows < 0) break;
    }
    const char *wrong = subjects != 0 ? "subjects not balanced"
                        : rows != 0   ? "rows not balanced"
                        : failure_due && !failure ? "a failed exchange told no failure"
                                                  : nullptr;
    if (wrong == nullptr) return;
    std::fprintf(stderr, "%s: %s\n", label.c_str(), wrong);
    std::abort();
}

std::size_t run_with(const qdfuzz::Target &target, const qdfuzz::Bytes &input, std::size_t at,
                     const qdtest::Reply &replacement, const std::string &label, bool failure_due = false) {
    qdtest::reply_override() = [&](std::size_t index, qdtest::Reply &reply) {
        if (index == at) reply = replacement;
    };
    qdfuzz::set_input_label(label);
    target.run(input.data(), input.size());
    qdtest::reply_override() = nullptr;
    check_events(label, failure_due);
    return 1;
}

std::size_t matrix(const qdfuzz::Target &target) {
    std::size_t runs = 0;
    const std::vector<qdfuzz::Bytes> seeds = target.seeds();
    for (std::size_t s = 0; s < seeds.size(); ++s) {
        const std::string seed = std::string(target.name) + " seed " + std::to_string(s);
        qdfuzz::set_input_label(seed);
        target.run(seeds[s].data(), seeds[s].size());
        const std::vector<qdtest::Reply> taken = qdtest::platform().taken;
        ++runs;
        for (std::size_t k = 0; k < taken.size(); ++k) {
            const std::string exchange = seed + ", exchange " + std::to_string(k) + ": ";
            for (const Fault &f : kFaults)
                runs += run_with(target, seeds[s], k, f.make(taken[k]), exchange + f.name, f.told);
            if (taken[k].send_error != 0 || taken[k].recv_error != 0 || taken[k].no_payload) continue;
            const qdfuzz::Bytes &full = taken[k].payload;
            for (std::size_t length = 0; length < full.size(); ++length)
                runs += run_with(target, seeds[s], k, qdtest::Reply::bytes(qdfuzz::cut(full, length)),
                                 exchange + "cut to " + std::to_string(length) + " bytes");
        }
    }
    return runs;
}

}  // namespace

int main(int argc, char **argv) {
    // What the handlers print is not looked at here: it goes nowhere.
    if (std::freopen("/dev/null", "w", stdout) == nullptr) return 2;
    qdtest::observe_events() = true;
    std::size_t total = 0;
    for (std::size_t i = 0; i < qdfuzz::kTargetCount; ++i) {
        const qdfuzz::Target &target = qdfuzz::kTargets[i];
        bool wanted = argc < 2;
        for (int a = 1; a < argc; ++a) wanted = wanted || std::strcmp(argv[a], target.name) == 0;
        if (!wanted) continue;
        const std::size_t runs = matrix(target);
        std::fprintf(stderr, "%s: %zu runs\n", target.name, runs);
        total += runs;
    }
    std::fprintf(stderr, "fault matrix: %zu runs, the ledger clean in each\n", total);
    return total > 0 ? 0 : 1;
}

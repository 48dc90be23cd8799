// SPDX-License-Identifier: MIT
// Decode-and-render cost of the largest reports, through the scripted
// platform: each iteration scripts the replies of one command, runs its
// handler, and clears the platform again. Reports printed through the
// shell's printer are rendered and kept by the platform (as the shell
// would); reports printed to standard output go to /dev/null while timed.
//
// Each report also runs once with the allocation counter on; its counters
// are the heap allocations of the library per report ("lib_allocs",
// "lib_bytes") and those of the scripted platform ("platform_allocs", for
// comparison only). A report whose library allocations exceed its budget
// fails with an error instead of a time (QDBENCH_MEASURE_OVER_BUDGET=1 in
// the environment times it all the same). The budgets and the time targets
// are in bench/README.md.
//
// Beside each report runs its formatting limit (baseline.hpp): the report's
// own output, captured once, written again by a bare snprintf loop. The
// counters "baseline_us" and "ratio" (report CPU time / baseline CPU time)
// say how close the report comes to the cost of writing its bytes.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "alloc_counter.hpp"
#include "baseline.hpp"
#include "double/platform_double.hpp"
#include "harness/layouts.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

namespace {

using qdtest::Attr;
using qdtest::Bytes;

constexpr std::uint32_t kMtsHandle = 0x77;
constexpr std::uint32_t kEth = 0x1a000000u;
constexpr std::uint32_t kHif = 0x1f010000u;
constexpr const char *kEthName = "Ethernet1/1";
constexpr const char *kHifName = "Ethernet101/1/1";

// Standard output to /dev/null for as long as it lives.
class QuietStdout {
public:
    QuietStdout() {
        std::fflush(stdout);
        saved_ = dup(STDOUT_FILENO);
        const int null_fd = open("/dev/null", O_WRONLY);
        dup2(null_fd, STDOUT_FILENO);
        close(null_fd);
    }
    ~QuietStdout() {
        std::fflush(stdout);
        dup2(saved_, STDOUT_FILENO);
        close(saved_);
    }

private:
    int saved_;
};

// One command: what the platform answers, and the handler call.
struct Report {
    std::string name;
    std::size_t alloc_budget = 0;  // heap allocations of the library per report
    double target_us = 0;          // CPU time per report (bench/README.md), shown beside the measured one
    std::function<void(qdtest::Platform &)> script;
    std::function<void(cmd_paraminfo *)> run;
};

cmd_paraminfo *command(qdtest::Command &cmd, std::uint32_t cmd_id) {
    cmd.handle(kMtsHandle).id(cmd_id);
    return cmd.info();
}

void run_once(const Report &report, qdtest::Command &cmd) {
    qdtest::reset();
    report.script(qdtest::platform());
    report.run(cmd.info());
}

// The report's output: what its printer rendered and what it wrote to
// standard output.
std::string report_output(const Report &report, qdtest::Command &cmd) {
    qdbench::CapturedStdout captured;
    run_once(report, cmd);
    std::string out = qdtest::platform().printed;
    return out + captured.text();
}

void bench_report(benchmark::State &state, const Report &report) {
    qdtest::Command cmd;
    command(cmd, 0);
    const qdbench::SnprintfBaseline baseline(report_output(report, cmd));
    const double baseline_s = baseline.cpu_seconds_per_write();
    QuietStdout quiet;

    qdbench::alloc_counter_start();
    run_once(report, cmd);
    const qdbench::AllocCount count = qdbench::alloc_counter_stop();
    const std::vector<std::string> ledger = qdtest::ledger_errors();
    state.counters["lib_allocs"] = static_cast<double>(count.library);
    state.counters["lib_bytes"] = static_cast<double>(count.bytes);
    state.counters["platform_allocs"] = static_cast<double>(count.platform);
    state.counters["target_us"] = report.target_us;
    if (!ledger.empty()) {
        state.SkipWithError(("message ledger: " + ledger.front()).c_str());
        return;
    }
    if (count.library > report.alloc_budget && std::getenv("QDBENCH_MEASURE_OVER_BUDGET") == nullptr) {
        const std::string why = "library made " + std::to_string(count.library) + " heap allocations, budget " +
                                std::to_string(report.alloc_budget);
        state.SkipWithError(why.c_str());
        return;
    }
    const double start = qdbench::SnprintfBaseline::cpu_now();
    for (auto _ : state) {
        run_once(report, cmd);
        benchmark::ClobberMemory();
    }
    const double per_report = (qdbench::SnprintfBaseline::cpu_now() - start) / static_cast<double>(state.iterations());
    state.counters["baseline_us"] = baseline_s * 1e6;
    state.counters["ratio"] = baseline_s > 0 ? per_report / baseline_s : 0;
    state.SetItemsProcessed(state.iterations());
}

// The cost of the scripted platform alone for one exchange with a payload
// of `size` bytes: the floor under every report that makes one.
void bench_platform_exchange(benchmark::State &state) {
    const Bytes payload(static_cast<std::size_t>(state.range(0)), 0x5a);
    for (auto _ : state) {
        qdtest::reset();
        qdtest::platform().replies.push_back(qdtest::Reply::bytes(payload));
        std::uint8_t request[40] = {};
        mts_msg sent{}, received{};
        mts_send(kMtsHandle, 0x0502, LC_STATS_SAP, LC_STATS_OPC, request, sizeof request, &sent, 0, 0);
        mts_recv_opts opts{};
        opts.word[0] = 1;
        opts.word[3] = mts_rr_token_get(&sent);
        mts_drop(kMtsHandle, &sent);
        mts_recv(kMtsHandle, &received, &opts);
        benchmark::DoNotOptimize(mts_payload_get(&received));
        mts_drop(kMtsHandle, &received);
    }
}

// ---- attribute streams ----

Bytes le(std::uint64_t value, std::size_t width) {
    Bytes b(width);
    for (std::size_t i = 0; i < width; ++i) b[i] = static_cast<std::uint8_t>(value >> (8 * i));
    return b;
}

// The Ethernet part of the switch-wide stream for one interface with
// `groups` qos-groups in both sections.
std::vector<Attr> eth_stream(unsigned groups) {
    std::vector<Attr> s;
    s.push_back({0x0cff00b7u, le(kEth, 4)});
    for (unsigned g = 0; g < groups; ++g) {
        s.push_back({0x14ff00b8u, le(g, 1)});
        s.push_back({0x02ff00b9u, le(g % 2, 1)});
        s.push_back({0x14ff00bau, le(g % 100, 1)});
    }
    s.push_back({0x15ff00bbu, le(0x123456789ull, 8)});
    for (unsigned g = 0; g < groups; ++g) {
        s.push_back({0x14ff00bcu, le(g, 1)});
        s.push_back({0x14ff00bdu, le(0x30000 + g, 4)});
        s.push_back({0x14ff00beu, le(0x40000 + g, 4)});
        s.push_back({0x14ff00bfu, le(9216, 2)});
        s.push_back({0x14ff00c0u, le(9000, 2)});
        s.push_back({0x02ff00c1u, le(g % 2, 1)});
        s.push_back({0x14ff00c2u, le(100 + g, 4)});
        s.push_back({0x14ff00c3u, le(200 + g, 4)});
        for (std::uint32_t id = 0x14ff00c4u; id <= 0x14ff00c9u; ++id) s.push_back({id, le(1000000 * g + id, 4)});
        s.push_back({0x02ff00cau, le(g % 2, 4)});
        s.push_back({0x02ff00cbu, le(1, 4)});
    }
    s.push_back({0x14ff00ccu, le(77, 4)});
    return s;
}

// The host-interface part: `rounds` times the whole table (input buffers,
// queueing rows, both statistics layouts, port statistics, flow control).
std::vector<Attr> hif_stream(unsigned rounds) {
    std::vector<Attr> s;
    s.push_back({0x14ff00cdu, le(4, 1)});
    s.push_back({0x14ff00ceu, le(kHif, 4)});
    for (unsigned r = 0; r < rounds; ++r) {
        for (unsigned ib = 0; ib < 8; ++ib) {
            s.push_back({0x14ff00cfu, le(ib, 1)});
            s.push_back({0x14ff00cfu, le(ib + 1, 1)});
            s.push_back({0x14ff00d0u, le(ib + 2, 1)});
            s.push_back({0x02ff00d1u, le(ib % 2, 1)});
            s.push_back({0x14ff00d2u, le(ib % 8, 1)});
            s.push_back({0x14ff00d3u, le(100 + ib, 4)});
            s.push_back({0x14ff00d4u, le(200 + ib, 4)});
            s.push_back({0x14ff00d5u, le(30000 + ib, 4)});
        }
        for (unsigned q = 0; q < 8; ++q) {
            s.push_back({0x14ff00d6u, le(q, 1)});
            s.push_back({0x11ff00d7u, le(q < 2 ? 0xffffffffu : q, 4)});
            s.push_back({0x14ff00d8u, le(q, 4)});
            s.push_back({0x14ff00d8u, le(7, 4)});
            s.push_back({0x14ff00d9u, le(q % 2, 1)});
            s.push_back({0x14ff00dau, le(10 * q, 1)});
            s.push_back({0x14ff00dbu, le(9216, 2)});
        }
        s.push_back({0x14ff00dcu, le(4096, 4)});
        s.push_back({0x14ff00deu, le(0x80000, 4)});
        s.push_back({0x14ff00dfu, le(0xffffffffu, 4)});
        for (unsigned q = 0; q < 8; ++q) {
            s.push_back({0x14ff00e5u, le(q, 4)});
            for (std::uint32_t id = 0x14ff00e6u; id <= 0x14ff00e9u; ++id) s.push_back({id, le(id * q, 8)});
            s.push_back({0x14ff00eau, le(q, 4)});
            for (std::uint32_t id = 0x14ff00ebu; id <= 0x14ff00efu; ++id)
                s.push_back({id, le((std::uint64_t{q} << 40) + id, 8)});
        }
        s.push_back({0x14ff00ddu, le(0x80000, 4)});
        for (unsigned q = 0; q < 8; ++q) {
            s.push_back({0x14ff00e2u, le(q, 1)});
            s.push_back({0x14ff00e3u, le(q * 1000, 8)});
            s.push_back({0x14ff00e4u, le(q * 2000, 8)});
        }
        for (std::uint32_t id = 0x14ff00f0u; id <= 0x14ff00f3u; ++id) s.push_back({id, le(id, 8)});
        s.push_back({0x02ff00f4u, le(0, 8)});
        s.push_back({0x02ff00f5u, le(1, 1)});
        for (unsigned cos = 0; cos < 8; ++cos) {
            s.push_back({0x14ff00f6u, le(cos, 4)});
            s.push_back({0x11ff00f7u, le(cos == 7 ? 0xffffffffu : cos, 4)});
            s.push_back({0x02ff00f8u, le(cos % 2, 1)});
            s.push_back({0x02ff00f9u, le(0, 1)});
            s.push_back({0x02ff00fau, le(1, 1)});
        }
    }
    return s;
}

// A stream is scripted once and rewound for each run.
Report stream_report(std::string name, std::vector<Attr> attrs, bool hif_entry, double target_us) {
    Report r;
    r.name = std::move(name);
    r.target_us = target_us;
    auto shared = std::make_shared<std::vector<Attr>>(std::move(attrs));
    r.script = [shared](qdtest::Platform &pf) {
        pf.add_interface(kEth, IF_TYPE_ETH, kEthName);
        pf.add_interface(kHif, IF_TYPE_HIF, kHifName, 4);
        pf.response_attrs.swap(*shared);
        pf.response_attr_pos = 0;
    };
    r.run = [shared, hif_entry](cmd_paraminfo *) {
        cmd_rsp rsp{};
        rsp.mts_handle = kMtsHandle;
        if (hif_entry)
            qd_cli_show_queuing_intf_switch_hif(&rsp, kHifName, kHif);
        else
            qd_cli_show_queuing_intf_switch(&rsp);
        qdtest::platform().response_attrs.swap(*shared);  // handed back for the next run
    };
    return r;
}

// ---- replies ----

Bytes drops_reply() {
    Bytes b(37 + 12 * 4, 0);
    b[32] = 4;
    for (unsigned a = 0; a < 4; ++a) {
        b[33 + a] = 12;
        for (unsigned s = 0; s < 12; ++s) b[37 + 12 * a + s] = static_cast<std::uint8_t>((a + s) % 16);
    }
    return b;
}

Bytes extended_reply() {
    Bytes b(413, 0);
    for (unsigned q = 0; q < 8; ++q) {
        b[4 + q] = q == 7 ? 7 : 0;
        b[21 + q] = static_cast<std::uint8_t>(q);
    }
    b[20] = 0x81;
    for (unsigned i = 0; i < 48; ++i) {
        const Bytes v = le((std::uint64_t{i} << 33) + i, 8);
        std::memcpy(&b[29 + 8 * i], v.data(), 8);
    }
    return b;
}

std::vector<Report> reports() {
    std::vector<Report> all;

    const Bytes extended = extended_reply();
    all.push_back({"extended_report", 0, 150,
                   [extended](qdtest::Platform &pf) { pf.replies.push_back(qdtest::Reply::bytes(extended)); },
                   [](cmd_paraminfo *p) { qd_cli_show_queuing_if_extend(p, kEth, kEthName); }});

    all.push_back({"cosmap_show", 0, 120,
                   [](qdtest::Platform &pf) {
                       pf.replies.push_back(qdtest::Reply::bytes({0, 0, 0, 0, 0, 1, 2, 3, 3, 2, 1, 0}));
                   },
                   [](cmd_paraminfo *p) { qd_cli_show_wrrqueue_cosmap(p); }});

    const Bytes drops = drops_reply();
    all.push_back({"vaq_drops/100_extenders", 0, 17000,
                   [drops](qdtest::Platform &pf) {
                       for (std::uint32_t i = 0; i < 100; ++i) {
                           const auto slot = static_cast<std::uint8_t>(i);
                           pf.slot_of_sat[99 + i] = slot;
                           pf.module_node[slot] = 0x0100u * (slot + 1u) + 2u;
                           pf.replies.push_back(qdtest::Reply::bytes(drops));
                       }
                   },
                   [](cmd_paraminfo *p) { process_qd_cli_show_vaq_drops_all(p); }});

    all.push_back(stream_report("switch_stream/eth_255_groups", eth_stream(255), false, 600));
    all.push_back(stream_report("switch_stream/hif_16_rounds", hif_stream(16), true, 600));

    all.push_back({"pause_counts/448_ports", 0, 70,
                   [](qdtest::Platform &pf) {
                       pf.sse_call2_handler = [](std::uint32_t, void *buffer, std::uint32_t) {
                           auto *table = static_cast<pause_count_table *>(buffer);
                           for (unsigned m = 0; m < 4; ++m)
                               for (unsigned p = 0; p < 112; ++p) table->counts[m][p] = 1000 * m + p + 1;
                           return 0;
                       };
                   },
                   [](cmd_paraminfo *) { qd_cli_show_logging_onboard_flow_control_td(); }});

    const Bytes eth255 = qdfuzz::eth_queuing_reply(255);
    all.push_back({"eth_report/255_groups", 0, 3500,
                   [eth255](qdtest::Platform &pf) { pf.replies.push_back(qdtest::Reply::bytes(eth255)); },
                   [](cmd_paraminfo *p) { qd_cli_show_queuing_if(p, kEth, kEthName); }});

    for (const std::uint8_t format : {std::uint8_t{0}, std::uint8_t{4}, std::uint8_t{1}}) {
        qdfuzz::HifShape shape;
        shape.stats_format = format;
        const Bytes hif = qdfuzz::hif_queuing_reply(shape);
        const std::string suffix = "/format_" + std::to_string(format);
        auto script = [hif](qdtest::Platform &pf) {
            pf.add_interface(kHif, IF_TYPE_HIF, kHifName, 4);
            pf.tx_queue_drops[kHif] = 123456789;
            pf.replies.push_back(qdtest::Reply::bytes(hif));
        };
        all.push_back({"hif_report" + suffix, 0, 170, script, [](cmd_paraminfo *p) {
                           p->cmd_id = CMD_ID_SHOW_QUEUING_IF;
                           qd_cli_show_queuing_hif(p, kHif, kHifName);
                       }});
        all.push_back({"hif_xmlized" + suffix, 0, 270, script, [](cmd_paraminfo *p) {
                           p->cmd_id = CMD_ID_SHOW_QUEUING_IF;
                           qd_cli_show_queuing_hif_xmlized(p, kHif, kHifName);
                       }});
    }

    const Bytes nif = qdfuzz::nif_port_reply(3, 0x1a000100u);
    const Bytes ports = qdfuzz::port_records_reply(255);
    all.push_back({"internal_stats/255_ports", 7, 1900,
                   [nif, ports](qdtest::Platform &pf) {
                       pf.sat_of_slot[3] = 101;
                       pf.replies.push_back(qdtest::Reply::bytes(nif));
                       pf.replies.push_back(qdtest::Reply::bytes(ports));
                   },
                   [](cmd_paraminfo *p) { qd_cli_show_internal_stats(p, kEth, kEthName); }});
    return all;
}

}  // namespace

int main(int argc, char **argv) {
    if (!qdbench::alloc_counter_init("libqdcli.so")) {
        std::fputs("the library under test is not loaded\n", stderr);
        return 1;
    }
    static const std::vector<Report> all = reports();
    for (const Report &report : all) {
        benchmark::RegisterBenchmark(report.name.c_str(), bench_report, std::cref(report))
            ->Unit(benchmark::kMicrosecond);
    }
    benchmark::RegisterBenchmark("platform_only/exchange", bench_platform_exchange)
        ->Arg(413)
        ->Arg(1140)
        ->Arg(32 + 84 * 255)
        ->Unit(benchmark::kMicrosecond);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

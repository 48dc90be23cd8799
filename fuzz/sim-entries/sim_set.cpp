// SPDX-License-Identifier: MIT
// "sim set" on a small switch: the input is a JSON pointer, a newline,
// then the value's JSON text. A finding is a crash, a sanitizer report, an
// exception out of the model, a refusal without a reason, or an accepted
// change whose dump does not load back.
#include <cstdlib>
#include <string>

#include "qdsim/sim.h"
#include "sim_targets.hpp"

extern "C" int qdfuzz_sim_set(const std::uint8_t *data, std::size_t size) {
    static const bool quiet = [] {
        qdsim::set_diagnostics_echo(false);
        return true;
    }();
    (void)quiet;
    const std::string input(reinterpret_cast<const char *>(data), size);
    const std::size_t newline = input.find('\n');
    const std::string pointer = input.substr(0, newline);
    const std::string value = newline == std::string::npos ? std::string() : input.substr(newline + 1);
    // A small switch of every kind of interface: the default chassis takes
    // far too long to build for a fuzzer's pace.
    static const std::string kBase = R"({"platform": {"type": 2},
        "ethernet": [{"slot": 1, "ports": "1-2"}, {"slot": 2, "ports": 1}],
        "extenders": [{"number": 101, "slot": 33, "uplink": "Ethernet1/2", "ports": "1-2"}],
        "other_interfaces": [{"name": "mgmt0", "type": 40}],
        "interfaces": {"Ethernet1/1": {"pause": {"counters": {"events": 1}, "events": [{"time": "t"}]}}}})";
    qdsim::ScenarioError base_error;
    if (!qdsim::load_scenario_text(kBase, "base.json", base_error)) std::abort();
    std::string error;
    if (qdsim::set_state_value(pointer, value, error)) {
        qdsim::ScenarioError refused;
        if (!qdsim::load_scenario_text(qdsim::dump_state_json(), "dump.json", refused)) std::abort();
    } else if (error.empty()) {
        std::abort();
    }
    qdsim::take_diagnostics();
    return 0;
}

std::vector<std::string> qdfuzz::sim_set_seeds() {
    return {
        "/cos_map/2\n3",
        "/platform/type\n3",
        "/interfaces/Ethernet1~11/queuing/qos_groups/0/counters/rx_port_pkts\n5000000000",
        "/interfaces/Ethernet1~11/pause/events/-\n{\"time\": \"\\u001b[2J\"}",
        "/rates\n[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]",
        "\n{}",
        "/extenders/0/vaq_drops/asics/1/ss_drops\n[4,15]",
    };
}

// SPDX-License-Identifier: MIT
// The simulated switch's own inputs. A finding is a crash, a sanitizer
// report, an exception out of the simulator, a refusal without a reason, or
// an accepted input whose switch, dumped, does not load back.
#include <cstdlib>
#include <string>

#include "qdsim/sim.h"
#include "sim_targets.hpp"

namespace {

std::string text_of(const std::uint8_t *data, std::size_t size) {
    static const bool quiet = [] {
        qdsim::set_diagnostics_echo(false);
        return true;
    }();
    (void)quiet;
    return std::string(reinterpret_cast<const char *>(data), size);
}

int judge(bool accepted, const std::string &reason) {
    qdsim::ScenarioError refused;
    if (accepted ? !qdsim::load_scenario_text(qdsim::dump_state_json(), "dump.json", refused) : reason.empty())
        std::abort();
    qdsim::take_diagnostics();
    return 0;
}

}  // namespace

// A scenario text, loaded as a file's would be (extends, sections, faults).
extern "C" int qdfuzz_scenario_text(const std::uint8_t *data, std::size_t size) {
    qdsim::ScenarioError error;
    const bool loaded = qdsim::load_scenario_text(text_of(data, size), "fuzz.json", error);
    return judge(loaded, error.reason);
}

std::vector<std::string> qdfuzz::scenario_text_seeds() {
    return {
        R"({"extends": "default"})",
        R"({"platform": {"type": 3, "vdc": 1}, "ethernet": [{"slot": 1, "ports": "1-4", "type": 26}],
            "extenders": [{"number": 101, "slot": 33, "uplink": "Ethernet1/4", "ports": "1-2"}],
            "interfaces": {"Ethernet1/1": {"pause": {"counters": {"events": 3}, "events": [{"time": "t"}]}}},
            "faults": [{"target": "daemon", "command": 17, "interface": "Ethernet1/3", "kind": "recv_failure", "count": 1}]})",
        R"({"ethernet": [{"slot": 1, "ports": "1-100000"}]})",
        R"({"extends": "/dev/zero"})",
        R"({"description": [[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]})",
        R"({"cos_map": [0, 1, 2, 3, 0, 1, 2, 3], "onboard_log": {"capacity": 2}, "rates": {}})",
    };
}

// "sim set" on a small switch of every kind of interface (the default
// chassis takes far too long to build for a fuzzer's pace): the input is a
// JSON pointer, a newline, then the value's JSON text.
extern "C" int qdfuzz_sim_set(const std::uint8_t *data, std::size_t size) {
    const std::string input = text_of(data, size);
    const std::size_t newline = input.find('\n');
    const std::string value = newline == std::string::npos ? std::string() : input.substr(newline + 1);
    static const std::string kBase = R"({"platform": {"type": 2},
        "ethernet": [{"slot": 1, "ports": "1-2"}, {"slot": 2, "ports": 1}],
        "extenders": [{"number": 101, "slot": 33, "uplink": "Ethernet1/2", "ports": "1-2"}],
        "other_interfaces": [{"name": "mgmt0", "type": 40}],
        "interfaces": {"Ethernet1/1": {"pause": {"counters": {"events": 1}, "events": [{"time": "t"}]}}}})";
    qdsim::ScenarioError base_error;
    if (!qdsim::load_scenario_text(kBase, "base.json", base_error)) std::abort();
    std::string error;
    const bool set = qdsim::set_state_value(input.substr(0, newline), value, error);
    return judge(set, error);
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

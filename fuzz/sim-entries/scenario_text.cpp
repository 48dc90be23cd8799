// SPDX-License-Identifier: MIT
// A scenario text, loaded as a file's would be (extends, sections, faults).
// A finding is a crash, a sanitizer report, an exception out of the loader,
// or a loaded switch whose dump does not load back.
#include <cstdlib>
#include <string>

#include "qdsim/sim.h"
#include "sim_targets.hpp"

extern "C" int qdfuzz_scenario_text(const std::uint8_t *data, std::size_t size) {
    static const bool quiet = [] {
        qdsim::set_diagnostics_echo(false);
        return true;
    }();
    (void)quiet;
    const std::string text(reinterpret_cast<const char *>(data), size);
    qdsim::ScenarioError error;
    if (qdsim::load_scenario_text(text, "fuzz.json", error)) {
        const std::string dump = qdsim::dump_state_json();
        if (!qdsim::load_scenario_text(dump, "dump.json", error)) std::abort();
    } else if (error.reason.empty()) {
        std::abort();  // a refusal always says why
    }
    qdsim::take_diagnostics();
    return 0;
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

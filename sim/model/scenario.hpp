// SPDX-License-Identifier: MIT
// Scenarios: reading them (files, texts, the embedded default, "extends")
// and building a switch from one.
//
// A scenario and the state document have one format: the state document
// is the scenario with every default applied, so a dump of the state loads
// back as the same switch, and a changed state is checked by the same rules
// as a scenario file.
#pragma once

#include <memory>
#include <string>

#include "model/model.hpp"
#include "positions.hpp"
#include "qdsim/sim.h"

namespace qdsim {

// A scenario document and where each of its values was written.
struct ScenarioSource {
    Json doc;
    PositionMap positions;
    std::string origin;  // file name for messages without a position
};

bool read_scenario_file(const std::string &path, ScenarioSource &out, ScenarioError &error);
// `base_dir` resolves a relative "extends".
bool read_scenario_text(const std::string &text, const std::string &name, ScenarioSource &out, ScenarioError &error,
                        const std::string &base_dir = ".");
// The embedded default: its fragments deep-merged in name order.
bool read_default_scenario(ScenarioSource &out, ScenarioError &error);

// Checks a scenario and builds the switch; null (and `error`) when refused.
std::unique_ptr<Model> build_model(const ScenarioSource &source, ScenarioError &error);

// The embedded default's switch. Never null: when the default is refused
// (a broken fragment) the reason goes to the diagnostics and the switch is
// empty.
std::unique_ptr<Model> build_default_model();

}  // namespace qdsim

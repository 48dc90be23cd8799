// SPDX-License-Identifier: MIT
// Control of the switch's model for hosts: loading scenarios, the list of
// interfaces, and reading and changing the state document.
#include <cstdint>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "core/lock.hpp"
#include "json_input.hpp"
#include "model/scenario.hpp"
#include "control/wire_widths.hpp"
#include "qdsim/sim.h"

namespace qdsim {
namespace {

// A counter of an interface replaced by a counter changes nothing that the
// scenario checks look at (the members and their types stay), so it is
// written in place instead of rebuilding the switch: a script of sim set
// lines runs at the speed of reading them. False when `path` and `value`
// are not such a change; the caller then takes the general way.
bool set_counter_in_place(const std::string &path, const Json &value) {
    if (!value.is_number_unsigned()) return false;
    std::vector<std::string> tokens;
    try {
        for (Json::json_pointer rest(path); !rest.empty(); rest.pop_back()) tokens.insert(tokens.begin(), rest.back());
    } catch (const Json::exception &) {
        return false;
    }
    if (tokens.size() < 4 || tokens[0] != "interfaces") return false;
    bool under_counters = tokens[2] == "qos_counters";
    for (std::size_t t = 2; t < tokens.size(); ++t) {
        if (tokens[t] == "rates") return false;
        under_counters = under_counters || (tokens[t] == "counters" && t + 1 < tokens.size());
    }
    if (!under_counters) return false;
    const Interface *i = current_model().interface_named(tokens[1]);
    if (i == nullptr || !i->data) return false;
    std::string inner;
    for (std::size_t t = 2; t < tokens.size(); ++t) inner += pointer_token(tokens[t]);
    Json *slot = i->data.edit(inner);
    std::uint64_t old = 0;
    if (slot == nullptr || !slot->is_number_integer() || !read_unsigned(*slot, old)) return false;
    *slot = value;
    return true;
}

bool load(bool read_ok, const ScenarioSource &source, ScenarioError &error) {
    if (!read_ok) return false;
    std::unique_ptr<Model> model = build_model(source, error);
    if (!model) return false;
    install_model(std::move(model));
    return true;
}

// A scenario too big for the memory left is refused like any other: the
// running switch stays.
template <typename Read>
bool load_guarded(const std::string &origin, ScenarioError &error, Read read) {
    try {
        ScenarioSource source;
        return load(read(source), source, error);
    } catch (const std::bad_alloc &) {
        error = {origin, 0, 0, "does not fit in memory"};
        return false;
    }
}

}  // namespace

bool load_scenario_file(const std::string &path, ScenarioError &error) {
    SwitchLock lock(switch_mutex());
    return load_guarded(path, error, [&](ScenarioSource &source) { return read_scenario_file(path, source, error); });
}

bool load_scenario_text(const std::string &text, const std::string &name, ScenarioError &error) {
    SwitchLock lock(switch_mutex());
    return load_guarded(name, error, [&](ScenarioSource &source) { return read_scenario_text(text, name, source, error); });
}

void load_default_scenario() {
    SwitchLock lock(switch_mutex());
    install_model(build_default_model());
}

std::vector<InterfaceInfo> interfaces() {
    SwitchLock lock(switch_mutex());
    std::vector<InterfaceInfo> out;
    for (const Interface &i : current_model().interfaces()) out.push_back({i.if_index, i.type, i.sub_intf, i.name});
    return out;
}

std::optional<std::uint32_t> find_interface(const std::string &spelling) {
    SwitchLock lock(switch_mutex());
    const Interface *i = current_model().find_interface(spelling);
    if (i == nullptr) return std::nullopt;
    return i->if_index;
}

std::string dump_state_json() {
    SwitchLock lock(switch_mutex());
    return current_model().state().dump(2) + "\n";
}

bool get_state_value(const std::string &path, std::string &value, std::string &error) {
    SwitchLock lock(switch_mutex());
    Json v;
    bool found = false;
    try {
        found = current_model().state_value(path, v);
    } catch (const Json::exception &) {
        error = "\"" + path + "\" is not a JSON pointer (such as /interfaces/Ethernet1~11)";
        return false;
    }
    if (!found) {
        error = "nothing at " + path;
        return false;
    }
    value = v.dump(2);
    return true;
}

bool set_state_value(const std::string &path, const std::string &value, std::string &error) {
    SwitchLock lock(switch_mutex());
    Json parsed;
    if (!parse_json_value(value, parsed, error)) {
        error = "the value " + error;
        return false;
    }
    if (!check_wire_widths(path, parsed, error)) return false;
    if (set_counter_in_place(path, parsed)) return true;
    ScenarioSource source{current_model().state(), {}, "state"};
    try {
        const Json::json_pointer pointer(path);
        if (pointer.empty()) {
            source.doc = std::move(parsed);
        } else {
            const Json::json_pointer parent = pointer.parent_pointer();
            if (!source.doc.contains(parent) || !(source.doc.at(parent).is_object() || source.doc.at(parent).is_array())) {
                error = "nothing at " + parent.to_string() + " to hold " + pointer.back();
                return false;
            }
            Json &holder = source.doc.at(parent);
            if (holder.is_array() && pointer.back() != "-") {
                // An array element is replaced, never inserted past the end.
                const std::string &token = pointer.back();
                std::size_t index = 0;
                try {
                    index = std::stoul(token);
                } catch (const std::exception &) {
                    error = "\"" + token + "\" is not an index of " + parent.to_string();
                    return false;
                }
                if (index >= holder.size()) {
                    error = parent.to_string() + " has " + std::to_string(holder.size()) + " elements; use /- to append";
                    return false;
                }
            }
            source.doc[pointer] = std::move(parsed);
        }
    } catch (const Json::exception &) {
        error = "\"" + path + "\" is not a JSON pointer into the state (such as /interfaces/Ethernet1~11/rates)";
        return false;
    }
    ScenarioError refused;
    std::unique_ptr<Model> model = build_model(source, refused);
    if (!model) {
        error = refused.reason;
        return false;
    }
    install_model(std::move(model));
    return true;
}

void advance_clock(std::uint64_t ticks) {
    SwitchLock lock(switch_mutex());
    current_model().tick(ticks);
}

std::uint64_t clock_ticks() {
    SwitchLock lock(switch_mutex());
    return current_model().ticks();
}

}  // namespace qdsim

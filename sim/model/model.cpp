// SPDX-License-Identifier: MIT
#include "model/model.hpp"

#include <algorithm>
#include <cctype>
#include <cstdio>

#include "core/lock.hpp"
#include "interface_spelling.hpp"
#include "model/scenario.hpp"

namespace qdsim {

std::string ethernet_name(std::uint32_t slot, std::uint32_t port) {
    return "Ethernet" + std::to_string(slot) + "/" + std::to_string(port);
}

std::string sub_interface_name(std::uint32_t slot, std::uint32_t port, std::uint32_t sub_id) {
    return ethernet_name(slot, port) + "." + std::to_string(sub_id);
}

std::string host_name(std::uint32_t extender, std::uint32_t module, std::uint32_t port) {
    return "Ethernet" + std::to_string(extender) + "/" + std::to_string(module) + "/" + std::to_string(port);
}

std::uint32_t ethernet_index(std::uint8_t type, std::uint32_t slot, std::uint32_t port, std::uint32_t sub_id) {
    return (std::uint32_t{type} << 24) | (((slot - 1) & 0xffu) << 16) | (((port - 1) & 0xffu) << 8) | (sub_id & 0xffu);
}

std::uint32_t host_index(std::uint32_t extender, std::uint32_t module, std::uint32_t port) {
    return (31u << 24) | ((extender & 0xffu) << 16) | (((port - 1) & 0xffu) << 8) | ((module - 1) & 0xffu);
}

namespace {

template <class T, class Pred>
const T *find_if_ptr(const std::vector<T> &v, Pred pred) {
    auto it = std::find_if(v.begin(), v.end(), pred);
    return it == v.end() ? nullptr : &*it;
}

std::unique_ptr<Model> &installed() {
    static std::unique_ptr<Model> model;
    return model;
}

}  // namespace

void Model::reindex() {
    std::sort(interfaces_.begin(), interfaces_.end(),
              [](const Interface &a, const Interface &b) { return a.if_index < b.if_index; });
    by_index_.clear();
    by_lower_name_.clear();
    for (std::size_t i = 0; i < interfaces_.size(); ++i) {
        by_index_[interfaces_[i].if_index] = i;
        by_lower_name_[fold_interface_name(interfaces_[i].name)] = i;
    }
}

const Interface *Model::interface(std::uint32_t if_index) const {
    auto it = by_index_.find(if_index);
    return it == by_index_.end() ? nullptr : &interfaces_[it->second];
}

const Interface *Model::interface_named(std::string_view canonical_name) const {
    auto it = by_lower_name_.find(fold_interface_name(canonical_name));
    if (it == by_lower_name_.end() || interfaces_[it->second].name != canonical_name) return nullptr;
    return &interfaces_[it->second];
}

const Interface *Model::find_interface(std::string_view spelling) const {
    const std::string s = fold_interface_name(spelling);
    if (s.empty()) return nullptr;
    std::uint64_t number = 0;
    if (read_unsigned(Json(s), number) ||
        (std::all_of(s.begin(), s.end(), [](char c) { return std::isdigit(static_cast<unsigned char>(c)); }) &&
         s.size() <= 10 && (number = std::stoull(s), true)))
        return number <= 0xffffffffu ? interface(static_cast<std::uint32_t>(number)) : nullptr;
    if (auto it = by_lower_name_.find(s); it != by_lower_name_.end()) return &interfaces_[it->second];
    auto it = by_lower_name_.find(expand_interface_name(s));
    return it == by_lower_name_.end() ? nullptr : &interfaces_[it->second];
}

const Extender *Model::extender(std::uint32_t number) const {
    return find_if_ptr(extenders_, [&](const Extender &e) { return e.number == number; });
}
const Extender *Model::extender_at_slot(std::uint32_t slot) const {
    return find_if_ptr(extenders_, [&](const Extender &e) { return e.slot == slot; });
}
const Extender *Model::extender_at_node(std::uint32_t node) const {
    return find_if_ptr(extenders_, [&](const Extender &e) { return e.node == node; });
}
const Extender *Model::extender_behind(std::uint32_t uplink_if_index) const {
    return find_if_ptr(extenders_, [&](const Extender &e) {
        return std::find(e.uplinks.begin(), e.uplinks.end(), uplink_if_index) != e.uplinks.end();
    });
}
const LineCard *Model::line_card(std::uint32_t slot) const {
    return find_if_ptr(line_cards_, [&](const LineCard &c) { return c.slot == slot; });
}
const LineCard *Model::line_card_at_node(std::uint32_t node) const {
    return find_if_ptr(line_cards_, [&](const LineCard &c) { return c.node == node; });
}

Json Model::typed_members() const {
    Json faults = state_.value("faults", Json::array());
    for (const Fault &f : faults_)
        if (f.left) faults[f.position]["count"] = *f.left;
    return {{"platform",
             {{"type", platform_.type}, {"vdc", platform_.vdc}, {"card_id", platform_.card_id}, {"sw_card_id", platform_.sw_card_id}}},
            {"cos_map", cos_map_},
            {"clock", {{"ticks", ticks_}}},
            {"faults", faults}};
}

std::optional<FaultAction> Model::take_fault(const FaultQuery &q) {
    for (Fault &f : faults_) {
        if (f.target != q.target) continue;
        if (f.command && (!q.command || *f.command != *q.command)) continue;
        if (f.if_index && (!q.if_index || *f.if_index != *q.if_index)) continue;
        if (f.extender && (!q.extender || *f.extender != *q.extender)) continue;
        if (f.operation && (!q.operation || *f.operation != *q.operation)) continue;
        if (f.mask && (!q.mask || *f.mask != *q.mask)) continue;
        if (f.left) {
            if (*f.left == 0) continue;  // spent
            --*f.left;
        }
        return f.action;
    }
    return std::nullopt;
}

namespace {

// Adds rate x ticks to `target` as `rate` describes it: a number for a
// counter (or for each element of an array of counters), an object of
// rates for the members of an object (or of each element of an array),
// an array of rates for an array of as many values.
void apply_rate(Json &target, const Json &rate, std::uint64_t ticks) {
    if ((rate.is_number_integer() || rate.is_object()) && target.is_array()) {
        for (Json &element : target) apply_rate(element, rate, ticks);
    } else if (rate.is_number_integer()) {
        std::uint64_t per_tick = 0, value = 0;
        if (read_unsigned(rate, per_tick) && per_tick != 0 && target.is_number_integer() && read_unsigned(target, value))
            target = value + per_tick * ticks;
    } else if (rate.is_object() && target.is_object()) {
        for (auto it = rate.begin(); it != rate.end(); ++it)
            if (auto found = target.find(it.key()); found != target.end()) apply_rate(*found, it.value(), ticks);
    } else if (rate.is_array() && target.is_array()) {
        for (std::size_t i = 0; i < rate.size() && i < target.size(); ++i) apply_rate(target[i], rate[i], ticks);
    }
}

void bring_up_to_date(DataBlock &block, std::uint64_t now) {
    if (block.as_of == now) return;
    advance_counters(block.value, now - block.as_of);
    block.as_of = now;
}

}  // namespace

void advance_counters(Json &value, std::uint64_t ticks) {
    if (value.is_object()) {
        auto rates = value.find("rates");
        if (rates != value.end() && rates->is_object())
            for (auto it = rates->begin(); it != rates->end(); ++it)
                if (it.key() != "rates")
                    if (auto target = value.find(it.key()); target != value.end()) apply_rate(*target, it.value(), ticks);
        for (auto it = value.begin(); it != value.end(); ++it)
            if (it.key() != "rates" && it->is_structured()) advance_counters(it.value(), ticks);
    } else if (value.is_array()) {
        for (Json &element : value)
            if (element.is_structured()) advance_counters(element, ticks);
    }
}

const Json &DataRef::operator*() const {
    bring_up_to_date(*block_, *clock_);
    return block_->value;
}

Json &DataRef::edit() const {
    bring_up_to_date(*block_, *clock_);
    if (block_->shared) {
        auto own = std::make_shared<DataBlock>(*block_);
        own->shared = false;
        block_ = std::move(own);
    }
    return block_->value;
}

Json *DataRef::edit(std::string_view pointer) const {
    if (find(**this, pointer) == nullptr) return nullptr;
    return find(edit(), pointer);
}

Json Model::interface_entry(const Interface &i) {
    Json entry = i.data ? *i.data : Json::object();
    entry["if_index"] = hex32(i.if_index);
    return entry;
}

Json Model::state() const {
    Json doc = state_;
    doc.update(typed_members());
    Json &all = doc["interfaces"] = Json::object();
    for (const Interface &i : interfaces_) all[i.name] = interface_entry(i);
    return doc;
}

bool Model::state_value(const std::string &pointer, Json &out) const {
    const Json::json_pointer p(pointer);
    if (p.empty()) {
        out = state();
        return true;
    }
    // The first token names the section; under /interfaces the second the interface.
    std::vector<std::string> tokens;
    for (Json::json_pointer rest = p; !rest.empty(); rest.pop_back()) tokens.insert(tokens.begin(), rest.back());
    if (tokens.front() != "interfaces") {
        const Json typed = typed_members();
        const Json &holder = typed.contains(tokens.front()) ? typed : state_;
        if (!holder.contains(p)) return false;
        out = holder.at(p);
        return true;
    }
    if (tokens.size() == 1) {
        out = Json::object();
        for (const Interface &i : interfaces_) out[i.name] = interface_entry(i);
        return true;
    }
    const Interface *i = interface_named(tokens[1]);
    if (i == nullptr) return false;
    Json entry = interface_entry(*i);
    Json::json_pointer inner;
    for (std::size_t t = 2; t < tokens.size(); ++t) inner.push_back(tokens[t]);
    if (!entry.contains(inner)) return false;
    out = entry.at(inner);
    return true;
}

void Model::tick(std::uint64_t ticks) {
    for (const Rate &rate : rates_) {
        if (!state_.contains(rate.target)) continue;  // a service removed the counter
        Json &counter = state_.at(rate.target);
        std::uint64_t value = 0;
        if (!counter.is_number_integer() || !read_unsigned(counter, value)) continue;
        counter = value + rate.per_tick * ticks;  // unsigned: wraps at 2^64 like the hardware's
    }
    ticks_ += ticks;
}

Model &current_model() {
    SwitchLock lock(switch_mutex());
    std::unique_ptr<Model> &model = installed();
    if (!model) model = build_default_model();
    return *model;
}

void install_model(std::unique_ptr<Model> model) {
    SwitchLock lock(switch_mutex());
    installed() = std::move(model);
}

}  // namespace qdsim

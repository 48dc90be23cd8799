// SPDX-License-Identifier: MIT
#include "model/sections.hpp"

#include <cstdlib>
#include <map>

#include "core/diagnostics.hpp"
#include "core/lock.hpp"

namespace qdsim {
namespace {

std::map<std::pair<Scope, std::string>, SectionCheck> &registry() {
    static std::map<std::pair<Scope, std::string>, SectionCheck> sections;
    return sections;
}

}  // namespace

const char *scope_name(Scope scope) {
    switch (scope) {
    case Scope::root: return "the switch";
    case Scope::ethernet: return "an Ethernet interface";
    case Scope::host: return "a host interface";
    case Scope::other: return "an interface of another kind";
    case Scope::extender: return "an extender";
    case Scope::line_card: return "a line card";
    }
    return "?";
}

void Checker::fail(const std::string &relative_pointer, const std::string &reason) const {
    fail_(relative_pointer, reason);
    // The fail function throws; this is never reached.
    std::abort();
}

const Json &Checker::at(const std::string &relative_pointer) const {
    const Json *v = find(value_, relative_pointer);
    if (v == nullptr) fail(relative_pointer, "missing value");
    return *v;
}

const Json &Checker::object(const std::string &relative_pointer) const {
    const Json &v = at(relative_pointer);
    if (!v.is_object()) fail(relative_pointer, "expected an object");
    return v;
}

const Json &Checker::array(const std::string &relative_pointer, std::size_t exact_size) const {
    const Json &v = at(relative_pointer);
    if (!v.is_array()) fail(relative_pointer, "expected an array");
    if (exact_size != npos && v.size() != exact_size)
        fail(relative_pointer, "expected " + std::to_string(exact_size) + " elements, found " +
                                   std::to_string(v.size()));
    return v;
}

std::uint64_t Checker::unsigned_value(const std::string &relative_pointer, std::uint64_t max) const {
    std::uint64_t out = 0;
    if (!read_unsigned(at(relative_pointer), out)) fail(relative_pointer, "expected an unsigned integer");
    if (out > max) fail(relative_pointer, std::to_string(out) + " is above the maximum " + std::to_string(max));
    return out;
}

bool Checker::boolean(const std::string &relative_pointer) const {
    const Json &v = at(relative_pointer);
    if (!v.is_boolean()) fail(relative_pointer, "expected true or false");
    return v.get<bool>();
}

void Checker::counters(const std::string &relative_pointer) const {
    const Json &v = at(relative_pointer);
    std::uint64_t ignored = 0;
    if (v.is_object()) {
        for (auto it = v.begin(); it != v.end(); ++it)
            if (it.key() != "rates") counters(relative_pointer + pointer_token(it.key()));
    } else if (v.is_array()) {
        for (std::size_t i = 0; i < v.size(); ++i) counters(relative_pointer + "/" + std::to_string(i));
    } else if (!v.is_number_integer() || !read_unsigned(v, ignored)) {
        fail(relative_pointer, "expected a counter (an unsigned integer)");
    }
}

void Checker::members_among(const std::string &relative_pointer, const std::vector<std::string> &names) const {
    const Json &v = object(relative_pointer);
    for (auto it = v.begin(); it != v.end(); ++it) {
        bool known = it.key() == "rates";
        for (const std::string &n : names) known = known || n == it.key();
        if (!known) {
            std::string list;
            for (const std::string &n : names) list += (list.empty() ? "" : ", ") + n;
            fail(relative_pointer + pointer_token(it.key()), "unknown member \"" + it.key() + "\" (known: " + list + ")");
        }
    }
}

bool register_section(Scope scope, const std::string &name, SectionCheck check) {
    SwitchLock lock(switch_mutex());
    auto [it, inserted] = registry().emplace(std::make_pair(scope, name), SectionCheck{});
    if (inserted || !it->second) {
        // A name reserved without a checker takes the first checker given.
        if (check) it->second = std::move(check);
        return true;
    }
    if (!check) return true;  // reserving a name that has a checker changes nothing
    diagnostic("section \"" + name + "\" of " + std::string(scope_name(scope)) + " has a checker already");
    return false;
}

bool unregister_section(Scope scope, const std::string &name) {
    SwitchLock lock(switch_mutex());
    return registry().erase({scope, name}) != 0;
}

const SectionCheck *find_section(Scope scope, const std::string &name) {
    auto it = registry().find({scope, name});
    return it == registry().end() ? nullptr : &it->second;
}

bool section_known(Scope scope, const std::string &name) { return registry().count({scope, name}) != 0; }

std::vector<std::string> section_names(Scope scope) {
    std::vector<std::string> names;
    for (const auto &[key, check] : registry())
        if (key.first == scope) names.push_back(key.second);
    return names;
}

}  // namespace qdsim

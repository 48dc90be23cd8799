// SPDX-License-Identifier: MIT
// Handlers registered under a one-byte code (the daemon's commands, the
// agents' sub-commands), each with a name that complaints use.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>

#include "core/diagnostics.hpp"
#include "core/lock.hpp"

namespace qdsim {

template <class Entry>
class CodeRegistry {
public:
    explicit CodeRegistry(std::string what) : what_(std::move(what)) {}

    // False, and a diagnostic, when the code is taken.
    bool add(Entry entry) {
        SwitchLock lock(switch_mutex());
        const std::uint8_t code = entry.code;
        auto [it, inserted] = entries_.emplace(code, std::move(entry));
        if (!inserted) diagnostic(what_ + " " + std::to_string(code) + " (" + it->second.name + ") registered twice");
        return inserted;
    }
    bool remove(std::uint8_t code) {
        SwitchLock lock(switch_mutex());
        return entries_.erase(code) != 0;
    }
    const Entry *find(std::uint8_t code) const {
        auto it = entries_.find(code);
        return it == entries_.end() ? nullptr : &it->second;
    }

private:
    std::string what_;
    std::map<std::uint8_t, Entry> entries_;
};

}  // namespace qdsim

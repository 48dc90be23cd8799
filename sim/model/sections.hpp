// SPDX-License-Identifier: MIT
// Sections of the state document, and who checks them.
//
// The document's top level, each Ethernet, host and other interface, each
// extender and each line card hold named sections. The core's sections are
// built in; a service that keeps data of its own registers its section here
// (with a checker for its values) from the file that implements it:
//
//   static const qdsim::SectionRegistrar queuing{qdsim::Scope::ethernet, "queuing", check_queuing};
//
// A scenario that names a section nobody registered is refused, so a
// misspelt name never passes for a default silently.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "model/json_access.hpp"

namespace qdsim {

enum class Scope { root, ethernet, host, other, extender, line_card };
const char *scope_name(Scope scope);

// Given to a section checker: the section's value and a way to refuse it.
class Checker {
public:
    using Fail = std::function<void(const std::string &relative_pointer, const std::string &reason)>;
    Checker(const Json &value, Fail fail, const Json *declared = nullptr)
        : value_(value), fail_(std::move(fail)), declared_(declared) {}

    const Json &value() const { return value_; }
    // Sections of the top level only: the switch as declared, with its
    // `interfaces` (each with its "if_index" only), `extenders` and
    // `line_cards` (their merged data), so that a section can check the
    // names it refers to. Null in other scopes.
    const Json *declared() const { return declared_; }

    // Refuses the scenario; `relative_pointer` is inside the section ("" is
    // the section itself). Does not return.
    [[noreturn]] void fail(const std::string &relative_pointer, const std::string &reason) const;

    // Common checks; each refuses with a reason that names the expectation.
    const Json &object(const std::string &relative_pointer = "") const;
    const Json &array(const std::string &relative_pointer = "", std::size_t exact_size = npos) const;
    std::uint64_t unsigned_value(const std::string &relative_pointer, std::uint64_t max = UINT64_MAX) const;
    bool boolean(const std::string &relative_pointer) const;
    // Every member or element, at any depth, is an unsigned integer (the
    // shape of a counter block).
    void counters(const std::string &relative_pointer = "") const;
    // Each member of the object at the pointer is one of `names`.
    void members_among(const std::string &relative_pointer, const std::vector<std::string> &names) const;

    static constexpr std::size_t npos = static_cast<std::size_t>(-1);

private:
    const Json &at(const std::string &relative_pointer) const;
    const Json &value_;
    Fail fail_;
    const Json *declared_ = nullptr;
};

using SectionCheck = std::function<void(const Checker &)>;

// Registers a section, or reserves its name when `check` is empty. A name
// reserved without a checker takes the first checker registered for it;
// a second checker is refused (false, and a diagnostic).
bool register_section(Scope scope, const std::string &name, SectionCheck check = {});
bool unregister_section(Scope scope, const std::string &name);

struct SectionRegistrar {
    SectionRegistrar(Scope scope, const std::string &name, SectionCheck check = {}) {
        register_section(scope, name, std::move(check));
    }
};

// Null when nobody registered the name in the scope.
const SectionCheck *find_section(Scope scope, const std::string &name);
bool section_known(Scope scope, const std::string &name);
std::vector<std::string> section_names(Scope scope);

}  // namespace qdsim

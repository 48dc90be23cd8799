// SPDX-License-Identifier: MIT
#include "model/scenario.hpp"

#include <algorithm>
#include <cctype>
#include <deque>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <unordered_map>

#include "core/diagnostics.hpp"
#include "core/errors.hpp"
#include "model/embedded.hpp"
#include "interface_spelling.hpp"
#include "json_input.hpp"
#include "merge.hpp"
#include "model/policy.hpp"
#include "model/sections.hpp"

namespace qdsim {

std::string ScenarioError::message() const {
    std::string out = file.empty() ? std::string("scenario") : file;
    if (line) out += ":" + std::to_string(line) + ":" + std::to_string(column);
    return out + ": " + reason;
}

namespace {

// Members of the top level that the core reads itself.
const std::vector<std::string> kCoreRootKeys = {"description",  "platform",      "cos_map",          "clock",
                                                "defaults",     "line_cards",    "ethernet",         "sub_interfaces",
                                                "extenders",    "other_interfaces", "interfaces",    "faults",
                                                "rates"};
// Members every entity may carry besides its registered sections.
const std::vector<std::string> kBuiltinDataKeys = {"rates", "description"};
const std::vector<std::string> kDefaultKinds = {"ethernet", "host", "other", "extender", "line_card"};

constexpr unsigned kMaxExtends = 8;
constexpr std::size_t kMaxOtherInterfaces = 0xffff;

struct Refusal {
    ScenarioError error;
};

// One layer of an entity's data: where it was written and what it holds.
struct Layer {
    std::string base;   // source pointer of the object the layer's members sit in
    const Json *value;  // the layer's data members
};

// Where an entity's data comes from: layers, lowest priority first.
struct Origin {
    std::string declaration;  // source pointer of the declaration
    std::vector<Layer> layers;
};

struct PendingInterface {
    Interface identity;
    Scope scope = Scope::ethernet;
    Origin origin;
    std::size_t own_layers = 0;  // the last layers are the interface's own (no other interface has them)
};

struct PendingExtender {
    Extender identity;
    Origin origin;
    Json normalized;  // identity members of its state entry
};

struct PendingCard {
    LineCard identity;
    Origin origin;
};

std::string join(const std::vector<std::string> &names) {
    std::string out;
    for (const std::string &n : names) out += (out.empty() ? "" : ", ") + n;
    return out;
}

bool contains(const std::vector<std::string> &names, const std::string &name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace

class ModelBuilder {
public:
    explicit ModelBuilder(const ScenarioSource &source) : src_(source), root_(source.doc) {}

    std::unique_ptr<Model> build() {
        if (!root_.is_object()) fail("", "a scenario is a JSON object");
        model_ = std::make_unique<Model>();
        out_ = Json::object();
        check_root_members();
        if (const Json *d = member("", "description")) {
            if (!d->is_string()) fail("/description", "expected a text");
            out_["description"] = *d;
        }
        build_platform();
        build_cos_map();
        build_clock();
        read_defaults();
        declare_line_cards();
        declare_ethernet();
        declare_sub_interfaces();
        declare_extenders();
        declare_other_interfaces();
        apply_interface_overrides();
        finish_interfaces();
        finish_extenders();
        finish_line_cards();
        build_faults();
        build_root_sections();
        out_.erase("interfaces");  // the interfaces hold their data themselves
        model_->state_ = std::move(out_);
        attach_data_pointers();
        build_rates();
        model_->reindex();
        return std::move(model_);
    }

private:
    // ---- Refusing ----

    [[noreturn]] void fail(const std::string &pointer, const std::string &reason, bool at_key = false) const {
        Refusal r;
        const SourcePosition where = position_of(src_.positions, pointer, at_key);
        r.error.file = where.line ? where.file : src_.origin;
        r.error.line = where.line;
        r.error.column = where.column;
        r.error.reason = (pointer.empty() ? std::string() : "at " + pointer + ": ") + reason;
        throw r;
    }

    // Source pointer of `relative` within an entity's data: the layer of
    // highest priority that holds it (or its nearest enclosing value).
    static std::string locate(const Origin &origin, std::string relative) {
        while (true) {
            for (auto layer = origin.layers.rbegin(); layer != origin.layers.rend(); ++layer)
                if (relative.empty() || find(*layer->value, relative) != nullptr) return layer->base + relative;
            if (relative.empty()) return origin.declaration;
            relative.erase(relative.rfind('/'));
        }
    }

    [[noreturn]] void fail_in(const Origin &origin, const std::string &relative, const std::string &reason,
                              bool at_key = false) const {
        fail(locate(origin, relative), reason, at_key);
    }

    // Source pointer of a pointer into the state being built.
    std::string locate_state(const std::string &pointer) const {
        for (const auto &[prefix, origin] : state_origins_) {
            if (pointer == prefix) return locate(*origin, "");
            if (pointer.size() > prefix.size() && pointer.compare(0, prefix.size(), prefix) == 0 &&
                pointer[prefix.size()] == '/')
                return locate(*origin, pointer.substr(prefix.size()));
        }
        return pointer;
    }

    // ---- Reading values ----

    const Json *member(const std::string &pointer, const std::string &name) const {
        const Json *container = find(root_, pointer);
        if (container == nullptr || !container->is_object() || !container->contains(name)) return nullptr;
        return &(*container)[name];
    }

    const Json &object_at(const Json &v, const std::string &pointer) const {
        if (!v.is_object()) fail(pointer, "expected an object");
        return v;
    }

    const Json &array_at(const Json &v, const std::string &pointer) const {
        if (!v.is_array()) fail(pointer, "expected an array");
        return v;
    }

    std::uint64_t unsigned_at(const Json &v, const std::string &pointer, std::uint64_t min, std::uint64_t max) const {
        std::uint64_t out = 0;
        if (!read_unsigned(v, out)) fail(pointer, "expected an unsigned integer");
        if (out < min || out > max)
            fail(pointer, std::to_string(out) + " is out of range " + std::to_string(min) + "-" + std::to_string(max));
        return out;
    }

    // A member of a declared object, checked against its policy: its value
    // (a signed one as its two's complement), its default when it is not
    // given, nullopt when it has none.
    std::optional<std::uint64_t> value_of(const Json &obj, const std::string &pointer, const policy::Member &m) const {
        const std::string name(m.name);
        if (!obj.contains(name)) {
            if (m.required) fail(pointer, "missing member \"" + name + "\"");
            if (m.has_default) return static_cast<std::uint64_t>(m.fallback);
            return std::nullopt;
        }
        const Json &v = obj[name];
        const std::string at = pointer + pointer_token(name);
        switch (m.type) {
        case policy::Type::signed32:
            if (!v.is_number_integer() || v.get<std::int64_t>() < INT32_MIN || v.get<std::int64_t>() > INT32_MAX)
                fail(at, "expected a signed 32-bit integer");
            return static_cast<std::uint64_t>(v.get<std::int64_t>());
        case policy::Type::text:
            if (!v.is_string()) fail(at, "expected a text");
            return 0;
        case policy::Type::any: return 0;
        case policy::Type::unsigned_int: break;
        }
        return unsigned_at(v, at, m.min, m.max);
    }

    static const policy::Member &policy_of(std::span<const policy::Member> table, std::string_view name) {
        for (const policy::Member &m : table)
            if (m.name == name) return m;
        throw std::logic_error("no policy for member " + std::string(name));
    }

    std::uint64_t value_of(const Json &obj, const std::string &pointer, std::span<const policy::Member> table,
                           std::string_view name) const {
        return value_of(obj, pointer, policy_of(table, name)).value_or(0);
    }

    // The names of a policy table's members.
    static std::vector<std::string> names_of(std::span<const policy::Member> table) {
        std::vector<std::string> out;
        for (const policy::Member &m : table) out.emplace_back(m.name);
        return out;
    }

    void members_among(const Json &obj, const std::string &pointer, const std::vector<std::string> &names,
                       const std::string &what) const {
        for (auto it = obj.begin(); it != obj.end(); ++it)
            if (!contains(names, it.key()))
                fail(pointer + pointer_token(it.key()),
                     "unknown member \"" + it.key() + "\" of " + what + " (known: " + join(names) + ")", true);
    }

    // The members of a declaration that are data, not identity.
    const Json *extras(const Json &declaration, const std::vector<std::string> &identity_keys) {
        Json data = Json::object();
        for (auto it = declaration.begin(); it != declaration.end(); ++it)
            if (!contains(identity_keys, it.key())) data[it.key()] = it.value();
        storage_.push_back(std::move(data));
        return &storage_.back();
    }

    // The pending interface a reference names: its canonical name or a
    // spelling the shell accepts ("eth1/3", "e101/1/2"), in any case.
    PendingInterface *referenced(const std::string &name) {
        auto it = by_name_.find(fold_interface_name(name));
        if (it == by_name_.end()) it = by_name_.find(expand_interface_name(name));
        return it == by_name_.end() ? nullptr : &ifaces_[it->second];
    }

    // Ports: 5, "1-48", "7", or an array of these.
    std::vector<std::uint32_t> ports_at(const Json &v, const std::string &pointer) const {
        std::vector<std::uint32_t> ports;
        auto one = [&](const Json &item, const std::string &p) {
            std::uint64_t first = 0, last = 0;
            if (item.is_number()) {
                first = last = unsigned_at(item, p, 1, policy::kMaxPort);
            } else if (item.is_string()) {
                const std::string s = item.get<std::string>();
                const std::size_t dash = s.find('-');
                const std::string a = s.substr(0, dash), b = dash == std::string::npos ? a : s.substr(dash + 1);
                auto digits = [](const std::string &t) {
                    return !t.empty() &&
                           std::all_of(t.begin(), t.end(), [](char c) { return std::isdigit(static_cast<unsigned char>(c)); });
                };
                if (!digits(a) || !digits(b)) fail(p, "port range \"" + s + "\" is not N or N-M");
                // A number of any length is a number: one too long to read is
                // merely out of bounds, and told so below.
                auto number = [](const std::string &t) -> std::uint64_t { return t.size() > 9 ? UINT64_MAX : std::stoull(t); };
                first = number(a);
                last = number(b);
                if (first < 1 || last > policy::kMaxPort || first > last)
                    fail(p, "port range \"" + s + "\" is not within 1-" + std::to_string(policy::kMaxPort) +
                                " in ascending order");
            } else {
                fail(p, "expected a port number or a range such as \"1-48\"");
            }
            for (std::uint64_t port = first; port <= last; ++port) ports.push_back(static_cast<std::uint32_t>(port));
        };
        if (v.is_array()) {
            for (std::size_t i = 0; i < v.size(); ++i) one(v[i], pointer + "/" + std::to_string(i));
        } else {
            one(v, pointer);
        }
        if (ports.empty()) fail(pointer, "no ports");
        return ports;
    }

    // Each entry of the array `name` of the top level (none when it is not
    // given), checked to be an object, with its pointer and position.
    template <class Each>
    void for_each_entry(const std::string &name, Each each) {
        const Json *list = member("", name);
        if (list == nullptr) return;
        array_at(*list, "/" + name);
        for (std::size_t i = 0; i < list->size(); ++i) {
            const std::string pointer = "/" + name + "/" + std::to_string(i);
            each(object_at((*list)[i], pointer), pointer, i);
        }
    }

    // Each member of the object `name` of the top level (none when it is not
    // given), with its pointer.
    template <class Each>
    void for_each_member(const std::string &name, Each each) {
        const Json *object = member("", name);
        if (object == nullptr) return;
        object_at(*object, "/" + name);
        for (auto it = object->begin(); it != object->end(); ++it)
            each(it.key(), it.value(), "/" + name + pointer_token(it.key()));
    }

    // ---- Top level ----

    void check_root_members() const {
        for (auto it = root_.begin(); it != root_.end(); ++it) {
            if (contains(kCoreRootKeys, it.key()) || section_known(Scope::root, it.key())) continue;
            if (it.key() == "extends")
                fail("/extends", "\"extends\" is resolved when a scenario is read from a file or a text", true);
            std::vector<std::string> known = kCoreRootKeys;
            for (const std::string &n : section_names(Scope::root)) known.push_back(n);
            fail(pointer_token(it.key()), "unknown section \"" + it.key() + "\" (known: " + join(known) + ")", true);
        }
    }

    // A member of the top level whose members a policy table fixes: checked
    // against it; an empty object when it is not given.
    const Json &fixed_object(const std::string &name, std::span<const policy::Member> table, const std::string &what) const {
        static const Json empty = Json::object();
        const Json *given = member("", name);
        if (given == nullptr) return empty;
        object_at(*given, "/" + name);
        members_among(*given, "/" + name, names_of(table), what);
        return *given;
    }

    void build_platform() {
        const Json &given = fixed_object("platform", policy::kPlatform, "the platform");
        Model::Platform &platform = model_->platform_;
        platform.type = static_cast<std::int32_t>(value_of(given, "/platform", policy::kPlatform, "type"));
        platform.vdc = static_cast<std::uint32_t>(value_of(given, "/platform", policy::kPlatform, "vdc"));
        platform.card_id = static_cast<std::uint16_t>(value_of(given, "/platform", policy::kPlatform, "card_id"));
        platform.sw_card_id = static_cast<std::uint32_t>(
            value_of(given, "/platform", policy_of(policy::kPlatform, "sw_card_id")).value_or(platform.card_id));
    }

    void build_cos_map() {
        std::copy(std::begin(policy::kCosMap), std::end(policy::kCosMap), model_->cos_map_.begin());
        const Json *m = member("", "cos_map");
        if (m == nullptr) return;
        array_at(*m, "/cos_map");
        if (m->size() != 8) fail("/cos_map", "expected the queues of the 8 CoS values, found " + std::to_string(m->size()));
        for (std::size_t cos = 0; cos < 8; ++cos)
            model_->cos_map_[cos] =
                static_cast<std::uint8_t>(unsigned_at((*m)[cos], "/cos_map/" + std::to_string(cos), 0, policy::kMaxQueue));
    }

    void build_clock() {
        model_->ticks_ = value_of(fixed_object("clock", policy::kClock, "the clock"), "/clock", policy::kClock, "ticks");
    }

    void read_defaults() {
        for_each_member("defaults", [&](const std::string &kind, const Json &value, const std::string &pointer) {
            if (!contains(kDefaultKinds, kind))
                fail(pointer, "unknown interface kind \"" + kind + "\" (known: " + join(kDefaultKinds) + ")", true);
            defaults_[kind] = Layer{pointer, &object_at(value, pointer)};
        });
    }

    void with_defaults(Origin &origin, const std::string &kind) const {
        if (auto it = defaults_.find(kind); it != defaults_.end()) origin.layers.push_back(it->second);
    }

    // ---- Declarations ----

    void add_card(std::uint32_t slot, const std::string &declaration, const Json *data) {
        PendingCard card;
        card.identity.slot = static_cast<std::uint8_t>(slot);
        card.identity.node = Model::slot_node(slot);
        card.origin.declaration = declaration;
        with_defaults(card.origin, "line_card");
        if (data) card.origin.layers.push_back({declaration, data});
        cards_[slot] = std::move(card);
    }

    void declare_line_cards() {
        for_each_entry("line_cards", [&](const Json &entry, const std::string &pointer, std::size_t) {
            const auto slot = static_cast<std::uint32_t>(value_of(entry, pointer, policy::kLineCard, "slot"));
            if (cards_.count(slot)) fail(pointer + "/slot", "line card in slot " + std::to_string(slot) + " declared twice");
            add_card(slot, pointer, extras(entry, names_of(policy::kLineCard)));
        });
    }

    void add_interface(PendingInterface pending, const std::string &pointer) {
        // Names reach terminals and the handlers' C strings: no NUL, no
        // control character, valid UTF-8.
        if (std::string why; !plain_text(pending.identity.name, why))
            fail(pointer, "an interface name must be plain text: " + why);
        const std::string key = fold_interface_name(pending.identity.name);
        if (auto it = by_name_.find(key); it != by_name_.end()) {
            const SourcePosition first = position_of(src_.positions, ifaces_[it->second].origin.declaration);
            fail(pointer, "interface " + pending.identity.name + " declared twice" +
                              (first.line ? " (first at line " + std::to_string(first.line) + ")" : ""));
        }
        if (auto it = by_index_.find(pending.identity.if_index); it != by_index_.end())
            fail(pointer, "interface index " + hex32(pending.identity.if_index) + " of " + pending.identity.name +
                              " is taken by " + ifaces_[it->second].identity.name);
        by_name_[key] = ifaces_.size();
        by_index_[pending.identity.if_index] = ifaces_.size();
        ifaces_.push_back(std::move(pending));
    }

    void declare_ethernet() {
        Json normalized = Json::array();
        for_each_entry("ethernet", [&](const Json &entry, const std::string &pointer, std::size_t) {
            const auto slot = static_cast<std::uint32_t>(value_of(entry, pointer, policy::kEthernet, "slot"));
            const auto type = static_cast<std::uint8_t>(value_of(entry, pointer, policy::kEthernet, "type"));
            if (std::find(std::begin(policy::kEthernetTypes), std::end(policy::kEthernetTypes), type) ==
                std::end(policy::kEthernetTypes))
                fail(pointer + "/type", "an Ethernet interface has type 26 or 1, not " + std::to_string(type));
            if (!entry.contains("ports")) fail(pointer, "missing member \"ports\"");
            const std::vector<std::uint32_t> ports = ports_at(entry["ports"], pointer + "/ports");
            if (!cards_.count(slot)) add_card(slot, pointer + "/slot", nullptr);
            std::vector<std::string> identity = names_of(policy::kEthernet);
            identity.push_back("ports");
            const Json *data = extras(entry, identity);
            for (std::uint32_t port : ports) {
                PendingInterface p;
                p.identity.name = ethernet_name(slot, port);
                p.identity.if_index = ethernet_index(type, slot, port);
                p.identity.type = type;
                p.identity.kind = InterfaceKind::ethernet;
                p.identity.slot = static_cast<std::uint8_t>(slot);
                p.identity.port = static_cast<std::uint16_t>(port);
                p.scope = Scope::ethernet;
                p.origin.declaration = pointer + "/ports";
                with_defaults(p.origin, "ethernet");
                p.origin.layers.push_back({pointer, data});
                add_interface(std::move(p), pointer + "/ports");
            }
            normalized.push_back({{"slot", slot}, {"ports", entry["ports"]}, {"type", type}});
        });
        out_["ethernet"] = std::move(normalized);
    }

    // "Ethernet1/5.100" and the spellings the shell accepts for it.
    static bool parse_sub_name(const std::string &name, std::uint32_t &slot, std::uint32_t &port, std::uint32_t &sub) {
        const std::string s = expand_interface_name(name);
        char tail = 0;
        return s.compare(0, 8, "ethernet") == 0 && std::sscanf(s.c_str() + 8, "%u/%u.%u%c", &slot, &port, &sub, &tail) == 3;
    }

    void declare_sub_interfaces() {
        Json normalized = Json::array();
        if (const Json *subs = member("", "sub_interfaces")) {
            array_at(*subs, "/sub_interfaces");
            for (std::size_t i = 0; i < subs->size(); ++i) {
                const std::string pointer = "/sub_interfaces/" + std::to_string(i);
                const Json &entry = (*subs)[i];
                std::string name_pointer = pointer;
                const Json *data = nullptr;
                std::string name;
                if (entry.is_string()) {
                    name = entry.get<std::string>();
                } else if (entry.is_object()) {
                    if (!entry.contains("name") || !entry["name"].is_string()) fail(pointer, "missing text member \"name\"");
                    name = entry["name"].get<std::string>();
                    name_pointer = pointer + "/name";
                    data = extras(entry, {"name"});
                } else {
                    fail(pointer, "expected a name such as \"Ethernet1/5.100\" or an object with a \"name\"");
                }
                std::uint32_t slot = 0, port = 0, sub = 0;
                if (!parse_sub_name(name, slot, port, sub))
                    fail(name_pointer, "\"" + name + "\" is not a sub-interface name such as Ethernet1/5.100");
                if (sub < 1 || sub > policy::kMaxSubInterface)
                    fail(name_pointer, "sub-interface number " + std::to_string(sub) + " is out of range 1-" +
                                           std::to_string(policy::kMaxSubInterface));
                auto parent = by_name_.find(fold_interface_name(ethernet_name(slot, port)));
                if (parent == by_name_.end() || ifaces_[parent->second].identity.kind != InterfaceKind::ethernet ||
                    ifaces_[parent->second].identity.sub_intf)
                    fail(name_pointer, "no Ethernet interface " + ethernet_name(slot, port) + " for " + name);
                const Interface &main = ifaces_[parent->second].identity;
                if (main.type != policy::kEthernetTypes[0]) fail(name_pointer, main.name + " has type " + std::to_string(main.type) + "; only type 26 has sub-interfaces");
                PendingInterface p;
                p.identity = main;
                p.identity.name = sub_interface_name(slot, port, sub);
                p.identity.if_index = main.if_index | sub;
                p.identity.sub_intf = true;
                p.identity.sub_id = static_cast<std::uint8_t>(sub);
                p.identity.parent = main.if_index;
                p.scope = Scope::ethernet;
                p.origin.declaration = name_pointer;
                with_defaults(p.origin, "ethernet");
                if (data) {
                    p.origin.layers.push_back({pointer, data});
                    ++p.own_layers;
                }
                normalized.push_back(p.identity.name);
                add_interface(std::move(p), name_pointer);
            }
        }
        out_["sub_interfaces"] = std::move(normalized);
    }

    void declare_extenders() {
        std::map<std::uint32_t, std::string> uplink_taken;
        for_each_entry("extenders", [&](const Json &entry, const std::string &pointer, std::size_t) {
            PendingExtender e;
            e.identity.number = static_cast<std::uint16_t>(value_of(entry, pointer, policy::kExtender, "number"));
            for (const PendingExtender &other : extenders_)
                if (other.identity.number == e.identity.number)
                    fail(pointer + "/number", "extender " + std::to_string(e.identity.number) + " declared twice");
            const auto slot = static_cast<std::uint32_t>(value_of(entry, pointer, policy::kExtender, "slot"));
            if (cards_.count(slot)) fail(pointer + "/slot", "slot " + std::to_string(slot) + " holds a line card");
            for (const PendingExtender &other : extenders_)
                if (other.identity.slot == slot)
                    fail(pointer + "/slot", "slot " + std::to_string(slot) + " holds extender " + std::to_string(other.identity.number));
            e.identity.slot = static_cast<std::uint8_t>(slot);
            e.identity.node = static_cast<std::uint32_t>(
                value_of(entry, pointer, policy_of(policy::kExtender, "node")).value_or(Model::slot_node(slot)));
            for (const PendingExtender &other : extenders_)
                if (other.identity.node == e.identity.node)
                    fail(pointer + "/node", "node " + hex32(e.identity.node) + " is extender " + std::to_string(other.identity.number) + "'s");
            for (const auto &[card_slot, card] : cards_)
                if (card.identity.node == e.identity.node)
                    fail(pointer + "/node", "node " + hex32(e.identity.node) + " is the line card's in slot " + std::to_string(card_slot));

            // Uplinks: "uplink": name, or "uplinks": [names].
            Json uplink_names = Json::array();
            std::string uplinks_pointer;
            if (entry.contains("uplink") && entry.contains("uplinks")) fail(pointer, "give \"uplink\" or \"uplinks\", not both");
            if (entry.contains("uplink")) {
                uplinks_pointer = pointer + "/uplink";
                uplink_names.push_back(entry["uplink"]);
            } else if (entry.contains("uplinks")) {
                uplinks_pointer = pointer + "/uplinks";
                uplink_names = array_at(entry["uplinks"], uplinks_pointer);
            } else {
                fail(pointer, "missing member \"uplink\" (the Ethernet interface that leads to the extender)");
            }
            if (uplink_names.empty()) fail(uplinks_pointer, "an extender needs at least one uplink");
            Json normalized_uplinks = Json::array();
            for (std::size_t u = 0; u < uplink_names.size(); ++u) {
                const std::string up = entry.contains("uplinks") ? uplinks_pointer + "/" + std::to_string(u) : uplinks_pointer;
                if (!uplink_names[u].is_string()) fail(up, "expected an interface name");
                const std::string name = uplink_names[u].get<std::string>();
                PendingInterface *found = referenced(name);
                if (found == nullptr || found->identity.kind != InterfaceKind::ethernet)
                    fail(up, "no Ethernet interface named \"" + name + "\"");
                Interface &uplink = found->identity;
                if (uplink.sub_intf) fail(up, uplink.name + " is a sub-interface");
                if (auto taken = uplink_taken.find(uplink.if_index); taken != uplink_taken.end())
                    fail(up, uplink.name + " already leads to extender " + taken->second);
                uplink_taken[uplink.if_index] = std::to_string(e.identity.number);
                uplink.extender = e.identity.number;
                e.identity.uplinks.push_back(uplink.if_index);
                normalized_uplinks.push_back(uplink.name);
            }

            const Json ports_value = entry.contains("ports") ? entry["ports"] : Json(std::string(policy::kExtenderPorts));
            const std::vector<std::uint32_t> ports = ports_at(ports_value, pointer + "/ports");
            for (std::uint32_t port : ports) {
                PendingInterface p;
                p.identity.name = host_name(e.identity.number, 1, port);
                p.identity.if_index = host_index(e.identity.number, 1, port);
                p.identity.type = policy::kHostType;
                p.identity.kind = InterfaceKind::host;
                p.identity.slot = e.identity.slot;
                p.identity.port = static_cast<std::uint16_t>(port);
                p.identity.extender = e.identity.number;
                p.scope = Scope::host;
                p.origin.declaration = entry.contains("ports") ? pointer + "/ports" : pointer;
                with_defaults(p.origin, "host");
                const std::string declared_at = p.origin.declaration;
                add_interface(std::move(p), declared_at);
                e.identity.ports.push_back(host_index(e.identity.number, 1, port));
            }
            std::sort(e.identity.ports.begin(), e.identity.ports.end());

            e.origin.declaration = pointer;
            with_defaults(e.origin, "extender");
            std::vector<std::string> identity = names_of(policy::kExtender);
            identity.insert(identity.end(), {"uplink", "uplinks", "ports"});
            e.origin.layers.push_back({pointer, extras(entry, identity)});
            e.normalized = {{"number", e.identity.number},
                            {"slot", slot},
                            {"node", hex32(e.identity.node)},
                            {"uplinks", normalized_uplinks},
                            {"ports", ports_value}};
            extenders_.push_back(std::move(e));
        });
    }

    void declare_other_interfaces() {
        Json normalized = Json::array();
        // Their default indexes count in 16 bits: more do not fit, and are
        // refused before anything is built for them.
        if (const Json *others = member("", "other_interfaces"); others && others->is_array() && others->size() > kMaxOtherInterfaces)
            fail("/other_interfaces", std::to_string(others->size()) + " interfaces: at most " +
                                          std::to_string(kMaxOtherInterfaces) + " fit the interface-index space");
        for_each_entry("other_interfaces", [&](const Json &entry, const std::string &pointer, std::size_t i) {
            value_of(entry, pointer, policy::kOther, "name");
            if (entry["name"].get<std::string>().empty()) fail(pointer + "/name", "an interface name is not empty");
            const std::uint64_t type = value_of(entry, pointer, policy::kOther, "type");
            if (type == policy::kEthernetTypes[0] || type == policy::kEthernetTypes[1] || type == policy::kHostType)
                fail(pointer + "/type", "type " + std::to_string(type) + " belongs to Ethernet and host interfaces, which are declared under \"ethernet\" and \"extenders\"");
            const auto if_index = static_cast<std::uint32_t>(
                value_of(entry, pointer, policy_of(policy::kOther, "if_index"))
                    .value_or((type << 24) | 0x00ff0000u | static_cast<std::uint32_t>(i + 1)));
            PendingInterface p;
            p.identity.name = entry["name"].get<std::string>();
            p.identity.if_index = if_index;
            p.identity.type = static_cast<std::uint8_t>(type);
            p.identity.kind = InterfaceKind::other;
            p.scope = Scope::other;
            p.origin.declaration = pointer;
            with_defaults(p.origin, "other");
            p.origin.layers.push_back({pointer, extras(entry, names_of(policy::kOther))});
            add_interface(std::move(p), pointer + "/name");
            normalized.push_back({{"name", entry["name"]}, {"type", type}, {"if_index", hex32(if_index)}});
        });
        out_["other_interfaces"] = std::move(normalized);
    }

    void apply_interface_overrides() {
        for_each_member("interfaces", [&](const std::string &name, const Json &value, const std::string &pointer) {
            auto found = by_name_.find(fold_interface_name(name));
            if (found == by_name_.end())
                fail(pointer, "no interface named \"" + name + "\"", true);
            PendingInterface &p = ifaces_[found->second];
            if (p.identity.name != name)
                fail(pointer, "write the interface's name as " + p.identity.name, true);
            const Json &entry = object_at(value, pointer);
            if (entry.contains("if_index")) {
                std::uint64_t given = 0;
                if (!read_unsigned(entry["if_index"], given) || given != p.identity.if_index)
                    fail(pointer + "/if_index", "the index of " + p.identity.name + " is " + hex32(p.identity.if_index) +
                                                     ", fixed by its declaration");
            }
            p.origin.layers.push_back({pointer, extras(entry, {"if_index"})});
            ++p.own_layers;
        });
    }

    // ---- Entity data ----

    Json merged_data(const Origin &origin) const {
        Json data = Json::object();
        for (const Layer &layer : origin.layers) deep_merge(data, *layer.value);
        return data;
    }

    void check_member(const std::string &key, const Json &value, Scope scope, const Origin &origin) const {
        {
            const std::string relative = pointer_token(key);
            if (key == "description") {
                if (!value.is_string()) fail_in(origin, relative, "expected a text");
                return;
            }
            if (key == "rates") return;  // checked with the whole document
            const SectionCheck *check = find_section(scope, key);
            if (check == nullptr) {
                std::vector<std::string> known = kBuiltinDataKeys;
                for (const std::string &n : section_names(scope)) known.push_back(n);
                fail_in(origin, relative,
                        "unknown section \"" + key + "\" for " + scope_name(scope) + " (known: " + join(known) + ")", true);
            }
            if (*check) {
                Checker checker(value, [&](const std::string &inner, const std::string &reason) {
                    fail_in(origin, relative + inner, reason);
                });
                (*check)(checker);
            }
        }
    }

    // Checks an entity's merged data (and an interface's rates, whose
    // pointer is given; the other entities' rates are checked with the
    // document). A member that one layer alone holds (a section of the
    // defaults, of a range) is the same for every entity that has it, so it
    // is checked with the first.
    void check_data_once(const Json &data, Scope scope, const Origin &origin, const std::string *rates_pointer) {
        for (auto it = data.begin(); it != data.end(); ++it) {
            const Json *sole = nullptr;
            unsigned holders = 0;
            for (const Layer &layer : origin.layers)
                if (auto found = layer.value->find(it.key()); found != layer.value->end()) {
                    ++holders;
                    sole = &*found;
                }
            if (holders == 1 && it.key() != "rates" && !checked_members_.insert(sole).second) continue;
            check_member(it.key(), it.value(), scope, origin);
            if (rates_pointer == nullptr) continue;
            if (it.key() == "rates") rates_beside(data, *rates_pointer, false);
            else if (it->is_structured()) collect_rates(it.value(), *rates_pointer + pointer_token(it.key()), false);
        }
    }

    // Same scope, same shared layers, equal layers of their own.
    static bool same_data(const PendingInterface &a, const PendingInterface &b) {
        if (a.scope != b.scope || a.own_layers != b.own_layers || a.origin.layers.size() != b.origin.layers.size())
            return false;
        const std::size_t shared_layers = a.origin.layers.size() - a.own_layers;
        for (std::size_t l = 0; l < a.origin.layers.size(); ++l) {
            const Json *x = a.origin.layers[l].value, *y = b.origin.layers[l].value;
            if (l < shared_layers ? x != y : *x != *y) return false;
        }
        return true;
    }

    // Interfaces with the same layers (the defaults of their kind and the
    // data of the range that declared them, nothing of their own) share one
    // block of data: merged and checked once, stored once.
    void finish_interfaces() {
        std::map<std::vector<const Json *>, std::shared_ptr<DataBlock>> by_layers;
        Json declared = Json::object();
        blocks_.reserve(ifaces_.size());
        for (PendingInterface &p : ifaces_) {
            std::vector<const Json *> key;
            for (const Layer &layer : p.origin.layers) key.push_back(layer.value);
            const std::string pointer = "/interfaces" + pointer_token(p.identity.name);
            state_origins_.emplace_back(pointer, &p.origin);
            std::shared_ptr<DataBlock> &block = by_layers[key];
            if (!block) {
                // Data of its own that equals another's (a dump loaded back,
                // where every interface spells out its data) is shared all
                // the same, and was checked with the first.
                const std::size_t shared_layers = p.origin.layers.size() - p.own_layers;
                std::size_t hash = static_cast<std::size_t>(p.scope);
                for (std::size_t l = 0; l < p.origin.layers.size(); ++l)
                    hash = hash * 1000003u ^ (l < shared_layers ? std::hash<const Json *>{}(p.origin.layers[l].value)
                                                                 : std::hash<Json>{}(*p.origin.layers[l].value));
                auto &same_hash = by_content_[hash];
                for (const auto &[other, candidate] : same_hash)
                    if (same_data(*other, p)) block = candidate;
                if (block) {
                    block->shared = true;
                } else {
                    block = std::make_shared<DataBlock>();
                    block->value = merged_data(p.origin);
                    check_data_once(block->value, p.scope, p.origin, &pointer);
                    same_hash.emplace_back(&p, block);
                }
            } else {
                block->shared = true;
            }
            blocks_.push_back(block);
            // What the top level's sections see of the interfaces: their names and indexes.
            declared[p.identity.name] = {{"if_index", hex32(p.identity.if_index)}};
        }
        out_["interfaces"] = std::move(declared);
    }

    void finish_extenders() {
        Json all = Json::array();
        for (std::size_t i = 0; i < extenders_.size(); ++i) {
            PendingExtender &e = extenders_[i];
            Json data = merged_data(e.origin);
            check_data_once(data, Scope::extender, e.origin, nullptr);
            Json entry = e.normalized;
            entry.update(data);
            state_origins_.emplace_back("/extenders/" + std::to_string(i), &e.origin);
            all.push_back(std::move(entry));
        }
        out_["extenders"] = std::move(all);
    }

    void finish_line_cards() {
        Json all = Json::array();
        std::size_t i = 0;
        for (auto &[slot, card] : cards_) {
            Json data = merged_data(card.origin);
            check_data_once(data, Scope::line_card, card.origin, nullptr);
            Json entry = {{"slot", slot}};
            entry.update(data);
            state_origins_.emplace_back("/line_cards/" + std::to_string(i++), &card.origin);
            all.push_back(std::move(entry));
        }
        out_["line_cards"] = std::move(all);
    }

    void attach_data_pointers() {
        Json &state = model_->state_;
        model_->interfaces_.reserve(ifaces_.size());
        for (std::size_t n = 0; n < ifaces_.size(); ++n) {
            Interface identity = ifaces_[n].identity;
            blocks_[n]->as_of = model_->ticks_;
            identity.data = DataRef(blocks_[n], &model_->ticks_);
            model_->interfaces_.push_back(std::move(identity));
        }
        for (std::size_t i = 0; i < extenders_.size(); ++i) {
            Extender identity = extenders_[i].identity;
            identity.data = &state["extenders"][i];
            model_->extenders_.push_back(std::move(identity));
        }
        std::size_t i = 0;
        for (auto &[slot, card] : cards_) {
            LineCard identity = card.identity;
            identity.data = &state["line_cards"][i++];
            model_->line_cards_.push_back(identity);
        }
    }

    // ---- Faults ----

    void build_faults() {
        Json normalized = Json::array();
        const Json *faults = member("", "faults");
        if (faults != nullptr) {
            array_at(*faults, "/faults");
            for (std::size_t i = 0; i < faults->size(); ++i) normalized.push_back(build_fault((*faults)[i], i));
        }
        out_["faults"] = std::move(normalized);
    }

    Json build_fault(const Json &entry, std::size_t index) {
        const std::string pointer = "/faults/" + std::to_string(index);
        object_at(entry, pointer);
        auto text = [&](std::string_view name) {
            value_of(entry, pointer, policy::kFault, name);
            return entry[std::string(name)].get<std::string>();
        };
        const std::string target_name = text("target");
        const auto *target = std::find_if(std::begin(policy::kFaultTargets), std::end(policy::kFaultTargets),
                                          [&](const auto &t) { return t.name == target_name; });
        if (target == std::end(policy::kFaultTargets)) {
            std::vector<std::string> known;
            for (const auto &t : policy::kFaultTargets) known.emplace_back(t.name);
            fail(pointer + "/target", "unknown fault target \"" + target_name + "\" (known: " + join(known) + ")");
        }
        const std::string kind_name = text("kind");
        const auto *kind = std::find_if(std::begin(policy::kFaultKinds), std::end(policy::kFaultKinds),
                                        [&](const auto &k) { return k.name == kind_name; });
        if (kind == std::end(policy::kFaultKinds)) fail(pointer + "/kind", "unknown fault kind \"" + kind_name + "\"");

        std::vector<std::string> allowed(std::begin(policy::kFaultCommon), std::end(policy::kFaultCommon));
        allowed.insert(allowed.end(), target->members.begin(), target->members.end());
        members_among(entry, pointer, allowed, "a fault of the " + target_name);
        if (std::find(target->kinds.begin(), target->kinds.end(), kind_name) == target->kinds.end())
            fail(pointer + "/kind", "a fault of the " + target_name + " is one of: " +
                                        join(std::vector<std::string>(target->kinds.begin(), target->kinds.end())));

        Model::Fault f;
        f.target = target->target;
        f.action.kind = kind->kind;
        f.action.error = kind->error;
        f.position = index;
        Json normalized = entry;
        auto number = [&](std::string_view name) { return value_of(entry, pointer, policy_of(policy::kFault, name)); };
        if (auto command = number("command")) f.command = static_cast<std::uint32_t>(*command);
        if (entry.contains("interface")) {
            const std::string name = text("interface");
            const PendingInterface *found = referenced(name);
            if (found == nullptr) fail(pointer + "/interface", "no interface named \"" + name + "\"");
            f.if_index = found->identity.if_index;
            normalized["interface"] = found->identity.name;
        }
        if (auto number_of = number("extender")) {
            const bool known = std::any_of(extenders_.begin(), extenders_.end(),
                                           [&](const PendingExtender &e) { return e.identity.number == *number_of; });
            if (!known) fail(pointer + "/extender", "no extender " + std::to_string(*number_of));
            f.extender = static_cast<std::uint32_t>(*number_of);
        }
        if (entry.contains("operation")) f.operation = operation(entry["operation"], f, pointer + "/operation");
        f.mask = number("mask");
        f.left = number("count");
        for (const policy::FaultKindPolicy &k : policy::kFaultKinds) {
            if (k.needs.empty()) continue;
            const std::string needs(k.needs);
            if (&k != kind && entry.contains(needs))
                fail(pointer + "/" + needs, "\"" + needs + "\" belongs to " + std::string(k.name) + " faults", true);
            if (&k != kind) continue;
            if (!entry.contains(needs))
                fail(pointer, "a " + std::string(k.name) + " fault needs \"" + needs + "\" (" + std::string(k.needs_meaning) + ")");
            (needs == "bytes" ? f.action.bytes : f.action.milliseconds) = static_cast<std::uint32_t>(*number(needs));
        }
        if (entry.contains("error")) f.action.error = error_code(entry["error"], *kind, pointer + "/error");
        model_->faults_.push_back(f);
        return normalized;
    }

    // What a fault's "operation" names: an sse operation code, a statscl
    // "get" or "clear", the card's "card_module_info", a debug function.
    std::optional<std::string> operation(const Json &op, Model::Fault &f, const std::string &pointer) const {
        switch (f.target) {
        case FaultTarget::sse:
            f.command = static_cast<std::uint32_t>(unsigned_at(op, pointer, 0, UINT32_MAX));
            return std::nullopt;
        case FaultTarget::statscl:
            if (!op.is_string() || (op != "get" && op != "clear")) fail(pointer, "a statscl operation is \"get\" or \"clear\"");
            break;
        case FaultTarget::card:
            if (!op.is_string() || op != "card_module_info")
                fail(pointer, "the card operation that can fail is \"card_module_info\"");
            break;
        default:
            if (!op.is_string()) fail(pointer, "expected the name of a debug function");
        }
        return op.get<std::string>();
    }

    // An "error": a name of the platform's error codes or a number, not 0,
    // for the kinds that fail with one.
    std::int32_t error_code(const Json &e, const policy::FaultKindPolicy &kind, const std::string &pointer) const {
        if (kind.error == 0) {
            std::vector<std::string> takers;
            for (const auto &k : policy::kFaultKinds)
                if (k.error != 0) takers.emplace_back(k.name);
            fail(pointer, "\"error\" belongs to " + join(takers) + " faults", true);
        }
        std::int32_t code = 0;
        if (e.is_string()) {
            std::uint64_t number = 0;
            if (auto named = error_by_name(e.get<std::string>())) code = *named;
            else if (read_unsigned(e, number) && number != 0 && number <= UINT32_MAX) code = static_cast<std::int32_t>(number);
            else fail(pointer, "unknown error \"" + e.get<std::string>() + "\"");
        } else {
            code = static_cast<std::int32_t>(unsigned_at(e, pointer, 1, UINT32_MAX));
        }
        if (code == 0) fail(pointer, "an error code is not 0");
        return code;
    }

    // ---- Sections of the top level ----

    void build_root_sections() {
        for (auto it = root_.begin(); it != root_.end(); ++it) {
            if (contains(kCoreRootKeys, it.key())) continue;
            const SectionCheck *check = find_section(Scope::root, it.key());
            const std::string pointer = pointer_token(it.key());
            if (check && *check) {
                Checker checker(
                    it.value(), [&](const std::string &inner, const std::string &reason) { fail(pointer + inner, reason); },
                    &out_);
                (*check)(checker);
            }
            out_[it.key()] = it.value();
        }
        if (const Json *rates = member("", "rates")) out_["rates"] = *rates;
    }

    // ---- Rates ----

    // The rates of everything but the interfaces advance with the clock;
    // the interfaces' are checked with their data and derived when read.
    void build_rates() { collect_rates(model_->state_, "", true); }

    // `path` is the node's pointer; it grows and shrinks back as the walk
    // goes down and up (no string per node).
    void collect_rates(const Json &node, std::string path, bool keep) { collect_rates_at(node, path, keep); }
    void collect_rates_at(const Json &node, std::string &path, bool keep) {
        const std::size_t length = path.size();
        if (node.is_object()) {
            rates_beside(node, path, keep);
            for (auto it = node.begin(); it != node.end(); ++it) {
                if (it.key() == "rates" || !it->is_structured()) continue;
                path += pointer_token(it.key());
                collect_rates_at(it.value(), path, keep);
                path.resize(length);
            }
        } else if (node.is_array()) {
            for (std::size_t i = 0; i < node.size(); ++i) {
                if (!node[i].is_structured()) continue;
                path += '/';
                path += std::to_string(i);
                collect_rates_at(node[i], path, keep);
                path.resize(length);
            }
        }
    }

    // The "rates" member of an object, against the counters beside it.
    void rates_beside(const Json &node, const std::string &pointer, bool keep) {
        if (!node.contains("rates")) return;
        const std::string rates_pointer = pointer + "/rates";
        const Json &rates = node["rates"];
        if (!rates.is_object()) fail_state(rates_pointer, "rates are an object beside the counters they advance");
        for (auto it = rates.begin(); it != rates.end(); ++it) {
            const std::string rate_pointer = rates_pointer + pointer_token(it.key());
            if (it.key() == "rates" || !node.contains(it.key()))
                fail_state(rate_pointer, "no member \"" + it.key() + "\" beside these rates", true);
            add_rate(node[it.key()], it.value(), pointer + pointer_token(it.key()), rate_pointer, keep);
        }
    }

    void add_rate(const Json &target, const Json &rate, const std::string &target_pointer, const std::string &rate_pointer,
                  bool keep) {
        std::uint64_t value = 0;
        if (rate.is_number_integer() && !read_unsigned(rate, value)) fail_state(rate_pointer, "a rate is not negative");
        // A number or an object of rates given for an array applies to every element.
        if ((rate.is_number_integer() || rate.is_object()) && target.is_array()) {
            for (std::size_t i = 0; i < target.size(); ++i)
                add_rate(target[i], rate, target_pointer + "/" + std::to_string(i), rate_pointer, keep);
            return;
        }
        if (rate.is_number_integer()) {
            std::uint64_t ignored = 0;
            if (!target.is_number_integer() || !read_unsigned(target, ignored))
                fail_state(rate_pointer, "a rate advances a counter (an unsigned integer), and " + target_pointer + " is none");
            if (value && keep) model_->rates_.push_back({Json::json_pointer(target_pointer), value});
        } else if (rate.is_object()) {
            if (!target.is_object()) fail_state(rate_pointer, "these rates are for an object, and " + target_pointer + " is none");
            for (auto it = rate.begin(); it != rate.end(); ++it) {
                if (!target.contains(it.key()))
                    fail_state(rate_pointer + pointer_token(it.key()), "no member \"" + it.key() + "\" to advance", true);
                add_rate(target[it.key()], it.value(), target_pointer + pointer_token(it.key()),
                         rate_pointer + pointer_token(it.key()), keep);
            }
        } else if (rate.is_array()) {
            if (!target.is_array() || target.size() != rate.size())
                fail_state(rate_pointer, "an array of rates matches an array of as many counters");
            for (std::size_t i = 0; i < rate.size(); ++i)
                add_rate(target[i], rate[i], target_pointer + "/" + std::to_string(i), rate_pointer + "/" + std::to_string(i), keep);
        } else {
            fail_state(rate_pointer, "a rate is an unsigned integer, an object or an array of rates");
        }
    }

    [[noreturn]] void fail_state(const std::string &state_pointer, const std::string &reason, bool at_key = false) const {
        fail(locate_state(state_pointer), reason, at_key);
    }

    const ScenarioSource &src_;
    const Json &root_;
    std::unique_ptr<Model> model_;
    Json out_;
    std::deque<Json> storage_;  // data layers cut from declarations (stable addresses)
    std::map<std::string, Layer> defaults_;
    std::map<std::uint32_t, PendingCard> cards_;
    std::vector<PendingInterface> ifaces_;
    std::map<std::string, std::size_t> by_name_;  // lower-case name -> ifaces_
    std::map<std::uint32_t, std::size_t> by_index_;
    std::vector<PendingExtender> extenders_;
    std::vector<std::pair<std::string, const Origin *>> state_origins_;
    std::vector<std::shared_ptr<DataBlock>> blocks_;  // ifaces_ -> their data
    std::set<const Json *> checked_members_;           // members of one layer, checked once
    // Interfaces with data of their own, by a hash of their layers.
    std::unordered_map<std::size_t, std::vector<std::pair<const PendingInterface *, std::shared_ptr<DataBlock>>>> by_content_;
};

std::unique_ptr<Model> build_model(const ScenarioSource &source, ScenarioError &error) {
    try {
        ModelBuilder builder(source);
        return builder.build();
    } catch (const Refusal &r) {
        error = r.error;
        return nullptr;
    } catch (const std::exception &e) {
        error = {source.origin, 0, 0, std::string("a section check failed: ") + e.what()};
        return nullptr;
    }
}

namespace {

bool read_text(const std::string &text, const std::string &name, ScenarioSource &out, ScenarioError &error,
               const std::string &base_dir, unsigned depth);

bool read_file(const std::string &path, ScenarioSource &out, ScenarioError &error, unsigned depth) {
    std::string text;
    std::string reason;
    if (!read_json_file(path, text, reason)) {
        error = {path, 0, 0, reason};
        return false;
    }
    const std::size_t slash = path.rfind('/');
    const std::string dir = slash == std::string::npos ? "." : path.substr(0, slash);
    return read_text(text, path, out, error, dir, depth);
}

bool read_default(ScenarioSource &out, ScenarioError &error) {
    out = {Json::object(), {}, "<default>"};
    for (std::size_t i = 0; i < embedded::kDefaultFragmentCount; ++i) {
        const embedded::Fragment &fragment = embedded::kDefaultFragments[i];
        Json doc;
        PositionMap positions;
        ParseFailure failure;
        const std::string name = std::string("<default>/") + fragment.name;
        if (!parse_with_positions(fragment.text, name, doc, positions, failure)) {
            error = {failure.where.file, failure.where.line, failure.where.column, failure.reason};
            return false;
        }
        if (!doc.is_object()) {
            error = {name, 1, 1, "a scenario fragment is a JSON object"};
            return false;
        }
        deep_merge(out.doc, out.positions, doc, positions);
    }
    return true;
}

bool read_text(const std::string &text, const std::string &name, ScenarioSource &out, ScenarioError &error,
               const std::string &base_dir, unsigned depth) {
    Json doc;
    PositionMap positions;
    ParseFailure failure;
    if (!parse_with_positions(text, name, doc, positions, failure)) {
        error = {failure.where.file, failure.where.line, failure.where.column, failure.reason};
        return false;
    }
    if (!doc.is_object() || !doc.contains("extends")) {
        out = {std::move(doc), std::move(positions), name};
        return true;
    }
    const Json &extends = doc["extends"];
    const SourcePosition where = position_of(positions, "/extends");
    if (!extends.is_string()) {
        error = {name, where.line, where.column, "at /extends: expected \"default\" or the path of a scenario file"};
        return false;
    }
    if (depth >= kMaxExtends) {
        error = {name, where.line, where.column, "at /extends: scenarios extend each other too deeply (a cycle?)"};
        return false;
    }
    ScenarioSource base;
    const std::string target = extends.get<std::string>();
    const bool ok = target == "default"
                        ? read_default(base, error)
                        : read_file(target.size() && target[0] == '/' ? target : base_dir + "/" + target, base, error,
                                    depth + 1);
    if (!ok) return false;
    doc.erase("extends");
    positions.erase("/extends");
    deep_merge(base.doc, base.positions, doc, positions);
    out = {std::move(base.doc), std::move(base.positions), name};
    return true;
}

}  // namespace

bool read_scenario_file(const std::string &path, ScenarioSource &out, ScenarioError &error) {
    return read_file(path, out, error, 0);
}

bool read_scenario_text(const std::string &text, const std::string &name, ScenarioSource &out, ScenarioError &error,
                        const std::string &base_dir) {
    return read_text(text, name, out, error, base_dir, 0);
}

bool read_default_scenario(ScenarioSource &out, ScenarioError &error) { return read_default(out, error); }

std::unique_ptr<Model> build_default_model() {
    ScenarioSource source;
    ScenarioError error;
    std::unique_ptr<Model> model;
    if (read_default_scenario(source, error)) model = build_model(source, error);
    if (model) return model;
    diagnostic("the embedded default scenario is refused: " + error.message());
    ScenarioSource empty{Json::object(), {}, "<empty>"};
    return build_model(empty, error);
}

}  // namespace qdsim

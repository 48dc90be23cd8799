// SPDX-License-Identifier: MIT
// The simulated switch: a validated state document plus an index of its
// core entities.
//
// The document holds everything the switch knows (see sim/README.md for
// its layout); the index gives the interfaces, extenders and line cards
// with their identities (index, name, slot, node) and each entity's data,
// where services find their sections.
//
// Interfaces are the bulk of a chassis, so their data is kept apart from
// the document: the interfaces of one declared range (same defaults, same
// range data, no data of their own) share one copy until something changes
// one of them, and a counter with a rate is its stored value plus rate x
// the ticks since it was stored, worked out when the data is read. Loading
// and answering thus cost what the declarations and the asked interfaces
// cost, not a tree per interface. state() assembles the whole document
// (interfaces included) for dumps and the tests.
//
// Services run under the switch lock and get the model from current_model().
// They read an interface's data through `*i.data` and change values inside
// its sections through `i.data.edit()` (a clear zeroes counters, a
// configuration stores a value); they never replace an entity or the
// containers that hold the entities (those are the index's): structural
// changes go through set_state_value, which checks and re-indexes.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/diagnostics.hpp"
#include "model/faults.hpp"
#include "model/json_access.hpp"

namespace qdsim {

enum class InterfaceKind { ethernet, host, other };

// Data of one interface, or of the interfaces of a range that share it.
struct DataBlock {
    Json value = Json::object();
    std::uint64_t as_of = 0;  // clock ticks the stored counters stand at
    bool shared = false;      // held by every interface of a range: copied before a change
};

// An interface's data: read it with *data or data->, change it with
// data.edit(). Both bring the counters that have a rate up to the clock
// first; edit() gives the interface a copy of its own when it shared one.
class DataRef {
public:
    DataRef() = default;
    DataRef(std::shared_ptr<DataBlock> block, const std::uint64_t *clock) : block_(std::move(block)), clock_(clock) {}

    bool operator==(std::nullptr_t) const { return block_ == nullptr; }
    explicit operator bool() const { return block_ != nullptr; }
    const Json &operator*() const;
    const Json *operator->() const { return &**this; }
    Json &edit() const;
    // The value at `pointer` for a change, or null (and no copy) when there is none.
    Json *edit(std::string_view pointer) const;
    bool shares() const { return block_ && block_->shared; }
    const DataBlock *block() const { return block_.get(); }

private:
    mutable std::shared_ptr<DataBlock> block_;
    const std::uint64_t *clock_ = nullptr;
};

// Adds rate x `ticks` to every counter of `value` that has a rate (the
// "rates" members beside counters, mirroring them through objects and
// arrays); unsigned, so a counter wraps at 2^64 like the hardware's.
void advance_counters(Json &value, std::uint64_t ticks);

struct Interface {
    std::uint32_t if_index = 0;
    std::uint8_t type = 0;            // 26 or 1 (Ethernet), 31 (host), other codes for other kinds
    InterfaceKind kind = InterfaceKind::ethernet;
    bool sub_intf = false;
    std::string name;                 // canonical: Ethernet1/5, Ethernet1/5.100, Ethernet101/1/7
    std::uint8_t slot = 0;            // Ethernet: its line card; host: its extender's slot
    std::uint16_t port = 0;           // port number within the card or extender
    std::uint8_t sub_id = 0;          // sub-interface number
    std::uint32_t parent = 0;         // sub-interface: index of its main interface
    std::uint16_t extender = 0;       // host: its extender; Ethernet: the extender it leads to, else 0
    DataRef data;                     // its object under /interfaces (without "if_index")
};

struct Extender {
    std::uint16_t number = 0;         // 100 to 199
    std::uint8_t slot = 0;
    std::uint32_t node = 0;           // MTS node of its statistics agent
    std::vector<std::uint32_t> uplinks;  // Ethernet interfaces that lead to it
    std::vector<std::uint32_t> ports;    // its host interfaces, ascending
    Json *data = nullptr;             // its object under /extenders
};

struct LineCard {
    std::uint8_t slot = 0;
    std::uint32_t node = 0;           // MTS node of its statistics agent
    Json *data = nullptr;             // its object under /line_cards
};

class Model {
public:
    Model() = default;
    Model(const Model &) = delete;
    Model &operator=(const Model &) = delete;

    // ---- Entities ----
    const std::vector<Interface> &interfaces() const { return interfaces_; }  // ascending index
    const Interface *interface(std::uint32_t if_index) const;
    const Interface *interface_named(std::string_view canonical_name) const;
    // A user's spelling: "Ethernet1/1", "eth1/1", "e 1/1", any case; also
    // the name of an interface of another kind, or its index ("0x1a000000").
    const Interface *find_interface(std::string_view spelling) const;

    const std::vector<Extender> &extenders() const { return extenders_; }
    const Extender *extender(std::uint32_t number) const;
    const Extender *extender_at_slot(std::uint32_t slot) const;
    const Extender *extender_at_node(std::uint32_t node) const;
    const Extender *extender_behind(std::uint32_t uplink_if_index) const;

    const std::vector<LineCard> &line_cards() const { return line_cards_; }
    const LineCard *line_card(std::uint32_t slot) const;
    const LineCard *line_card_at_node(std::uint32_t node) const;

    // ---- Platform ----
    struct Platform {
        std::int32_t type = 0;  // what sse_call 1077 answers
        std::uint32_t vdc = 0;
        std::uint16_t card_id = 0;
        std::uint32_t sw_card_id = 0;
    };
    std::int32_t platform_type() const { return platform_.type; }
    std::uint32_t vdc() const { return platform_.vdc; }
    std::uint16_t card_id() const { return platform_.card_id; }
    std::uint32_t sw_card_id() const { return platform_.sw_card_id; }

    // Multicast queue of each CoS (/cos_map).
    const std::array<std::uint8_t, 8> &cos_map() const { return cos_map_; }
    void set_cos_map(const std::array<std::uint8_t, 8> &map) { cos_map_ = map; }

    // ---- The document ----
    // The sections of the top level, the extenders' and line cards' data
    // (the interfaces hold theirs; the platform, CoS map and clock are typed).
    Json &root() { return state_; }
    const Json &root() const { return state_; }
    // The whole document, interfaces included, as of now (a copy).
    Json state() const;
    // The value at a JSON pointer into the whole document, assembling only
    // what the pointer reaches; false when there is nothing there. Throws
    // Json::exception for a malformed pointer.
    bool state_value(const std::string &pointer, Json &out) const;
    // The object of one interface under /interfaces, as of now.
    static Json interface_entry(const Interface &i);

    // ---- Faults ----
    // The first active fault that matches; spends one use of it.
    std::optional<FaultAction> take_fault(const FaultQuery &query);

    // ---- Clock ----
    // Advances every counter that has a rate by rate x ticks (the
    // interfaces' when they are next read).
    void tick(std::uint64_t ticks = 1);
    std::uint64_t ticks() const { return ticks_; }
    // A command that clears counters does not advance the clock when it ends,
    // so the next reading shows exactly zero for what was cleared; the
    // readings after it grow again. The clear services mark their command.
    void note_counters_cleared() { counters_cleared_ = true; }
    // True once after a mark: the command that ends now cleared counters.
    bool take_counters_cleared() { return std::exchange(counters_cleared_, false); }

    // Node of the statistics agent of a slot: ((slot + 1) << 8 | 2), 16 bits.
    static std::uint32_t slot_node(std::uint32_t slot) { return (((slot + 1) << 8) | 2) & 0xffffu; }

private:
    friend class ModelBuilder;

    // The members of the top level that are typed, as the document shows them.
    Json typed_members() const;

    bool counters_cleared_ = false;
    std::uint64_t ticks_ = 0;
    Platform platform_;
    std::array<std::uint8_t, 8> cos_map_{};

    struct Fault {
        FaultTarget target = FaultTarget::daemon;
        FaultAction action;
        std::optional<std::uint32_t> command;
        std::optional<std::uint32_t> if_index;
        std::optional<std::uint32_t> extender;
        std::optional<std::string> operation;
        std::optional<std::uint64_t> mask;
        std::size_t position = 0;  // index in /faults
        std::optional<std::uint64_t> left;  // uses left, when counted
    };
    struct Rate {
        Json::json_pointer target;
        std::uint64_t per_tick = 0;
    };

    void reindex();

    Json state_;
    std::vector<Interface> interfaces_;
    std::map<std::uint32_t, std::size_t> by_index_;
    std::map<std::string, std::size_t> by_lower_name_;
    std::vector<Extender> extenders_;
    std::vector<LineCard> line_cards_;
    std::vector<Fault> faults_;
    std::vector<Rate> rates_;
};

// The switch's model, loading the embedded default scenario on first use.
// Callers hold the switch lock (SwitchLock) while they use it.
Model &current_model();

// Replaces the switch's model (the loaders call this).
void install_model(std::unique_ptr<Model> model);

// Canonical names.
std::string ethernet_name(std::uint32_t slot, std::uint32_t port);
std::string sub_interface_name(std::uint32_t slot, std::uint32_t port, std::uint32_t sub_id);
std::string host_name(std::uint32_t extender, std::uint32_t module, std::uint32_t port);

// Interface indexes: the type code in the top byte.
//   Ethernet S/P (type 26 or 1): type << 24 | (S - 1) << 16 | (P - 1) << 8
//   sub-interface S/P.N:          the main interface's index | N
//   host interface E/M/P:         31 << 24 | E << 16 | (P - 1) << 8 | (M - 1)
std::uint32_t ethernet_index(std::uint8_t type, std::uint32_t slot, std::uint32_t port, std::uint32_t sub_id = 0);
std::uint32_t host_index(std::uint32_t extender, std::uint32_t module, std::uint32_t port);


}  // namespace qdsim

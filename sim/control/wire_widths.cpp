// SPDX-License-Identifier: MIT
#include "control/wire_widths.hpp"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>
#include <vector>

namespace qdsim {
namespace {

// The end of a pointer: the tokens of the record ("*" matches any one
// token; leading "" match nothing), the fields in it, and the width of the
// wire field that carries each.
struct Narrow {
    std::array<std::string_view, 4> record;
    std::span<const std::string_view> fields;
    unsigned bits;
};

// Ethernet queuing reply (daemon command 17) and the switch-wide stream:
// per-group counters are 32-bit words, the uplink drops too; the onboard log
// counts pause events in 32 bits. ingress_discards16 is the reply's 16-bit
// discard field: a rate makes it wrap there, a value set must fit it.
constexpr std::string_view kGroupWords[] = {"rx_port_pkts",  "ucast_to_xbar",  "ucast_from_xbar",   "mcast_to_xbar",
                                            "mcast_from_xbar", "tx_port_pkts", "ingress_discards32"};
constexpr std::string_view kGroupHalfWords[] = {"ingress_discards16"};
constexpr std::string_view kUplinkDrops[] = {"vaq_uplink_mcast_drops", "vaq_uplink_err_drops", "vaq_uplink_rx_drops"};
constexpr std::string_view kPauseEvents[] = {"events"};
constexpr Narrow kNarrow[] = {
    {{"queuing", "qos_groups", "*", "counters"}, kGroupWords, 32},
    {{"queuing", "qos_groups", "*", "counters"}, kGroupHalfWords, 16},
    {{"", "", "queuing", "counters"}, kUplinkDrops, 32},
    {{"", "", "pause", "counters"}, kPauseEvents, 32},
};

std::vector<std::string> tokens_of(const std::string &pointer) {
    std::vector<std::string> tokens;
    try {
        const Json::json_pointer p(pointer);
        Json::json_pointer rest = p;
        while (!rest.empty()) {
            tokens.insert(tokens.begin(), rest.back());
            rest.pop_back();
        }
    } catch (const Json::exception &) {
    }
    return tokens;
}

bool matches(const Narrow &n, const std::vector<std::string> &tokens) {
    std::size_t from = 0;
    while (from < n.record.size() && n.record[from].empty()) ++from;
    const std::size_t length = n.record.size() - from;
    if (tokens.size() < length + 1) return false;
    if (std::find(n.fields.begin(), n.fields.end(), tokens.back()) == n.fields.end()) return false;
    const std::size_t base = tokens.size() - 1 - length;
    for (std::size_t k = 0; k < length; ++k)
        if (n.record[from + k] != "*" && n.record[from + k] != tokens[base + k]) return false;
    return true;
}

bool check(const std::string &root, const std::string &pointer, const Json &value, std::string &error) {
    if (value.is_object()) {
        for (auto it = value.begin(); it != value.end(); ++it)
            if (!check(root, pointer + pointer_token(it.key()), it.value(), error)) return false;
        return true;
    }
    if (value.is_array()) {
        for (std::size_t i = 0; i < value.size(); ++i)
            if (!check(root, pointer + "/" + std::to_string(i), value[i], error)) return false;
        return true;
    }
    std::uint64_t number = 0;
    if (!read_unsigned(value, number)) return true;  // not a number: the section checks refuse it if they must
    const unsigned bits = wire_width(pointer);
    if (bits >= 64 || number >> bits == 0) return true;
    error = std::to_string(number) + (pointer == root ? std::string() : " at " + pointer) + " does not fit the " + std::to_string(bits) +
            "-bit field that carries it (at most " + std::to_string((std::uint64_t{1} << bits) - 1) + ")";
    return false;
}

}  // namespace

unsigned wire_width(const std::string &pointer) {
    const std::vector<std::string> tokens = tokens_of(pointer);
    for (const Narrow &n : kNarrow)
        if (matches(n, tokens)) return n.bits;
    return 64;
}

bool check_wire_widths(const std::string &pointer, const Json &value, std::string &error) {
    // An appended array element ("-") is checked as the element it becomes.
    return check(pointer, pointer, value, error);
}

}  // namespace qdsim

// SPDX-License-Identifier: MIT
#include "control/wire_widths.hpp"

#include <array>
#include <string_view>
#include <vector>

namespace qdsim {
namespace {

// The end of a pointer, token by token ("*" matches any one token), and the
// width of the field that carries the value found there.
struct Narrow {
    std::array<std::string_view, 5> tail;
    unsigned bits;
};

// Ethernet queuing reply (daemon command 17) and the switch-wide stream:
// per-group counters are 32-bit words, the uplink drops too; the onboard log
// counts pause events in 32 bits. ingress_discards16 is the reply's 16-bit
// discard field: a rate makes it wrap there, a value set must fit it.
constexpr Narrow kNarrow[] = {
    {{"queuing", "qos_groups", "*", "counters", "rx_port_pkts"}, 32},
    {{"queuing", "qos_groups", "*", "counters", "ucast_to_xbar"}, 32},
    {{"queuing", "qos_groups", "*", "counters", "ucast_from_xbar"}, 32},
    {{"queuing", "qos_groups", "*", "counters", "mcast_to_xbar"}, 32},
    {{"queuing", "qos_groups", "*", "counters", "mcast_from_xbar"}, 32},
    {{"queuing", "qos_groups", "*", "counters", "tx_port_pkts"}, 32},
    {{"queuing", "qos_groups", "*", "counters", "ingress_discards16"}, 16},
    {{"queuing", "qos_groups", "*", "counters", "ingress_discards32"}, 32},
    {{"", "", "queuing", "counters", "vaq_uplink_mcast_drops"}, 32},
    {{"", "", "queuing", "counters", "vaq_uplink_err_drops"}, 32},
    {{"", "", "queuing", "counters", "vaq_uplink_rx_drops"}, 32},
    {{"", "", "pause", "counters", "events"}, 32},
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
    while (from < n.tail.size() && n.tail[from].empty()) ++from;
    const std::size_t length = n.tail.size() - from;
    if (tokens.size() < length) return false;
    const std::size_t base = tokens.size() - length;
    for (std::size_t k = 0; k < length; ++k)
        if (n.tail[from + k] != "*" && n.tail[from + k] != tokens[base + k]) return false;
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

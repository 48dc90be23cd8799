// SPDX-License-Identifier: MIT
#include "cli/iflist.hpp"

#include <algorithm>
#include <cctype>

#include "cli/grammar.hpp"

namespace qdsh {

namespace {

// Splits "PREFIX<first>-<last>" where PREFIX ends in a letter or '/'.
struct Range {
    std::string prefix;
    std::uint32_t first = 0;
    std::uint32_t last = 0;
};

std::optional<Range> parse_range(const std::string &item) {
    const std::size_t dash = item.rfind('-');
    if (dash == std::string::npos || dash == 0) return std::nullopt;
    const std::string last = item.substr(dash + 1);
    std::size_t b = dash;
    while (b > 0 && std::isdigit(static_cast<unsigned char>(item[b - 1]))) --b;
    const std::string first = item.substr(b, dash - b);
    if (!all_digits(first) || !all_digits(last) || b == 0) return std::nullopt;
    Range r;
    r.prefix = item.substr(0, b);
    if (!parse_u32(first, r.first) || !parse_u32(last, r.last)) return std::nullopt;
    return r;
}

void add(InterfaceListResult &r, std::string spelling, std::uint32_t index) {
    const bool seen = std::any_of(r.interfaces.begin(), r.interfaces.end(),
                                  [&](const ResolvedInterface &i) { return i.if_index == index; });
    if (!seen) r.interfaces.push_back({std::move(spelling), index});
}

void resolve_item(InterfaceListResult &r, const std::string &item, const Resolver &resolve) {
    if (auto index = resolve(item)) {
        add(r, item, *index);
        return;
    }
    const std::optional<Range> range = parse_range(item);
    if (!range) {
        r.error = "unknown interface " + quoted(item);
        return;
    }
    if (range->first > range->last) {
        r.error = "invalid interface range " + quoted(item) + ": " + std::to_string(range->first) + " is above " +
                  std::to_string(range->last);
        return;
    }
    if (range->last - range->first >= kMaxRange) {
        r.error = "interface range " + quoted(item) + " is too large (at most " + std::to_string(kMaxRange) + ")";
        return;
    }
    for (std::uint32_t n = range->first;; ++n) {
        const std::string name = range->prefix + std::to_string(n);
        const auto index = resolve(name);
        if (!index) {
            r.error = "unknown interface " + quoted(name) + " (in range " + quoted(item) + ")";
            return;
        }
        add(r, name, *index);
        if (n == range->last) break;
    }
}

}  // namespace

InterfaceListResult resolve_interface(const std::string &spelling, const Resolver &resolve) {
    InterfaceListResult r;
    if (auto index = resolve(spelling))
        r.interfaces.push_back({spelling, *index});
    else
        r.error = "unknown interface " + quoted(spelling);
    return r;
}

InterfaceListResult resolve_interface_list(const std::vector<std::string> &words, const Resolver &resolve) {
    // Split at commas and blanks; a bare type word joins the numbers after it.
    std::vector<std::string> pieces;
    for (const std::string &w : words) {
        std::size_t b = 0;
        while (b <= w.size()) {
            const std::size_t comma = std::min(w.find(',', b), w.size());
            if (comma > b) pieces.push_back(w.substr(b, comma - b));
            b = comma + 1;
        }
    }
    std::vector<std::string> items;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        if (is_alpha_word(pieces[i]) && i + 1 < pieces.size() && std::isdigit(static_cast<unsigned char>(pieces[i + 1][0]))) {
            items.push_back(pieces[i] + pieces[i + 1]);
            ++i;
        } else {
            items.push_back(pieces[i]);
        }
    }
    InterfaceListResult r;
    if (items.empty()) r.error = "missing interface";
    for (const std::string &item : items) {
        resolve_item(r, item, resolve);
        if (!r.ok()) {
            r.interfaces.clear();
            break;
        }
    }
    return r;
}

}  // namespace qdsh

// SPDX-License-Identifier: MIT
#include "cli/natural_sort.hpp"

#include <algorithm>
#include <cctype>

namespace qdsh {

namespace {

bool is_digit(char c) {
    return std::isdigit(static_cast<unsigned char>(c)) != 0;
}

int lower(char c) {
    return std::tolower(static_cast<unsigned char>(c));
}

// Compares the digit runs starting at a[i] and b[j] (both digits) and moves
// past them: by value (leading zeros skipped, then length, then digits), and
// on equal values by the length written.
int compare_numbers(std::string_view a, std::size_t &i, std::string_view b, std::size_t &j) {
    const std::size_t a_begin = i, b_begin = j;
    while (i < a.size() && is_digit(a[i])) ++i;
    while (j < b.size() && is_digit(b[j])) ++j;
    std::string_view x = a.substr(a_begin, i - a_begin);
    std::string_view y = b.substr(b_begin, j - b_begin);
    const std::size_t x_written = x.size(), y_written = y.size();
    while (x.size() > 1 && x[0] == '0') x.remove_prefix(1);
    while (y.size() > 1 && y[0] == '0') y.remove_prefix(1);
    if (x.size() != y.size()) return x.size() < y.size() ? -1 : 1;
    if (const int c = x.compare(y); c != 0) return c < 0 ? -1 : 1;
    if (x_written != y_written) return x_written < y_written ? -1 : 1;
    return 0;
}

}  // namespace

bool natural_less(std::string_view a, std::string_view b) {
    std::size_t i = 0, j = 0;
    while (i < a.size() && j < b.size()) {
        if (is_digit(a[i]) && is_digit(b[j])) {
            if (const int c = compare_numbers(a, i, b, j); c != 0) return c < 0;
            continue;
        }
        if (lower(a[i]) != lower(b[j])) return lower(a[i]) < lower(b[j]);
        ++i;
        ++j;
    }
    if (i < a.size() || j < b.size()) return j < b.size();  // the shorter one first
    return a < b;
}

void natural_sort(std::vector<std::string> &names) {
    std::stable_sort(names.begin(), names.end(),
                     [](const std::string &x, const std::string &y) { return natural_less(x, y); });
}

}  // namespace qdsh

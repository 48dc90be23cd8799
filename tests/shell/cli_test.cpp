// SPDX-License-Identifier: MIT
// qdsh as a command-line tool: the natural order of interface names and the
// choice of the pager.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cli/natural_sort.hpp"
#include "term/pager.hpp"

namespace {

TEST(NaturalSort, IsAStrictOrder) {
    const struct {
        const char *a, *b;
        bool less;
    } cases[] = {
        {"a", "a", false},       {"a1", "a01", true},  {"a01", "a1", false}, {"a9", "a10", true},
        {"a10", "a9", false},    {"a", "a1", true},    {"a1", "a", false},   {"A", "a", true},
        {"a", "A", false},       {"x0099", "x100", true}, {"1/1", "1/1/1", true},
        {"99999999999999999999", "100000000000000000000", true}, {"Eth1/02", "Ethernet1/1", true},
        {"Ethernet1/1", "ethernet1/1", true}, {"Ethernet1/1", "Ethernet1/1.100", true},
        {"Ethernet1/1.100", "Ethernet1/2", true}, {"Ethernet1/11", "Ethernet2/1", true},
        {"Ethernet2/1", "Ethernet101/1/2", true}, {"Ethernet101/1/10", "mgmt0", true},
    };
    for (const auto &c : cases) EXPECT_EQ(qdsh::natural_less(c.a, c.b), c.less) << c.a << " < " << c.b;
    std::vector<std::string> names = {"mgmt0", "Ethernet1/10", "Ethernet1/2", "Ethernet1/1.100"};
    qdsh::natural_sort(names);
    EXPECT_EQ(names, (std::vector<std::string>{"Ethernet1/1.100", "Ethernet1/2", "Ethernet1/10", "mgmt0"}));
}

TEST(Pager, ChoiceFromEnvironment) {
    const struct {
        const char *env;
        bool less_available;
        const char *expected;
    } cases[] = {
        {nullptr, true, "less -FRX"},  {nullptr, false, ""}, {"", true, ""},       {"  ", true, ""},
        {"cat", true, ""},             {"more", true, "more"}, {" most -s", false, "most -s"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(qdsh::choose_pager(c.env, c.less_available), c.expected) << (c.env ? c.env : "(unset)");
}

}  // namespace

// SPDX-License-Identifier: MIT
// qdsh as a command-line tool: the natural order of interface names and the
// choice of the pager.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cli/natural_sort.hpp"
#include "term/pager.hpp"

namespace {

TEST(NaturalSort, NumbersCompareByValue) {
    std::vector<std::string> names = {"Ethernet1/10", "Ethernet101/1/2", "Ethernet1/2",  "ethernet1/1",
                                      "Ethernet2/1",  "Ethernet1/11",    "Ethernet101/1/10", "mgmt0",
                                      "Ethernet1/1.100", "Ethernet1/1",  "Eth1/02"};
    qdsh::natural_sort(names);
    const std::vector<std::string> expected = {"Eth1/02",     "Ethernet1/1",  "ethernet1/1", "Ethernet1/1.100",
                                               "Ethernet1/2", "Ethernet1/10", "Ethernet1/11", "Ethernet2/1",
                                               "Ethernet101/1/2", "Ethernet101/1/10", "mgmt0"};
    EXPECT_EQ(names, expected);
}

TEST(NaturalSort, IsAStrictOrder) {
    const struct {
        const char *a, *b;
        bool less;
    } cases[] = {
        {"a", "a", false},       {"a1", "a01", true},  {"a01", "a1", false}, {"a9", "a10", true},
        {"a10", "a9", false},    {"a", "a1", true},    {"a1", "a", false},   {"A", "a", true},
        {"a", "A", false},       {"x0099", "x100", true}, {"1/1", "1/1/1", true},
        {"99999999999999999999", "100000000000000000000", true},
    };
    for (const auto &c : cases) EXPECT_EQ(qdsh::natural_less(c.a, c.b), c.less) << c.a << " < " << c.b;
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

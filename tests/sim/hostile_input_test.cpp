// SPDX-License-Identifier: MIT
// Hostile input to the simulator: files that are not scenarios, nesting
// deep enough to exhaust a stack, values wider than their field on the wire
// (port ranges out of bounds are among the scenario refusals). Each is
// refused with a message naming the fault, and the running switch is kept.
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "json_input.hpp"
#include "sim_fixture.hpp"

namespace simtest {
namespace {

class HostileInputTest : public SimTest {
protected:
    std::string dir_ = ::testing::TempDir();
};

TEST_F(HostileInputTest, OnlyRegularFilesOfBoundedSizeAreRead) {
    const std::string fifo = dir_ + "qdsim_hostile_fifo";
    const std::string big = dir_ + "qdsim_hostile_big.json";
    const std::string extends_zero = dir_ + "qdsim_hostile_extends.json";
    unlink(fifo.c_str());
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    {
        std::ofstream(big) << "{}";
        ASSERT_EQ(truncate(big.c_str(), static_cast<off_t>(qdsim::kMaxScenarioBytes) + 1), 0);  // sparse
        std::ofstream(extends_zero) << R"({"extends": "/dev/zero"})";
    }
    const std::pair<std::string, std::string> cases[] = {
        {"/dev/zero", "is not a regular file"},
        {fifo, "is not a regular file"},  // would block forever if opened for reading plainly
        {"/tmp", "is a directory"},
        {big, "is larger than 64 MiB"},
        {extends_zero, "/dev/zero: is not a regular file"},
    };
    for (const auto &[path, reason] : cases) {
        qdsim::ScenarioError e;
        EXPECT_FALSE(qdsim::load_scenario_file(path, e)) << path;
        EXPECT_NE(e.message().find(reason), std::string::npos) << e.message();
        EXPECT_EQ(qdsim::interfaces().size(), 192u) << "the running switch is kept";
    }
    unlink(fifo.c_str());
    unlink(big.c_str());
    unlink(extends_zero.c_str());
}

TEST_F(HostileInputTest, SetValuesNestAtMost64Levels) {
    std::string error;
    // 200,000 levels once crashed the copy into the state.
    const std::string deep = std::string(200000, '[') + std::string(200000, ']');
    EXPECT_FALSE(qdsim::set_state_value("/rates", deep, error));
    EXPECT_EQ(error, "the value nests deeper than 64 levels (at byte 65)");
    // Brackets inside strings are text, however many.
    std::size_t at = 0;
    EXPECT_TRUE(qdsim::check_json_depth(R"(["\"[[[[)" + std::string(100, '[') + R"(", {"a": [[1]]}])", error, at));
    EXPECT_TRUE(qdsim::check_json_depth(std::string(64, '[') + std::string(64, ']'), error, at));
    EXPECT_FALSE(qdsim::check_json_depth("{\"a\":" + std::string(64, '['), error, at));
    EXPECT_EQ(at, 68u);
}

TEST_F(HostileInputTest, SetValuesMustFitTheirWireField) {
    const std::string group = "/interfaces/Ethernet1~11/queuing/qos_groups/0";
    const struct {
        std::string pointer, value, error;  // error empty: accepted
    } cases[] = {
        {group + "/counters/rx_port_pkts", "5000000000",
         "5000000000 does not fit the 32-bit field that carries it (at most 4294967295)"},
        {group + "/counters/rx_port_pkts", "4294967295", ""},
        {group + "/counters/ucast_to_xbar", "\"0x100000000\"",
         "4294967296 does not fit the 32-bit field that carries it (at most 4294967295)"},
        {group + "/counters/ingress_discards16", "131072", "131072 does not fit the 16-bit field that carries it (at most 65535)"},
        {group + "/counters", R"({"tx_port_pkts": 4294967296})",
         "4294967296 at " + group + "/counters/tx_port_pkts does not fit the 32-bit field that carries it (at most 4294967295)"},
        {"/interfaces/Ethernet1~11/pause/counters/events", "4294967296",
         "4294967296 does not fit the 32-bit field that carries it (at most 4294967295)"},
        {"/interfaces/Ethernet1~11/queuing/counters/mcast_tail_drops", "5000000000", ""},  // a 64-bit counter
    };
    for (const auto &c : cases) {
        std::string error;
        EXPECT_EQ(qdsim::set_state_value(c.pointer, c.value, error), c.error.empty()) << c.pointer << ": " << error;
        EXPECT_EQ(error, c.error) << c.pointer;
    }
}

// Refusals are in our words: never the parser's own message, never the
// hostile text repeated whole.
TEST_F(HostileInputTest, JsonRefusalsNeverRepeatTheText) {
    const std::string name(100000, 'n');
    const struct {
        std::string value, error;
    } cases[] = {
        {"3?", "the value is not JSON: syntax error while parsing value - invalid literal (line 1, column 2)"},
        {"1e800", "the value is not JSON: a number too large for any JSON number (line 1, column 1)"},
        {R"({"a": 1, "a": 2})", "the value is not JSON: duplicate member \"a\" (line 1, column 10)"},
        {"{\"" + name + "\": 1, \"" + name + "\": 2}",
         "the value is not JSON: duplicate member \"" + name.substr(0, 64) + "\"... (line 1, column 100009)"},
        {"[" + std::string(1000001, ',') + "]", "the value holds more than 1000000 values (at byte 1000001)"},
    };
    for (const auto &c : cases) {
        std::string error;
        EXPECT_FALSE(qdsim::set_state_value("/rates", c.value, error));
        EXPECT_EQ(error, c.error);
    }
}

TEST_F(HostileInputTest, InterfaceNamesArePlainText) {
    for (const char *name : {"a\\u001b[2Jb", "a\\u0000b", "a\\u009bb", "a\\u007fb"}) {
        qdsim::ScenarioError e;
        const std::string text = std::string(R"({"ethernet": [{"slot": 1, "ports": 1}], "other_interfaces": [{"name": ")") +
                                 name + R"(", "type": 40}]})";
        EXPECT_FALSE(qdsim::load_scenario_text(text, "names.json", e)) << name;
        EXPECT_NE(e.message().find("an interface name must be plain text: character 2 is a control character"),
                  std::string::npos) << e.message();
    }
}

TEST(TerminalText, ControlsAndBytesOutsideUtf8AreEscaped) {
    const std::pair<std::string, std::string> cases[] = {
        {"Ethernet1/1 \xc3\xa9 \xf0\x9f\x98\x80\ttab\n", "Ethernet1/1 \xc3\xa9 \xf0\x9f\x98\x80\ttab\n"},
        {"\x1b[2J\a", "\\x1b[2J\\x07"},
        {std::string("nul\0", 4), "nul\\x00"},
        {"\x9b" "2J \xc2\x9b \x7f", "\\x9b2J \\xc2\\x9b \\x7f"},                  // C1 raw and encoded, DEL
        {"\xff\xfe \xe2\x82 \xed\xa0\x80", "\\xff\\xfe \\xe2\\x82 \\xed\\xa0\\x80"},  // not UTF-8
    };
    for (const auto &[in, out] : cases) EXPECT_EQ(qdsim::terminal_safe(in), out);
    std::string why;
    EXPECT_TRUE(qdsim::plain_text("Ethernet1/1.\xc3\xa9", why));
    EXPECT_FALSE(qdsim::plain_text("a\xc2\x9b", why));
    EXPECT_EQ(why, "character 2 is a control character (U+009b)");
    EXPECT_FALSE(qdsim::plain_text("ab\xff", why));
    EXPECT_EQ(why, "byte 3 is not valid UTF-8");
}

// A counter set to a counter is written in place; an interface that shares
// its data with a range keeps its neighbours' values apart.
TEST_F(HostileInputTest, CountersAreSetInPlace) {
    const std::string counter = "/queuing/qos_groups/0/counters/rx_port_pkts";
    std::string error, before, after;
    ASSERT_TRUE(qdsim::get_state_value("/interfaces/Ethernet1~12" + counter, before, error));
    ASSERT_TRUE(qdsim::set_state_value("/interfaces/Ethernet1~11" + counter, "777", error)) << error;
    ASSERT_TRUE(qdsim::get_state_value("/interfaces/Ethernet1~11" + counter, after, error));
    EXPECT_EQ(after, "777");
    ASSERT_TRUE(qdsim::get_state_value("/interfaces/Ethernet1~12" + counter, after, error));
    EXPECT_EQ(after, before);
    EXPECT_FALSE(qdsim::set_state_value("/interfaces/Ethernet1~11" + counter, "-1", error));
    EXPECT_NE(error.find("expected a counter"), std::string::npos) << error;
}

}  // namespace
}  // namespace simtest

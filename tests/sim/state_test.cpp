// SPDX-License-Identifier: MIT
// The state document: dumping it, reading and changing values through it,
// and the hostile values it refuses in its own words (never the parser's
// message, never the hostile text repeated whole).
#include <nlohmann/json.hpp>

#include "json_input.hpp"
#include "model/model.hpp"
#include "sim_fixture.hpp"

namespace simtest {
namespace {

using StateTest = SimTest;

TEST_F(StateTest, RefusedValuesAreNamedAndTheStateKept) {
    const std::string eth = "/interfaces/Ethernet1~11", group = eth + "/queuing/qos_groups/0";
    const std::string name(100000, 'n'), not_json = "the value is not JSON: ";
    const struct {
        std::string pointer, value, error;
        bool exact;  // the whole message, else a part of it
    } cases[] = {
        {"/cos_map/1", "9", "9 is out of range 0-3", false},
        {"/cos_map/8", "1", "use /- to append", false},
        {eth + "/queing", "{}", "unknown section \"queing\"", false},
        {eth + "/if_index", "\"0x1\"", "", false},
        {"/nowhere/at/all", "1", "nothing at /nowhere/at", false},
        {"/cos_map/0", "{not json", "not JSON", false},
        {"cos_map", "1", "", false},
        {"/extenders/0/vaq_drops/asics/0/ss_drops/0", "16", "16 is above the maximum 15", false},
        {group + "/counters/rx_port_pkts", "-1", "expected a counter", false},
        // Values wider than the field that carries them on the wire.
        {group + "/counters/rx_port_pkts", "5000000000",
         "5000000000 does not fit the 32-bit field that carries it (at most 4294967295)", true},
        {group + "/counters/ucast_to_xbar", "\"0x100000000\"",
         "4294967296 does not fit the 32-bit field that carries it (at most 4294967295)", true},
        {group + "/counters/ingress_discards16", "131072",
         "131072 does not fit the 16-bit field that carries it (at most 65535)", true},
        {group + "/counters", R"({"tx_port_pkts": 4294967296})",
         "4294967296 at " + group + "/counters/tx_port_pkts does not fit the 32-bit field that carries it (at most 4294967295)", true},
        {eth + "/pause/counters/events", "4294967296",
         "4294967296 does not fit the 32-bit field that carries it (at most 4294967295)", true},
        // Texts that are not JSON, or too much of it. 200,000 levels once
        // crashed the copy into the state.
        {"/rates", "3?", not_json + "syntax error while parsing value - invalid literal (line 1, column 2)", true},
        {"/rates", "1e800", not_json + "a number too large for any JSON number (line 1, column 1)", true},
        {"/rates", R"({"a": 1, "a": 2})", not_json + "duplicate member \"a\" (line 1, column 10)", true},
        {"/rates", "{\"" + name + "\": 1, \"" + name + "\": 2}",
         not_json + "duplicate member \"" + name.substr(0, 64) + "\"... (line 1, column 100009)", true},
        {"/rates", "[" + std::string(1000001, ',') + "]", "the value holds more than 1000000 values (at byte 1000001)", true},
        {"/rates", std::string(200000, '[') + std::string(200000, ']'), "the value nests deeper than 64 levels (at byte 65)", true},
    };
    const std::string before = qdsim::dump_state_json();
    for (const auto &c : cases) {
        std::string error;
        EXPECT_FALSE(qdsim::set_state_value(c.pointer, c.value, error)) << c.pointer;
        if (c.exact)
            EXPECT_EQ(error, c.error) << c.pointer;
        else
            EXPECT_NE(error.find(c.error), std::string::npos) << c.pointer << ": " << error;
    }
    EXPECT_EQ(qdsim::dump_state_json(), before);
    // Brackets inside strings are text, however many.
    std::string error;
    std::size_t at = 0;
    EXPECT_TRUE(qdsim::check_json_depth(R"(["\"[[[[)" + std::string(100, '[') + R"(", {"a": [[1]]}])", error, at));
    EXPECT_TRUE(qdsim::check_json_depth(std::string(64, '[') + std::string(64, ']'), error, at));
    EXPECT_FALSE(qdsim::check_json_depth("{\"a\":" + std::string(64, '['), error, at));
    EXPECT_EQ(at, 68u);
}

// A counter is written in place, up to its field's width; an interface that
// shares its data with a range keeps its neighbours' values apart.
TEST_F(StateTest, CountersAreSetInPlace) {
    const std::string counter = "/queuing/qos_groups/0/counters/rx_port_pkts";
    std::string error, before, after;
    ASSERT_TRUE(qdsim::get_state_value("/interfaces/Ethernet1~12" + counter, before, error));
    for (const char *value : {"4294967295", "777"}) {
        ASSERT_TRUE(qdsim::set_state_value("/interfaces/Ethernet1~11" + counter, value, error)) << error;
        ASSERT_TRUE(qdsim::get_state_value("/interfaces/Ethernet1~11" + counter, after, error));
        EXPECT_EQ(after, value);
    }
    ASSERT_TRUE(qdsim::get_state_value("/interfaces/Ethernet1~12" + counter, after, error));
    EXPECT_EQ(after, before);
    // A 64-bit counter takes more.
    EXPECT_TRUE(qdsim::set_state_value("/interfaces/Ethernet1~11/queuing/counters/mcast_tail_drops", "5000000000", error))
        << error;
}

TEST_F(StateTest, ShapeChangesGoThroughTheSameChecksAndReindex) {
    std::string error;
    ASSERT_TRUE(qdsim::set_state_value("/ethernet/-", R"({"slot": 5, "ports": "1-4"})", error)) << error;
    EXPECT_EQ(qdsim::interfaces().size(), 196u);
    ASSERT_TRUE(qdsim::find_interface("Ethernet5/4").has_value());
    EXPECT_FALSE(qdsim::set_state_value("/extenders/0/slot", "5", error));  // slot 5 now holds a line card
    EXPECT_NE(error.find("slot 5 holds a line card"), std::string::npos) << error;
    ASSERT_TRUE(qdsim::set_state_value("/faults/-", R"({"target": "daemon", "command": 20, "kind": "send_failure"})", error))
        << error;
    EXPECT_EQ(daemon(handle, QD_CLI_CMD_SHOW_WRR_COSMAP).send_rc, static_cast<std::int32_t>(0x41000001));
}

// Only what the pointer reaches is read.
TEST_F(StateTest, ValuesAreReadByPointer) {
    std::string value, error;
    ASSERT_TRUE(qdsim::get_state_value("/extenders/1/uplinks", value, error)) << error;
    EXPECT_EQ(nlohmann::json::parse(value), nlohmann::json::array({"Ethernet2/48"}));
    ASSERT_TRUE(qdsim::get_state_value("/interfaces/Ethernet101~11~11", value, error)) << error;
    EXPECT_EQ(nlohmann::json::parse(value)["if_index"], "0x1f650000");
    for (const char *pointer : {"/extenders/7", "extenders", "/interfaces/Ethernet101~11~11/qos_counters/none"})
        EXPECT_FALSE(qdsim::get_state_value(pointer, value, error)) << pointer;
    EXPECT_FALSE(qdsim::get_state_value("/interfaces/Ethernet9~19", value, error));
    EXPECT_EQ(error, "nothing at /interfaces/Ethernet9~19");
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

}  // namespace
}  // namespace simtest

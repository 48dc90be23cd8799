// SPDX-License-Identifier: MIT
// The state document: dumping it, reading and changing values through it.
#include <nlohmann/json.hpp>

#include "model/model.hpp"
#include "sim_fixture.hpp"

namespace simtest {
namespace {

using StateTest = SimTest;

TEST_F(StateTest, ABadValueIsRefusedAndTheStateKept) {
    std::string error;
    const std::string before = qdsim::dump_state_json();
    EXPECT_FALSE(qdsim::set_state_value("/cos_map/1", "9", error));
    EXPECT_NE(error.find("9 is out of range 0-3"), std::string::npos) << error;
    EXPECT_FALSE(qdsim::set_state_value("/cos_map/8", "1", error));
    EXPECT_NE(error.find("use /- to append"), std::string::npos) << error;
    EXPECT_FALSE(qdsim::set_state_value("/interfaces/Ethernet1~11/queing", "{}", error));
    EXPECT_NE(error.find("unknown section \"queing\""), std::string::npos) << error;
    EXPECT_FALSE(qdsim::set_state_value("/interfaces/Ethernet1~11/if_index", "\"0x1\"", error));
    EXPECT_FALSE(qdsim::set_state_value("/nowhere/at/all", "1", error));
    EXPECT_NE(error.find("nothing at /nowhere/at"), std::string::npos) << error;
    EXPECT_FALSE(qdsim::set_state_value("/cos_map/0", "{not json", error));
    EXPECT_NE(error.find("not JSON"), std::string::npos) << error;
    EXPECT_FALSE(qdsim::set_state_value("cos_map", "1", error));
    EXPECT_FALSE(qdsim::set_state_value("/extenders/0/vaq_drops/asics/0/ss_drops/0", "16", error));
    EXPECT_NE(error.find("16 is above the maximum 15"), std::string::npos) << error;
    EXPECT_EQ(qdsim::dump_state_json(), before);
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

TEST_F(StateTest, ValuesAreReadByPointer) {
    std::string value, error;
    ASSERT_TRUE(qdsim::get_state_value("/extenders/1/uplinks", value, error)) << error;
    EXPECT_EQ(nlohmann::json::parse(value), nlohmann::json::array({"Ethernet2/48"}));
    EXPECT_FALSE(qdsim::get_state_value("/extenders/7", value, error));
    EXPECT_FALSE(qdsim::get_state_value("extenders", value, error));
}

}  // namespace
}  // namespace simtest

// SPDX-License-Identifier: MIT
// The Ethernet sections ("queuing", "extended") and the extenders'
// "internal_ports": a wrong value is refused with the position where it was
// written, and the switch loaded before stays.
#include "sim_fixture.hpp"

namespace simtest {
namespace {

using EthernetSectionsTest = SimTest;

const std::string kHead = R"({"ethernet": [{"slot": 1, "ports": "1-2"}],)"
                          R"( "extenders": [{"number": 101, "slot": 33, "uplink": "Ethernet1/2", "ports": 1}],)"
                          "\n";

std::string ethernet(const std::string &sections) {
    return kHead + R"( "interfaces": {"Ethernet1/1": )" + sections + "}}";
}
std::string extender(const std::string &sections) { return kHead + R"( "defaults": {"extender": )" + sections + "}}"; }

TEST_F(EthernetSectionsTest, WrongValuesAreRefusedWhereTheyWereWritten) {
    std::string nine_groups, many_ports;
    for (int g = 0; g < 9; ++g)
        nine_groups += (g ? ", {\"qos_group\": " : "{\"qos_group\": ") + std::to_string(g % 8) + "}";
    for (int p = 0; p < 256; ++p) many_ports += (p ? ", {\"glb_idx\": " : "{\"glb_idx\": ") + std::to_string(p) + "}";
    struct Case {
        std::string text;
        std::string at;  // the refusal points at the first occurrence of this text
        std::string reason;
    } cases[] = {
        {ethernet(R"({"queuing": {"qos_groups": [{"qos_group": 0, "bandwith": 50}]}})"), "50}",
         "unknown member \"bandwith\""},
        {ethernet(R"({"queuing": {"qos_groups": [{"qos_group": 1}, {"qos_group":1}]}})"), "1}]",
         "qos-group 1 is listed twice"},
        {ethernet(R"({"queuing": {"qos_groups": [{"qos_group": 8}]}})"), "8}", "8 is above the maximum 7"},
        {ethernet(R"({"queuing": {"qos_groups": [{"qos_group": 0, "bandwidth": 101}]}})"), "101",
         "above the maximum 100"},
        {ethernet(R"({"queuing": {"qos_groups": [{"bandwidth": 10}]}})"), "{\"bandwidth\"", "names its \"qos_group\""},
        {ethernet(R"({"queuing": {"qos_groups": [)" + nine_groups + "]}}"), "[{", "at most 8 qos-groups, found 9"},
        {ethernet(R"({"queuing": {"counters": {"mcast_tail_drops": -1}}})"), "-1", "expected a counter"},
        {ethernet(R"({"queuing": {"supported": "yes"}})"), "\"yes\"", "expected true or false"},
        {ethernet(R"({"extended": {"sp_level": [0, 0, 0, 0, 0, 0, 1]}})"), "[0", "expected 8 elements, found 7"},
        {ethernet(R"({"extended": {"drop_mode_bits": "0x100"}})"), "\"0x100\"", "256 is above the maximum 255"},
        {ethernet(R"({"extended": {"counters": {"pass": [[0, 0, 0, 0, 0, 0, 0, 0]]}}})"), "[[", "expected 3 elements"},
        {extender(R"({"internal_ports": [{"glb_idx": 0, "kind": "hif"}]})"), "\"hif\"", "\"kind\" is \"enif\""},
        {extender(R"({"internal_ports": [{"glb_idx": 0, "kind": "enif"}, {"glb_idx": 2, "kind": "enif"}]})"), "2,",
         "glb_idx 2 of an enif port: the 2 enif ports are numbered 0 to 1"},
        {extender(R"({"internal_ports": [{"glb_idx": 0, "kind": "ihif"}, {"glb_idx":0, "kind": "ihif"}]})"),
         "0, \"kind\": \"ihif\"}]", "glb_idx 0 is given to two ihif ports"},
        {extender(R"({"internal_ports": [{"glb_idx": 0, "kind": "enif", "nif_class": 1}]})"), "1}", "only an iNIF"},
        {extender(R"({"internal_ports": [{"glb_idx": 0, "kind": "ihif", "port_type": 2}]})"), "2}", "type 2 is a NIF"},
        {extender(R"({"internal_ports": [)" + many_ports + "]}"), "[{", "at most 255 internal ports, found 256"},
    };
    for (const Case &c : cases) {
        qdsim::ScenarioError e;
        ASSERT_FALSE(qdsim::load_scenario_text(c.text, "eth.json", e)) << c.text;
        const std::size_t at = c.text.find(c.at, kHead.size());
        ASSERT_NE(at, std::string::npos) << c.at;
        EXPECT_EQ(e.line, 2u) << e.message();
        EXPECT_EQ(e.column, at - kHead.size() + 1) << e.message();
        EXPECT_NE(e.reason.find(c.reason), std::string::npos) << e.message();
    }
    // The switch loaded before stays.
    EXPECT_TRUE(qdsim::find_interface("Ethernet2/48").has_value());

    // A template's value is told where the template wrote it.
    qdsim::ScenarioError e;
    const std::string text =
        kHead + R"( "defaults": {"ethernet": {"queuing": {"qos_groups": [{"qos_group": 0, "mtu": 65536}]}}}})";
    ASSERT_FALSE(qdsim::load_scenario_text(text, "eth.json", e));
    EXPECT_EQ(e.message(),
              "eth.json:2:79: at /defaults/ethernet/queuing/qos_groups/0/mtu: 65536 is above the maximum 65535");
}

}  // namespace
}  // namespace simtest

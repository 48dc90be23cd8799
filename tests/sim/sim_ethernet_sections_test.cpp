// The Ethernet sections ("queuing", "extended") and the extenders'
// "internal_ports": what a scenario may say, and how a wrong value is
// refused with the position where it was written.
#include "sim_ethernet_fixture.hpp"

namespace simtest {
namespace {

using EthernetSectionsTest = EthernetSimTest;

const std::string kHead =
    R"({"ethernet": [{"slot": 1, "ports": "1-2"}], "extenders": [{"number": 101, "slot": 33, "uplink": "Ethernet1/2", "ports": 1}],)"
    "\n";

std::string ethernet(const std::string &sections) {
    return kHead + R"( "interfaces": {"Ethernet1/1": )" + sections + "}}";
}
std::string extender(const std::string &sections) { return kHead + R"( "defaults": {"extender": )" + sections + "}}"; }

TEST_F(EthernetSectionsTest, EveryMemberAndTheirRatesLoad) {
    load(ethernet(R"({"queuing": {"supported": true, "vaq_buf_hidden": true, "vaq_drop_class_buf": 4096,
        "counters": {"mcast_tail_drops": 1, "vaq_uplink_rx_drops": 2, "vaq_uplink_err_drops": 3, "vaq_uplink_mcast_drops": 4},
        "qos_groups": [{"qos_group": 7, "priority": true, "no_drop": true, "bandwidth": 100, "mtu": 9216, "mtu_hw": 9238,
                        "xon": 1, "xoff": 2, "q_size": 3, "q_size_40g": 4, "pfc_rx_active": true, "pfc_tx_active": false,
                        "counters": {"rx_port_pkts": 1, "ucast_to_xbar": 2, "ucast_from_xbar": 3, "tx_port_pkts": 4,
                                     "ingress_discards16": 5, "ingress_discards32": 6, "mcast_to_xbar": 7, "mcast_from_xbar": 8}}],
        "rates": {"counters": {"mcast_tail_drops": 9}, "qos_groups": {"counters": {"rx_port_pkts": 10}}}},
      "extended": {"supported": false, "sp_level": [7, 0, 0, 0, 0, 0, 0, 1], "drop_mode_bits": "0xff",
        "cos_to_queue": [7, 6, 5, 4, 3, 2, 1, 0], "counters": {"pass": [[1, 2, 3, 4, 5, 6, 7, 8], [0, 0, 0, 0, 0, 0, 0, 0],
        [0, 0, 0, 0, 0, 0, 0, 0]], "drop": [[0, 0, 0, 0, 0, 0, 0, 0], [0, 0, 0, 0, 0, 0, 0, 0], [0, 0, 0, 0, 0, 0, 0, 18446744073709551615]]},
        "rates": {"counters": {"pass": 1}}}})"));
    load(extender(R"({"internal_ports": [
        {"glb_idx": 0, "asic_no": 3, "kind": "inif", "port_id": 65535, "nif_class": 256, "counters": {"tx_drop": 1}},
        {"glb_idx": 0, "kind": "ihif", "port_type": 0}, {"glb_idx": 0, "kind": "enif"}, {"glb_idx": 1, "kind": "inif"}],
      "rates": {"internal_ports": [{"counters": {"tx_drop": 5}}, {}, {}, {}]}})"));
    qdsim::advance_clock(2);
    const std::string out = show_internal("Ethernet1/2");
    EXPECT_EQ(lines_starting(out, " iNIF "),
              (std::vector<std::string>{" iNIF      0         3         NIF       65535    ",
                                        " iNIF      1         0         NIF       0        "}));
    EXPECT_EQ(lines_starting(out, " 0   11 ").size(), 1u) << out;  // H2N drops: iNIF 0 Tx drop 1 + 2 x 5
}

TEST_F(EthernetSectionsTest, WrongValuesAreRefusedWhereTheyWereWritten) {
    std::string many_groups, many_ports;
    for (int g = 0; g < 9; ++g) many_groups += std::string(g ? ", " : "") + "{\"qos_group\": " + std::to_string(g % 8) + "}";
    for (int p = 0; p < 256; ++p) many_ports += std::string(p ? ", " : "") + "{\"glb_idx\": " + std::to_string(p) + ", \"kind\": \"enif\"}";
    struct Case {
        std::string text;
        std::string at;  // where the refusal must point: the first occurrence of this text
        std::string reason;
    } cases[] = {
        {ethernet(R"({"queuing": {"qos_groups": [{"qos_group": 0, "bandwith": 50}]}})"), "50}",
         "unknown member \"bandwith\""},
        {ethernet(R"({"queuing": {"qos_groups": [{"qos_group": 1}, {"qos_group":1}]}})"), "1}]",
         "qos-group 1 is listed twice"},
        {ethernet(R"({"queuing": {"qos_groups": [{"qos_group": 8}]}})"), "8}", "8 is above the maximum 7"},
        {ethernet(R"({"queuing": {"qos_groups": [{"qos_group": 0, "bandwidth": 101}]}})"), "101",
         "101 is above the maximum 100"},
        {ethernet(R"({"queuing": {"qos_groups": [{"bandwidth": 10}]}})"), "{\"bandwidth\"",
         "a qos-group record names its \"qos_group\""},
        {ethernet(R"({"queuing": {"qos_groups": [)" + many_groups + "]}}"), "[{", "at most 8 qos-groups, found 9"},
        {ethernet(R"({"queuing": {"qos_groups": [{"qos_group": 0, "counters": {"rx_port_pkts": -1}}]}})"), "-1",
         "expected a counter"},
        {ethernet(R"({"queuing": {"supported": "yes"}})"), "\"yes\"", "expected true or false"},
        {ethernet(R"({"queuing": {"counters": {"mcast_drops": 1}}})"), "1}", "unknown member \"mcast_drops\""},
        {ethernet(R"({"queuing": {"vaq_drop_class_buf": 4294967296}})"), "4294967296", "above the maximum 4294967295"},
        {ethernet(R"({"extended": {"sp_level": [0, 0, 0, 0, 0, 0, 1]}})"), "[0", "expected 8 elements, found 7"},
        {ethernet(R"({"extended": {"cos_to_queue": [0, 1, 2, 3, 4, 5, 6, 8]}})"), "8]", "8 is above the maximum 7"},
        {ethernet(R"({"extended": {"drop_mode_bits": "0x100"}})"), "\"0x100\"", "256 is above the maximum 255"},
        {ethernet(R"({"extended": {"counters": {"pass": [[0, 0, 0, 0, 0, 0, 0, 0]]}}})"), "[[",
         "expected 3 elements, found 1"},
        {extender(R"({"internal_ports": [{"glb_idx": 0, "kind": "hif"}]})"), "\"hif\"", "\"kind\" is \"enif\""},
        {extender(R"({"internal_ports": [{"glb_idx": 0, "kind": "enif"}, {"glb_idx": 2, "kind": "enif"}]})"), "2,",
         "glb_idx 2 of an enif port: the 2 enif ports are numbered 0 to 1"},
        {extender(R"({"internal_ports": [{"glb_idx": 0, "kind": "ihif"}, {"glb_idx":0, "kind": "ihif"}]})"), "0, \"kind\": \"ihif\"}]",
         "glb_idx 0 is given to two ihif ports"},
        {extender(R"({"internal_ports": [{"glb_idx": 0, "kind": "enif", "nif_class": 1}]})"), "1}",
         "only an iNIF port has a NIF class"},
        {extender(R"({"internal_ports": [{"glb_idx": 0, "kind": "inif", "nif_class": 0}]})"), "0}",
         "an iNIF port's NIF class is not 0"},
        {extender(R"({"internal_ports": [{"glb_idx": 0, "kind": "ihif", "port_type": 2}]})"), "2}",
         "type 2 is a NIF port's"},
        {extender(R"({"internal_ports": {"glb_idx": 0}})"), "{\"glb_idx\"", "expected an array"},
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
    EXPECT_TRUE(contains(show_queuing("Ethernet1/48"), " port map \n"));
}

TEST_F(EthernetSectionsTest, AWrongTemplateValueIsToldAtTheTemplate) {
    qdsim::ScenarioError e;
    ASSERT_FALSE(qdsim::load_scenario_text(
        kHead + R"( "defaults": {"ethernet": {"queuing": {"qos_groups": [{"qos_group": 0, "mtu": 65536}]}}}})", "eth.json", e));
    EXPECT_EQ(e.message(), "eth.json:2:79: at /defaults/ethernet/queuing/qos_groups/0/mtu: 65536 is above the maximum 65535");
}

}  // namespace
}  // namespace simtest

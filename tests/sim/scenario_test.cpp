// SPDX-License-Identifier: MIT
// Loading scenarios: the embedded default, templates, and refusals that
// name the file, the line and the column.
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "json_input.hpp"

#include "model/model.hpp"
#include "model/sections.hpp"
#include "sim_fixture.hpp"

namespace simtest {
namespace {

using qdsim::ScenarioError;

class ScenarioTest : public SimTest {
protected:
    // Loads `text`; expects a refusal and returns it.
    ScenarioError refused(const std::string &text) {
        ScenarioError error;
        EXPECT_FALSE(qdsim::load_scenario_text(text, "test.json", error)) << text;
        return error;
    }
    bool loads(const std::string &text) {
        ScenarioError error;
        const bool ok = qdsim::load_scenario_text(text, "test.json", error);
        EXPECT_TRUE(ok) << error.message();
        return ok;
    }
    std::size_t count(std::uint8_t type) {
        std::size_t n = 0;
        for (const auto &i : qdsim::interfaces()) n += i.type == type && !i.sub_intf ? 1 : 0;
        return n;
    }
};

// Line 1 declares a line card and extender 101; a case's own part is line 2.
const std::string kHead = R"({"ethernet": [{"slot": 1, "ports": "1-2"}],)"
                          R"( "extenders": [{"number": 101, "slot": 33, "uplink": "Ethernet1/2", "ports": 1}],)"
                          "\n";
std::string ethernet(const std::string &s) { return kHead + R"( "interfaces": {"Ethernet1/1": )" + s + "}}"; }
std::string extender(const std::string &s) { return kHead + R"( "defaults": {"extender": )" + s + "}}"; }
std::string host(const std::string &s) {
    return kHead + R"( "interfaces": {"Ethernet101/1/1": {"hif_queuing": )" + s + "}}}";
}
std::string vaq_drops(const std::string &s) {
    return R"({"ethernet": [{"slot": 1, "ports": 1}], "extenders": [{"number": 101, "slot": 33,)"
           R"( "uplink": "Ethernet1/1", "ports": 1, "vaq_drops": )" + s + "}]}";
}
std::string other(const std::string &name) {
    return R"({"ethernet": [{"slot": 1, "ports": 1}], "other_interfaces": [{"name": ")" + name + R"(", "type": 40}]})";
}
std::string switch_report(const std::string &s) { return kHead + R"( "switch_report": )" + s + "}"; }
std::string repeated(const std::string &member, int n, int modulo) {
    std::string out;
    for (int i = 0; i < n; ++i) out += (i ? ", {\"" : "{\"") + member + "\": " + std::to_string(i % modulo) + "}";
    return out;
}

// Every refusal names the file, the line and column of the wrong value
// (when `at` is given) and why; the switch loaded before stays.
TEST_F(ScenarioTest, RefusalsNameWhereAndWhy) {
    const std::string eth = "at /interfaces/Ethernet1~11/", hif = "at /interfaces/Ethernet101~11~11/hif_queuing/";
    const struct {
        std::string text, at, reason;
    } cases[] = {
        {"{\n  \"platform\": {\"type\": 2,}\n}\n", "2:26", ""},  // the stray }
        {"{\"cos_map\": [0,0,0,0,0,0,0,0],\n \"cos_map\": []}", "2:2", "duplicate member \"cos_map\""},
        {"{\"ethernet\": [{\"slot\": 1, \"ports\": \"1-48\"},\n               {\"slot\": 1, \"ports\": \"40-50\"}]}", "2:37",
         "interface Ethernet1/40 declared twice"},
        {"{\"ethernet\": [{\"slot\": 300, \"ports\": 1}]}", "1:24", "300 is out of range 1-255"},
        {"{\"ethernet\": [{\"slot\": \"one\", \"ports\": 1}]}", "1:24", "expected an unsigned integer"},
        {"{\"ethernet\": [{\"slot\": 1, \"ports\": \"9-3\"}]}", "1:36", "not within 1-256 in ascending order"},
        {"{\"ethernet\": [{\"slot\": 1, \"ports\": \"1-100000\"}]}", "1:36",
         "port range \"1-100000\" is not within 1-256 in ascending order"},
        {"{\"ethernet\": [{\"slot\": 1, \"ports\": \"1-99999999999999999999\"}]}", "1:36",
         "port range \"1-99999999999999999999\" is not within 1-256 in ascending order"},
        {"{\"ethernet\": [{\"slot\": 1, \"ports\": \"1-x\"}]}", "1:36", "port range \"1-x\" is not N or N-M"},
        {"{\"defaults\": {\"ethernet\": {}, \"fibre\": {}}}", "1:31", "unknown interface kind \"fibre\""},
        {"{\"cos_map\": [0, 1, 2, 3, 4, 0, 0, 0]}", "1:26", "4 is out of range 0-3"},
        {"{\"ethernet\": [{\"slot\": 1, \"ports\": 1, \"type\": 31}]}", "1:47", "type 26 or 1"},
        {"{\"frobnicate\": 1}", "1:2", "unknown section \"frobnicate\""},
        {"{\"ethernet\": [{\"slot\": 1, \"ports\": 1}],\n \"interfaces\": {\"Ethernet1/2\": {}}}", "2:17",
         "no interface named \"Ethernet1/2\""},
        {"{\"ethernet\": [{\"slot\": 1, \"ports\": 1, \"queueing\": {}}]}", "1:39", "unknown section \"queueing\""},
        {"{\"ethernet\": [{\"slot\": 1, \"ports\": 1}],\n \"extenders\": [{\"number\": 101, \"slot\": 1, \"uplink\": \"Ethernet1/1\"}]}",
         "2:40", "slot 1 holds a line card"},
        {"{\"ethernet\": [{\"slot\": 1, \"ports\": 1}],\n \"extenders\": [{\"number\": 101, \"slot\": 9, \"uplink\": \"Ethernet1/2\"}]}",
         "2:53", "no Ethernet interface named \"Ethernet1/2\""},
        {"{\"description\": " + std::string(100, '[') + std::string(100, ']') + "}", "1:80", "nest deeper than 64"},
        // Rates stand beside counters, and are not negative.
        {R"({"ethernet": [{"slot": 1, "ports": 1}],
  "extenders": [{"number": 101, "slot": 9, "uplink": "Ethernet1/1", "ports": 1, "rates": {"drops": 1}}]})",
         "2:91", "no member \"drops\" beside these rates"},
        {R"({"extends": "default", "rates": {"nothing": 1}})", "", "no member \"nothing\""},
        {R"({"extends": "default", "interfaces": {"Ethernet101/1/1": {"qos_counters": {"rates": {"tx_queue_drops": -1}}}}})",
         "", "a rate is not negative"},
        // Sections written in a template are refused where the template wrote them.
        {kHead + R"( "defaults": {"host": {"qos_counters": {"tx_queue_drops": -4}}}})", "2:59",
         "at /defaults/host/qos_counters/tx_queue_drops: expected a counter"},
        {kHead + R"( "defaults": {"ethernet": {"queuing": {"qos_groups": [{"qos_group": 0, "mtu": 65536}]}}}})", "2:79",
         "at /defaults/ethernet/queuing/qos_groups/0/mtu: 65536 is above the maximum 65535"},
        {R"({"extends": "default",
  "defaults": {"host": {"hif_queuing": {"queues": [{"queue_id": 1, "bandwidth": 101}]}}}})",
         "2:81", "at /defaults/host/hif_queuing/queues/0/bandwidth: 101 is above the maximum 100"},
        // The Ethernet sections.
        {ethernet(R"({"queuing": {"qos_groups": [{"qos_group": 0, "bandwith": 50}]}})"), "2:89", eth + "queuing/qos_groups/0/bandwith: unknown member \"bandwith\""},
        {ethernet(R"({"queuing": {"qos_groups": [{"qos_group": 1}, {"qos_group":1}]}})"), "2:91", "qos-group 1 is listed twice"},
        {ethernet(R"({"queuing": {"qos_groups": [{"qos_group": 8}]}})"), "2:74", "8 is above the maximum 7"},
        {ethernet(R"({"queuing": {"qos_groups": [{"qos_group": 0, "bandwidth": 101}]}})"), "2:90", "above the maximum 100"},
        {ethernet(R"({"queuing": {"qos_groups": [{"bandwidth": 10}]}})"), "2:60", "names its \"qos_group\""},
        {ethernet(R"({"queuing": {"qos_groups": [)" + repeated("qos_group", 9, 8) + "]}}"), "2:59", "at most 8 qos-groups, found 9"},
        {ethernet(R"({"queuing": {"counters": {"mcast_tail_drops": -1}}})"), "2:78", "expected a counter"},
        {ethernet(R"({"queuing": {"supported": "yes"}})"), "2:58", "expected true or false"},
        {ethernet(R"({"extended": {"sp_level": [0, 0, 0, 0, 0, 0, 1]}})"), "2:58", "expected 8 elements, found 7"},
        {ethernet(R"({"extended": {"drop_mode_bits": "0x100"}})"), "2:64", "256 is above the maximum 255"},
        {ethernet(R"({"extended": {"counters": {"pass": [[0, 0, 0, 0, 0, 0, 0, 0]]}}})"), "2:67", "expected 3 elements"},
        // The extenders' internal ports.
        {extender(R"({"internal_ports": [{"glb_idx": 0, "kind": "hif"}]})"), "2:70", "\"kind\" is \"enif\""},
        {extender(R"({"internal_ports": [{"glb_idx": 0, "kind": "enif"}, {"glb_idx": 2, "kind": "enif"}]})"), "2:91",
         "glb_idx 2 of an enif port: the 2 enif ports are numbered 0 to 1"},
        {extender(R"({"internal_ports": [{"glb_idx": 0, "kind": "ihif"}, {"glb_idx":0, "kind": "ihif"}]})"), "2:90",
         "glb_idx 0 is given to two ihif ports"},
        {extender(R"({"internal_ports": [{"glb_idx": 0, "kind": "enif", "nif_class": 1}]})"), "2:91", "only an iNIF"},
        {extender(R"({"internal_ports": [{"glb_idx": 0, "kind": "ihif", "port_type": 2}]})"), "2:91", "type 2 is a NIF"},
        {extender(R"({"internal_ports": [)" + repeated("glb_idx", 256, 256) + "]}"), "2:46", "at most 255 internal ports, found 256"},
        // Host-interface queuing.
        {host(R"({"queues": [{"queue_id": 10}]})"), "2:77", hif + "queues/0/queue_id: 10 is above the maximum 9"},
        {host(R"({"queues": [{"queue_id": 2}, {"queue_id": 2}]})"), "2:94", hif + "queues/1/queue_id: queue id 2 is listed twice"},
        {host(R"({"queues": [{"queue_id": 2, "qos_groups": [8]}]})"), "2:95", hif + "queues/0/qos_groups/0: 8 is above the maximum 7"},
        {host(R"({"input_buffers": [{}, {}, {}, {}, {}, {}, {}, {}, {}]})"), "2:70", hif + "input_buffers: at most 8 input buffers, found 9"},
        {host(R"({"input_buffers": [{"cos": [3, 3]}]})"), "2:83", hif + "input_buffers/0/cos/1: cos 3 is listed twice"},
        {host(R"({"input_buffers": [{"qos_groups": [1], "unsupported_qos_groups": [1]}]})"), "2:118",
         hif + "input_buffers/0/unsupported_qos_groups/0: qos-group 1 is listed as supported too"},
        {host(R"({"stats_format": 256})"), "2:69", hif + "stats_format: 256 is above the maximum 255"},
        {host(R"({"queue_limit": "none"})"), "2:68", hif + "queue_limit: expected a number of bytes, or null for none"},
        {host(R"({"cos_qos_group": [1, 1, 1, 1, 1, 1, 1, 1]})"), "2:70", hif + "cos_qos_group: at most 7 qos-group maps (cos 0 to 6), found 8"},
        {host(R"({"queue_stats": [{"queue_id": 1, "counters": {"rx": -1}}]})"), "2:104",
         hif + "queue_stats/0/counters/rx: expected a counter (an unsigned integer)"},
        {host(R"({"pfc": true})"), "2:60", hif + "pfc: unknown member \"pfc\""},
        // Interface names are plain text.
        {other("a\\u001b[2Jb"), "", "an interface name must be plain text: character 2 is a control character"},
        {other("a\\u0000b"), "", "an interface name must be plain text: character 2 is a control character"},
        {other("a\\u009bb"), "", "an interface name must be plain text: character 2 is a control character"},
        {other("a\\u007fb"), "", "an interface name must be plain text: character 2 is a control character"},
        // The switch-wide report names a host interface.
        {switch_report(R"({"host_interface": "Ethernet1/1"})"), "", "at /switch_report/host_interface: no host interface named \"Ethernet1/1\""},
        {switch_report(R"({"host_interface": "Ethernet101/1/4"})"), "", "no host interface named \"Ethernet101/1/4\""},
        {switch_report(R"({"host_interface": 5})"), "", "at /switch_report/host_interface: expected the name of a host interface, or null"},
        {switch_report(R"({"full_report": "yes"})"), "", "at /switch_report/full_report: expected true or false"},
        {switch_report(R"({"host": "Ethernet101/1/1"})"), "", "unknown member \"host\""},
        // The extenders' no-credit drop counters: what the reply cannot carry.
        {vaq_drops(R"({"asics": [{"ss_drops": []}, {"ss_drops": []}, {"ss_drops": []}, {"ss_drops": []}, {"ss_drops": []}]})"), "",
         "vaq_drops/asics: 5 ASICs, an extender reports at most 4"},
        {vaq_drops(R"({"asics": [{"ss_drops": [0,0,0,0,0,0,0,0,0,0,0,0,0]}]})"), "", "vaq_drops/asics/0/ss_drops: 13 SS, an ASIC reports at most 12"},
        {vaq_drops(R"({"asics": [{"ss_drops": [3, 16]}]})"), "", "vaq_drops/asics/0/ss_drops/1: 16 is above the maximum 15"},
        {vaq_drops(R"({"asics": [{"ss_drops": [-1]}]})"), "", "vaq_drops/asics/0/ss_drops/0: expected an unsigned integer"},
        {vaq_drops(R"({"asics": [{"ss_drops": [1]}], "rates": {"asics": {"ss_drops": 1}}})"), "", "vaq_drops/rates: the drop counters saturate at 15"},
        {vaq_drops(R"({"asics": [{"ss_drops": [1], "rates": {"ss_drops": 1}}]})"), "", "vaq_drops/asics/0/rates: the drop counters saturate at 15"},
        {vaq_drops(R"({"asics": [{"ss": [1]}]})"), "", "unknown member \"ss\""},
        {vaq_drops(R"({"asics": [{}]})"), "", "vaq_drops/asics/0: an ASIC lists the drop counts of its SS in \"ss_drops\""},
        {vaq_drops(R"({"asics": {"ss_drops": []}})"), "", "vaq_drops/asics: expected an array"},
        // The policy of the core's members: types, ranges, required members, faults per target and kind.
        {R"({"platform": {"type": 2147483648}})", "", "at /platform/type: expected a signed 32-bit integer"},
        {R"({"platform": {"card_id": 65536}})", "", "at /platform/card_id: 65536 is out of range 0-65535"},
        {R"({"platform": {"vdc": -1}})", "", "at /platform/vdc: expected an unsigned integer"},
        {R"({"platform": {"sw_card": 1}})", "", "unknown member \"sw_card\" of the platform"},
        {R"({"clock": {"tick": 1}})", "", "unknown member \"tick\" of the clock"},
        {R"({"cos_map": [0, 0, 0]})", "", "expected the queues of the 8 CoS values, found 3"},
        {R"({"line_cards": [{}]})", "", "at /line_cards/0: missing member \"slot\""},
        {R"({"ethernet": [{"slot": 0, "ports": 1}]})", "", "at /ethernet/0/slot: 0 is out of range 1-255"},
        {R"({"ethernet": [{"slot": 1}]})", "", "at /ethernet/0: missing member \"ports\""},
        {R"({"ethernet": [{"slot": 1, "ports": [257]}]})", "", "257 is out of range 1-256"},
        {R"({"ethernet": [{"slot": 1, "ports": 1}], "sub_interfaces": ["e1/1.256"]})", "", "sub-interface number 256 is out of range 1-255"},
        {R"({"ethernet": [{"slot": 1, "ports": 1}], "extenders": [{"number": 200, "slot": 9, "uplink": "e1/1"}]})", "", "at /extenders/0/number: 200 is out of range 100-199"},
        {R"({"ethernet": [{"slot": 1, "ports": 1}], "extenders": [{"number": 101, "uplink": "e1/1"}]})", "", "at /extenders/0: missing member \"slot\""},
        {R"({"ethernet": [{"slot": 1, "ports": 1}], "extenders": [{"number": 101, "slot": 9, "node": 0, "uplink": "e1/1"}]})", "", "at /extenders/0/node: 0 is out of range 1-65535"},
        {R"({"other_interfaces": [{"name": "x", "type": 31}]})", "", "type 31 belongs to Ethernet and host interfaces"},
        {R"({"other_interfaces": [{"name": "x", "type": 1}]})", "", "type 1 belongs to Ethernet and host interfaces"},
        {R"({"other_interfaces": [{"name": "x", "type": 40, "if_index": 0}]})", "", "at /other_interfaces/0/if_index: 0 is out of range 1-4294967295"},
        {R"({"other_interfaces": [{"name": "x"}]})", "", "at /other_interfaces/0: missing member \"type\""},
        {R"({"other_interfaces": [{"name": 5, "type": 40}]})", "", "at /other_interfaces/0/name: expected a text"},
        {R"({"ethernet": [{"slot": 1, "ports": 1}], "faults": [{"target": "lc", "kind": "failure"}]})", "", "unknown fault target \"lc\" (known: daemon, agent, sse, enumeration, statscl, card, debug)"},
        {R"({"ethernet": [{"slot": 1, "ports": 1}], "faults": [{"target": "daemon"}]})", "", "at /faults/0: missing member \"kind\""},
        {R"({"ethernet": [{"slot": 1, "ports": 1}], "faults": [{"target": "sse", "kind": "empty_payload"}]})", "", "a fault of the sse is one of: failure"},
        {R"({"ethernet": [{"slot": 1, "ports": 1}], "faults": [{"target": "enumeration", "kind": "send_failure"}]})", "", "a fault of the enumeration is one of: failure, bad_status"},
        {R"({"ethernet": [{"slot": 1, "ports": 1}], "faults": [{"target": "daemon", "kind": "short_payload"}]})", "", "needs \"bytes\" (the length kept)"},
        {R"({"ethernet": [{"slot": 1, "ports": 1}], "faults": [{"target": "daemon", "kind": "slow_reply"}]})", "", "needs \"milliseconds\""},
        {R"({"ethernet": [{"slot": 1, "ports": 1}], "faults": [{"target": "agent", "kind": "slow_reply", "milliseconds": 0}]})", "", "at /faults/0/milliseconds: 0 is out of range 1-60000"},
        {R"({"ethernet": [{"slot": 1, "ports": 1}], "faults": [{"target": "daemon", "kind": "unsupported", "milliseconds": 5}]})", "", "\"milliseconds\" belongs to slow_reply faults"},
        {R"({"ethernet": [{"slot": 1, "ports": 1}], "faults": [{"target": "daemon", "kind": "unsupported", "bytes": 5}]})", "", "\"bytes\" belongs to short_payload faults"},
        {R"({"ethernet": [{"slot": 1, "ports": 1}], "faults": [{"target": "daemon", "kind": "send_failure", "extender": 101}]})", "", "unknown member \"extender\" of a fault of the daemon"},
        {R"({"ethernet": [{"slot": 1, "ports": 1}], "faults": [{"target": "agent", "kind": "send_failure", "extender": 99}]})", "", "at /faults/0/extender: 99 is out of range 100-199"},
        {R"({"ethernet": [{"slot": 1, "ports": 1}], "faults": [{"target": "agent", "kind": "send_failure", "extender": 150}]})", "", "no extender 150"},
        {R"({"ethernet": [{"slot": 1, "ports": 1}], "faults": [{"target": "daemon", "kind": "send_failure", "command": 256}]})", "", "at /faults/0/command: 256 is out of range 0-255"},
        {R"({"ethernet": [{"slot": 1, "ports": 1}], "faults": [{"target": "daemon", "kind": "send_failure", "count": -1}]})", "", "at /faults/0/count: expected an unsigned integer"},
        {R"({"ethernet": [{"slot": 1, "ports": 1}], "faults": [{"target": "daemon", "kind": "send_failure", "interface": "e1/9"}]})", "", "no interface named \"e1/9\""},
        {R"({"ethernet": [{"slot": 1, "ports": 1}], "faults": [{"target": "daemon", "kind": "send_failure", "error": "oops"}]})", "", "unknown error \"oops\""},
        {R"({"ethernet": [{"slot": 1, "ports": 1}], "faults": [{"target": "daemon", "kind": "send_failure", "error": 0}]})", "", "at /faults/0/error: 0 is out of range 1-4294967295"},
        {R"({"ethernet": [{"slot": 1, "ports": 1}], "faults": [{"target": "daemon", "kind": "empty_payload", "error": 5}]})", "", "\"error\" belongs to send_failure, recv_failure, failure faults"},
        {R"({"ethernet": [{"slot": 1, "ports": 1}], "faults": [{"target": "statscl", "kind": "failure", "operation": "put"}]})", "", "a statscl operation is \"get\" or \"clear\""},
        {R"({"ethernet": [{"slot": 1, "ports": 1}], "faults": [{"target": "card", "kind": "failure", "operation": "x"}]})", "", "\"card_module_info\""},
        // The default's own extenders are overridden; an entry is refused where it was written.
        {R"({"extends": "default", "extenders": [
        {"number": 101, "slot": 33, "uplink": "Ethernet1/48"}, {"number": 102, "slot": 34, "uplink": "Ethernet2/48",
         "vaq_drops": {"asics": [{"ss_drops": [20]}]}}]})", "3:", "20 is above the maximum 15"},
    };
    for (const auto &c : cases) {
        const std::string message = refused(c.text).message();
        EXPECT_EQ(message.rfind("test.json:" + c.at, 0), 0u) << c.text << "\n" << message;
        EXPECT_NE(message.find(c.reason), std::string::npos) << c.text << "\n" << message;
    }
    EXPECT_EQ(qdsim::interfaces().size(), 192u);
}

TEST_F(ScenarioTest, DataMergesFromDefaultsThenDeclarationThenInterface) {
    ASSERT_TRUE(loads(R"({
      "defaults": {"host": {"qos_counters": {"tx_queue_drops": 1, "other": 5}}},
      "ethernet": [{"slot": 1, "ports": "1-2"}],
      "extenders": [{"number": 150, "slot": 20, "uplink": "Ethernet1/1", "ports": "1-3"}],
      "interfaces": {"Ethernet150/1/2": {"qos_counters": {"tx_queue_drops": 9}}}
    })"));
    qdsim::Model &m = qdsim::current_model();
    const auto *plain = m.find_interface("Ethernet150/1/1");
    const auto *special = m.find_interface("Ethernet150/1/2");
    ASSERT_TRUE(plain && special);
    EXPECT_EQ(qdsim::get_u64(*plain->data, "/qos_counters/tx_queue_drops"), 1u);
    EXPECT_EQ(qdsim::get_u64(*special->data, "/qos_counters/tx_queue_drops"), 9u);
    EXPECT_EQ(qdsim::get_u64(*special->data, "/qos_counters/other"), 5u);  // deep merge keeps the rest
}

TEST_F(ScenarioTest, RegisteredSectionsCheckTheirValuesWhereverTheyWereWritten) {
    // A name reserved without a checker takes the checker registered later.
    ASSERT_TRUE(qdsim::register_section(qdsim::Scope::ethernet, "test_limits"));
    ASSERT_TRUE(qdsim::register_section(qdsim::Scope::ethernet, "test_limits", [](const qdsim::Checker &check) {
        check.members_among("", {"limit"});
        check.unsigned_value("/limit", 10);
    }));
    EXPECT_FALSE(qdsim::register_section(qdsim::Scope::ethernet, "test_limits", [](const qdsim::Checker &) {}));
    const std::string head = "{\"ethernet\": [{\"slot\": 1, \"ports\": \"1-2\"}],\n";
    EXPECT_TRUE(loads(head + R"("defaults": {"ethernet": {"test_limits": {"limit": 10}}}})"));
    ScenarioError e = refused(head + R"("interfaces": {"Ethernet1/2": {"test_limits": {"limit": 11}}}})");
    EXPECT_EQ(e.line, 2u);
    EXPECT_EQ(e.column, 57u);
    EXPECT_NE(e.reason.find("11 is above the maximum 10"), std::string::npos) << e.message();
    e = refused(head + R"("defaults": {"ethernet": {"test_limits": {"limt": 1}}}})");
    EXPECT_NE(e.reason.find("unknown member \"limt\""), std::string::npos) << e.message();
    qdsim::unregister_section(qdsim::Scope::ethernet, "test_limits");
    qdsim::take_diagnostics();
}

TEST_F(ScenarioTest, SubInterfacesTypeOneAndOtherKinds) {
    ASSERT_TRUE(loads(R"({
      "ethernet": [{"slot": 3, "ports": "1-4"}, {"slot": 3, "ports": "5-6", "type": 1}],
      "sub_interfaces": ["Ethernet3/2.100", {"name": "eth3/2.7"}],
      "other_interfaces": [{"name": "mgmt0", "type": 40}]
    })"));
    const auto sub = qdsim::find_interface("Ethernet3/2.7");
    ASSERT_TRUE(sub.has_value());
    std::uint8_t type = 0;
    if_index_get_type(*sub, &type);
    EXPECT_EQ(type, 26);
    EXPECT_EQ(if_index_is_sub_intf(*sub), 1);
    if_index_get_type(*qdsim::find_interface("e3/5"), &type);
    EXPECT_EQ(type, 1);
    if_index_get_type(*qdsim::find_interface("MGMT0"), &type);
    EXPECT_EQ(type, 40);
    refused(R"({"ethernet": [{"slot": 3, "ports": 5, "type": 1}], "sub_interfaces": ["Ethernet3/5.1"]})");
}

// What a scenario leaves out takes the policy's defaults.
TEST_F(ScenarioTest, LeftOutMembersTakeTheirDefaults) {
    ASSERT_TRUE(loads(R"({"platform": {"card_id": 7}, "ethernet": [{"slot": 1, "ports": 1}],
      "extenders": [{"number": 101, "slot": 9, "uplink": "E1/1"}], "other_interfaces": [{"name": "mgmt0", "type": 40}]})"));
    const qdsim::Model &m = qdsim::current_model();
    EXPECT_EQ(m.platform_type(), 2);
    EXPECT_EQ(m.vdc(), 1u);
    EXPECT_EQ(m.sw_card_id(), 7u);
    EXPECT_EQ(m.cos_map(), (std::array<std::uint8_t, 8>{0, 0, 1, 1, 2, 2, 3, 3}));
    EXPECT_EQ(m.ticks(), 0u);
    EXPECT_EQ(*qdsim::find_interface("Ethernet1/1"), 0x1a000000u);
    EXPECT_EQ(*qdsim::find_interface("mgmt0"), 0x28ff0001u);
    EXPECT_EQ(m.extender(101)->ports.size(), 48u);
    EXPECT_EQ(m.extender(101)->node, qdsim::Model::slot_node(9));
    ASSERT_TRUE(loads(R"({"platform": {"type": -3, "vdc": 2, "sw_card_id": 9}, "clock": {"ticks": 5}})"));
    EXPECT_EQ(qdsim::current_model().platform_type(), -3);
    EXPECT_EQ(qdsim::current_model().vdc(), 2u);
    EXPECT_EQ(qdsim::current_model().card_id(), 0u);
    EXPECT_EQ(qdsim::current_model().sw_card_id(), 9u);
    EXPECT_EQ(qdsim::current_model().ticks(), 5u);
}

// Only regular files of bounded size are read (a FIFO would block forever
// if opened plainly); a refused file names itself, and the line and column
// of the wrong value.
TEST_F(ScenarioTest, FilesAreReadAndTheirErrorsNamed) {
    const std::string dir = ::testing::TempDir(), fifo = dir + "qdsim_scenario_fifo";
    const std::string big = dir + "qdsim_scenario_big.json", extends_zero = dir + "qdsim_scenario_extends.json";
    const std::string bad = dir + "qdsim_scenario_test.json";
    unlink(fifo.c_str());
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    std::ofstream(big) << "{}";
    ASSERT_EQ(truncate(big.c_str(), static_cast<off_t>(qdsim::kMaxScenarioBytes) + 1), 0);  // sparse
    std::ofstream(extends_zero) << R"({"extends": "/dev/zero"})";
    std::ofstream(bad) << "{\n  \"ethernet\": [{\"slot\": 1, \"ports\": 1}],\n  \"cos_map\": [9]\n}\n";
    const std::pair<std::string, std::string> cases[] = {
        {"/dev/zero", "/dev/zero: is not a regular file"}, {fifo, "is not a regular file"}, {"/tmp", "is a directory"},
        {big, "is larger than 64 MiB"},  {extends_zero, "/dev/zero: is not a regular file"},
        {bad + ".missing", "cannot be read"}, {bad, bad + ":3:14: "},
    };
    for (const auto &[path, reason] : cases) {
        ScenarioError e;
        EXPECT_FALSE(qdsim::load_scenario_file(path, e)) << path;
        EXPECT_NE(e.message().find(reason), std::string::npos) << e.message();
    }
    EXPECT_EQ(qdsim::interfaces().size(), 192u) << "the running switch is kept";
    for (const std::string &path : {fifo, big, extends_zero, bad}) unlink(path.c_str());
}

TEST_F(ScenarioTest, TheShippedExamplesLoad) {
    for (const char *name : {"platform-1.json", "platform-2.json", "platform-3.json"}) {
        ScenarioError e;
        ASSERT_TRUE(qdsim::load_scenario_file(std::string(QDSIM_SOURCE_DIR) + "/scenarios/" + name, e)) << e.message();
        qdsim::advance_clock(4);
        // Its state, the clock's work included, loads back as the same switch.
        const std::string state = qdsim::dump_state_json();
        ASSERT_TRUE(qdsim::load_scenario_text(state, name, e)) << e.message();
        EXPECT_EQ(qdsim::dump_state_json(), state) << name;
    }
}

}  // namespace
}  // namespace simtest

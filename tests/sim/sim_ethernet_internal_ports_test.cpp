// The internal port statistics of an extender: the daemon names the slot
// and the NIF port behind an uplink (command 22), the extender's agent
// reports its ports (sub-command 23); the library prints both.
#include "core/errors.hpp"
#include "model/model.hpp"
#include "sim_ethernet_fixture.hpp"

namespace simtest {
namespace {

using InternalPortsTest = EthernetSimTest;

TEST_F(InternalPortsTest, TheUplinksExtenderReportsItsPortsByClass) {
    const std::string out = show_internal("Ethernet1/48");
    EXPECT_EQ(status, 0);
    // Written per ASIC, shown per class.
    EXPECT_EQ(lines_starting(out, " eNIF "),
              (std::vector<std::string>{" eNIF      0         0         NIF       1        ",
                                        " eNIF      1         0         NIF       2        ",
                                        " eNIF      2         1         NIF       1        ",
                                        " eNIF      3         1         NIF       2        "}));
    EXPECT_EQ(lines_starting(out, " iHIF ")[2], " iHIF      2         1         HIF       18       ");
    EXPECT_EQ(lines_starting(out, " iNIF ")[1], " iNIF      1         1         NIF       33       ");
    // Data rows (N2H, then H2N) of glb_idx 0 and 3: 64-bit counters in full,
    // cells without a port 0.
    EXPECT_EQ(lines_starting(out, " 0       4295779641"),
              (std::vector<std::string>{" 0       4295779641     3510443021     998120443     "}));
    EXPECT_EQ(lines_starting(out, " 3       0              0              4294980001    ").size(), 1u);
    EXPECT_EQ(lines_starting(out, " 0   12             0              27             0              0").size(), 1u);
}

TEST_F(InternalPortsTest, CountersGrowAndEachExtenderAnswersThroughItsUplink) {
    show_internal("Ethernet1/48");
    const std::string out = show_internal("Ethernet2/48");
    EXPECT_TRUE(contains(out, "\n 0       4295787741     3510449821     998122343     \n")) << out;  // one tick
    EXPECT_EQ(lines_starting(out, " eNIF ").size(), 4u);

    // An extender reached through two uplinks answers through either.
    load(R"({"ethernet": [{"slot": 1, "ports": "1-4"}],
             "extenders": [{"number": 120, "slot": 40, "uplinks": ["Ethernet1/3", "Ethernet1/4"], "ports": 1,
                            "internal_ports": [{"glb_idx": 0, "kind": "ihif", "port_type": 7, "port_id": 5,
                                                "counters": {"data_sent": 77}}]}]})");
    for (const char *uplink : {"Ethernet1/3", "Ethernet1/4"}) {
        const std::string ports = show_internal(uplink);
        EXPECT_EQ(lines_starting(ports, " iHIF "), (std::vector<std::string>{" iHIF      0         0         HIF       5        "}))
            << ports;
        EXPECT_EQ(lines_starting(ports, " 0       0              77 ").size(), 1u) << ports;
    }
}

TEST_F(InternalPortsTest, WithoutAnExtenderOrPortsNothingIsTabled) {
    EXPECT_EQ(show_internal("Ethernet1/1"), "qd_cli_show_internal_stats: failed to find nif port for ifidx 0x1a000000");
    EXPECT_EQ(show_internal("Ethernet101/1/2"),
              "qd_cli_show_internal_stats: failed to find nif port for ifidx 0x1f650100");
    EXPECT_EQ(status, 0);
    load(R"({"ethernet": [{"slot": 1, "ports": 1}],
             "extenders": [{"number": 120, "slot": 40, "uplink": "Ethernet1/1", "ports": 1}]})");
    EXPECT_EQ(show_internal("Ethernet1/1"), "No internal statistic information to display!\n");
}

TEST_F(InternalPortsTest, AgentFailuresNameTheInterface) {
    load(R"({"extends": "default", "faults": [
        {"target": "agent", "command": 23, "extender": 101, "kind": "unsupported", "count": 1},
        {"target": "agent", "command": 23, "extender": 101, "kind": "recv_failure", "count": 1},
        {"target": "agent", "command": 23, "interface": "eth2/48", "kind": "short_payload", "bytes": 200, "count": 1}]})");
    EXPECT_EQ(show_internal("Ethernet1/48"), "Cmd not supported for Ethernet1/48, error code operation not supported\n");
    EXPECT_EQ(show_internal("Ethernet1/48"), "Cmd recv failed for Ethernet1/48 with error code timed out waiting for the repl");  // cut to 79
    EXPECT_EQ(show_internal("Ethernet2/48"), "Truncated internal statistics reply: 200 of 788 bytes\n");
    EXPECT_EQ(status, 0);

    // An agent away from its slot's node cannot be reached by slot.
    load(R"({"ethernet": [{"slot": 1, "ports": 1}],
             "extenders": [{"number": 120, "slot": 40, "uplink": "Ethernet1/1", "ports": 1, "node": "0x7702"}]})");
    EXPECT_EQ(show_internal("Ethernet1/1"), "Cmd send failed for Ethernet1/1 with error code no service at the destination\n");
}

TEST_F(InternalPortsTest, TheAgentAnswersOnlyForItsOwnExtenderAndUplinks) {
    const qdsim::Model &m = qdsim::current_model();
    const std::uint32_t uplink101 = index("Ethernet1/48"), uplink102 = index("Ethernet2/48");
    struct Case {
        const char *what;
        std::uint32_t node, vaq, slot, nif, target;
        std::int32_t status;
    } cases[] = {
        {"itself", m.extender(101)->node, 101, 33, uplink101, uplink101, 0},
        {"another extender's number", m.extender(101)->node, 102, 33, uplink101, uplink101, qdsim::kErrNoModule},
        {"another slot", m.extender(101)->node, 101, 34, uplink101, uplink101, qdsim::kErrNoModule},
        {"another extender's uplink", m.extender(101)->node, 101, 33, uplink102, uplink102, qdsim::kErrNoInterface},
        {"two different ports", m.extender(101)->node, 101, 33, uplink101, 0, qdsim::kErrNoInterface},
        {"a line card's agent", m.line_card(1)->node, 101, 33, uplink101, uplink101, qdsim::kErrUnsupported},
    };
    for (const Case &c : cases) {
        lc_stats_req req = lc_request(LC_STATS_CMD_INTERNAL_PORTS, 2, c.target);
        const std::uint32_t vaq = __builtin_bswap32(c.vaq), slot = __builtin_bswap32(c.slot),
                            nif = __builtin_bswap32(c.nif);
        std::memcpy(req.hdr.vaq_id, &vaq, 4);
        std::memcpy(req.hdr.slot, &slot, 4);
        std::memcpy(req.hdr.if_index, &nif, 4);
        const Exchange ex = exchange(handle, c.node, LC_STATS_SAP, LC_STATS_OPC, &req, sizeof req, LC_STATS_RECV_WORD2);
        ASSERT_EQ(ex.recv_rc, 0) << c.what;
        ASSERT_GE(ex.payload.size(), 32u) << c.what;
        EXPECT_EQ(be32(ex.payload, 28), static_cast<std::uint32_t>(c.status)) << c.what;
        EXPECT_EQ(ex.payload[2], c.status == 0 ? 9 : 0) << c.what;
    }
    EXPECT_TRUE(qdsim::take_diagnostics().empty());
}

}  // namespace
}  // namespace simtest

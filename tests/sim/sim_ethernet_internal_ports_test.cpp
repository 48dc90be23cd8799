// SPDX-License-Identifier: MIT
// The internal port statistics of an extender: the daemon names the slot
// and the NIF port behind an uplink (command 22), the extender's agent
// reports its ports (sub-command 23); the library prints both.
#include "core/errors.hpp"
#include "model/model.hpp"
#include "sim_ethernet_fixture.hpp"

namespace simtest {
namespace {

using InternalPortsTest = EthernetSimTest;

TEST_F(InternalPortsTest, EachExtenderReportsItsPortsThroughItsUplink) {
    std::string out = show_internal("Ethernet1/48");
    EXPECT_EQ(status, 0);
    // Written per ASIC, shown per class.
    EXPECT_EQ(lines_starting(out, " eNIF "),
              (std::vector<std::string>{" eNIF      0         0         NIF       1        ",
                                        " eNIF      1         0         NIF       2        ",
                                        " eNIF      2         1         NIF       1        ",
                                        " eNIF      3         1         NIF       2        "}));
    EXPECT_EQ(lines_starting(out, " iHIF ")[2], " iHIF      2         1         HIF       18       ");
    EXPECT_EQ(lines_starting(out, " iNIF ")[1], " iNIF      1         1         NIF       33       ");
    // N2H data of glb_idx 0: 64-bit counters in full; rows without a port 0.
    EXPECT_TRUE(contains(out, "\n 0       4295779641     3510443021     998120443     \n"));
    EXPECT_TRUE(contains(out, "\n 3       0              0              4294980001    \n"));

    // The other extender, one tick later.
    out = show_internal("Ethernet2/48");
    EXPECT_TRUE(contains(out, "\n 0       4295787741     3510449821     998122343     \n")) << out;

    // An extender reached through two uplinks answers through either.
    load(R"({"ethernet": [{"slot": 1, "ports": "1-4"}],
             "extenders": [{"number": 120, "slot": 40, "uplinks": ["Ethernet1/3", "Ethernet1/4"], "ports": 1,
                            "internal_ports": [{"glb_idx": 0, "kind": "ihif", "port_type": 7, "port_id": 5}]}]})");
    for (const char *uplink : {"Ethernet1/3", "Ethernet1/4"})
        EXPECT_EQ(lines_starting(show_internal(uplink), " iHIF "),
                  (std::vector<std::string>{" iHIF      0         0         HIF       5        "}));
}

TEST_F(InternalPortsTest, FailuresNameTheInterface) {
    EXPECT_EQ(show_internal("Ethernet1/1"), "qd_cli_show_internal_stats: failed to find nif port for ifidx 0x1a000000");
    load(R"({"extends": "default", "faults": [
        {"target": "agent", "command": 23, "extender": 101, "kind": "unsupported", "count": 1},
        {"target": "agent", "command": 23, "extender": 101, "kind": "recv_failure", "count": 1},
        {"target": "agent", "command": 23, "interface": "eth2/48", "kind": "short_payload", "bytes": 200}]})");
    EXPECT_EQ(show_internal("Ethernet1/48"),
              "Cmd not supported for Ethernet1/48, error code operation not supported\n");
    EXPECT_EQ(show_internal("Ethernet1/48"),  // cut to 79 characters
              "Cmd recv failed for Ethernet1/48 with error code timed out waiting for the repl");
    EXPECT_EQ(show_internal("Ethernet2/48"), "Truncated internal statistics reply: 200 of 788 bytes\n");
    EXPECT_EQ(status, 0);

    // An extender without ports; one whose agent is away from its slot's node.
    load(R"({"ethernet": [{"slot": 1, "ports": "1-2"}],
             "extenders": [{"number": 120, "slot": 40, "uplink": "Ethernet1/1", "ports": 1},
                           {"number": 121, "slot": 41, "uplink": "Ethernet1/2", "ports": 1, "node": "0x7702"}]})");
    EXPECT_EQ(show_internal("Ethernet1/1"), "No internal statistic information to display!\n");
    EXPECT_EQ(show_internal("Ethernet1/2"),
              "Cmd send failed for Ethernet1/2 with error code no service at the destination\n");
}

TEST_F(InternalPortsTest, TheAgentAnswersOnlyForItsOwnExtenderAndUplinks) {
    const qdsim::Model &m = qdsim::current_model();
    const std::uint32_t own = *qdsim::find_interface("Ethernet1/48"), other = *qdsim::find_interface("Ethernet2/48");
    const std::uint32_t node = m.extender(101)->node;
    struct Case {
        const char *what;
        std::uint32_t node, vaq, slot, nif, target;
        std::int32_t status;
    } cases[] = {
        {"itself", node, 101, 33, own, own, 0},
        {"another extender's number", node, 102, 33, own, own, qdsim::kErrNoModule},
        {"another slot", node, 101, 34, own, own, qdsim::kErrNoModule},
        {"another extender's uplink", node, 101, 33, other, other, qdsim::kErrNoInterface},
        {"two different ports", node, 101, 33, own, 0, qdsim::kErrNoInterface},
        {"a line card's agent", m.line_card(1)->node, 101, 33, own, own, qdsim::kErrUnsupported},
    };
    for (const Case &c : cases) {
        lc_stats_req req = lc_request(LC_STATS_CMD_INTERNAL_PORTS, 2, c.target);
        const std::uint32_t be[3] = {__builtin_bswap32(c.vaq), __builtin_bswap32(c.slot), __builtin_bswap32(c.nif)};
        std::memcpy(req.hdr.vaq_id, &be[0], 4);
        std::memcpy(req.hdr.slot, &be[1], 4);
        std::memcpy(req.hdr.if_index, &be[2], 4);
        const Exchange ex = exchange(handle, c.node, LC_STATS_SAP, LC_STATS_OPC, &req, sizeof req, LC_STATS_RECV_WORD2);
        ASSERT_GE(ex.payload.size(), 32u) << c.what;
        EXPECT_EQ(be32(ex.payload, 28), static_cast<std::uint32_t>(c.status)) << c.what;
        EXPECT_EQ(ex.payload[2], c.status == 0 ? 9 : 0) << c.what;
    }
}

}  // namespace
}  // namespace simtest

// SPDX-License-Identifier: MIT
// Reporting every interface: the four enumeration passes and what each hands
// the platform, the newline after each interface reported with 0, skipped
// passes, and the release of every result array (the double mallocs each
// one, so a missed free shows as a leak under the address sanitizer).
#include <gtest/gtest.h>

#include <string>

#include "double/fixture.hpp"
#include "inventory/enumeration.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

namespace {


constexpr std::uint32_t kEthOk = 0x1a000000u, kEthUnsupported = 0x1a001000u, kAltDown = 0x01002000u;
constexpr std::uint32_t kHif = 0x1f060000u, kOther = 0x05000001u;

struct PassTable {
    std::uint64_t mask;
    const char *lib, *show, *header;
    std::uint32_t selector;
};
const PassTable kPasses[4] = {
    {0x0000000000000001ull, "pmcli", "pm_cli_show_fc_port_config", "pm_cli_show_fc_header", 0},
    {0x4000000000000000ull, "pmcli", "pm_cli_show_fc_port_config", "pm_cli_show_fc_header", 23},
    {0x0000000000800000ull, "pmcli_eth", "pm_cli_show_ethernet_port_config", "pm_cli_show_ethernet_header", 1},
    {0x0000000010000000ull, "pmcli_eth", "pm_cli_show_ethernet_port_config", "pm_cli_show_ethernet_header", 22},
};

class EnumerationTest : public qdtest::PlatformTest {
protected:
    EnumerationTest()
        : PlatformTest({{kEthOk, 26, "Ethernet1/1"}, {kEthUnsupported, 26, "Ethernet1/2"}, {kAltDown, 1, "port-alt3"},
                        {kHif, 31, "Ethernet101/1/1", 6}, {kOther, 5, "mgmt0"}}) {}
    std::string run_all(qdtest::Command &cmd) {
        return qdtest::capture_stdout([&] { EXPECT_EQ(qd_cli_show_queuing_intf_all(cmd.info()), 0); });
    }
};

TEST_F(EnumerationTest, FourPassesInOrderWithTheirArguments) {
    qdtest::Command cmd;
    EXPECT_EQ(run_all(cmd), "");
    ASSERT_EQ(pf().enum_calls.size(), 4u);
    for (unsigned i = 0; i < 4; ++i) {
        SCOPED_TRACE(i);
        const qdtest::EnumCall &call = pf().enum_calls[i];
        EXPECT_EQ(call.lib_name, kPasses[i].lib);
        EXPECT_EQ(call.enum_func, "pm_cli_if_index_enum_func");
        EXPECT_EQ(call.show_func, kPasses[i].show);
        EXPECT_EQ(call.aux_func, "NULL");
        EXPECT_EQ(call.header_func, kPasses[i].header);
        EXPECT_EQ(call.selector, kPasses[i].selector);
        EXPECT_EQ(call.param_type, 2060u);
        EXPECT_EQ(call.param_id, 0x40200002u);
        EXPECT_EQ(call.a, 0u);
        EXPECT_EQ(call.mask_low, static_cast<std::uint32_t>(kPasses[i].mask));
        EXPECT_EQ(call.mask_high, static_cast<std::uint32_t>(kPasses[i].mask >> 32));
    }
    // One range record, its second word cleared after initialisation; one
    // copy of the parameter info with the one argument inserted.
    EXPECT_EQ(pf().range_inits, 1);
    EXPECT_EQ(pf().range_word1_at_populate, 0u);
    EXPECT_EQ(pf().pinfo_copies, 1);
    EXPECT_EQ(pf().arg_inserts, 1);
}

}  // namespace

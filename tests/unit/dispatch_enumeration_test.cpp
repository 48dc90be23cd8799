// Reporting every interface: the four enumeration passes, what each pass
// hands the platform, the newline after each interface reported with 0,
// skipped passes and the release of every result array (a missed free shows
// as a leak under the address sanitizer: the double mallocs each array).
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "double/fixture.hpp"
#include "frame/enumeration.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

namespace {

using qdtest::Bytes;
using qdtest::EnumPass;
using qdtest::Reply;

constexpr std::uint32_t kEthOk = 0x1a000000u;
constexpr std::uint32_t kEthUnsupported = 0x1a001000u;
constexpr std::uint32_t kEthDown = 0x1a002000u;
constexpr std::uint32_t kHif = 0x1f060000u;
constexpr std::uint32_t kOther = 0x05000001u;

Bytes eth_reply(bool unsupported) {
    Bytes b(200, 0);  // header with group_count 1, one qos-group record
    b[3] = 1;
    if (unsupported) {
        b[4] = 0x12;  // 0x41f70012, host order
        b[6] = 0xf7;
        b[7] = 0x41;
    }
    return b;
}

EnumPass pass_of(std::vector<std::uint32_t> indexes) { return EnumPass{0, 0, -1, std::move(indexes)}; }

// One descriptor as the platform must receive it: 224 bytes, zero-filled,
// then the mask (host order), the five names and the selector.
Bytes descriptor(std::uint64_t mask, const char *lib, const char *show, const char *header, std::uint32_t selector) {
    Bytes b(224, 0);
    std::memcpy(&b[0], &mask, 8);
    std::memcpy(&b[8], lib, std::strlen(lib));
    std::memcpy(&b[24], "pm_cli_if_index_enum_func", 25);
    std::memcpy(&b[72], show, std::strlen(show));
    std::memcpy(&b[120], "NULL", 4);
    std::memcpy(&b[168], header, std::strlen(header));
    std::memcpy(&b[216], &selector, 4);
    return b;
}

class EnumerationTest : public qdtest::PlatformTest {
protected:
    void SetUp() override {
        PlatformTest::SetUp();
        pf().add_interface(kEthOk, 26, "Ethernet1/1");
        pf().add_interface(kEthUnsupported, 26, "Ethernet1/2");
        pf().add_interface(kEthDown, 1, "port-alt3");
        pf().add_interface(kHif, 31, "Ethernet101/1/1", 6);
        pf().add_interface(kOther, 5, "mgmt0");
    }

    std::string run_all(cmd_paraminfo *info) {
        return qdtest::capture_stdout([&] { EXPECT_EQ(qd_cli_show_queuing_intf_all(info), 0); });
    }
};

TEST_F(EnumerationTest, DescriptorsAreBuiltByteForByte) {
    const Bytes expected[4] = {
        descriptor(0x0000000000000001ull, "pmcli", "pm_cli_show_fc_port_config", "pm_cli_show_fc_header", 0),
        descriptor(0x4000000000000000ull, "pmcli", "pm_cli_show_fc_port_config", "pm_cli_show_fc_header", 23),
        descriptor(0x0000000000800000ull, "pmcli_eth", "pm_cli_show_ethernet_port_config",
                   "pm_cli_show_ethernet_header", 1),
        descriptor(0x0000000010000000ull, "pmcli_eth", "pm_cli_show_ethernet_port_config",
                   "pm_cli_show_ethernet_header", 22),
    };
    for (unsigned pass = 0; pass < 4; ++pass) {
        SCOPED_TRACE(pass);
        const if_enum_desc desc = qdcli::enumeration_descriptor(pass);
        Bytes actual(sizeof desc);
        std::memcpy(actual.data(), &desc, sizeof desc);
        EXPECT_EQ(actual, expected[pass]);
    }
}

TEST_F(EnumerationTest, FourPassesInOrderWithTheirArguments) {
    qdtest::Command cmd;
    EXPECT_EQ(run_all(cmd.info()), "");
    ASSERT_EQ(pf().enum_calls.size(), 4u);
    struct Expected {
        const char *lib, *show, *header;
        std::uint32_t selector, mask_low, mask_high;
    };
    const Expected expected[4] = {
        {"pmcli", "pm_cli_show_fc_port_config", "pm_cli_show_fc_header", 0, 0x00000001u, 0},
        {"pmcli", "pm_cli_show_fc_port_config", "pm_cli_show_fc_header", 23, 0, 0x40000000u},
        {"pmcli_eth", "pm_cli_show_ethernet_port_config", "pm_cli_show_ethernet_header", 1, 0x00800000u, 0},
        {"pmcli_eth", "pm_cli_show_ethernet_port_config", "pm_cli_show_ethernet_header", 22, 0x10000000u, 0},
    };
    for (unsigned i = 0; i < 4; ++i) {
        SCOPED_TRACE(i);
        const qdtest::EnumCall &call = pf().enum_calls[i];
        EXPECT_EQ(call.lib_name, expected[i].lib);
        EXPECT_EQ(call.enum_func, "pm_cli_if_index_enum_func");
        EXPECT_EQ(call.show_func, expected[i].show);
        EXPECT_EQ(call.aux_func, "NULL");
        EXPECT_EQ(call.header_func, expected[i].header);
        EXPECT_EQ(call.selector, expected[i].selector);
        EXPECT_EQ(call.param_type, 2060u);
        EXPECT_EQ(call.param_id, 0x40200002u);
        EXPECT_EQ(call.a, 0u);
        EXPECT_EQ(call.mask_low, expected[i].mask_low);
        EXPECT_EQ(call.mask_high, expected[i].mask_high);
    }
    // One range record (its second word cleared after initialisation), one
    // copy of the parameter info, one argument inserted into it.
    EXPECT_EQ(pf().range_inits, 1);
    EXPECT_EQ(pf().range_word1_at_populate, 0u);
    EXPECT_EQ(pf().pinfo_copies, 1);
    EXPECT_EQ(pf().arg_inserts, 1);
}

TEST_F(EnumerationTest, ANewlineFollowsEachInterfaceReportedWithZeroOnly) {
    qdtest::Command cmd;
    cmd.handle(0x31).id(7);
    pf().enum_passes.push_back(pass_of({kEthOk, kEthUnsupported}));
    pf().enum_passes.push_back(pass_of({kOther}));
    pf().enum_passes.push_back(pass_of({}));
    pf().enum_passes.push_back(pass_of({kHif, kEthDown, 0}));
    pf().replies.push_back(Reply::bytes(eth_reply(false)));   // kEthOk: 0
    pf().replies.push_back(Reply::bytes(eth_reply(true)));    // kEthUnsupported: 1
    pf().replies.push_back(Reply::send_failure(0x40aa0001));  // kHif: told, 0
    pf().replies.push_back(Reply::recv_failure(0x40aa0002));  // kEthDown: the error code
    const std::string out = run_all(cmd.info());
    // kEthOk, kOther (no report, 0), kHif; then index 0 is refused (result 0).
    EXPECT_EQ(out, "\n\n\nInvalid interface\n\n");
    ASSERT_EQ(pf().sent.size(), 4u);
    EXPECT_EQ(pf().sent[0].payload[0], 17);
    EXPECT_EQ(qdtest::get_host32(pf().sent[0].payload, 4), kEthOk);
    EXPECT_EQ(qdtest::get_host32(pf().sent[1].payload, 4), kEthUnsupported);
    EXPECT_EQ(pf().sent[2].payload[0], 16);
    EXPECT_EQ(pf().sent[2].node, 0x0702u);
    EXPECT_EQ(qdtest::get_host32(pf().sent[3].payload, 4), kEthDown);
    // The reports run with the caller's own record, left as the shell set it.
    for (const auto &sent : pf().sent) EXPECT_EQ(sent.handle, 0x31u);
    EXPECT_EQ(cmd.info()->cmd_id, 7u);
    EXPECT_EQ(pf().printed.rfind("Ethernet1/1 queuing information:\n", 0), 0u) << pf().printed;
}

TEST_F(EnumerationTest, FailedPassesAreSkippedAndTheOthersStillRun) {
    qdtest::Command cmd;
    pf().enum_passes.push_back(EnumPass{-1, 0, -1, std::vector<std::uint32_t>{kEthOk}});
    pf().enum_passes.push_back(EnumPass{0, -5, -1, std::vector<std::uint32_t>{kEthOk}});
    pf().enum_passes.push_back(EnumPass{-2, -1, -1, std::vector<std::uint32_t>{kEthOk}});
    pf().enum_passes.push_back(pass_of({kOther}));
    EXPECT_EQ(run_all(cmd.info()), "\n");
    EXPECT_EQ(pf().enum_calls.size(), 4u);
    EXPECT_TRUE(pf().sent.empty());
}

TEST_F(EnumerationTest, EveryArrayIsReleasedWhateverItsCount) {
    qdtest::Command cmd;
    // Count 0 with an array, a negative count with an array, a count with no
    // array, and a count below the array's length (only the counted ones).
    pf().enum_passes.push_back(EnumPass{0, 0, 0, std::vector<std::uint32_t>{kOther, kOther}});
    pf().enum_passes.push_back(EnumPass{0, 0, -1, std::vector<std::uint32_t>{kEthOk}, -3});
    pf().enum_passes.push_back(EnumPass{0, 0, 2, std::nullopt});
    pf().enum_passes.push_back(EnumPass{0, 0, 1, std::vector<std::uint32_t>{kOther, kEthOk}});
    EXPECT_EQ(run_all(cmd.info()), "\n");
    EXPECT_TRUE(pf().sent.empty());
}

}  // namespace

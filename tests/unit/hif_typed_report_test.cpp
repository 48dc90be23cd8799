// SPDX-License-Identifier: MIT
// The host-interface queuing report through the shell's printer.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <set>

#include "double/fixture.hpp"
#include "hif_reply.hpp"
#include "qdcli/handlers.h"

namespace {

using hiftest::HifReply;
using hiftest::kIfIndex;
using hiftest::kName;
using hiftest::sample_reply;
using qdtest::Reply;

void replace_all(std::string &s, const std::string &from, const std::string &to) {
    for (auto at = s.find(from); at != std::string::npos; at = s.find(from, at + to.size())) s.replace(at, from.size(), to);
}

class HifTypedReport : public qdtest::PlatformTest {
protected:
    void SetUp() override {
        PlatformTest::SetUp();
        pf().add_interface(kIfIndex, 31, kName, hiftest::kSlot);
        pf().tx_queue_drops[kIfIndex] = 8589934595ull;
    }
    qdtest::Command command(bool detailed) {
        qdtest::Command c;
        c.handle(7).id(detailed ? 59 : 18);  // 18: any other command
        return c;
    }
    // Runs the typed report and returns what the printer rendered.
    std::string typed(Reply reply, bool detailed = false, const char *name = kName) {
        pf().replies.push_back(std::move(reply));
        pf().printed.clear();
        pf().delivered.clear();
        pf().printer_calls.clear();
        pf().flushes = 0;
        auto c = command(detailed);
        EXPECT_EQ(qd_cli_show_queuing_hif_xmlized(c.info(), kIfIndex, name), 0);
        EXPECT_EQ(pf().delivered, pf().printed) << "output left undelivered";
        return pf().printed;
    }
    std::string text(Reply reply, bool detailed = false) {
        pf().replies.push_back(std::move(reply));
        auto c = command(detailed);
        return qdtest::capture_stdout([&] { qd_cli_show_queuing_hif(c.info(), kIfIndex, kName); });
    }
    std::vector<qdtest::PrinterArg> args() const {
        std::vector<qdtest::PrinterArg> all;
        for (const auto &call : qdtest::platform().printer_calls) all.insert(all.end(), call.args.begin(), call.args.end());
        return all;
    }
    std::set<std::uint32_t> attrs() const {
        std::set<std::uint32_t> ids;
        for (const auto &arg : args()) ids.insert(arg.attr);
        return ids;
    }
};

TEST_F(HifTypedReport, SameReportAsTextButForTheListedDifferences) {
    for (const std::uint8_t format : {0, 4, 7}) {
        for (const bool detailed : {false, true}) {
            std::string expected = text(Reply::bytes(sample_reply(format).b), detailed);
            // The first line's values as the printer renders them.
            replace_all(expected, "ifidx 0x1f640000", "ifidx 0x526647296");
            // Counters keep their less significant 32 bits (2^32 + 5 shows as 5).
            replace_all(expected, "4294967301     ", "5              ");
            replace_all(expected, "      4294967301|", "               5|");
            // The five-column overflow word is padded twice.
            replace_all(expected, "    Active\n", "      Active\n");
            // The flow-control words are printer arguments too.
            replace_all(expected, "tx 0xff, rx_mask 0xf\n", "tx 0x255, rx_mask 0x15\n");
            EXPECT_EQ(typed(Reply::bytes(sample_reply(format).b), detailed), expected)
                << "format " << int(format) << (detailed ? ", detailed" : "");
        }
    }
}

// Every value carries the ID of its own column: the IDs each format uses are
// exactly the catalogue's, type byte included (0x11 for the two signed
// qos-groups, 0x30 for texts).
TEST_F(HifTypedReport, EachFormatUsesItsAttributeIdsInReportOrder) {
    auto id = [](std::uint32_t n) {
        const bool text = n == 0x77 || n == 0x80 || n == 0x9c || n == 0x9e || n == 0xa0 || n >= 0xa6;
        return (n == 0x7e || n == 0xa5 ? 0x11ff0000u : text ? 0x30ff0000u : 0x14ff0000u) | n;
    };
    auto ids = [&](std::initializer_list<std::pair<std::uint32_t, std::uint32_t>> ranges) {
        std::vector<std::uint32_t> all;
        for (const auto &[first, last] : ranges)
            for (std::uint32_t n = first; n <= last; ++n) all.push_back(id(n));
        return all;
    };
    const struct {
        std::uint8_t format;
        std::vector<std::uint32_t> expected;
    } cases[] = {
        {0, ids({{0x73, 0x85}, {0x8a, 0x8b}, {0x9d, 0xa8}})},
        {4, ids({{0x73, 0x84}, {0x86, 0x87}, {0x8d, 0x97}, {0xa0, 0xa8}})},
        {7, ids({{0x73, 0x85}, {0x8a, 0x8c}, {0x98, 0x9c}, {0xa0, 0xa8}})},
    };
    for (const auto &c : cases) {
        // Qos-group 1 of an input buffer and of a queue without hardware
        // support: both footnotes are printed.
        typed(Reply::bytes(sample_reply(c.format)
                               .limits(1000, 2000)
                               .input_buffer(0, 0, 1, 0x0a, 0x08, 0, 0x08, 100, 200, 3000)
                               .queue(2, 3, 0x0a, 0x08, 0x08, 0x32, 0x00, 1500)
                               .b),
              true);
        std::set<std::uint32_t> used;
        for (const auto &arg : args()) used.insert(arg.attr);
        std::vector<std::uint32_t> numbered(used.begin(), used.end());
        std::sort(numbered.begin(), numbered.end(), [](auto a, auto b) { return (a & 0xffff) < (b & 0xffff); });
        EXPECT_EQ(numbered, c.expected) << "format " << int(c.format);
    }
    for (const auto &arg : args()) {
        if (arg.attr == 0x30ff009cu) {
            EXPECT_EQ(arg.text, "    Active");  // already padded once
        }
    }

    auto r = sample_reply(0);
    r.port(0, 0, 0, 0, 0, 10);  // overflow without a port number
    typed(Reply::bytes(r.b));
    EXPECT_FALSE(attrs().count(0x14ff009fu));
}

TEST_F(HifTypedReport, FailuresAreFlushedAtOnceAndNamesCut) {
    pf().error_texts[0x40bb0001] = "no route";
    const std::string first = "if_slot 4, ifidx 0x526647296\n";
    EXPECT_EQ(typed(Reply::send_failure(0x40bb0001)), first + "Cmd send failed for Ethernet101/1/1 with error code no route\n");
    EXPECT_EQ(pf().flushes, 1u);
    EXPECT_EQ(typed(Reply::recv_failure(0x40bb0001)), first + "Cmd recv failed for Ethernet101/1/1 with error code no route\n");
    EXPECT_EQ(typed(Reply::empty()), first + "mts payload is empty");
    EXPECT_EQ(typed(Reply::bytes(sample_reply(0).status(0x40bb0001).b)),
              first + "Cmd not supported for Ethernet101/1/1, error code no route\n");
    EXPECT_EQ(pf().flushes, 1u);
    auto short_reply = sample_reply(0).b;
    short_reply.resize(600);
    EXPECT_EQ(typed(Reply::bytes(short_reply)), first + "Reply for Ethernet101/1/1 truncated: 600 of 1140 bytes\n");
    EXPECT_EQ(typed(Reply::bytes(sample_reply(0).counts(3, 9).b)),
              first + "Reply for Ethernet101/1/1 damaged: 9 queues, room for 8\n");
    EXPECT_EQ(pf().flushes, 1u);

    // Texts formatted into the 80-byte line keep 79 characters.
    const std::string long_name(60, 'n');
    const std::string send = typed(Reply::send_failure(0x40bb0001), false, long_name.c_str());
    EXPECT_EQ(send, first + ("Cmd send failed for " + long_name + " with error code no route\n").substr(0, 79));
    const std::string report = typed(Reply::bytes(sample_reply(0).b), false, long_name.c_str());
    EXPECT_NE(report.find(first + (long_name + " queuing information:\n").substr(0, 79) + "  Input buffer allocation:"),
              std::string::npos);

    const std::string percent = typed(Reply::bytes(sample_reply(0).b), false, "Eth%s%n");
    EXPECT_NE(percent.find("\nEth%s%n queuing information:\n"), std::string::npos);
}

}  // namespace

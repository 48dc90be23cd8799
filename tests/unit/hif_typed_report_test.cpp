// SPDX-License-Identifier: MIT
// The host-interface queuing report through the shell's printer.
#include <gtest/gtest.h>

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
        c.handle(7).id(detailed ? 59 : 0);
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
    // Index of the first printer call after the first flush.
    std::size_t first_after_flush() const {
        const auto &calls = qdtest::platform().printer_calls;
        std::size_t i = 0;
        while (i < calls.size() && calls[i].flushes_before == 0) ++i;
        return i;
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

TEST_F(HifTypedReport, ArgumentsCarryTheirIdsLengthsAndValues) {
    typed(Reply::bytes(sample_reply(0).limits(1000, 2000).b), true);
    const auto all = args();
    ASSERT_GE(all.size(), 2u);
    EXPECT_EQ(all[0].attr, 0x14ff0073u);
    EXPECT_EQ(all[0].value, qdtest::host32_bytes(4));
    EXPECT_EQ(all[1].attr, 0x14ff0074u);
    EXPECT_EQ(all[1].value, qdtest::host32_bytes(kIfIndex));
    int pause_groups = 0;
    std::vector<std::string> received;
    for (const auto &arg : all) {
        const std::uint32_t type = arg.attr >> 24;
        ASSERT_TRUE(type == 0x14 || type == 0x11 || type == 0x30) << std::hex << arg.attr;
        if (type == 0x30) {
            EXPECT_EQ(arg.length, arg.text.size() + 1) << std::hex << arg.attr;
        } else if (arg.attr == 0x14ff009du) {
            EXPECT_EQ(arg.length, 8u);
            std::uint64_t v = 0;
            std::memcpy(&v, arg.value.data(), 8);
            EXPECT_EQ(v, 8589934595ull);
        } else {
            EXPECT_EQ(arg.length, 4u) << std::hex << arg.attr;
        }
        if (arg.attr == 0x14ff008bu) received.push_back(arg.text);
        if (arg.attr == 0x30ff009eu) {
            EXPECT_EQ(arg.text, "  Active");
        }
        if (arg.attr == 0x14ff009fu) {
            EXPECT_EQ(arg.text, "1");
        }
        if (arg.attr == 0x11ff00a5u) ++pause_groups;
    }
    // Queue id 2 received 2^32 + 5: its argument carries the low word only.
    EXPECT_EQ(received, (std::vector<std::string>{"5", "5", "12345", "7"}));
    EXPECT_EQ(pause_groups, 5);  // cos 0, 1, 2, 4, 6: cos 7 and unmapped cos have none
    const auto ids = attrs();
    for (std::uint32_t id : {0x11ff007eu, 0x14ff0085u, 0x14ff008au, 0x14ff008bu, 0x14ff00a1u, 0x14ff00a2u, 0x14ff00a3u})
        EXPECT_TRUE(ids.count(id)) << std::hex << id;

    typed(Reply::bytes(sample_reply(0).b), false);
    for (std::uint32_t id : {0x14ff00a1u, 0x14ff00a2u, 0x14ff00a3u}) EXPECT_FALSE(attrs().count(id)) << std::hex << id;
}

TEST_F(HifTypedReport, EachFormatMakesItsOwnStatisticsArguments) {
    struct Case {
        std::uint8_t format;
        std::vector<std::uint32_t> present, absent;
    };
    const std::vector<std::uint32_t> rows = {0x14ff008d, 0x14ff008e, 0x14ff008f, 0x14ff0090, 0x14ff0091, 0x14ff0092,
                                             0x14ff0093, 0x14ff0094, 0x14ff0095, 0x14ff0096, 0x14ff0097};
    const std::vector<std::uint32_t> five = {0x14ff0098, 0x14ff0099, 0x14ff009a, 0x14ff009b, 0x30ff009c};
    const std::vector<std::uint32_t> two = {0x14ff009d, 0x30ff009e, 0x14ff009f};
    auto join = [](std::vector<std::uint32_t> a, const std::vector<std::uint32_t> &b) {
        a.insert(a.end(), b.begin(), b.end());
        return a;
    };
    const Case cases[] = {
        {0, join({0x14ff0085, 0x14ff008a, 0x14ff008b}, two), join(join(rows, five), {0x14ff0086, 0x14ff008c})},
        {4, join(rows, {0x14ff0086, 0x14ff0087}), join(join(five, two), {0x14ff0085, 0x14ff008a, 0x14ff008c})},
        {7, join({0x14ff0085, 0x14ff008a, 0x14ff008b, 0x14ff008c}, five), join(rows, two)},
    };
    for (const Case &c : cases) {
        typed(Reply::bytes(sample_reply(c.format).limits(1000, 2000).b), true);
        const auto ids = attrs();
        for (std::uint32_t id : c.present) EXPECT_TRUE(ids.count(id)) << int(c.format) << " " << std::hex << id;
        for (std::uint32_t id : c.absent) EXPECT_FALSE(ids.count(id)) << int(c.format) << " " << std::hex << id;
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

TEST_F(HifTypedReport, FlushAfterQueueStatisticsAndAtTheEnd) {
    auto empty = HifReply();
    empty.counts(0, 0).format(7);
    const struct {
        HifReply reply;
        std::string first_after;
    } cases[] = {
        {sample_reply(0), "\n  Port Statistics:\n"},
        {sample_reply(7), "\n  Port Statistics:\n"},
        {sample_reply(4), "\n  Priority-flow-control enabled: %s\n"},
        {empty, "\n  Port Statistics:\n"},  // a table without rows
    };
    for (const auto &c : cases) {
        typed(Reply::bytes(c.reply.b));
        const auto &calls = pf().printer_calls;
        const std::size_t i = first_after_flush();
        ASSERT_LT(i, calls.size());
        EXPECT_EQ(calls[i].format, c.first_after);
        EXPECT_EQ(calls.back().flushes_before, 1u);
        EXPECT_EQ(pf().flushes, 2u);
    }
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

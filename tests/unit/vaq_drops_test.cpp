// SPDX-License-Identifier: MIT
// Extender no-credit drop report: the walk over extenders 100 to 199, the
// reply body of sub-command 27, every line and typed value, and one flush.
// Replies are literal bytes: a 32-byte header (not read) and the body.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "double/fixture.hpp"
#include "qdcli/handlers.h"

namespace {

using qdtest::Bytes;
using qdtest::Reply;

const std::string kNote = "\n Note: Maximum drop counter value is 15 with no roll-over";

// Header bytes 0 to 31 (their content is not read), then the body from
// offset 32 on.
Bytes reply_body(std::initializer_list<std::uint8_t> body) {
    Bytes payload(32 + body.size(), 0xee);
    std::copy(body.begin(), body.end(), payload.begin() + 32);
    return payload;
}

class VaqDropsTest : public qdtest::PlatformTest {
protected:
    // Extender `vaq` answers through the module in `slot`, whose agent is at `node`.
    void extender(std::uint32_t vaq, std::uint8_t slot, std::uint32_t node) {
        pf().slot_of_sat[vaq - 1] = slot;
        pf().module_node[slot] = node;
    }
    std::int32_t run() {
        qdtest::Command command;
        command.handle(0x42);
        return process_qd_cli_show_vaq_drops_all(command.info());
    }
    // Everything was printed before the one flush at the end.
    void expect_single_flush_at_end() {
        EXPECT_EQ(pf().flushes, 1u);
        for (const qdtest::PrinterCall &call : pf().printer_calls) EXPECT_EQ(call.flushes_before, 0u) << call.format;
        EXPECT_EQ(pf().delivered, pf().printed);
    }
};

TEST_F(VaqDropsTest, NoExtenderPrintsOnlyTheNote) {
    pf().module_node[0] = 0x999;  // a module no lookup leads to
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(pf().delivered, kNote);
    expect_single_flush_at_end();
    EXPECT_TRUE(pf().module_queries.empty());
    EXPECT_TRUE(pf().sent.empty());
    // Without the shell's record: refused, nothing printed.
    EXPECT_EQ(process_qd_cli_show_vaq_drops_all(nullptr), 1);
    EXPECT_EQ(pf().flushes, 1u);
}

TEST_F(VaqDropsTest, OneExtenderOneAsicWithTypedValues) {
    extender(100, 5, 0x0612);
    // A = 1; SS counts 2, -, -, -; drops of ASIC 0 at 37, 38.
    pf().replies.push_back(Reply::bytes(reply_body({1, 2, 0, 0, 0, 3, 15})));
    EXPECT_EQ(run(), 0);

    ASSERT_EQ(pf().sent.size(), 1u);
    const qdtest::SentRequest &sent = pf().sent[0];
    EXPECT_EQ(sent.handle, 0x42u);
    EXPECT_EQ(sent.node, 0x0612u);  // the module's node, not one made from the slot
    EXPECT_EQ(sent.sap, 620u);
    EXPECT_EQ(sent.opcode, 111638u);
    Bytes request(40, 0);
    request[0] = 27;
    request[2] = 1;
    request[24] = 1;
    EXPECT_EQ(sent.payload, request);
    EXPECT_EQ(sent.recv_opts.word[2], 5u);
    EXPECT_EQ(pf().module_queries, (std::vector<std::uint32_t>{5}));

    EXPECT_EQ(pf().delivered,
              "\nNo. of Asics present in vaq 100 is = 1"
              "\nStats for Asic 0"
              "\nNo. of SS present in vaq 100 for asic 0 is = 2"
              "\nNo-credit drop count on 'no-drop class' for SS 0 is = 3"
              "\nNo-credit drop count on 'no-drop class' for SS 1 is = 15" +
                  kNote);
    expect_single_flush_at_end();

    std::vector<std::pair<std::uint32_t, std::uint32_t>> values;
    for (const qdtest::PrinterCall &call : pf().printer_calls)
        for (const qdtest::PrinterArg &arg : call.args) {
            EXPECT_EQ(arg.length, 4u);
            values.emplace_back(arg.attr, qdtest::get_host32(arg.value, 0));
        }
    EXPECT_EQ(values, (std::vector<std::pair<std::uint32_t, std::uint32_t>>{
                          {0x14ff0001, 100}, {0x14ff0002, 1}, {0x14ff0003, 100}, {0x14ff0004, 0}, {0x14ff0005, 2},
                          {0x14ff0006, 0}, {0x14ff0007, 3}, {0x14ff0006, 1}, {0x14ff0007, 15}}));
    // The "%d" lines are formatted text, not typed values.
    EXPECT_EQ(pf().printer_calls[1].args.size(), 0u);
}

TEST_F(VaqDropsTest, AsicsReadTheirOwnRowOfTwelveDropCounts) {
    extender(100, 1, 0x0202);
    extender(101, 2, 0x0302);
    // Extender 100: A = 3, SS counts 2, 0, 1. Rows at 37, 49 (unsupported),
    // 61. Byte 39 would be SS 0 of ASIC 2 if rows were packed.
    pf().replies.push_back(Reply::bytes(reply_body({
        3, 2, 0, 1, 0,                      // 32 to 36
        1, 2, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9,  // 37: ASIC 0
        9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9,  // 49: ASIC 1
        4,                                  // 61: ASIC 2, SS 0
    })));
    // Extender 101: A = 2, SS 1 each; SS 0 of ASIC 1 at offset 49.
    pf().replies.push_back(Reply::bytes(reply_body({
        2, 1, 1, 0, 0,
        6, 13, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
        7,
    })));
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(pf().delivered,
              "\nNo. of Asics present in vaq 100 is = 3"
              "\nStats for Asic 0"
              "\nNo. of SS present in vaq 100 for asic 0 is = 2"
              "\nNo-credit drop count on 'no-drop class' for SS 0 is = 1"
              "\nNo-credit drop count on 'no-drop class' for SS 1 is = 2"
              "\nStats for Asic 1"
              "\nCommand not supported on vaq 100 for asic_id 1"
              "\nStats for Asic 2"
              "\nNo. of SS present in vaq 100 for asic 2 is = 1"
              "\nNo-credit drop count on 'no-drop class' for SS 0 is = 4"
              "\nNo. of Asics present in vaq 101 is = 2"
              "\nStats for Asic 0"
              "\nNo. of SS present in vaq 101 for asic 0 is = 1"
              "\nNo-credit drop count on 'no-drop class' for SS 0 is = 6"
              "\nStats for Asic 1"
              "\nNo. of SS present in vaq 101 for asic 1 is = 1"
              "\nNo-credit drop count on 'no-drop class' for SS 0 is = 7" +
                  kNote);
    expect_single_flush_at_end();
}

TEST_F(VaqDropsTest, FullLayoutReadsUpToTheLastByte) {
    extender(199, 7, 0x0802);
    // Four ASICs of 12 SS each: the payload ends at offset 84, the last
    // drop count (ASIC 3, SS 11), right before an inaccessible page.
    Bytes body = {4, 12, 12, 12, 12};
    for (int i = 0; i < 48; ++i) body.push_back(static_cast<std::uint8_t>(i % 16));
    Bytes payload(32, 0);
    payload.insert(payload.end(), body.begin(), body.end());
    ASSERT_EQ(payload.size(), 85u);
    pf().replies.push_back(Reply::bytes(payload));
    EXPECT_EQ(run(), 0);
    const std::string &out = pf().delivered;
    EXPECT_EQ(out.find("\nNo. of Asics present in vaq 199 is = 4"), 0u);
    EXPECT_NE(out.find("\nNo. of SS present in vaq 199 for asic 3 is = 12"), std::string::npos);
    const std::string last = "\nNo-credit drop count on 'no-drop class' for SS 11 is = 15" + kNote;
    ASSERT_GE(out.size(), last.size());
    EXPECT_EQ(out.substr(out.size() - last.size()), last);
    EXPECT_EQ(pf().printer_calls.size(), 1u + 4 * (2 + 12) + 1);
}

TEST_F(VaqDropsTest, FailuresAndAbsentExtendersNeverStopTheWalk) {
    extender(100, 1, 0x0202);
    extender(101, 2, 0x0302);
    extender(102, 3, 0x0402);
    extender(103, 4, 0x0502);
    extender(104, 5, 0x0602);
    // 105 has no slot: absent, though a module sits in the slot 104 used
    // and in slot 0; neither may be asked for it.
    pf().module_node[0] = 0x0102;
    pf().slot_of_sat[106 - 1] = 9;  // 106 has a slot but no module
    extender(107, 6, 0x0702);
    pf().error_texts[0x40aa0001] = std::string(100, 'x');  // cut to the 80-byte buffer
    pf().error_texts[0x40aa0002] = "100% lost %s";
    pf().replies.push_back(Reply::send_failure(0x40aa0001));
    pf().replies.push_back(Reply::recv_failure(0x40aa0002));
    pf().replies.push_back(Reply::empty());
    pf().replies.push_back(Reply::bytes({}));  // a payload of no bytes is empty too
    pf().replies.push_back(Reply::bytes(reply_body({0})));
    pf().replies.push_back(Reply::bytes(reply_body({1, 0, 0, 0, 0})));
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(pf().delivered,
              "\n Cmd recv failed for vaq 100 with error code " + std::string(33, 'x') +
              "\n Cmd recv failed for vaq 101 with error code 100% lost %s\n"
              "mts payload is empty"
              "mts payload is empty"
              "\nCommand not supported on vaq 104"
              "\nNo. of Asics present in vaq 107 is = 1"
              "\nStats for Asic 0"
              "\nCommand not supported on vaq 107 for asic_id 0" +
                  kNote);
    expect_single_flush_at_end();
    EXPECT_EQ(pf().module_queries, (std::vector<std::uint32_t>{1, 2, 3, 4, 5, 9, 6}));
    ASSERT_EQ(pf().sent.size(), 6u);
    EXPECT_EQ(pf().sent[5].node, 0x0702u);
}

TEST_F(VaqDropsTest, RepliesThatDoNotFitTheLayoutAreRefused) {
    for (std::uint32_t vaq = 100; vaq <= 106; ++vaq)
        extender(vaq, static_cast<std::uint8_t>(vaq - 90), 0x1000 + vaq);
    // 100: five ASICs cannot fit the four SS-count bytes.
    pf().replies.push_back(Reply::bytes(reply_body({5, 1, 1, 1, 1, 1})));
    // 101: 13 SS cannot fit a row of twelve; ASIC 1 is still reported.
    pf().replies.push_back(Reply::bytes(reply_body({2, 13, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 8})));
    // 102: three SS announced, two drop counts present (needs 40 bytes).
    pf().replies.push_back(Reply::bytes(reply_body({1, 3, 0, 0, 0, 1, 2})));
    // 103: the header alone.
    pf().replies.push_back(Reply::bytes(Bytes(32, 0)));
    // 104: two ASICs but only one SS-count byte.
    pf().replies.push_back(Reply::bytes(reply_body({2, 1})));
    // 105: ASIC 1's row is cut short; nothing of the reply is printed.
    pf().replies.push_back(Reply::bytes(reply_body({2, 1, 2, 0, 0, 5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 6})));
    // 106: an unsupported ASIC needs no row.
    pf().replies.push_back(Reply::bytes(reply_body({2, 1, 0, 0, 0, 5})));
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(pf().delivered,
              "\nInvalid reply from vaq 100: 5 asics, at most 4"
              "\nNo. of Asics present in vaq 101 is = 2"
              "\nStats for Asic 0"
              "\nInvalid reply from vaq 101 for asic_id 0: 13 SS, at most 12"
              "\nStats for Asic 1"
              "\nNo. of SS present in vaq 101 for asic 1 is = 1"
              "\nNo-credit drop count on 'no-drop class' for SS 0 is = 8"
              "\nTruncated reply from vaq 102: 39 bytes, 40 needed"
              "\nTruncated reply from vaq 103: 32 bytes, 33 needed"
              "\nTruncated reply from vaq 104: 34 bytes, 35 needed"
              "\nTruncated reply from vaq 105: 50 bytes, 51 needed"
              "\nNo. of Asics present in vaq 106 is = 2"
              "\nStats for Asic 0"
              "\nNo. of SS present in vaq 106 for asic 0 is = 1"
              "\nNo-credit drop count on 'no-drop class' for SS 0 is = 5"
              "\nStats for Asic 1"
              "\nCommand not supported on vaq 106 for asic_id 1" +
                  kNote);
    expect_single_flush_at_end();
}

}  // namespace

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

TEST_F(VaqDropsTest, RepliesThatDoNotFitTheLayoutAreRefused) {
    for (std::uint32_t vaq = 100; vaq <= 107; ++vaq)
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
    // 107: cut inside the row of ASIC 0, the one with the most SS (12 of
    // them, 11 counts present); ASIC 1 has none.
    pf().replies.push_back(Reply::bytes(reply_body({2, 12, 0, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11})));
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
              "\nCommand not supported on vaq 106 for asic_id 1"
              "\nTruncated reply from vaq 107: 48 bytes, 49 needed" +
                  kNote);
    expect_single_flush_at_end();
}

}  // namespace

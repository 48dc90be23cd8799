// SPDX-License-Identifier: MIT
// Multicast WRR queue CoS map: the values configure and remove send (what
// the daemon answers and the show form are the recorded contract's).
#include <gtest/gtest.h>

#include <string>

#include "double/fixture.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

namespace {

using qdtest::Bytes;
using qdtest::Command;
using qdtest::Reply;
using qdtest::capture_stdout;

// A daemon request: code, three zero bytes, if_index and arg in host order.
Bytes daemon_request(std::uint8_t code, std::uint32_t if_index, std::uint32_t arg) {
    Bytes b = {code, 0, 0, 0};
    const Bytes i = qdtest::host32_bytes(if_index), a = qdtest::host32_bytes(arg);
    b.insert(b.end(), i.begin(), i.end());
    b.insert(b.end(), a.begin(), a.end());
    return b;
}

class CosMapTest : public qdtest::PlatformTest {
protected:
    std::int32_t status = -12345;

    // A fresh platform and an empty platform-type cache, within one test.
    void fresh() {
        qdtest::reset();
        qdcli::platform_type_cache_reset();
    }

    std::string run(std::int32_t (*handler)(cmd_paraminfo *), Command &command) {
        return capture_stdout([&] { status = handler(command.info()); });
    }
};

TEST_F(CosMapTest, MapValueRules) {
    struct Case {
        const char *what;
        std::vector<std::pair<std::uint32_t, std::uint8_t>> args;  // (param_type, value)
        std::uint32_t expected;
    };
    const Case cases[] = {
        {"no arguments", {}, 0},
        {"other kinds ignored", {{18, 7}, {2, 1}, {21, 3}}, 0},
        {"CoS 33 is bit 1", {{PARAM_TYPE_COS, 33}}, 0x2},
        {"CoS 31 is bit 31", {{PARAM_TYPE_COS, 31}}, 0x80000000u},
        {"CoS twice, one bit", {{PARAM_TYPE_COS, 4}, {PARAM_TYPE_COS, 4}}, 0x10},
        {"queues OR-ed, not replaced", {{PARAM_TYPE_QUEUE, 1}, {PARAM_TYPE_QUEUE, 2}}, 0x300},
        {"order does not matter", {{PARAM_TYPE_COS, 0}, {PARAM_TYPE_QUEUE, 3}, {PARAM_TYPE_COS, 7}}, 0x381},
    };
    for (const Case &c : cases) {
        for (auto handler : {qd_cli_conf_wrrqueue_cosmap, qd_cli_no_wrrqueue_cosmap}) {
            SCOPED_TRACE(c.what);
            fresh();
            pf().platform_type = 1;
            pf().replies.push_back(Reply::bytes({0}));
            Command command;
            for (const auto &[type, value] : c.args) command.arg_u8(type, value);
            run(handler, command);
            EXPECT_EQ(status, 0);
            ASSERT_EQ(pf().sent.size(), 1u);
            const std::uint8_t code = handler == qd_cli_conf_wrrqueue_cosmap ? 19 : 21;
            EXPECT_EQ(pf().sent[0].payload, daemon_request(code, 0, c.expected));
        }
    }
}

TEST_F(CosMapTest, NegatedConfigureIsHandedToTheRemoveAndReturnsZero) {
    pf().platform_type = 1;
    pf().replies.push_back(Reply::send_failure(0x40aa0007));
    pf().error_texts[0x40aa0007] = "no route to service";
    Command command;
    command.no_form().arg_u8(PARAM_TYPE_QUEUE, 1).arg_u8(PARAM_TYPE_COS, 6);
    EXPECT_EQ(run(qd_cli_conf_wrrqueue_cosmap, command), "no route to service\n");
    EXPECT_EQ(status, 0);  // the remove's failure is not passed on
    ASSERT_EQ(pf().sent.size(), 1u);
    EXPECT_EQ(pf().sent[0].payload, daemon_request(21, 0, 0x140));
}

// Without the shell's record the configuration and diagnostic handlers
// refuse with 1 and do nothing at all.
}  // namespace

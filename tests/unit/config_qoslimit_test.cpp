// SPDX-License-Identifier: MIT
// Help, range and default callbacks of the queue-limit parameter.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

#include "double/fixture.hpp"
#include "qdcli/handlers.h"

namespace {

// The large-queue cards, written out independently of the library's table.
class QosLimitTest : public qdtest::PlatformTest {
protected:
    // {lowest, highest} for the card the platform reports.
    std::pair<std::uint32_t, std::uint32_t> range_for(std::uint16_t card) {
        pf().card_id = card;
        std::uint32_t range[2] = {0xdeadbeef, 0xdeadbeef};
        EXPECT_EQ(qdcli_interface_qoslimit_range_get(nullptr, nullptr, range), 1);
        return {range[0], range[1]};
    }
    std::uint32_t default_for(std::uint32_t card) {
        pf().sw_card_id = card;
        std::uint32_t record[2] = {0x5a5a5a5a, 0xdeadbeef};
        EXPECT_EQ(qdcli_pdcli_cmd_qd_def_get(nullptr, nullptr, record), 1);
        EXPECT_EQ(record[0], 0x5a5a5a5au);  // the shell's word is left alone
        return record[1];
    }
};

TEST_F(QosLimitTest, ListedAndUnlistedCards) {
    EXPECT_EQ(range_for(176), std::make_pair(24u, 3582u));
    EXPECT_EQ(range_for(337), std::make_pair(24u, 3582u));
    EXPECT_EQ(range_for(184), std::make_pair(7u, 3582u));
    EXPECT_EQ(default_for(176), 0u);
    EXPECT_EQ(default_for(337), 0u);
    EXPECT_EQ(default_for(184), 1u);
}

}  // namespace

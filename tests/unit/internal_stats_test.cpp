// SPDX-License-Identifier: MIT
// qd_cli_show_internal_stats: the daemon's NIF-port answer (command 22),
// the line-card request for the extender's port records (sub-command 23),
// and the seven tables it allocates.
#include <gtest/gtest.h>

#include <memory_resource>
#include <new>
#include <string>
#include <vector>

#include "double/fixture.hpp"
#include "internal_stats/internal_stats.hpp"
#include "qdcli/handlers.h"

namespace {

using qdtest::Bytes;
using qdtest::put_be16;
using qdtest::put_be32;
using qdtest::Reply;

constexpr std::uint32_t kIf = 0x1a001000u;

// Daemon answer: slot 3, NIF port 0x1a002000.
const Bytes kNifOfSlot3 = {0x00, 0x03, 0x1a, 0x00, 0x20, 0x00};

// Line-card reply: header with `count` and `status`, then `records` port
// records (eNIF ports 0, 1, ... with ctrl_rcvd = 100 + index).
Bytes lc_reply(std::uint8_t count, std::size_t records, std::uint32_t status = 0) {
    Bytes b(32 + 84 * records);
    b[2] = count;
    put_be32(b, 28, status);
    for (std::size_t i = 0; i < records; ++i) {
        put_be16(b, 32 + 84 * i, static_cast<std::uint16_t>(i));  // glb_idx
        put_be16(b, 32 + 84 * i + 6, 2);                          // NIF, nif_class 0: eNIF
        put_be32(b, 32 + 84 * i + 12, static_cast<std::uint32_t>(100 + i));
    }
    return b;
}

class InternalStatsTest : public qdtest::PlatformTest {
protected:
    void SetUp() override {
        PlatformTest::SetUp();
        pf().sat_of_slot[3] = 7;
        command.handle(0x77);
    }
    std::int32_t run(const char *name = "Ethernet1/1") {
        return qd_cli_show_internal_stats(command.info(), kIf, name);
    }
    void fresh() {
        qdtest::reset();
        pf().sat_of_slot[3] = 7;
    }
    qdtest::Command command;
};

// Fails the allocation numbered `fail_at` (0 = the first), and keeps count
// of what is allocated and still held.
class FailingResource : public std::pmr::memory_resource {
public:
    explicit FailingResource(int fail_at) : fail_at_(fail_at) {}
    std::vector<std::size_t> sizes;
    std::size_t held = 0;

private:
    void *do_allocate(std::size_t bytes, std::size_t align) override {
        if (static_cast<int>(sizes.size()) == fail_at_) throw std::bad_alloc();
        sizes.push_back(bytes);
        held += bytes;
        return std::pmr::new_delete_resource()->allocate(bytes, align);
    }
    void do_deallocate(void *p, std::size_t bytes, std::size_t align) override {
        held -= bytes;
        std::pmr::new_delete_resource()->deallocate(p, bytes, align);
    }
    bool do_is_equal(const std::pmr::memory_resource &other) const noexcept override { return this == &other; }
    int fail_at_;
};

TEST_F(InternalStatsTest, SevenTablesAreAllocatedInOrderAndFreedOnEveryPath) {
    // Three eNIF and one iHIF port: n = 3 rows, N = 4 records.
    Bytes reply = lc_reply(4, 4);
    put_be16(reply, 32 + 84 * 3, 0);
    put_be16(reply, 32 + 84 * 3 + 6, 1);
    {
        pf().replies.push_back(Reply::bytes(kNifOfSlot3));
        pf().replies.push_back(Reply::bytes(reply));
        FailingResource never(-1);
        EXPECT_EQ(qdcli::internal_stats::show_internal_stats(command.info(), kIf, "Ethernet1/1", &never), 0);
        EXPECT_EQ(never.sizes, (std::vector<std::size_t>{3 * 3 * 8, 3 * 3 * 8, 3 * 5 * 8, 3 * 3 * 8, 3 * 3 * 8,
                                                         3 * 4 * 8, 4 * sizeof(qd_port_map_entry)}));
        EXPECT_EQ(never.held, 0u);
        EXPECT_NE(pf().printed.find(" port map \n"), std::string::npos);
    }
    for (int fail_at = 0; fail_at < 7; ++fail_at) {
        fresh();
        pf().replies.push_back(Reply::bytes(kNifOfSlot3));
        pf().replies.push_back(Reply::bytes(reply));
        FailingResource failing(fail_at);
        EXPECT_EQ(qdcli::internal_stats::show_internal_stats(command.info(), kIf, "Ethernet1/1", &failing), 0);
        EXPECT_EQ(pf().printed, "Failed to allocate memory!") << fail_at;
        EXPECT_EQ(pf().flushes, 1u);
        EXPECT_EQ(failing.sizes.size(), static_cast<std::size_t>(fail_at));
        EXPECT_EQ(failing.held, 0u) << fail_at;
        for (const std::string &error : qdtest::ledger_errors()) ADD_FAILURE() << fail_at << ": " << error;
    }
}

TEST_F(InternalStatsTest, ARecordPastItsClassCountHasNoPlace) {
    // Three eNIF ports (0-2), one iHIF, one iNIF (0): an iHIF numbered 1 is
    // as placeless as one numbered 5 and leaves the iNIF's place alone.
    const auto printed = [&](std::uint16_t ihif_glb_idx) {
        fresh();
        Bytes reply = lc_reply(5, 5);
        put_be16(reply, 32 + 84 * 3, ihif_glb_idx);
        put_be16(reply, 32 + 84 * 3 + 6, 1);  // HIF: iHIF
        put_be16(reply, 32 + 84 * 4, 0);
        put_be16(reply, 32 + 84 * 4 + 10, 1);  // nif_class 1: iNIF
        pf().replies.push_back(Reply::bytes(kNifOfSlot3));
        pf().replies.push_back(Reply::bytes(reply));
        EXPECT_EQ(run(), 0);
        return pf().printed;
    };
    const std::string placeless = printed(5);
    EXPECT_NE(placeless.find(" iNIF "), std::string::npos);
    EXPECT_EQ(printed(1), placeless);
}

}  // namespace

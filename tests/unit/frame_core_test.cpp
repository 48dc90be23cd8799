// SPDX-License-Identifier: MIT
// The handler frame: payload reader, bounded strings and the platform-type
// cache.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <string>

#include "double/fixture.hpp"
#include "output/bounded_string.hpp"
#include "inventory/platform_query.hpp"
#include "frame/reader.hpp"

namespace {

using qdcli::PayloadReader;

constexpr std::size_t kHuge = std::numeric_limits<std::size_t>::max();

// ---------------------------------------------------------------------------
// PayloadReader: bytes past the given length are never read.

TEST(FrameReader, ReadsUpToTheEndAndNotOneBytePast) {
    // The reader sees 6 of the 10 bytes; the rest must stay invisible.
    const std::uint8_t bytes[10] = {0x12, 0x34, 0x56, 0x78, 0x9a, 0xbc, 0xde, 0xf0, 0x11, 0x22};
    const PayloadReader r(bytes, 6);
    EXPECT_EQ(r.u8(5), 0xbc);
    EXPECT_EQ(r.u8(6), 0);
    EXPECT_EQ(r.be16(4), 0x9abc);
    EXPECT_EQ(r.be16(5), 0);
    EXPECT_EQ(r.be32(2), 0x56789abcu);
    EXPECT_EQ(r.be32(3), 0u);
    std::uint32_t host = 0;
    std::memcpy(&host, bytes + 2, 4);
    EXPECT_EQ(r.host32(2), host);
    EXPECT_EQ(r.host32(3), 0u);
    EXPECT_EQ(r.host16(5), 0);
    EXPECT_EQ(r.be64_low_first(0), 0u);  // needs 8 bytes, 6 present
    for (std::size_t offset : {kHuge, kHuge - 1, kHuge - 3, kHuge - 7}) {
        EXPECT_EQ(r.u8(offset), 0);
        EXPECT_EQ(r.be16(offset), 0);
        EXPECT_EQ(r.be32(offset), 0u);
        EXPECT_EQ(r.host32(offset), 0u);
        EXPECT_EQ(r.be64_low_first(offset), 0u);
        EXPECT_EQ(r.host64_low_first(offset), 0u);
    }
}

TEST(FrameReader, SixtyFourBitCountersLowWordFirst) {
    const std::uint8_t be[9] = {0xff, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x02};
    EXPECT_EQ(PayloadReader(be, 9).be64_low_first(1), 0x0000000200000001ull);
    std::uint8_t host[8];
    const std::uint32_t low = 0x89abcdefu, high = 0x01234567u;
    std::memcpy(host, &low, 4);
    std::memcpy(host + 4, &high, 4);
    EXPECT_EQ(PayloadReader(host, 8).host64_low_first(0), 0x0123456789abcdefull);
}

TEST(FrameReader, SubViewsAndNullData) {
    const std::uint8_t bytes[4] = {1, 2, 3, 4};
    const PayloadReader r(bytes, 4);
    EXPECT_EQ(r.from(1).length(), 3u);
    EXPECT_EQ(r.from(1).be16(1), 0x0304);
    EXPECT_TRUE(r.from(4).empty());
    EXPECT_TRUE(r.from(kHuge).empty());
    const PayloadReader none(nullptr, 100);  // a length without data is no payload
    EXPECT_TRUE(none.empty());
    EXPECT_FALSE(none.covers(0, 1));
    EXPECT_EQ(none.be32(0), 0u);
}

// ---------------------------------------------------------------------------
// Bounded strings: whatever does not fit is cut, never the whole text lost.

TEST(FrameBoundedString, WhatDoesNotFitIsCutAndTheDestinationStaysTerminated) {
    char dest[16];
    EXPECT_EQ(qdcli::strncpy_s(dest, sizeof dest, "clear ", 100), 0);
    EXPECT_EQ(qdcli::strncat_s(dest, sizeof dest, "counters", 3), 0);  // count limits the source
    EXPECT_STREQ(dest, "clear cou");
    EXPECT_EQ(qdcli::strncpy_s(dest, sizeof dest, "0123456789abcdefXYZ", 100), 1);
    EXPECT_STREQ(dest, "0123456789abcde");
    EXPECT_EQ(qdcli::strnlen_s(dest, sizeof dest), 15u);
    EXPECT_EQ(qdcli::strnlen_s(dest, 4), 4u);
    EXPECT_EQ(qdcli::strnlen_s(nullptr, 4), 0u);
    char small[8] = "abc";
    EXPECT_EQ(qdcli::strncat_s(small, sizeof small, "defghijk", 100), 1);
    EXPECT_STREQ(small, "abcdefg");
    EXPECT_EQ(qdcli::strncat_s(small, sizeof small, "x", 1), 1);  // already full
    EXPECT_STREQ(small, "abcdefg");
    char unterminated[6];
    std::memset(unterminated, 'z', sizeof unterminated);
    EXPECT_EQ(qdcli::strncat_s(unterminated, sizeof unterminated, "a", 1), 1);
    EXPECT_EQ(std::string(unterminated), "zzzzz");
    EXPECT_EQ(qdcli::strncpy_s(nullptr, 4, "a", 1), 1);
    EXPECT_EQ(qdcli::strncat_s(unterminated, 0, "a", 1), 1);
}

// ---------------------------------------------------------------------------
// Platform-type cache: the only state kept between commands.

class FramePlatformType : public qdtest::PlatformTest {};

TEST_F(FramePlatformType, FailedQueryIsNotCached) {
    pf().platform_type_rc = 0x4001;
    EXPECT_EQ(qd_cli_platform_type_get(), -1);
    EXPECT_EQ(qd_cli_platform_type_get(), -1);
    pf().platform_type_rc = 0;
    pf().platform_type = 2;
    EXPECT_EQ(qd_cli_platform_type_get(), 2);
    EXPECT_EQ(qd_cli_platform_type_get(), 2);
    EXPECT_EQ(pf().platform_type_queries, 3);
}

}  // namespace

// SPDX-License-Identifier: MIT
// The shell printer: rendering, flushing.
#include <set>

#include "sim_fixture.hpp"

namespace simtest {
namespace {

class PrinterTest : public SimTest {
protected:
    cmd_prt_arg u32(std::uint32_t attr, const std::uint32_t &value) {
        cmd_prt_arg a;
        cmd_prt_arg_make(&a, attr, &value, 4);
        return a;
    }
    cmd_prt_arg u64(std::uint32_t attr, const std::uint64_t &value) {
        cmd_prt_arg a;
        cmd_prt_arg_make(&a, attr, &value, 8);
        return a;
    }
    cmd_prt_arg text(std::uint32_t attr, const char *value) {
        cmd_prt_arg a;
        cmd_prt_arg_make(&a, attr, value, static_cast<std::uint32_t>(std::strlen(value) + 1));
        return a;
    }
};

TEST_F(PrinterTest, ConversionsTakeOneTypedArgumentEachWithWidthAndAlignment) {
    const std::uint32_t group = 3, bandwidth = 50;
    const std::uint64_t drops = 5000000000ull;
    const cmd_prt_arg g = u32(0x14ff003b, group), s = text(0x30ff003c, "WRR     "), b = u32(0x14ff003d, bandwidth);
    const cmd_prt_arg d = u64(0x15ff003e, drops);
    cmd_prt(output_handle(), "        %s       %s     %5s\n", &g, &s, &b);
    cmd_prt(output_handle(), "[%-6s|%.3s] 100%%\n", &g, &d);
    EXPECT_EQ(output, "");  // nothing goes out before the flush
    cmd_prt_send(output_handle());
    EXPECT_EQ(output, "        3       WRR             50\n[3     |500] 100%\n");
}

TEST_F(PrinterTest, UnknownAttributesRenderByTheirTypeByte) {
    const std::int32_t minus = -1;
    const std::uint8_t byte = 200;
    cmd_prt_arg a, b;
    cmd_prt_arg_make(&a, 0x11ff7001, &minus, 4);
    cmd_prt_arg_make(&b, 0x02ff7002, &byte, 1);
    cmd_prt(output_handle(), "%s %s\n", &a, &b);
    cmd_prt_send(output_handle());
    EXPECT_EQ(output, "-1 200\n");
}

TEST_F(PrinterTest, ArgumentsThatDoNotFitTheirAttributeAreDiagnosed) {
    const std::uint64_t wide = 1;
    cmd_prt_arg a;
    cmd_prt_arg_make(&a, 0x14ff003d, &wide, 8);  // a 32-bit value given 8 bytes
    cmd_prt_arg_make(&a, 0x30ff003a, "abc", 3);  // length without the NUL
    cmd_prt(output_handle(), "%d\n");           // not a conversion of this printer
    cmd_prt(handle, "x");                        // the transport handle, not the output handle
    const auto d = qdsim::take_diagnostics();
    EXPECT_TRUE(diagnosed(d, "oper_bandwidth) is a u32 of 4 bytes, given 8"));
    EXPECT_TRUE(diagnosed(d, "if_name) is a text"));
    EXPECT_TRUE(diagnosed(d, "a conversion other than %s"));
    EXPECT_TRUE(diagnosed(d, "not an output handle"));
}

TEST_F(PrinterTest, OutputNeverFlushedIsDeliveredWhenTheCommandEnds) {
    cmd_prt(output_handle(), "left behind\n");
    finish();
    EXPECT_EQ(output, "left behind\n");
    EXPECT_TRUE(diagnosed(qdsim::take_diagnostics(), "never flushed"));
}

}  // namespace
}  // namespace simtest

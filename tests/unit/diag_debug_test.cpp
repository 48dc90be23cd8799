// SPDX-License-Identifier: MIT
// Memory statistics and debug dumps of the daemon.
#include <gtest/gtest.h>

#include <map>
#include <string>

#include "double/fixture.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

namespace {

using qdtest::Bytes;
using qdtest::Command;
using qdtest::capture_stdout;

// A 16-byte debug record: four host-order words.
Bytes words(std::uint32_t w0, std::uint32_t w1, std::uint32_t w2, std::uint32_t w3) {
    Bytes b;
    for (std::uint32_t w : {w0, w1, w2, w3}) {
        const Bytes h = qdtest::host32_bytes(w);
        b.insert(b.end(), h.begin(), h.end());
    }
    return b;
}

class DebugDumpTest : public qdtest::PlatformTest {
protected:
    std::int32_t status = -12345;

    std::string run(std::int32_t (*handler)(cmd_paraminfo *), Command &command) {
        return capture_stdout([&] { status = handler(command.info()); });
    }
    void expect_one_dump(const Bytes &request, const char *function, std::uint32_t handle) {
        ASSERT_EQ(pf().debug_dumps.size(), 1u);
        const auto &dump = pf().debug_dumps[0];
        EXPECT_EQ(dump.handle, handle);
        EXPECT_EQ(dump.node, 0xfe000000u);
        EXPECT_EQ(dump.sap, 612u);
        EXPECT_EQ(dump.request, request);
        EXPECT_EQ(dump.func, function);
        // What the handler printed went out before the dump (a pipe keeps
        // stdout fully buffered).
        EXPECT_EQ(dump.stdout_pending, 0u);
    }
};

// The debug views, written out independently of the library's table:
// cmd_id -> selector, where the argument goes, and the line printed before
// the dump.
enum class Arg { none, offset8 };
struct Row {
    std::uint32_t selector;
    Arg arg;
    const char *line;
};
const std::map<std::uint32_t, Row> kRows = {
    {2, {1, Arg::none, ""}},
    {3, {2, Arg::none, ""}},
    {4, {3, Arg::none, "qd_cli_debug_show_all(156): sup\n"}},
    {5, {4, Arg::none, "qd_cli_debug_show_all(162): fibre-channel\n"}},
    {6, {5, Arg::none, "qd_cli_debug_show_all(168): ethernet\n"}},
    {8, {6, Arg::none, ""}},
    {9, {7, Arg::none, ""}},
    {10, {8, Arg::none, "qd_cli_debug_show_all(184): counters\n"}},
    {11, {9, Arg::none, ""}},
    {12, {10, Arg::none, ""}},
    {13, {11, Arg::none, ""}},
    {14, {12, Arg::none, ""}},
    {15, {13, Arg::none, ""}},
    {21, {14, Arg::none, ""}},
    {22, {15, Arg::none, ""}},
    {23, {16, Arg::offset8, ""}},
    {24, {17, Arg::offset8, ""}},
    {25, {18, Arg::offset8, ""}},  // a non-interface argument
    {28, {20, Arg::offset8, ""}},
    {29, {21, Arg::offset8, ""}},
    {30, {19, Arg::offset8, ""}},
    {43, {22, Arg::none, "qd_cli_debug_show_all(264): Clearing qd info\n"}},
};

TEST_F(DebugDumpTest, EveryCommandIdentifierOfTheTable) {
    for (std::uint32_t id = 0; id <= 70; ++id) {
        SCOPED_TRACE("cmd_id " + std::to_string(id));
        qdtest::reset();
        Command command;
        command.handle(0x99).id(id).arg_u32(5, 0x00012345u);
        const std::string out = run(qd_cli_debug_show_all, command);
        const auto row = kRows.find(id);
        if (row == kRows.end()) {
            EXPECT_EQ(out, "error: Unexpected number of parameters");
            EXPECT_EQ(status, 1);
            EXPECT_TRUE(pf().debug_dumps.empty());
            continue;
        }
        EXPECT_EQ(out, row->second.line);
        EXPECT_EQ(status, 0);
        const std::uint32_t at8 = row->second.arg == Arg::offset8 ? 0x00012345u : 0;
        expect_one_dump(words(row->second.selector << 24, 0, at8, 0), "qd_debug_eng_print_all", 0x99);
    }
}

TEST_F(DebugDumpTest, NegatedFormSendsZeroOnlyForIdentifierTwentyNine) {
    Command negated;
    negated.id(29).no_form().arg_u32(5, 0x777);
    run(qd_cli_debug_show_all, negated);
    EXPECT_EQ(status, 0);
    expect_one_dump(words(21u << 24, 0, 0, 0), "qd_debug_eng_print_all", 0);

    qdtest::reset();
    Command other;
    other.id(23).no_form().arg_u32(5, 77);
    run(qd_cli_debug_show_all, other);
    expect_one_dump(words(16u << 24, 0, 77, 0), "qd_debug_eng_print_all", 0);
}

}  // namespace

// SPDX-License-Identifier: MIT
// Port classes, table placement and the printed internal statistics report
// (qd_count_ports, qd_process_internal_stats). Port records are written
// field by field at the offsets of the 84-byte record layout.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "double/fixture.hpp"
#include "qdcli/handlers.h"

namespace {

using qdtest::Bytes;
using qdtest::put_be16;
using qdtest::put_be64_low_first;

constexpr std::size_t kRec = 84;
constexpr std::uint16_t kNif = 2, kHif = 1;

struct Port {
    std::uint16_t glb_idx = 0, asic_no = 0, port_type = kNif, port_id = 0, nif_class = 0;
    std::uint64_t ctrl_rcvd = 0, ctrl_sent = 0, data_rcvd = 0, data_sent = 0, rx_drop = 0, rx_error = 0, tx_drop = 0;
};

Port enif(std::uint16_t g) { return Port{g, 0, kNif, 0, 0}; }
Port ihif(std::uint16_t g) { return Port{g, 0, kHif, 0, 0}; }
Port inif(std::uint16_t g) { return Port{g, 0, kNif, 0, 1}; }

// A port whose counters tell its class (base 0x100, 0x200, 0x300) and field.
Port counted(Port p, std::uint64_t base) {
    p.ctrl_rcvd = base + 1, p.ctrl_sent = base + 2, p.data_rcvd = base + 3, p.data_sent = base + 4;
    p.rx_drop = base + 5, p.rx_error = base + 7, p.tx_drop = base + 8;
    return p;
}

Bytes records(const std::vector<Port> &ports) {
    Bytes b(kRec * ports.size(), 0xcc);  // reserved bytes hold junk
    for (std::size_t i = 0; i < ports.size(); ++i) {
        const Port &p = ports[i];
        const std::size_t at = kRec * i;
        put_be16(b, at + 0, p.glb_idx);
        put_be16(b, at + 4, p.asic_no);
        put_be16(b, at + 6, p.port_type);
        put_be16(b, at + 8, p.port_id);
        put_be16(b, at + 10, p.nif_class);
        put_be64_low_first(b, at + 12, p.ctrl_rcvd);
        put_be64_low_first(b, at + 20, p.ctrl_sent);
        put_be64_low_first(b, at + 28, p.data_rcvd);
        put_be64_low_first(b, at + 36, p.data_sent);
        put_be64_low_first(b, at + 44, p.rx_drop);
        put_be64_low_first(b, at + 60, p.rx_error);
        put_be64_low_first(b, at + 68, p.tx_drop);
    }
    return b;
}

struct Counts {
    std::uint32_t enif = 0, ihif = 0, inif = 0;
    bool operator==(const Counts &) const = default;
};

Counts count_ports(const Bytes &recs, std::uint32_t n, Counts start = {}) {
    qd_count_ports(recs.data(), n, &start.enif, &start.ihif, &start.inif);
    return start;
}

using Row = std::vector<std::uint64_t>;

// The caller's seven tables, filled with junk before the call so that a
// cell the report does not clear shows up.
struct Tables {
    std::uint32_t rows;
    std::vector<std::uint64_t> n2h_ctrl, n2h_data, n2h_drop, h2n_ctrl, h2n_data, h2n_drop;
    std::vector<qd_port_map_entry> port_map;

    Tables(std::uint32_t n, std::uint32_t count)
        : rows(n), n2h_ctrl(n * 3, ~0ull), n2h_data(n * 3, ~0ull), n2h_drop(n * 5, ~0ull), h2n_ctrl(n * 3, ~0ull),
          h2n_data(n * 3, ~0ull), h2n_drop(n * 4, ~0ull), port_map(count, qd_port_map_entry{7, 7, 7, 7, 7}) {}

    void process(const Bytes &recs, std::uint32_t count, Counts c) {
        qd_process_internal_stats(recs.data(), count, c.enif, c.ihif, c.inif, rows, n2h_ctrl.data(),
                                  n2h_data.data(), n2h_drop.data(), h2n_ctrl.data(), h2n_data.data(),
                                  h2n_drop.data(), port_map.data(), 0x5eed);
    }
    static Row row(const std::vector<std::uint64_t> &table, unsigned width, unsigned g) {
        return Row(table.begin() + g * width, table.begin() + (g + 1) * width);
    }
};

std::string cell(const std::string &value, std::size_t width) {
    return " " + value + std::string(width > value.size() ? width - value.size() : 0, ' ');
}

// The printed port-map lines, each "label glb asic type id".
std::vector<std::string> map_lines(const std::string &printed) {
    const std::string heading = " glb_type  glb_idx   asic_no   port_type port_id  \n";
    const std::string rule = "+---------+---------+---------+---------+---------+\n";
    std::vector<std::string> lines;
    std::size_t at = printed.find(heading);
    if (at == std::string::npos) return lines;
    at += heading.size() + rule.size();
    for (std::size_t end; (end = printed.find('\n', at)) != std::string::npos && printed.compare(at, rule.size(), rule) != 0;
         at = end + 1)
        lines.push_back(printed.substr(at, end - at));
    return lines;
}

class InternalStatsReportTest : public qdtest::PlatformTest {};

// ---- Port classes ----

// ---- The printed report ----

// ---- Placement ----

TEST_F(InternalStatsReportTest, EachClassFillsItsOwnColumnsOfEveryTable) {
    const Bytes recs = records({counted(inif(0), 0x300), counted(ihif(0), 0x200), counted(enif(0), 0x100)});
    Tables t(1, 3);
    t.process(recs, 3, {1, 1, 1});
    EXPECT_EQ(Tables::row(t.n2h_ctrl, 3, 0), (Row{0x101, 0x202, 0x301}));
    EXPECT_EQ(Tables::row(t.n2h_data, 3, 0), (Row{0x103, 0x204, 0x303}));
    EXPECT_EQ(Tables::row(t.n2h_drop, 5, 0), (Row{0x105, 0x107, 0x208, 0x305, 0x307}));
    EXPECT_EQ(Tables::row(t.h2n_ctrl, 3, 0), (Row{0x302, 0x201, 0x102}));
    EXPECT_EQ(Tables::row(t.h2n_data, 3, 0), (Row{0x304, 0x203, 0x104}));
    EXPECT_EQ(Tables::row(t.h2n_drop, 4, 0), (Row{0x308, 0x205, 0x207, 0x108}));
    // The printed rows show the same cells.
    EXPECT_NE(pf().printed.find(cell("0", 3) + cell(std::to_string(0x105), 14) + cell(std::to_string(0x107), 14) +
                                cell(std::to_string(0x208), 14) + cell(std::to_string(0x305), 14) +
                                cell(std::to_string(0x307), 14) + "\n"),
              std::string::npos);
}

TEST_F(InternalStatsReportTest, PortMapListsEnifThenIhifThenInifInGlbIdxOrder) {
    Port i0 = inif(0), e1 = enif(1), e0 = enif(0), h0 = ihif(0);
    i0.asic_no = 1, i0.port_id = 40, e1.port_id = 11, e0.port_id = 10, h0.port_id = 20, h0.asic_no = 0x0102;
    const Bytes recs = records({i0, e1, e0, h0});
    const Counts counts = count_ports(recs, 4);
    ASSERT_EQ(counts, (Counts{2, 1, 1}));
    Tables t(2, 4);
    t.process(recs, 4, counts);
    const std::vector<std::uint16_t> kinds = {t.port_map[0].port_kind, t.port_map[1].port_kind,
                                              t.port_map[2].port_kind, t.port_map[3].port_kind};
    EXPECT_EQ(kinds, (std::vector<std::uint16_t>{0, 0, 1, 2}));
    EXPECT_EQ(t.port_map[1].glb_idx, 1);
    EXPECT_EQ(t.port_map[2].asic_no, 0x0102);
    EXPECT_EQ(map_lines(pf().printed),
              (std::vector<std::string>{
                  " eNIF     " + cell("0", 9) + cell("0", 9) + cell("NIF", 9) + cell("10", 9),
                  " eNIF     " + cell("1", 9) + cell("0", 9) + cell("NIF", 9) + cell("11", 9),
                  " iHIF     " + cell("0", 9) + cell("258", 9) + cell("HIF", 9) + cell("20", 9),
                  " iNIF     " + cell("0", 9) + cell("1", 9) + cell("NIF", 9) + cell("40", 9),
              }));
    // The counter tables have n = 2 rows; the rows at or above a class's
    // own count read 0.
    EXPECT_EQ(Tables::row(t.n2h_ctrl, 3, 1), (Row{0, 0, 0}));
}

TEST_F(InternalStatsReportTest, RepeatsOverwriteAndRecordsWithoutAPlaceAreLeftOut) {
    // The second eNIF 0 overwrites the first; iHIF 1 (one iHIF) would land
    // on the position of iNIF 0; eNIF 9 has no row at all. eNIF position 2
    // and row 2 have no port behind them.
    Port first = counted(enif(0), 0x100), second = counted(enif(0), 0x900);
    first.port_id = 1, second.port_id = 2;
    const Bytes recs = records({first, counted(enif(1), 0x200), second, counted(ihif(1), 0x300),
                                counted(inif(0), 0x400), counted(enif(9), 0x500)});
    Tables t(4, 6);
    t.process(recs, 6, {4, 1, 1});
    EXPECT_EQ(Tables::row(t.n2h_ctrl, 3, 0), (Row{0x901, 0, 0x401}));
    EXPECT_EQ(Tables::row(t.h2n_drop, 4, 0), (Row{0x408, 0, 0, 0x908}));
    EXPECT_EQ(Tables::row(t.n2h_ctrl, 3, 1), (Row{0x201, 0, 0}));
    EXPECT_EQ(Tables::row(t.n2h_ctrl, 3, 2), (Row{0, 0, 0}));
    EXPECT_EQ(t.port_map[0].port_id, 2);
    EXPECT_EQ(t.port_map[5].port_kind, 2);
    const auto lines = map_lines(pf().printed);
    ASSERT_EQ(lines.size(), 3u);  // eNIF 0, eNIF 1, iNIF 0
    EXPECT_EQ(lines[0], " eNIF     " + cell("0", 9) + cell("0", 9) + cell("NIF", 9) + cell("2", 9));
    EXPECT_EQ(lines[2].substr(0, 10), " iNIF     ");
}

}  // namespace

// SPDX-License-Identifier: MIT
// qd_process_internal_stats: places the port records of an extender into
// the N2H and H2N counter tables and the port map, then prints them.
#include <cstdio>

#include "catalogue/attribute_ids.hpp"
#include "frame/guard.hpp"
#include "internal_stats/port_records.hpp"
#include "output/observe.hpp"
#include "output/printer.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

namespace qdcli::internal_stats {
namespace {

// Columns of each counter table, in print order.
namespace col {
enum N2hCtrl { n2h_enif_rcvd, n2h_ihif_sent, n2h_inif_rcvd, n2h_width };
enum N2hDrop { n2h_enif_rx_drop, n2h_enif_rx_error, n2h_ihif_tx_drop, n2h_inif_rx_drop, n2h_inif_rx_error, n2h_drop_width };
enum H2nCtrl { h2n_inif_sent, h2n_ihif_rcvd, h2n_enif_sent, h2n_width };
enum H2nDrop { h2n_inif_tx_drop, h2n_ihif_rx_drop, h2n_ihif_rx_error, h2n_enif_tx_drop, h2n_drop_width };
}  // namespace col

// A port-map position that no record filled keeps this kind and is left
// out of the printed map: there is no port to show for it.
constexpr std::uint16_t kNoPort = 0xffff;

struct Tables {
    std::uint32_t rows;
    std::uint64_t *n2h_ctrl, *n2h_data, *n2h_drop, *h2n_ctrl, *h2n_data, *h2n_drop;
    qd_port_map_entry *port_map;
    std::uint32_t map_size;

    std::uint64_t *cell(std::uint64_t *table, unsigned width, std::uint32_t row, unsigned column) const {
        return table + std::size_t{row} * width + column;
    }

    // Cells with no port behind them read 0.
    void clear() const {
        for (std::size_t i = 0; i < std::size_t{rows} * col::n2h_width; ++i)
            n2h_ctrl[i] = n2h_data[i] = h2n_ctrl[i] = h2n_data[i] = 0;
        for (std::size_t i = 0; i < std::size_t{rows} * col::n2h_drop_width; ++i) n2h_drop[i] = 0;
        for (std::size_t i = 0; i < std::size_t{rows} * col::h2n_drop_width; ++i) h2n_drop[i] = 0;
        for (std::uint32_t i = 0; i < map_size; ++i) port_map[i] = qd_port_map_entry{kNoPort, 0, 0, 0, 0};
    }
};

struct ClassCounts {
    std::uint32_t enif, ihif, inif;

    std::uint32_t of(PortClass c) const {
        return c == PortClass::enif ? enif : c == PortClass::ihif ? ihif : inif;
    }
    // Port-map position of the first port of a class: eNIF, then iHIF, then iNIF.
    std::uint64_t map_base(PortClass c) const {
        return c == PortClass::enif ? 0 : c == PortClass::ihif ? std::uint64_t{enif} : std::uint64_t{enif} + ihif;
    }
};

// Writes one record into row glb_idx of the tables and into its port-map
// position. A later record of the same class and index overwrites an
// earlier one. Records whose index is not below their class's count have
// no row or position and are left out.
void place(const PortRecord &p, const ClassCounts &counts, const Tables &t) {
    const PortClass cls = p.port_class();
    const std::uint32_t g = p.glb_idx;
    const std::uint64_t position = counts.map_base(cls) + g;
    if (g >= counts.of(cls) || g >= t.rows || position >= t.map_size) return;

    using namespace col;
    switch (cls) {
    case PortClass::enif:
        *t.cell(t.n2h_ctrl, n2h_width, g, n2h_enif_rcvd) = p.ctrl_rcvd;
        *t.cell(t.n2h_data, n2h_width, g, n2h_enif_rcvd) = p.data_rcvd;
        *t.cell(t.n2h_drop, n2h_drop_width, g, n2h_enif_rx_drop) = p.rx_drop;
        *t.cell(t.n2h_drop, n2h_drop_width, g, n2h_enif_rx_error) = p.rx_error;
        *t.cell(t.h2n_ctrl, h2n_width, g, h2n_enif_sent) = p.ctrl_sent;
        *t.cell(t.h2n_data, h2n_width, g, h2n_enif_sent) = p.data_sent;
        *t.cell(t.h2n_drop, h2n_drop_width, g, h2n_enif_tx_drop) = p.tx_drop;
        break;
    case PortClass::ihif:
        *t.cell(t.n2h_ctrl, n2h_width, g, n2h_ihif_sent) = p.ctrl_sent;
        *t.cell(t.n2h_data, n2h_width, g, n2h_ihif_sent) = p.data_sent;
        *t.cell(t.n2h_drop, n2h_drop_width, g, n2h_ihif_tx_drop) = p.tx_drop;
        *t.cell(t.h2n_ctrl, h2n_width, g, h2n_ihif_rcvd) = p.ctrl_rcvd;
        *t.cell(t.h2n_data, h2n_width, g, h2n_ihif_rcvd) = p.data_rcvd;
        *t.cell(t.h2n_drop, h2n_drop_width, g, h2n_ihif_rx_drop) = p.rx_drop;
        *t.cell(t.h2n_drop, h2n_drop_width, g, h2n_ihif_rx_error) = p.rx_error;
        break;
    case PortClass::inif:
        *t.cell(t.n2h_ctrl, n2h_width, g, n2h_inif_rcvd) = p.ctrl_rcvd;
        *t.cell(t.n2h_data, n2h_width, g, n2h_inif_rcvd) = p.data_rcvd;
        *t.cell(t.n2h_drop, n2h_drop_width, g, n2h_inif_rx_drop) = p.rx_drop;
        *t.cell(t.n2h_drop, n2h_drop_width, g, n2h_inif_rx_error) = p.rx_error;
        *t.cell(t.h2n_ctrl, h2n_width, g, h2n_inif_sent) = p.ctrl_sent;
        *t.cell(t.h2n_data, h2n_width, g, h2n_inif_sent) = p.data_sent;
        *t.cell(t.h2n_drop, h2n_drop_width, g, h2n_inif_tx_drop) = p.tx_drop;
        break;
    }
    t.port_map[position] = qd_port_map_entry{static_cast<std::uint16_t>(cls), p.glb_idx, p.asic_no, p.port_type,
                                              p.port_id};
}

// ---- Printing ----

constexpr const char *kDirectionRule = "+-------------+\n";
constexpr const char *kNarrowRule = "+-------+--------------+--------------+--------------+\n";
constexpr const char *kN2hHeading = " glb_idx eNIF Rcvd      iHIF Sent      iNIF Rcvd      \n";
constexpr const char *kH2nHeading = " glb_idx iNIF Sent      iHIF Rcvd      eNIF Sent      \n";
constexpr const char *kN2hDropRule =
    "+---+--------------+--------------+--------------+--------------+--------------+\n";
constexpr const char *kN2hDropHeading =
    "|glb|eNIF                         |iHIF          |iNIF                         |\n"
    "|idx|Rx drop        Rx error      |Tx drop       |Rx drop        Rx error      |\n";
constexpr const char *kH2nDropRule = "+---+--------------+--------------+--------------+--------------+\n";
constexpr const char *kH2nDropHeading =
    "|glb|iNIF          |iHIF                         |eNIF          |\n"
    "|idx|Tx drop       |Rx drop        Rx error      |Tx drop       |\n";
constexpr const char *kMapTitleRule = "+--------+\n";
constexpr const char *kMapRule = "+---------+---------+---------+---------+---------+\n";
constexpr const char *kMapHeading = " glb_type  glb_idx   asic_no   port_type port_id  \n";

// How one counter table prints: its row-index attribute and format, and
// the attribute of its first column (the others follow in order).
struct TableLayout {
    const char *table;  // the table's name, for the observer's rows
    const std::uint64_t *cells;
    unsigned width;
    std::uint32_t row_attr;
    const char *row_format;
    std::uint32_t first_counter_attr;
};

void print_rows(Printer &out, std::uint32_t rows, const TableLayout &t) {
    for (std::uint32_t g = 0; g < rows; ++g) {
        const observe::Row row(t.table);
        out.line(t.row_format, u32(t.row_attr, g));
        for (unsigned c = 0; c < t.width; ++c)
            out.line(" %-14s", u64(t.first_counter_attr + c, t.cells[std::size_t{g} * t.width + c]));
        out.line("\n");
    }
}

// A ctrl or data table: title, framed heading, rows, closing rule.
void print_pkts_table(Printer &out, const char *title, const char *heading, std::uint32_t rows,
                      const TableLayout &t) {
    out.line(title);
    out.line(kNarrowRule);
    out.line(heading);
    out.line(kNarrowRule);
    print_rows(out, rows, t);
    out.line(kNarrowRule);
}

void print_drop_table(Printer &out, const char *rule, const char *heading, std::uint32_t rows, const TableLayout &t) {
    out.line(" dropped pkts     \n");
    out.line(rule);
    out.line(heading);
    out.line(rule);
    print_rows(out, rows, t);
    out.line(rule);
    out.line("\n");
}

void print_direction(Printer &out, const char *title) {
    out.line(kDirectionRule);
    out.line(title);
    out.line(kDirectionRule);
}

// Told to the observer, not printed as a value: the port class of a row of
// the port map ("eNIF", "iHIF", "iNIF"), printed as the row's first text.

const char *kind_label(std::uint16_t kind) {
    switch (kind) {
    case static_cast<std::uint16_t>(PortClass::enif): return " eNIF     ";
    case static_cast<std::uint16_t>(PortClass::ihif): return " iHIF     ";
    case static_cast<std::uint16_t>(PortClass::inif): return " iNIF     ";
    default: return nullptr;
    }
}

void print_port_map(Printer &out, const Tables &t) {
    out.line(kMapTitleRule);
    out.line(" port map \n");
    out.line(kMapTitleRule);
    out.line(kMapRule);
    out.line(kMapHeading);
    out.line(kMapRule);
    for (std::uint32_t i = 0; i < t.map_size; ++i) {
        const qd_port_map_entry &e = t.port_map[i];
        const char *label = kind_label(e.port_kind);
        if (label == nullptr) continue;
        char type_text[5];
        std::snprintf(type_text, sizeof type_text, "%s", e.port_type == PORT_TYPE_NIF ? "NIF" : "HIF");
        const observe::Row row("port_map");
        observe::text(attr::port_glb_type, label);
        out.literal(label);
        out.line(" %-9s", u32(attr::port_glb_idx, e.glb_idx));
        out.line(" %-9s", u32(attr::port_asic_no, e.asic_no));
        out.line(" %-9s", text(attr::port_type, type_text));
        out.line(" %-9s", u32(attr::port_id, e.port_id));
        out.line("\n");
    }
    out.line(kMapRule);
}

// One direction: its title, the headings of its tables, and its ctrl, data
// and drop tables.
struct DirectionLayout {
    const char *title, *heading, *drop_rule, *drop_heading;
    TableLayout ctrl, data, drop;
};

void print_report(Printer &out, const Tables &t) {
    using namespace col;
    const DirectionLayout directions[] = {
        {" N2H direction \n", kN2hHeading, kN2hDropRule, kN2hDropHeading,
         {"n2h_ctrl", t.n2h_ctrl, n2h_width, attr::n2h_ctrl_glb_idx, " %-7s", attr::n2h_ctrl_enif_rcvd},
         {"n2h_data", t.n2h_data, n2h_width, attr::n2h_data_glb_idx, " %-7s", attr::n2h_data_enif_rcvd},
         {"n2h_drop", t.n2h_drop, n2h_drop_width, attr::n2h_drop_glb_idx, " %-3s", attr::n2h_drop_enif_rx_drop}},
        {" H2N direction \n", kH2nHeading, kH2nDropRule, kH2nDropHeading,
         {"h2n_ctrl", t.h2n_ctrl, h2n_width, attr::h2n_ctrl_glb_idx, " %-7s", attr::h2n_ctrl_inif_sent},
         {"h2n_data", t.h2n_data, h2n_width, attr::h2n_data_glb_idx, " %-7s", attr::h2n_data_inif_sent},
         {"h2n_drop", t.h2n_drop, h2n_drop_width, attr::h2n_drop_glb_idx, " %-3s", attr::h2n_drop_inif_tx_drop}},
    };
    out.line("\n");
    for (const DirectionLayout &d : directions) {
        print_direction(out, d.title);
        print_pkts_table(out, " ctrl pkts     \n", d.heading, t.rows, d.ctrl);
        print_pkts_table(out, " data pkts     \n", d.heading, t.rows, d.data);
        print_drop_table(out, d.drop_rule, d.drop_heading, t.rows, d.drop);
    }
    print_port_map(out, t);
    out.flush();
}

}  // namespace
}  // namespace qdcli::internal_stats

// The tables are cleared before placement, so that a cell or a port-map
// position with no port behind it is 0 (and such a position is not printed).
// A call without records or tables has nothing to place: it returns as for
// a count of 0.
extern "C" void qd_process_internal_stats(const uint8_t *records, uint32_t count, uint32_t enif, uint32_t ihif,
                                          uint32_t inif, uint32_t rows, uint64_t *n2h_ctrl, uint64_t *n2h_data,
                                          uint64_t *n2h_drop, uint64_t *h2n_ctrl, uint64_t *h2n_data,
                                          uint64_t *h2n_drop, qd_port_map_entry *port_map, uint32_t handle) {
    using namespace qdcli::internal_stats;
    qdcli::guarded_void([&] {
        if (count == 0 || records == nullptr || !n2h_ctrl || !n2h_data || !n2h_drop || !h2n_ctrl || !h2n_data ||
            !h2n_drop || !port_map)
            return;
        const Tables tables{rows, n2h_ctrl, n2h_data, n2h_drop, h2n_ctrl, h2n_data, h2n_drop, port_map, count};
        tables.clear();
        const ClassCounts counts{enif, ihif, inif};
        const qdcli::PayloadReader body = port_records(records, count);
        for (std::uint32_t i = 0; i < count; ++i) place(decode_port_record(body, i), counts, tables);

        qdcli::Printer out(handle);
        print_report(out, tables);
    });
}

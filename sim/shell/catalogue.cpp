// SPDX-License-Identifier: MIT
#include "shell/catalogue.hpp"

#include <algorithm>
#include <cstdio>

namespace qdsim::shell {
namespace {

using K = AttrKind;

// In ID-number order within each report.
const std::vector<AttributeInfo> kCatalogue = {
    // Extender no-credit drop report.
    {0x14ff0001, "vaq", K::u32},
    {0x14ff0002, "asic_count", K::u32},
    {0x14ff0003, "asic_vaq", K::u32},
    {0x14ff0004, "asic", K::u32},
    {0x14ff0005, "ss_count", K::u32},
    {0x14ff0006, "ss", K::u32},
    {0x14ff0007, "no_credit_drops", K::u32},

    // Request attribute of the show-queuing command.
    {0x0cff0039, "if_index", K::if_index},

    // Ethernet interface queuing report.
    {0x30ff003a, "if_name", K::text},
    {0x14ff003b, "tx_qos_group", K::u32},
    {0x30ff003c, "sched_type", K::text},
    {0x14ff003d, "oper_bandwidth", K::u32},
    {0x15ff003e, "mcast_tail_drops", K::u64},
    {0x14ff003f, "rx_qos_group", K::u32},
    {0x14ff0040, "q_size", K::u32},
    {0x14ff0041, "q_size_40g", K::u32},
    {0x14ff0042, "mtu_hw", K::u32},
    {0x14ff0043, "mtu_configured", K::u32},
    {0x30ff0044, "drop_type", K::text},
    {0x14ff0045, "xon", K::u32},
    {0x14ff0046, "xoff", K::u32},
    {0x14ff0047, "rx_port_pkts", K::u32},
    {0x14ff0048, "ucast_to_xbar", K::u32},
    {0x14ff0049, "mcast_to_xbar", K::u32},
    {0x14ff004a, "ucast_from_xbar", K::u32},
    {0x14ff004b, "tx_port_pkts", K::u32},
    {0x14ff004c, "ingress_discards", K::u32},
    {0x30ff004d, "pfc_rx_status", K::text},
    {0x30ff004e, "pfc_tx_status", K::text},
    {0x14ff004f, "mcast_from_xbar_total", K::u32},
    {0x14ff0050, "vaq_drop_class_buf", K::u32},
    {0x14ff0051, "vaq_uplink_rx_drops", K::u32},
    {0x14ff0052, "vaq_uplink_err_drops", K::u32},
    {0x14ff0053, "vaq_uplink_mcast_drops", K::u32},

    // Internal port statistics report.
    {0x14ff0054, "n2h_ctrl_glb_idx", K::u32},
    {0x14ff0055, "n2h_ctrl_enif_rcvd", K::u64},
    {0x14ff0056, "n2h_ctrl_ihif_sent", K::u64},
    {0x14ff0057, "n2h_ctrl_inif_rcvd", K::u64},
    {0x14ff0058, "n2h_data_glb_idx", K::u32},
    {0x14ff0059, "n2h_data_enif_rcvd", K::u64},
    {0x14ff005a, "n2h_data_ihif_sent", K::u64},
    {0x14ff005b, "n2h_data_inif_rcvd", K::u64},
    {0x14ff005c, "n2h_drop_glb_idx", K::u32},
    {0x14ff005d, "n2h_drop_enif_rx_drop", K::u64},
    {0x14ff005e, "n2h_drop_enif_rx_error", K::u64},
    {0x14ff005f, "n2h_drop_ihif_tx_drop", K::u64},
    {0x14ff0060, "n2h_drop_inif_rx_drop", K::u64},
    {0x14ff0061, "n2h_drop_inif_rx_error", K::u64},
    {0x14ff0062, "h2n_ctrl_glb_idx", K::u32},
    {0x14ff0063, "h2n_ctrl_inif_sent", K::u64},
    {0x14ff0064, "h2n_ctrl_ihif_rcvd", K::u64},
    {0x14ff0065, "h2n_ctrl_enif_sent", K::u64},
    {0x14ff0066, "h2n_data_glb_idx", K::u32},
    {0x14ff0067, "h2n_data_inif_sent", K::u64},
    {0x14ff0068, "h2n_data_ihif_rcvd", K::u64},
    {0x14ff0069, "h2n_data_enif_sent", K::u64},
    {0x14ff006a, "h2n_drop_glb_idx", K::u32},
    {0x14ff006b, "h2n_drop_inif_tx_drop", K::u64},
    {0x14ff006c, "h2n_drop_ihif_rx_drop", K::u64},
    {0x14ff006d, "h2n_drop_ihif_rx_error", K::u64},
    {0x14ff006e, "h2n_drop_enif_tx_drop", K::u64},
    {0x14ff006f, "port_glb_idx", K::u32},
    {0x14ff0070, "port_asic_no", K::u32},
    {0x30ff0071, "port_type", K::text},
    {0x14ff0072, "port_id", K::u32},

    // Structured host-interface queuing report.
    {0x14ff0073, "hif_slot", K::u32},
    {0x14ff0074, "hif_if_index", K::u32},
    {0x14ff0075, "ib_qos_group", K::u32},
    {0x14ff0076, "ib_frh", K::u32},
    {0x30ff0077, "ib_drop_type", K::text},
    {0x14ff0078, "ib_cos", K::u32},
    {0x14ff0079, "ib_xon", K::u32},
    {0x14ff007a, "ib_xoff", K::u32},
    {0x14ff007b, "ib_buffer_size", K::u32},
    {0x14ff007c, "ib_unsupported_qos_group", K::u32},
    {0x14ff007d, "queue_id", K::u32},
    {0x11ff007e, "queue_qos_group", K::i32},
    {0x14ff007f, "queue_cos", K::u32},
    {0x30ff0080, "queue_priority", K::text},
    {0x14ff0081, "queue_bandwidth", K::u32},
    {0x14ff0082, "queue_mtu", K::u32},
    {0x14ff0083, "queue_unsupported_qos_group", K::u32},
    {0x14ff0084, "buffer_threshold", K::u32},
    {0x14ff0085, "queue_limit", K::u32},
    {0x14ff0086, "queue_limit_tx", K::u32},
    {0x14ff0087, "queue_limit_rx", K::u32},
    {0x14ff008a, "stats_queue", K::u32},
    {0x14ff008b, "stats_rx", K::u32},
    {0x14ff008c, "stats_tx", K::u32},
    {0x14ff008d, "rx_row_queue", K::u32},
    {0x14ff008e, "rx_row_received", K::u32},
    {0x14ff008f, "rx_row_tail_drop", K::u32},
    {0x14ff0090, "rx_row_no_buffer", K::u32},
    {0x14ff0091, "rx_row_mac_error", K::u32},
    {0x14ff0092, "tx_row_queue", K::u32},
    {0x14ff0093, "tx_row_transmitted", K::u32},
    {0x14ff0094, "tx_row_tail_drop", K::u32},
    {0x14ff0095, "tx_row_no_buffer", K::u32},
    {0x14ff0096, "tx_row_mac_error", K::u32},
    {0x14ff0097, "tx_row_mcast_tail_drop", K::u32},
    {0x14ff0098, "port_rx_drop", K::u32},
    {0x14ff0099, "port_rx_mcast_drop", K::u32},
    {0x14ff009a, "port_rx_error", K::u32},
    {0x14ff009b, "port_tx_drop", K::u32},
    {0x30ff009c, "port_mux_ovflow", K::text},
    {0x14ff009d, "port_tx_queue_drop", K::u64},
    {0x30ff009e, "mux_ovflow", K::text},
    {0x14ff009f, "mux_ovflow_port", K::u32},
    {0x30ff00a0, "pfc_enabled", K::text},
    {0x14ff00a1, "pause_rx_state", K::u32},
    {0x14ff00a2, "pause_tx_state", K::u32},
    {0x14ff00a3, "pfc_rx_mask", K::u32},
    {0x14ff00a4, "pause_cos", K::u32},
    {0x11ff00a5, "pause_qos_group", K::i32},
    {0x30ff00a6, "rx_pause", K::text},
    {0x30ff00a7, "tx_pause", K::text},
    {0x30ff00a8, "masked_rx_pause", K::text},

    // Extended queuing report (two texts under the unsigned type byte).
    {0x14ff00aa, "ext_if_name", K::text},
    {0x14ff00ab, "ext_cos", K::u32},
    {0x14ff00ac, "ext_cos_queue", K::u32},
    {0x14ff00ad, "ext_sp_level", K::u32},
    {0x14ff00ae, "ext_drop_mode", K::text},
    {0x14ff00af, "ext_pass_queue", K::u32},
    {0x14ff00b0, "ext_pass_count_ch0", K::u64},
    {0x14ff00b1, "ext_pass_count_ch1", K::u64},
    {0x14ff00b2, "ext_pass_count_ch2", K::u64},
    {0x14ff00b3, "ext_drop_queue", K::u32},
    {0x14ff00b4, "ext_drop_count_ch0", K::u64},
    {0x14ff00b5, "ext_drop_count_ch1", K::u64},
    {0x14ff00b6, "ext_drop_count_ch2", K::u64},

    // Switch-wide attribute stream: Ethernet interfaces.
    {0x0cff00b7, "sw_if_index", K::if_index},
    {0x14ff00b8, "sw_tx_qos_group", K::u8},
    {0x02ff00b9, "sw_sched_priority", K::u8},
    {0x14ff00ba, "sw_oper_bandwidth", K::u8},
    {0x15ff00bb, "sw_mcast_tail_drops", K::u64},
    {0x14ff00bc, "sw_rx_qos_group", K::u8},
    {0x14ff00bd, "sw_q_size", K::u32},
    {0x14ff00be, "sw_q_size_40g", K::u32},
    {0x14ff00bf, "sw_mtu_hw", K::u16},
    {0x14ff00c0, "sw_mtu_configured", K::u16},
    {0x02ff00c1, "sw_no_drop", K::u8},
    {0x14ff00c2, "sw_xon", K::u32},
    {0x14ff00c3, "sw_xoff", K::u32},
    {0x14ff00c4, "sw_rx_port_pkts", K::u32},
    {0x14ff00c5, "sw_ucast_to_xbar", K::u32},
    {0x14ff00c6, "sw_mcast_to_xbar", K::u32},
    {0x14ff00c7, "sw_ucast_from_xbar", K::u32},
    {0x14ff00c8, "sw_tx_port_pkts", K::u32},
    {0x14ff00c9, "sw_ingress_discards", K::u32},
    {0x02ff00ca, "sw_pfc_rx_active", K::u32},
    {0x02ff00cb, "sw_pfc_tx_active", K::u32},
    {0x14ff00cc, "sw_mcast_from_xbar_total", K::u32},

    // Switch-wide attribute stream: host interfaces.
    {0x14ff00cd, "sw_hif_slot", K::u8},
    {0x14ff00ce, "sw_hif_if_index", K::u32},
    {0x14ff00cf, "sw_ib_qos_group", K::u8},
    {0x14ff00d0, "sw_ib_frh", K::u8},
    {0x02ff00d1, "sw_ib_no_drop", K::u8},
    {0x14ff00d2, "sw_ib_cos", K::u8},
    {0x14ff00d3, "sw_ib_xon", K::u32},
    {0x14ff00d4, "sw_ib_xoff", K::u32},
    {0x14ff00d5, "sw_ib_buffer_size", K::u32},
    {0x14ff00d6, "sw_queue_id", K::u8},
    {0x11ff00d7, "sw_queue_qos_group", K::i32},
    {0x14ff00d8, "sw_queue_cos", K::u32},
    {0x14ff00d9, "sw_queue_priority", K::u8},
    {0x14ff00da, "sw_queue_bandwidth", K::u8},
    {0x14ff00db, "sw_queue_mtu", K::u16},
    {0x14ff00dc, "sw_buffer_threshold", K::u32},
    {0x14ff00dd, "sw_queue_limit", K::u32},
    {0x14ff00de, "sw_queue_limit_tx", K::u32},
    {0x14ff00df, "sw_queue_limit_rx", K::u32},
    {0x14ff00e0, "sw_queue_limit_tx_alt", K::u32},
    {0x14ff00e1, "sw_queue_limit_rx_alt", K::u32},
    {0x14ff00e2, "sw_stats_queue", K::u8},
    {0x14ff00e3, "sw_stats_rx", K::u64},
    {0x14ff00e4, "sw_stats_tx", K::u64},
    {0x14ff00e5, "sw_rx_row_queue", K::u32},
    {0x14ff00e6, "sw_rx_row_received", K::u64},
    {0x14ff00e7, "sw_rx_row_tail_drop", K::u64},
    {0x14ff00e8, "sw_rx_row_no_buffer", K::u64},
    {0x14ff00e9, "sw_rx_row_mac_error", K::u64},
    {0x14ff00ea, "sw_tx_row_queue", K::u32},
    {0x14ff00eb, "sw_tx_row_transmitted", K::u64},
    {0x14ff00ec, "sw_tx_row_tail_drop", K::u64},
    {0x14ff00ed, "sw_tx_row_no_buffer", K::u64},
    {0x14ff00ee, "sw_tx_row_mac_error", K::u64},
    {0x14ff00ef, "sw_tx_row_mcast_tail_drop", K::u64},
    {0x14ff00f0, "sw_port_rx_drop", K::u64},
    {0x14ff00f1, "sw_port_rx_mcast_drop", K::u64},
    {0x14ff00f2, "sw_port_rx_error", K::u64},
    {0x14ff00f3, "sw_port_tx_drop", K::u64},
    {0x02ff00f4, "sw_mux_ovflow", K::flags8},
    {0x02ff00f5, "sw_pfc_enabled", K::u8},
    {0x14ff00f6, "sw_pause_cos", K::u32},
    {0x11ff00f7, "sw_pause_qos_group", K::i32},
    {0x02ff00f8, "sw_rx_pause", K::u8},
    {0x02ff00f9, "sw_tx_pause", K::u8},
    {0x02ff00fa, "sw_masked_rx_pause", K::u8},
    {58, "sw_run_hif_report", K::marker},
};

}  // namespace

const std::vector<AttributeInfo> &attribute_catalogue() { return kCatalogue; }

const AttributeInfo *find_attribute(std::uint32_t id) {
    auto it = std::find_if(kCatalogue.begin(), kCatalogue.end(), [&](const AttributeInfo &a) { return a.id == id; });
    return it == kCatalogue.end() ? nullptr : &*it;
}

std::string attribute_name(std::uint32_t id) {
    if (const AttributeInfo *a = find_attribute(id)) return a->name;
    char buf[24];
    std::snprintf(buf, sizeof buf, "attr_0x%08x", id);
    return buf;
}

std::uint32_t expected_length(AttrKind kind) {
    switch (kind) {
    case K::u8: return 1;
    case K::u16: return 2;
    case K::u32:
    case K::i32:
    case K::if_index: return 4;
    case K::u64:
    case K::flags8: return 8;
    case K::text:
    case K::marker: return 0;
    }
    return 0;
}

const char *kind_name(AttrKind kind) {
    switch (kind) {
    case K::u8: return "u8";
    case K::u16: return "u16";
    case K::u32: return "u32";
    case K::u64: return "u64";
    case K::i32: return "i32";
    case K::if_index: return "if_index";
    case K::text: return "text";
    case K::flags8: return "flags8";
    case K::marker: return "marker";
    }
    return "?";
}

}  // namespace qdsim::shell

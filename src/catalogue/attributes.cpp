// SPDX-License-Identifier: MIT
// The attribute catalogue: one entry per attribute ID the handlers print,
// request or read from the switch-wide stream. Constant data; the lookups
// keep no state.
//
// 0x30ff0088 (queue_name), 0x30ff0089 (stats_flags) and 0x30ff00a9
// (row_flags) fill the unused numbers of the host-interface range, and the
// numbers from 0x0101 name the values of the reports printed to standard
// output and the values a report prints as part of its text: the handlers
// tell them to a host's observer (qdcli/observer.h), never to the printer.
#include "qdcli/attributes.h"

#include <cstring>
#include <iterator>

namespace {

constexpr unsigned F_ROW = QDCLI_ATTR_FLAG_ROW_START;
constexpr unsigned F_LIST = QDCLI_ATTR_FLAG_LIST;
constexpr unsigned F_STATE = QDCLI_ATTR_FLAG_STATE;
constexpr unsigned F_OPT = QDCLI_ATTR_FLAG_OPTIONAL;

// Report by report, in the order the values are printed.
constexpr qdcli_attr_info kCatalogue[] = {
    {0x14ff0001, "vaq", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "extenders", "vaq", "Extender number in the ASIC-count line", nullptr, F_ROW, nullptr, QDCLI_METRIC_NONE, nullptr, 0, "extender", nullptr, nullptr},
    {0x14ff0002, "asic_count", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, nullptr, "extenders", "vaq", "Number of ASICs of the extender", nullptr, F_OPT, "extender_asics", QDCLI_METRIC_GAUGE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff0003, "asic_vaq", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "asics", "asic", "Extender number in a per-ASIC line", "extenders", F_ROW, nullptr, QDCLI_METRIC_NONE, nullptr, 0, "extender", nullptr, nullptr},
    {0x14ff0004, "asic", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "asics", "asic", "ASIC index within the extender", "extenders", 0, nullptr, QDCLI_METRIC_NONE, nullptr, 0, "asic", nullptr, nullptr},
    {0x14ff0005, "ss_count", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, nullptr, "asics", "asic", "Number of SS of the ASIC", "extenders", 0, "asic_ss", QDCLI_METRIC_GAUGE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff0006, "ss", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "ss", "ss", "SS index within the ASIC", "asics", F_ROW, nullptr, QDCLI_METRIC_NONE, nullptr, 0, "ss", nullptr, nullptr},
    {0x14ff0007, "no_credit_drops", QDCLI_ATTR_U32, 8, QDCLI_ROLE_COUNTER, "packets", "ss", "ss", "No-credit drops on the no-drop class of the SS (at most 15, does not roll over)", "asics", 0, "no_credit_drops", QDCLI_METRIC_GAUGE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x0cff0039, "if_index", QDCLI_ATTR_IF_INDEX, 32, QDCLI_ROLE_IDENTIFIER, nullptr, nullptr, nullptr, "Interface index named in a show-queuing request", nullptr, 0, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x30ff003a, "if_name", QDCLI_ATTR_TEXT, 0, QDCLI_ROLE_IDENTIFIER, nullptr, nullptr, nullptr, "Interface name", nullptr, 0, nullptr, QDCLI_METRIC_NONE, nullptr, 0, "interface", nullptr, nullptr},
    {0x14ff003b, "tx_qos_group", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "tx_queues", "tx_qos_group", "Transmit qos-group", nullptr, F_ROW, nullptr, QDCLI_METRIC_NONE, nullptr, 0, "qos_group", nullptr, nullptr},
    {0x30ff003c, "sched_type", QDCLI_ATTR_TEXT, 0, QDCLI_ROLE_LABEL, nullptr, "tx_queues", "tx_qos_group", "Scheduling type: priority or wrr", nullptr, F_STATE, "tx_queue", QDCLI_METRIC_INFO, nullptr, 0, "scheduling", nullptr, nullptr},
    {0x14ff003d, "oper_bandwidth", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, "percent", "tx_queues", "tx_qos_group", "Operational bandwidth share", nullptr, 0, "oper_bandwidth_ratio", QDCLI_METRIC_GAUGE, "ratio", 100, nullptr, nullptr, nullptr},
    {0x15ff003e, "mcast_tail_drops", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", nullptr, nullptr, "Multicast packets tail-dropped on this egress ASIC", nullptr, 0, "mcast_tail_drops", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff003f, "rx_qos_group", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "rx_queues", "rx_qos_group", "Receive qos-group", nullptr, F_ROW, nullptr, QDCLI_METRIC_NONE, nullptr, 0, "qos_group", nullptr, nullptr},
    {0x14ff0040, "q_size", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, "bytes", "rx_queues", "rx_qos_group", "Queue size", nullptr, 0, "q_size_bytes", QDCLI_METRIC_GAUGE, "bytes", 0, nullptr, nullptr, nullptr},
    {0x14ff0041, "q_size_40g", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, "bytes", "rx_queues", "rx_qos_group", "Queue size on a 40G port", nullptr, 0, "q_size_40g_bytes", QDCLI_METRIC_GAUGE, "bytes", 0, nullptr, nullptr, nullptr},
    {0x14ff0042, "mtu_hw", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, "bytes", "rx_queues", "rx_qos_group", "MTU programmed in hardware", nullptr, 0, "mtu_hw_bytes", QDCLI_METRIC_GAUGE, "bytes", 0, nullptr, nullptr, nullptr},
    {0x14ff0043, "mtu_configured", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, "bytes", "rx_queues", "rx_qos_group", "MTU configured", nullptr, 0, "mtu_configured_bytes", QDCLI_METRIC_GAUGE, "bytes", 0, nullptr, nullptr, nullptr},
    {0x30ff0044, "drop_type", QDCLI_ATTR_TEXT, 0, QDCLI_ROLE_LABEL, nullptr, "rx_queues", "rx_qos_group", "Drop type: drop or no-drop", nullptr, F_STATE, "rx_queue", QDCLI_METRIC_INFO, nullptr, 0, "drop_type", nullptr, nullptr},
    {0x14ff0045, "xon", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, "bytes", "rx_queues", "rx_qos_group", "Pause XON threshold", nullptr, 0, "xon_bytes", QDCLI_METRIC_GAUGE, "bytes", 0, nullptr, nullptr, nullptr},
    {0x14ff0046, "xoff", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, "bytes", "rx_queues", "rx_qos_group", "Pause XOFF threshold", nullptr, 0, "xoff_bytes", QDCLI_METRIC_GAUGE, "bytes", 0, nullptr, nullptr, nullptr},
    {0x14ff0047, "rx_port_pkts", QDCLI_ATTR_U32, 32, QDCLI_ROLE_COUNTER, "packets", "rx_queues", "rx_qos_group", "Packets received over the port", nullptr, 0, "rx_port_pkts", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff0048, "ucast_to_xbar", QDCLI_ATTR_U32, 32, QDCLI_ROLE_COUNTER, "packets", "rx_queues", "rx_qos_group", "Unicast packets sent to the cross-bar", nullptr, 0, "ucast_to_xbar", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff0049, "mcast_to_xbar", QDCLI_ATTR_U32, 32, QDCLI_ROLE_COUNTER, "packets", "rx_queues", "rx_qos_group", "Multicast packets sent to the cross-bar", nullptr, 0, "mcast_to_xbar", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff004a, "ucast_from_xbar", QDCLI_ATTR_U32, 32, QDCLI_ROLE_COUNTER, "packets", "rx_queues", "rx_qos_group", "Unicast packets received from the cross-bar", nullptr, 0, "ucast_from_xbar", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff004b, "tx_port_pkts", QDCLI_ATTR_U32, 32, QDCLI_ROLE_COUNTER, "packets", "rx_queues", "rx_qos_group", "Packets sent to the port", nullptr, 0, "tx_port_pkts", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff004c, "ingress_discards", QDCLI_ATTR_U32, 32, QDCLI_ROLE_COUNTER, "packets", "rx_queues", "rx_qos_group", "Packets discarded on ingress", nullptr, 0, "ingress_discards", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, nullptr, nullptr},
    {0x30ff004d, "pfc_rx_status", QDCLI_ATTR_TEXT, 0, QDCLI_ROLE_LABEL, nullptr, "rx_queues", "rx_qos_group", "Per-priority pause receive status: active or inactive", nullptr, F_STATE, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x30ff004e, "pfc_tx_status", QDCLI_ATTR_TEXT, 0, QDCLI_ROLE_LABEL, nullptr, "rx_queues", "rx_qos_group", "Per-priority pause transmit status: active or inactive", nullptr, F_STATE, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff004f, "mcast_from_xbar_total", QDCLI_ATTR_U32, 32, QDCLI_ROLE_COUNTER, "packets", nullptr, nullptr, "Multicast packets received from the cross-bar, all qos-groups", nullptr, 0, "mcast_from_xbar", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff0050, "vaq_drop_class_buf", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, "bytes", nullptr, nullptr, "VAQ drop class buffer size", nullptr, 0, "vaq_drop_class_buffer_bytes", QDCLI_METRIC_GAUGE, "bytes", 0, nullptr, nullptr, nullptr},
    {0x14ff0051, "vaq_uplink_rx_drops", QDCLI_ATTR_U32, 32, QDCLI_ROLE_COUNTER, "packets", nullptr, nullptr, "VAQ uplink interface receive drops", nullptr, 0, "vaq_uplink_rx_drops", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff0052, "vaq_uplink_err_drops", QDCLI_ATTR_U32, 32, QDCLI_ROLE_COUNTER, "packets", nullptr, nullptr, "VAQ uplink interface error drops", nullptr, 0, "vaq_uplink_err_drops", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff0053, "vaq_uplink_mcast_drops", QDCLI_ATTR_U32, 32, QDCLI_ROLE_COUNTER, "packets", nullptr, nullptr, "VAQ uplink interface multicast drops", nullptr, 0, "vaq_uplink_mcast_drops", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff0054, "n2h_ctrl_glb_idx", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "n2h_ctrl", "n2h_ctrl_glb_idx", "Global port index of a network-to-host control row", nullptr, F_ROW, nullptr, QDCLI_METRIC_NONE, nullptr, 0, "port", nullptr, nullptr},
    {0x14ff0055, "n2h_ctrl_enif_rcvd", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "n2h_ctrl", "n2h_ctrl_glb_idx", "Control packets received on the eNIF", nullptr, 0, "hif_ctrl_enif_rcvd", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, "direction=n2h", nullptr},
    {0x14ff0056, "n2h_ctrl_ihif_sent", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "n2h_ctrl", "n2h_ctrl_glb_idx", "Control packets sent on the iHIF", nullptr, 0, "hif_ctrl_ihif_sent", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, "direction=n2h", nullptr},
    {0x14ff0057, "n2h_ctrl_inif_rcvd", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "n2h_ctrl", "n2h_ctrl_glb_idx", "Control packets received on the iNIF", nullptr, 0, "hif_ctrl_inif_rcvd", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, "direction=n2h", nullptr},
    {0x14ff0058, "n2h_data_glb_idx", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "n2h_data", "n2h_data_glb_idx", "Global port index of a network-to-host data row", nullptr, F_ROW, nullptr, QDCLI_METRIC_NONE, nullptr, 0, "port", nullptr, nullptr},
    {0x14ff0059, "n2h_data_enif_rcvd", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "n2h_data", "n2h_data_glb_idx", "Data packets received on the eNIF", nullptr, 0, "hif_data_enif_rcvd", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, "direction=n2h", nullptr},
    {0x14ff005a, "n2h_data_ihif_sent", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "n2h_data", "n2h_data_glb_idx", "Data packets sent on the iHIF", nullptr, 0, "hif_data_ihif_sent", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, "direction=n2h", nullptr},
    {0x14ff005b, "n2h_data_inif_rcvd", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "n2h_data", "n2h_data_glb_idx", "Data packets received on the iNIF", nullptr, 0, "hif_data_inif_rcvd", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, "direction=n2h", nullptr},
    {0x14ff005c, "n2h_drop_glb_idx", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "n2h_drop", "n2h_drop_glb_idx", "Global port index of a network-to-host drop row", nullptr, F_ROW, nullptr, QDCLI_METRIC_NONE, nullptr, 0, "port", nullptr, nullptr},
    {0x14ff005d, "n2h_drop_enif_rx_drop", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "n2h_drop", "n2h_drop_glb_idx", "Receive drops on the eNIF", nullptr, 0, "hif_drop_enif_rx_drop", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, "direction=n2h", nullptr},
    {0x14ff005e, "n2h_drop_enif_rx_error", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "n2h_drop", "n2h_drop_glb_idx", "Receive errors on the eNIF", nullptr, 0, "hif_drop_enif_rx_error", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, "direction=n2h", nullptr},
    {0x14ff005f, "n2h_drop_ihif_tx_drop", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "n2h_drop", "n2h_drop_glb_idx", "Transmit drops on the iHIF", nullptr, 0, "hif_drop_ihif_tx_drop", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, "direction=n2h", nullptr},
    {0x14ff0060, "n2h_drop_inif_rx_drop", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "n2h_drop", "n2h_drop_glb_idx", "Receive drops on the iNIF", nullptr, 0, "hif_drop_inif_rx_drop", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, "direction=n2h", nullptr},
    {0x14ff0061, "n2h_drop_inif_rx_error", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "n2h_drop", "n2h_drop_glb_idx", "Receive errors on the iNIF", nullptr, 0, "hif_drop_inif_rx_error", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, "direction=n2h", nullptr},
    {0x14ff0062, "h2n_ctrl_glb_idx", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "h2n_ctrl", "h2n_ctrl_glb_idx", "Global port index of a host-to-network control row", nullptr, F_ROW, nullptr, QDCLI_METRIC_NONE, nullptr, 0, "port", nullptr, nullptr},
    {0x14ff0063, "h2n_ctrl_inif_sent", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "h2n_ctrl", "h2n_ctrl_glb_idx", "Control packets sent on the iNIF", nullptr, 0, "hif_ctrl_inif_sent", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, "direction=h2n", nullptr},
    {0x14ff0064, "h2n_ctrl_ihif_rcvd", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "h2n_ctrl", "h2n_ctrl_glb_idx", "Control packets received on the iHIF", nullptr, 0, "hif_ctrl_ihif_rcvd", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, "direction=h2n", nullptr},
    {0x14ff0065, "h2n_ctrl_enif_sent", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "h2n_ctrl", "h2n_ctrl_glb_idx", "Control packets sent on the eNIF", nullptr, 0, "hif_ctrl_enif_sent", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, "direction=h2n", nullptr},
    {0x14ff0066, "h2n_data_glb_idx", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "h2n_data", "h2n_data_glb_idx", "Global port index of a host-to-network data row", nullptr, F_ROW, nullptr, QDCLI_METRIC_NONE, nullptr, 0, "port", nullptr, nullptr},
    {0x14ff0067, "h2n_data_inif_sent", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "h2n_data", "h2n_data_glb_idx", "Data packets sent on the iNIF", nullptr, 0, "hif_data_inif_sent", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, "direction=h2n", nullptr},
    {0x14ff0068, "h2n_data_ihif_rcvd", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "h2n_data", "h2n_data_glb_idx", "Data packets received on the iHIF", nullptr, 0, "hif_data_ihif_rcvd", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, "direction=h2n", nullptr},
    {0x14ff0069, "h2n_data_enif_sent", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "h2n_data", "h2n_data_glb_idx", "Data packets sent on the eNIF", nullptr, 0, "hif_data_enif_sent", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, "direction=h2n", nullptr},
    {0x14ff006a, "h2n_drop_glb_idx", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "h2n_drop", "h2n_drop_glb_idx", "Global port index of a host-to-network drop row", nullptr, F_ROW, nullptr, QDCLI_METRIC_NONE, nullptr, 0, "port", nullptr, nullptr},
    {0x14ff006b, "h2n_drop_inif_tx_drop", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "h2n_drop", "h2n_drop_glb_idx", "Transmit drops on the iNIF", nullptr, 0, "hif_drop_inif_tx_drop", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, "direction=h2n", nullptr},
    {0x14ff006c, "h2n_drop_ihif_rx_drop", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "h2n_drop", "h2n_drop_glb_idx", "Receive drops on the iHIF", nullptr, 0, "hif_drop_ihif_rx_drop", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, "direction=h2n", nullptr},
    {0x14ff006d, "h2n_drop_ihif_rx_error", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "h2n_drop", "h2n_drop_glb_idx", "Receive errors on the iHIF", nullptr, 0, "hif_drop_ihif_rx_error", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, "direction=h2n", nullptr},
    {0x14ff006e, "h2n_drop_enif_tx_drop", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "h2n_drop", "h2n_drop_glb_idx", "Transmit drops on the eNIF", nullptr, 0, "hif_drop_enif_tx_drop", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, "direction=h2n", nullptr},
    {0x14ff006f, "port_glb_idx", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "port_map", "port_glb_idx", "Global port index in the port map", nullptr, F_ROW, nullptr, QDCLI_METRIC_NONE, nullptr, 0, "port", nullptr, nullptr},
    {0x14ff0070, "port_asic_no", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "port_map", "port_glb_idx", "ASIC number of the port", nullptr, 0, "port", QDCLI_METRIC_INFO, nullptr, 0, "port_asic", nullptr, nullptr},
    {0x30ff0071, "port_type", QDCLI_ATTR_TEXT, 0, QDCLI_ROLE_LABEL, nullptr, "port_map", "port_glb_idx", "Port type: nif or hif", nullptr, F_STATE, "port", QDCLI_METRIC_INFO, nullptr, 0, "type", nullptr, nullptr},
    {0x14ff0072, "port_id", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "port_map", "port_glb_idx", "Port number on its ASIC", nullptr, 0, "port", QDCLI_METRIC_INFO, nullptr, 0, "port_id", nullptr, nullptr},
    {0x14ff0073, "hif_slot", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, nullptr, nullptr, "Slot of the host interface", nullptr, 0, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff0074, "hif_if_index", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, nullptr, nullptr, "Interface index of the host interface", nullptr, 0, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff0075, "ib_qos_group", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "input_buffers", "ib_qos_group", "Qos-groups sharing the input buffer", nullptr, F_ROW | F_LIST, nullptr, QDCLI_METRIC_NONE, nullptr, 0, "qos_group", nullptr, nullptr},
    {0x14ff0076, "ib_frh", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, nullptr, "input_buffers", "ib_qos_group", "FRH value of the input buffer", nullptr, 0, "input_buffer_frh", QDCLI_METRIC_GAUGE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x30ff0077, "ib_drop_type", QDCLI_ATTR_TEXT, 0, QDCLI_ROLE_LABEL, nullptr, "input_buffers", "ib_qos_group", "Drop type: drop or no-drop", nullptr, F_STATE, "input_buffer", QDCLI_METRIC_INFO, nullptr, 0, "drop_type", nullptr, nullptr},
    {0x14ff0078, "ib_cos", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "input_buffers", "ib_qos_group", "CoS values of the input buffer", nullptr, F_LIST, "input_buffer", QDCLI_METRIC_INFO, nullptr, 0, "cos", nullptr, nullptr},
    {0x14ff0079, "ib_xon", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, "bytes", "input_buffers", "ib_qos_group", "XON threshold of the input buffer", nullptr, 0, "input_buffer_xon_bytes", QDCLI_METRIC_GAUGE, "bytes", 0, nullptr, nullptr, nullptr},
    {0x14ff007a, "ib_xoff", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, "bytes", "input_buffers", "ib_qos_group", "XOFF threshold of the input buffer", nullptr, 0, "input_buffer_xoff_bytes", QDCLI_METRIC_GAUGE, "bytes", 0, nullptr, nullptr, nullptr},
    {0x14ff007b, "ib_buffer_size", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, "bytes", "input_buffers", "ib_qos_group", "Size of the input buffer", nullptr, 0, "input_buffer_size_bytes", QDCLI_METRIC_GAUGE, "bytes", 0, nullptr, nullptr, nullptr},
    {0x14ff007c, "ib_unsupported_qos_group", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, nullptr, nullptr, "Qos-groups without an input buffer of their own", nullptr, F_LIST, "host_interface", QDCLI_METRIC_INFO, nullptr, 0, "unsupported_input_buffer_qos_groups", nullptr, nullptr},
    {0x30ff0088, "queue_name", QDCLI_ATTR_TEXT, 0, QDCLI_ROLE_LABEL, nullptr, "queues", "queue_id", "Name of a control queue: ctrl-hi or ctrl-lo", nullptr, F_ROW | F_STATE | F_OPT, "queue", QDCLI_METRIC_INFO, nullptr, 0, "name", nullptr, nullptr},
    {0x14ff007d, "queue_id", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "queues", "queue_id", "Queue number (0 and 1 are the control queues, named by queue_name)", nullptr, F_ROW, nullptr, QDCLI_METRIC_NONE, nullptr, 0, "queue", nullptr, nullptr},
    {0x11ff007e, "queue_qos_group", QDCLI_ATTR_I32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "queues", "queue_id", "Qos-groups of the queue", nullptr, F_LIST, "queue", QDCLI_METRIC_INFO, nullptr, 0, "qos_groups", nullptr, nullptr},
    {0x14ff007f, "queue_cos", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "queues", "queue_id", "CoS values of the queue", nullptr, F_LIST, "queue", QDCLI_METRIC_INFO, nullptr, 0, "cos", nullptr, nullptr},
    {0x30ff0080, "queue_priority", QDCLI_ATTR_TEXT, 0, QDCLI_ROLE_LABEL, nullptr, "queues", "queue_id", "Queue priority: pri or wrr", nullptr, F_STATE, "queue", QDCLI_METRIC_INFO, nullptr, 0, "priority", nullptr, nullptr},
    {0x14ff0081, "queue_bandwidth", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, "percent", "queues", "queue_id", "Queue bandwidth", nullptr, 0, "queue_bandwidth_ratio", QDCLI_METRIC_GAUGE, "ratio", 100, nullptr, nullptr, nullptr},
    {0x14ff0082, "queue_mtu", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, "bytes", "queues", "queue_id", "Queue MTU", nullptr, 0, "queue_mtu_bytes", QDCLI_METRIC_GAUGE, "bytes", 0, nullptr, nullptr, nullptr},
    {0x14ff0083, "queue_unsupported_qos_group", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, nullptr, nullptr, "Qos-groups without a queue of their own", nullptr, F_LIST, "host_interface", QDCLI_METRIC_INFO, nullptr, 0, "unsupported_queue_qos_groups", nullptr, nullptr},
    {0x14ff0084, "buffer_threshold", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, "bytes", nullptr, nullptr, "Buffer threshold", nullptr, 0, "buffer_threshold_bytes", QDCLI_METRIC_GAUGE, "bytes", 0, nullptr, nullptr, nullptr},
    {0x14ff0085, "queue_limit", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, "bytes", nullptr, nullptr, "Queue limit", nullptr, 0, "queue_limit_bytes", QDCLI_METRIC_GAUGE, "bytes", 0, nullptr, nullptr, nullptr},
    {0x14ff0086, "queue_limit_tx", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, "bytes", nullptr, nullptr, "Transmit queue limit", nullptr, 0, "queue_limit_tx_bytes", QDCLI_METRIC_GAUGE, "bytes", 0, nullptr, nullptr, nullptr},
    {0x14ff0087, "queue_limit_rx", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, "bytes", nullptr, nullptr, "Receive queue limit", nullptr, 0, "queue_limit_rx_bytes", QDCLI_METRIC_GAUGE, "bytes", 0, nullptr, nullptr, nullptr},
    {0x14ff008a, "stats_queue", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "queue_stats", "stats_queue", "Queue number of a statistics row", nullptr, F_ROW, nullptr, QDCLI_METRIC_NONE, nullptr, 0, "queue", nullptr, nullptr},
    {0x14ff008b, "stats_rx", QDCLI_ATTR_U32, 32, QDCLI_ROLE_COUNTER, "packets", "queue_stats", "stats_queue", "Packets received by the queue (low 32 bits)", nullptr, 0, "queue_rx_pkts", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff008c, "stats_tx", QDCLI_ATTR_U32, 32, QDCLI_ROLE_COUNTER, "packets", "queue_stats", "stats_queue", "Packets transmitted by the queue (low 32 bits)", nullptr, F_OPT, "queue_tx_pkts", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, nullptr, nullptr},
    {0x30ff0089, "stats_flags", QDCLI_ATTR_TEXT, 0, QDCLI_ROLE_LABEL, nullptr, "queue_stats", "stats_queue", "Kind of the queue: ctrl or data", nullptr, F_STATE | F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff008d, "rx_row_queue", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "rx_queue_stats", "rx_row_queue", "Queue number of a receive statistics row", nullptr, F_ROW, nullptr, QDCLI_METRIC_NONE, nullptr, 0, "queue", nullptr, nullptr},
    {0x14ff008e, "rx_row_received", QDCLI_ATTR_U32, 32, QDCLI_ROLE_COUNTER, "packets", "rx_queue_stats", "rx_row_queue", "Packets received (low 32 bits)", nullptr, 0, "rx_row_received", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff008f, "rx_row_tail_drop", QDCLI_ATTR_U32, 32, QDCLI_ROLE_COUNTER, "packets", "rx_queue_stats", "rx_row_queue", "Receive tail drops (low 32 bits)", nullptr, 0, "rx_row_tail_drop", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff0090, "rx_row_no_buffer", QDCLI_ATTR_U32, 32, QDCLI_ROLE_COUNTER, "packets", "rx_queue_stats", "rx_row_queue", "Receive drops for want of a buffer (low 32 bits)", nullptr, 0, "rx_row_no_buffer", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff0091, "rx_row_mac_error", QDCLI_ATTR_U32, 32, QDCLI_ROLE_COUNTER, "packets", "rx_queue_stats", "rx_row_queue", "Receive MAC errors (low 32 bits)", nullptr, 0, "rx_row_mac_error", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff0092, "tx_row_queue", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "tx_queue_stats", "tx_row_queue", "Queue number of a transmit statistics row", nullptr, F_ROW, nullptr, QDCLI_METRIC_NONE, nullptr, 0, "queue", nullptr, nullptr},
    {0x14ff0093, "tx_row_transmitted", QDCLI_ATTR_U32, 32, QDCLI_ROLE_COUNTER, "packets", "tx_queue_stats", "tx_row_queue", "Packets transmitted (low 32 bits)", nullptr, 0, "tx_row_transmitted", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff0094, "tx_row_tail_drop", QDCLI_ATTR_U32, 32, QDCLI_ROLE_COUNTER, "packets", "tx_queue_stats", "tx_row_queue", "Transmit tail drops (low 32 bits)", nullptr, 0, "tx_row_tail_drop", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff0095, "tx_row_no_buffer", QDCLI_ATTR_U32, 32, QDCLI_ROLE_COUNTER, "packets", "tx_queue_stats", "tx_row_queue", "Transmit drops for want of a buffer (low 32 bits)", nullptr, 0, "tx_row_no_buffer", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff0096, "tx_row_mac_error", QDCLI_ATTR_U32, 32, QDCLI_ROLE_COUNTER, "packets", "tx_queue_stats", "tx_row_queue", "Transmit MAC errors (low 32 bits)", nullptr, 0, "tx_row_mac_error", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff0097, "tx_row_mcast_tail_drop", QDCLI_ATTR_U32, 32, QDCLI_ROLE_COUNTER, "packets", "tx_queue_stats", "tx_row_queue", "Multicast tail drops (low 32 bits)", nullptr, 0, "tx_row_mcast_tail_drop", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff0098, "port_rx_drop", QDCLI_ATTR_U32, 32, QDCLI_ROLE_COUNTER, "packets", nullptr, nullptr, "Port receive drops (low 32 bits)", nullptr, 0, "port_rx_drop", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff0099, "port_rx_mcast_drop", QDCLI_ATTR_U32, 32, QDCLI_ROLE_COUNTER, "packets", nullptr, nullptr, "Port receive multicast drops (low 32 bits)", nullptr, 0, "port_rx_mcast_drop", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff009a, "port_rx_error", QDCLI_ATTR_U32, 32, QDCLI_ROLE_COUNTER, "packets", nullptr, nullptr, "Port receive errors (low 32 bits)", nullptr, 0, "port_rx_error", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff009b, "port_tx_drop", QDCLI_ATTR_U32, 32, QDCLI_ROLE_COUNTER, "packets", nullptr, nullptr, "Port transmit drops (low 32 bits)", nullptr, 0, "port_tx_drop", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, nullptr, nullptr},
    {0x30ff009c, "port_mux_ovflow", QDCLI_ATTR_TEXT, 0, QDCLI_ROLE_LABEL, nullptr, nullptr, nullptr, "Multiplexer overflow: active or inactive", nullptr, F_STATE, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff009d, "port_tx_queue_drop", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", nullptr, nullptr, "Transmit queue drops", nullptr, 0, "port_tx_queue_drop", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, nullptr, nullptr},
    {0x30ff009e, "mux_ovflow", QDCLI_ATTR_TEXT, 0, QDCLI_ROLE_LABEL, nullptr, nullptr, nullptr, "Multiplexer overflow: active or inactive", nullptr, F_STATE, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff009f, "mux_ovflow_port", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, nullptr, nullptr, "Port of the multiplexer overflow (1 or 3)", nullptr, 0, "host_interface", QDCLI_METRIC_INFO, nullptr, 0, "mux_overflow_port", nullptr, nullptr},
    {0x30ff00a0, "pfc_enabled", QDCLI_ATTR_TEXT, 0, QDCLI_ROLE_LABEL, nullptr, nullptr, nullptr, "Priority flow control enabled: yes or no", nullptr, F_STATE, "host_interface", QDCLI_METRIC_INFO, nullptr, 0, "pfc_enabled", nullptr, nullptr},
    {0x14ff00a1, "pause_rx_state", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, nullptr, nullptr, nullptr, "Receive pause state bits", nullptr, 0, "pause_rx_state", QDCLI_METRIC_GAUGE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00a2, "pause_tx_state", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, nullptr, nullptr, nullptr, "Transmit pause state bits", nullptr, 0, "pause_tx_state", QDCLI_METRIC_GAUGE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00a3, "pfc_rx_mask", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, nullptr, nullptr, nullptr, "Priority flow control receive mask bits", nullptr, 0, "pfc_rx_mask", QDCLI_METRIC_GAUGE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00a4, "pause_cos", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "pause", "pause_cos", "CoS value of a pause row", nullptr, F_ROW, nullptr, QDCLI_METRIC_NONE, nullptr, 0, "cos", nullptr, nullptr},
    {0x11ff00a5, "pause_qos_group", QDCLI_ATTR_I32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "pause", "pause_cos", "Qos-group of the CoS (absent when none)", nullptr, F_OPT, "pause_cos", QDCLI_METRIC_INFO, nullptr, 0, "qos_group", nullptr, nullptr},
    {0x30ff00a6, "rx_pause", QDCLI_ATTR_TEXT, 0, QDCLI_ROLE_LABEL, nullptr, "pause", "pause_cos", "Receive pause: xon or xoff", nullptr, F_STATE, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x30ff00a7, "tx_pause", QDCLI_ATTR_TEXT, 0, QDCLI_ROLE_LABEL, nullptr, "pause", "pause_cos", "Transmit pause: xon or xoff", nullptr, F_STATE, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x30ff00a8, "masked_rx_pause", QDCLI_ATTR_TEXT, 0, QDCLI_ROLE_LABEL, nullptr, "pause", "pause_cos", "Masked receive pause: xon or xoff", nullptr, F_STATE, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00aa, "ext_if_name", QDCLI_ATTR_TEXT, 0, QDCLI_ROLE_IDENTIFIER, nullptr, nullptr, nullptr, "Interface name of the extended report", nullptr, 0, nullptr, QDCLI_METRIC_NONE, nullptr, 0, "interface", nullptr, nullptr},
    {0x14ff00ab, "ext_cos", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "cos_map", "ext_cos", "CoS value of a row of the ingress CoS-to-queue map", nullptr, F_ROW, nullptr, QDCLI_METRIC_NONE, nullptr, 0, "cos", nullptr, nullptr},
    {0x14ff00ac, "ext_cos_queue", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "cos_map", "ext_cos", "Queue the CoS is mapped to", nullptr, 0, "cos_map", QDCLI_METRIC_INFO, nullptr, 0, "queue", nullptr, nullptr},
    {0x14ff00ad, "ext_sp_level", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, nullptr, "ingress_queues", "ext_queue", "Strict-priority level of the queue (absent for DWRR)", nullptr, F_OPT, "ext_sp_level", QDCLI_METRIC_GAUGE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00ae, "ext_drop_mode", QDCLI_ATTR_TEXT, 0, QDCLI_ROLE_LABEL, nullptr, "ingress_queues", "ext_queue", "Drop mode of the queue: yes or no", nullptr, F_STATE, "ingress_queue", QDCLI_METRIC_INFO, nullptr, 0, "drop_mode", nullptr, nullptr},
    {0x14ff00af, "ext_pass_queue", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "pass_counts", "ext_pass_queue", "Queue of a pass-count row", nullptr, F_ROW, nullptr, QDCLI_METRIC_NONE, nullptr, 0, "queue", nullptr, nullptr},
    {0x14ff00b0, "ext_pass_count_ch0", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "pass_counts", "ext_pass_queue", "Packets passed, 40G channel 0", nullptr, 0, "ext_passed", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, "channel=0", "Packets passed by the queue on a 40G channel"},
    {0x14ff00b1, "ext_pass_count_ch1", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "pass_counts", "ext_pass_queue", "Packets passed, 40G channel 1", nullptr, 0, "ext_passed", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, "channel=1", "Packets passed by the queue on a 40G channel"},
    {0x14ff00b2, "ext_pass_count_ch2", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "pass_counts", "ext_pass_queue", "Packets passed, 40G channel 2", nullptr, 0, "ext_passed", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, "channel=2", "Packets passed by the queue on a 40G channel"},
    {0x14ff00b3, "ext_drop_queue", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "drop_counts", "ext_drop_queue", "Queue of a drop-count row", nullptr, F_ROW, nullptr, QDCLI_METRIC_NONE, nullptr, 0, "queue", nullptr, nullptr},
    {0x14ff00b4, "ext_drop_count_ch0", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "drop_counts", "ext_drop_queue", "Packets dropped, 40G channel 0", nullptr, 0, "ext_dropped", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, "channel=0", "Packets dropped by the queue on a 40G channel"},
    {0x14ff00b5, "ext_drop_count_ch1", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "drop_counts", "ext_drop_queue", "Packets dropped, 40G channel 1", nullptr, 0, "ext_dropped", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, "channel=1", "Packets dropped by the queue on a 40G channel"},
    {0x14ff00b6, "ext_drop_count_ch2", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "drop_counts", "ext_drop_queue", "Packets dropped, 40G channel 2", nullptr, 0, "ext_dropped", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, "channel=2", "Packets dropped by the queue on a 40G channel"},
    {0x30ff00a9, "row_flags", QDCLI_ATTR_TEXT, 0, QDCLI_ROLE_LABEL, nullptr, "rx_queue_stats", "rx_row_queue", "Kind of the queue of a receive row: ctrl or data", nullptr, F_STATE | F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x0cff00b7, "sw_if_index", QDCLI_ATTR_IF_INDEX, 32, QDCLI_ROLE_IDENTIFIER, nullptr, nullptr, nullptr, "Switch-wide stream: if index", nullptr, 0, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00b8, "sw_tx_qos_group", QDCLI_ATTR_U8, 8, QDCLI_ROLE_IDENTIFIER, nullptr, "sw_tx_queues", "sw_tx_qos_group", "Switch-wide stream: tx qos group", nullptr, F_ROW, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x02ff00b9, "sw_sched_priority", QDCLI_ATTR_U8, 8, QDCLI_ROLE_LABEL, nullptr, "sw_tx_queues", "sw_tx_qos_group", "Switch-wide stream: sched priority", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00ba, "sw_oper_bandwidth", QDCLI_ATTR_U8, 8, QDCLI_ROLE_GAUGE, nullptr, "sw_tx_queues", "sw_tx_qos_group", "Switch-wide stream: oper bandwidth", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x15ff00bb, "sw_mcast_tail_drops", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", nullptr, nullptr, "Switch-wide stream: mcast tail drops", nullptr, 0, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00bc, "sw_rx_qos_group", QDCLI_ATTR_U8, 8, QDCLI_ROLE_IDENTIFIER, nullptr, "sw_rx_queues", "sw_rx_qos_group", "Switch-wide stream: rx qos group", nullptr, F_ROW, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00bd, "sw_q_size", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, nullptr, "sw_rx_queues", "sw_rx_qos_group", "Switch-wide stream: q size", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00be, "sw_q_size_40g", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, nullptr, "sw_rx_queues", "sw_rx_qos_group", "Switch-wide stream: q size 40g", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00bf, "sw_mtu_hw", QDCLI_ATTR_U16, 16, QDCLI_ROLE_GAUGE, nullptr, "sw_rx_queues", "sw_rx_qos_group", "Switch-wide stream: mtu hw", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00c0, "sw_mtu_configured", QDCLI_ATTR_U16, 16, QDCLI_ROLE_GAUGE, nullptr, "sw_rx_queues", "sw_rx_qos_group", "Switch-wide stream: mtu configured", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x02ff00c1, "sw_no_drop", QDCLI_ATTR_U8, 8, QDCLI_ROLE_LABEL, nullptr, "sw_rx_queues", "sw_rx_qos_group", "Switch-wide stream: no drop", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00c2, "sw_xon", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, nullptr, "sw_rx_queues", "sw_rx_qos_group", "Switch-wide stream: xon", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00c3, "sw_xoff", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, nullptr, "sw_rx_queues", "sw_rx_qos_group", "Switch-wide stream: xoff", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00c4, "sw_rx_port_pkts", QDCLI_ATTR_U32, 32, QDCLI_ROLE_COUNTER, "packets", "sw_rx_queues", "sw_rx_qos_group", "Switch-wide stream: rx port pkts", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00c5, "sw_ucast_to_xbar", QDCLI_ATTR_U32, 32, QDCLI_ROLE_COUNTER, "packets", "sw_rx_queues", "sw_rx_qos_group", "Switch-wide stream: ucast to xbar", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00c6, "sw_mcast_to_xbar", QDCLI_ATTR_U32, 32, QDCLI_ROLE_COUNTER, "packets", "sw_rx_queues", "sw_rx_qos_group", "Switch-wide stream: mcast to xbar", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00c7, "sw_ucast_from_xbar", QDCLI_ATTR_U32, 32, QDCLI_ROLE_COUNTER, "packets", "sw_rx_queues", "sw_rx_qos_group", "Switch-wide stream: ucast from xbar", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00c8, "sw_tx_port_pkts", QDCLI_ATTR_U32, 32, QDCLI_ROLE_COUNTER, "packets", "sw_rx_queues", "sw_rx_qos_group", "Switch-wide stream: tx port pkts", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00c9, "sw_ingress_discards", QDCLI_ATTR_U32, 32, QDCLI_ROLE_COUNTER, "packets", "sw_rx_queues", "sw_rx_qos_group", "Switch-wide stream: ingress discards", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x02ff00ca, "sw_pfc_rx_active", QDCLI_ATTR_U32, 32, QDCLI_ROLE_LABEL, nullptr, "sw_rx_queues", "sw_rx_qos_group", "Switch-wide stream: pfc rx active", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x02ff00cb, "sw_pfc_tx_active", QDCLI_ATTR_U32, 32, QDCLI_ROLE_LABEL, nullptr, "sw_rx_queues", "sw_rx_qos_group", "Switch-wide stream: pfc tx active", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00cc, "sw_mcast_from_xbar_total", QDCLI_ATTR_U32, 32, QDCLI_ROLE_COUNTER, "packets", nullptr, nullptr, "Switch-wide stream: mcast from xbar total", nullptr, 0, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00cd, "sw_hif_slot", QDCLI_ATTR_U8, 8, QDCLI_ROLE_IDENTIFIER, nullptr, nullptr, nullptr, "Switch-wide stream: hif slot", nullptr, 0, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00ce, "sw_hif_if_index", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, nullptr, nullptr, "Switch-wide stream: hif if index", nullptr, 0, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00cf, "sw_ib_qos_group", QDCLI_ATTR_U8, 8, QDCLI_ROLE_IDENTIFIER, nullptr, "sw_input_buffers", "sw_ib_qos_group", "Switch-wide stream: ib qos group", nullptr, F_ROW | F_LIST, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00d0, "sw_ib_frh", QDCLI_ATTR_U8, 8, QDCLI_ROLE_GAUGE, nullptr, "sw_input_buffers", "sw_ib_qos_group", "Switch-wide stream: ib frh", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x02ff00d1, "sw_ib_no_drop", QDCLI_ATTR_U8, 8, QDCLI_ROLE_LABEL, nullptr, "sw_input_buffers", "sw_ib_qos_group", "Switch-wide stream: ib no drop", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00d2, "sw_ib_cos", QDCLI_ATTR_U8, 8, QDCLI_ROLE_IDENTIFIER, nullptr, "sw_input_buffers", "sw_ib_qos_group", "Switch-wide stream: ib cos", nullptr, F_LIST | F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00d3, "sw_ib_xon", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, nullptr, "sw_input_buffers", "sw_ib_qos_group", "Switch-wide stream: ib xon", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00d4, "sw_ib_xoff", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, nullptr, "sw_input_buffers", "sw_ib_qos_group", "Switch-wide stream: ib xoff", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00d5, "sw_ib_buffer_size", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, nullptr, "sw_input_buffers", "sw_ib_qos_group", "Switch-wide stream: ib buffer size", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00d6, "sw_queue_id", QDCLI_ATTR_U8, 8, QDCLI_ROLE_IDENTIFIER, nullptr, "sw_queues", "sw_queue_id", "Switch-wide stream: queue id", nullptr, F_ROW, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x11ff00d7, "sw_queue_qos_group", QDCLI_ATTR_I32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "sw_queues", "sw_queue_id", "Switch-wide stream: queue qos group", nullptr, F_LIST | F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00d8, "sw_queue_cos", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "sw_queues", "sw_queue_id", "Switch-wide stream: queue cos", nullptr, F_LIST | F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00d9, "sw_queue_priority", QDCLI_ATTR_U8, 8, QDCLI_ROLE_GAUGE, nullptr, "sw_queues", "sw_queue_id", "Switch-wide stream: queue priority", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00da, "sw_queue_bandwidth", QDCLI_ATTR_U8, 8, QDCLI_ROLE_GAUGE, nullptr, "sw_queues", "sw_queue_id", "Switch-wide stream: queue bandwidth", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00db, "sw_queue_mtu", QDCLI_ATTR_U16, 16, QDCLI_ROLE_GAUGE, nullptr, "sw_queues", "sw_queue_id", "Switch-wide stream: queue mtu", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00dc, "sw_buffer_threshold", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, nullptr, nullptr, nullptr, "Switch-wide stream: buffer threshold", nullptr, 0, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00dd, "sw_queue_limit", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, nullptr, nullptr, nullptr, "Switch-wide stream: queue limit", nullptr, 0, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00de, "sw_queue_limit_tx", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, nullptr, nullptr, nullptr, "Switch-wide stream: queue limit tx", nullptr, 0, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00df, "sw_queue_limit_rx", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, nullptr, nullptr, nullptr, "Switch-wide stream: queue limit rx", nullptr, 0, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00e0, "sw_queue_limit_tx_alt", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, nullptr, nullptr, nullptr, "Switch-wide stream: queue limit tx alt", nullptr, 0, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00e1, "sw_queue_limit_rx_alt", QDCLI_ATTR_U32, 32, QDCLI_ROLE_GAUGE, nullptr, nullptr, nullptr, "Switch-wide stream: queue limit rx alt", nullptr, 0, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00e2, "sw_stats_queue", QDCLI_ATTR_U8, 8, QDCLI_ROLE_IDENTIFIER, nullptr, "sw_queue_stats", "sw_stats_queue", "Switch-wide stream: stats queue", nullptr, F_ROW, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00e3, "sw_stats_rx", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "sw_queue_stats", "sw_stats_queue", "Switch-wide stream: stats rx", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00e4, "sw_stats_tx", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "sw_queue_stats", "sw_stats_queue", "Switch-wide stream: stats tx", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00e5, "sw_rx_row_queue", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "sw_rx_queue_stats", "sw_rx_row_queue", "Switch-wide stream: rx row queue", nullptr, F_ROW, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00e6, "sw_rx_row_received", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "sw_rx_queue_stats", "sw_rx_row_queue", "Switch-wide stream: rx row received", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00e7, "sw_rx_row_tail_drop", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "sw_rx_queue_stats", "sw_rx_row_queue", "Switch-wide stream: rx row tail drop", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00e8, "sw_rx_row_no_buffer", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "sw_rx_queue_stats", "sw_rx_row_queue", "Switch-wide stream: rx row no buffer", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00e9, "sw_rx_row_mac_error", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "sw_rx_queue_stats", "sw_rx_row_queue", "Switch-wide stream: rx row mac error", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00ea, "sw_tx_row_queue", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "sw_tx_queue_stats", "sw_tx_row_queue", "Switch-wide stream: tx row queue", nullptr, F_ROW, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00eb, "sw_tx_row_transmitted", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "sw_tx_queue_stats", "sw_tx_row_queue", "Switch-wide stream: tx row transmitted", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00ec, "sw_tx_row_tail_drop", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "sw_tx_queue_stats", "sw_tx_row_queue", "Switch-wide stream: tx row tail drop", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00ed, "sw_tx_row_no_buffer", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "sw_tx_queue_stats", "sw_tx_row_queue", "Switch-wide stream: tx row no buffer", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00ee, "sw_tx_row_mac_error", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "sw_tx_queue_stats", "sw_tx_row_queue", "Switch-wide stream: tx row mac error", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00ef, "sw_tx_row_mcast_tail_drop", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", "sw_tx_queue_stats", "sw_tx_row_queue", "Switch-wide stream: tx row mcast tail drop", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00f0, "sw_port_rx_drop", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", nullptr, nullptr, "Switch-wide stream: port rx drop", nullptr, 0, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00f1, "sw_port_rx_mcast_drop", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", nullptr, nullptr, "Switch-wide stream: port rx mcast drop", nullptr, 0, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00f2, "sw_port_rx_error", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", nullptr, nullptr, "Switch-wide stream: port rx error", nullptr, 0, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00f3, "sw_port_tx_drop", QDCLI_ATTR_U64, 64, QDCLI_ROLE_COUNTER, "packets", nullptr, nullptr, "Switch-wide stream: port tx drop", nullptr, 0, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x02ff00f4, "sw_mux_ovflow", QDCLI_ATTR_FLAGS8, 64, QDCLI_ROLE_LABEL, nullptr, nullptr, nullptr, "Switch-wide stream: mux ovflow", nullptr, 0, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x02ff00f5, "sw_pfc_enabled", QDCLI_ATTR_U8, 8, QDCLI_ROLE_LABEL, nullptr, nullptr, nullptr, "Switch-wide stream: pfc enabled", nullptr, 0, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff00f6, "sw_pause_cos", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "sw_pause", "sw_pause_cos", "Switch-wide stream: pause cos", nullptr, F_ROW, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x11ff00f7, "sw_pause_qos_group", QDCLI_ATTR_I32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "sw_pause", "sw_pause_cos", "Switch-wide stream: pause qos group", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x02ff00f8, "sw_rx_pause", QDCLI_ATTR_U8, 8, QDCLI_ROLE_LABEL, nullptr, "sw_pause", "sw_pause_cos", "Switch-wide stream: rx pause", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x02ff00f9, "sw_tx_pause", QDCLI_ATTR_U8, 8, QDCLI_ROLE_LABEL, nullptr, "sw_pause", "sw_pause_cos", "Switch-wide stream: tx pause", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x02ff00fa, "sw_masked_rx_pause", QDCLI_ATTR_U8, 8, QDCLI_ROLE_LABEL, nullptr, "sw_pause", "sw_pause_cos", "Switch-wide stream: masked rx pause", nullptr, F_OPT, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    // Told to a host's observer beside the printed text (qdcli/observer.h),
    // never a printer argument.
    {0x14ff0101, "ingress_discards_bits", QDCLI_ATTR_U32, 32, QDCLI_ROLE_NONE, nullptr, "rx_queues", "rx_qos_group", "Width in bits of the field ingress_discards came from: 16 or 32 (where it wraps)", nullptr, 0, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff0102, "ext_queue", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "ingress_queues", "ext_queue", "Ingress queue of a scheduling row of the extended report", nullptr, F_ROW, nullptr, QDCLI_METRIC_NONE, nullptr, 0, "queue", nullptr, nullptr},
    {0x30ff0103, "ext_sched", QDCLI_ATTR_TEXT, 0, QDCLI_ROLE_LABEL, nullptr, "ingress_queues", "ext_queue", "Scheduling of the ingress queue: dwrr or sp", nullptr, F_STATE, "ingress_queue", QDCLI_METRIC_INFO, nullptr, 0, "scheduling", nullptr, nullptr},
    {0x30ff0104, "port_glb_type", QDCLI_ATTR_TEXT, 0, QDCLI_ROLE_IDENTIFIER, nullptr, "port_map", "port_glb_idx", "Port class of a port-map row: enif, ihif or inif", nullptr, F_STATE, nullptr, QDCLI_METRIC_NONE, nullptr, 0, "port_class", nullptr, nullptr},
    {0x14ff0105, "mcast_queue", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "mcast_queues", "mcast_queue", "Multicast WRR queue of a CoS-map row", nullptr, F_ROW, nullptr, QDCLI_METRIC_NONE, nullptr, 0, "queue", nullptr, nullptr},
    {0x14ff0106, "mcast_cos", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "mcast_queues", "mcast_queue", "CoS values mapped to the multicast queue", nullptr, F_LIST, "mcast_queue", QDCLI_METRIC_INFO, nullptr, 0, "cos", nullptr, nullptr},
    {0x30ff0107, "cleared", QDCLI_ATTR_TEXT, 0, QDCLI_ROLE_LABEL, nullptr, nullptr, nullptr, "What a clear cleared: queuing, qos or pause counters", nullptr, F_LIST | F_STATE, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff0108, "pause_module", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "pause_counts", "pause_port", "Module of a port with pause events (from 1)", nullptr, 0, nullptr, QDCLI_METRIC_NONE, nullptr, 0, "module", nullptr, nullptr},
    {0x14ff0109, "pause_port", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "pause_counts", "pause_port", "Port with pause events, within its module (from 1)", nullptr, F_ROW, nullptr, QDCLI_METRIC_NONE, nullptr, 0, "port", nullptr, nullptr},
    {0x14ff010a, "pause_events", QDCLI_ATTR_U32, 32, QDCLI_ROLE_COUNTER, "events", "pause_counts", "pause_port", "Pause events logged on the port", nullptr, 0, "pause_events", QDCLI_METRIC_COUNTER, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff010c, "event_module", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "pause_events", "event_port", "Module of a logged pause event (from 1)", nullptr, 0, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x14ff010d, "event_port", QDCLI_ATTR_U32, 32, QDCLI_ROLE_IDENTIFIER, nullptr, "pause_events", "event_port", "Port of a logged pause event, within its module (from 1)", nullptr, F_ROW, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {0x30ff010b, "event_time", QDCLI_ATTR_TEXT, 0, QDCLI_ROLE_LABEL, nullptr, "pause_events", "event_port", "Time stamp of a logged pause event, as logged", nullptr, 0, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},
    {58, "sw_run_hif_report", QDCLI_ATTR_MARKER, 0, QDCLI_ROLE_NONE, nullptr, nullptr, nullptr, "Switch-wide stream: the rest of the stream is a host-interface report", nullptr, 0, nullptr, QDCLI_METRIC_NONE, nullptr, 0, nullptr, nullptr, nullptr},

};

// The words of each state attribute, as structured output shows them.
struct States {
    std::uint32_t id;
    const char *const *words;
};
constexpr const char *kPriorityWrr[] = {"priority", "wrr", nullptr};
constexpr const char *kDrop[] = {"drop", "no-drop", nullptr};
constexpr const char *kActive[] = {"active", "inactive", nullptr};
constexpr const char *kPortType[] = {"nif", "hif", nullptr};
constexpr const char *kControlQueue[] = {"ctrl-hi", "ctrl-lo", nullptr};
constexpr const char *kPriWrr[] = {"pri", "wrr", nullptr};
constexpr const char *kQueueKind[] = {"ctrl", "data", nullptr};
constexpr const char *kYesNo[] = {"yes", "no", nullptr};
constexpr const char *kPause[] = {"xon", "xoff", nullptr};
constexpr const char *kScheduling[] = {"dwrr", "sp", nullptr};
constexpr const char *kPortClass[] = {"enif", "ihif", "inif", nullptr};
constexpr const char *kCleared[] = {"queuing", "qos", "pause", nullptr};
constexpr States kStates[] = {
    {0x30ff003c, kPriorityWrr}, {0x30ff0044, kDrop},         {0x30ff004d, kActive},      {0x30ff004e, kActive},
    {0x30ff0071, kPortType},    {0x30ff0077, kDrop},         {0x30ff0088, kControlQueue}, {0x30ff0080, kPriWrr},
    {0x30ff0089, kQueueKind},   {0x30ff009c, kActive},       {0x30ff009e, kActive},      {0x30ff00a0, kYesNo},
    {0x30ff00a6, kPause},       {0x30ff00a7, kPause},        {0x30ff00a8, kPause},       {0x14ff00ae, kYesNo},
    {0x30ff00a9, kQueueKind},   {0x30ff0103, kScheduling},   {0x30ff0104, kPortClass},   {0x30ff0107, kCleared},
};

}  // namespace

extern "C" {

const char *const *qdcli_attr_states(uint32_t id) {
    for (const States &s : kStates)
        if (s.id == id) return s.words;
    return nullptr;
}


const qdcli_attr_info *qdcli_attr_catalogue(size_t *count) {
    if (count != nullptr) *count = std::size(kCatalogue);
    return kCatalogue;
}

const qdcli_attr_info *qdcli_attr_find(uint32_t id) {
    for (const qdcli_attr_info &a : kCatalogue)
        if (a.id == id) return &a;
    return nullptr;
}

const qdcli_attr_info *qdcli_attr_find_name(const char *name) {
    if (name == nullptr) return nullptr;
    for (const qdcli_attr_info &a : kCatalogue)
        if (std::strcmp(a.name, name) == 0) return &a;
    return nullptr;
}

}  // extern "C"

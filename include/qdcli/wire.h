// SPDX-License-Identifier: MIT
/*
 * Wire records and constants shared by the queuing daemon, the line-card
 * statistics agents and the command handlers.
 *
 * Requests to the daemon are in host order. Replies are decoded field by
 * field through a bounds-checked reader (never by casting a payload onto one
 * of these records); the records below describe what is sent.
 */
#ifndef QDCLI_WIRE_H
#define QDCLI_WIRE_H

#include <stdint.h>

#include "qdcli/platform.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Attribute IDs: type byte, 0xff, 16-bit number ---- */
#define ATTR_TYPE_U8        0x02u
#define ATTR_TYPE_IF_INDEX  0x0cu
#define ATTR_TYPE_INT32     0x11u
#define ATTR_TYPE_UINT      0x14u
#define ATTR_TYPE_U64       0x15u
#define ATTR_TYPE_TEXT      0x30u
#define ATTR_ID(type, number) ((((uint32_t)(type)) << 24) | 0x00ff0000u | ((uint32_t)(number) & 0xffffu))
#define ATTR_ID_TYPE(id)    ((uint32_t)(id) >> 24)
#define ATTR_ID_NUMBER(id)  ((uint32_t)(id) & 0xffffu)

#define ATTR_IF_INDEX        0x0cff0039u /* request attribute: an interface index */
#define ATTR_RUN_HIF_REPORT  58u         /* switch-wide stream: run the host-interface report */

/* ---- Interface type codes (if_index_get_type) ---- */
#define IF_TYPE_ETH_ALT   1u    /* front-panel type handled like Ethernet */
#define IF_TYPE_ETH       26u   /* Ethernet; the only type with sub-interface refusal */
#define IF_TYPE_HIF       31u   /* host interface of a remote port extender */

/* ---- Shell identifiers ---- */
#define CMD_ID_SHOW_QUEUING_IF   59u
#define CMD_ID_UNSUPPORTED_MSG   18u  /* the Ethernet report tells "Unsupported interface" only here */
#define PARAM_ID_IF_INDEX        0x40200001u
#define PARAM_TYPE_QUEUE         19u  /* CoS map: queue number */
#define PARAM_TYPE_COS           20u  /* CoS map: CoS value */
#define PARAM_TYPE_MEMSTATS_DETAIL 2u

/* ---- Platform services ---- */
#define SSE_OP_PLATFORM_TYPE     1077u
#define SSE_OP_ONBOARD_LOG       1128u
#define ONBOARD_LOG_PAUSE_EVENTS 6u
#define ONBOARD_LOG_PAUSE_COUNTS 7u
#define PAUSE_LOG_FTOK_PATH      "vrid/tessikusd_intf.h"
#define PAUSE_LOG_FTOK_ID        65
#define PAUSE_EVENT_REC_SIZE     268u

/* ---- Queuing daemon ---- */
#define MTS_NODE_LOCAL   0xfe000000u
#define QD_MTS_SAP       612u
#define QD_CLI_OPC       0x20002u

#define QD_CLI_CMD_SHOW_IF_QUEUING   17u
#define QD_CLI_CMD_CLEAR_QUEUING_ALL 18u
#define QD_CLI_CMD_CONF_WRR_COSMAP   19u
#define QD_CLI_CMD_SHOW_WRR_COSMAP   20u
#define QD_CLI_CMD_NO_WRR_COSMAP     21u
#define QD_CLI_CMD_GET_NIF_PORT      22u
#define QD_CLI_CMD_SHOW_IF_EXTEND    23u
#define QD_CLI_CMD_CLEAR_QUEUING_IF  24u

#define QD_STATUS_UNSUPPORTED 0x41f70012u

/* Request to the queuing daemon, 12 bytes, host order. */
typedef struct qd_cli_req {
    uint8_t command;
    uint8_t reserved[3];
    uint32_t if_index;
    uint32_t arg;
} qd_cli_req;

/* Debug-dump records (sdwrap_debug_dump), 16 bytes, host order. */
#define QD_DEBUG_FUNC_MEMSTATS  "mtrack_dump_memstats"
#define QD_DEBUG_FUNC_PRINT_ALL "qd_debug_eng_print_all"
typedef struct qd_debug_req {
    uint32_t selector_word;     /* selector << 24 */
    uint32_t zero;
    uint32_t arg;
    uint32_t if_index;
} qd_debug_req;
typedef struct qd_memstats_req {
    uint32_t zero;
    uint32_t detail;
    uint32_t five;
    uint32_t all_ones;
} qd_memstats_req;

/* ---- Line-card statistics agents ---- */
#define LC_STATS_SAP   620u
#define LC_STATS_OPC   111638u
#define LC_STATS_CMD_HIF_QUEUING     16u
#define LC_STATS_CMD_INTERNAL_PORTS  23u
#define LC_STATS_CMD_VAQ_DROPS       27u
#define LC_STATS_RECV_WORD2          5u

/* Header of every line-card request and reply, 32 bytes. Multi-byte fields
 * are big-endian except fixed_one, which is the bytes 01 00 00 00. */
typedef struct lc_stats_hdr {
    uint8_t cmd;
    uint8_t variant;
    uint8_t count;
    uint8_t reserved0;
    uint8_t vaq_id[4];
    uint8_t reserved1[4];
    uint8_t slot[4];
    uint8_t reserved2[4];
    uint8_t if_index[4];
    uint8_t fixed_one[4];
    uint8_t status[4];
} lc_stats_hdr;

/* Line-card request, 40 bytes. */
typedef struct lc_stats_req {
    lc_stats_hdr hdr;
    uint8_t target_if_index[4];
    uint8_t reserved[4];
} lc_stats_req;

/* ---- Reply layouts (sizes the decoders rely on) ---- */
#define QD_IF_QUEUING_HDR_SIZE      48u
#define QD_IF_QOS_GROUP_REC_SIZE    152u
#define QD_IF_QUEUING_EXT_RSP_SIZE  413u
#define LC_STATS_HDR_SIZE           32u
#define HIF_QUEUING_INFO_SIZE       1108u
#define LC_PORT_REC_SIZE            84u
#define PORT_TYPE_NIF               2u
#define QUEUE_FLAG_CTRL             0x02u

QDCLI_STATIC_ASSERT(sizeof(qd_cli_req) == 12, "qd_cli_req is 12 bytes");
QDCLI_STATIC_ASSERT(sizeof(qd_debug_req) == 16, "qd_debug_req is 16 bytes");
QDCLI_STATIC_ASSERT(sizeof(qd_memstats_req) == 16, "qd_memstats_req is 16 bytes");
QDCLI_STATIC_ASSERT(sizeof(lc_stats_hdr) == 32, "lc_stats_hdr is 32 bytes");
QDCLI_STATIC_ASSERT(offsetof(lc_stats_hdr, fixed_one) == 24, "fixed_one at 24");
QDCLI_STATIC_ASSERT(offsetof(lc_stats_hdr, status) == 28, "status at 28");
QDCLI_STATIC_ASSERT(sizeof(lc_stats_req) == 40, "lc_stats_req is 40 bytes");
QDCLI_STATIC_ASSERT(offsetof(lc_stats_req, target_if_index) == 32, "target_if_index at 32");

#ifdef __cplusplus
}
#endif

#endif /* QDCLI_WIRE_H */

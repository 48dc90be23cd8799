/*
 * Platform interface of libqdcli.so (LP64).
 *
 * The library calls these operations by name and never defines them: every
 * one of them is an undefined dynamic symbol of libqdcli.so, resolved at load
 * time against whatever the host provides (the simulated switch, a test
 * double or the switch's own platform libraries).
 *
 * Records keep every non-pointer field at the byte offset and size the
 * platform gives it; a pointer is 8 bytes at the next 8-aligned offset.
 * Bytes the library does not use are the platform's and are kept opaque here.
 */
#ifndef QDCLI_PLATFORM_H
#define QDCLI_PLATFORM_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
#include <cstddef>
#define QDCLI_STATIC_ASSERT(expr, msg) static_assert(expr, msg)
extern "C" {
#else
#define QDCLI_STATIC_ASSERT(expr, msg) _Static_assert(expr, msg)
#endif

/* One argument of a parsed command (the shell's record). */
typedef struct cmd_param_arg {
    uint32_t param_type;        /* kind of the argument in the grammar */
    uint32_t param_id;          /* parameter type, PARAM_ID_IF_INDEX for interfaces */
    uint8_t platform0[8];
    void *value;                /* the argument's value */
    uint8_t platform1[40];
} cmd_param_arg;

/* The shell's parameter-info record handed to every command handler. */
typedef struct cmd_paraminfo {
    uint8_t argc;               /* number of arguments, 0 to 255 */
    uint8_t platform0[11];
    uint32_t no_form;           /* non-zero for the negated ("no") form */
    uint8_t platform1[24];
    uint32_t mts_handle;        /* handle on the message transport */
    uint32_t cmd_id;            /* command identifier */
    uint8_t platform2[856];
    cmd_param_arg *args[256];   /* argument i at args[i], i = 1..argc; args[0] unused */
    uint8_t platform3[3504];
} cmd_paraminfo;

/* Printer argument: opaque, filled by cmd_prt_arg_make. */
typedef struct cmd_prt_arg {
    uint64_t opaque[2];
} cmd_prt_arg;

/* Message record of the transport: opaque, filled by mts_send / mts_recv. */
typedef struct mts_msg {
    uint64_t opaque[8];
} mts_msg;

/* Receive options: word 0 = 1, word 2 = 5 for line cards (0 for the daemon),
 * word 3 = the request/response token to wait for. */
typedef struct mts_recv_opts {
    uint32_t word[10];
} mts_recv_opts;

/* Response record of an attribute stream (the shell's). */
typedef struct cmd_rsp {
    uint32_t platform0[8];
    uint32_t mts_handle;        /* word 8 */
    uint32_t platform1[7];
} cmd_rsp;

/* Interface-enumeration descriptor. Names are NUL-terminated, zero-filled. */
typedef struct if_enum_desc {
    uint64_t type_mask;         /* host order; passed on as low word, high word */
    char lib_name[16];
    char enum_func[48];
    char show_func[48];
    char aux_func[48];
    char header_func[48];
    uint32_t selector;
    uint32_t reserved;
} if_enum_desc;

/* Interface-range record (the platform's); the library clears word 1. */
typedef struct if_range {
    uint32_t word0;
    uint32_t word1;
    uint8_t platform[520];
} if_range;

/* Result of one enumeration: count and a heap array the caller frees. */
typedef struct enum_result {
    int32_t count;
    uint32_t *indexes;
} enum_result;

/* Command line for vsh_system2. */
typedef struct vsh_cmd_req {
    uint32_t word0;             /* 1 */
    uint8_t reserved0[128];
    char cmd_line[256];         /* NUL-terminated command line */
    uint8_t reserved1[388];
    uint32_t word776;           /* 2 */
    uint32_t word780;           /* 2 */
    uint8_t reserved2[260];
} vsh_cmd_req;

/* Request record of sse_call. */
typedef struct sse_req {
    uint8_t length;             /* size of the answer */
    uint8_t reserved[7];
    void *answer;
} sse_req;

/* Module information of a remote port extender (the platform's). */
typedef struct satmgr_module_info {
    uint32_t word0;
    uint32_t node;              /* MTS node of the module's statistics agent */
    uint8_t platform[56];
} satmgr_module_info;

/* QoS counters of a host interface (the platform's). */
typedef struct qos_counter_block {
    uint8_t platform0[232];
    uint64_t tx_queue_drops;    /* host order */
    uint8_t platform1[32];
} qos_counter_block;

/* Answer of the onboard log service to the pause-count query. */
typedef struct pause_count_table {
    uint32_t subcmd;
    uint32_t counts[4][112];    /* counts[module - 1][port - 1] */
} pause_count_table;

/* One port-map entry of the internal statistics report. */
typedef struct qd_port_map_entry {
    uint16_t port_kind;
    uint16_t glb_idx;
    uint16_t asic_no;
    uint16_t port_type;
    uint16_t port_id;
} qd_port_map_entry;

/* Size of the card record written by get_card_module_info. */
#define QDCLI_CARD_RECORD_SIZE 6

QDCLI_STATIC_ASSERT(sizeof(cmd_param_arg) == 64, "cmd_param_arg is 64 bytes");
QDCLI_STATIC_ASSERT(offsetof(cmd_param_arg, param_type) == 0, "param_type at 0");
QDCLI_STATIC_ASSERT(offsetof(cmd_param_arg, param_id) == 4, "param_id at 4");
QDCLI_STATIC_ASSERT(offsetof(cmd_param_arg, value) == 16, "value at 16");
QDCLI_STATIC_ASSERT(sizeof(cmd_paraminfo) == 6456, "cmd_paraminfo is 6456 bytes");
QDCLI_STATIC_ASSERT(offsetof(cmd_paraminfo, argc) == 0, "argc at 0");
QDCLI_STATIC_ASSERT(offsetof(cmd_paraminfo, no_form) == 12, "no_form at 12");
QDCLI_STATIC_ASSERT(offsetof(cmd_paraminfo, mts_handle) == 40, "mts_handle at 40");
QDCLI_STATIC_ASSERT(offsetof(cmd_paraminfo, cmd_id) == 44, "cmd_id at 44");
QDCLI_STATIC_ASSERT(offsetof(cmd_paraminfo, args) == 904, "args at 904");
QDCLI_STATIC_ASSERT(sizeof(cmd_prt_arg) == 16, "cmd_prt_arg is 16 bytes");
QDCLI_STATIC_ASSERT(sizeof(mts_msg) == 64, "mts_msg is 64 bytes");
QDCLI_STATIC_ASSERT(sizeof(mts_recv_opts) == 40, "mts_recv_opts is 40 bytes");
QDCLI_STATIC_ASSERT(offsetof(cmd_rsp, mts_handle) == 32, "cmd_rsp mts_handle at 32");
QDCLI_STATIC_ASSERT(sizeof(if_enum_desc) == 224, "if_enum_desc is 224 bytes");
QDCLI_STATIC_ASSERT(offsetof(if_enum_desc, lib_name) == 8, "lib_name at 8");
QDCLI_STATIC_ASSERT(offsetof(if_enum_desc, enum_func) == 24, "enum_func at 24");
QDCLI_STATIC_ASSERT(offsetof(if_enum_desc, show_func) == 72, "show_func at 72");
QDCLI_STATIC_ASSERT(offsetof(if_enum_desc, aux_func) == 120, "aux_func at 120");
QDCLI_STATIC_ASSERT(offsetof(if_enum_desc, header_func) == 168, "header_func at 168");
QDCLI_STATIC_ASSERT(offsetof(if_enum_desc, selector) == 216, "selector at 216");
QDCLI_STATIC_ASSERT(sizeof(if_range) == 528, "if_range is 528 bytes");
QDCLI_STATIC_ASSERT(offsetof(if_range, word1) == 4, "if_range word 1 at 4");
QDCLI_STATIC_ASSERT(sizeof(enum_result) == 16, "enum_result is 16 bytes");
QDCLI_STATIC_ASSERT(offsetof(enum_result, indexes) == 8, "indexes at 8");
QDCLI_STATIC_ASSERT(sizeof(vsh_cmd_req) == 1044, "vsh_cmd_req is 1044 bytes");
QDCLI_STATIC_ASSERT(offsetof(vsh_cmd_req, cmd_line) == 132, "cmd_line at 132");
QDCLI_STATIC_ASSERT(offsetof(vsh_cmd_req, word776) == 776, "word at 776");
QDCLI_STATIC_ASSERT(offsetof(vsh_cmd_req, word780) == 780, "word at 780");
QDCLI_STATIC_ASSERT(sizeof(sse_req) == 16, "sse_req is 16 bytes");
QDCLI_STATIC_ASSERT(offsetof(sse_req, answer) == 8, "answer at 8");
QDCLI_STATIC_ASSERT(sizeof(satmgr_module_info) == 64, "satmgr_module_info is 64 bytes");
QDCLI_STATIC_ASSERT(offsetof(satmgr_module_info, node) == 4, "node at 4");
QDCLI_STATIC_ASSERT(sizeof(qos_counter_block) == 272, "qos_counter_block is 272 bytes");
QDCLI_STATIC_ASSERT(offsetof(qos_counter_block, tx_queue_drops) == 232, "tx_queue_drops at 232");
QDCLI_STATIC_ASSERT(sizeof(pause_count_table) == 1796, "pause_count_table is 1796 bytes");
QDCLI_STATIC_ASSERT(sizeof(qd_port_map_entry) == 10, "qd_port_map_entry is 10 bytes");

/* ---- Command shell and printer ---- */
uint32_t cmd_paraminfo_to_rxhandle(cmd_paraminfo *pinfo);
int32_t cmd_prt(uint32_t handle, const char *format, ...);
int32_t cmd_prt_arg_make(cmd_prt_arg *arg, uint32_t attr_id, const void *value, uint32_t length);
int32_t cmd_prt_send(uint32_t handle);
int32_t cmd_req_attr_getnext(uint32_t handle, void **value, uint32_t *length);
int32_t cmd_rsp_attr_getnext(cmd_rsp *rsp, void **value, uint32_t *length);
int32_t vsh_system2(vsh_cmd_req *req);

/* ---- Message transport ---- */
int32_t mts_send(uint32_t handle, uint32_t node, uint32_t sap, uint32_t opcode,
                 const void *payload, uint32_t length, mts_msg *msg,
                 uint32_t flags, uint32_t reserved);
uint32_t mts_rr_token_get(const mts_msg *msg);
int32_t mts_drop(uint32_t handle, mts_msg *msg);
int32_t mts_recv(uint32_t handle, mts_msg *msg, const mts_recv_opts *opts);
void *mts_payload_get(const mts_msg *msg);
uint32_t mts_payload_length_get(const mts_msg *msg);
int32_t sdwrap_debug_dump(uint32_t handle, uint32_t node, uint32_t sap,
                          const void *request, uint32_t length, const char *func_name);
const char *syserr2str(int32_t code);

/* ---- System services ---- */
int32_t sse_call(uint32_t op, sse_req *req);
int32_t sse_call2(uint32_t op, void *buffer, uint32_t length);
uint32_t sysmgr_vdc_get(void);
int32_t get_card_module_info(uint8_t *card_record);
uint32_t pfm_get_sw_card_id_from_module(void);

/* ---- Interface indexes and extenders ---- */
int32_t if_index_get_type(uint32_t if_index, uint8_t *type);
int32_t if_index_is_sub_intf(uint32_t if_index);
int32_t snprintf_if_index(char *buffer, size_t size, uint32_t if_index);
int32_t if_index_get_slot(uint32_t if_index, uint8_t *slot);
uint32_t hton_if_index(uint32_t if_index);
int32_t if_index_sat_get_sat_from_slot(uint8_t slot, uint8_t *sat);
int32_t if_index_sat_get_slot_from_sat_mod(uint32_t sat, uint32_t module, uint8_t *slot);
int32_t satmgr_get_module_info(uint8_t slot, satmgr_module_info *info);

/* ---- Statistics client ---- */
int32_t statscl_get_qos_counters(uint32_t a, uint32_t if_index, uint32_t b, qos_counter_block *block);
int32_t statscl_clear_qos_counters(uint32_t a, uint32_t if_index, uint32_t b, void *c);

/* ---- Interface enumeration ---- */
int32_t populate_intf_range(if_range *range, uint32_t a, uint32_t b, uint32_t c);
int32_t pinfo_basic_copy(cmd_paraminfo *copy, const cmd_paraminfo *source);
int32_t pinfo_insert_arg(cmd_paraminfo *copy, cmd_param_arg *arg);
int32_t populate_param_arg(cmd_param_arg *arg, uint32_t param_type, uint32_t param_id,
                           uint32_t a, uint32_t mask_low, uint32_t mask_high, if_range *range);
int32_t invoke_enumeration_function(const char *lib_name, const char *enum_func,
                                    cmd_paraminfo *copy, enum_result *result, int32_t *status);

#ifdef __cplusplus
}
#endif

#endif /* QDCLI_PLATFORM_H */

// SPDX-License-Identifier: MIT
/**
 * @file qdcli/platform.h
 * @brief Platform interface of libqdcli.so (LP64): the records the shell
 * hands to a handler and the operations the library calls.
 *
 * The library calls these operations by name and never defines them: every
 * one of them is an undefined dynamic symbol of libqdcli.so, resolved at load
 * time against whatever the host provides (the simulated switch libqdsim.so,
 * a test double or the switch's own platform libraries). A host that links
 * libqdcli.so must define all of them, or load a library that does, before
 * the first handler runs.
 *
 * Threads: the library has none of its own. It calls these operations only
 * from inside a handler, on the thread that called the handler, one call at a
 * time, and never from a signal handler. An operation may block (mts_recv()
 * waits for its reply). The library does not call a handler or an operation
 * again from inside an operation, except through vsh_system2(), whose command
 * may run another handler.
 *
 * Ownership: records passed by pointer are the caller's and live on its stack
 * unless said otherwise; the platform keeps no pointer to them after the call
 * returns, except a printer argument (until cmd_prt() returns) and an argument
 * inserted with pinfo_insert_arg(). What the platform hands back by pointer
 * is the platform's (payloads, attribute values, error texts), with one
 * exception: the index array of invoke_enumeration_function(), which the
 * caller frees with free().
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

/** One argument of a parsed command (the shell's record). */
typedef struct cmd_param_arg {
    uint32_t param_type;        /**< kind of the argument in the grammar */
    uint32_t param_id;          /**< parameter type, PARAM_ID_IF_INDEX for interfaces */
    uint8_t platform0[8];
    void *value;                /**< the argument's value */
    uint8_t platform1[40];
} cmd_param_arg;

/** The shell's parameter-info record handed to every command handler. */
typedef struct cmd_paraminfo {
    uint8_t argc;               /**< number of arguments, 0 to 255 */
    uint8_t platform0[11];
    uint32_t no_form;           /**< non-zero for the negated ("no") form */
    uint8_t platform1[24];
    uint32_t mts_handle;        /**< handle on the message transport */
    uint32_t cmd_id;            /**< command identifier */
    uint8_t platform2[856];
    cmd_param_arg *args[256];   /**< argument i at args[i], i = 1..argc; args[0] unused */
    uint8_t platform3[3504];
} cmd_paraminfo;

/** Printer argument: opaque, filled by cmd_prt_arg_make. */
typedef struct cmd_prt_arg {
    uint64_t opaque[2];
} cmd_prt_arg;

/** Message record of the transport: opaque, filled by mts_send / mts_recv. */
typedef struct mts_msg {
    uint64_t opaque[8];
} mts_msg;

/** Receive options: word 0 = 1, word 2 = 5 for line cards (0 for the daemon),
 * word 3 = the request/response token to wait for. */
typedef struct mts_recv_opts {
    uint32_t word[10];
} mts_recv_opts;

/** Response record of an attribute stream (the shell's). */
typedef struct cmd_rsp {
    uint32_t platform0[8];
    uint32_t mts_handle;        /**< word 8 */
    uint32_t platform1[7];
} cmd_rsp;

/** Interface-enumeration descriptor. Names are NUL-terminated, zero-filled. */
typedef struct if_enum_desc {
    uint64_t type_mask;         /**< host order; passed on as low word, high word */
    char lib_name[16];
    char enum_func[48];
    char show_func[48];
    char aux_func[48];
    char header_func[48];
    uint32_t selector;
    uint32_t reserved;
} if_enum_desc;

/** Interface-range record (the platform's); the library clears word 1. */
typedef struct if_range {
    uint32_t word0;
    uint32_t word1;
    uint8_t platform[520];
} if_range;

/** Result of one enumeration (invoke_enumeration_function()). */
typedef struct enum_result {
    int32_t count;              /**< number of indexes */
    uint32_t *indexes;          /**< malloc()ed by the platform, freed by the caller with free() */
} enum_result;

/** Command line for vsh_system2. */
typedef struct vsh_cmd_req {
    uint32_t word0;             /**< 1 */
    uint8_t reserved0[128];
    char cmd_line[256];         /**< NUL-terminated command line */
    uint8_t reserved1[388];
    uint32_t word776;           /**< 2 */
    uint32_t word780;           /**< 2 */
    uint8_t reserved2[260];
} vsh_cmd_req;

/** Request record of sse_call. */
typedef struct sse_req {
    uint8_t length;             /**< size of the answer */
    uint8_t reserved[7];
    void *answer;
} sse_req;

/** Module information of a remote port extender (the platform's). */
typedef struct satmgr_module_info {
    uint32_t word0;
    uint32_t node;              /**< MTS node of the module's statistics agent */
    uint8_t platform[56];
} satmgr_module_info;

/** QoS counters of a host interface (the platform's). */
typedef struct qos_counter_block {
    uint8_t platform0[232];
    uint64_t tx_queue_drops;    /**< host order */
    uint8_t platform1[32];
} qos_counter_block;

/** Answer of the onboard log service to the pause-count query. */
typedef struct pause_count_table {
    uint32_t subcmd;
    uint32_t counts[4][112];    /**< counts[module - 1][port - 1] */
} pause_count_table;

/** One port-map entry of the internal statistics report. */
typedef struct qd_port_map_entry {
    uint16_t port_kind;
    uint16_t glb_idx;
    uint16_t asic_no;
    uint16_t port_type;
    uint16_t port_id;
} qd_port_map_entry;

/** Size of the card record written by get_card_module_info. */
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

/**
 * @name Command shell and printer
 * Printer output is queued by cmd_prt() and reaches the user at
 * cmd_prt_send(); the shell renders it as text or as structured output from
 * the attribute IDs of the arguments. The library writes no other output
 * through these calls.
 * @{
 */

/** The printer handle of the command @p pinfo runs (its output channel),
 *  for cmd_prt() and cmd_prt_send(). Never fails. */
uint32_t cmd_paraminfo_to_rxhandle(cmd_paraminfo *pinfo);
/** Queues one piece of printer output on @p handle. Every conversion of the
 *  form `%[-][width][.precision]s` in @p format takes one
 *  `const cmd_prt_arg *` from the variable arguments; `%%` is a literal `%`;
 *  no other conversion is used. The values the arguments point at need only
 *  live until this call returns.
 *  @return 0 when queued, else a platform error code (the library goes on). */
int32_t cmd_prt(uint32_t handle, const char *format, ...);
/** Fills the printer argument @p arg with @p length bytes at @p value under
 *  @p attr_id (type byte 0x30 text; 0x14/0x15 unsigned of 4 or 8 bytes; 0x11
 *  signed; 0x02 one byte). The record keeps a pointer to @p value, not a copy.
 *  @return 0, or a platform error code. */
int32_t cmd_prt_arg_make(cmd_prt_arg *arg, uint32_t attr_id, const void *value, uint32_t length);
/** Sends everything queued on @p handle to the user (a flush).
 *  @return 0, or a platform error code. */
int32_t cmd_prt_send(uint32_t handle);
/** The next request attribute of the command on @p handle (for instance
 *  ATTR_IF_INDEX for each interface named). @p value is set to the shell's
 *  copy of the value, valid until the command ends; the caller frees nothing.
 *  @return the attribute ID (non-negative), or -1 after the last one. */
int32_t cmd_req_attr_getnext(uint32_t handle, void **value, uint32_t *length);
/** The next attribute of the stream behind the response record @p rsp; as
 *  cmd_req_attr_getnext(). @return the attribute ID, or -1 at the end. */
int32_t cmd_rsp_attr_getnext(cmd_rsp *rsp, void **value, uint32_t *length);
/** Runs the command line of @p req in the shell, synchronously; its output
 *  goes where that command prints. @return the command's status (0 success). */
int32_t vsh_system2(vsh_cmd_req *req);

/** @} */

/**
 * @name Message transport (MTS)
 * One exchange: mts_send(), mts_rr_token_get(), mts_drop() of the sent
 * message, mts_recv() of the reply, mts_payload_get() while the reply is
 * held, mts_drop() of the reply. Every message, sent or received, is released
 * with mts_drop() exactly once. The message records are the caller's
 * (usually on its stack); the messages they name are the platform's until
 * dropped. A send or receive blocks the calling thread only.
 * @{
 */

/** Sends @p length bytes at @p payload (copied before the call returns) to
 *  @p sap on @p node with @p opcode; @p msg receives the sent message.
 *  @p flags and @p reserved are 0.
 *  @return 0, or an MTS error code (nothing to release then). */
int32_t mts_send(uint32_t handle, uint32_t node, uint32_t sap, uint32_t opcode,
                 const void *payload, uint32_t length, mts_msg *msg,
                 uint32_t flags, uint32_t reserved);
/** The request/response token of the sent message @p msg, which its reply
 *  carries. Read it before the message is dropped. */
uint32_t mts_rr_token_get(const mts_msg *msg);
/** Releases the message @p msg (sent or received). Its payload must not be
 *  read afterwards. Releasing a message twice is a fault of the caller.
 *  @return 0, or an MTS error code. */
int32_t mts_drop(uint32_t handle, mts_msg *msg);
/** Blocks until the reply carrying the token in word 3 of @p opts arrives
 *  and fills @p msg with it; the caller releases it with mts_drop().
 *  @return 0, or an MTS error code (no message to release then). */
int32_t mts_recv(uint32_t handle, mts_msg *msg, const mts_recv_opts *opts);
/** The payload of the received message @p msg, valid until it is dropped;
 *  null when it has none. The caller never frees it. */
void *mts_payload_get(const mts_msg *msg);
/** The number of payload bytes of the received message @p msg (0 when it
 *  has none); no read of the payload goes past it. */
uint32_t mts_payload_length_get(const mts_msg *msg);
/** Asks the service @p sap on @p node to run its debug function
 *  @p func_name with the @p length bytes of @p request; the service's dump
 *  goes to standard output. @return 0, or an MTS error code. */
int32_t sdwrap_debug_dump(uint32_t handle, uint32_t node, uint32_t sap,
                          const void *request, uint32_t length, const char *func_name);
/** Words for a platform error code: a static string, never null, never
 *  freed; it may contain `%` and is printed as data, not as a format. */
const char *syserr2str(int32_t code);

/** @} */

/**
 * @name System services
 * @{
 */

/** Runs the system service operation @p op (SSE_OP_PLATFORM_TYPE) and
 *  writes its answer, at most @p req->length bytes, to @p req->answer (the
 *  caller's buffer). @return 0 on success. */
int32_t sse_call(uint32_t op, sse_req *req);
/** Runs @p op (SSE_OP_ONBOARD_LOG) on the caller's @p buffer of @p length
 *  bytes: the query in, the answer written back over it. @return 0 on
 *  success, -1 on failure. */
int32_t sse_call2(uint32_t op, void *buffer, uint32_t length);
/** The number of the virtual device context the shell runs in. */
uint32_t sysmgr_vdc_get(void);
/** Writes the QDCLI_CARD_RECORD_SIZE bytes of the card record to
 *  @p card_record (card identifier in bytes 2-3, host order).
 *  @return 0 on success; the record is not to be read otherwise. */
int32_t get_card_module_info(uint8_t *card_record);
/** The software card identifier of this module (low 16 bits). */
uint32_t pfm_get_sw_card_id_from_module(void);

/** @} */

/**
 * @name Interface indexes and extenders
 * @{
 */

/** Writes the interface type code of @p if_index (IF_TYPE_ETH,
 *  IF_TYPE_ETH_ALT, IF_TYPE_HIF, ...) to @p type. @return 0 on success. */
int32_t if_index_get_type(uint32_t if_index, uint8_t *type);
/** @return non-zero when @p if_index is a sub-interface. */
int32_t if_index_is_sub_intf(uint32_t if_index);
/** Writes the name of @p if_index ("Ethernet1/1") to @p buffer,
 *  NUL-terminated and cut to @p size bytes, also for an index it does not
 *  know. @return as snprintf(); the library reads only the buffer. */
int32_t snprintf_if_index(char *buffer, size_t size, uint32_t if_index);
/** Writes the slot of @p if_index to @p slot. @return 0 on success. */
int32_t if_index_get_slot(uint32_t if_index, uint8_t *slot);
/** @p if_index in the byte order of the line-card agents' requests. */
uint32_t hton_if_index(uint32_t if_index);
/** Writes the number of the extender in @p slot to @p sat.
 *  @return 0 on success (no extender there otherwise). */
int32_t if_index_sat_get_sat_from_slot(uint8_t slot, uint8_t *sat);
/** Writes the slot of module @p module of extender @p sat to @p slot.
 *  @return 0 on success (no such extender otherwise). */
int32_t if_index_sat_get_slot_from_sat_mod(uint32_t sat, uint32_t module, uint8_t *slot);
/** Fills @p info (the MTS node of the statistics agent of @p slot among it).
 *  @return 0 on success. */
int32_t satmgr_get_module_info(uint8_t slot, satmgr_module_info *info);

/** @} */

/**
 * @name Statistics client
 * @{
 */

/** Fills the caller's @p block with the QoS counters of the host interface
 *  @p if_index (@p a and @p b are 0). @return 0 on success. */
int32_t statscl_get_qos_counters(uint32_t a, uint32_t if_index, uint32_t b, qos_counter_block *block);
/** Clears the QoS counters of the host interface @p if_index (@p a, @p b 0,
 *  @p c null). @return 0 on success, else a platform error code. */
int32_t statscl_clear_qos_counters(uint32_t a, uint32_t if_index, uint32_t b, void *c);

/** @} */

/**
 * @name Interface enumeration
 * The library enumerates all interfaces in passes: it copies the command's
 * parameter-info record, adds one range argument and asks for the indexes
 * of one kind of interface per pass.
 * @{
 */

/** Fills the caller's @p range with the full interface range (@p a, @p b,
 *  @p c are 0). @return 0 on success. */
int32_t populate_intf_range(if_range *range, uint32_t a, uint32_t b, uint32_t c);
/** Copies the shell's fields of @p source into the caller's blank @p copy,
 *  without arguments. @return 0 on success. */
int32_t pinfo_basic_copy(cmd_paraminfo *copy, const cmd_paraminfo *source);
/** Appends @p arg to the arguments of @p copy; the record points at @p arg,
 *  which must outlive its use. @return 0 on success. */
int32_t pinfo_insert_arg(cmd_paraminfo *copy, cmd_param_arg *arg);
/** Fills @p arg as an interface-range argument over @p range for the
 *  interface types in @p mask_low / @p mask_high. @return 0 on success. */
int32_t populate_param_arg(cmd_param_arg *arg, uint32_t param_type, uint32_t param_id,
                           uint32_t a, uint32_t mask_low, uint32_t mask_high, if_range *range);
/** Runs the enumeration function @p enum_func of the platform library
 *  @p lib_name on @p copy. On success (return value and @p *status both
 *  non-negative) @p result holds @p result->count interface indexes in
 *  @p result->indexes, an array allocated with malloc() that the caller
 *  frees with free() (it may be null when the count is 0). On failure the
 *  caller does not touch @p result. */
int32_t invoke_enumeration_function(const char *lib_name, const char *enum_func,
                                    cmd_paraminfo *copy, enum_result *result, int32_t *status);

/** @} */

#ifdef __cplusplus
}
#endif

#endif /* QDCLI_PLATFORM_H */

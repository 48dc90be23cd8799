// SPDX-License-Identifier: MIT
// Scripted platform for handler tests.
//
// Defines every platform operation of the library's interface. A test
// scripts replies and platform answers in `qdtest::platform()`, runs a
// handler, and looks at what was sent, printed and released:
//   - each mts_send consumes the next scripted Reply (send failure, receive
//     failure, no payload, or payload bytes);
//   - a received payload ends exactly at an inaccessible page, so a read past
//     its end faults, and the page is unmapped when the message is dropped;
//   - the message ledger records every send, receive and drop; ledger_errors()
//     names each message not released exactly once, a sent message not
//     released before the receive, and any use of a released message;
//   - cmd_prt renders its typed arguments as text and records every call and
//     flush point.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "qdcli/observer.h"
#include "qdcli/platform.h"

namespace qdtest {

using Bytes = std::vector<std::uint8_t>;

// Bytes placed so that they end exactly where an inaccessible page begins:
// a read past them faults. unmap() gives the pages back.
struct GuardedBytes {
    void *map = nullptr;
    std::size_t map_size = 0;
    std::uint8_t *data = nullptr;
    std::size_t length = 0;

    void place(const Bytes &bytes);
    void unmap();
};

// Scripted outcome of one exchange.
struct Reply {
    std::int32_t send_error = 0;  // non-zero: mts_send fails with it
    std::int32_t recv_error = 0;  // non-zero: mts_recv fails with it
    bool no_payload = false;      // mts_payload_get returns null
    Bytes payload{};

    static Reply bytes(Bytes payload) { return {.payload = std::move(payload)}; }
    static Reply send_failure(std::int32_t code) { return {.send_error = code}; }
    static Reply recv_failure(std::int32_t code) { return {.recv_error = code}; }
    static Reply empty() { return {.no_payload = true}; }
};

struct SentRequest {
    std::uint32_t handle = 0;
    std::uint32_t node = 0;
    std::uint32_t sap = 0;
    std::uint32_t opcode = 0;
    Bytes payload{};
};

struct PrinterArg {
    std::uint32_t attr = 0;
    std::uint32_t length = 0;
    Bytes value;
    std::string text;  // rendered value
};

struct PrinterCall {
    std::uint32_t handle = 0;
    std::string format;
    std::vector<PrinterArg> args;
    std::string rendered;
    std::size_t flushes_before = 0;  // number of cmd_prt_send calls before this one
};

struct Interface {
    std::uint32_t if_index = 0;
    std::uint8_t type = 26;
    bool sub_intf = false;
    std::string name;
    std::uint8_t slot = 0;
};

struct EnumPass {
    std::int32_t rc = 0;
    std::int32_t status = 0;
    std::int32_t count = -1;                // -1: the number of indexes
    std::optional<std::vector<std::uint32_t>> indexes;  // nullopt: null array
    std::optional<std::int32_t> raw_count = std::nullopt;  // set: handed back as it is, even negative
};

struct EnumCall {
    std::string lib_name{};
    std::string enum_func{};
    std::string show_func{}, aux_func{}, header_func{};  // read from the block after enum_func
    std::uint32_t selector = 0;
    std::uint32_t param_type = 0, param_id = 0, a = 0, mask_low = 0, mask_high = 0;
};

struct DebugDump {
    std::uint32_t handle = 0, node = 0, sap = 0;
    Bytes request{};
    std::string func{};
    std::size_t stdout_pending = 0;  // bytes the caller had left in stdout's buffer
};

struct Attr {
    std::uint32_t id = 0;
    Bytes value;
};

// One event the library told the observer (qdcli/observer.h).
struct Event {
    enum class Kind { subject_begin, subject_end, row_begin, row_end, value, failure };
    Kind kind;
    std::string text;                // table name, failure message, or subject label
    std::uint32_t attr = 0;          // value
    Bytes bytes{};                   // value
    qdcli_failure_kind failure{};    // failure
};

struct Platform {
    // --- transport ---
    std::deque<Reply> replies;
    std::vector<SentRequest> sent;
    std::vector<Reply> taken;  // each scripted reply as mts_send took it, before any override
    std::vector<DebugDump> debug_dumps;
    std::map<std::int32_t, std::string> error_texts;  // syserr2str; default "error <code>"

    // --- printer ---
    std::uint32_t output_handle = 0x5eed;
    std::vector<PrinterCall> printer_calls;
    std::size_t flushes = 0;
    std::string printed;     // everything cmd_prt rendered
    std::string delivered;   // what cmd_prt_send delivered
    std::vector<Attr> request_attrs;   // cmd_req_attr_getnext
    std::size_t request_attr_pos = 0;
    std::vector<Attr> response_attrs;  // cmd_rsp_attr_getnext
    std::size_t response_attr_pos = 0;
    std::vector<vsh_cmd_req> vsh_commands;

    // --- system services ---
    std::int32_t platform_type = 2;
    std::int32_t platform_type_rc = 0;
    int platform_type_queries = 0;
    std::uint32_t vdc = 1;
    std::int32_t card_query_rc = 0;
    std::uint16_t card_id = 0;
    std::uint32_t sw_card_id = 0;
    std::function<std::int32_t(std::uint32_t op, void *buffer, std::uint32_t length)> sse_call2_handler;

    // --- interfaces and extenders ---
    std::map<std::uint32_t, Interface> interfaces;
    std::map<std::uint8_t, std::uint8_t> sat_of_slot;   // if_index_sat_get_sat_from_slot
    std::map<std::uint32_t, std::uint8_t> slot_of_sat;  // key: sat number passed (module 0)
    std::map<std::uint8_t, std::uint32_t> module_node;  // satmgr_get_module_info: slot -> node
    std::map<std::uint32_t, std::uint64_t> tx_queue_drops;  // statscl_get_qos_counters
    std::int32_t qos_counters_rc = 0;
    std::vector<std::uint32_t> qos_clears;
    std::int32_t qos_clear_rc = 0;

    // --- enumeration ---
    std::deque<EnumPass> enum_passes;
    std::vector<EnumCall> enum_calls;
    int range_inits = 0, pinfo_copies = 0, arg_inserts = 0;
    EnumCall next_call;  // the argument populate_param_arg made, for the next enumeration
    std::uint32_t range_word1_at_populate = 0xffffffffu;

    // --- the observer, when observe_events() is set ---
    std::vector<Event> events;

    void add_interface(std::uint32_t if_index, std::uint8_t type, std::string name, std::uint8_t slot = 0,
                       bool sub_intf = false);
};

Platform &platform();
// Changes the reply of exchange `index` (counted from 0 in a run) as
// mts_send takes it; kept across reset(). The fault matrix sets it.
std::function<void(std::size_t index, Reply &reply)> &reply_override();
// Whether the platform offers the library an observer that records its
// events into platform().events; kept across reset(). Off: no observer.
bool &observe_events();
// Clears all scripted state and the message ledger.
void reset();
// Messages still held, double drops, sent messages not dropped before the
// receive, uses of released messages. Empty when all is well.
std::vector<std::string> ledger_errors();
// Messages currently alive (sent or received, not yet dropped).
std::size_t live_messages();

// Runs `body` and returns what it wrote to standard output.
std::string capture_stdout(const std::function<void()> &body);

// A command as the shell hands it over.
class Command {
public:
    Command();
    cmd_paraminfo *info() { return &info_; }
    Command &handle(std::uint32_t mts_handle);
    Command &id(std::uint32_t cmd_id);
    Command &no_form(bool negated = true);
    Command &arg_u8(std::uint32_t param_type, std::uint8_t value, std::uint32_t param_id = 0);
    Command &arg_u32(std::uint32_t param_type, std::uint32_t value, std::uint32_t param_id = 0);
    Command &arg_null(std::uint32_t param_type, std::uint32_t param_id = 0);  // value pointer null

private:
    cmd_param_arg &push(std::uint32_t param_type, std::uint32_t param_id);
    cmd_paraminfo info_;
    std::vector<std::unique_ptr<cmd_param_arg>> args_;
    std::vector<std::unique_ptr<std::uint8_t[]>> values_;
};

// Little helpers for writing reply bytes by offset.
void put_be16(Bytes &b, std::size_t offset, std::uint16_t v);
void put_be32(Bytes &b, std::size_t offset, std::uint32_t v);
void put_host32(Bytes &b, std::size_t offset, std::uint32_t v);
// 64-bit counter as two big-endian words, low word first.
void put_be64_low_first(Bytes &b, std::size_t offset, std::uint64_t v);
std::uint32_t get_host32(const Bytes &b, std::size_t offset);
Bytes host32_bytes(std::uint32_t v);

}  // namespace qdtest

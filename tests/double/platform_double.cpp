// SPDX-License-Identifier: MIT
#include "double/platform_double.hpp"

#include <arpa/inet.h>
#include <stdio_ext.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "render/prt_render.hpp"
#include "support/capture_stdout.hpp"

namespace qdtest {
namespace {

constexpr std::uint64_t kMsgMagic = 0x51444d5347ull;  // marks records the double filled

struct LedgerEntry {
    bool received = false;
    bool dropped = false;
    int drops = 0;
    std::uint32_t token = 0;
    bool has_payload = false;
    GuardedBytes payload;
};

struct State {
    Platform platform;
    std::vector<LedgerEntry> ledger;  // id = index + 1
    std::vector<std::string> errors;
    std::uint32_t next_token = 0x1000;
    std::optional<std::size_t> last_sent;  // ledger index of the last sent message
};

State &state() {
    static State s;
    return s;
}

void stamp(mts_msg *msg, std::size_t id) {
    std::memset(msg, 0, sizeof *msg);
    msg->opaque[0] = kMsgMagic;
    msg->opaque[1] = id;
}

LedgerEntry *entry_of(const mts_msg *msg, const char *op) {
    if (msg == nullptr || msg->opaque[0] != kMsgMagic || msg->opaque[1] == 0 ||
        msg->opaque[1] > state().ledger.size()) {
        state().errors.push_back(std::string(op) + " on a record that holds no message");
        return nullptr;
    }
    return &state().ledger[msg->opaque[1] - 1];
}

}  // namespace

void Platform::add_interface(std::uint32_t if_index, std::uint8_t type, std::string name, std::uint8_t slot,
                             bool sub_intf) {
    interfaces[if_index] = Interface{if_index, type, sub_intf, std::move(name), slot};
}

Platform &platform() { return state().platform; }

void reset() {
    for (LedgerEntry &e : state().ledger) e.payload.unmap();
    state() .ledger.clear();
    state().errors.clear();
    state().platform = Platform{};
    state().next_token = 0x1000;
    state().last_sent.reset();
}

std::vector<std::string> ledger_errors() {
    std::vector<std::string> errors = state().errors;
    for (std::size_t i = 0; i < state().ledger.size(); ++i) {
        const LedgerEntry &e = state().ledger[i];
        const std::string what = (e.received ? "received message " : "sent message ") + std::to_string(i + 1);
        if (e.drops == 0) errors.push_back(what + " was never released");
        if (e.drops > 1) errors.push_back(what + " was released " + std::to_string(e.drops) + " times");
    }
    return errors;
}

std::size_t live_messages() {
    std::size_t live = 0;
    for (const LedgerEntry &e : state().ledger) live += e.drops == 0 ? 1 : 0;
    return live;
}

std::string capture_stdout(const std::function<void()> &body) { return testsupport::capture_stdout(body); }

Command::Command() { std::memset(&info_, 0, sizeof info_); }
Command &Command::handle(std::uint32_t mts_handle) {
    info_.mts_handle = mts_handle;
    return *this;
}
Command &Command::id(std::uint32_t cmd_id) {
    info_.cmd_id = cmd_id;
    return *this;
}
Command &Command::no_form(bool negated) {
    info_.no_form = negated ? 1 : 0;
    return *this;
}
cmd_param_arg &Command::push(std::uint32_t param_type, std::uint32_t param_id) {
    auto arg = std::make_unique<cmd_param_arg>();
    std::memset(arg.get(), 0, sizeof *arg);
    arg->param_type = param_type;
    arg->param_id = param_id;
    args_.push_back(std::move(arg));
    info_.argc = static_cast<std::uint8_t>(args_.size());
    info_.args[args_.size()] = args_.back().get();
    return *args_.back();
}
Command &Command::arg_u8(std::uint32_t param_type, std::uint8_t value, std::uint32_t param_id) {
    values_.push_back(std::make_unique<std::uint8_t[]>(1));
    values_.back()[0] = value;
    push(param_type, param_id).value = values_.back().get();
    return *this;
}
Command &Command::arg_u32(std::uint32_t param_type, std::uint32_t value, std::uint32_t param_id) {
    values_.push_back(std::make_unique<std::uint8_t[]>(4));
    std::memcpy(values_.back().get(), &value, 4);
    push(param_type, param_id).value = values_.back().get();
    return *this;
}
Command &Command::arg_null(std::uint32_t param_type, std::uint32_t param_id) {
    push(param_type, param_id).value = nullptr;
    return *this;
}

void GuardedBytes::place(const Bytes &bytes) {
    const std::size_t page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t data_pages = (bytes.size() + page - 1) / page;
    map_size = (data_pages + 1) * page;
    map = mmap(nullptr, map_size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (map == MAP_FAILED) std::abort();
    auto *guard = static_cast<std::uint8_t *>(map) + data_pages * page;
    mprotect(guard, page, PROT_NONE);
    data = guard - bytes.size();
    length = bytes.size();
    if (!bytes.empty()) std::memcpy(data, bytes.data(), bytes.size());
}

void GuardedBytes::unmap() {
    if (map) munmap(map, map_size);
    map = nullptr;
    data = nullptr;
}

void put_be16(Bytes &b, std::size_t offset, std::uint16_t v) {
    if (b.size() < offset + 2) b.resize(offset + 2);
    b[offset] = static_cast<std::uint8_t>(v >> 8);
    b[offset + 1] = static_cast<std::uint8_t>(v);
}
void put_be32(Bytes &b, std::size_t offset, std::uint32_t v) {
    if (b.size() < offset + 4) b.resize(offset + 4);
    for (int i = 0; i < 4; ++i) b[offset + i] = static_cast<std::uint8_t>(v >> (24 - 8 * i));
}
void put_host32(Bytes &b, std::size_t offset, std::uint32_t v) {
    if (b.size() < offset + 4) b.resize(offset + 4);
    std::memcpy(&b[offset], &v, 4);
}
void put_be64_low_first(Bytes &b, std::size_t offset, std::uint64_t v) {
    put_be32(b, offset, static_cast<std::uint32_t>(v));
    put_be32(b, offset + 4, static_cast<std::uint32_t>(v >> 32));
}
std::uint32_t get_host32(const Bytes &b, std::size_t offset) {
    std::uint32_t v = 0;
    if (b.size() >= offset + 4) std::memcpy(&v, &b[offset], 4);
    return v;
}
Bytes host32_bytes(std::uint32_t v) {
    Bytes b(4);
    std::memcpy(b.data(), &v, 4);
    return b;
}

}  // namespace qdtest

using qdtest::LedgerEntry;
using qdtest::state;

// ---------------------------------------------------------------------------
// The platform operations.
// ---------------------------------------------------------------------------
namespace qdtest {
bool &observe_events() {
    static bool observe = false;
    return observe;
}

namespace {

void record(Event e) { platform().events.push_back(std::move(e)); }

std::string subject_label(const qdcli_subject *s) {
    if (s == nullptr) return {};
    if (s->fields & QDCLI_SUBJECT_HAS_IF_NAME) return s->if_name != nullptr ? s->if_name : "";
    return "vaq " + std::to_string(s->vaq) + (s->fields & QDCLI_SUBJECT_HAS_ASIC ? " asic " + std::to_string(s->asic) : "");
}

const qdcli_observer kRecorder = {
    QDCLI_OBSERVER_VERSION,
    sizeof(qdcli_observer),
    nullptr,
    [](void *, const qdcli_subject *s) { record({Event::Kind::subject_begin, subject_label(s)}); },
    [](void *, const qdcli_subject *s) { record({Event::Kind::subject_end, subject_label(s)}); },
    [](void *, const char *table) { record({Event::Kind::row_begin, table != nullptr ? table : ""}); },
    [](void *, const char *table) { record({Event::Kind::row_end, table != nullptr ? table : ""}); },
    [](void *, std::uint32_t attr, const void *value, std::uint32_t length) {
        const auto *b = static_cast<const std::uint8_t *>(value);
        record({Event::Kind::value, {}, attr, Bytes(b, b + (b != nullptr ? length : 0))});
    },
    [](void *, const qdcli_failure *f) {
        record({Event::Kind::failure, f->message != nullptr ? f->message : "", 0, {}, f->kind});
    },
};

}  // namespace

}  // namespace qdtest

extern "C" const qdcli_observer *qdcli_observer_get(void) {
    return qdtest::observe_events() ? &qdtest::kRecorder : nullptr;
}

namespace qdtest {

std::function<void(std::size_t, Reply &)> &reply_override() {
    static std::function<void(std::size_t, Reply &)> hook;
    return hook;
}
}  // namespace qdtest

extern "C" {

int32_t mts_send(uint32_t handle, uint32_t node, uint32_t sap, uint32_t opcode, const void *payload,
                 uint32_t length, mts_msg *msg, uint32_t flags, uint32_t reserved) {
    auto &s = state();
    qdtest::SentRequest request{.handle = handle, .node = node, .sap = sap, .opcode = opcode};
    if (payload && length) {
        const auto *p = static_cast<const std::uint8_t *>(payload);
        request.payload.assign(p, p + length);
    }
    if (flags != 0 || reserved != 0) s.errors.push_back("mts_send with non-zero trailing arguments");
    // One exchange at a time: nothing received may still be held.
    if (qdtest::live_messages() != 0) s.errors.push_back("mts_send while a message is still held");
    s.platform.sent.push_back(request);
    if (s.platform.replies.empty()) {
        s.errors.push_back("mts_send with no scripted reply");
        return -99;
    }
    s.platform.taken.push_back(s.platform.replies.front());
    if (qdtest::reply_override()) qdtest::reply_override()(s.platform.taken.size() - 1, s.platform.replies.front());
    if (s.platform.replies.front().send_error != 0) {
        const std::int32_t code = s.platform.replies.front().send_error;
        s.platform.replies.pop_front();
        return code;
    }
    LedgerEntry entry;
    entry.token = s.next_token++;
    s.ledger.push_back(std::move(entry));
    s.last_sent = s.ledger.size() - 1;
    qdtest::stamp(msg, s.ledger.size());
    return 0;
}

uint32_t mts_rr_token_get(const mts_msg *msg) {
    LedgerEntry *e = qdtest::entry_of(msg, "mts_rr_token_get");
    if (!e) return 0;
    if (e->drops) state().errors.push_back("mts_rr_token_get on a released message");
    return e->token;
}

int32_t mts_drop(uint32_t handle, mts_msg *msg) {
    LedgerEntry *e = qdtest::entry_of(msg, "mts_drop");
    if (!e) return -1;
    ++e->drops;
    e->payload.unmap();
    return 0;
}

int32_t mts_recv(uint32_t handle, mts_msg *msg, const mts_recv_opts *opts) {
    auto &s = state();
    if (!s.last_sent) {
        s.errors.push_back("mts_recv without a sent request");
        return -98;
    }
    LedgerEntry &sent = s.ledger[*s.last_sent];
    if (sent.drops == 0) s.errors.push_back("sent message not released before the receive");
    if (!opts || opts->word[3] != sent.token) s.errors.push_back("mts_recv does not wait for the request's token");
    s.last_sent.reset();
    qdtest::Reply reply = std::move(s.platform.replies.front());
    s.platform.replies.pop_front();
    if (reply.recv_error != 0) return reply.recv_error;
    LedgerEntry entry;
    entry.received = true;
    entry.has_payload = !reply.no_payload;
    if (entry.has_payload) entry.payload.place(reply.payload);
    s.ledger.push_back(std::move(entry));
    qdtest::stamp(msg, s.ledger.size());
    return 0;
}

void *mts_payload_get(const mts_msg *msg) {
    LedgerEntry *e = qdtest::entry_of(msg, "mts_payload_get");
    if (!e) return nullptr;
    if (e->drops) {
        state().errors.push_back("mts_payload_get on a released message");
        return nullptr;
    }
    return e->has_payload ? e->payload.data : nullptr;
}

uint32_t mts_payload_length_get(const mts_msg *msg) {
    LedgerEntry *e = qdtest::entry_of(msg, "mts_payload_length_get");
    if (!e) return 0;
    if (e->drops) state().errors.push_back("mts_payload_length_get on a released message");
    return e->has_payload ? static_cast<uint32_t>(e->payload.length) : 0;
}

int32_t sdwrap_debug_dump(uint32_t handle, uint32_t node, uint32_t sap, const void *request, uint32_t length,
                          const char *func_name) {
    qdtest::DebugDump dump{.handle = handle, .node = node, .sap = sap};
    if (request && length) {
        const auto *p = static_cast<const std::uint8_t *>(request);
        dump.request.assign(p, p + length);
    }
    dump.func = func_name ? func_name : "";
    dump.stdout_pending = __fpending(stdout);
    state().platform.debug_dumps.push_back(dump);
    return 0;
}

const char *syserr2str(int32_t code) {
    static std::string text;
    const auto &texts = state().platform.error_texts;
    text = texts.count(code) ? texts.at(code) : "error " + std::to_string(code);
    return text.c_str();
}

uint32_t cmd_paraminfo_to_rxhandle(cmd_paraminfo *) { return state().platform.output_handle; }

int32_t cmd_prt_arg_make(cmd_prt_arg *arg, uint32_t attr_id, const void *value, uint32_t length) {
    qdprt::encode_arg(arg, attr_id, value, length);
    return 0;
}

int32_t cmd_prt(uint32_t handle, const char *format, ...) {
    auto &p = state().platform;
    qdtest::PrinterCall call;
    call.handle = handle;
    call.format = format ? format : "";
    call.flushes_before = p.flushes;
    std::vector<qdprt::ArgView> views;
    va_list ap;
    va_start(ap, format);
    const std::size_t n = qdprt::count_conversions(format);
    for (std::size_t i = 0; i < n; ++i) {
        const auto *record = va_arg(ap, const cmd_prt_arg *);
        const qdprt::ArgView view = qdprt::decode_arg(record);
        views.push_back(view);
        qdtest::PrinterArg arg;
        arg.attr = view.attr;
        arg.length = view.length;
        if (view.value && view.length) {
            const auto *b = static_cast<const std::uint8_t *>(view.value);
            arg.value.assign(b, b + view.length);
        }
        arg.text = qdprt::value_text(view);
        call.args.push_back(std::move(arg));
    }
    va_end(ap);
    call.rendered = qdprt::render(format, views);
    p.printed += call.rendered;
    p.printer_calls.push_back(std::move(call));
    return 0;
}

int32_t cmd_prt_send(uint32_t handle) {
    auto &p = state().platform;
    std::string pending;
    for (const auto &call : p.printer_calls)
        if (call.flushes_before == p.flushes) pending += call.rendered;
    p.delivered += pending;
    ++p.flushes;
    return 0;
}

static int32_t next_attr(std::vector<qdtest::Attr> &attrs, std::size_t &pos, void **value, uint32_t *length) {
    if (pos >= attrs.size()) return -1;
    qdtest::Attr &a = attrs[pos++];
    if (value) *value = a.value.empty() ? nullptr : a.value.data();
    if (length) *length = static_cast<uint32_t>(a.value.size());
    return static_cast<int32_t>(a.id);
}

int32_t cmd_req_attr_getnext(uint32_t, void **value, uint32_t *length) {
    auto &p = state().platform;
    return next_attr(p.request_attrs, p.request_attr_pos, value, length);
}

int32_t cmd_rsp_attr_getnext(cmd_rsp *, void **value, uint32_t *length) {
    auto &p = state().platform;
    return next_attr(p.response_attrs, p.response_attr_pos, value, length);
}

int32_t vsh_system2(vsh_cmd_req *req) {
    if (req) state().platform.vsh_commands.push_back(*req);
    return 0;
}

int32_t sse_call(uint32_t op, sse_req *req) {
    auto &p = state().platform;
    if (op != 1077) {
        state().errors.push_back("sse_call with an unknown operation");
        return -1;
    }
    ++p.platform_type_queries;
    if (req == nullptr || req->answer == nullptr || req->length != 4) {
        state().errors.push_back("sse_call with a malformed request record");
        return -1;
    }
    if (p.platform_type_rc != 0) return p.platform_type_rc;
    std::memcpy(req->answer, &p.platform_type, 4);
    return 0;
}

int32_t sse_call2(uint32_t op, void *buffer, uint32_t length) {
    auto &p = state().platform;
    return p.sse_call2_handler ? p.sse_call2_handler(op, buffer, length) : -1;
}

uint32_t sysmgr_vdc_get(void) { return state().platform.vdc; }

int32_t get_card_module_info(uint8_t *card_record) {
    auto &p = state().platform;
    if (p.card_query_rc != 0) return p.card_query_rc;
    std::memcpy(card_record + 2, &p.card_id, 2);
    return 0;
}

uint32_t pfm_get_sw_card_id_from_module(void) { return state().platform.sw_card_id; }

int32_t if_index_get_type(uint32_t if_index, uint8_t *type) {
    auto &ifs = state().platform.interfaces;
    auto it = ifs.find(if_index);
    if (it == ifs.end()) return -1;  // type left as the caller set it
    *type = it->second.type;
    return 0;
}

int32_t if_index_is_sub_intf(uint32_t if_index) {
    auto &ifs = state().platform.interfaces;
    auto it = ifs.find(if_index);
    return it != ifs.end() && it->second.sub_intf ? 1 : 0;
}

int32_t snprintf_if_index(char *buffer, size_t size, uint32_t if_index) {
    auto &ifs = state().platform.interfaces;
    auto it = ifs.find(if_index);
    const std::string name = it != ifs.end() ? it->second.name : "if-0x" + std::to_string(if_index);
    return std::snprintf(buffer, size, "%s", name.c_str());
}

int32_t if_index_get_slot(uint32_t if_index, uint8_t *slot) {
    auto &ifs = state().platform.interfaces;
    auto it = ifs.find(if_index);
    if (it == ifs.end()) return -1;
    *slot = it->second.slot;
    return 0;
}

uint32_t hton_if_index(uint32_t if_index) { return htonl(if_index); }

int32_t if_index_sat_get_sat_from_slot(uint8_t slot, uint8_t *sat) {
    auto &p = state().platform;
    auto it = p.sat_of_slot.find(slot);
    if (it == p.sat_of_slot.end()) return -1;
    *sat = it->second;
    return 0;
}

int32_t if_index_sat_get_slot_from_sat_mod(uint32_t sat, uint32_t module, uint8_t *slot) {
    auto &p = state().platform;
    auto it = p.slot_of_sat.find(sat);
    if (it == p.slot_of_sat.end() || module != 0) return -1;
    *slot = it->second;
    return 0;
}

int32_t satmgr_get_module_info(uint8_t slot, satmgr_module_info *info) {
    auto &p = state().platform;
    auto it = p.module_node.find(slot);
    if (it == p.module_node.end()) return -1;
    std::memset(info, 0, sizeof *info);
    info->node = it->second;
    return 0;
}

int32_t statscl_get_qos_counters(uint32_t a, uint32_t if_index, uint32_t b, qos_counter_block *block) {
    auto &p = state().platform;
    if (a != 0 || b != 0) state().errors.push_back("statscl_get_qos_counters with non-zero arguments");
    if (p.qos_counters_rc != 0) return p.qos_counters_rc;
    auto it = p.tx_queue_drops.find(if_index);
    if (it != p.tx_queue_drops.end()) block->tx_queue_drops = it->second;
    return 0;
}

int32_t statscl_clear_qos_counters(uint32_t a, uint32_t if_index, uint32_t b, void *c) {
    auto &p = state().platform;
    p.qos_clears.push_back(if_index);
    if (a != 0 || b != 0 || c != nullptr) state().errors.push_back("statscl_clear_qos_counters with non-zero arguments");
    return p.qos_clear_rc;
}

int32_t populate_intf_range(if_range *range, uint32_t, uint32_t, uint32_t) {
    ++state().platform.range_inits;
    range->word1 = 0xabcdu;  // the library must clear it afterwards
    return 0;
}

int32_t pinfo_basic_copy(cmd_paraminfo *copy, const cmd_paraminfo *source) {
    ++state().platform.pinfo_copies;
    std::memcpy(copy, source, sizeof *copy);
    return 0;
}

int32_t pinfo_insert_arg(cmd_paraminfo *, cmd_param_arg *) {
    ++state().platform.arg_inserts;
    return 0;
}

int32_t populate_param_arg(cmd_param_arg *, uint32_t param_type, uint32_t param_id, uint32_t a, uint32_t mask_low,
                           uint32_t mask_high, if_range *range) {
    auto &p = state().platform;
    p.next_call = {.param_type = param_type, .param_id = param_id, .a = a, .mask_low = mask_low, .mask_high = mask_high};
    p.range_word1_at_populate = range ? range->word1 : 0xffffffffu;
    return 0;
}

int32_t invoke_enumeration_function(const char *lib_name, const char *enum_func, cmd_paraminfo *, enum_result *result,
                                    int32_t *status) {
    auto &p = state().platform;
    qdtest::EnumCall call = p.next_call;
    call.lib_name = lib_name ? lib_name : "";
    call.enum_func = enum_func ? enum_func : "";
    if (enum_func) {  // the descriptor block from enum_func on travels as one unit
        const auto *desc = reinterpret_cast<const if_enum_desc *>(enum_func - offsetof(if_enum_desc, enum_func));
        call.show_func = desc->show_func;
        call.aux_func = desc->aux_func;
        call.header_func = desc->header_func;
        call.selector = desc->selector;
    }
    p.enum_calls.push_back(call);
    if (p.enum_passes.empty()) {
        *status = 0;
        result->count = 0;
        result->indexes = nullptr;
        return 0;
    }
    qdtest::EnumPass pass = p.enum_passes.front();
    p.enum_passes.pop_front();
    *status = pass.status;
    if (pass.rc < 0 || pass.status < 0) {
        // A failed pass may leave a stale array behind that is not the
        // caller's: neither to be read nor freed.
        static std::uint32_t stale[8];
        if (pass.indexes) {
            const std::size_t n = std::min(pass.indexes->size(), std::size(stale));
            std::copy_n(pass.indexes->begin(), n, stale);
            result->indexes = stale;
            result->count = static_cast<std::int32_t>(n);
        }
        return pass.rc;
    }
    if (pass.indexes) {
        const std::size_t n = pass.indexes->size();
        result->indexes = static_cast<uint32_t *>(std::malloc(n ? n * 4 : 1));
        if (n) std::memcpy(result->indexes, pass.indexes->data(), n * 4);
        result->count = pass.count >= 0 ? pass.count : static_cast<int32_t>(n);
    } else {
        result->indexes = nullptr;
        result->count = pass.count >= 0 ? pass.count : 0;
    }
    if (pass.raw_count) result->count = *pass.raw_count;
    return pass.rc;
}

}  // extern "C"

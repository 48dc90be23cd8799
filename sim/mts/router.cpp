// SPDX-License-Identifier: MIT
#include "mts/router.hpp"

#include <cstdio>
#include <exception>
#include <cstring>
#include <deque>
#include <map>
#include <memory>

#include "core/diagnostics.hpp"
#include "core/errors.hpp"
#include "core/lock.hpp"

namespace qdsim::mts {

Delivery Delivery::reply(std::vector<std::uint8_t> bytes) {
    Delivery d;
    d.payload = std::move(bytes);
    return d;
}
Delivery Delivery::no_payload() {
    Delivery d;
    d.has_payload = false;
    return d;
}
Delivery Delivery::send_failed(std::int32_t code) {
    Delivery d;
    d.kind = Kind::send_failure;
    d.error = code ? code : kErrSend;
    return d;
}
Delivery Delivery::recv_failed(std::int32_t code) {
    Delivery d;
    d.kind = Kind::recv_failure;
    d.error = code ? code : kErrRecv;
    return d;
}
Delivery Delivery::unrouted() {
    Delivery d;
    d.kind = Kind::no_route;
    return d;
}

namespace {

// Layout of the message record handed to the caller (64 opaque bytes).
constexpr std::uint64_t kLiveMagic = 0x51444d53474c4956ull;      // a record that names a message
constexpr std::uint64_t kReleasedMagic = 0x51444d5347444544ull;  // the record's message was dropped

struct Record {
    std::uint64_t magic;
    std::uint64_t id;
    std::uint32_t handle;
    std::uint32_t token;
};
static_assert(sizeof(Record) <= sizeof(mts_msg));

enum class Direction { sent, received };

struct Message {
    Direction dir = Direction::sent;
    std::uint32_t token = 0;
    Address peer;
    bool live = true;
    std::uint32_t length = 0;
    std::unique_ptr<std::uint8_t[]> payload;  // exactly `length` bytes, null when none
};

struct Pending {
    std::uint32_t token = 0;
    std::uint32_t recv_word2 = 0;
    Address from;
    std::uint64_t sent_id = 0;
    Delivery delivery;
};

struct Ledger {
    std::map<std::uint64_t, Message> messages;  // released ones kept to tell a second release
    std::deque<Pending> pending;
    std::vector<std::string> problems;
};

struct RegisteredService {
    ServiceId id;
    Service service;
};

struct Router {
    std::vector<RegisteredService> services;
    std::map<std::uint32_t, Ledger> ledgers;
    ServiceId next_service = 1;
    std::uint32_t next_handle = 0x100;
    std::uint64_t next_message = 1;
    std::uint32_t next_token = 0x1000;
};

Router &router() {
    static Router r;
    return r;
}

std::string describe(std::uint64_t id, const Message &m) {
    std::string s = "message #" + std::to_string(id) + (m.dir == Direction::sent ? " (request to node " : " (reply from node ");
    s += hex(m.peer.node) + " SAP " + std::to_string(m.peer.sap) + " opcode " + hex(m.peer.opcode) + ", token " +
         hex(m.token) + ")";
    return s;
}

Record read_record(const mts_msg *msg) {
    Record r{};
    if (msg != nullptr) std::memcpy(&r, msg, sizeof r);
    return r;
}

void write_record(mts_msg *msg, const Record &r) {
    std::memset(msg, 0, sizeof *msg);
    std::memcpy(msg, &r, sizeof r);
}

const RegisteredService *route(const Address &to) {
    const RegisteredService *any = nullptr;
    for (const RegisteredService &s : router().services) {
        if (s.service.sap != to.sap || s.service.opcode != to.opcode) continue;
        if (s.service.node && *s.service.node == to.node) return &s;
        if (!s.service.node) any = &s;
    }
    return any;
}

// The message a record names, with its ledger; null when the record names none.
Message *find_message(const mts_msg *msg, Ledger **ledger_out = nullptr) {
    const Record r = read_record(msg);
    if (r.magic != kLiveMagic && r.magic != kReleasedMagic) return nullptr;
    auto ledger = router().ledgers.find(r.handle);
    if (ledger == router().ledgers.end()) return nullptr;
    auto it = ledger->second.messages.find(r.id);
    if (it == ledger->second.messages.end()) return nullptr;
    if (ledger_out) *ledger_out = &ledger->second;
    return &it->second;
}

std::string target_name(const Address &to) {
    const RegisteredService *s = route(to);
    return s ? s->service.name : "?";
}

std::uint32_t new_token() {
    std::uint32_t token = router().next_token++;
    if (token == 0) token = router().next_token++;
    return token;
}

void report_held(const Ledger &ledger, std::vector<std::string> &out) {
    for (const auto &[id, m] : ledger.messages)
        if (m.live) out.push_back(describe(id, m) + " never released");
    for (const Pending &p : ledger.pending)
        out.push_back("reply to token " + hex(p.token) + " (request to node " + hex(p.from.node) + " SAP " +
                      std::to_string(p.from.sap) + ") never received");
}

// The ledger of an open handle; null, and a diagnostic, for any other.
Ledger *ledger_of(std::uint32_t handle, const char *operation) {
    auto it = router().ledgers.find(handle);
    if (it != router().ledgers.end()) return &it->second;
    diagnostic(std::string(operation) + " with handle " + hex(handle) + ", which is not open");
    return nullptr;
}

}  // namespace

ServiceId register_service(Service service) {
    SwitchLock lock(switch_mutex());
    Router &r = router();
    for (const RegisteredService &s : r.services) {
        if (s.service.sap != service.sap || s.service.opcode != service.opcode) continue;
        if (s.service.node == service.node) {
            diagnostic("service \"" + service.name + "\" not registered: its address is served by \"" +
                       s.service.name + "\"");
            return 0;
        }
    }
    const ServiceId id = r.next_service++;
    r.services.push_back({id, std::move(service)});
    return id;
}

bool unregister_service(ServiceId id) {
    SwitchLock lock(switch_mutex());
    auto &services = router().services;
    for (auto it = services.begin(); it != services.end(); ++it) {
        if (it->id == id) {
            services.erase(it);
            return true;
        }
    }
    return false;
}

std::int32_t send(std::uint32_t handle, const Address &to, const void *payload, std::uint32_t length, mts_msg *msg,
                  std::uint32_t flags, std::uint32_t reserved) {
    SwitchLock lock(switch_mutex());
    Router &r = router();
    Ledger *open = ledger_of(handle, "mts_send");
    if (open == nullptr) return kErrBadHandle;
    Ledger &ledger = *open;
    if (msg == nullptr || (payload == nullptr && length > 0)) {
        ledger.problems.push_back("mts_send without a message record or with a null payload of " +
                                  std::to_string(length) + " bytes");
        return kErrBadArgument;
    }
    if (flags != 0 || reserved != 0) {
        ledger.problems.push_back("mts_send with flags " + hex(flags) + " and reserved " + hex(reserved) +
                                  " (both must be 0)");
        return kErrBadArgument;
    }
    const RegisteredService *target = route(to);
    if (target == nullptr) return kErrNoRoute;
    // The service may register or unregister services while it runs: copy
    // what is needed before calling it.
    const std::uint32_t word2 = target->service.recv_word2;
    const auto handler = target->service.handle;
    Request request{handle, to, static_cast<const std::uint8_t *>(payload), length};
    Delivery delivery;
    try {
        delivery = handler(request);
    } catch (const std::exception &e) {
        // The service broke down: its reply never comes.
        diagnostic("service \"" + target_name(to) + "\" failed on a request: " + e.what());
        delivery = Delivery::recv_failed(kErrTimeout);
    }
    if (delivery.kind == Delivery::Kind::no_route) return kErrNoRoute;
    if (delivery.kind == Delivery::Kind::send_failure) return delivery.error ? delivery.error : kErrSend;

    // The ledger may have moved if the service opened handles: look it up again.
    Ledger &held = r.ledgers[handle];
    const std::uint64_t id = r.next_message++;
    const std::uint32_t token = new_token();
    Message m;
    m.dir = Direction::sent;
    m.token = token;
    m.peer = to;
    held.messages.emplace(id, std::move(m));
    held.pending.push_back({token, word2, to, id, std::move(delivery)});
    write_record(msg, {kLiveMagic, id, handle, token});
    return 0;
}

std::uint32_t token_of(const mts_msg *msg) {
    SwitchLock lock(switch_mutex());
    const Record r = read_record(msg);
    if (r.magic != kLiveMagic && r.magic != kReleasedMagic) {
        diagnostic("mts_rr_token_get of a record that names no message");
        return 0;
    }
    Ledger *ledger = nullptr;
    if (Message *m = find_message(msg, &ledger); m != nullptr && !m->live)
        ledger->problems.push_back("token of " + describe(r.id, *m) + " taken after its release");
    return r.token;
}

std::int32_t drop(std::uint32_t handle, mts_msg *msg) {
    SwitchLock lock(switch_mutex());
    Ledger *open = ledger_of(handle, "mts_drop");
    if (open == nullptr) return kErrBadHandle;
    Ledger &ledger = *open;
    const Record r = read_record(msg);
    if (msg == nullptr || (r.magic != kLiveMagic && r.magic != kReleasedMagic)) {
        ledger.problems.push_back("mts_drop of a record that names no message");
        return kErrBadMessage;
    }
    if (r.handle != handle) {
        ledger.problems.push_back("mts_drop with handle " + hex(handle) + " of message #" + std::to_string(r.id) +
                                  " of handle " + hex(r.handle));
        return kErrBadMessage;
    }
    auto m = ledger.messages.find(r.id);
    if (m == ledger.messages.end()) {
        ledger.problems.push_back("mts_drop of message #" + std::to_string(r.id) + ", which this handle never had");
        return kErrBadMessage;
    }
    if (!m->second.live) {
        ledger.problems.push_back(describe(r.id, m->second) + " released twice");
        return kErrBadMessage;
    }
    m->second.live = false;
    m->second.payload.reset();
    Record released = r;
    released.magic = kReleasedMagic;
    write_record(msg, released);
    return 0;
}

std::int32_t recv(std::uint32_t handle, mts_msg *msg, const mts_recv_opts *opts) {
    SwitchLock lock(switch_mutex());
    Router &r = router();
    Ledger *open = ledger_of(handle, "mts_recv");
    if (open == nullptr) return kErrBadHandle;
    Ledger &ledger = *open;
    if (msg == nullptr || opts == nullptr) {
        ledger.problems.push_back("mts_recv without a message record or receive options");
        return kErrBadArgument;
    }
    const std::uint32_t token = opts->word[3];
    auto pending = ledger.pending.begin();
    while (pending != ledger.pending.end() && pending->token != token) ++pending;
    if (pending == ledger.pending.end()) {
        ledger.problems.push_back("mts_recv for token " + hex(token) + ", which no outstanding request carries");
        return kErrNoReply;
    }
    Pending p = std::move(*pending);
    ledger.pending.erase(pending);

    if (auto sent = ledger.messages.find(p.sent_id); sent != ledger.messages.end() && sent->second.live)
        ledger.problems.push_back(describe(p.sent_id, sent->second) + " still held while its reply was awaited");

    bool options_ok = opts->word[0] == 1 && opts->word[2] == p.recv_word2;
    for (unsigned w : {1u, 4u, 5u, 6u, 7u, 8u, 9u}) options_ok = options_ok && opts->word[w] == 0;
    if (!options_ok) {
        ledger.problems.push_back("mts_recv for token " + hex(token) + " with options word 0 = " +
                                  std::to_string(opts->word[0]) + ", word 2 = " + std::to_string(opts->word[2]) +
                                  " (this destination needs 1 and " + std::to_string(p.recv_word2) +
                                  ", the other words 0); the reply is discarded");
        return kErrBadOptions;
    }
    if (p.delivery.kind == Delivery::Kind::recv_failure) return p.delivery.error ? p.delivery.error : kErrRecv;

    const std::uint64_t id = r.next_message++;
    Message m;
    m.dir = Direction::received;
    m.token = token;
    m.peer = p.from;
    if (p.delivery.has_payload && !p.delivery.payload.empty()) {
        m.length = static_cast<std::uint32_t>(p.delivery.payload.size());
        m.payload = std::make_unique<std::uint8_t[]>(m.length);
        std::memcpy(m.payload.get(), p.delivery.payload.data(), m.length);
    }
    ledger.messages.emplace(id, std::move(m));
    write_record(msg, {kLiveMagic, id, handle, token});
    return 0;
}

void *payload_of(const mts_msg *msg) {
    SwitchLock lock(switch_mutex());
    Ledger *ledger = nullptr;
    Message *m = find_message(msg, &ledger);
    if (m == nullptr) {
        diagnostic("mts_payload_get of a record that names no message");
        return nullptr;
    }
    if (!m->live) {
        ledger->problems.push_back(describe(read_record(msg).id, *m) + ": payload asked for after its release");
        return nullptr;
    }
    return m->payload.get();
}

std::uint32_t payload_length_of(const mts_msg *msg) {
    SwitchLock lock(switch_mutex());
    Ledger *ledger = nullptr;
    Message *m = find_message(msg, &ledger);
    if (m == nullptr) {
        diagnostic("mts_payload_length_get of a record that names no message");
        return 0;
    }
    if (!m->live) {
        ledger->problems.push_back(describe(read_record(msg).id, *m) +
                                   ": payload length asked for after its release");
        return 0;
    }
    return m->length;
}

std::uint32_t open_handle() {
    SwitchLock lock(switch_mutex());
    Router &r = router();
    std::uint32_t handle = r.next_handle++;
    while (handle == 0 || r.ledgers.count(handle)) handle = r.next_handle++;
    r.ledgers.emplace(handle, Ledger{});
    return handle;
}

bool handle_open(std::uint32_t handle) {
    SwitchLock lock(switch_mutex());
    return router().ledgers.count(handle) != 0;
}

std::vector<std::string> check_handle(std::uint32_t handle) {
    SwitchLock lock(switch_mutex());
    auto it = router().ledgers.find(handle);
    if (it == router().ledgers.end()) return {"handle " + hex(handle) + " is not open"};
    std::vector<std::string> out = it->second.problems;
    report_held(it->second, out);
    return out;
}

std::vector<std::string> close_handle(std::uint32_t handle) {
    SwitchLock lock(switch_mutex());
    std::vector<std::string> out = check_handle(handle);
    router().ledgers.erase(handle);
    return out;
}

std::size_t live_messages() {
    SwitchLock lock(switch_mutex());
    std::size_t n = 0;
    for (const auto &[handle, ledger] : router().ledgers)
        for (const auto &[id, m] : ledger.messages) n += m.live ? 1 : 0;
    return n;
}

std::size_t pending_replies() {
    SwitchLock lock(switch_mutex());
    std::size_t n = 0;
    for (const auto &[handle, ledger] : router().ledgers) n += ledger.pending.size();
    return n;
}

}  // namespace qdsim::mts

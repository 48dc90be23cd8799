// SPDX-License-Identifier: MIT
// Request attributes (cmd_req_attr_getnext) and response streams
// (cmd_rsp_attr_getnext).
#include <cstring>
#include <map>

#include "core/diagnostics.hpp"
#include "core/lock.hpp"
#include "core/command_end.hpp"
#include "printer/printer.hpp"
#include "printer/streams.hpp"

namespace qdsim {
namespace printer {
namespace {

// A response record that carries a stream: words 0 and 1 of the record.
constexpr std::uint32_t kStreamMagic = 0x51445253u;

struct Stream {
    std::vector<Attribute> attributes;
    std::size_t next = 0;
    std::uint32_t mts_handle = 0;
};

struct Attributes {
    std::vector<Attribute> request;
    std::size_t next_request = 0;
    std::map<std::uint32_t, Stream> streams;
    std::uint32_t next_stream = 1;
    StreamProducer producer;
};

Attributes &attributes() {
    static Attributes a;
    return a;
}

std::int32_t hand_out(const Attribute &a, void **value, std::uint32_t *length) {
    *value = const_cast<std::uint8_t *>(a.value.data());
    *length = static_cast<std::uint32_t>(a.value.size());
    const std::int32_t id = static_cast<std::int32_t>(a.id);
    if (id < 0) diagnostic("attribute " + hex32(a.id) + " does not fit the non-negative result of the walk");
    return id;
}

const CommandEndRegistrar release_streams{[](std::uint32_t mts_handle) {
    Attributes &a = attributes();
    for (auto it = a.streams.begin(); it != a.streams.end();)
        it = it->second.mts_handle == mts_handle ? a.streams.erase(it) : std::next(it);
    a.request.clear();
    a.next_request = 0;
}};

}  // namespace

void set_switch_stream_producer(StreamProducer producer) {
    SwitchLock lock(switch_mutex());
    if (attributes().producer) diagnostic("a second producer of the switch-wide stream replaces the first");
    attributes().producer = std::move(producer);
}

}  // namespace printer

void set_request_attributes(std::vector<Attribute> list) {
    SwitchLock lock(switch_mutex());
    printer::attributes().request = std::move(list);
    printer::attributes().next_request = 0;
}

namespace {

void attach_stream(cmd_rsp *rsp, std::vector<Attribute> list, std::uint32_t mts_handle) {
    SwitchLock lock(switch_mutex());
    if (rsp == nullptr) return;
    printer::Attributes &a = printer::attributes();
    if (rsp->platform0[0] == printer::kStreamMagic) a.streams.erase(rsp->platform0[1]);
    const std::uint32_t id = a.next_stream++;
    a.streams[id] = {std::move(list), 0, mts_handle};
    std::memset(rsp, 0, sizeof *rsp);
    rsp->platform0[0] = printer::kStreamMagic;
    rsp->platform0[1] = id;
    rsp->mts_handle = mts_handle;
}

}  // namespace

void open_switch_stream(cmd_rsp *rsp, std::uint32_t mts_handle) {
    SwitchLock lock(switch_mutex());
    std::vector<Attribute> list;
    if (printer::attributes().producer) {
        try {
            list = printer::attributes().producer(current_model(), mts_handle);
        } catch (const std::exception &e) {
            diagnostic(std::string("the producer of the switch-wide stream failed: ") + e.what());
            list.clear();
        }
    } else {
        diagnostic("no producer of the switch-wide stream is registered: the stream is empty");
    }
    attach_stream(rsp, std::move(list), mts_handle);
}

}  // namespace qdsim

using namespace qdsim;

extern "C" {

std::int32_t cmd_req_attr_getnext(std::uint32_t handle, void **value, std::uint32_t *length) {
    SwitchLock lock(switch_mutex());
    if (!printer::is_output_handle(handle)) {
        diagnostic("cmd_req_attr_getnext with handle " + hex32(handle) + ", which is not an output handle");
        return -1;
    }
    if (value == nullptr || length == nullptr) {
        diagnostic("cmd_req_attr_getnext without somewhere to put the value");
        return -1;
    }
    printer::Attributes &a = printer::attributes();
    if (a.next_request >= a.request.size()) return -1;
    return printer::hand_out(a.request[a.next_request++], value, length);
}

std::int32_t cmd_rsp_attr_getnext(cmd_rsp *rsp, void **value, std::uint32_t *length) {
    SwitchLock lock(switch_mutex());
    if (rsp == nullptr || value == nullptr || length == nullptr) {
        diagnostic("cmd_rsp_attr_getnext without a response record or somewhere to put the value");
        return -1;
    }
    if (rsp->platform0[0] != printer::kStreamMagic) {
        diagnostic("cmd_rsp_attr_getnext of a response record that carries no stream");
        return -1;
    }
    auto it = printer::attributes().streams.find(rsp->platform0[1]);
    if (it == printer::attributes().streams.end()) {
        diagnostic("cmd_rsp_attr_getnext of a stream already released");
        return -1;
    }
    printer::Stream &s = it->second;
    if (s.next >= s.attributes.size()) return -1;
    return printer::hand_out(s.attributes[s.next++], value, length);
}

}  // extern "C"

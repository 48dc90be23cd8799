// SPDX-License-Identifier: MIT
#include <algorithm>
#include "harness/harness.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "inventory/platform_query.hpp"

namespace qdfuzz {
namespace {

constexpr std::uint32_t kMtsHandle = 0x77;

std::string &input_label() {
    static std::string label;
    return label;
}

// Handlers that print to standard output would flood the fuzzer's console;
// their output goes to /dev/null unless QDFUZZ_SHOW_OUTPUT is set.
void silence_stdout_once() {
    static const bool done = [] {
        if (std::getenv("QDFUZZ_SHOW_OUTPUT") != nullptr) return true;
        std::fflush(stdout);
        const int null_fd = open("/dev/null", O_WRONLY);
        if (null_fd >= 0) {
            dup2(null_fd, STDOUT_FILENO);
            close(null_fd);
        }
        return true;
    }();
    (void)done;
}

}  // namespace

std::uint8_t Input::u8() { return pos_ < size_ ? data_[pos_++] : 0; }

std::uint16_t Input::le16() {
    const std::uint16_t low = u8();
    return static_cast<std::uint16_t>(low | (u8() << 8));
}

std::uint32_t Input::le32() {
    const std::uint32_t low = le16();
    return low | (static_cast<std::uint32_t>(le16()) << 16);
}

Bytes Input::take(std::size_t count) {
    if (count > remaining()) count = remaining();
    Bytes out(data_ + pos_, data_ + pos_ + count);
    pos_ += count;
    return out;
}

qdtest::Reply next_reply(Input &in) {
    const std::uint8_t kind = in.u8() % 4;
    const std::uint16_t length = in.le16();
    Bytes payload = in.take(length);
    switch (kind) {
    case 1:
        return qdtest::Reply::send_failure(-(0x100 + static_cast<std::int32_t>(payload.size())));
    case 2:
        return qdtest::Reply::recv_failure(-(0x200 + static_cast<std::int32_t>(payload.size())));
    case 3:
        return qdtest::Reply::empty();
    default:
        return qdtest::Reply::bytes(std::move(payload));
    }
}

bool next_attr(Input &in, qdtest::Attr &attr) {
    if (in.remaining() < 6) return false;
    attr.id = in.le32();
    const std::uint16_t length = in.le16();
    // Built from a range so the vector holds exactly the value: a read past
    // it is a read past the heap block.
    const Bytes value = in.take(length);
    attr.value = Bytes(value.begin(), value.end());
    return true;
}

Session::Session() {
    silence_stdout_once();
    qdtest::reset();
    qdcli::platform_type_cache_reset();
    command_.handle(kMtsHandle);
}

void Session::reply(Bytes payload) { pf().replies.push_back(qdtest::Reply::bytes(std::move(payload))); }

std::size_t Session::replies(Input &in, std::size_t limit) {
    std::size_t scripted = 0;
    while (!in.empty() && scripted < limit) {
        pf().replies.push_back(next_reply(in));
        ++scripted;
    }
    return scripted;
}

void Session::pad_replies(std::size_t total) {
    while (pf().replies.size() < total) pf().replies.push_back(qdtest::Reply::empty());
}

void Session::pad_listed(std::size_t extra) {
    std::size_t listed = 0;
    for (const qdtest::EnumPass &pass : pf().enum_passes) listed += pass.indexes ? pass.indexes->size() : 0;
    pad_replies(pf().replies.size() + 3 * listed + extra);
}

void Session::stream(Input &in, std::int64_t reply_id) {
    qdtest::Attr attr;
    while (next_attr(in, attr)) {
        if (reply_id >= 0 && attr.id == static_cast<std::uint32_t>(reply_id)) reply(attr.value);
        pf().response_attrs.push_back(attr);
    }
}

cmd_paraminfo *Session::command(std::uint32_t cmd_id) {
    command_.id(cmd_id);
    return command_.info();
}

void Session::argument_records(Input &in, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint8_t type = in.u8();
        const std::uint32_t id = in.le32();
        const std::uint32_t value = in.le32();
        if (type == 255)
            command_.arg_null(type, id);
        else
            command_.arg_u32(type, value, id);
    }
}

Bytes argument_record(std::uint8_t type, std::uint32_t id, std::uint32_t value) {
    Bytes b = {type};
    for (int i = 0; i < 4; ++i) b.push_back(static_cast<std::uint8_t>(id >> (8 * i)));
    for (int i = 0; i < 4; ++i) b.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
    return b;
}

void Session::enum_passes(Input &in, std::size_t limit, const std::vector<std::uint32_t> &pool) {
    for (std::size_t pass = 0; pass < limit && in.remaining() >= 7; ++pass) {
        qdtest::EnumPass p;
        p.rc = static_cast<std::int8_t>(in.u8());
        p.status = static_cast<std::int8_t>(in.u8());
        const auto count = static_cast<std::int32_t>(in.le32());
        std::size_t n = in.u8();
        if (n == 255) {
            // A null array, whatever the count says.
            p.indexes = std::nullopt;
            p.raw_count = count;
        } else {
            std::vector<std::uint32_t> indexes;
            while (n-- > 0 && in.remaining() >= 4) {
                const std::uint32_t v = in.le32();
                indexes.push_back(v < 8 && v < pool.size() ? pool[v] : v);
            }
            // A negative count is handed back as it is; a positive one never
            // exceeds the array (the array holds "that many" by contract).
            p.raw_count = count < 0 ? count : std::min<std::int32_t>(count, static_cast<std::int32_t>(indexes.size()));
            p.indexes = std::move(indexes);
        }
        pf().enum_passes.push_back(std::move(p));
    }
}

Bytes enum_pass_bytes(std::int8_t rc, std::int8_t status, std::int32_t count, const std::vector<std::uint32_t> &indexes) {
    Bytes b = {static_cast<std::uint8_t>(rc), static_cast<std::uint8_t>(status)};
    for (int i = 0; i < 4; ++i) b.push_back(static_cast<std::uint8_t>(static_cast<std::uint32_t>(count) >> (8 * i)));
    b.push_back(static_cast<std::uint8_t>(indexes.size()));
    for (std::uint32_t v : indexes)
        for (int i = 0; i < 4; ++i) b.push_back(static_cast<std::uint8_t>(v >> (8 * i)));
    return b;
}

void Session::check() {
    const std::vector<std::string> errors = qdtest::ledger_errors();
    if (errors.empty()) return;
    std::fprintf(stderr, "message ledger%s%s:\n", input_label().empty() ? "" : " after ", input_label().c_str());
    for (const std::string &error : errors) std::fprintf(stderr, "  %s\n", error.c_str());
    std::fflush(stderr);
    std::abort();
}

Frames &Frames::raw(const Bytes &bytes) {
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
    return *this;
}

Frames &Frames::frame(std::uint8_t kind, const Bytes &payload) {
    bytes_.push_back(kind);
    bytes_.push_back(static_cast<std::uint8_t>(payload.size()));
    bytes_.push_back(static_cast<std::uint8_t>(payload.size() >> 8));
    return raw(payload);
}

Frames &Frames::reply(const Bytes &payload) { return frame(0, payload); }
Frames &Frames::send_failure() { return frame(1, {}); }
Frames &Frames::recv_failure() { return frame(2, {}); }
Frames &Frames::no_payload() { return frame(3, {}); }

Frames &Frames::attr(std::uint32_t id, const Bytes &value) {
    for (int i = 0; i < 4; ++i) bytes_.push_back(static_cast<std::uint8_t>(id >> (8 * i)));
    bytes_.push_back(static_cast<std::uint8_t>(value.size()));
    bytes_.push_back(static_cast<std::uint8_t>(value.size() >> 8));
    return raw(value);
}

Frames &Frames::attr_u16(std::uint32_t id, std::uint16_t value) {
    return attr(id, {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8)});
}

Frames &Frames::attr_u32(std::uint32_t id, std::uint32_t value) {
    Bytes b(4);
    std::memcpy(b.data(), &value, 4);
    return attr(id, b);
}

Frames &Frames::attr_u64(std::uint32_t id, std::uint64_t value) {
    Bytes b(8);
    put_host64_low_first(b, 0, value);
    return attr(id, b);
}

void put_host64_low_first(Bytes &b, std::size_t offset, std::uint64_t v) {
    put_host32(b, offset, static_cast<std::uint32_t>(v));
    put_host32(b, offset + 4, static_cast<std::uint32_t>(v >> 32));
}

Bytes cut(const Bytes &b, std::size_t length) {
    return Bytes(b.begin(), b.begin() + static_cast<std::ptrdiff_t>(length < b.size() ? length : b.size()));
}

void set_input_label(std::string label) { input_label() = std::move(label); }

}  // namespace qdfuzz

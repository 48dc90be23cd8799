// SPDX-License-Identifier: MIT
// Shared harness of the fuzz targets and of their replay in the test suite.
//
// A target is a row of entries/targets.hpp and two functions of a family
// file of entries/: one runs an input through a real handler on the scripted
// platform (the harness opens the Session and checks its ledger), the other
// gives a few well-formed inputs built from the reply layouts. An entry body
// is a few lines:
//
//   void qdfuzz_cosmap_show(qdfuzz::Session &session, qdfuzz::Input &in) {
//       session.reply(in.rest());                      // the input is the payload
//       qd_cli_show_wrrqueue_cosmap(session.command());
//   }
//
// Inputs that script more than one exchange, or an attribute stream, are
// framed as below (Frames builds them for seeds).
//
// Exchange frame:   [kind: 1][length: 2, little-endian][payload: length]
//   kind % 4: 0 a reply carrying the payload, 1 mts_send fails, 2 mts_recv
//   fails, 3 a reply without payload. A length that runs past the end of the
//   input takes the bytes that are left.
//
// Attribute record: [id: 4, host order][length: 2, little-endian][value: length]
//   A value cut short by the end of the input is handed over as it is; fewer
//   than six bytes left end the stream.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "double/platform_double.hpp"
#include "qdcli/platform.h"

namespace qdfuzz {

using Bytes = std::vector<std::uint8_t>;

// The interfaces the targets' platforms know.
inline constexpr std::uint32_t kEth = 0x1a000000u, kSub = 0x1a000001u, kAlt = 0x01000400u;
inline constexpr std::uint32_t kHif = 0x1f010000u, kOther = 0x05000001u;

// Consumes an input from the front; reads past the end give zeros.
class Input {
public:
    Input(const std::uint8_t *data, std::size_t size) : data_(data), size_(data ? size : 0) {}
    std::size_t remaining() const { return size_ - pos_; }
    bool empty() const { return remaining() == 0; }
    std::uint8_t u8();
    std::uint16_t le16();
    std::uint32_t le32();
    Bytes take(std::size_t count);  // at most what is left
    Bytes rest() { return take(remaining()); }

private:
    const std::uint8_t *data_;
    std::size_t size_;
    std::size_t pos_ = 0;
};

// One exchange frame from the input.
qdtest::Reply next_reply(Input &in);
// One attribute record from the input; false when fewer than six bytes are left.
bool next_attr(Input &in, qdtest::Attr &attr);

// One fuzz input's run: a clean scripted platform and platform-type cache on
// entry, the message ledger checked by check().
class Session {
public:
    Session();
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    qdtest::Platform &pf() { return qdtest::platform(); }

    // Scripts the next exchange with a reply carrying these bytes.
    void reply(Bytes payload);
    // Scripts exchanges from frames until the input ends or `limit` are
    // scripted; returns how many.
    std::size_t replies(Input &in, std::size_t limit);
    // Scripts one reply without payload for each exchange a handler may make
    // beyond the input's frames, so a short input never runs a handler into
    // an unscripted send.
    void pad_replies(std::size_t total);
    // replies(in, limit), then padded to `limit`.
    void exchanges(Input &in, std::size_t limit) {
        replies(in, limit);
        pad_replies(limit);
    }
    // Pads for `extra` exchanges more than the frames scripted, plus three
    // for every interface the scripted enumeration passes list (a report
    // makes at most three).
    void pad_listed(std::size_t extra);
    // Appends attribute records to the response stream until the input ends.
    // Each record with id `reply_id` also scripts one exchange whose payload
    // is the record's value.
    void stream(Input &in, std::int64_t reply_id = -1);

    // The shell's parameter-info record of the command (MTS handle 0x77).
    cmd_paraminfo *command(std::uint32_t cmd_id = 0);
    // The command's arguments, to add to before command().
    qdtest::Command &arguments() { return command_; }
    // Adds `count` argument records from the input to the command, each
    //   [param_type: 1][param_id: 4, little-endian][value: 4, little-endian]
    // param_type 255 gives an argument without value.
    void argument_records(Input &in, std::size_t count);

    // Scripts up to `limit` interface-enumeration passes from the input,
    // hostile ones included: each pass is
    //   [rc: 1, signed][status: 1, signed][count: 4, little-endian, signed]
    //   [n: 1][n interface indexes: 4 each]
    // A negative count is handed back as it is, a positive one cut to the
    // array (which holds that many by contract); n = 255 hands back a null
    // array with the count as it is. An index below 8 picks `pool[value]`,
    // any other value is handed over raw (unknown to the platform).
    void enum_passes(Input &in, std::size_t limit, const std::vector<std::uint32_t> &pool);

    // Aborts with the ledger's findings when a message was not released
    // exactly once or was used after its release.
    void check();

private:
    qdtest::Command command_;
};

// One enumeration pass in the layout Session::enum_passes reads.
Bytes enum_pass_bytes(std::int8_t rc, std::int8_t status, std::int32_t count, const std::vector<std::uint32_t> &indexes);

// One argument record in the layout Session::argument_records reads.
Bytes argument_record(std::uint8_t type, std::uint32_t id, std::uint32_t value);

// Builds framed inputs for seed corpora.
class Frames {
public:
    Frames &raw(const Bytes &bytes);
    Frames &reply(const Bytes &payload);
    Frames &send_failure();
    Frames &recv_failure();
    Frames &no_payload();
    Frames &attr(std::uint32_t id, const Bytes &value);
    Frames &attr_u8(std::uint32_t id, std::uint8_t value) { return attr(id, {value}); }
    Frames &attr_u16(std::uint32_t id, std::uint16_t value);
    Frames &attr_u32(std::uint32_t id, std::uint32_t value);
    Frames &attr_u64(std::uint32_t id, std::uint64_t value);
    operator Bytes() const { return bytes_; }

private:
    Frames &frame(std::uint8_t kind, const Bytes &payload);
    Bytes bytes_;
};

// Byte helpers for building reply layouts in seeds.
using qdtest::put_be16;
using qdtest::put_be32;
using qdtest::put_be64_low_first;
using qdtest::put_host32;
void put_host64_low_first(Bytes &b, std::size_t offset, std::uint64_t v);
Bytes cut(const Bytes &b, std::size_t length);

// Names the input under way in the report of a failed check (replay only).
void set_input_label(std::string label);

}  // namespace qdfuzz

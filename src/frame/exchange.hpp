// SPDX-License-Identifier: MIT
// The two request/reply exchanges: with the queuing daemon (12-byte
// qd_cli_req, host order) and with a line-card statistics agent (40-byte
// lc_stats_req). Both send, take the token, drop the sent message, then wait
// for the reply that carries the token. Reporting a failure is the caller's
// business: the wording differs per command.
#pragma once

#include <cstdint>

#include "frame/message.hpp"
#include "qdcli/wire.h"

namespace qdcli {

enum class Outcome {
    ok,             // reply held in the owner (payload present when it was wanted)
    send_failed,    // error = mts_send's code; nothing to release
    recv_failed,    // error = mts_recv's code; the sent message was released
    empty_payload,  // a reply without payload; the owner still holds it
};

struct ExchangeResult {
    Outcome outcome = Outcome::ok;
    std::int32_t error = 0;
    bool ok() const { return outcome == Outcome::ok; }
};

// Whether the reply's payload is read. A reply that is not read is released
// as soon as it arrives.
enum class Reply { read, confirm_only };

// Daemon exchange for `command` with the request's if_index and arg.
ExchangeResult qd_exchange(std::uint32_t mts_handle, std::uint8_t command, std::uint32_t if_index,
                           std::uint32_t arg, Reply reply_use, ReceivedMessage &reply);

// Line-card request: cleared, then cmd, variant, count 1 and fixed_one set.
lc_stats_req make_lc_request(std::uint8_t cmd, std::uint8_t variant);
void put_be32(std::uint8_t (&field)[4], std::uint32_t value);

// Node of the statistics agent of a slot: ((slot + 1) << 8 | 2) cut to 16 bits.
std::uint32_t lc_stats_node(std::uint32_t slot);

// Line-card exchange; `reply` holds the message on ok. The reply's status is
// not tested here (the drop report does not test it): see lc_reply_status.
ExchangeResult lc_stats_exchange(std::uint32_t mts_handle, std::uint32_t node, const lc_stats_req &request,
                                 ReceivedMessage &reply);

// The agent's big-endian status at offset 28 of a reply that covers the header.
std::uint32_t lc_reply_status(const PayloadReader &payload);

// syserr2str, never null.
const char *error_text(std::int32_t code);

}  // namespace qdcli

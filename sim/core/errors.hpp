// SPDX-License-Identifier: MIT
// Error codes of the simulated platform and their texts (syserr2str).
//
// Every operation that fails returns one of these codes; syserr2str turns
// each into words. The values sit in a range of their own so that a code
// printed by a command can be told from a count or an index at a glance.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace qdsim {

enum ErrorCode : std::int32_t {
    kErrSend = 0x41000001,         // the transport could not send the message
    kErrRecv = 0x41000002,         // no reply could be received
    kErrNoRoute = 0x41000003,      // nothing serves the destination
    kErrBadHandle = 0x41000004,    // transport handle not open
    kErrNoReply = 0x41000005,      // no reply carries the token asked for
    kErrBadOptions = 0x41000006,   // receive options do not fit the exchange
    kErrBadMessage = 0x41000007,   // message record not issued or already released
    kErrUnsupported = 0x41000008,  // operation not supported
    kErrNoInterface = 0x41000009,  // interface index unknown to the switch
    kErrNoModule = 0x4100000a,     // slot or extender without a module
    kErrBadArgument = 0x4100000b,  // argument out of its range
    kErrBadRequest = 0x4100000c,   // request payload malformed
    kErrTimeout = 0x4100000d,      // reply did not come in time
    kErrNoService = 0x4100000e,    // service not available on this switch
};

// Text of a code; never null. Unknown codes get a generated text that stays
// valid until the next call on the same thread.
const char *error_text(std::int32_t code);

// Code of an error name as a scenario spells it ("send", "no_route", ...).
std::optional<std::int32_t> error_by_name(std::string_view name);

}  // namespace qdsim

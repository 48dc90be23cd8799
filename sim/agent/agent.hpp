// SPDX-License-Identifier: MIT
// The line-card statistics agents at (node, LC_STATS_SAP, LC_STATS_OPC).
//
// Every line card has an agent at the node of its slot, ((slot + 1) << 8 | 2)
// cut to 16 bits; every extender has one at its node (by default the node of
// its slot). A request to any other node fails to send. The core checks the
// 40-byte lc_stats_req (count 1, fixed_one 01 00 00 00, the variant the
// sub-command expects), decodes it, and hands it to the sub-command
// registered for its code; it builds the reply header (the request's cmd and
// variant, the reply's count, the status big-endian at offset 28) and puts
// the body after it. A sub-command registers itself from its own file:
//
//   const qdsim::agent::SubCommandRegistrar hif{{LC_STATS_CMD_HIF_QUEUING, "host-interface queuing", 3, serve_hif}};
//
// Faults of target "agent" apply as for the daemon; "unsupported" gives the
// sub-command's own refusal, or status kErrUnsupported with no body.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "model/model.hpp"

namespace qdsim::agent {

struct Request {
    std::uint32_t mts_handle = 0;
    std::uint32_t node = 0;
    const LineCard *line_card = nullptr;  // the agent's card, when it is a line card's
    const Extender *extender = nullptr;   // the agent's extender, when it is an extender's
    std::uint8_t cmd = 0;
    std::uint8_t variant = 0;
    std::uint8_t count = 0;
    std::uint32_t vaq_id = 0;           // offset 4, big-endian
    std::uint32_t slot = 0;             // offset 12, big-endian
    std::uint32_t if_index = 0;         // offset 20, converted back to host order
    std::uint32_t target_if_index = 0;  // offset 32, converted back to host order
};

struct Reply {
    std::uint32_t status = 0;  // 0, or an error code (syserr2str explains it)
    std::uint8_t count = 0;
    std::vector<std::uint8_t> body;  // follows the 32-byte header
    bool has_payload = true;

    static Reply ok(std::vector<std::uint8_t> body, std::uint8_t count = 0);
    static Reply failed(std::uint32_t status);
};

using Handler = std::function<Reply(const Request &, Model &)>;

struct SubCommand {
    std::uint8_t code = 0;
    std::string name;
    std::optional<std::uint8_t> variant;  // the variant requests must carry
    Handler handle;
    Handler unsupported = {};  // optional: the reply that says "not supported"
};

bool register_subcommand(SubCommand command);
bool unregister_subcommand(std::uint8_t code);

struct SubCommandRegistrar {
    explicit SubCommandRegistrar(SubCommand command) { register_subcommand(std::move(command)); }
};

// The whole reply payload: header and body.
std::vector<std::uint8_t> encode_reply(const Request &request, const Reply &reply);

}  // namespace qdsim::agent

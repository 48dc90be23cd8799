// SPDX-License-Identifier: MIT
// The queuing daemon at (MTS_NODE_LOCAL, QD_MTS_SAP, QD_CLI_OPC).
//
// It decodes the 12-byte qd_cli_req (host order) and hands it to the
// command registered for its code. A command lives in a file of its own
// and registers itself:
//
//   namespace {
//   qdsim::daemon::Reply show_cosmap(const qdsim::daemon::Request &, qdsim::Model &model) { ... }
//   const qdsim::daemon::CommandRegistrar show{{QD_CLI_CMD_SHOW_WRR_COSMAP, "show wrr-queue cos-map", show_cosmap}};
//   }
//
// The core refuses a request that is not 12 bytes or has non-zero reserved
// bytes, answers "not supported" for a code nobody registered, and applies
// the scenario's daemon faults before and after the command runs.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "model/model.hpp"

namespace qdsim::daemon {

struct Request {
    std::uint32_t mts_handle = 0;
    std::uint8_t command = 0;
    std::uint32_t if_index = 0;
    std::uint32_t arg = 0;
};

struct Reply {
    bool has_payload = true;
    std::vector<std::uint8_t> payload;

    static Reply bytes(std::vector<std::uint8_t> payload);
    // A 4-byte reply holding only a status word (host order): the answer of
    // the commands whose reply is not read.
    static Reply status(std::uint32_t status);
    static Reply none();
};

using Handler = std::function<Reply(const Request &, Model &)>;

struct Command {
    std::uint8_t code = 0;
    std::string name;
    Handler handle;
    // The reply that says "not supported" for this command (an "unsupported"
    // fault uses it). Without one the daemon sends refusal(QD_STATUS_UNSUPPORTED).
    Handler unsupported = {};
};

bool register_command(Command command);
bool unregister_command(std::uint8_t code);
const Command *find_command(std::uint8_t code);

struct CommandRegistrar {
    explicit CommandRegistrar(Command command) { register_command(std::move(command)); }
};

// The daemon's refusal: 8 bytes with the status in both words (host order),
// so it reads as that status whether a reply keeps it at offset 0 or 4.
std::vector<std::uint8_t> refusal(std::uint32_t status);

// The section at `pointer` of a main Ethernet interface, or null when the
// interface is none or its section is missing or says "supported": false.
const Json *served_section(const Interface *i, std::string_view pointer);

}  // namespace qdsim::daemon

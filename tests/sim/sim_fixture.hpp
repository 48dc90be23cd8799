// SPDX-License-Identifier: MIT
// Common ground of the simulator's tests: a fresh default switch, output
// captured from the sink, diagnostics collected instead of printed, and a
// command handle; plus small helpers for exchanges by hand.
#pragma once

#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/diagnostics.hpp"
#include "qdcli/wire.h"
#include "qdsim/sim.h"

namespace simtest {

using Bytes = std::vector<std::uint8_t>;

class SimTest : public ::testing::Test {
protected:
    void SetUp() override {
        qdsim::set_diagnostics_echo(false);
        qdsim::take_diagnostics();
        qdsim::load_default_scenario();
        qdsim::set_output_sink([this](const std::string &text) { output += text; });
        qdsim::set_command_runner(nullptr);
        handle = qdsim::open_command();
    }
    void TearDown() override {
        if (handle) qdsim::close_command(handle);
        qdsim::set_output_sink(nullptr);
        qdsim::set_diagnostics_echo(true);
        EXPECT_EQ(qdsim::live_messages(), 0u);
    }

    // Closes the command now; later TearDown does nothing more with it.
    void finish() {
        qdsim::close_command(handle);
        handle = 0;
    }

    std::uint32_t output_handle() const { return 0x40000000u | handle; }

    std::string output;
    std::uint32_t handle = 0;
};

// The result of one request/reply exchange made by hand.
struct Exchange {
    std::int32_t send_rc = 0;
    std::int32_t recv_rc = 0;
    bool has_payload = false;
    Bytes payload;
};

inline mts_recv_opts options(std::uint32_t token, std::uint32_t word2) {
    mts_recv_opts opts{};
    opts.word[0] = 1;
    opts.word[2] = word2;
    opts.word[3] = token;
    return opts;
}

inline Exchange exchange(std::uint32_t handle, std::uint32_t node, std::uint32_t sap, std::uint32_t opcode,
                         const void *request, std::uint32_t length, std::uint32_t word2) {
    Exchange ex;
    mts_msg sent{};
    ex.send_rc = mts_send(handle, node, sap, opcode, request, length, &sent, 0, 0);
    if (ex.send_rc != 0) return ex;
    const mts_recv_opts opts = options(mts_rr_token_get(&sent), word2);
    mts_drop(handle, &sent);
    mts_msg reply{};
    ex.recv_rc = mts_recv(handle, &reply, &opts);
    if (ex.recv_rc != 0) return ex;
    const auto *p = static_cast<const std::uint8_t *>(mts_payload_get(&reply));
    ex.has_payload = p != nullptr;
    if (p) ex.payload.assign(p, p + mts_payload_length_get(&reply));
    mts_drop(handle, &reply);
    return ex;
}

inline Exchange daemon(std::uint32_t handle, std::uint8_t command, std::uint32_t if_index = 0, std::uint32_t arg = 0) {
    qd_cli_req req{};
    req.command = command;
    req.if_index = if_index;
    req.arg = arg;
    return exchange(handle, MTS_NODE_LOCAL, QD_MTS_SAP, QD_CLI_OPC, &req, sizeof req, 0);
}

inline lc_stats_req lc_request(std::uint8_t cmd, std::uint8_t variant, std::uint32_t target_if_index = 0) {
    lc_stats_req req{};
    req.hdr.cmd = cmd;
    req.hdr.variant = variant;
    req.hdr.count = 1;
    req.hdr.fixed_one[0] = 1;
    const std::uint32_t be = __builtin_bswap32(target_if_index);
    std::memcpy(req.target_if_index, &be, 4);
    return req;
}

inline std::uint32_t host32(const Bytes &b, std::size_t at) {
    std::uint32_t v = 0;
    std::memcpy(&v, b.data() + at, 4);
    return v;
}

inline std::uint32_t be32(const Bytes &b, std::size_t at) {
    return (std::uint32_t{b[at]} << 24) | (std::uint32_t{b[at + 1]} << 16) | (std::uint32_t{b[at + 2]} << 8) | b[at + 3];
}

// Does any collected diagnostic contain `text`?
inline bool diagnosed(const std::vector<std::string> &diagnostics, const std::string &text) {
    for (const std::string &d : diagnostics)
        if (d.find(text) != std::string::npos) return true;
    return false;
}

}  // namespace simtest

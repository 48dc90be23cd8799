// SPDX-License-Identifier: MIT
#include "frame/exchange.hpp"

#include <cstring>

namespace qdcli {
namespace {

mts_recv_opts receive_options(std::uint32_t token, std::uint32_t word2) {
    mts_recv_opts opts{};
    opts.word[0] = 1;
    opts.word[2] = word2;
    opts.word[3] = token;
    return opts;
}

ExchangeResult exchange(std::uint32_t mts_handle, std::uint32_t node, std::uint32_t sap, std::uint32_t opcode,
                        const void *request, std::uint32_t length, std::uint32_t recv_word2, Reply reply_use,
                        ReceivedMessage &reply) {
    std::uint32_t token = 0;
    if (const std::int32_t rc = send_and_take_token(mts_handle, node, sap, opcode, request, length, token))
        return {Outcome::send_failed, rc};
    if (const std::int32_t rc = reply.receive(receive_options(token, recv_word2)))
        return {Outcome::recv_failed, rc};
    if (reply_use == Reply::confirm_only) {
        reply.release();
        return {};
    }
    if (reply.payload().empty()) return {Outcome::empty_payload, 0};
    return {};
}

}  // namespace

ExchangeResult qd_exchange(std::uint32_t mts_handle, std::uint8_t command, std::uint32_t if_index,
                           std::uint32_t arg, Reply reply_use, ReceivedMessage &reply) {
    qd_cli_req request{};
    request.command = command;
    request.if_index = if_index;
    request.arg = arg;
    return exchange(mts_handle, MTS_NODE_LOCAL, QD_MTS_SAP, QD_CLI_OPC, &request, sizeof request, 0, reply_use,
                    reply);
}

void put_be32(std::uint8_t (&field)[4], std::uint32_t value) {
    field[0] = static_cast<std::uint8_t>(value >> 24);
    field[1] = static_cast<std::uint8_t>(value >> 16);
    field[2] = static_cast<std::uint8_t>(value >> 8);
    field[3] = static_cast<std::uint8_t>(value);
}

lc_stats_req make_lc_request(std::uint8_t cmd, std::uint8_t variant) {
    lc_stats_req request{};
    request.hdr.cmd = cmd;
    request.hdr.variant = variant;
    request.hdr.count = 1;
    // A 32-bit 1 in little-endian byte order on every host, never converted.
    request.hdr.fixed_one[0] = 1;
    return request;
}

std::uint32_t lc_stats_node(std::uint32_t slot) { return (((slot + 1) << 8) | 2) & 0xffffu; }

ExchangeResult lc_stats_exchange(std::uint32_t mts_handle, std::uint32_t node, const lc_stats_req &request,
                                 ReceivedMessage &reply) {
    return exchange(mts_handle, node, LC_STATS_SAP, LC_STATS_OPC, &request, sizeof request, LC_STATS_RECV_WORD2,
                    Reply::read, reply);
}

std::uint32_t lc_reply_status(const PayloadReader &payload) { return payload.be32(28); }

const char *error_text(std::int32_t code) {
    const char *text = syserr2str(code);
    return text ? text : "unknown error";
}

}  // namespace qdcli

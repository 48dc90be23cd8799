// SPDX-License-Identifier: MIT
#include "frame/message.hpp"

namespace qdcli {

std::int32_t ReceivedMessage::receive(const mts_recv_opts &opts) {
    release();
    record_ = mts_msg{};
    const std::int32_t rc = mts_recv(handle_, &record_, &opts);
    held_ = (rc == 0);
    return rc;
}

PayloadReader ReceivedMessage::payload() const {
    if (!held_) return {};
    const void *data = mts_payload_get(&record_);
    if (data == nullptr) return {};
    return PayloadReader(data, mts_payload_length_get(&record_));
}

void ReceivedMessage::release() {
    if (!held_) return;
    held_ = false;
    mts_drop(handle_, &record_);
}

std::int32_t send_and_take_token(std::uint32_t mts_handle, std::uint32_t node, std::uint32_t sap,
                                 std::uint32_t opcode, const void *payload, std::uint32_t length,
                                 std::uint32_t &token) {
    mts_msg sent{};
    const std::int32_t rc = mts_send(mts_handle, node, sap, opcode, payload, length, &sent, 0, 0);
    if (rc != 0) return rc;  // nothing to release: the message was not sent
    token = mts_rr_token_get(&sent);
    mts_drop(mts_handle, &sent);
    return 0;
}

}  // namespace qdcli

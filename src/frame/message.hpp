// SPDX-License-Identifier: MIT
// Ownership of transport messages.
//
// A received message is held by a ReceivedMessage from the successful
// mts_recv until release() or the end of the owner's scope, whichever comes
// first, and is dropped exactly once. No other code calls mts_drop on it.
#pragma once

#include <cstdint>

#include "frame/reader.hpp"
#include "qdcli/platform.h"

namespace qdcli {

class ReceivedMessage {
public:
    explicit ReceivedMessage(std::uint32_t mts_handle) : handle_(mts_handle), record_{} {}
    ~ReceivedMessage() { release(); }
    ReceivedMessage(const ReceivedMessage &) = delete;
    ReceivedMessage &operator=(const ReceivedMessage &) = delete;

    // Receives into the owned record; holds the message on success.
    // Returns mts_recv's result. Must not be called while a message is held.
    std::int32_t receive(const mts_recv_opts &opts);

    bool held() const { return held_; }
    // The payload of the held message; empty when none is held or it has none.
    PayloadReader payload() const;
    // Drops the held message; later calls do nothing.
    void release();

private:
    std::uint32_t handle_;
    mts_msg record_;
    bool held_ = false;
};

// Sends a request and releases the sent message right after taking its
// token. Returns mts_send's result; on success `token` holds the token.
std::int32_t send_and_take_token(std::uint32_t mts_handle, std::uint32_t node, std::uint32_t sap,
                                 std::uint32_t opcode, const void *payload, std::uint32_t length,
                                 std::uint32_t &token);

}  // namespace qdcli

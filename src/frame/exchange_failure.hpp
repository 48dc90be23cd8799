// SPDX-License-Identifier: MIT
// How a handler tells the user that its exchange with the queuing daemon
// failed. Each command family uses one of three fixed styles; each function
// returns the status the handler then returns, or nothing when the exchange
// succeeded and the handler goes on. An empty reply stays held by its owner
// and is released when the owner goes out of scope.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "frame/exchange.hpp"
#include "output/printer.hpp"

namespace qdcli {

// Standard output: the error text on its own line (puts); an empty reply
// prints "mts payload is empty" without a newline. Status: the error code,
// 0 after an empty reply.
std::optional<std::int32_t> told_on_stdout(const ExchangeResult &result);

// The one-interface clear: a failed send prints "Error in MTS end to QD, %s\n",
// a failed receive the error text on its own line.
std::optional<std::int32_t> told_by_interface_clear(const ExchangeResult &result);

// The printer: the error text and a newline, cut to fit `buffer_size` bytes,
// or "mts payload is empty"; flushed at once.
std::optional<std::int32_t> told_on_printer(Printer &out, const ExchangeResult &result, std::size_t buffer_size);

// Asks the daemon `command` about an interface and receives its reply into
// `reply`; a failure is told on the printer as told_on_printer() tells it.
std::optional<std::int32_t> ask_daemon(Printer &out, std::uint32_t mts_handle, std::uint8_t command,
                                       std::uint32_t if_index, ReceivedMessage &reply, std::size_t buffer_size);

}  // namespace qdcli

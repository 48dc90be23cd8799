// SPDX-License-Identifier: MIT
#include "frame/exchange_failure.hpp"

#include <cstdio>

#include "output/observe.hpp"

namespace qdcli {

namespace {
constexpr const char *kEmptyPayload = "mts payload is empty";

qdcli_failure_kind transport_kind(Outcome outcome) {
    return outcome == Outcome::send_failed ? QDCLI_FAILURE_SEND : QDCLI_FAILURE_RECEIVE;
}
}  // namespace

std::optional<std::int32_t> told_on_stdout(const ExchangeResult &result) {
    switch (result.outcome) {
    case Outcome::send_failed:
    case Outcome::recv_failed:
        observe::fail_on_stdout(transport_kind(result.outcome), result.error, "%s\n", error_text(result.error));
        return result.error;
    case Outcome::empty_payload:
        observe::fail_on_stdout(QDCLI_FAILURE_EMPTY, 0, "%s", kEmptyPayload);
        return 0;
    case Outcome::ok:
        break;
    }
    return std::nullopt;
}

std::optional<std::int32_t> told_by_interface_clear(const ExchangeResult &result) {
    if (result.outcome == Outcome::send_failed) {
        observe::fail_on_stdout(QDCLI_FAILURE_SEND, result.error, "Error in MTS end to QD, %s\n",
                                error_text(result.error));
        return result.error;
    }
    return told_on_stdout(result);
}

std::optional<std::int32_t> told_on_printer(Printer &out, const ExchangeResult &result, std::size_t buffer_size) {
    switch (result.outcome) {
    case Outcome::send_failed:
    case Outcome::recv_failed:
        out.fail(transport_kind(result.outcome), result.error, buffer_size, "%s\n", error_text(result.error));
        out.flush();
        return result.error;
    case Outcome::empty_payload:
        out.fail_literal(QDCLI_FAILURE_EMPTY, 0, kEmptyPayload);
        out.flush();
        return 0;
    case Outcome::ok:
        break;
    }
    return std::nullopt;
}

std::optional<std::int32_t> ask_daemon(Printer &out, std::uint32_t mts_handle, std::uint8_t command,
                                       std::uint32_t if_index, ReceivedMessage &reply, std::size_t buffer_size) {
    return told_on_printer(out, qd_exchange(mts_handle, command, if_index, 0, Reply::read, reply), buffer_size);
}

}  // namespace qdcli

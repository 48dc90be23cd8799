// SPDX-License-Identifier: MIT
#include "frame/exchange_failure.hpp"

#include <cstdio>

namespace qdcli {

namespace {
constexpr const char *kEmptyPayload = "mts payload is empty";
}

std::optional<std::int32_t> told_on_stdout(const ExchangeResult &result) {
    switch (result.outcome) {
    case Outcome::send_failed:
    case Outcome::recv_failed:
        std::puts(error_text(result.error));
        return result.error;
    case Outcome::empty_payload:
        std::fputs(kEmptyPayload, stdout);
        return 0;
    case Outcome::ok:
        break;
    }
    return std::nullopt;
}

std::optional<std::int32_t> told_by_interface_clear(const ExchangeResult &result) {
    if (result.outcome == Outcome::send_failed) {
        std::printf("Error in MTS end to QD, %s\n", error_text(result.error));
        return result.error;
    }
    return told_on_stdout(result);
}

std::optional<std::int32_t> told_on_printer(Printer &out, const ExchangeResult &result, std::size_t buffer_size) {
    switch (result.outcome) {
    case Outcome::send_failed:
    case Outcome::recv_failed:
        out.formatted(buffer_size, "%s\n", error_text(result.error));
        out.flush();
        return result.error;
    case Outcome::empty_payload:
        out.literal(kEmptyPayload);
        out.flush();
        return 0;
    case Outcome::ok:
        break;
    }
    return std::nullopt;
}

}  // namespace qdcli

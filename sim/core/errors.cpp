// SPDX-License-Identifier: MIT
#include "core/errors.hpp"

#include <cstdio>

#include "qdcli/platform.h"
#include "qdcli/wire.h"

namespace qdsim {
namespace {

struct ErrorEntry {
    std::int32_t code;
    const char *name;
    const char *text;
};

constexpr ErrorEntry kErrors[] = {
    {0, "success", "success"},
    {kErrSend, "send", "message could not be sent"},
    {kErrRecv, "recv", "no reply could be received"},
    {kErrNoRoute, "no_route", "no service at the destination"},
    {kErrBadHandle, "bad_handle", "transport handle is not open"},
    {kErrNoReply, "no_reply", "no reply carries this token"},
    {kErrBadOptions, "bad_options", "receive options do not match the exchange"},
    {kErrBadMessage, "bad_message", "message record is not valid"},
    {kErrUnsupported, "unsupported", "operation not supported"},
    {kErrNoInterface, "no_interface", "no such interface"},
    {kErrNoModule, "no_module", "no such module"},
    {kErrBadArgument, "bad_argument", "invalid argument"},
    {kErrBadRequest, "bad_request", "malformed request"},
    {kErrTimeout, "timeout", "timed out waiting for the reply"},
    {kErrNoService, "no_service", "service not available"},
    {static_cast<std::int32_t>(QD_STATUS_UNSUPPORTED), "qd_unsupported", "not supported by the queuing daemon"},
};

}  // namespace

const char *error_text(std::int32_t code) {
    for (const ErrorEntry &entry : kErrors)
        if (entry.code == code) return entry.text;
    thread_local char unknown[32];
    std::snprintf(unknown, sizeof unknown, "error 0x%08x", static_cast<unsigned>(code));
    return unknown;
}

std::optional<std::int32_t> error_by_name(std::string_view name) {
    for (const ErrorEntry &entry : kErrors)
        if (name == entry.name) return entry.code;
    return std::nullopt;
}

}  // namespace qdsim

extern "C" const char *syserr2str(std::int32_t code) { return qdsim::error_text(code); }

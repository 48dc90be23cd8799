// SPDX-License-Identifier: MIT
// CoS-map configuration: qd_cli_conf_wrrqueue_cosmap and its no form. One
// flags byte (bit 0: the no form, bits 1-2: the platform type 0-3, bit 3:
// the platform-type query fails), the number of arguments, each
// [param_type: 1][value: 1] (param_type 255: no value), then exchange frames.
#include "harness/harness.hpp"
#include "qdcli/handlers.h"

namespace {
constexpr std::size_t kMaxExchanges = 4;
}  // namespace

QDFUZZ_ENTRY(cosmap_config) {
    qdfuzz::Session session;
    qdfuzz::Input in(data, size);
    const std::uint8_t flags = in.u8();
    session.pf().platform_type = (flags >> 1) & 3;
    if ((flags & 8) != 0) session.pf().platform_type_rc = -1;
    const std::size_t args = in.u8() % 16;
    for (std::size_t i = 0; i < args; ++i) {
        const std::uint8_t type = in.u8();
        const std::uint8_t value = in.u8();
        if (type == 255)
            session.arguments().arg_null(type);
        else
            session.arguments().arg_u8(type, value);
    }
    session.replies(in, kMaxExchanges);
    session.pad_replies(kMaxExchanges);
    if ((flags & 1) != 0) {
        session.arguments().no_form();
        qd_cli_no_wrrqueue_cosmap(session.command());
    } else {
        qd_cli_conf_wrrqueue_cosmap(session.command());
    }
    session.check();
    return 0;
}

std::vector<qdfuzz::Bytes> qdfuzz_seeds_cosmap_config() {
    using qdfuzz::Frames;
    const qdfuzz::Bytes ok = {0, 0, 0, 0};
    return {
        Frames().raw({0, 3, 19, 2, 20, 3, 20, 5}).reply(ok),
        Frames().raw({1, 2, 19, 1, 20, 7}).reply(ok),
        Frames().raw({2, 2, 19, 0, 20, 1}).reply(ok),
        Frames().raw({8, 1, 19, 9}).reply(ok),
        Frames().raw({0, 4, 20, 1, 19, 1, 255, 0, 20, 200}).reply({1, 0, 0, 0}),
    };
}

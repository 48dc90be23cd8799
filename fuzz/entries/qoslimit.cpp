// SPDX-License-Identifier: MIT
// Queue-limit and default-value callbacks: the card query's result (one
// byte, signed), the card id (2 bytes), the software card id (4 bytes), then
// which records are handed over (bit 0: null range record, bit 1: null
// default record). All three callbacks run, in the shell's order.
#include <cstdlib>

#include "harness/harness.hpp"
#include "qdcli/handlers.h"

QDFUZZ_ENTRY(qoslimit) {
    qdfuzz::Session session;
    qdfuzz::Input in(data, size);
    qdtest::Platform &pf = session.pf();
    pf.card_query_rc = static_cast<std::int8_t>(in.u8());
    pf.card_id = in.le16();
    pf.sw_card_id = in.le32();
    const std::uint8_t nulls = in.u8();
    std::free(qdcli_interface_qoslimit_help_get(nullptr, nullptr));
    std::uint32_t range[2] = {0xdeadbeef, 0xdeadbeef};
    qdcli_interface_qoslimit_range_get(nullptr, nullptr, (nulls & 1) != 0 ? nullptr : range);
    std::uint32_t record[2] = {0xdeadbeef, 0xdeadbeef};
    qdcli_pdcli_cmd_qd_def_get(nullptr, nullptr, (nulls & 2) != 0 ? nullptr : record);
    session.check();
    return 0;
}

std::vector<qdfuzz::Bytes> qdfuzz_seeds_qoslimit() {
    return {
        {0, 0x34, 0x12, 0, 0, 0, 0, 0},
        {0, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0},
        {0xff, 0, 0, 0, 0, 0, 0, 0},
        {0, 1, 0, 2, 0, 0, 0, 3},
    };
}

// SPDX-License-Identifier: MIT
// Well-formed replies built from the documented layouts, for seed corpora
// and benchmarks. Every builder gives a complete payload (header included)
// with distinct, recognisable values in every field a report prints.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace qdfuzz {

using Bytes = std::vector<std::uint8_t>;

// Reply of the queuing daemon to command code 17: a 48-byte header and
// `groups` qos-group records of 152 bytes (group_count is cut to 8 bits by
// the report). `vaq_port` 1 asks for the extender block.
Bytes eth_queuing_reply(unsigned groups, bool vaq_port = false, bool vaq_buf_hidden = false);

// Reply of a line card to sub-command 16: the 32-byte header and the
// 1108-byte host-interface body, `ib_count` input buffers and `queue_count`
// queues (both at most 8), statistics in `stats_format`.
struct HifShape {
    std::uint32_t ib_count = 8;
    std::uint32_t queue_count = 8;
    std::uint8_t stats_format = 1;
    bool control = true;      // control input buffer and control queues 0 and 1
    bool unsupported = true;  // qos-groups used but missing from the hardware maps
    std::uint32_t buffer_threshold = 0x20000;
};
Bytes hif_queuing_reply(const HifShape &shape);

// Reply of the queuing daemon to command code 22: slot and NIF port.
Bytes nif_port_reply(std::uint16_t slot, std::uint32_t nif_if_index);

// Reply of a line card to sub-command 23: `records` port records spread over
// the three classes (eNIF, iHIF, iNIF in turn), glb_idx counted per class.
Bytes port_records_reply(unsigned records);

}  // namespace qdfuzz

// SPDX-License-Identifier: MIT
// Port records of an extender, as its slot's statistics agent reports them
// (LC_STATS_CMD_INTERNAL_PORTS): 84 bytes each, packed back to back after the
// 32-byte reply header.
#pragma once

#include <cstddef>
#include <cstdint>

#include "frame/reader.hpp"

namespace qdcli::internal_stats {

// Port classes; the value is also the port kind kept in the port map.
enum class PortClass : std::uint16_t { enif = 0, ihif = 1, inif = 2 };

struct PortRecord {
    std::uint16_t glb_idx = 0;  // index within the port's class
    std::uint16_t asic_no = 0;
    std::uint16_t port_type = 0;
    std::uint16_t port_id = 0;
    std::uint16_t nif_class = 0;
    std::uint64_t ctrl_rcvd = 0;
    std::uint64_t ctrl_sent = 0;
    std::uint64_t data_rcvd = 0;
    std::uint64_t data_sent = 0;
    std::uint64_t rx_drop = 0;
    std::uint64_t rx_error = 0;
    std::uint64_t tx_drop = 0;

    // NIF ports split on nif_class (0: eNIF, else iNIF); every other port
    // type is an iHIF whatever its nif_class holds.
    PortClass port_class() const;
};

// Record i of `records` (which must cover it).
PortRecord decode_port_record(const PayloadReader &records, std::size_t i);

// The records of a reply body: `count` records starting at `records`.
inline PayloadReader port_records(const std::uint8_t *records, std::uint32_t count) {
    return PayloadReader(records, std::size_t{count} * 84u);
}

}  // namespace qdcli::internal_stats

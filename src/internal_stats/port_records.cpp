// SPDX-License-Identifier: MIT
#include "internal_stats/port_records.hpp"

#include "frame/guard.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

namespace qdcli::internal_stats {
namespace {

constexpr std::size_t kGlbIdx = 0;
constexpr std::size_t kAsicNo = 4;
constexpr std::size_t kPortType = 6;
constexpr std::size_t kPortId = 8;
constexpr std::size_t kNifClass = 10;
constexpr std::size_t kCtrlRcvd = 12;
constexpr std::size_t kCtrlSent = 20;
constexpr std::size_t kDataRcvd = 28;
constexpr std::size_t kDataSent = 36;
constexpr std::size_t kRxDrop = 44;
constexpr std::size_t kRxError = 60;
constexpr std::size_t kTxDrop = 68;

}  // namespace

PortClass PortRecord::port_class() const {
    if (port_type != PORT_TYPE_NIF) return PortClass::ihif;
    return nif_class == 0 ? PortClass::enif : PortClass::inif;
}

PortRecord decode_port_record(const PayloadReader &records, std::size_t i) {
    const PayloadReader r = records.from(i * LC_PORT_REC_SIZE);
    PortRecord p;
    if (!r.covers(0, LC_PORT_REC_SIZE)) return p;
    p.glb_idx = r.be16(kGlbIdx);
    p.asic_no = r.be16(kAsicNo);
    p.port_type = r.be16(kPortType);
    p.port_id = r.be16(kPortId);
    p.nif_class = r.be16(kNifClass);
    // Counters: two big-endian words, the low 32 bits first.
    p.ctrl_rcvd = r.be64_low_first(kCtrlRcvd);
    p.ctrl_sent = r.be64_low_first(kCtrlSent);
    p.data_rcvd = r.be64_low_first(kDataRcvd);
    p.data_sent = r.be64_low_first(kDataSent);
    p.rx_drop = r.be64_low_first(kRxDrop);
    p.rx_error = r.be64_low_first(kRxError);
    p.tx_drop = r.be64_low_first(kTxDrop);
    return p;
}

}  // namespace qdcli::internal_stats

// Adds each record to the count of its class. The counts are not cleared
// first: the caller starts them at 0 (with no records they stay as given).
extern "C" void qd_count_ports(const uint8_t *records, uint32_t count, uint32_t *enif, uint32_t *ihif,
                               uint32_t *inif) {
    using namespace qdcli::internal_stats;
    qdcli::guarded_void([&] {
        if (count == 0 || records == nullptr || !enif || !ihif || !inif) return;
        const qdcli::PayloadReader body = port_records(records, count);
        for (std::uint32_t i = 0; i < count; ++i) {
            switch (decode_port_record(body, i).port_class()) {
            case PortClass::enif: ++*enif; break;
            case PortClass::ihif: ++*ihif; break;
            case PortClass::inif: ++*inif; break;
            }
        }
    });
}

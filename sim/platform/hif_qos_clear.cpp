// SPDX-License-Identifier: MIT
// What a QoS clear of a host interface zeroes besides its "qos_counters":
// the counter blocks of its "hif_queuing" section (the queue statistics and
// the interface's drop and error counts that the line-card agent reports),
// so that the host-interface queuing report starts again from 0. The
// section's configuration (input buffers, queues, limits) stays.
#include "platform/services.hpp"

namespace qdsim::platform {
namespace {

const QosClearRegistrar hif_queuing_clear{[](const Interface &host, Model &) {
    if (host.data == nullptr) return;
    if (Json *section = host.data.edit("/hif_queuing")) zero_counter_blocks(*section);
}};

}  // namespace
}  // namespace qdsim::platform

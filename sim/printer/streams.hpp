// SPDX-License-Identifier: MIT
// Attribute streams handed to the switch-wide report through a response
// record (cmd_rsp_attr_getnext), and the producer of the daemon's stream.
//
// qdsim::open_switch_stream asks the registered producer for the stream of
// the switch as the model holds it at that moment. The producer lives in a
// file of its own:
//
//   const qdsim::printer::StreamProducerRegistrar producer{make_switch_stream};
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "model/model.hpp"
#include "qdsim/sim.h"

namespace qdsim::printer {

using StreamProducer = std::function<std::vector<Attribute>(Model &, std::uint32_t mts_handle)>;

void set_switch_stream_producer(StreamProducer producer);

struct StreamProducerRegistrar {
    explicit StreamProducerRegistrar(StreamProducer producer) { set_switch_stream_producer(std::move(producer)); }
};

}  // namespace qdsim::printer


// SPDX-License-Identifier: MIT
// Multicast WRR queue CoS map: configure (19), show (20), remove (21).
//
// The map lives at /cos_map, the queue (0 to 3) of each CoS 0 to 7. The
// request's arg carries the CoS set in bits 0-7 and the queue in bits 8-15;
// bits 16-31 are not the daemon's. Configuring maps every CoS of the set to
// the queue. Removing returns each CoS of the set that is on that queue to
// its default queue (the scenario's default map);
// a CoS mapped elsewhere stays where it is. A queue above 3 leaves the map
// as it was and answers kErrBadArgument (the handlers do not read these
// replies; the state shows it).
#include <array>

#include "core/errors.hpp"
#include "core/wire_writer.hpp"
#include "daemon/daemon.hpp"
#include "model/policy.hpp"
#include "qdcli/wire.h"

namespace qdsim::daemon {
namespace {

// Configuring (`add`) maps the CoS of the set to the queue; removing gives
// those of the set on that queue their default queue back.
Reply change(const Request &request, Model &model, bool add) {
    const unsigned queue = (request.arg >> 8) & 0xffu;
    const unsigned cos_set = request.arg & 0xffu;
    if (queue > policy::kMaxQueue) return Reply::status(kErrBadArgument);
    std::array<std::uint8_t, 8> map = model.cos_map();
    for (unsigned cos = 0; cos < 8; ++cos) {
        if (!(cos_set & (1u << cos))) continue;
        if (add) map[cos] = static_cast<std::uint8_t>(queue);
        else if (map[cos] == queue) map[cos] = policy::kCosMap[cos];
    }
    model.set_cos_map(map);
    return Reply::status(0);
}

Reply configure(const Request &request, Model &model) { return change(request, model, true); }
Reply remove(const Request &request, Model &model) { return change(request, model, false); }

// Reply: status word (host order), then the queue of CoS 0 to 7.
Reply show(const Request &, Model &model) {
    WireWriter out;
    out.host32(0);
    for (std::uint8_t queue : model.cos_map()) out.u8(queue);
    return Reply::bytes(out.take());
}

// Not supported: the status, and no CoS on any queue.
Reply show_unsupported(const Request &, Model &) {
    WireWriter out;
    out.host32(QD_STATUS_UNSUPPORTED);
    for (unsigned cos = 0; cos < 8; ++cos) out.u8(0xff);
    return Reply::bytes(out.take());
}

Reply refused(const Request &, Model &) { return Reply::status(QD_STATUS_UNSUPPORTED); }

const CommandRegistrar configure_command{{QD_CLI_CMD_CONF_WRR_COSMAP, "configure wrr-queue cos-map", configure, refused}};
const CommandRegistrar show_command{{QD_CLI_CMD_SHOW_WRR_COSMAP, "show wrr-queue cos-map", show, show_unsupported}};
const CommandRegistrar remove_command{{QD_CLI_CMD_NO_WRR_COSMAP, "remove wrr-queue cos-map", remove, refused}};

}  // namespace
}  // namespace qdsim::daemon

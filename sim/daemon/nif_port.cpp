// SPDX-License-Identifier: MIT
// The extender behind an interface (command 22): where its statistics
// agent sits and which of its network ports faces the interface.
//
// Reply, 6 bytes: the extender's slot (big-endian 16-bit), then the index of
// the NIF port behind the interface (big-endian 32-bit). The extender's NIF
// port is known to the switch by the index of the uplink that it faces, so
// an uplink answers its own index; the agent of the extender checks the same
// pair when it is asked for its internal ports. An interface that leads to
// no extender (or no interface at all) gets slot 0 and index 0.
#include "core/wire_writer.hpp"
#include "daemon/daemon.hpp"
#include "qdcli/wire.h"

namespace qdsim::daemon {
namespace {

Reply nif_port(const Request &request, Model &model) {
    const Extender *e = model.extender_behind(request.if_index);
    WireWriter out;
    out.be16(e ? e->slot : 0).be32(e ? request.if_index : 0);
    return Reply::bytes(out.take());
}

// "Not supported" here means that the daemon knows of no port behind the
// interface.
Reply no_port(const Request &, Model &) { return Reply::bytes(std::vector<std::uint8_t>(6, 0)); }

const CommandRegistrar command{{QD_CLI_CMD_GET_NIF_PORT, "get NIF port", nif_port, no_port}};

}  // namespace
}  // namespace qdsim::daemon

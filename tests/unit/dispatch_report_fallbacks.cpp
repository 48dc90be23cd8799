// Stand-ins for the two reports the show-queuing dispatcher hands
// interfaces to: the Ethernet report and the structured host-interface
// report. They are weak definitions, linked only while those reports are not
// among the library's objects; once they are, the library's own definitions
// take their place and these are never used.
//
// Each stand-in makes the report's first exchange and answers the way the
// report does for the outcomes the dispatcher tests script (a complete
// Ethernet reply, an "unsupported" answer, transport failures, a failed send
// to a line card). The dispatcher tests assert only on what both the
// stand-ins and the real reports show: the request sent (command code 17 to
// the daemon, sub-command 16 to the interface's line card), the first
// printed line, the "Unsupported interface" rule, and the result.
#include <cstring>

#include "frame/exchange.hpp"
#include "frame/message.hpp"
#include "frame/printer.hpp"
#include "qdcli/handlers.h"
#include "qdcli/wire.h"

extern "C" __attribute__((weak)) int32_t qd_cli_show_queuing_if(cmd_paraminfo *pinfo, uint32_t if_index,
                                                               const char *if_name) {
    qdcli::Printer out(pinfo);
    const bool tell_unsupported = pinfo->cmd_id == CMD_ID_UNSUPPORTED_MSG;
    qdcli::ReceivedMessage reply(pinfo->mts_handle);
    const auto sent = qdcli::qd_exchange(pinfo->mts_handle, QD_CLI_CMD_SHOW_IF_QUEUING, if_index, 0,
                                         qdcli::Reply::read, reply);
    if (sent.outcome == qdcli::Outcome::send_failed || sent.outcome == qdcli::Outcome::recv_failed) {
        out.formatted(50, "%s\n", qdcli::error_text(sent.error));
        out.flush();
        return sent.error;
    }
    if (sent.outcome == qdcli::Outcome::empty_payload) {
        out.literal("mts payload is empty");
        out.flush();
        return 0;
    }
    if (reply.payload().host32(4) == QD_STATUS_UNSUPPORTED) {
        if (tell_unsupported) {
            out.literal("Unsupported interface\n");
            out.flush();
        }
        return 1;
    }
    out.line("%s queuing information:\n", qdcli::text(0x30ff003au, if_name));
    reply.release();
    out.flush();
    return 0;
}

extern "C" __attribute__((weak)) int32_t qd_cli_show_queuing_hif_xmlized(cmd_paraminfo *pinfo, uint32_t if_index,
                                                                        const char *if_name) {
    qdcli::Printer out(pinfo);
    std::uint8_t slot = 0;
    if_index_get_slot(if_index, &slot);
    out.line("if_slot %s, ifidx 0x%s\n", qdcli::u32(0x14ff0073u, slot), qdcli::u32(0x14ff0074u, if_index));
    lc_stats_req request = qdcli::make_lc_request(LC_STATS_CMD_HIF_QUEUING, 3);
    const std::uint32_t target = hton_if_index(if_index);
    std::memcpy(request.target_if_index, &target, 4);
    qdcli::ReceivedMessage reply(pinfo->mts_handle);
    const auto sent = qdcli::lc_stats_exchange(pinfo->mts_handle, qdcli::lc_stats_node(slot), request, reply);
    if (sent.outcome == qdcli::Outcome::send_failed || sent.outcome == qdcli::Outcome::recv_failed) {
        out.formatted(80, "Cmd %s failed for %s with error code %s\n",
                      sent.outcome == qdcli::Outcome::send_failed ? "send" : "recv", if_name,
                      qdcli::error_text(sent.error));
    } else if (sent.outcome == qdcli::Outcome::empty_payload) {
        out.literal("mts payload is empty");
    } else {
        out.formatted(80, "%s queuing information:\n", if_name);
    }
    out.flush();
    return 0;
}

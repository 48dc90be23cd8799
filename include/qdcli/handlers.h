// SPDX-License-Identifier: MIT
/**
 * @file qdcli/handlers.h
 * @brief Exported command handlers and parameter callbacks of libqdcli.so.
 *
 * The shell resolves each by its exact name (they are the only symbols the
 * library exports, under the version node QDCLI_0.1) and calls it when the
 * user runs its command.
 *
 * Calling: one handler at a time, on the shell's thread; a handler blocks
 * until the daemon's or the line card's reply arrives and returns when its
 * report is printed. Handlers of one family call each other directly. The
 * library keeps no state between calls but the cached platform type, one
 * word written without a lock, so handlers must not run on two threads at
 * once. No exception leaves a handler.
 *
 * Arguments: @p pinfo is the shell's record of the command (its arguments,
 * its transport handle and its command identifier `cmd_id`), read and,
 * where said, written (`cmd_id`); the library keeps no pointer to it. A
 * null @p pinfo is refused with status 1. @p if_index is a platform interface
 * index and @p if_name its name as the user should see it.
 *
 * Status: 0 for success, also after a refusal that was printed as a message
 * and after an empty reply; the MTS error code when a send or receive to the
 * daemon failed; 1 for a null @p pinfo, an interface the daemon does not
 * support or an unknown debug command; -1 for the failures of the pause logs
 * and a zero interface index given to the QoS clear. The host-interface
 * reports, the extender drop report and the internal statistics after their
 * first exchange return 0 after their failures and tell them in the output.
 *
 * Output goes one fixed way per handler, as each says: through the shell's
 * printer (typed arguments, rendered as text or structured output, flushed
 * with cmd_prt_send() at fixed points) or to standard output (stdio).
 * Failures are told there too; nothing is logged elsewhere. A name or error
 * text containing `%` prints literally.
 *
 * Resources: every message the handler receives is released exactly once on
 * every path; its heap buffers are freed before it returns. The only memory
 * handed to the caller is the help text of
 * qdcli_interface_qoslimit_help_get().
 */
#ifndef QDCLI_HANDLERS_H
#define QDCLI_HANDLERS_H

#include <stdint.h>

#include "qdcli/platform.h"

#ifdef __cplusplus
extern "C" {
#endif

#if defined(__GNUC__)
#define QDCLI_EXPORT __attribute__((visibility("default")))
#else
#define QDCLI_EXPORT
#endif

/** @name Multicast WRR queue CoS map
 *  Output: standard output. Configured below platform type 2, shown from 2 on;
 *  otherwise refused with a message (status 0).
 *  @{ */
/** Maps the CoS values of the command's arguments to its queue, or (the
 *  "no" form, `no_form` set) hands over to qd_cli_no_wrrqueue_cosmap().
 *  @return 0, the MTS error code of a failed exchange, or 1 for a null pinfo. */
QDCLI_EXPORT int32_t qd_cli_conf_wrrqueue_cosmap(cmd_paraminfo *pinfo);
/** Removes the CoS values of the command's arguments from its queue.
 *  @return as qd_cli_conf_wrrqueue_cosmap(). */
QDCLI_EXPORT int32_t qd_cli_no_wrrqueue_cosmap(cmd_paraminfo *pinfo);
/** Shows the map (daemon command 20). @return 0, the MTS error code, or 1
 *  for a null pinfo. */
QDCLI_EXPORT int32_t qd_cli_show_wrrqueue_cosmap(cmd_paraminfo *pinfo);

/** @} */

/** @name Queue-limit parameter callbacks
 *  Called by the shell's parser, not as commands: they ask no daemon and
 *  print nothing; @p a and @p b are the parser's and not read.
 *  @{ */
/** The help text of the queue-limit parameter: a fresh malloc()ed copy on
 *  every call, which the caller frees with free(); null when memory runs out. */
QDCLI_EXPORT char *qdcli_interface_qoslimit_help_get(void *a, void *b);
/** Writes the lowest (range[0]) and highest (range[1]) queue limit of this
 *  card; a card that cannot be identified gets the ordinary range, a null
 *  @p range is left alone. @return 1 (the parser's "answered"). */
QDCLI_EXPORT int32_t qdcli_interface_qoslimit_range_get(void *a, void *b, uint32_t *range);
/** Writes the default queue limit to record[1] (record[0] is the parser's);
 *  a null @p record is left alone. @return 1 (the parser's "answered"). */
QDCLI_EXPORT int32_t qdcli_pdcli_cmd_qd_def_get(void *a, void *b, uint32_t *record);

/** @} */

/** @name Ethernet interface queuing report
 *  @{ */
/** Queuing report of the Ethernet interface @p if_index named @p if_name
 *  (daemon command 17). Output: the printer, flushed after each receive
 *  block. With `cmd_id` CMD_ID_SHOW_QUEUING_IF and an interface leading to an
 *  extender, the extender's internal statistics follow
 *  (qd_cli_show_internal_stats()).
 *  @return 0, the MTS error code, or 1 for an interface the daemon does not
 *  support or a null pinfo. */
QDCLI_EXPORT int32_t qd_cli_show_queuing_if(cmd_paraminfo *pinfo, uint32_t if_index, const char *if_name);

/** @} */

/** @name Extended queuing report
 *  Ingress CoS-to-queue map, scheduling, drop modes, pass and drop counts
 *  (daemon command 23). Output: the printer.
 *  @{ */
/** For the interface in the command's request attributes.
 *  @return 0, the MTS error code, or 1. */
QDCLI_EXPORT int32_t qd_cli_show_queuing_intf_extend(cmd_paraminfo *pinfo);
/** For @p if_index; sub-interfaces are refused. @return 0, the MTS error
 *  code, or 1. */
QDCLI_EXPORT int32_t qd_cli_show_queuing_ifindex_extend(cmd_paraminfo *pinfo, uint32_t if_index);
/** For @p if_index named @p if_name. @return 0, the MTS error code, or 1 for
 *  an interface the daemon does not support. */
QDCLI_EXPORT int32_t qd_cli_show_queuing_if_extend(cmd_paraminfo *pinfo, uint32_t if_index, const char *if_name);

/** @} */

/** @name Show-queuing dispatch
 *  Output: standard output for the dispatch's own messages; each interface's
 *  report prints its own way (the printer for Ethernet and the structured
 *  host-interface report).
 *  @{ */
/** Reports each interface of the command's request attributes (with
 *  `cmd_id` set to CMD_ID_SHOW_QUEUING_IF), or every interface of the switch
 *  (qd_cli_show_queuing_intf_all()) when none is named.
 *  @return the status of the last report, or 1 for a null pinfo. */
QDCLI_EXPORT int32_t qd_cli_show_queuing_interface(cmd_paraminfo *pinfo);
/** Reports one interface by its type: Ethernet (26, 1) through
 *  qd_cli_show_queuing_if(), host interfaces (31) through
 *  qd_cli_show_queuing_hif_xmlized(); sub-interfaces are refused.
 *  @return that report's status. */
QDCLI_EXPORT int32_t qd_cli_show_queuing_ifindex(cmd_paraminfo *pinfo, uint32_t if_index);
/** Enumerates every interface in four passes (invoke_enumeration_function(),
 *  whose index arrays it frees) and reports each.
 *  @return 0, or 1 for a null pinfo. */
QDCLI_EXPORT int32_t qd_cli_show_queuing_intf_all(cmd_paraminfo *pinfo);

/** @} */

/** @name Host-interface queuing reports
 *  Line-card agent sub-command 16 and the interface's QoS counters. Failures
 *  are told in the output and return 0.
 *  @{ */
/** Plain-text report. Output: standard output. @return 0, or 1 for a null pinfo. */
QDCLI_EXPORT int32_t qd_cli_show_queuing_hif(cmd_paraminfo *pinfo, uint32_t if_index, const char *if_name);
/** Structured report. Output: the printer. @return 0, or 1 for a null pinfo. */
QDCLI_EXPORT int32_t qd_cli_show_queuing_hif_xmlized(cmd_paraminfo *pinfo, uint32_t if_index, const char *if_name);

/** @} */

/** @name Switch-wide attribute-stream report
 *  Walks the daemon's attribute stream behind @p rsp (cmd_rsp_attr_getnext()).
 *  Output: standard output.
 *  @{ */
/** Report of every interface in the stream.
 *  @return -1 when the stream has ended (the normal end), else the status of
 *  a host-interface report the stream asked for. */
QDCLI_EXPORT int32_t qd_cli_show_queuing_intf_switch(cmd_rsp *rsp);
/** The host-interface part of the stream for @p if_name; may run
 *  qd_cli_show_queuing_hif(). @return as qd_cli_show_queuing_intf_switch(). */
QDCLI_EXPORT int32_t qd_cli_show_queuing_intf_switch_hif(cmd_rsp *rsp, const char *if_name, uint32_t if_index);

/** @} */

/** @name Internal port statistics of an extender
 *  Output: the printer.
 *  @{ */
/** Asks the daemon (command 22) for the slot and port behind @p if_index and
 *  that slot's agent (sub-command 23) for the extender's port records, then
 *  prints the N2H, H2N and port-map tables (the seven tables are allocated
 *  and freed here). @return the MTS error code when the first exchange
 *  failed, else 0 (later failures are told in the output). */
QDCLI_EXPORT int32_t qd_cli_show_internal_stats(cmd_paraminfo *pinfo, uint32_t if_index, const char *if_name);
/** Counts the eNIF, iHIF and iNIF ports among @p count port records at
 *  @p records (the agent's reply body, big-endian) into the three counters.
 *  Prints nothing. */
QDCLI_EXPORT void qd_count_ports(const uint8_t *records, uint32_t count,
                                 uint32_t *enif, uint32_t *ihif, uint32_t *inif);
/** Fills the caller's tables from the port records and prints them on the
 *  printer @p handle. A counter table is @p rows rows of 3, 3, 5, 3, 3 and 4
 *  uint64_t in column order; @p port_map has @p rows entries. The caller
 *  owns and frees every table. */
QDCLI_EXPORT void qd_process_internal_stats(const uint8_t *records, uint32_t count,
                                            uint32_t enif, uint32_t ihif, uint32_t inif, uint32_t rows,
                                            uint64_t *n2h_ctrl, uint64_t *n2h_data, uint64_t *n2h_drop,
                                            uint64_t *h2n_ctrl, uint64_t *h2n_data, uint64_t *h2n_drop,
                                            qd_port_map_entry *port_map, uint32_t handle);

/** @} */

/** @name Counter clearing
 *  Output: standard output (messages only).
 *  @{ */
/** Clears the queuing counters of the interface in the command's arguments;
 *  an argument that is not an interface is refused with its message.
 *  @return 0, the clear's status, or 1 for a null pinfo. */
QDCLI_EXPORT int32_t qd_cli_clear_queuing_interface(cmd_paraminfo *pinfo);
/** Clears every queuing counter through qd_cli_clear_qos_stats_all().
 *  @return as qd_cli_clear_qos_stats_all(). */
QDCLI_EXPORT int32_t qd_cli_clear_queuing_all(cmd_paraminfo *pinfo);
/** Clears the QoS counters of @p if_index (statscl_clear_qos_counters(),
 *  and a shell command line through vsh_system2()).
 *  @return 0, the platform's status, or -1 for a zero index. */
QDCLI_EXPORT int32_t qd_cli_clear_qos_stats_ifindex(uint32_t if_index);
/** Enumerates every interface like qd_cli_show_queuing_intf_all() and
 *  clears each with qd_cli_clear_qos_stats_ifindex().
 *  @return 0, or 1 for a null pinfo. */
QDCLI_EXPORT int32_t qd_cli_clear_qos_stats_all(cmd_paraminfo *pinfo);

/** @} */

/** @name Onboard pause-event logs
 *  Output: standard output. Take no arguments.
 *  @{ */
/** Pause events per port (sse_call2() query). @return 0, or -1 when the log
 *  service failed. */
QDCLI_EXPORT int32_t qd_cli_show_logging_onboard_flow_control_td(void);
/** List of pause events, read from the log's System V shared-memory segment
 *  (attached and detached here). @return 0, or -1 when the service or the
 *  segment failed. */
QDCLI_EXPORT int32_t qd_cli_show_logging_onboard_flow_control_pe(void);

/** @} */

/** @name Extender no-credit drop report
 *  @{ */
/** No-credit drop counters of every extender (up to 100 exchanges with the
 *  line-card agents, one after another). Output: the printer, one flush at
 *  the end. @return 0 (failures are told in the output), or 1 for a null
 *  pinfo. */
QDCLI_EXPORT int32_t process_qd_cli_show_vaq_drops_all(cmd_paraminfo *pinfo);

/** @} */

/** @name Diagnostics
 *  Debug dumps of the daemon (sdwrap_debug_dump()). Output: standard output.
 *  @{ */
/** Memory statistics of the daemon (detail with a PARAM_TYPE_MEMSTATS_DETAIL
 *  argument). @return 0, an MTS error code, or 1 for a null pinfo. */
QDCLI_EXPORT int32_t qd_cli_show_memstats(cmd_paraminfo *pinfo);
/** The daemon's debug view of the interface in the command's arguments.
 *  @return 0, an MTS error code, or 1 for a null pinfo. */
QDCLI_EXPORT int32_t qd_cli_debug_show_intf(cmd_paraminfo *pinfo);
/** The debug view `cmd_id` selects (summary, ports, trace level...).
 *  @return 0, an MTS error code, or 1 for an unknown view or a null pinfo. */
QDCLI_EXPORT int32_t qd_cli_debug_show_all(cmd_paraminfo *pinfo);

/** @} */

#ifdef __cplusplus
}
#endif

#endif /* QDCLI_HANDLERS_H */

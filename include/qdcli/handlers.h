/*
 * Exported command handlers and parameter callbacks of libqdcli.so.
 * The shell resolves each by its exact name.
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

/* Multicast WRR queue CoS map */
QDCLI_EXPORT int32_t qd_cli_conf_wrrqueue_cosmap(cmd_paraminfo *pinfo);
QDCLI_EXPORT int32_t qd_cli_no_wrrqueue_cosmap(cmd_paraminfo *pinfo);
QDCLI_EXPORT int32_t qd_cli_show_wrrqueue_cosmap(cmd_paraminfo *pinfo);

/* Queue-limit parameter callbacks */
QDCLI_EXPORT char *qdcli_interface_qoslimit_help_get(void *a, void *b);
QDCLI_EXPORT int32_t qdcli_interface_qoslimit_range_get(void *a, void *b, uint32_t *range);
QDCLI_EXPORT int32_t qdcli_pdcli_cmd_qd_def_get(void *a, void *b, uint32_t *record);

/* Ethernet interface queuing report */
QDCLI_EXPORT int32_t qd_cli_show_queuing_if(cmd_paraminfo *pinfo, uint32_t if_index, const char *if_name);

/* Extended queuing report */
QDCLI_EXPORT int32_t qd_cli_show_queuing_intf_extend(cmd_paraminfo *pinfo);
QDCLI_EXPORT int32_t qd_cli_show_queuing_ifindex_extend(cmd_paraminfo *pinfo, uint32_t if_index);
QDCLI_EXPORT int32_t qd_cli_show_queuing_if_extend(cmd_paraminfo *pinfo, uint32_t if_index, const char *if_name);

/* Show-queuing dispatch */
QDCLI_EXPORT int32_t qd_cli_show_queuing_interface(cmd_paraminfo *pinfo);
QDCLI_EXPORT int32_t qd_cli_show_queuing_ifindex(cmd_paraminfo *pinfo, uint32_t if_index);
QDCLI_EXPORT int32_t qd_cli_show_queuing_intf_all(cmd_paraminfo *pinfo);

/* Host-interface queuing reports */
QDCLI_EXPORT int32_t qd_cli_show_queuing_hif(cmd_paraminfo *pinfo, uint32_t if_index, const char *if_name);
QDCLI_EXPORT int32_t qd_cli_show_queuing_hif_xmlized(cmd_paraminfo *pinfo, uint32_t if_index, const char *if_name);

/* Switch-wide attribute-stream report */
QDCLI_EXPORT int32_t qd_cli_show_queuing_intf_switch(cmd_rsp *rsp);
QDCLI_EXPORT int32_t qd_cli_show_queuing_intf_switch_hif(cmd_rsp *rsp, const char *if_name, uint32_t if_index);

/* Internal port statistics of an extender */
QDCLI_EXPORT int32_t qd_cli_show_internal_stats(cmd_paraminfo *pinfo, uint32_t if_index, const char *if_name);
QDCLI_EXPORT void qd_count_ports(const uint8_t *records, uint32_t count,
                                 uint32_t *enif, uint32_t *ihif, uint32_t *inif);
QDCLI_EXPORT void qd_process_internal_stats(const uint8_t *records, uint32_t count,
                                            uint32_t enif, uint32_t ihif, uint32_t inif, uint32_t rows,
                                            uint64_t *n2h_ctrl, uint64_t *n2h_data, uint64_t *n2h_drop,
                                            uint64_t *h2n_ctrl, uint64_t *h2n_data, uint64_t *h2n_drop,
                                            qd_port_map_entry *port_map, uint32_t handle);

/* Counter clearing */
QDCLI_EXPORT int32_t qd_cli_clear_queuing_interface(cmd_paraminfo *pinfo);
QDCLI_EXPORT int32_t qd_cli_clear_queuing_all(cmd_paraminfo *pinfo);
QDCLI_EXPORT int32_t qd_cli_clear_qos_stats_ifindex(uint32_t if_index);
QDCLI_EXPORT int32_t qd_cli_clear_qos_stats_all(cmd_paraminfo *pinfo);

/* Onboard pause-event logs */
QDCLI_EXPORT int32_t qd_cli_show_logging_onboard_flow_control_td(void);
QDCLI_EXPORT int32_t qd_cli_show_logging_onboard_flow_control_pe(void);

/* Extender no-credit drop report */
QDCLI_EXPORT int32_t process_qd_cli_show_vaq_drops_all(cmd_paraminfo *pinfo);

/* Diagnostics */
QDCLI_EXPORT int32_t qd_cli_show_memstats(cmd_paraminfo *pinfo);
QDCLI_EXPORT int32_t qd_cli_debug_show_intf(cmd_paraminfo *pinfo);
QDCLI_EXPORT int32_t qd_cli_debug_show_all(cmd_paraminfo *pinfo);

#ifdef __cplusplus
}
#endif

#endif /* QDCLI_HANDLERS_H */

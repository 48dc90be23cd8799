// SPDX-License-Identifier: MIT
/**
 * @file commands.h
 * Command identifiers: the `cmd_id` a host puts in the parameter-info
 * record (cmd_paraminfo) of each command it runs through a handler of
 * `handlers.h`.
 *
 * The debug views of qd_cli_debug_show_all are selected by their identifier
 * alone; every other handler serves one command and is given the identifier
 * named here. One identifier space holds every command, so an identifier
 * that selects no debug view is refused by qd_cli_debug_show_all.
 * CMD_ID_SHOW_QUEUING_IF and CMD_ID_UNSUPPORTED_MSG (`wire.h`) are the two
 * identifiers of the queuing report of interfaces.
 */
#ifndef QDCLI_COMMANDS_H
#define QDCLI_COMMANDS_H

/** @name Configuration and reports */
/** @{ */
#define QDCLI_CMD_CONF_WRRQUEUE_COSMAP   16u /**< [no] wrr-queue cos-map QUEUE COS... */
#define QDCLI_CMD_SHOW_WRRQUEUE_COSMAP   17u /**< show wrr-queue cos-map */
#define QDCLI_CMD_SHOW_QUEUING_EXTENDED  19u /**< show queuing interface IF extended */
#define QDCLI_CMD_SHOW_QUEUING_SWITCH    20u /**< show queuing (switch-wide stream) */
#define QDCLI_CMD_SHOW_QUEUING_HIF       26u /**< show queuing host-interface IF */
#define QDCLI_CMD_SHOW_INTERNAL_STATS    27u /**< show system internal qd extender-stats interface IF */
#define QDCLI_CMD_CLEAR_QUEUING_ALL      31u /**< clear queuing counters */
#define QDCLI_CMD_CLEAR_QUEUING_IF       32u /**< clear queuing counters interface IF */
#define QDCLI_CMD_CLEAR_QOS_STATS_ALL    33u /**< clear qos statistics */
#define QDCLI_CMD_SHOW_PAUSE_COUNT       34u /**< show logging onboard flow-control pause-count */
#define QDCLI_CMD_SHOW_PAUSE_EVENTS      35u /**< show logging onboard flow-control pause-events */
#define QDCLI_CMD_SHOW_VAQ_DROPS         36u /**< show vaq no-credit-drops */
#define QDCLI_CMD_SHOW_MEMSTATS          37u /**< show system internal qd mem-stats [detail] */
#define QDCLI_CMD_SHOW_INTERNAL_IF       38u /**< show system internal qd interface IF */
#define QDCLI_CMD_QOS_QUEUE_LIMIT        39u /**< qos queue-limit BYTES (callbacks only) */
#define QDCLI_CMD_CLEAR_PFC              40u /**< clear interface priority-flow-control [IF] */
/** @} */

/** @name Debug views of qd_cli_debug_show_all */
/** @{ */
#define QDCLI_CMD_DEBUG_SUMMARY          2u  /**< debug qd show summary */
#define QDCLI_CMD_DEBUG_GLOBAL           3u  /**< debug qd show global */
#define QDCLI_CMD_DEBUG_SUP              4u  /**< debug qd show sup */
#define QDCLI_CMD_DEBUG_FIBRE_CHANNEL    5u  /**< debug qd show fibre-channel */
#define QDCLI_CMD_DEBUG_ETHERNET         6u  /**< debug qd show ethernet */
#define QDCLI_CMD_DEBUG_PORTS            8u  /**< debug qd show ports */
#define QDCLI_CMD_DEBUG_MODULES          9u  /**< debug qd show modules */
#define QDCLI_CMD_DEBUG_COUNTERS         10u /**< debug qd show counters */
#define QDCLI_CMD_DEBUG_QOS_GROUPS       11u /**< debug qd show qos-groups */
#define QDCLI_CMD_DEBUG_BUFFERS          12u /**< debug qd show buffers */
#define QDCLI_CMD_DEBUG_VAQ              13u /**< debug qd show vaq */
#define QDCLI_CMD_DEBUG_PFC              14u /**< debug qd show pfc */
#define QDCLI_CMD_DEBUG_MTS              15u /**< debug qd show mts */
#define QDCLI_CMD_DEBUG_TIMERS           21u /**< debug qd show timers */
#define QDCLI_CMD_DEBUG_EVENTS           22u /**< debug qd show events */
#define QDCLI_CMD_DEBUG_PORT             23u /**< debug qd show port NUMBER */
#define QDCLI_CMD_DEBUG_MODULE           24u /**< debug qd show module NUMBER */
#define QDCLI_CMD_DEBUG_PORT_INFO        25u /**< debug qd show port-info IF|NUMBER */
#define QDCLI_CMD_DEBUG_QOS_GROUP        28u /**< debug qd show qos-group NUMBER */
#define QDCLI_CMD_DEBUG_TRACE_LEVEL      29u /**< [no] debug qd trace-level NUMBER */
#define QDCLI_CMD_DEBUG_QUEUE            30u /**< debug qd show queue NUMBER */
#define QDCLI_CMD_DEBUG_CLEAR_INFO       43u /**< debug qd clear-info */
/** @} */

#endif /* QDCLI_COMMANDS_H */

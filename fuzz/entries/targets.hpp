// SPDX-License-Identifier: MIT
// The one table of fuzz targets. Each name is defined in a family file of
// this folder as
//
//   void qdfuzz_<name>(qdfuzz::Session &session, qdfuzz::Input &in);  // one input
//   std::vector<qdfuzz::Bytes> qdfuzz_seeds_<name>();                 // well-formed inputs
//
// and becomes the libFuzzer binary qdfuzz_<name>, the replay test
// fuzz_replay.<name>, the contract record tests/contract/<name>.txt and the
// corpus fuzz/corpus/<name>/ (fuzz/qdfuzz.cmake reads the names from the
// X(...) lines below). The harness opens the session before an entry and
// checks the message ledger after it.
#pragma once

#include "harness/harness.hpp"

#define QDFUZZ_TARGETS(X)                                                                         \
    X(clear_family)      /* config.cpp: clears of queuing, QoS and pause counters */             \
    X(cosmap_config)     /* config.cpp: CoS-map configuration and its no form */                 \
    X(cosmap_show)       /* config.cpp: multicast WRR queue CoS map, show form */                \
    X(diagnostics)       /* config.cpp: memory statistics and debug dumps */                     \
    X(enum_names)        /* queuing.cpp: every interface, hostile enumeration and names */       \
    X(eth_report)        /* queuing.cpp: Ethernet interface report */                            \
    X(extended_args)     /* queuing.cpp: the extended report's argument entry */                 \
    X(extended_report)   /* queuing.cpp: extended report of one Ethernet interface */            \
    X(filters)           /* shell.cpp: qdsh output filters */                                    \
    X(hif_report)        /* hif.cpp: host-interface report, text */                              \
    X(hif_xmlized)       /* hif.cpp: host-interface report, structured */                        \
    X(internal_stats)    /* queuing.cpp: internal port statistics of an extender */              \
    X(pause_counts)      /* logging.cpp: onboard pause-event counts */                           \
    X(pause_events)      /* logging.cpp: onboard pause-event list */                             \
    X(qoslimit)          /* config.cpp: queue-limit and default-value callbacks */               \
    X(shell_grammar)     /* shell.cpp: qdsh command grammar */                                   \
    X(show_queuing)      /* queuing.cpp: show-queuing dispatch over request attributes */        \
    X(switch_stream)     /* queuing.cpp: switch-wide attribute stream */                         \
    X(switch_stream_hif) /* hif.cpp: switch-wide stream, host-interface part */                  \
    X(vaq_drops)         /* logging.cpp: extender no-credit drops */

#define QDFUZZ_DECLARE(name)                                           \
    void qdfuzz_##name(qdfuzz::Session &session, qdfuzz::Input &in);  \
    std::vector<qdfuzz::Bytes> qdfuzz_seeds_##name();
QDFUZZ_TARGETS(QDFUZZ_DECLARE)
#undef QDFUZZ_DECLARE

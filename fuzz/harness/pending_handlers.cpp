// Weak stand-ins for exported handlers that other handlers call but that
// are not yet among the library's objects. Every library object is linked
// into the fuzz and replay binaries, so a handler's own (strong) definition
// replaces its stand-in as soon as it is part of the library. A stand-in
// makes no exchange and prints nothing; no target fuzzes a stand-in.
#include <cstdint>

#include "qdcli/handlers.h"

extern "C" {

__attribute__((weak)) int32_t qd_cli_show_queuing_if(cmd_paraminfo *, uint32_t, const char *) { return 0; }
__attribute__((weak)) int32_t qd_cli_show_queuing_hif(cmd_paraminfo *, uint32_t, const char *) { return 0; }
__attribute__((weak)) int32_t qd_cli_show_queuing_hif_xmlized(cmd_paraminfo *, uint32_t, const char *) { return 0; }
__attribute__((weak)) int32_t qd_cli_show_internal_stats(cmd_paraminfo *, uint32_t, const char *) { return 0; }
__attribute__((weak)) void qd_count_ports(const uint8_t *, uint32_t, uint32_t *, uint32_t *, uint32_t *) {}
__attribute__((weak)) void qd_process_internal_stats(const uint8_t *, uint32_t, uint32_t, uint32_t, uint32_t,
                                                     uint32_t, uint64_t *, uint64_t *, uint64_t *, uint64_t *,
                                                     uint64_t *, uint64_t *, qd_port_map_entry *, uint32_t) {}

}  // extern "C"

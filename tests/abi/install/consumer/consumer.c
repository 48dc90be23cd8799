// SPDX-License-Identifier: MIT
#include <stddef.h>

#include "qdcli/handlers.h"
#include "qdcli/wire.h"

/* Shows the multicast CoS map of the switch the host runs on. */
int32_t consumer_show_cosmap(cmd_paraminfo *pinfo) {
    return pinfo != NULL ? qd_cli_show_wrrqueue_cosmap(pinfo) : QD_CLI_CMD_SHOW_WRR_COSMAP;
}

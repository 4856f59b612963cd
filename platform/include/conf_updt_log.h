/*
 * The log of the running configuration upgrade, kept by the framework that loads the upgrade libraries.
 */
#pragma once

#include "nzmw_log.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * The log of the upgrade that is running.
 *
 * @return the framework's log, borrowed and never to be freed; it may be used at once
 */
nzmw_log_t* get_conf_updt_log_handle(void);

#ifdef __cplusplus
}
#endif

/* SPDX-License-Identifier: Apache-2.0 */
/* Releases a received message whole, including what ipc_free() leaves to the message's owner. */
#ifndef RELEASE_H
#define RELEASE_H

#include <mdm/message.h>

void release_message(mdm_msg_t *msg);

#endif

/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Releases a message of a trusted sender, with the blocks that ipc_free() leaves to the owner of
 * the message. The record was zeroed before ipc_deserialize() filled it. A message that ipc_open()
 * returned does not need this.
 *
 * One block stays for each string of a security string list: ipc_deserialize() makes two copies of
 * the string, and no pointer to the first is left.
 */
#ifndef RELEASE_H
#define RELEASE_H

#include <mdm/message.h>

void release_message(mdm_msg_t *msg);

#endif

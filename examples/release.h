/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Releases a message of a trusted sender, including what ipc_free() leaves to the message's owner.
 * The record was zeroed before ipc_deserialize() filled it. A message that ipc_open() returns needs
 * none of this.
 *
 * One thing stays: of a security string list the codec makes two copies, and nothing points at the
 * first.
 */
#ifndef RELEASE_H
#define RELEASE_H

#include <mdm/message.h>

void release_message(mdm_msg_t *msg);

#endif

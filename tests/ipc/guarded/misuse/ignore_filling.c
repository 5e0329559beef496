/* SPDX-License-Identifier: Apache-2.0 */
/* Whoever fills a message has to know whether it was filled. */
#include <mdm/guarded.h>

void fill(mdm_msg_t *msg, const mdm_wifi_network_t *network)
{
    mdm_wifi_set_network(msg, network);
}

/* SPDX-License-Identifier: Apache-2.0 */
/*
 * The agreement of this server and this client. The codec only copies these values; the programs
 * give them their meaning.
 *
 * mdm/types.h names the message types, and the discriminators that select a record or a list.
 *
 * In a request's header hdr_word1 is the number of the request, and hdr_text the client's package
 * name. In a reply's header hdr_word1 is the number of the request, and hdr_word2 the result (0 or
 * negative). The message type of a request is odd, and that of the reply is the request's plus one:
 * MDM_TYPE_WIFI_2 answers MDM_TYPE_WIFI, and MDM_TYPE_APP_RES answers MDM_TYPE_APP. The body of a
 * reply is the policy that is now in force. Callbacks have message types of their own, and may come
 * before the reply. The server answers a request that it cannot serve with an admin reply without a
 * number.
 */
#ifndef PROTOCOL_H
#define PROTOCOL_H

/* Discriminators of the admin category besides IS_CLIENT_REGISTERED. */
enum { ADMIN_REGISTER = 1, ADMIN_REFUSED = 2 };

/* Discriminators of raw bytes and of bodies without a payload. */
enum { FIREWALL_ADD_RULES = 1, VPN_SET_PROFILE = 1, VPN_SET_SECRET = 2, SET_POLICY = 1 };

/* The secret of VPN_SET_SECRET travels as the base64 text of its ciphertext. It is encrypted with a
 * key and an initialisation vector of 16 characters each. A real service gives each device its own,
 * and keeps them out of its sources. */
#define EXAMPLE_KEY_IV \
    "an example's key" \
    "and first vector"

/* The key of the status that all clients may read: the number of registered clients. */
#define STATUS_CLIENTS "demo-registered-clients"

#endif

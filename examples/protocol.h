/* SPDX-License-Identifier: Apache-2.0 */
/*
 * What this server and this client agree on beyond the library: the codec copies these values,
 * their meaning is the programs' own.
 *
 * A request's header: hdr_word1 is its number, hdr_text the client's package name.
 * A reply's header: hdr_word1 is the request's number, hdr_word2 the result (0 or negative). Its
 * message type is the request's plus one, its body says what is now in force. What cannot be
 * served is refused by an admin reply without a number.
 */
#ifndef PROTOCOL_H
#define PROTOCOL_H

enum message_type {
    TYPE_ADMIN = 1,
    TYPE_PWD = 3,
    TYPE_VPN = 29,
    TYPE_FIREWALL = 31,
};

/* The smallest message: a header without text and an empty body. */
enum { SMALLEST_MESSAGE = 40 };

/* Discriminators of the admin category besides IS_CLIENT_REGISTERED. */
enum { ADMIN_REGISTER = 1, ADMIN_REFUSED = 2 };

/* Discriminator of a password policy record. */
enum { PWD_POLICY = 40 };

/* Discriminators of the firewall and vpn categories. */
enum { FIREWALL_ADD_RULES = 1, VPN_SET_PROFILE = 1 };

#endif

/* SPDX-License-Identifier: Apache-2.0 */
/*
 * The agreement of this server and this client. The codec only copies these values; the programs
 * give them their meaning.
 *
 * In a request's header hdr_word1 is the number of the request, and hdr_text the client's package
 * name. In a reply's header hdr_word1 is the number of the request, and hdr_word2 the result (0 or
 * negative). The message type of a reply is the request's plus one. Its body is the policy that is
 * now in force. Callbacks have message types of their own, and may come before the reply. The
 * server answers a request that it cannot serve with an admin reply without a number.
 */
#ifndef PROTOCOL_H
#define PROTOCOL_H

/* Requests and callbacks. Only the server sends callbacks. */
enum message_type {
    TYPE_ADMIN = 1,
    TYPE_PWD = 3,
    TYPE_SECURITY = 5,
    TYPE_WIFI = 7,
    TYPE_BLUETOOTH = 9,
    TYPE_EAS = 11,
    TYPE_APP = 13,
    TYPE_APP_RES = 14, /* the reply to an application request */
    TYPE_ROAMING = 15,
    TYPE_ROAMING_RES = 16, /* the reply to a roaming request */
    TYPE_MISC = 17,
    TYPE_APN = 21,
    TYPE_BROWSER = 23,
    TYPE_DATE_TIME = 25,
    TYPE_REMOTE = 27,
    TYPE_VPN = 29,
    TYPE_FIREWALL = 31,
    TYPE_RES = 33,
    TYPE_PHONE_RES = 35,
    TYPE_ENTERPRISE = 37,
    TYPE_EMAIL = 39,
    TYPE_KIOSK = 45,
    TYPE_CONTAINER = 47,
    TYPE_LOCATION = 49,
    TYPE_LOG_MANAGER = 51,
    TYPE_PLATFORM = 53,
    TYPE_APP_CB = 61,
    TYPE_MISC_CB = 63,
};

/* Discriminators of the admin category besides IS_CLIENT_REGISTERED. */
enum { ADMIN_REGISTER = 1, ADMIN_REFUSED = 2 };

/* Discriminators that select a record or a list. */
enum {
    PWD_POLICY = 40,
    SECURITY_ITEM = 56,
    WIFI_NETWORK = 345,
    BLUETOOTH_NAMES = 223,
    EAS_ACCOUNT = 98,
    APP_PACKAGES = 4,
    APP_RES_ITEMS = 140,
    MISC_BOOK = 283,
    APN_PROFILE = 387,
    PHONE_RES_EXT = 422,
    EMAIL_ACCOUNT = 359,
    KIOSK_KEY_PAIRS = 619,
    CONTAINER_ITEM = 628,
    LOG_MANAGER_TEXT = 638,
    PLATFORM_NUMBER_AND_FLAG = 439,
};

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

/* The callback types that a receiver knows. */
enum { CALLBACK_DONE = 0 };

#endif

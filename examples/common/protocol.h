/* SPDX-License-Identifier: Apache-2.0 */
/*
 * The agreement of this server and its clients. The codec only copies these values; the programs
 * give them their meaning.
 *
 * The channel is a Unix socket that keeps packets apart (SOCK_SEQPACKET). One packet is one
 * message. mdm/types.h names the message types, and the discriminators that select a form.
 *
 * The header of a request:
 *
 *   type       an odd message type
 *   hdr_byte   PROTOCOL_SET: the body is the new policy. PROTOCOL_ASK: its discriminator names the
 *              policy that is asked for; the rest of the body is ignored.
 *   hdr_word1  the number of the request. The client counts its requests from 1.
 *
 * The server believes no other field of the header. The kernel tells it who asks.
 *
 * The header of an answer:
 *
 *   type       the type of the request plus one: MDM_TYPE_WIFI_2 answers MDM_TYPE_WIFI, and
 *              MDM_TYPE_APP_RES answers MDM_TYPE_APP. A refusal has MDM_TYPE_ADMIN_2.
 *   hdr_word1  the number of the request. It is 0 if the server refuses a connection, or bytes that
 *              are too few to hold a number.
 *   hdr_word2  MDM_RESULT_SUCCESS; PROTOCOL_UNSET if the policy that is asked for was never set;
 *              MDM_RESULT_FAILED in a refusal.
 *
 * The body of an answer is the policy that is now in force. Each user has policies of his own, one
 * for each category and discriminator. Four categories answer otherwise. roaming answers with
 * roaming_res. browser and enterprise, whose payload no receiver reads, answer with its size in
 * `param`. app answers with app_res: for a list of packages the value of each item is the length of
 * its name.
 *
 * A network of wifi needs a name, and phone_res.ext the text of a limit.
 *
 * The body of a refusal is the general form of admin. Its `type` is ADMIN_REFUSED, its `value` is
 * the reason, and its `text` is a sentence for a person.
 *
 * A callback has a message type of its own. It comes before the answer, with the same number and
 * the text "done": for a list of packages of app, with how many there are, and for a book of misc.
 */
#ifndef PROTOCOL_H
#define PROTOCOL_H

/* hdr_byte of a request. */
enum { PROTOCOL_SET = 0, PROTOCOL_ASK = 1 };

/* hdr_word2 of an answer, besides the results of mdm/result.h. */
enum { PROTOCOL_UNSET = 1 };

/* Discriminators of the admin category, besides MDM_ADMIN_QUERY. */
enum { ADMIN_REGISTER = 1, ADMIN_REFUSED = 2 };

/* The reason of a refusal. */
typedef enum protocol_reason {
    PROTOCOL_MALFORMED = 1,      /* The bytes are no message. */
    PROTOCOL_NOT_SERVED = 2,     /* The message is no request, or nobody serves it. */
    PROTOCOL_FORBIDDEN = 3,      /* The rules do not allow it to this user. */
    PROTOCOL_NOT_REGISTERED = 4, /* The user has no registered client. */
    PROTOCOL_INVALID = 5,        /* The policy cannot be put in force. */
    PROTOCOL_LIMIT = 6,          /* A limit is reached. The text says which. */
    PROTOCOL_NOT_STORED = 7,     /* The server cannot store the policy now. */
} protocol_reason_t;

/* The key of the status that everybody may read: the number of registered clients. */
#define PROTOCOL_STATUS_CLIENTS "registered-clients"

#endif

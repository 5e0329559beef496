/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Texts for limits on data use and calls: server and clients store and exchange these texts.
 *
 * A limit is a limit type, 0 or 1, and six values. Its text is these seven numbers as signed
 * decimals, joined by commas and nothing else: type 1 with 10, 0, -3, 4, 5 and 6 is
 * "1,10,0,-3,4,5,6". The policies of the server give the two types and the six positions their
 * meaning and their units; these functions only carry the numbers.
 *
 * @code{.c}
 * #include <glib.h>
 * #include <mdm/result.h>
 * #include <mdm/util_policy.h>
 * #include <stdio.h>
 *
 * int main(void)
 * {
 *     const int32_t limit[MDM_PHONE_RES_LIMIT_VALUES] = {10, 0, -3,
 *                                                        4,  5, 6};
 *     char *text = NULL;
 *     uint32_t size = 0;
 *     if (mdm_phone_res_limit_serialize(1, limit, &text, &size) !=
 *         MDM_RESULT_SUCCESS) {
 *         return 1;
 *     }
 *     printf("%s takes %u bytes\n", text, size);
 *     g_free(text);
 *     return 0;
 * }
 * // prints: 1,10,0,-3,4,5,6 takes 16 bytes
 * @endcode
 *
 * The log: mdm_phone_res_limit_of_data_calls_parse_parameters() logs its text at level 1, and once
 * more at level 3 if the text has too few fields. mdm_phone_res_limit_deserialize() logs its text
 * at level 3 if it does not begin with seven numbers.
 *
 * Thread safety: the functions keep no state. Any number of threads may call them at once.
 *
 * Ids such as Q-LIMIT-1 stand in docs/quirks.md.
 */
#ifndef MDM_UTIL_POLICY_H
#define MDM_UTIL_POLICY_H

#include <stdint.h>

#include "mdm/api.h"
#include "mdm/result.h"

MDM_BEGIN_DECLS

/** The separator between the fields of a data limit's parameters. */
#define MDM_UTIL_POLICY_DELIM ","

/** Stands in place of the parameters if there is no data limit. */
#define MDM_UTIL_POLICY_DEFAULT_EMPTY_STRING "empty"

enum {
    /** The number of values of a limit, besides its type. */
    MDM_PHONE_RES_LIMIT_VALUES = 6,
};

/**
 * Makes the text of a limit.
 *
 * @param limit_type            0 or 1.
 * @param limit_data            the #MDM_PHONE_RES_LIMIT_VALUES values; not changed. Must not be
 *                              null: the call does not check it.
 * @param serialized_data       receives the new text, which the caller releases with g_free(). Null
 *                              if there was no memory for the text; untouched on the other
 *                              failures.
 * @param serialized_data_size  receives the size of the text in bytes, with its terminator;
 *                              untouched on failure.
 *
 * @return #MDM_RESULT_SUCCESS. #MDM_RESULT_INVALID_ARGUMENT if the type is neither 0 nor 1, or if
 *         one of the two outputs is null. #MDM_RESULT_OUT_OF_MEMORY if there was no memory for the
 *         text.
 */
MDM_API int32_t mdm_phone_res_limit_serialize(int32_t limit_type, const int32_t *limit_data,
                                              char **serialized_data,
                                              uint32_t *serialized_data_size);

/**
 * Reads the text of a limit by the rules of scanf(3). White space may stand before a number, and
 * nowhere else. Text behind the seventh number is ignored (Q-LIMIT-2). A number outside 32 bits
 * becomes the nearest number inside (Q-LIMIT-3).
 *
 * The call may write outputs although it fails. It stores the numbers before a malformed one. If
 * only the type is out of range, it stores all seven (Q-LIMIT-1).
 *
 * @param serialized_data  the text; not changed.
 * @param limit_type       receives the type.
 * @param limit_data       receives the #MDM_PHONE_RES_LIMIT_VALUES values.
 *
 * @return #MDM_RESULT_SUCCESS. #MDM_RESULT_INVALID_ARGUMENT if an argument is null, if the text
 *         does not begin with seven numbers, or if the type is neither 0 nor 1.
 */
MDM_API int32_t mdm_phone_res_limit_deserialize(const char *serialized_data, int32_t *limit_type,
                                                int32_t *limit_data);

/**
 * Reads the parameters of a data limit: date set, period, send limit and receive limit, separated
 * by #MDM_UTIL_POLICY_DELIM. The server's policies give them their units.
 *
 * The call does not report malformed numbers. It reads each field by the rules of strtol(3) in base
 * 10, up to the first character that is no digit. A field without a number is 0. A negative number
 * becomes 0 (Q-LIMIT-5). A number above 2147483647 becomes 2147483647. The fourth field is the rest
 * of the text, with any further commas (Q-LIMIT-6).
 *
 * Initialise the four outputs before the call. Unless an argument is null, the call logs their
 * values at its end, even if it fails (Q-LIMIT-9).
 *
 * @param text          the parameters, or exactly #MDM_UTIL_POLICY_DEFAULT_EMPTY_STRING; not
 *                      changed.
 * @param p_date_set    receives the first field.
 * @param p_period      receives the second field.
 * @param p_send_limit  receives the third field.
 * @param p_recv_limit  receives the fourth field.
 *
 * @return #MDM_RESULT_SUCCESS. For #MDM_UTIL_POLICY_DEFAULT_EMPTY_STRING, too, but then the outputs
 *         are untouched (Q-LIMIT-7). #MDM_RESULT_INVALID_ARGUMENT if an argument is null.
 *         #MDM_RESULT_FAILED if there are fewer than four fields, or if the text could not be
 *         split. On failure the outputs are untouched.
 */
MDM_API int32_t mdm_phone_res_limit_of_data_calls_parse_parameters(const char *text,
                                                                   int32_t *p_date_set,
                                                                   int32_t *p_period,
                                                                   uint32_t *p_send_limit,
                                                                   uint32_t *p_recv_limit);

MDM_END_DECLS

#endif

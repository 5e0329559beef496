/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * The texts in which limits on data use and calls are stored and exchanged.
 *
 * A limit is a limit type, 0 or 1, and six values. Its text is the seven numbers as signed
 * decimals, joined by commas and nothing else: type 1 with 10, 0, -3, 4, 5 and 6 is
 * "1,10,0,-3,4,5,6". What the types and the six positions stand for is a matter of the server's
 * policies; these functions carry the numbers.
 *
 * @code{.c}
 * #include <glib.h>
 * #include <mdm/util_policy.h>
 *
 * const int32_t limit[MDM_PHONE_RES_LIMIT_VALUES] = {10, 0, -3, 4, 5, 6};
 * char *text;
 * uint32_t size;
 * if (mdm_phone_res_limit_serialize(1, limit, &text, &size) == MDM_RESULT_SUCCESS) {
 *     printf("%s takes %u bytes\n", text, size);  // 1,10,0,-3,4,5,6 takes 16 bytes
 *     g_free(text);
 * }
 * @endcode
 *
 * The log: a text of parameters is logged at level 1, and once more at level 3 if it has too few
 * fields. The text of a limit is logged at level 3 if it does not begin with seven numbers.
 *
 * Thread safety: the functions keep no state.
 */
#ifndef MDM_UTIL_POLICY_H
#define MDM_UTIL_POLICY_H

#include <stdint.h>

#include "mdm/api.h"
#include "mdm/result.h"

MDM_BEGIN_DECLS

/** What separates the fields of a data limit's parameters. */
#define MDM_UTIL_POLICY_DELIM ","

/** In place of the parameters: no data limit is given at all. */
#define MDM_UTIL_POLICY_DEFAULT_EMPTY_STRING "empty"

enum {
    /** The number of values of a limit, besides its type. */
    MDM_PHONE_RES_LIMIT_VALUES = 6,
};

/**
 * Makes the text of a limit.
 *
 * @param limit_type            0 or 1.
 * @param limit_data            the #MDM_PHONE_RES_LIMIT_VALUES values. Not checked for null.
 * @param serialized_data       receives the new text, which the caller releases with g_free();
 *                              null when the text could not be allocated, untouched on the other
 *                              failures.
 * @param serialized_data_size  receives the bytes of the text, its terminator included; untouched
 *                              on failure.
 *
 * @return #MDM_RESULT_SUCCESS. #MDM_RESULT_INVALID_ARGUMENT if the type is neither 0 nor 1 or one
 *         of the two outputs is null; #MDM_RESULT_OUT_OF_MEMORY if the text could not be allocated.
 */
MDM_API int32_t mdm_phone_res_limit_serialize(int32_t limit_type, const int32_t *limit_data,
                                              char **serialized_data,
                                              uint32_t *serialized_data_size);

/**
 * Reads the text of a limit, by the rules of scanf(3): white space may stand before a number and
 * nowhere else, and what follows the seventh number is ignored. A number outside 32 bits becomes
 * the nearest one inside.
 *
 * Outputs are stored as the numbers are read: the ones before a malformed number are overwritten
 * although the call fails, and all seven are when only the type is out of range.
 *
 * @param serialized_data  the text; not changed.
 * @param limit_type       receives the type.
 * @param limit_data       receives the #MDM_PHONE_RES_LIMIT_VALUES values.
 *
 * @return #MDM_RESULT_SUCCESS. #MDM_RESULT_INVALID_ARGUMENT if an argument is null, the text does
 *         not begin with seven numbers, or the type is neither 0 nor 1.
 */
MDM_API int32_t mdm_phone_res_limit_deserialize(const char *serialized_data, int32_t *limit_type,
                                                int32_t *limit_data);

/**
 * Reads the parameters of a data limit: date set, period, send limit and receive limit, separated
 * by #MDM_UTIL_POLICY_DELIM.
 *
 * Malformed numbers are not reported. Each field is read by the rules of strtol(3), in base 10, up
 * to the first character that is no digit; a field without a number is 0, a negative one becomes 0,
 * and one above 2147483647 becomes that. The fourth field takes the rest of the text, further
 * commas included.
 *
 * Unless an argument is null, the log shows what the four outputs hold when the call ends, on
 * success or not: they should be initialised.
 *
 * @param text          the parameters, or exactly #MDM_UTIL_POLICY_DEFAULT_EMPTY_STRING; not
 *                      changed.
 * @param p_date_set    receives the first field.
 * @param p_period      receives the second field.
 * @param p_send_limit  receives the third field.
 * @param p_recv_limit  receives the fourth field.
 *
 * @return #MDM_RESULT_SUCCESS; for #MDM_UTIL_POLICY_DEFAULT_EMPTY_STRING, too, which leaves the
 *         outputs untouched. #MDM_RESULT_INVALID_ARGUMENT if an argument is null;
 *         #MDM_RESULT_FAILED for fewer than four fields, or if the text could not be split. On
 *         failure the outputs are untouched.
 */
MDM_API int32_t mdm_phone_res_limit_of_data_calls_parse_parameters(const char *text,
                                                                   int32_t *p_date_set,
                                                                   int32_t *p_period,
                                                                   uint32_t *p_send_limit,
                                                                   uint32_t *p_recv_limit);

MDM_END_DECLS

#endif

/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Helpers around application-package policies: the size of a list of package names, and what a
 * package name may look like.
 *
 * Thread safety: the functions keep no state. A list must not change while it is measured.
 */
#ifndef MDM_UTIL_H
#define MDM_UTIL_H

#include <stdint.h>

#include <glib.h>

#include "mdm/api.h"
#include "mdm/result.h"

MDM_BEGIN_DECLS

/**
 * The size of a list of package names: 4 bytes, once for the whole list, plus the length of every
 * name without its terminator. "abc" and "de" make 9.
 *
 * A null element other than the first ends the sum and is not reported.
 *
 * @param pkg_list  any cell of the list, whose elements are strings; the whole list is measured.
 *                  Not changed.
 *
 * @return The size in bytes, as far as 32 bits hold it: the names of a list must not make 2 GiB or
 *         more. 0 for a null @p pkg_list; #MDM_RESULT_INVALID_ARGUMENT if the first
 *         element is null. Both are reported in the log.
 */
MDM_API int32_t mdm_get_list_data_size(GList *pkg_list);

/**
 * Tells whether a text is acceptable as the name of an application package: one or more bytes,
 * each alphanumeric, "-" or ".". An underscore is not accepted. There is no other rule: dots may
 * lead, trail and repeat, and a name may have any length.
 *
 * What is alphanumeric is the locale's to say (isalnum(3)); in the locale "C" it is A to Z, a to z
 * and 0 to 9.
 *
 * @param package_name  the text; null and empty are reported in the log, other refusals are not.
 *
 * @return 1 if the name is acceptable, 0 if not.
 */
MDM_API int32_t mdm_is_valid_package_name(const char *package_name);

MDM_END_DECLS

#endif

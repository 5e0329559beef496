/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Helpers for application-package policies: the size of a list of package names, and a test for
 * package names. A package name identifies an application, for example "org.example.mail".
 *
 * Thread safety: the functions keep no state. Any number of threads may call them at once, but a
 * list must not change while it is measured.
 *
 * Ids such as Q-UTIL-1 stand in docs/quirks.md.
 *
 * @code{.c}
 * #include <mdm/util.h>
 * #include <stdio.h>
 *
 * int main(void)
 * {
 *     char mail[] = "org.example.mail";
 *     char camera[] = "org_example_camera";
 *     GList *names = g_list_append(g_list_append(NULL, mail), camera);
 *     for (const GList *cell = names; cell != NULL; cell = cell->next) {
 *         const char *name = (const char *)cell->data;
 *         const char *verdict =
 *             mdm_is_valid_package_name(name) == 1 ? "valid" : "not valid";
 *         printf("%s: %s\n", name, verdict);
 *     }
 *     printf("%d bytes\n", mdm_get_list_data_size(names));
 *     g_list_free(names);
 *     return 0;
 * }
 * // prints: org.example.mail: valid
 * // prints: org_example_camera: not valid
 * // prints: 38 bytes
 * @endcode
 */
#ifndef MDM_UTIL_H
#define MDM_UTIL_H

#include <stdint.h>

#include <glib.h>

#include "mdm/api.h"
#include "mdm/result.h"

MDM_BEGIN_DECLS

/**
 * Computes the size of a list of package names: 4 bytes for the whole list, and the length of every
 * name without its terminator. "abc" and "de" make 9. This is not the size of the list in a
 * message, where every string has a count of its own (Q-UTIL-1).
 *
 * A null element other than the first ends the sum. It is not reported (Q-UTIL-2).
 *
 * @param pkg_list  any cell of the list. The elements are strings. The whole list is measured, from
 *                  its first cell on (Q-UTIL-3). Not changed.
 *
 * @return The size in bytes, as far as 32 bits hold it: the names of a list must make less than
 *         2 GiB. 0 for a null @p pkg_list; #MDM_RESULT_INVALID_ARGUMENT if the first element is
 *         null. The log reports both.
 */
MDM_API int32_t mdm_get_list_data_size(GList *pkg_list);

/**
 * Tells whether a text is acceptable as the name of an application package: one or more bytes, each
 * of them alphanumeric, "-" or ".". An underscore is not accepted. There is no other rule: a name
 * may begin and end with dots, may have several in a row, and may have any length.
 *
 * The locale decides which bytes are alphanumeric (isalnum(3)). In the locale "C" these are A to Z,
 * a to z and 0 to 9.
 *
 * @param package_name  the text; not changed. The log reports a null or empty text, and no other
 *                      refusal (Q-UTIL-4).
 *
 * @return 1 if the name is acceptable, 0 if not.
 */
MDM_API int32_t mdm_is_valid_package_name(const char *package_name);

MDM_END_DECLS

#endif

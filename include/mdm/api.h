/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Export and linkage marks that every public header uses.
 */
#ifndef MDM_API_H
#define MDM_API_H

#ifdef __cplusplus
/** Opens the declarations of C functions. */
#define MDM_BEGIN_DECLS extern "C" {
/** Closes what #MDM_BEGIN_DECLS has opened. */
#define MDM_END_DECLS }
#else
#define MDM_BEGIN_DECLS
#define MDM_END_DECLS
#endif

/** Marks a symbol that the shared library exports. */
#define MDM_API __attribute__((visibility("default")))

/** Lets the compiler check printf-style arguments against their format. */
#define MDM_PRINTF(format_index, first_argument) \
    __attribute__((format(printf, format_index, first_argument)))

#endif

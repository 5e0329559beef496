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
#define MDM_API __attribute__((__visibility__("default")))

/** Lets the compiler check printf-style arguments against their format. */
#define MDM_PRINTF(format_index, first_argument) \
    __attribute__((__format__(__printf__, format_index, first_argument)))

#ifdef __GNUC__
/** Lets the compiler warn of a call whose result is ignored. */
#define MDM_WARN_UNUSED __attribute__((__warn_unused_result__))
/** Lets the compiler warn of a null pointer for the arguments of these numbers. */
#define MDM_NONNULL(...) __attribute__((__nonnull__(__VA_ARGS__)))
/** Lets the compiler know that a result is never null. */
#define MDM_RETURNS_NONNULL __attribute__((__returns_nonnull__))
#else
#define MDM_WARN_UNUSED
#define MDM_NONNULL(...)
#define MDM_RETURNS_NONNULL
#endif

/** Lets the compiler warn of a result that another function than this one gives back, or that is
 * given back twice, or never. GCC knows such pairs from version 11 on. */
#if defined(__GNUC__) && !defined(__clang__) && __GNUC__ >= 11
#define MDM_RELEASED_BY(function) __attribute__((__malloc__(function, 1)))
#else
#define MDM_RELEASED_BY(function)
#endif

#endif

/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Macros for linkage, export and compiler warnings that the other public headers use.
 */
#ifndef MDM_API_H
#define MDM_API_H

#ifndef __cplusplus
/** Begins the declarations of C functions. */
#define MDM_BEGIN_DECLS
/** Ends the declarations that #MDM_BEGIN_DECLS began. */
#define MDM_END_DECLS
#else
#define MDM_BEGIN_DECLS extern "C" {
#define MDM_END_DECLS }
#endif

#ifndef __cplusplus
/** Begins the definition of a function in a header. */
#define MDM_INLINE static inline
/** Converts a value, or a pointer to void. */
#define MDM_CAST(type, value) ((type)(value))
#else
#define MDM_INLINE inline
#define MDM_CAST(type, value) static_cast<type>(value)
#endif

/** Marks a symbol that the shared library exports. */
#define MDM_API __attribute__((__visibility__("default")))

/** Lets the compiler check printf-style arguments against their format. */
#define MDM_PRINTF(format_index, first_argument) \
    __attribute__((__format__(__printf__, format_index, first_argument)))

#ifdef __GNUC__
/** Lets the compiler warn about a call whose result is ignored. */
#define MDM_WARN_UNUSED __attribute__((__warn_unused_result__))
/** Lets the compiler warn about a null pointer for the arguments with these numbers, from 1. */
#define MDM_NONNULL(...) __attribute__((__nonnull__(__VA_ARGS__)))
/** Tells the compiler that a result is never null. */
#define MDM_RETURNS_NONNULL __attribute__((__returns_nonnull__))
#else
#define MDM_WARN_UNUSED
#define MDM_NONNULL(...)
#define MDM_RETURNS_NONNULL
#endif

/**
 * Names the function that releases the result. The compiler warns about a result that another
 * function releases, or that is released twice or never. Only GCC 11 and later has this attribute.
 */
#if defined(__GNUC__) && !defined(__clang__) && __GNUC__ >= 11
#define MDM_RELEASED_BY(function) __attribute__((__malloc__(function, 1)))
#else
#define MDM_RELEASED_BY(function)
#endif

#endif

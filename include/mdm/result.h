/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Result codes shared by the exported functions. Each function's documentation says which of
 * them it returns.
 */
#ifndef MDM_RESULT_H
#define MDM_RESULT_H

enum {
    MDM_RESULT_SUCCESS = 0,
    /** A required argument is missing or out of range. */
    MDM_RESULT_INVALID_ARGUMENT = -195,
    /** The operation failed, or a received buffer was rejected. */
    MDM_RESULT_FAILED = -999,
};

#endif

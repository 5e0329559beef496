/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Result codes shared by the exported functions. Each function's documentation says which of
 * them it returns.
 */
#ifndef MDM_RESULT_H
#define MDM_RESULT_H

enum {
    /** What was asked for is done. */
    MDM_RESULT_SUCCESS = 0,
    /** A required argument is missing or out of range. (Some functions have #MDM_RESULT_FAILED for
     * that.) */
    MDM_RESULT_INVALID_ARGUMENT = -195,
    /** Memory for a result could not be had. Most functions end the process instead. */
    MDM_RESULT_OUT_OF_MEMORY = -294,
    /** The operation failed, or a received buffer was rejected. */
    MDM_RESULT_FAILED = -999,
};

#endif

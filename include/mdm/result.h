/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Result codes of the exported functions. The documentation of each function says which codes it
 * returns. The numbers are part of the binary interface.
 */
#ifndef MDM_RESULT_H
#define MDM_RESULT_H

enum {
    /** The call did its work. */
    MDM_RESULT_SUCCESS = 0,
    /** A required argument is missing or out of range. Some functions return #MDM_RESULT_FAILED
     * instead. */
    MDM_RESULT_INVALID_ARGUMENT = -195,
    /** There is no memory for a result. Most functions end the process instead. */
    MDM_RESULT_OUT_OF_MEMORY = -294,
    /** The operation failed, or a received buffer was rejected. */
    MDM_RESULT_FAILED = -999,
};

#endif

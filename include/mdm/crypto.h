/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * AES-128 in CBC mode over a caller's buffer, for short secrets that a server and its clients keep
 * or exchange.
 *
 * The helper rounds lengths and calls the cipher; it adds no padding scheme, no length prefix and
 * no integrity check. Equal plaintexts under one `key_iv` give equal ciphertexts. Who needs more
 * than that keeps a length and an authentication code beside the ciphertext.
 *
 * @code{.c}
 * #include <glib.h>
 * #include <mdm/crypto.h>
 *
 * const char *key_iv = ...;          // 32 characters, which the caller keeps
 * uint8_t plain[16] = "0123456789";  // 10 bytes of text, zero-filled to a whole block
 * uint8_t *cipher, *again;
 * uint32_t cipher_len, again_len;
 * mdm_aes_encrypt(plain, 10, key_iv, &cipher, &cipher_len);
 * mdm_aes_decrypt(cipher, cipher_len, key_iv, &again, &again_len);
 * printf("%s, %u bytes\n", (const char *)again, again_len);  // 0123456789, 16 bytes
 * g_free(cipher);
 * g_free(again);
 * @endcode
 *
 * `key_iv` is a string of 32 characters, taken as raw bytes: characters 1 to 16 are the key, 17 to
 * 32 the initialisation vector. A half that ends early is filled with zeros, and the second half
 * begins 16 bytes past the start whatever the first one holds: where the key ends early, a string
 * must begin there, too. Further characters are ignored, but the terminator must not be missing.
 *
 * Do not send a ciphertext in a message as it stands: it may hold zero bytes, and the raw bytes of a
 * message end, for the receiver, at their first zero byte. Send it as text, in base64 (GLib's
 * g_base64_encode()) or hexadecimal, and let the receiver check the length of what it decodes.
 *
 * Thread safety: every call is independent of every other. The key schedule and the copies of the
 * key and the vector are wiped before a call returns.
 */
#ifndef MDM_CRYPTO_H
#define MDM_CRYPTO_H

#include <stdint.h>

#include "mdm/api.h"
#include "mdm/result.h"

MDM_BEGIN_DECLS

/**
 * Encrypts n bytes, where n is @p in_len rounded down to a multiple of 16, plus 16. A whole number
 * of blocks thus gains one block more: 0 gives 16, 15 gives 16, 16 gives 32, 31 gives 32.
 *
 * All n bytes are read from @p in as they stand: what the buffer holds behind @p in_len is the
 * padding. Pass a buffer that is readable for n bytes, and zero-filled up to there for a defined
 * ciphertext. n is computed in 32 bits: from an @p in_len of 4294967280 it is 0, nothing is read
 * and a null pointer is the empty ciphertext.
 *
 * @param in       the plaintext; not changed.
 * @param in_len   its length in bytes.
 * @param key_iv   key and initialisation vector, see above; not changed and not kept.
 * @param out      receives a new buffer with the ciphertext, which the caller releases with
 *                 g_free(). Must not be null.
 * @param out_len  receives n. Must not be null.
 *
 * @return #MDM_RESULT_SUCCESS. #MDM_RESULT_FAILED if @p in or @p key_iv is null: then nothing is
 *         allocated and neither output is touched. Memory that cannot be had ends the process.
 */
MDM_API int32_t mdm_aes_encrypt(const uint8_t *in, uint32_t in_len, const char *key_iv,
                                uint8_t **out, uint32_t *out_len);

/**
 * Decrypts @p in_len bytes. No padding is stripped: the plaintext has the length of the ciphertext.
 * A zero byte that is not counted follows it, so that a text may be read as a string.
 *
 * A whole number of blocks is expected. Any other length goes to the cipher as it is: the last,
 * incomplete block is read whole from @p in, which must therefore be readable up to the next
 * multiple of 16, and only its counted bytes are stored.
 *
 * @param in       the ciphertext; not changed.
 * @param in_len   its length in bytes.
 * @param key_iv   key and initialisation vector, see above; not changed and not kept.
 * @param out      receives a new buffer of @p in_len + 1 bytes, which the caller releases with
 *                 g_free(). Must not be null.
 * @param out_len  receives @p in_len. Must not be null.
 *
 * @return #MDM_RESULT_SUCCESS, whether or not the key was the right one. #MDM_RESULT_FAILED if
 *         @p in or @p key_iv is null: then nothing is allocated and neither output is touched.
 *         Memory that cannot be had ends the process.
 */
MDM_API int32_t mdm_aes_decrypt(const uint8_t *in, uint32_t in_len, const char *key_iv,
                                uint8_t **out, uint32_t *out_len);

MDM_END_DECLS

#endif

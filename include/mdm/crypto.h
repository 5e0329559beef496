/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * AES-128 in CBC mode over a caller's buffer, for short secrets that a server and its clients keep
 * or exchange.
 *
 * The helper rounds lengths and calls the cipher. It adds no padding scheme, no length prefix and
 * no integrity check. Equal plaintexts under one `key_iv` give equal ciphertexts. If you need more,
 * keep a length and an authentication code beside the ciphertext.
 *
 * @code{.c}
 * #include <glib.h>
 * #include <mdm/crypto.h>
 * #include <stdio.h>
 *
 * int main(void)
 * {
 *     // 32 characters, here those of an example; they stay the caller's
 *     const char *key_iv = "0123456789abcdef0123456789abcdef";
 *     // 10 bytes of text, zero-filled to a whole block
 *     uint8_t plain[16] = "0123456789";
 *     uint8_t *cipher = NULL;
 *     uint8_t *again = NULL;
 *     uint32_t cipher_len = 0;
 *     uint32_t again_len = 0;
 *     mdm_aes_encrypt(plain, 10, key_iv, &cipher, &cipher_len);
 *     mdm_aes_decrypt(cipher, cipher_len, key_iv, &again, &again_len);
 *     printf("%s, %u bytes\n", (const char *)again, again_len);
 *     g_free(cipher);
 *     g_free(again);
 *     return 0;
 * }
 * // prints: 0123456789, 16 bytes
 * @endcode
 *
 * `key_iv` is a string of 32 characters, taken as raw bytes. Characters 1 to 16 are the key,
 * characters 17 to 32 the initialisation vector. Further characters are ignored, but the string
 * must have a terminator. Each half is read as a string: a half that ends early is filled with
 * zeros (Q-AES-5). The second half always begins 16 bytes behind the start. So if the key ends
 * early, a second string must begin there.
 *
 * Do not send a ciphertext in a message as raw bytes: it may hold zero bytes, and the receiver's
 * raw bytes end at their first zero byte (Q-WIRE-2). Send it as text, in base64 (GLib's
 * g_base64_encode()) or hexadecimal. Let the receiver check the length of the decoded bytes.
 *
 * Thread safety: every call is independent of every other call. Before a call returns, it wipes the
 * key schedule and its copies of the key and the vector.
 *
 * Ids such as Q-AES-1 stand in docs/quirks.md.
 */
#ifndef MDM_CRYPTO_H
#define MDM_CRYPTO_H

#include <stdint.h>

#include "mdm/api.h"
#include "mdm/result.h"

MDM_BEGIN_DECLS

/**
 * Encrypts n bytes, where n is @p in_len rounded down to a multiple of 16, plus 16. So even a whole
 * number of blocks gains one more block: 0 gives 16, 15 gives 16, 16 gives 32, 31 gives 32
 * (Q-AES-1).
 *
 * The call reads all n bytes from @p in: the bytes behind @p in_len are the padding (Q-AES-2). Pass
 * a buffer that is readable for n bytes. Fill it with zeros from @p in_len on, so that the
 * ciphertext is defined. n is computed in 32 bits: for an @p in_len of 4294967280 or more, n is 0.
 * Then the call reads nothing, and the empty ciphertext is a null pointer (Q-AES-3).
 *
 * @param in       the plaintext; not changed.
 * @param in_len   its length in bytes.
 * @param key_iv   key and initialisation vector, see above; not changed and not kept.
 * @param out      receives a new buffer with the ciphertext, which the caller releases with
 *                 g_free(). Must not be null.
 * @param out_len  receives n. Must not be null.
 *
 * @return #MDM_RESULT_SUCCESS. #MDM_RESULT_FAILED if @p in or @p key_iv is null: then nothing is
 *         allocated and neither output is touched. Without memory the call ends the process.
 */
MDM_API int32_t mdm_aes_encrypt(const uint8_t *in, uint32_t in_len, const char *key_iv,
                                uint8_t **out, uint32_t *out_len);

/**
 * Decrypts @p in_len bytes. The call strips no padding: the plaintext has the length of the
 * ciphertext. An uncounted zero byte follows it, so a text may be read as a string (Q-AES-4).
 *
 * @p in_len should be a multiple of 16. The call does not check that. If it is no multiple, the
 * cipher reads the last block whole, so @p in must be readable up to the next multiple of 16. Only
 * the counted bytes of that block are stored (Q-AES-6).
 *
 * @param in       the ciphertext; not changed.
 * @param in_len   its length in bytes.
 * @param key_iv   key and initialisation vector, see above; not changed and not kept.
 * @param out      receives a new buffer of @p in_len + 1 bytes, which the caller releases with
 *                 g_free(). Must not be null.
 * @param out_len  receives @p in_len. Must not be null.
 *
 * @return #MDM_RESULT_SUCCESS, even with a wrong key. #MDM_RESULT_FAILED if @p in or @p key_iv is
 *         null: then nothing is allocated and neither output is touched. Without memory the call
 *         ends the process.
 */
MDM_API int32_t mdm_aes_decrypt(const uint8_t *in, uint32_t in_len, const char *key_iv,
                                uint8_t **out, uint32_t *out_len);

MDM_END_DECLS

#endif

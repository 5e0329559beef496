// SPDX-License-Identifier: Apache-2.0
//
// OpenSSL 3 deprecates these functions in favour of an interface that allocates memory and can
// fail. The helper has no result code for such a failure.
#define OPENSSL_SUPPRESS_DEPRECATED

#include "mdm/crypto.h"

#include <algorithm>

#include <glib.h>
#include <openssl/aes.h>
#include <openssl/crypto.h>

#include "log/log.hpp"

namespace mdm {
namespace {

constexpr int key_bits = 128;

// All key material of a call. It is wiped at the end of the call.
struct Secrets {
    char key[AES_BLOCK_SIZE + 1] = {};
    char iv[AES_BLOCK_SIZE + 1] = {};
    AES_KEY schedule = {};

    explicit Secrets(const char *key_iv)
    {
        g_strlcpy(key, key_iv, sizeof key);
        g_strlcpy(iv, key_iv + AES_BLOCK_SIZE, sizeof iv);  // Q-AES-5
    }
    ~Secrets() { OPENSSL_cleanse(this, sizeof *this); }
    Secrets(const Secrets &) = delete;
    Secrets &operator=(const Secrets &) = delete;

    const uint8_t *key_bytes() const { return reinterpret_cast<const uint8_t *>(key); }

    // The cipher overwrites `iv` while it chains the blocks. On s390x it takes a length of 0 for at
    // least one block.
    void run(const uint8_t *in, uint8_t *out, size_t length, int direction)
    {
        if (length == 0) {
            return;
        }
        AES_cbc_encrypt(in, out, length, &schedule, reinterpret_cast<uint8_t *>(iv), direction);
    }
};

// The length is rounded down to whole blocks, then one block is added. So a length of whole blocks
// gains a block, too. Q-AES-1
constexpr uint32_t ciphertext_length(uint32_t length)
{
    return length / AES_BLOCK_SIZE * AES_BLOCK_SIZE + AES_BLOCK_SIZE;  // Q-AES-3
}

// With a 32-bit size_t, the sum wraps to 0 for the longest length. The allocator is then asked for
// the length alone, and ends the process as for any memory that it cannot provide.
size_t with_terminator(size_t length)
{
    return std::max(length, length + 1);
}

uint8_t *new_bytes(size_t count)
{
    return static_cast<uint8_t *>(g_malloc0(count));
}

}  // namespace
}  // namespace mdm

int32_t mdm_aes_encrypt(const uint8_t *in, uint32_t in_len, const char *key_iv, uint8_t **out,
                        uint32_t *out_len)
{
    const mdm::Log log(MDM_ORIGIN("mdm_aes_encrypt"));
    MDM_ASSERT(in != nullptr, MDM_RESULT_FAILED);
    MDM_ASSERT(key_iv != nullptr, MDM_RESULT_FAILED);

    const uint32_t length = mdm::ciphertext_length(in_len);
    mdm::Secrets secrets(key_iv);
    uint8_t *ciphertext = mdm::new_bytes(length);
    AES_set_encrypt_key(secrets.key_bytes(), mdm::key_bits, &secrets.schedule);
    // The caller provides all `length` bytes. The bytes behind in_len are the padding. Q-AES-2
    secrets.run(in, ciphertext, length, AES_ENCRYPT);
    *out_len = length;
    *out = ciphertext;
    return MDM_RESULT_SUCCESS;
}

int32_t mdm_aes_decrypt(const uint8_t *in, uint32_t in_len, const char *key_iv, uint8_t **out,
                        uint32_t *out_len)
{
    const mdm::Log log(MDM_ORIGIN("mdm_aes_decrypt"));
    MDM_ASSERT(in != nullptr, MDM_RESULT_FAILED);
    MDM_ASSERT(key_iv != nullptr, MDM_RESULT_FAILED);

    *out = mdm::new_bytes(mdm::with_terminator(in_len));
    mdm::Secrets secrets(key_iv);
    AES_set_decrypt_key(secrets.key_bytes(), mdm::key_bits, &secrets.schedule);
    secrets.run(in, *out, in_len, AES_DECRYPT);  // Q-AES-6
    *out_len = in_len;                           // Q-AES-4
    return MDM_RESULT_SUCCESS;
}

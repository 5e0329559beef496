// SPDX-License-Identifier: Apache-2.0
//
// The AES helper: for any bytes under any key the result is that of the cipher library's other
// interface, and decryption returns the bytes. The input is a byte that chooses, the length of the
// key's text, the byte that stands behind the counted ones, the key's text, and the bytes.
#include <algorithm>
#include <array>
#include <memory>
#include <span>
#include <vector>

#include <openssl/evp.h>

#include "mdm/crypto.h"
#include "support.hpp"

namespace mdm::fuzz {
namespace {

using BlockOfCipher = std::array<uint8_t, 16>;

constexpr size_t block_size = 16;
constexpr size_t head_size = 3;
constexpr size_t longest_key_text = 48;
constexpr uint32_t first_length_that_overflows = 4294967280;

struct Input {
    uint8_t choice;
    Bytes key_iv;  // the second half has its place even where the first one ends early
    uint8_t padding;
    Bytes bytes;
};

Input input_of(std::span<const uint8_t> data)
{
    const size_t key_size = std::min(data[1] % (longest_key_text + 1), data.size() - head_size);
    const auto key = data.subspan(head_size, key_size);
    const auto rest = data.subspan(head_size + key_size);
    Input input{data[0], {key.begin(), key.end()}, data[2], {rest.begin(), rest.end()}};
    input.key_iv.resize(std::max(key_size, block_size));
    input.key_iv.push_back(0);
    return input;
}

// The sixteen characters of a key's text from `begin` on, zeros from its end on.
BlockOfCipher half_of(const Bytes &key_iv, size_t begin)
{
    BlockOfCipher half{};
    for (size_t i = 0; i < half.size() && key_iv[begin + i] != 0; ++i) {
        half[i] = key_iv[begin + i];
    }
    return half;
}

// Whole blocks through the cipher library's other interface.
Bytes reference(const Bytes &in, const Bytes &key_iv, bool encrypts)
{
    struct ReleaseContext {
        void operator()(EVP_CIPHER_CTX *context) const { EVP_CIPHER_CTX_free(context); }
    };
    const std::unique_ptr<EVP_CIPHER_CTX, ReleaseContext> context(EVP_CIPHER_CTX_new());
    const BlockOfCipher key = half_of(key_iv, 0);
    const BlockOfCipher iv = half_of(key_iv, block_size);
    Bytes out(in.size());
    int length = 0;
    promise(EVP_CipherInit_ex2(context.get(), EVP_aes_128_cbc(), key.data(), iv.data(),
                               encrypts ? 1 : 0, nullptr) == 1 &&
                EVP_CIPHER_CTX_set_padding(context.get(), 0) == 1 &&
                EVP_CipherUpdate(context.get(), out.data(), &length, in.data(),
                                 static_cast<int>(in.size())) == 1,
            "the reference works");
    return out;
}

struct Output {
    Owned<uint8_t> owner;
    Bytes bytes;
};

template <class Function>
Output run(Function *function, const uint8_t *in, uint32_t length, const Block &key_iv)
{
    uint8_t *out = nullptr;
    uint32_t out_length = 0;
    promise(function(in, length, key_iv.text(), &out, &out_length) == MDM_RESULT_SUCCESS,
            "nothing fails but for a missing argument");
    return {Owned<uint8_t>(out), Bytes(out, out + out_length)};
}

Bytes padded(Bytes bytes, size_t size, uint8_t padding)
{
    bytes.resize(size, padding);
    return bytes;
}

void encrypt_and_decrypt(const Input &input, const Block &key_iv)
{
    const auto length = static_cast<uint32_t>(input.bytes.size());
    const Bytes plain = padded(input.bytes, (length / block_size + 1) * block_size, input.padding);
    const Block in(plain);
    const Bytes cipher = run(mdm_aes_encrypt, in.data(), length, key_iv).bytes;
    promise(cipher == reference(plain, input.key_iv, true), "the ciphertext is the cipher's");
    promise(in.holds(plain), "the plaintext is not changed");

    const Block again(cipher);
    promise(run(mdm_aes_decrypt, again.data(), again.size(), key_iv).bytes == plain,
            "what was encrypted comes back");
}

void decrypt(const Input &input, const Block &key_iv)
{
    const auto length = static_cast<uint32_t>(input.bytes.size());
    const size_t whole = (length + block_size - 1) / block_size * block_size;
    const Bytes cipher = padded(input.bytes, whole, input.padding);
    const Block in(cipher);
    const Output output = run(mdm_aes_decrypt, in.data(), length, key_iv);
    Bytes expected = reference(cipher, input.key_iv, false);
    expected.resize(length);
    promise(output.bytes == expected, "the counted bytes are the cipher's");
    promise(output.owner.get()[length] == 0, "a terminator follows");
    promise(in.holds(cipher), "the ciphertext is not changed");
}

void encrypt_nothing(const Input &input, const Block &key_iv)
{
    const Block nothing({});
    const Output output = run(mdm_aes_encrypt, nothing.data(),
                              first_length_that_overflows + input.padding % block_size, key_iv);
    promise(output.owner == nullptr && output.bytes.empty(),
            "a length that overflows is an empty ciphertext");
}

}  // namespace
}  // namespace mdm::fuzz

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using namespace mdm::fuzz;
    Bytes bytes(data, data + size);
    bytes.resize(std::max(size, head_size));
    const Input input = input_of(bytes);
    const Block key_iv(input.key_iv);
    if (input.choice == 0) {
        encrypt_nothing(input, key_iv);
    }
    encrypt_and_decrypt(input, key_iv);
    decrypt(input, key_iv);
    promise(key_iv.holds(input.key_iv), "the key's text is not changed");
    return 0;
}

// SPDX-License-Identifier: Apache-2.0
//
// How an encrypted secret travels from the AES helper of one side to that of the other: as base64
// text, because received raw bytes end at their first zero byte.
#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

#include <glib.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "mdm/crypto.h"
#include "mdm/guarded.h"
#include "support/wire.hpp"

namespace mdm::test::ciphertext_test {
namespace {

using ::testing::SizeIs;

constexpr uint8_t type_vpn = 29;
constexpr const char *key_iv = "0123456789abcdefFEDCBA9876543210";

using Function = decltype(mdm_aes_encrypt);

// The helper's output for the first `length` bytes.
Bytes result_of(Function *function, const Bytes &bytes, size_t length)
{
    uint8_t *out = nullptr;
    uint32_t out_length = 0;
    EXPECT_EQ(function(bytes.data(), static_cast<uint32_t>(length), key_iv, &out, &out_length), 0);
    Bytes result(out, out + out_length);
    g_free(out);
    return result;
}

// A secret, zero-filled to a block, and its ciphertext.
struct Encrypted {
    Bytes secret;
    Bytes ciphertext;
};

// One in about sixteen secrets of a block has a zero byte in its ciphertext.
std::vector<Encrypted> secrets_with_zero_bytes()
{
    std::vector<Encrypted> found;
    for (int i = 0; i < 400; ++i) {
        const std::string text = "secret " + std::to_string(i);
        Bytes secret(text.begin(), text.end());
        secret.resize(16);
        Bytes ciphertext = result_of(mdm_aes_encrypt, secret, text.size());
        if (std::ranges::find(ciphertext, 0) != ciphertext.end()) {
            found.push_back({secret, ciphertext});
        }
    }
    return found;
}

// The bytes that a receiver on either path finds in a vpn message's payload.
enum class Path { trusting, guarded };

std::ostream &operator<<(std::ostream &out, Path path)
{
    return out << (path == Path::guarded ? "GuardedPath" : "TrustingPath");
}

Bytes arrived(Path path, int32_t data_size, void *data)
{
    mdm_msg_t sent = message(type_vpn);
    sent.body.vpn.data_size = data_size;
    sent.body.vpn.data = data;
    const Bytes bytes = serialize(sent);
    const auto payload_of = [](const mdm_msg_t &msg) {
        const auto *payload = static_cast<const uint8_t *>(msg.body.vpn.data);
        return Bytes(payload, payload + msg.body.vpn.data_size);
    };
    if (path == Path::guarded) {
        MDM_AUTO_CLOSE mdm_msg_t *opened =
            ipc_open(bytes.data(), static_cast<uint32_t>(bytes.size()), nullptr);
        return payload_of(*opened);
    }
    mdm_msg_t received{};
    EXPECT_EQ(deserialize(received, bytes), 0);
    Bytes payload = payload_of(received);
    ipc_free(&received);
    return payload;
}

class Ciphertext : public ::testing::TestWithParam<Path> {};

TEST_P(Ciphertext, WithAZeroByteArrivesWholeAsBase64)
{
    const auto secrets = secrets_with_zero_bytes();
    EXPECT_THAT(secrets, SizeIs(::testing::Gt(0)));
    for (const auto &[secret, ciphertext] : secrets) {
        char *text = g_base64_encode(ciphertext.data(), ciphertext.size());
        const std::string expected = text;
        const Bytes payload = arrived(GetParam(), static_cast<int32_t>(expected.size()), text);
        g_free(text);
        const std::string received(payload.begin(), payload.end());
        EXPECT_EQ(received, expected);

        gsize length = 0;
        guchar *decoded = g_base64_decode(received.c_str(), &length);
        const Bytes decoded_bytes(decoded, decoded + length);
        g_free(decoded);
        EXPECT_EQ(decoded_bytes, ciphertext);
        EXPECT_EQ(result_of(mdm_aes_decrypt, decoded_bytes, length), secret);
    }
}

TEST_P(Ciphertext, WithAZeroByteEndsThereAsRawBytes)
{
    for (auto [secret, ciphertext] : secrets_with_zero_bytes()) {
        Bytes cut = ciphertext;
        std::fill(std::ranges::find(cut, 0), cut.end(), 0);
        const Bytes payload =
            arrived(GetParam(), static_cast<int32_t>(ciphertext.size()), ciphertext.data());
        EXPECT_EQ(payload, cut);
        if (cut != ciphertext) {  // a zero byte may be the last
            EXPECT_NE(result_of(mdm_aes_decrypt, payload, payload.size()), secret);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(On, Ciphertext, ::testing::Values(Path::trusting, Path::guarded),
                         ::testing::PrintToStringParamName());

}  // namespace
}  // namespace mdm::test::ciphertext_test

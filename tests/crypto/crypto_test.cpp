// SPDX-License-Identifier: Apache-2.0
//
// The AES helper: published vectors, a comparison with the openssl program, and its promises about
// lengths, blocks and the memory that held the key.
#define OPENSSL_SUPPRESS_DEPRECATED

#include <array>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <memory>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include <glib.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <openssl/aes.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "mdm/crypto.h"
#include "support/allocation_trace.hpp"
#include "support/guard_page.hpp"
#include "support/log_recorder.hpp"
#include "support/wipe_recorder.hpp"
#include "support/wire.hpp"

namespace mdm::test::crypto_test {
namespace {

using namespace std::string_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Function = decltype(mdm_aes_encrypt);

struct Release {
    void operator()(void *memory) const { g_free(memory); }
};

// The outcome of a call. The buffer belongs to the test.
struct Outcome {
    int32_t result = 1;
    std::unique_ptr<uint8_t, Release> buffer;
    uint32_t length = 0;
    std::vector<AllocationTrace::Event> blocks;
    std::vector<LogLine> log;

    Bytes bytes() const { return {buffer.get(), buffer.get() + length}; }
};

// Calls the function for the first `length` of the bytes, with the logger wide open. Neither behind
// the input nor behind the key can anything be read, and neither can be changed.
Outcome call(Function *function, const Bytes &bytes, uint32_t length, const std::string &key_iv)
{
    const GuardedBytes in(bytes);
    const Bytes text(key_iv.c_str(), key_iv.c_str() + key_iv.size() + 1);
    const GuardedBytes key(text);
    uint8_t *out = nullptr;
    Outcome outcome;

    LogRecorder log;
    AllocationTrace trace;
    outcome.result = function(in.data(), length, reinterpret_cast<const char *>(key.data()), &out,
                              &outcome.length);
    trace.stop();

    outcome.buffer.reset(out);
    outcome.blocks = trace.events();
    outcome.log = log.take();
    return outcome;
}

// A silent call that allocates one block and leaves it to the caller.
void expect_one_block(const Outcome &outcome, uint32_t length, size_t block_size)
{
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.length, length);
    EXPECT_THAT(outcome.blocks,
                ElementsAre(AllocationTrace::Event{AllocationTrace::Kind::allocated,
                                                   {outcome.buffer.get(), block_size}}));
    EXPECT_THAT(outcome.log, IsEmpty());
}

Bytes successful(Function *function, const Bytes &bytes, uint32_t length, const std::string &key_iv)
{
    const Outcome outcome = call(function, bytes, length, key_iv);
    EXPECT_EQ(outcome.result, 0);
    return outcome.bytes();
}

Bytes encrypted(const Bytes &bytes, size_t length, const std::string &key_iv)
{
    return successful(mdm_aes_encrypt, bytes, static_cast<uint32_t>(length), key_iv);
}

// Encrypts and decrypts whole blocks.
Bytes encrypted(const Bytes &blocks, const std::string &key_iv)
{
    return encrypted(blocks, blocks.size() - 16, key_iv);
}

Bytes decrypted(const Bytes &blocks, const std::string &key_iv)
{
    return successful(mdm_aes_decrypt, blocks, static_cast<uint32_t>(blocks.size()), key_iv);
}

std::string text_of(const Bytes &bytes)
{
    return {bytes.begin(), bytes.end()};
}

// Bytes in which no block is like another.
Bytes sample(size_t count)
{
    Bytes bytes(count);
    for (size_t i = 0; i < count; ++i) {
        bytes[i] = static_cast<uint8_t>(i * 37 + i / 256 + 11);
    }
    return bytes;
}

Bytes first(const Bytes &bytes, size_t count)
{
    return {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count)};
}

const std::string some_key = "0123456789abcdefFEDCBA9876543210";

// SP 800-38A, F.1.1 and F.2.1 (key, plaintexts, and both ciphertexts of each).
const Bytes nist_key = hex("2b 7e 15 16 28 ae d2 a6 ab f7 15 88 09 cf 4f 3c");
const std::array plain = {
    hex("6b c1 be e2 2e 40 9f 96 e9 3d 7e 11 73 93 17 2a"),
    hex("ae 2d 8a 57 1e 03 ac 9c 9e b7 6f ac 45 af 8e 51"),
    hex("30 c8 1c 46 a3 5c e4 11 e5 fb c1 19 1a 0a 52 ef"),
    hex("f6 9f 24 45 df 4f 9b 17 ad 2b 41 7b e6 6c 37 10"),
};
const std::array ecb = {
    hex("3a d7 7b b4 0d 7a 36 60 a8 9e ca f3 24 66 ef 97"),
    hex("f5 d3 d5 85 03 b9 69 9d e7 85 89 5a 96 fd ba af"),
    hex("43 b1 cd 7f 59 8e ce 23 88 1b 00 e3 ed 03 06 88"),
    hex("7b 0c 78 5e 27 e8 ad 3f 82 23 20 71 04 72 5d d4"),
};
const std::array cbc = {
    hex("76 49 ab ac 81 19 b2 46 ce e9 8e 9b 12 e9 19 7d"),
    hex("50 86 cb 9b 50 72 19 ee 95 db 11 3a 91 76 78 b2"),
    hex("73 be d6 b8 e3 c1 74 3b 71 16 e6 9e 22 22 95 16"),
    hex("3f f1 ca a1 68 1f ac 09 12 0e ca 30 75 86 e1 a7"),
};

// The first block of F.2.1 with its vector, 00 to 0f, mixed in: that vector begins with a NUL, so
// that no text can name it, but an empty one, of zeros, then does its work.
const Bytes plain_0_and_vector = hex("6b c0 bc e1 2a 45 99 91 e1 34 74 1a 7f 9e 19 25");

struct Vector {
    const char *name;
    std::string key_iv;
    Bytes plain;
    Bytes cipher;
};

std::ostream &operator<<(std::ostream &out, const Vector &vector)
{
    return out << vector.name;
}

// How a suite calls a case.
const auto name_of = [](const auto &test) { return std::string(test.param.name); };

class PublishedVectors : public ::testing::TestWithParam<Vector> {};

TEST_P(PublishedVectors, Encrypt)
{
    EXPECT_EQ(encrypted(GetParam().plain, GetParam().key_iv), GetParam().cipher);
}

TEST_P(PublishedVectors, Decrypt)
{
    EXPECT_EQ(decrypted(GetParam().cipher, GetParam().key_iv), GetParam().plain);
}

INSTANTIATE_TEST_SUITE_P(
    AesHelper, PublishedVectors,
    ::testing::Values(
        Vector{"Ecb1", text_of(nist_key), plain[0], ecb[0]},
        Vector{"Ecb2", text_of(nist_key), plain[1], ecb[1]},
        Vector{"Ecb3", text_of(nist_key), plain[2], ecb[2]},
        Vector{"Ecb4", text_of(nist_key), plain[3], ecb[3]},
        Vector{"Cbc1To4", text_of(nist_key), plain_0_and_vector + plain[1] + plain[2] + plain[3],
               cbc[0] + cbc[1] + cbc[2] + cbc[3]},
        Vector{"Cbc2To4", text_of(nist_key + cbc[0]), plain[1] + plain[2] + plain[3],
               cbc[1] + cbc[2] + cbc[3]},
        Vector{"Cbc3To4", text_of(nist_key + cbc[1]), plain[2] + plain[3], cbc[2] + cbc[3]},
        Vector{"Cbc4", text_of(nist_key + cbc[2]), plain[3], cbc[3]},
        // FIPS 197, appendix B.
        Vector{"Fips197", text_of(nist_key), hex("32 43 f6 a8 88 5a 30 8d 31 31 98 a2 e0 37 07 34"),
               hex("39 25 84 1d 02 dc 09 fb dc 11 85 97 19 6a 0b 32")},
        // AESAVS: the first of the variable keys, which has one bit, and of the variable texts.
        Vector{"Aesavs_KeyOfOneByte", "\x80"s + std::string(15, '\0'), Bytes(16),
               hex("0e dd 33 d3 c6 21 e5 46 45 5b d8 ba 14 18 be c8")},
        Vector{"Aesavs_NoKey", std::string(16, '\0'),
               hex("80 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"),
               hex("3a d7 8e 72 6c 1e c0 2b 7e bf e9 2b 23 d9 ec 34")}),
    name_of);

struct CloseFile {
    void operator()(FILE *file) const { static_cast<void>(std::fclose(file)); }
};
using File = std::unique_ptr<FILE, CloseFile>;

// The output of a program for an input; fails the test if the program does not run.
Bytes output_of(std::vector<std::string> command, const Bytes &input)
{
    const File in(std::tmpfile());
    const File out(std::tmpfile());
    if (!in || !out) {
        ADD_FAILURE() << "no temporary file: " << std::strerror(errno);
        return {};
    }
    EXPECT_EQ(std::fwrite(input.data(), 1, input.size(), in.get()), input.size());
    std::rewind(in.get());

    std::vector<char *> arguments;
    for (std::string &argument : command) {
        arguments.push_back(argument.data());
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, fileno(in.get()), STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, fileno(out.get()), STDOUT_FILENO);
    pid_t child = 0;
    const int error =
        posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    if (error != 0 || waitpid(child, &status, 0) != child || status != 0) {
        ADD_FAILURE() << "the program " << command[0]
                      << " is missing or failed: " << std::strerror(error) << ", status " << status;
        return {};
    }

    Bytes output(input.size() + 1024);
    std::rewind(out.get());
    output.resize(std::fread(output.data(), 1, output.size(), out.get()));
    return output;
}

// Key and vector as texts of hexadecimal digits.
Bytes openssl(const char *direction, const char *key, const char *iv, const Bytes &blocks)
{
    return output_of({"openssl", "enc", "-aes-128-cbc", "-nopad", direction, "-K", key, "-iv", iv},
                     blocks);
}

// A text, and the bytes that it stands for.
struct KeyText {
    const char *name;
    std::string key_iv;
    const char *key;
    const char *iv;
};

std::ostream &operator<<(std::ostream &out, const KeyText &text)
{
    return out << text.name;
}

class KeyTexts : public ::testing::TestWithParam<KeyText> {
protected:
    static Bytes reference(const char *direction, const Bytes &blocks)
    {
        return openssl(direction, GetParam().key, GetParam().iv, blocks);
    }
};

// 512 and above: the cipher changes its way of working there.
constexpr std::array block_counts = {1, 2, 3, 7, 32, 33, 256};

// Q-AES-5
TEST_P(KeyTexts, EncryptLikeTheOpensslProgram)
{
    for (const int count : block_counts) {
        const Bytes blocks = sample(static_cast<size_t>(count) * 16);
        EXPECT_EQ(encrypted(blocks, GetParam().key_iv), reference("-e", blocks)) << count;
    }
}

TEST_P(KeyTexts, DecryptLikeTheOpensslProgram)
{
    for (const int count : block_counts) {
        const Bytes blocks = sample(static_cast<size_t>(count) * 16);
        EXPECT_EQ(decrypted(blocks, GetParam().key_iv), reference("-d", blocks)) << count;
    }
}

INSTANTIATE_TEST_SUITE_P(
    AesHelper, KeyTexts,
    ::testing::Values(
        KeyText{"Exactly32Characters", "0123456789abcdefFEDCBA9876543210",
                "30313233343536373839616263646566", "46454443424139383736353433323130"},
        KeyText{"Beyond32Ignored", "0123456789abcdefFEDCBA9876543210ignored",
                "30313233343536373839616263646566", "46454443424139383736353433323130"},
        KeyText{"BytesAbove127",
                "\xff\xfe\xfd\xfc\xfb\xfa\xf9\xf8\x87\x86\x85\x84\x83\x82\x81\x80"
                "\x80\x90\xa0\xb0\xc0\xd0\xe0\xf0\x8f\x9f\xaf\xbf\xcf\xdf\xef\xff",
                "fffefdfcfbfaf9f88786858483828180", "8090a0b0c0d0e0f08f9fafbfcfdfefff"},
        KeyText{"KeyEndsAfter5", "abcde\0XXXXXXXXXXFEDCBA9876543210"s,
                "61626364650000000000000000000000", "46454443424139383736353433323130"},
        KeyText{"KeyEndsAfter15", "0123456789abcde\0FEDCBA9876543210"s,
                "30313233343536373839616263646500", "46454443424139383736353433323130"},
        KeyText{"KeyEmpty", "\0XXXXXXXXXXXXXXXFEDCBA9876543210"s,
                "00000000000000000000000000000000", "46454443424139383736353433323130"},
        KeyText{"VectorEndsAfter3", "0123456789abcdefxyz", "30313233343536373839616263646566",
                "78797a00000000000000000000000000"},
        KeyText{"VectorEndsAfter3BeforeMore", "0123456789abcdefxyz\0XXXXXXXXXXXX"s,
                "30313233343536373839616263646566", "78797a00000000000000000000000000"},
        KeyText{"VectorEndsAfter15", "0123456789abcdefFEDCBA987654321",
                "30313233343536373839616263646566", "46454443424139383736353433323100"},
        KeyText{"VectorEmpty", "0123456789abcdef", "30313233343536373839616263646566",
                "00000000000000000000000000000000"},
        KeyText{"BothEnd", "abcde\0XXXXXXXXXXxyz"s, "61626364650000000000000000000000",
                "78797a00000000000000000000000000"}),
    name_of);

struct Length {
    uint32_t plain;
    uint32_t cipher;
};

std::ostream &operator<<(std::ostream &out, const Length &length)
{
    return out << length.plain;
}

class Lengths : public ::testing::TestWithParam<Length> {};

// The fence behind `cipher` bytes shows that no more are read.
// Q-AES-1
TEST_P(Lengths, RoundDownAndGainABlock)
{
    const auto [plain_length, cipher_length] = GetParam();
    expect_one_block(call(mdm_aes_encrypt, sample(cipher_length), plain_length, some_key),
                     cipher_length, cipher_length);
}

INSTANTIATE_TEST_SUITE_P(AesHelper, Lengths,
                         ::testing::Values(Length{0, 16}, Length{1, 16}, Length{15, 16},
                                           Length{16, 32}, Length{17, 32}, Length{31, 32},
                                           Length{32, 48}, Length{4095, 4096},
                                           Length{65536, 65552}),
                         [](const auto &test) { return std::to_string(test.param.plain); });

TEST(AesHelper, EncryptingNothingEncryptsOneBlockOfTheCallersBytes)
{
    EXPECT_EQ(encrypted(plain[0], 0, text_of(nist_key)), ecb[0]);
}

TEST(AesHelper, AWholeBlockIsFollowedByTheCallersNext)
{
    EXPECT_EQ(encrypted(plain[1] + plain[2], 16, text_of(nist_key + cbc[0])), cbc[1] + cbc[2]);
}

// Q-AES-3
TEST(AesHelper, ALengthThatOverflowsEncryptsNothingAndReadsNothing)
{
    for (uint32_t length = 4294967280; length != 0; ++length) {
        SCOPED_TRACE(length);
        const Outcome outcome = call(mdm_aes_encrypt, {}, length, some_key);
        EXPECT_EQ(outcome.result, 0);
        EXPECT_EQ(outcome.buffer, nullptr);
        EXPECT_EQ(outcome.length, 0U);
        EXPECT_THAT(outcome.blocks, IsEmpty());
        EXPECT_THAT(outcome.log, IsEmpty());
    }
}

// Q-AES-2
TEST(AesHelper, TheCallersBytesBehindTheLengthArePaddingAndComeBack)
{
    const Bytes zeros = sample(10) + Bytes(6);
    const Bytes cipher_of_zeros = encrypted(zeros, 10, some_key);
    for (size_t place = 10; place < 16; ++place) {
        SCOPED_TRACE(place);
        Bytes bytes = zeros;
        bytes[place] = 0xA5;
        const Bytes cipher = encrypted(bytes, 10, some_key);
        EXPECT_NE(cipher, cipher_of_zeros);
        EXPECT_EQ(decrypted(cipher, some_key), bytes);
    }
}

TEST(AesHelper, ATenByteTextComesBackWithSixZeros)
{
    const Bytes text = hex("30 31 32 33 34 35 36 37 38 39 00 00 00 00 00 00");
    const Bytes cipher = encrypted(text, 10, some_key);
    EXPECT_EQ(cipher.size(), 16U);
    const Outcome outcome = call(mdm_aes_decrypt, cipher, 16, some_key);
    EXPECT_EQ(outcome.length, 16U);
    EXPECT_EQ(outcome.bytes(), text);
    EXPECT_STREQ(reinterpret_cast<const char *>(outcome.buffer.get()), "0123456789");
}

TEST(AesHelper, TheSameInputGivesTheSameOutput)
{
    const Bytes blocks = sample(48);
    const Bytes cipher = encrypted(blocks, some_key);
    EXPECT_EQ(encrypted(blocks, some_key), cipher);
    EXPECT_EQ(decrypted(cipher, some_key), blocks);
    EXPECT_EQ(decrypted(cipher, some_key), blocks);
}

TEST(AesHelper, EitherHalfOfTheKeyTextMatters)
{
    std::string other_key = some_key;
    other_key[15] = '!';
    std::string other_vector = some_key;
    other_vector[31] = '!';
    const Bytes blocks = sample(32);
    const Bytes cipher = encrypted(blocks, some_key);
    EXPECT_NE(encrypted(blocks, other_key), cipher);
    EXPECT_NE(encrypted(blocks, other_vector), cipher);
}

TEST(AesHelper, TheWrongKeyDecryptsToOtherBytesWithoutReport)
{
    std::string other_key = some_key;
    other_key[0] = '!';
    const Bytes blocks = sample(32);
    const Outcome outcome = call(mdm_aes_decrypt, encrypted(blocks, some_key), 32, other_key);
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.length, 32U);
    EXPECT_NE(outcome.bytes(), blocks);
    EXPECT_THAT(outcome.log, IsEmpty());
}

// Leaves a block of this size to be allocated again that holds no zero.
void leave_litter(size_t size)
{
    void *block = g_malloc(size);
    std::memset(block, 0xFF, size);
    g_free(block);
}

// Whole blocks or not: the counted bytes of the last block are stored, and a zero follows.
// Q-AES-4, Q-AES-6
TEST(AesHelper, DecryptingKeepsTheLengthAndAddsATerminator)
{
    const Bytes blocks = sample(528);
    const Bytes cipher = encrypted(blocks, some_key);
    for (const uint32_t length :
         {0U, 1U, 15U, 16U, 17U, 20U, 31U, 32U, 33U, 47U, 48U, 49U, 511U, 512U, 513U, 527U}) {
        SCOPED_TRACE(length);
        leave_litter(length + 1);
        const size_t read = (length + size_t{15}) / 16 * 16;
        const Outcome outcome = call(mdm_aes_decrypt, first(cipher, read), length, some_key);
        expect_one_block(outcome, length, size_t{length} + 1);
        EXPECT_EQ(outcome.bytes(), first(blocks, length));
        EXPECT_EQ(outcome.buffer.get()[length], 0);
    }
}

#if SIZE_MAX == UINT32_MAX
TEST(AesHelperDeathTest, ALengthThatLeavesNoRoomForTheTerminatorEndsTheProcess)
{
    const Bytes bytes(16);
    uint8_t *out = nullptr;
    uint32_t length = 0;
    EXPECT_DEATH(mdm_aes_decrypt(bytes.data(), UINT32_MAX, some_key.c_str(), &out, &length),
                 "4294967295");
}
#endif

TEST(AesHelper, TrailingZerosAreCounted)
{
    const Bytes zeros(32);
    EXPECT_EQ(decrypted(encrypted(zeros, some_key), some_key), zeros);
}

struct Direction {
    const char *name;
    Function *function;
    const char *logged_name;
};

std::ostream &operator<<(std::ostream &out, const Direction &direction)
{
    return out << direction.name;
}

const auto both_directions =
    ::testing::Values(Direction{"Encrypt", mdm_aes_encrypt, "mdm_aes_encrypt"},
                      Direction{"Decrypt", mdm_aes_decrypt, "mdm_aes_decrypt"});

class MissingArguments : public ::testing::TestWithParam<Direction> {
protected:
    // Returns the line of the check that fails.
    static int expect_failure(const uint8_t *in, const char *key_iv)
    {
        auto *const untouched = static_cast<uint8_t *>(sentinel());
        uint8_t *out = untouched;
        uint32_t length = 0xDEADBEEF;
        LogRecorder log;
        AllocationTrace trace;
        EXPECT_EQ(GetParam().function(in, 16, key_iv, &out, &length), -999);
        trace.stop();
        EXPECT_THAT(trace.events(), IsEmpty());
        EXPECT_EQ(out, untouched);
        EXPECT_EQ(length, 0xDEADBEEF);
        const std::vector<LogLine> lines = log.take();
        EXPECT_THAT(lines, ElementsAre(assert_fails({GetParam().logged_name, "mdm_crypto.cpp"})));
        return lines.empty() ? 0 : lines.front().source_line;
    }
};

TEST_P(MissingArguments, EachFailsACheckOfItsOwn)
{
    const Bytes in(32);
    const int input_check = expect_failure(nullptr, some_key.c_str());
    const int key_check = expect_failure(in.data(), nullptr);
    EXPECT_LT(input_check, key_check);
    EXPECT_EQ(expect_failure(nullptr, nullptr), input_check);
}

TEST_P(MissingArguments, FailBeforeTheOutputsMatter)
{
    const Bytes in(32);
    EXPECT_EQ(GetParam().function(nullptr, 0, some_key.c_str(), nullptr, nullptr), -999);
    EXPECT_EQ(GetParam().function(in.data(), 0, nullptr, nullptr, nullptr), -999);
}

TEST_P(MissingArguments, FailWithTheLoggerOffAsWell)
{
    LogRecorder log(MDM_LOG_NONE);
    const Bytes in(32);
    EXPECT_EQ(GetParam().function(nullptr, 0, some_key.c_str(), nullptr, nullptr), -999);
    EXPECT_EQ(GetParam().function(in.data(), 0, nullptr, nullptr, nullptr), -999);
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_P(MissingArguments, AreLoggedWithTagFileAndFunction)
{
    const LogRecorder log;
    GetParam().function(nullptr, 0, nullptr, nullptr, nullptr);
    ASSERT_EQ(log.platform_lines().size(), 1U);
    const PlatformLine &line = log.platform_lines().front();
    EXPECT_EQ(line.tag, "MDM_COMMON");
    EXPECT_TRUE(line.text.ends_with(") > \033[0;31m* Critical * _ASSERT fails\033[0;m"));
    EXPECT_TRUE(line.text.starts_with("mdm_crypto.cpp: "s + GetParam().logged_name + "("))
        << line.text;
}

INSTANTIATE_TEST_SUITE_P(AesHelper, MissingArguments, both_directions, name_of);

class Wiping : public ::testing::TestWithParam<Direction> {
protected:
    // The schedule as the cipher itself lays it out: ten rounds and the key.
    static Bytes schedule_of(const Bytes &key)
    {
        AES_KEY schedule{};
        if (GetParam().function == mdm_aes_encrypt) {
            AES_set_encrypt_key(key.data(), 128, &schedule);
        } else {
            AES_set_decrypt_key(key.data(), 128, &schedule);
        }
        const auto *bytes = reinterpret_cast<const uint8_t *>(schedule.rd_key);
        return {bytes, bytes + size_t{11} * 16};
    }

    static void expect_wiped(size_t length, const Bytes &bytes, const std::string &key_iv,
                             const Bytes &key, const Bytes &vector)
    {
        WipeRecorder wipes;
        successful(GetParam().function, bytes, static_cast<uint32_t>(length), key_iv);
        // The schedule may hold the key once more.
        EXPECT_TRUE(wipes.take(schedule_of(key)));
        EXPECT_TRUE(wipes.take(key));
        EXPECT_TRUE(wipes.take(vector));
    }
};

// When a call is over, its copy of the vector holds the last block of the ciphertext.
TEST_P(Wiping, LeavesNeitherKeyNorVectorNorSchedule)
{
    const bool encrypts = GetParam().function == mdm_aes_encrypt;
    for (size_t size = 16; size <= 1024; size *= 2) {
        SCOPED_TRACE(size);
        const Bytes blocks = sample(size);
        const Bytes cipher = encrypts ? encrypted(blocks, some_key) : blocks;
        expect_wiped(encrypts ? size - 16 : size, blocks, some_key,
                     hex("30 31 32 33 34 35 36 37 38 39 61 62 63 64 65 66"),
                     {cipher.end() - 16, cipher.end()});
    }
}

TEST_P(Wiping, CoversACallForNothing)
{
    const uint32_t nothing = GetParam().function == mdm_aes_encrypt ? 4294967280 : 0;
    expect_wiped(nothing, {}, some_key, hex("30 31 32 33 34 35 36 37 38 39 61 62 63 64 65 66"),
                 hex("46 45 44 43 42 41 39 38 37 36 35 34 33 32 31 30"));
}

INSTANTIATE_TEST_SUITE_P(AesHelper, Wiping, both_directions, name_of);

// Calls both functions without the recorders, which serve one thread.
bool comes_through(const Bytes &plain_blocks, const Bytes &cipher_blocks, const std::string &key_iv)
{
    const auto same = [&](Function *function, const Bytes &in, size_t length,
                          const Bytes &expected) {
        uint8_t *out = nullptr;
        uint32_t out_length = 0;
        function(in.data(), static_cast<uint32_t>(length), key_iv.c_str(), &out, &out_length);
        const std::unique_ptr<uint8_t, Release> buffer(out);
        return Bytes(out, out + out_length) == expected;
    };
    return same(mdm_aes_encrypt, plain_blocks, plain_blocks.size() - 16, cipher_blocks) &&
           same(mdm_aes_decrypt, cipher_blocks, cipher_blocks.size(), plain_blocks);
}

TEST(AesHelper, CallsOfManyThreadsDoNotMeet)
{
    constexpr int callers = 8;
    constexpr int calls = 200;
    const Bytes blocks = sample(8192);
    std::atomic<int> ready = 0;
    std::atomic<int> good = 0;
    std::vector<std::thread> threads;
    for (int caller = 0; caller < callers; ++caller) {
        const std::string key_iv(32, static_cast<char>('a' + caller));
        threads.emplace_back([&, key_iv, cipher = encrypted(blocks, key_iv)] {
            ++ready;
            while (ready != callers) {
                std::this_thread::yield();
            }
            for (int i = 0; i < calls; ++i) {
                good += comes_through(blocks, cipher, key_iv) ? 1 : 0;
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(good, callers * calls);
}

}  // namespace
}  // namespace mdm::test::crypto_test

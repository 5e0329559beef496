// SPDX-License-Identifier: Apache-2.0
//
// The codec beside its floor, in one run: each message is encoded (and the buffer released), and
// decoded and released, three times: by hand ("floor"), by the library with the logger off
// ("silenced"), and by the library at its default threshold with a platform log that does nothing
// ("null sink").
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "floor.hpp"
#include "mdm/ipc.h"
#include "mdm/log.h"
#include "ratio_reporter.hpp"

extern "C" int platform_log_vprint(int /*buffer_id*/, int /*priority*/, const char * /*tag*/,
                                   const char * /*format*/, va_list /*args*/)
{
    return 0;
}

namespace mdm::bench {
namespace {

struct Message {
    const char *name;
    mdm_msg_t msg;
    FloorEncode *floor_encode;
    FloorDecode *floor_decode;
    size_t elements = 1;                          // of a list
    void (*release_rest)(mdm_msg_t &) = nullptr;  // what ipc_free() leaves to the owner
};

mdm_msg_t new_message(uint8_t type)
{
    mdm_msg_t msg{};
    msg.type = type;
    msg.hdr_word1 = 1;
    return msg;
}

mdm_msg_t payload(size_t size)
{
    static std::deque<std::string> payloads;  // which keeps its elements in place
    payloads.emplace_back(size, 'x');
    mdm_msg_t msg = new_message(33);
    msg.body.res.type = 100;
    msg.body.res.data_size = static_cast<int32_t>(size);
    msg.body.res.data = payloads.back().data();
    return msg;
}

mdm_msg_t admin_record()
{
    static char pkg[] = "com.example.agent";
    static char text[] = "Example management agent";
    mdm_msg_t msg = new_message(1);
    msg.body.admin.type = 5;
    msg.body.admin.value = 7;
    msg.body.admin.pkg = pkg;
    msg.body.admin.text = text;
    return msg;
}

mdm_msg_t pwd_policy()
{
    static char forbidden[] = "password";
    static char pattern[] = "[a-z]{8,}";
    static mdm_pwd_policy_t policy = {8, 2, 1, 1, 30, 5, 10, 0, 1, forbidden, pattern};
    mdm_msg_t msg = new_message(3);
    msg.body.pwd.type = 40;
    msg.body.pwd.data_size = 1;
    msg.body.pwd.data = &policy;
    return msg;
}

// A text of its own for each place that needs one.
char *text(size_t length)
{
    static std::deque<std::string> texts;  // which keeps its elements in place
    texts.emplace_back(length, 'x');
    return texts.back().data();
}

template <class Record>
Record *new_record()
{
    static std::deque<Record> records;
    return &records.emplace_back();
}

// From the first to the last string of a record.
void fill(char **first, char **last)
{
    for (char **place = first; place <= last; ++place) {
        *place = text(12);
    }
}

mdm_msg_t apn_record()
{
    auto *account = new_record<mdm_apn_account_t>();
    account->num0 = 262;
    account->num1 = 1;
    fill(&account->profile_name, &account->str14);
    mdm_msg_t msg = new_message(21);
    msg.body.apn.type = 387;
    msg.body.apn.data_size = 1;
    msg.body.apn.data = account;
    return msg;
}

GList *list_of(size_t count, void *(*new_element)())
{
    GQueue elements = G_QUEUE_INIT;
    for (size_t i = 0; i < count; ++i) {
        g_queue_push_tail(&elements, new_element());
    }
    return elements.head;
}

void *new_account()
{
    auto *account = new_record<mdm_security_account_t>();
    fill(&account->str4, &account->str25);
    return account;
}

mdm_msg_t security_accounts()
{
    mdm_msg_t msg = new_message(5);
    msg.body.security.type = 70;
    msg.body.security.data = list_of(100, new_account);
    return msg;
}

void *new_name()
{
    return text(20);
}

mdm_msg_t package_names(size_t count)
{
    mdm_msg_t msg = new_message(13);
    msg.body.app.type = 4;
    msg.body.app.data_size = 1;
    msg.body.app.data = list_of(count, new_name);
    return msg;
}

void release_names(mdm_msg_t &msg)
{
    g_list_free_full(static_cast<GList *>(msg.body.app.data), g_free);
}

std::vector<uint8_t> encoded(mdm_msg_t msg)
{
    uint32_t length = 0;
    uint8_t *bytes = ipc_serialize(&msg, &length);
    std::vector<uint8_t> copy(bytes, bytes + length);
    g_free(bytes);
    return copy;
}

void encode_floor(benchmark::State &state, const Message &message)
{
    for (auto _ : state) {
        uint32_t length = 0;
        uint8_t *bytes = message.floor_encode(message.msg, length);
        benchmark::DoNotOptimize(bytes);
        benchmark::DoNotOptimize(length);
        g_free(bytes);
    }
}

void encode_library(benchmark::State &state, const Message &message, mdm_log_level_t threshold)
{
    mdm_msg_t msg = message.msg;
    mdm_log_set_level(threshold);
    for (auto _ : state) {
        // Which some categories add to: each round starts with the sender's own.
        msg.body.apn.data_size = message.msg.body.apn.data_size;
        uint32_t length = 0;
        uint8_t *bytes = ipc_serialize(&msg, &length);
        benchmark::DoNotOptimize(bytes);
        benchmark::DoNotOptimize(length);
        g_free(bytes);
    }
}

void decode_floor(benchmark::State &state, const Message &message)
{
    const std::vector<uint8_t> bytes = encoded(message.msg);
    mdm_msg_t msg{};
    for (auto _ : state) {
        message.floor_decode(bytes.data(), msg);
    }
}

void decode_library(benchmark::State &state, const Message &message, mdm_log_level_t threshold)
{
    const std::vector<uint8_t> bytes = encoded(message.msg);
    mdm_msg_t msg{};
    mdm_log_set_level(threshold);
    for (auto _ : state) {
        ipc_deserialize(&msg, bytes.data(), static_cast<uint32_t>(bytes.size()));
        benchmark::DoNotOptimize(msg);
        ipc_free(&msg);
        if (message.release_rest != nullptr) {
            message.release_rest(msg);
        }
        msg.body.pwd.data = nullptr;
    }
}

// The floor must be the same work: the same bytes, or its ratio means nothing.
bool floor_is_true(const Message &message)
{
    const std::vector<uint8_t> expected = encoded(message.msg);
    uint32_t length = 0;
    uint8_t *bytes = message.floor_encode(message.msg, length);
    const bool same = length == expected.size() && std::memcmp(bytes, expected.data(), length) == 0;
    g_free(bytes);
    return same;
}

template <class Run, class... Arguments>
void register_run(const std::string &name, const Message &message, Run run, Arguments... arguments)
{
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State &state) {
        run(state, message, arguments...);
        state.counters["elements"] = static_cast<double>(message.elements);
    });
}

void register_message(const Message &message)
{
    const std::string encode = std::string("encode ") + message.name;
    const std::string decode = std::string("decode ") + message.name;
    register_run(encode + "/floor", message, encode_floor);
    register_run(encode + "/silenced", message, encode_library, MDM_LOG_NONE);
    register_run(encode + "/null sink", message, encode_library, MDM_LOG_INFO);
    register_run(decode + "/floor", message, decode_floor);
    register_run(decode + "/silenced", message, decode_library, MDM_LOG_NONE);
    register_run(decode + "/null sink", message, decode_library, MDM_LOG_INFO);
}

}  // namespace
}  // namespace mdm::bench

int main(int argc, char **argv)
{
    using namespace mdm::bench;
    // Interleaved repetitions, so that what else the machine does falls on all alike. Flags on
    // the command line come later and win.
    std::vector<std::string> flags = {argv[0], "--benchmark_enable_random_interleaving=true",
                                      "--benchmark_repetitions=15", "--benchmark_min_time=0.05"};
    flags.insert(flags.end(), argv + 1, argv + argc);
    std::vector<char *> arguments;
    arguments.reserve(flags.size());
    for (std::string &flag : flags) {
        arguments.push_back(flag.data());
    }
    auto count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) {
        return EXIT_FAILURE;
    }

    const Message messages[] = {
        {"2 bytes", payload(2), floor_encode_res, floor_decode_res},
        {"1 KiB", payload(1024), floor_encode_res, floor_decode_res},
        {"1 MiB", payload(size_t{1024} * 1024), floor_encode_res, floor_decode_res},
        {"admin", admin_record(), floor_encode_admin, floor_decode_admin},
        {"pwd policy", pwd_policy(), floor_encode_pwd, floor_decode_pwd},
        {"apn record", apn_record(), floor_encode_apn, floor_decode_apn},
        {"100 accounts", security_accounts(), floor_encode_accounts, floor_decode_accounts, 100},
        {"1,000 names", package_names(1000), floor_encode_names, floor_decode_names, 1000,
         release_names},
        {"10,000 names", package_names(10000), floor_encode_names, floor_decode_names, 10000,
         release_names},
        {"100,000 names", package_names(100000), floor_encode_names, floor_decode_names, 100000,
         release_names},
    };
    for (const Message &message : messages) {
        if (!floor_is_true(message)) {
            std::fprintf(stderr, "%s: the floor makes other bytes\n", message.name);
            return EXIT_FAILURE;
        }
        register_message(message);
    }
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return EXIT_SUCCESS;
}

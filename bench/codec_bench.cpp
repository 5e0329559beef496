// SPDX-License-Identifier: Apache-2.0
//
// The codec beside its floor, in one run. Each message is encoded (and the buffer released), and
// decoded and released, three times: by hand ("floor"), by the library with the logger off
// ("silenced"), and by the library at its default threshold with a platform log that does nothing
// ("null sink").
//
// The guarded path beside its own floor: each message is opened and closed by hand ("region
// floor") and by ipc_open(), both ways, beside the same bytes decoded and released ("contract" and
// "contract floor"). Sealing stands beside ipc_serialize(), both ways.
//
// With --instructions=FILE as its first flag, the program counts instructions instead of time.
// Callgrind must run it then, and must have the same file as its --callgrind-out-file.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <benchmark/benchmark.h>

#include "floor.hpp"
#include "instructions.hpp"
#include "mdm/guarded.h"
#include "mdm/ipc.h"
#include "mdm/log.h"
#include "ratio_reporter.hpp"
#include "region_check.hpp"
#include "region_floor.hpp"

extern "C" int platform_log_vprint(int /*buffer_id*/, int /*priority*/, const char * /*tag*/,
                                   const char * /*format*/, va_list /*args*/)
{
    return 0;
}

namespace mdm::bench {
namespace {

using Hook = void(mdm_msg_t &msg);

// One message by hand.
struct Floor {
    FloorEncode *encode;
    FloorDecode *decode;
    FloorRelease *release;
    RegionOpen *open;
};

constexpr Floor res_floor = {floor_encode_res, floor_decode_res, floor_release_res,
                             region_open_res};
constexpr Floor admin_floor = {floor_encode_admin, floor_decode_admin, floor_release_admin,
                               region_open_admin};
constexpr Floor pwd_floor = {floor_encode_pwd, floor_decode_pwd, floor_release_pwd,
                             region_open_pwd};
constexpr Floor apn_floor = {floor_encode_apn, floor_decode_apn, floor_release_apn,
                             region_open_apn};
constexpr Floor accounts_floor = {floor_encode_accounts, floor_decode_accounts,
                                  floor_release_accounts, region_open_accounts};
constexpr Floor names_floor = {floor_encode_names, floor_decode_names, floor_release_names,
                               region_open_names};

struct Message {
    const char *name;
    mdm_msg_t msg;
    Floor floor;
    size_t elements = 1;            // of a list
    Hook *before_encode = nullptr;  // takes back what an encoding has stored in the body
    Hook *after_free = nullptr;     // releases what ipc_free() leaves to the owner
};

void run(Hook *hook, mdm_msg_t &msg)
{
    if (hook != nullptr) {
        hook(msg);
    }
}

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

mdm_msg_t security_accounts(size_t count)
{
    mdm_msg_t msg = new_message(5);
    msg.body.security.type = 70;
    msg.body.security.data = list_of(count, new_account);
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

void restart_data_size(mdm_msg_t &msg)
{
    msg.body.apn.data_size = 1;
}

std::vector<uint8_t> taken(uint8_t *bytes, uint32_t length)
{
    std::vector<uint8_t> copy(bytes, bytes + length);
    g_free(bytes);
    return copy;
}

std::vector<uint8_t> encoded(const Message &message, mdm_msg_t msg)
{
    uint32_t length = 0;
    run(message.before_encode, msg);
    uint8_t *bytes = ipc_serialize(&msg, &length);
    return taken(bytes, length);
}

std::vector<uint8_t> encoded(const Message &message)
{
    return encoded(message, message.msg);
}

// With a header text, which none of the measured messages has.
std::vector<uint8_t> encoded_with_text(const Message &message)
{
    static char header_text[] = "header text";
    mdm_msg_t msg = message.msg;
    msg.hdr_text = header_text;
    return encoded(message, msg);
}

// Set where instructions are counted instead of time.
std::optional<InstructionCounter> counter;

template <class Step>
void measure(benchmark::State &state, Step step)
{
    if (counter) {
        state.counters["instructions"] = counter->count(step);
    }
    for (auto _ : state) {
        step();
    }
}

void encode_floor(benchmark::State &state, const Message &message)
{
    measure(state, [&] {
        uint32_t length = 0;
        uint8_t *bytes = message.floor.encode(message.msg, length);
        benchmark::DoNotOptimize(bytes);
        benchmark::DoNotOptimize(length);
        g_free(bytes);
    });
}

uint8_t *sealed(mdm_msg_t *msg, uint32_t *length)
{
    return ipc_seal(msg, length, nullptr);
}

template <uint8_t *encode(mdm_msg_t *msg, uint32_t *length)>
void encode_library(benchmark::State &state, const Message &message, mdm_log_level_t threshold)
{
    mdm_msg_t msg = message.msg;
    mdm_log_set_level(threshold);
    measure(state, [&] {
        run(message.before_encode, msg);
        uint32_t length = 0;
        uint8_t *bytes = encode(&msg, &length);
        benchmark::DoNotOptimize(bytes);
        benchmark::DoNotOptimize(length);
        g_free(bytes);
    });
}

void decode_floor(benchmark::State &state, const Message &message)
{
    const std::vector<uint8_t> bytes = encoded(message);
    mdm_msg_t msg{};
    measure(state, [&] {
        message.floor.decode(bytes.data(), msg);
        benchmark::DoNotOptimize(msg);
        message.floor.release(msg);
    });
}

void decode_library(benchmark::State &state, const Message &message, mdm_log_level_t threshold)
{
    const std::vector<uint8_t> bytes = encoded(message);
    mdm_msg_t msg{};
    mdm_log_set_level(threshold);
    measure(state, [&] {
        benchmark::DoNotOptimize(
            ipc_deserialize(&msg, bytes.data(), static_cast<uint32_t>(bytes.size())));
        benchmark::DoNotOptimize(msg);
        ipc_free(&msg);
        run(message.after_free, msg);
    });
}

void open_floor(benchmark::State &state, const Message &message)
{
    const std::vector<uint8_t> bytes = encoded(message);
    measure(state, [&] {
        mdm_msg_t *msg = message.floor.open(bytes.data(), static_cast<uint32_t>(bytes.size()));
        benchmark::DoNotOptimize(msg);
        region_close(msg);
    });
}

void open_library(benchmark::State &state, const Message &message, mdm_log_level_t threshold)
{
    const std::vector<uint8_t> bytes = encoded(message);
    mdm_log_set_level(threshold);
    measure(state, [&] {
        mdm_msg_t *msg = ipc_open(bytes.data(), static_cast<uint32_t>(bytes.size()), nullptr);
        benchmark::DoNotOptimize(msg);
        ipc_close(msg);
    });
}

// The floor must do the same work: make the same bytes, and a message that makes them again.
bool floor_is_true(const Message &message)
{
    const std::vector<uint8_t> expected = encoded(message);
    uint32_t length = 0;
    uint8_t *bytes = message.floor.encode(message.msg, length);
    if (taken(bytes, length) != expected) {
        return false;
    }
    mdm_msg_t decoded{};
    message.floor.decode(expected.data(), decoded);
    const bool same = encoded(message, decoded) == expected;
    message.floor.release(decoded);
    return same && opens_like_library(message.floor.open, expected) &&
           opens_like_library(message.floor.open, encoded_with_text(message));
}

// What is sealed must be what is serialised.
bool seal_is_true(const Message &message)
{
    mdm_msg_t msg = message.msg;
    uint32_t length = 0;
    run(message.before_encode, msg);
    uint8_t *bytes = sealed(&msg, &length);
    return bytes != nullptr && taken(bytes, length) == encoded(message);
}

bool is_true(const Message &message)
{
    if (!floor_is_true(message)) {
        std::fprintf(stderr, "%s: the floor does other work\n", message.name);
        return false;
    }
    if (!seal_is_true(message)) {
        std::fprintf(stderr, "%s: ipc_seal makes other bytes\n", message.name);
        return false;
    }
    return true;
}

Message accounts(const char *name, size_t count)
{
    return {name, security_accounts(count), accounts_floor, count};
}

Message names(const char *name, size_t count)
{
    return {name, package_names(count), names_floor, count, nullptr, release_names};
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
    register_run(encode + "/silenced", message, encode_library<ipc_serialize>, MDM_LOG_NONE);
    register_run(encode + "/null sink", message, encode_library<ipc_serialize>, MDM_LOG_INFO);
    register_run(decode + "/floor", message, decode_floor);
    register_run(decode + "/silenced", message, decode_library, MDM_LOG_NONE);
    register_run(decode + "/null sink", message, decode_library, MDM_LOG_INFO);

    const std::string open = std::string("open ") + message.name;
    register_run(open + "/region floor", message, open_floor);
    register_run(open + "/ipc_open", message, open_library, MDM_LOG_NONE);
    register_run(open + "/null sink", message, open_library, MDM_LOG_INFO);
    register_run(open + "/contract", message, decode_library, MDM_LOG_NONE);
    register_run(open + "/contract floor", message, decode_floor);

    const std::string seal = std::string("seal ") + message.name;
    register_run(seal + "/ipc_serialize", message, encode_library<ipc_serialize>, MDM_LOG_NONE);
    register_run(seal + "/ipc_seal", message, encode_library<sealed>, MDM_LOG_NONE);
    register_run(seal + "/ipc_serialize, null sink", message, encode_library<ipc_serialize>,
                 MDM_LOG_INFO);
    register_run(seal + "/ipc_seal, null sink", message, encode_library<sealed>, MDM_LOG_INFO);
}

std::vector<Table> tables()
{
    return {
        {"", "floor", {{"silenced", "floor"}, {"null sink", "floor"}}, "silenced"},
        {"Open and close; the goal of ipc_open is 1.25 at most.",
         "region floor",
         {{"ipc_open", "region floor"},
          {"null sink", "region floor"},
          {"contract", "region floor"},
          {"contract floor", "region floor"}},
         "ipc_open"},
        {"Seal, beside ipc_serialize with the same log; the goal is 1.15 at most.",
         "ipc_serialize",
         {{"ipc_seal", "ipc_serialize"}, {"ipc_seal, null sink", "ipc_serialize, null sink"}},
         "ipc_seal"},
    };
}

// The flags for the benchmark library. Those of the command line come last and win.
std::vector<std::string> benchmark_flags(std::vector<std::string> flags)
{
    constexpr std::string_view count_flag = "--instructions=";
    if (flags.size() > 1 && flags[1].starts_with(count_flag)) {
        counter.emplace(flags[1].substr(count_flag.size()));
        flags[1] = "--benchmark_min_time=0";
        return flags;
    }
    // Interleaved repetitions, so that what else the machine does falls on all alike.
    flags.insert(flags.begin() + 1, {"--benchmark_enable_random_interleaving=true",
                                     "--benchmark_repetitions=15", "--benchmark_min_time=0.05"});
    return flags;
}

}  // namespace
}  // namespace mdm::bench

int main(int argc, char **argv)
{
    using namespace mdm::bench;
    std::vector<std::string> flags = benchmark_flags({argv, argv + argc});
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
        {"2 bytes", payload(2), res_floor},
        {"1 KiB", payload(1024), res_floor},
        {"1 MiB", payload(size_t{1024} * 1024), res_floor},
        {"admin", admin_record(), admin_floor},
        {"pwd policy", pwd_policy(), pwd_floor},
        {"apn record", apn_record(), apn_floor, 1, restart_data_size},
        accounts("100 accounts", 100),
        names("1,000 names", 1000),
        names("10,000 names", 10000),
        names("100,000 names", 100000),
    };
    mdm_log_set_level(MDM_LOG_NONE);  // the floor is also tried with bytes that are refused
    // Not measured: small enough to be tried with every one.
    for (const Message &message : {accounts("2 accounts", 2), names("3 names", 3)}) {
        if (!is_true(message)) {
            return EXIT_FAILURE;
        }
    }
    for (const Message &message : messages) {
        if (!is_true(message)) {
            return EXIT_FAILURE;
        }
        // A longer list takes minutes under callgrind.
        if (!counter || message.elements <= 10000) {
            register_message(message);
        }
    }
    RatioReporter reporter(tables(), counter ? "instructions" : "ns");
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return EXIT_SUCCESS;
}

// SPDX-License-Identifier: Apache-2.0
//
// The codec beside its baseline, in one run. Each message is encoded (and the buffer released), and
// decoded and released, three times: by hand ("baseline"), by the library with the logger off
// ("silenced"), and by the library at its default threshold with a platform log that does nothing
// ("null sink").
//
// The guarded path beside a baseline of its own: each message is opened and closed by hand
// ("guarded baseline") and by ipc_open(), both ways. Beside them the trusting path decodes and
// releases the same bytes ("trusting"), and so does its baseline ("trusting baseline"). Sealing
// stands beside ipc_serialize(), both ways.
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

#include "baseline.hpp"
#include "guarded_baseline.hpp"
#include "guarded_baseline_check.hpp"
#include "instructions.hpp"
#include "mdm/guarded.h"
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

using Hook = void(mdm_msg_t &msg);

// One message by hand.
struct Baseline {
    BaselineEncode *encode;
    BaselineDecode *decode;
    BaselineRelease *release;
    BaselineOpen *open;
};

constexpr Baseline res_baseline = {baseline_encode_res, baseline_decode_res, baseline_release_res,
                                   baseline_open_res};
constexpr Baseline admin_baseline = {baseline_encode_admin, baseline_decode_admin,
                                     baseline_release_admin, baseline_open_admin};
constexpr Baseline pwd_baseline = {baseline_encode_pwd, baseline_decode_pwd, baseline_release_pwd,
                                   baseline_open_pwd};
constexpr Baseline apn_baseline = {baseline_encode_apn, baseline_decode_apn, baseline_release_apn,
                                   baseline_open_apn};
constexpr Baseline accounts_baseline = {baseline_encode_accounts, baseline_decode_accounts,
                                        baseline_release_accounts, baseline_open_accounts};
constexpr Baseline names_baseline = {baseline_encode_names, baseline_decode_names,
                                     baseline_release_names, baseline_open_names};

struct Message {
    const char *name;
    mdm_msg_t msg;
    Baseline baseline;
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
    mdm_msg_t msg = new_message(MDM_TYPE_RES);
    msg.body.res.type = 100;
    msg.body.res.data_size = static_cast<int32_t>(size);
    msg.body.res.data = payloads.back().data();
    return msg;
}

mdm_msg_t admin_record()
{
    mdm_msg_t msg = new_message(MDM_TYPE_ADMIN);
    msg.body.admin.type = 5;
    msg.body.admin.value = 7;
    msg.body.admin.pkg = mdm_text("com.example.agent");
    msg.body.admin.text = mdm_text("Example management agent");
    return msg;
}

mdm_msg_t pwd_policy()
{
    static mdm_pwd_policy_t policy = {
        8, 2, 1, 1, 30, 5, 10, 0, 1, mdm_text("password"), mdm_text("[a-z]{8,}")};
    mdm_msg_t msg = new_message(MDM_TYPE_PWD);
    msg.body.pwd.type = MDM_PWD_POLICY;
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
    mdm_msg_t msg = new_message(MDM_TYPE_APN);
    msg.body.apn.type = MDM_APN_PROFILE_387;
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
    mdm_msg_t msg = new_message(MDM_TYPE_SECURITY);
    msg.body.security.type = MDM_SECURITY_ACCOUNTS_70;
    msg.body.security.data = list_of(count, new_account);
    return msg;
}

void *new_name()
{
    return text(20);
}

mdm_msg_t package_names(size_t count)
{
    mdm_msg_t msg = new_message(MDM_TYPE_APP);
    msg.body.app.type = MDM_APP_PACKAGES_4;
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

void encode_baseline(benchmark::State &state, const Message &message)
{
    measure(state, [&] {
        uint32_t length = 0;
        uint8_t *bytes = message.baseline.encode(message.msg, length);
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

void decode_baseline(benchmark::State &state, const Message &message)
{
    const std::vector<uint8_t> bytes = encoded(message);
    mdm_msg_t msg{};
    measure(state, [&] {
        message.baseline.decode(bytes.data(), msg);
        benchmark::DoNotOptimize(msg);
        message.baseline.release(msg);
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

void open_baseline(benchmark::State &state, const Message &message)
{
    const std::vector<uint8_t> bytes = encoded(message);
    measure(state, [&] {
        mdm_msg_t *msg = message.baseline.open(bytes.data(), static_cast<uint32_t>(bytes.size()));
        benchmark::DoNotOptimize(msg);
        baseline_close(msg);
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

// The baseline must do the same work: make the same bytes, and a message that makes them again.
bool baseline_is_true(const Message &message)
{
    const std::vector<uint8_t> expected = encoded(message);
    uint32_t length = 0;
    uint8_t *bytes = message.baseline.encode(message.msg, length);
    if (taken(bytes, length) != expected) {
        return false;
    }
    mdm_msg_t decoded{};
    message.baseline.decode(expected.data(), decoded);
    const bool same = encoded(message, decoded) == expected;
    message.baseline.release(decoded);
    return same && opens_like_library(message.baseline.open, expected) &&
           opens_like_library(message.baseline.open, encoded_with_text(message));
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
    if (!baseline_is_true(message)) {
        std::fprintf(stderr, "%s: the baseline does other work\n", message.name);
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
    return {name, security_accounts(count), accounts_baseline, count};
}

Message names(const char *name, size_t count)
{
    return {name, package_names(count), names_baseline, count, nullptr, release_names};
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
    register_run(encode + "/baseline", message, encode_baseline);
    register_run(encode + "/silenced", message, encode_library<ipc_serialize>, MDM_LOG_NONE);
    register_run(encode + "/null sink", message, encode_library<ipc_serialize>, MDM_LOG_INFO);
    register_run(decode + "/baseline", message, decode_baseline);
    register_run(decode + "/silenced", message, decode_library, MDM_LOG_NONE);
    register_run(decode + "/null sink", message, decode_library, MDM_LOG_INFO);

    const std::string open = std::string("open ") + message.name;
    register_run(open + "/guarded baseline", message, open_baseline);
    register_run(open + "/ipc_open", message, open_library, MDM_LOG_NONE);
    register_run(open + "/null sink", message, open_library, MDM_LOG_INFO);
    register_run(open + "/trusting", message, decode_library, MDM_LOG_NONE);
    register_run(open + "/trusting baseline", message, decode_baseline);

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
        {"", "baseline", {{"silenced", "baseline"}, {"null sink", "baseline"}}, "silenced"},
        {"Open and close; the goal of ipc_open is 1.25 at most.",
         "guarded baseline",
         {{"ipc_open", "guarded baseline"},
          {"null sink", "guarded baseline"},
          {"trusting", "guarded baseline"},
          {"trusting baseline", "guarded baseline"}},
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
        {"2 bytes", payload(2), res_baseline},
        {"1 KiB", payload(1024), res_baseline},
        {"1 MiB", payload(size_t{1024} * 1024), res_baseline},
        {"admin", admin_record(), admin_baseline},
        {"pwd policy", pwd_policy(), pwd_baseline},
        {"apn record", apn_record(), apn_baseline, 1, restart_data_size},
        accounts("100 accounts", 100),
        names("1,000 names", 1000),
        names("10,000 names", 10000),
        names("100,000 names", 100000),
    };
    mdm_log_set_level(MDM_LOG_NONE);  // the baseline is also tried with bytes that are refused
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

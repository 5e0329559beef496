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
//
// With --growth as its first flag, or as its second one behind --instructions, the program measures
// messages that grow, and neither the log nor the paths beside each other.
#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <benchmark/benchmark.h>

#include "instructions.hpp"
#include "mdm/guarded.h"
#include "mdm/ipc.h"
#include "mdm/log.h"
#include "messages.hpp"
#include "ratio_reporter.hpp"

extern "C" int platform_log_vprint(int /*buffer_id*/, int /*priority*/, const char * /*tag*/,
                                   const char * /*format*/, va_list /*args*/)
{
    return 0;
}

namespace mdm::bench {
namespace {

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

template <class Run, class... Arguments>
void register_run(const std::string &name, const Message &message, Run run, Arguments... arguments)
{
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State &state) {
        run(state, message, arguments...);
        state.counters["elements"] = static_cast<double>(message.elements);
    });
}

// What growth is measured of.
void register_silent(const Message &message)
{
    const std::string encode = "encode " + message.name;
    register_run(encode + "/baseline", message, encode_baseline);
    register_run(encode + "/silenced", message, encode_library<ipc_serialize>, MDM_LOG_NONE);

    const std::string decode = "decode " + message.name;
    register_run(decode + "/baseline", message, decode_baseline);
    register_run(decode + "/silenced", message, decode_library, MDM_LOG_NONE);

    const std::string open = "open " + message.name;
    register_run(open + "/guarded baseline", message, open_baseline);
    register_run(open + "/ipc_open", message, open_library, MDM_LOG_NONE);

    const std::string seal = "seal " + message.name;
    register_run(seal + "/ipc_serialize", message, encode_library<ipc_serialize>, MDM_LOG_NONE);
    register_run(seal + "/ipc_seal", message, encode_library<sealed>, MDM_LOG_NONE);
}

void register_all(const Message &message)
{
    register_silent(message);
    register_run("encode " + message.name + "/null sink", message, encode_library<ipc_serialize>,
                 MDM_LOG_INFO);
    register_run("decode " + message.name + "/null sink", message, decode_library, MDM_LOG_INFO);

    const std::string open = "open " + message.name;
    register_run(open + "/null sink", message, open_library, MDM_LOG_INFO);
    register_run(open + "/trusting", message, decode_library, MDM_LOG_NONE);
    register_run(open + "/trusting baseline", message, decode_baseline);

    const std::string seal = "seal " + message.name;
    register_run(seal + "/ipc_serialize, null sink", message, encode_library<ipc_serialize>,
                 MDM_LOG_INFO);
    register_run(seal + "/ipc_seal, null sink", message, encode_library<sealed>, MDM_LOG_INFO);
}

constexpr const char *open_goal = "1.25";
constexpr const char *seal_goal = "1.15";

std::vector<Table> growth_tables()
{
    return {
        {"", "baseline", {{"silenced", "baseline"}}, "silenced"},
        {"Open and close", "guarded baseline", {{"ipc_open", "guarded baseline"}}, "ipc_open"},
        {"Seal, beside ipc_serialize",
         "ipc_serialize",
         {{"ipc_seal", "ipc_serialize"}},
         "ipc_seal"},
    };
}

std::vector<Table> tables()
{
    return {
        {"", "baseline", {{"silenced", "baseline"}, {"null sink", "baseline"}}, "silenced"},
        {std::string("Open and close; the goal of ipc_open is ") + open_goal + " at most.",
         "guarded baseline",
         {{"ipc_open", "guarded baseline"},
          {"null sink", "guarded baseline"},
          {"trusting", "guarded baseline"},
          {"trusting baseline", "guarded baseline"}},
         "ipc_open"},
        {std::string("Seal, beside ipc_serialize with the same log; the goal is ") + seal_goal +
             " at most.",
         "ipc_serialize",
         {{"ipc_seal", "ipc_serialize"}, {"ipc_seal, null sink", "ipc_serialize, null sink"}},
         "ipc_seal"},
    };
}

// What the first flags ask for: messages that grow, or those of many kinds. They are taken away.
bool take_growth(std::vector<std::string> &flags)
{
    if (flags.size() < 2 || flags[1] != "--growth") {
        return false;
    }
    flags.erase(flags.begin() + 1);
    return true;
}

void take_counter(std::vector<std::string> &flags)
{
    constexpr std::string_view count_flag = "--instructions=";
    if (flags.size() > 1 && flags[1].starts_with(count_flag)) {
        counter.emplace(flags[1].substr(count_flag.size()));
        flags.erase(flags.begin() + 1);
    }
}

// The flags for the benchmark library. Those of the command line come last and win.
void add_flags(std::vector<std::string> &flags, bool grows)
{
    if (counter) {
        flags.insert(flags.begin() + 1, "--benchmark_min_time=0");
        return;
    }
    // Interleaved repetitions, so that what else the machine does falls on all alike.
    flags.insert(flags.begin() + 1,
                 {"--benchmark_enable_random_interleaving=true",
                  grows ? "--benchmark_repetitions=7" : "--benchmark_repetitions=15",
                  grows ? "--benchmark_min_time=0.02" : "--benchmark_min_time=0.05"});
}

bool all_are_true(const std::vector<Message> &messages)
{
    return std::ranges::all_of(messages, is_true);
}

void register_messages(const std::vector<Message> &messages, bool grows)
{
    for (const Message &message : messages) {
        if (grows) {
            register_silent(message);
        } else if (!counter || message.elements <= 10000) {
            register_all(message);  // a longer list takes minutes under callgrind
        }
    }
}

}  // namespace
}  // namespace mdm::bench

int main(int argc, char **argv)
{
    using namespace mdm::bench;
    std::vector<std::string> flags(argv, argv + argc);
    take_counter(flags);
    const bool grows = take_growth(flags);
    add_flags(flags, grows);
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

    const std::vector<Message> messages = grows ? growing_messages() : kinds_of_messages();
    mdm_log_set_level(MDM_LOG_NONE);  // the baseline is also tried with bytes that are refused
    if (!all_are_true(small_lists()) || !all_are_true(messages)) {
        return EXIT_FAILURE;
    }
    register_messages(messages, grows);
    benchmark::AddCustomContext("open goal", open_goal);
    benchmark::AddCustomContext("seal goal", seal_goal);
    RatioReporter reporter(grows ? growth_tables() : tables(), counter ? "instructions" : "ns");
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return EXIT_SUCCESS;
}

// SPDX-License-Identifier: Apache-2.0
//
// Counts the instructions of a piece of code in a program that callgrind runs. Unlike times, they
// hardly differ from run to run.
#pragma once

#include <string>
#include <utility>

#include <valgrind/callgrind.h>

namespace mdm::bench {

class InstructionCounter {
public:
    // Callgrind names its dumps after the file that it was given as --callgrind-out-file.
    explicit InstructionCounter(std::string out_file) : out_file_(std::move(out_file)) {}

    // The instructions of one call of `step`. With --instr-atstart=no callgrind counts from the
    // first call of this function on, and the program is faster until then.
    template <class Step>
    double count(Step step)
    {
        constexpr int calls = 10;
        CALLGRIND_START_INSTRUMENTATION;
        step();  // the first call also binds symbols, and fills what the allocator keeps
        CALLGRIND_ZERO_STATS;
        for (int i = 0; i < calls; ++i) {
            step();
        }
        CALLGRIND_DUMP_STATS;
        return total_of_dump() / calls;
    }

private:
    double total_of_dump();

    std::string out_file_;
    int dumps_ = 0;
};

}  // namespace mdm::bench

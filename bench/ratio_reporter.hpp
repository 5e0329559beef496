// SPDX-License-Identifier: Apache-2.0
//
// Prints one row a message: the floor's time, every other variant's as a ratio to it, and what the
// silenced library takes for each element of a list.
#pragma once

#include <map>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

namespace mdm::bench {

// A benchmark is named "<message>/<variant>"; the variant "floor" is what the others are divided
// by. Of several repetitions the median counts. The counter "elements" says how many there are.
class RatioReporter : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context &context) override;
    void ReportRuns(const std::vector<Run> &runs) override;
    void Finalize() override;

private:
    std::vector<std::string> messages_;
    std::map<std::string, std::vector<double>> times_;
    std::map<std::string, double> elements_;
};

}  // namespace mdm::bench

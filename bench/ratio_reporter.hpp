// SPDX-License-Identifier: Apache-2.0
//
// Prints tables of one row a message: what one variant takes, the table's base, others as ratios,
// and what a variant takes for each element of a list.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

namespace mdm::bench {

// A variant's time as a ratio to another one's.
struct Column {
    std::string variant;
    std::string to;
};

struct Table {
    std::string title;  // may be empty
    std::string base;
    std::vector<Column> columns;
    std::string each;
};

// A benchmark is named "<message>/<variant>"; a table has the messages of which its base was
// measured. Of several repetitions the median counts. The counter "elements" says how many there
// are.
class RatioReporter : public benchmark::BenchmarkReporter {
public:
    explicit RatioReporter(std::vector<Table> tables) : tables_(std::move(tables)) {}

    bool ReportContext(const Context &context) override;
    void ReportRuns(const std::vector<Run> &runs) override;
    void Finalize() override;

private:
    double time(const std::string &message, const std::string &variant) const;
    void print(const Table &table) const;

    std::vector<Table> tables_;
    std::vector<std::string> messages_;
    std::map<std::string, std::vector<double>> times_;
    std::map<std::string, double> elements_;
};

}  // namespace mdm::bench

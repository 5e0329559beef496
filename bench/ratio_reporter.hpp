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

// A variant's cost as a ratio to another one's.
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
// measured. Of several repetitions the median counts. A variant costs what its counter with the
// unit's name says, or time in nanoseconds if it has none. The counter "elements" says how many
// elements there are.
class RatioReporter : public benchmark::BenchmarkReporter {
public:
    RatioReporter(std::vector<Table> tables, std::string unit)
        : tables_(std::move(tables)), unit_(std::move(unit))
    {
    }

    bool ReportContext(const Context &context) override;
    void ReportRuns(const std::vector<Run> &runs) override;
    void Finalize() override;

private:
    double cost(const std::string &message, const std::string &variant) const;
    void print(const Table &table) const;

    std::vector<Table> tables_;
    std::string unit_;
    std::vector<std::string> messages_;
    std::map<std::string, std::vector<double>> costs_;
    std::map<std::string, double> elements_;
};

}  // namespace mdm::bench

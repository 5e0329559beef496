// SPDX-License-Identifier: Apache-2.0
#include "ratio_reporter.hpp"

#include <algorithm>
#include <cstdio>

namespace mdm::bench {
namespace {

double median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// The width of a column in characters.
int width(const std::string &heading, int smallest)
{
    return std::max(static_cast<int>(heading.size()), smallest);
}

void print_heading(const std::string &heading, int smallest)
{
    std::printf(" %*s", width(heading, smallest), heading.c_str());
}

void print_number(double number, int decimals, const std::string &heading, int smallest)
{
    std::printf(" %*.*f", width(heading, smallest), decimals, number);
}

double counted(const benchmark::BenchmarkReporter::Run &run, const std::string &counter,
               double otherwise)
{
    const auto found = run.counters.find(counter);
    return found == run.counters.end() ? otherwise : found->second.value;
}

constexpr int message_width = 22;
constexpr int base_width = 12;
constexpr int ratio_width = 10;
constexpr int each_width = 18;

}  // namespace

bool RatioReporter::ReportContext(const Context &context)
{
    PrintBasicContext(&GetErrorStream(), context);
    return true;
}

void RatioReporter::ReportRuns(const std::vector<Run> &runs)
{
    for (const Run &run : runs) {
        if (run.run_type != Run::RT_Iteration || run.error_occurred) {
            continue;
        }
        const std::string &name = run.run_name.function_name;
        const std::string message = name.substr(0, name.find('/'));
        if (std::ranges::find(messages_, message) == messages_.end()) {
            messages_.push_back(message);
        }
        elements_[message] = counted(run, "elements", 1);
        // Processor time: the machine's other work does not count.
        const double time = run.cpu_accumulated_time * 1e9 / static_cast<double>(run.iterations);
        costs_[name].push_back(counted(run, unit_, time));
    }
}

void RatioReporter::Finalize()
{
    std::ranges::sort(messages_);
    for (const Table &table : tables_) {
        print(table);
    }
}

// 0 for what was not measured.
double RatioReporter::cost(const std::string &message, const std::string &variant) const
{
    const auto costs = costs_.find(message + "/" + variant);
    return costs == costs_.end() ? 0 : median(costs->second);
}

void RatioReporter::print(const Table &table) const
{
    if (!table.title.empty()) {
        std::printf("\n%s\n", table.title.c_str());
    }
    const std::string base_heading = table.base + ", " + unit_;
    const std::string each_heading = table.each + ", " + unit_ + "/each";
    std::printf("%-*s", message_width, "");
    print_heading(base_heading, base_width);
    for (const Column &column : table.columns) {
        print_heading(column.variant, ratio_width);
    }
    print_heading(each_heading, each_width);
    std::printf("\n");

    for (const std::string &message : messages_) {
        const double base = cost(message, table.base);
        if (base == 0) {
            continue;  // of another table, or left out by a filter on the command line
        }
        std::printf("%-*s", message_width, message.c_str());
        print_number(base, 1, base_heading, base_width);
        for (const Column &column : table.columns) {
            print_number(cost(message, column.variant) / cost(message, column.to), 2,
                         column.variant, ratio_width);
        }
        print_number(cost(message, table.each) / elements_.at(message), 1, each_heading,
                     each_width);
        std::printf("\n");
    }
}

}  // namespace mdm::bench

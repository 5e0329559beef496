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
        const auto elements = run.counters.find("elements");
        elements_[message] = elements == run.counters.end() ? 1 : elements->second.value;
        // Of the processor: what else the machine does is not measured.
        times_[name].push_back(run.cpu_accumulated_time * 1e9 /
                               static_cast<double>(run.iterations));
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
double RatioReporter::time(const std::string &message, const std::string &variant) const
{
    const auto times = times_.find(message + "/" + variant);
    return times == times_.end() ? 0 : median(times->second);
}

void RatioReporter::print(const Table &table) const
{
    if (!table.title.empty()) {
        std::printf("\n%s\n", table.title.c_str());
    }
    const std::string base_heading = table.base + ", ns";
    const std::string each_heading = table.each + ", ns/each";
    std::printf("%-*s", message_width, "");
    print_heading(base_heading, base_width);
    for (const Column &column : table.columns) {
        print_heading(column.variant, ratio_width);
    }
    print_heading(each_heading, each_width);
    std::printf("\n");

    for (const std::string &message : messages_) {
        const double base = time(message, table.base);
        if (base == 0) {
            continue;  // of another table, or left out by a filter on the command line
        }
        std::printf("%-*s", message_width, message.c_str());
        print_number(base, 1, base_heading, base_width);
        for (const Column &column : table.columns) {
            print_number(time(message, column.variant) / time(message, column.to), 2,
                         column.variant, ratio_width);
        }
        print_number(time(message, table.each) / elements_.at(message), 1, each_heading,
                     each_width);
        std::printf("\n");
    }
}

}  // namespace mdm::bench

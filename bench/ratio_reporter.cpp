// SPDX-License-Identifier: Apache-2.0
#include "ratio_reporter.hpp"

#include <algorithm>
#include <cstdio>

namespace mdm::bench {
namespace {

double median(std::vector<double> values)
{
    if (values.empty()) {
        return 0;
    }
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

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
        times_[name].push_back(run.real_accumulated_time * 1e9 /
                               static_cast<double>(run.iterations));
    }
}

void RatioReporter::Finalize()
{
    std::ranges::sort(messages_);
    std::printf("%-22s %12s %10s %10s %18s\n", "", "floor, ns", "silenced", "null sink",
                "silenced, ns/each");
    for (const std::string &message : messages_) {
        const double floor = median(times_[message + "/floor"]);
        if (floor == 0) {
            continue;  // a filter on the command line left it out
        }
        const double silenced = median(times_[message + "/silenced"]);
        std::printf("%-22s %12.1f %10.2f %10.2f %18.1f\n", message.c_str(), floor, silenced / floor,
                    median(times_[message + "/null sink"]) / floor, silenced / elements_[message]);
    }
}

}  // namespace mdm::bench

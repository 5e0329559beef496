// SPDX-License-Identifier: Apache-2.0
//
// A sub-command, called as the program calls it, and what it prints.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "command.hpp"

namespace mdm::msg {

struct Printed {
    int status;
    std::string out;
    std::string err;
};

inline Printed printed_by(Command &command, std::vector<std::string> words)
{
    words.insert(words.begin(), "command");
    std::vector<char *> argv;
    for (std::string &word : words) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int status = command(static_cast<int>(words.size()), argv.data());
    std::fflush(stdout);
    std::string out = testing::internal::GetCapturedStdout();
    return {status, std::move(out), testing::internal::GetCapturedStderr()};
}

}  // namespace mdm::msg

// SPDX-License-Identifier: Apache-2.0
//
// Feeds every file of the named directories to a fuzz target, without a fuzzer.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "support.hpp"

namespace {

std::vector<std::filesystem::path> files_in(const char *directory)
{
    std::vector<std::filesystem::path> files;
    for (const auto &entry : std::filesystem::directory_iterator(directory)) {
        files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::vector<uint8_t> contents_of(const std::filesystem::path &path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// Returns how many files there were.
size_t replay(const char *directory)
{
    const std::vector<std::filesystem::path> files = files_in(directory);
    for (const std::filesystem::path &file : files) {
        const std::vector<uint8_t> bytes = contents_of(file);
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    }
    return files.size();
}

}  // namespace

int main(int argc, char **argv)
{
    LLVMFuzzerInitialize(&argc, &argv);
    size_t count = 0;
    for (int i = 1; i < argc; ++i) {
        count += replay(argv[i]);
    }
    std::printf("replayed %zu inputs\n", count);
    return count == 0 ? EXIT_FAILURE : EXIT_SUCCESS;
}

// SPDX-License-Identifier: Apache-2.0
//
// The messages of the golden files are what they say.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <gtest/gtest.h>

#include "hex.hpp"
#include "mdm/log.h"
#include "support/messages.hpp"

namespace mdm::msg::golden_messages_test {
namespace {

namespace fs = std::filesystem;
using Content = std::vector<uint8_t>;

const fs::path folder = fs::path(MDM_SOURCE_DIR) / "tests/tools/messages";

std::string text_of(const fs::path &path)
{
    std::ifstream in(path, std::ios::binary);
    EXPECT_TRUE(in) << path;
    return {std::istreambuf_iterator<char>(in), {}};
}

Content bytes_of(const fs::path &path)
{
    const HexText text = read_hex(text_of(path));
    EXPECT_FALSE(text.error) << path << text.error->reason;
    EXPECT_EQ(text.warning, "") << path;
    return text.bytes;
}

std::vector<fs::path> messages_in(const fs::path &where)
{
    std::vector<fs::path> paths;
    for (const auto &entry : fs::directory_iterator(where)) {
        if (entry.path().extension() == ".hex") {
            paths.push_back(entry.path());
        }
    }
    return paths;
}

// How many bytes there are from the first difference to the last.
size_t length_of_change(const Content &good, const Content &broken)
{
    const auto first = std::ranges::mismatch(good, broken).in1;
    const auto last = std::mismatch(good.rbegin(), good.rend(), broken.rbegin()).first.base();
    return first < last ? static_cast<size_t>(last - first) : 0;
}

TEST(GoldenMessages, AreWhole)
{
    mdm_log_set_enabled(0);
    const auto paths = messages_in(folder);
    EXPECT_GE(paths.size(), 11U);
    for (const fs::path &path : paths) {
        EXPECT_NE(test::opened(bytes_of(path)), nullptr) << path;
    }
}

TEST(GoldenMessages, AreBrokenInOnePlace)
{
    mdm_log_set_enabled(0);
    const auto paths = messages_in(folder / "broken");
    EXPECT_GE(paths.size(), 12U);
    for (const fs::path &path : paths) {
        const std::string text = text_of(path);
        const size_t comma = text.find(", but ");
        ASSERT_TRUE(text.starts_with("# ") && comma < text.find('\n')) << path;
        const Content good = bytes_of(folder / text.substr(2, comma - 2));
        const Content broken = bytes_of(path);
        EXPECT_EQ(test::opened(broken), nullptr) << path;
        if (broken.size() < good.size()) {
            EXPECT_EQ(broken, test::first_bytes(good, broken.size())) << path;
            continue;
        }
        ASSERT_EQ(broken.size(), good.size()) << path;
        EXPECT_GE(length_of_change(good, broken), 1U) << path;
        EXPECT_LE(length_of_change(good, broken), 8U) << path;
    }
}

}  // namespace
}  // namespace mdm::msg::golden_messages_test

// SPDX-License-Identifier: Apache-2.0
//
// The lines that repeat texts of a message are those that docs/security.md lists. Every good
// message is received, released and sent on the trusting path. A line with a text has "%s" in its
// format.
#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "mdm/guarded.h"
#include "support/allocation_trace.hpp"
#include "support/format.hpp"
#include "support/log_recorder.hpp"
#include "support/messages.hpp"
#include "support/wire.hpp"

namespace mdm::test::log_texts_test {
namespace {

using ::testing::ContainerEq;

// A line is its level, its function and its format.
using Lines = std::set<std::string>;

std::string line_of(const std::string &level, const std::string &function,
                    const std::string &format)
{
    return level + ' ' + function + ' ' + format;
}

// The document.

// The texts between backquotes.
std::vector<std::string> codes_of(const std::string &cell)
{
    static const std::regex quotes("`([^`]*)`");
    std::vector<std::string> all;
    for (std::sregex_iterator it(cell.begin(), cell.end(), quotes); it != std::sregex_iterator();
         ++it) {
        all.push_back((*it)[1]);
    }
    return all;
}

void add_row(const std::string &row, Lines &lines)
{
    std::istringstream cells(row);
    std::string before;
    std::string category;
    std::string types;
    std::string functions;
    std::string level;
    std::string format;
    for (std::string *cell : {&before, &category, &types, &functions, &level, &format}) {
        std::getline(cells, *cell, '|');
    }
    category.erase(0, category.find_first_not_of(' '));
    category.erase(category.find_last_not_of(' ') + 1);
    ASSERT_EQ(codes_of(format).size(), 1U) << row;
    for (const std::string &function : codes_of(functions)) {
        EXPECT_TRUE(function.ends_with('_' + category)) << row;
        EXPECT_TRUE(lines.insert(line_of(level.substr(1, 1), function, codes_of(format)[0])).second)
            << "twice: " << row;
    }
}

Lines documented_lines()
{
    std::ifstream document(MDM_DOCS_DIR "/security.md");
    EXPECT_TRUE(document.is_open());
    Lines lines;
    bool is_inside = false;
    for (std::string line; std::getline(document, line);) {
        if (line.ends_with("| text of the line |")) {
            is_inside = true;
        } else if (is_inside && !line.starts_with('|')) {
            break;
        } else if (is_inside && !line.starts_with("|--")) {
            add_row(line, lines);
        }
    }
    return lines;
}

// The library.

// Raw bytes that ipc_free() takes for a record.
bool is_harmful(const mdm_msg_t &msg)
{
    const CategoryFormat *category = format_of(msg.type);
    return category != nullptr && form_of(*category, discriminator_of(msg.body)).is_raw_record;
}

void send(const Bytes &bytes)
{
    MDM_AUTO_CLOSE mdm_msg_t *msg =
        ipc_open(bytes.data(), static_cast<uint32_t>(bytes.size()), nullptr);
    ASSERT_NE(msg, nullptr);
    uint32_t length = 0;
    uint8_t *sealed = ipc_seal(msg, &length, nullptr);
    if (sealed != nullptr) {  // so it can be serialised as well
        g_free(sealed);
        g_free(ipc_serialize(msg, &length));
    }
}

void receive_and_release(const Bytes &bytes)
{
    mdm_msg_t msg{};
    AllocationTrace trace;
    EXPECT_EQ(deserialize(msg, bytes), 0);
    if (!is_harmful(msg)) {
        ipc_free(&msg);
    }
    trace.stop();
    release_blocks(trace.kept());
}

char level_of(int priority)
{
    return static_cast<char>('0' + priority - MDM_PLATFORM_LOG_DEBUG);
}

// Whether a line repeats a text of a message: some lines have a word of the library's own.
bool says_a_text(const std::string &format)
{
    const auto has = [&format](const char *part) { return format.find(part) != std::string::npos; };
    return has("%s") && !has("Unknown %s callback type") && !has("Refused: %s");
}

Lines logged_lines_with_texts()
{
    const LogRecorder log;
    for (const GoodMessage &good : good_messages()) {
        receive_and_release(good.bytes);
        send(good.bytes);
    }
    static const std::regex place("^[^ ]+: ([^ (]+)\\([0-9]+\\) > ");
    Lines lines;
    for (const PlatformLine &line : log.platform_lines()) {
        std::smatch match;
        EXPECT_TRUE(std::regex_search(*line.format, match, place)) << *line.format;
        const std::string format = match.suffix();
        if (says_a_text(format)) {
            lines.insert(line_of({level_of(line.priority)}, match[1], format));
        }
    }
    return lines;
}

TEST(LogTexts, AreWhereTheDocumentSays)
{
    EXPECT_THAT(logged_lines_with_texts(), ContainerEq(documented_lines()));
}

}  // namespace
}  // namespace mdm::test::log_texts_test

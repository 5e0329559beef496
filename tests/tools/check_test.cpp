// SPDX-License-Identifier: Apache-2.0
#include <filesystem>
#include <fstream>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <json-glib/json-glib.h>
#include <unistd.h>

#include "command.hpp"
#include "mdm/log.h"
#include "printed.hpp"
#include "support/messages.hpp"
#include "text.hpp"

namespace mdm::msg::check_test {
namespace {

using testing::EndsWith;
using testing::StartsWith;

Printed check(const std::vector<std::string> &words)
{
    return printed_by(run_check, words);
}

class Check : public testing::Test {
protected:
    Check()
    {
        mdm_log_set_enabled(0);  // as the program does
        std::filesystem::create_directory(folder_);
    }
    ~Check() override { std::filesystem::remove_all(folder_); }

    std::string file(const std::string &name, const std::vector<uint8_t> &content) const
    {
        std::ofstream(folder_ / name, std::ios::binary) << as_text(content);
        return folder_ / name;
    }

    const std::vector<uint8_t> good_ = test::framed(16, std::vector<uint8_t>(12));
    const std::vector<uint8_t> bad_ = test::cut(good_, 50);

private:
    std::filesystem::path folder_ =
        std::filesystem::temp_directory_path() / ("mdm-check-" + std::to_string(getpid()));
};

TEST_F(Check, AgreesWithTheGuardedPath)
{
    for (const test::GoodMessage &message : test::good_messages()) {
        const std::string path = file("m", message.bytes);
        const Printed result = check({path});
        EXPECT_EQ(result.status, whole) << message.name;
        EXPECT_THAT(result.out, StartsWith(path + ": ok ("));
        EXPECT_THAT(result.out, EndsWith(std::to_string(message.bytes.size()) + " bytes)\n"));
        EXPECT_EQ(result.err, "");
        const auto cut = test::cut(message.bytes, message.bytes.size() - 1);
        ipc_fault_t fault;
        if (test::opened(cut, &fault) != nullptr) {
            continue;
        }
        const Printed refused = check({"--raw", file("c", cut)});
        EXPECT_EQ(refused.status, malformed) << message.name;
        EXPECT_EQ(refused.out, "");
        gchar *sentence = ipc_fault_describe(&fault);
        EXPECT_THAT(refused.err, EndsWith(std::string("/c: ") + sentence + "\n"));
        g_free(sentence);
    }
}

TEST_F(Check, CountsSeveralMessages)
{
    const std::string good = file("good", good_);
    const std::string bad = file("bad", bad_);
    const Printed two = check({good, bad});
    EXPECT_EQ(two.status, malformed);
    EXPECT_THAT(two.out, EndsWith(": ok (roaming_res, roaming_res.head, 52 bytes)\n"
                                  "2 messages: 1 ok, 1 malformed\n"));
    EXPECT_THAT(two.err, EndsWith("/bad: roaming_res.data_size at offset 48 needs 4 bytes, 2 are "
                                  "left\n"));
    const Printed three = check({"--quiet", good, bad, good + "x"});
    EXPECT_EQ(three.status, unreadable);
    EXPECT_EQ(three.out, "");
    EXPECT_THAT(check({good, bad, good + "x"}).out,
                EndsWith("\n3 messages: 1 ok, 1 malformed, 1 unreadable\n"));
}

// The lines as objects.
std::vector<JsonNode *> objects(const std::string &text)
{
    std::vector<JsonNode *> nodes;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        GError *error = nullptr;
        nodes.push_back(json_from_string(line.c_str(), &error));
        EXPECT_EQ(error, nullptr) << line;
    }
    return nodes;
}

TEST_F(Check, WritesAnObjectALine)
{
    std::vector<uint8_t> stream = good_;
    stream.insert(stream.end(), bad_.begin(), bad_.end());
    const std::string path = file("stream", stream);
    const Printed result = check({"--json", "--stream", path, path + "x", file("text", {'x'})});
    EXPECT_EQ(result.status, unreadable);
    const auto nodes = objects(result.out);
    ASSERT_EQ(nodes.size(), 4U);
    JsonObject *one = json_node_get_object(nodes[0]);
    EXPECT_EQ(json_object_get_string_member(one, "file"), path);
    EXPECT_EQ(json_object_get_int_member(one, "message"), 1);
    EXPECT_TRUE(json_object_get_boolean_member(one, "ok"));
    EXPECT_STREQ(json_object_get_string_member(one, "category"), "roaming_res");
    EXPECT_STREQ(json_object_get_string_member(one, "form"), "roaming_res.head");
    EXPECT_EQ(json_object_get_int_member(one, "length"), 52);
    JsonObject *two = json_node_get_object(nodes[1]);
    EXPECT_EQ(json_object_get_int_member(two, "message"), 2);
    EXPECT_FALSE(json_object_get_boolean_member(two, "ok"));
    JsonObject *fault = json_object_get_object_member(two, "fault");
    ASSERT_NE(fault, nullptr);
    EXPECT_STREQ(json_object_get_string_member(fault, "path"), "roaming_res.data_size");
    EXPECT_EQ(json_object_get_int_member(fault, "offset"), 48);
    EXPECT_EQ(json_object_get_int_member(fault, "needed"), 4);
    EXPECT_EQ(json_object_get_int_member(fault, "left"), 2);
    EXPECT_STREQ(json_object_get_string_member(fault, "reason"),
                 "roaming_res.data_size at offset 48 needs 4 bytes, 2 are left");
    for (const size_t index : {2U, 3U}) {
        JsonObject *trouble = json_node_get_object(nodes[index]);
        EXPECT_FALSE(json_object_get_boolean_member(trouble, "ok"));
    }
    EXPECT_STREQ(json_object_get_string_member(json_node_get_object(nodes[2]), "error"),
                 "cannot be read: No such file or directory");
    EXPECT_STREQ(json_object_get_string_member(json_node_get_object(nodes[3]), "error"),
                 "1:1: 'x' is no hex digit");
    for (JsonNode *node : nodes) {
        json_node_unref(node);
    }
}

TEST_F(Check, WritesNamesThatAreNoUtf8)
{
    const Printed result = check({"--json", file("a\xff\n\"b", good_)});
    EXPECT_EQ(result.status, whole);
    const auto nodes = objects(result.out);
    ASSERT_EQ(nodes.size(), 1U);
    EXPECT_THAT(json_object_get_string_member(json_node_get_object(nodes[0]), "file"),
                EndsWith("/a\\xff\\n\"b"));
    json_node_unref(nodes[0]);
}

TEST_F(Check, RefusesToBeQuietInJson)
{
    const Printed result = check({"--json", "--quiet"});
    EXPECT_EQ(result.status, wrong_usage);
    EXPECT_EQ(result.err, "mdm-msg: say --json or --quiet, not both; see 'mdm-msg check --help'\n");
}

}  // namespace
}  // namespace mdm::msg::check_test

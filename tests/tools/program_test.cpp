// SPDX-License-Identifier: Apache-2.0
//
// mdm-msg, called as a program.
#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include "support/messages.hpp"

namespace mdm::msg::program_test {
namespace {

namespace fs = std::filesystem;

// The smallest message, of type 70, and its JSON.
constexpr std::string_view smallest_json = "{\"header\":{\"type\":70}}\n";
const std::string smallest = std::string("\x20\0\0\0F", 5) + std::string(35, '\0');

void write(const fs::path &file, std::string_view bytes)
{
    std::ofstream(file, std::ios::binary) << bytes;
}

std::string contents(const fs::path &file)
{
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

// The files of a test, and the results of a call.
class Program : public testing::Test {
protected:
    void SetUp() override
    {
        std::string name = testing::TempDir() + "/mdm-msg.XXXXXX";
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        directory = name;
        old = fs::current_path();
        fs::current_path(directory);
    }
    void TearDown() override
    {
        fs::current_path(old);
        fs::remove_all(directory);
    }

    // Runs a command of the shell, in which mdm_msg is the program.
    void run(const std::string &command)
    {
        const std::string line =
            "mdm_msg() { " MDM_MSG " \"$@\"; }; { " + command + "; } > .out 2> .err < /dev/null";
        const int result = std::system(line.c_str());
        status = WIFEXITED(result) ? WEXITSTATUS(result) : -1;
        out = contents(".out");
        err = contents(".err");
    }

    fs::path directory;
    fs::path old;
    int status = -1;
    std::string out;
    std::string err;
};

// script(1) makes a terminal.
bool has_script()
{
    return std::system("script -qec true /dev/null > /dev/null 2>&1") == 0;
}

using ShowProgram = Program;
using JsonProgram = Program;
using MakeProgram = Program;

TEST_F(JsonProgram, PrintsEveryMessage)
{
    write("a", smallest);
    write("b", smallest + "\x01");
    run("mdm_msg json a a");
    EXPECT_EQ(status, 0);
    EXPECT_EQ(err, "");
    EXPECT_EQ(out.substr(0, 37), "{\n  \"header\" : {\n    \"length\" : 32,\n ");
    const std::string one = out.substr(0, out.size() / 2);
    EXPECT_EQ(out, one + one);
    run("mdm_msg json --lines a a");
    EXPECT_EQ(status, 0);
    EXPECT_EQ(std::count(out.begin(), out.end(), '\n'), 2);
}

TEST_F(JsonProgram, SaysWhatIsWrongAndShowsTheRest)
{
    write("good", smallest);
    write("broken", smallest.substr(0, 39));
    run("mdm_msg json --lines broken good");
    EXPECT_EQ(status, 1);
    EXPECT_EQ(err, "mdm-msg: broken: header.length: a message has 40 bytes or more, "
                   "39 are there\n");
    EXPECT_EQ(out.substr(0, 17), R"({"rest":{"hex":"2)");
    EXPECT_EQ(std::count(out.begin(), out.end(), '\n'), 2);
}

TEST_F(JsonProgram, RefusesUnknownOptions)
{
    run("mdm_msg json --line x");
    EXPECT_EQ(status, 2);
    EXPECT_EQ(out, "");
    EXPECT_EQ(err, "mdm-msg: Unknown option --line; see 'mdm-msg json --help'\n");
}

TEST_F(JsonProgram, DependsOnNoLocale)
{
    write("a", smallest);
    run("mdm_msg json a");
    const std::string expected = out;
    run("LC_ALL=tr_TR.UTF-8 LANGUAGE=de mdm_msg json a");
    EXPECT_EQ(out, expected);
}

// Another program reads the JSON, and writes it in its own way.
TEST_F(JsonProgram, PrintsJsonForOthers)
{
    if (std::system("python3 -c '' > /dev/null 2>&1") != 0) {
        GTEST_SKIP() << "there is no python3";
    }
    std::string files;
    std::string all;
    for (const test::GoodMessage &good : test::good_messages()) {
        write(good.name, {reinterpret_cast<const char *>(good.bytes.data()), good.bytes.size()});
        files += " " + good.name;
        all += contents(good.name);
    }
    write("copy.py", "import json, sys\n"
                     "def members(pairs):\n"
                     "    names = [name for name, value in pairs]\n"
                     "    assert len(set(names)) == len(names), names\n"
                     "    return dict(pairs)\n"
                     "for line in open(sys.argv[1], encoding='utf-8', newline='\\n'):\n"
                     "    message = json.loads(line, object_pairs_hook=members)\n"
                     "    assert list(message)[:3] == ['header', 'category', 'form'], line\n"
                     "    assert list(message['header'])[-3:] == "
                     "['hdr_word7', 'hdr_word4', 'hdr_word5']\n"
                     "    print(json.dumps(message, indent=sys.argv[2]))\n");
    run("mdm_msg json --lines" + files +
        " > lines && "
        "python3 copy.py lines '\t' > copy && mdm_msg make copy");
    EXPECT_EQ(status, 0);
    EXPECT_EQ(err, "");
    EXPECT_EQ(out, all);
}

TEST_F(MakeProgram, WritesTheMessagesOfAllFiles)
{
    write("a", std::string(smallest_json) + std::string(smallest_json));
    write("b", R"({"header":{"type":70},"padding":"x"})");
    run("mdm_msg make a b");
    EXPECT_EQ(status, 0);
    EXPECT_EQ(err, "");
    EXPECT_EQ(out, smallest + smallest + "\x21" + smallest.substr(1) + "x");
    run("mdm_msg make < a");
    EXPECT_EQ(out, smallest + smallest);
    run("mdm_msg make - --output - < a");
    EXPECT_EQ(out, smallest + smallest);
}

TEST_F(MakeProgram, WritesHexText)
{
    write("a", std::string(smallest_json) + std::string(smallest_json));
    run("mdm_msg make --hex a");
    EXPECT_EQ(status, 0);
    std::string line = "20 00 00 00 46";
    for (int zero = 0; zero < 35; ++zero) {
        line += " 00";
    }
    EXPECT_EQ(out, line + "\n" + line + "\n");
}

TEST_F(MakeProgram, WritesNothingUnlessAllMessagesCanBeMade)
{
    write("good", smallest_json);
    write("bad", R"({"header":{"type":7},"body":{"type":"x"}})");
    write("worse", std::string(smallest_json) + "{\n");
    write("kept", "kept");
    run("mdm_msg make good bad worse");
    EXPECT_EQ(status, 1);
    EXPECT_EQ(out, "");
    EXPECT_EQ(err, "mdm-msg: bad: $.body.type: expected a whole number from 0 to 4294967295, "
                   "found \"x\"\n"
                   "mdm-msg: worse: line 3, column 1: expected the name of a member, "
                   "found the end\n");
    run("mdm_msg make --output kept good bad");
    EXPECT_EQ(status, 1);
    EXPECT_EQ(contents("kept"), "kept");
    run("mdm_msg make --output new good bad");
    EXPECT_FALSE(fs::exists("new"));
}

TEST_F(MakeProgram, ReplacesTheOutputFile)
{
    write("in", smallest_json);
    write("file", "an older and longer content, of which nothing may stay behind");
    fs::permissions("file", fs::perms::owner_read | fs::perms::owner_write);
    for (const std::string target : {"file", "nothing"}) {  // the second is made
        fs::create_symlink(target, "link");
        run("mdm_msg make --output link in");
        EXPECT_EQ(status, 0);
        EXPECT_EQ(err + out, "");
        EXPECT_EQ(contents(target), smallest);
        EXPECT_TRUE(fs::is_symlink("link"));
        fs::remove("link");
    }
    EXPECT_EQ(fs::status("file").permissions(), fs::perms::owner_read | fs::perms::owner_write);
    run("umask 027; mdm_msg make -o new in");
    EXPECT_EQ(contents("new"), smallest);
    struct stat info;
    ASSERT_EQ(stat("new", &info), 0);
    EXPECT_EQ(info.st_mode & 0777U, 0640U);
    run("mdm_msg make --output in in");  // the file that it reads
    EXPECT_EQ(contents("in"), smallest);
    EXPECT_EQ(std::distance(fs::directory_iterator("."), {}), 6);  // nothing is left over
}

// A device is no regular file, either. No test writes to one: a mistake would replace it by a file.
TEST_F(MakeProgram, WritesIntoPipes)
{
    write("in", smallest_json);
    run("mkfifo pipe; timeout 10 cat pipe & timeout 10 " MDM_MSG " make --output pipe in; wait");
    EXPECT_EQ(status, 0);
    EXPECT_EQ(out, smallest);
    EXPECT_TRUE(fs::is_fifo("pipe"));
}

TEST_F(MakeProgram, SaysWhatCannotBeReadOrWritten)
{
    write("in", smallest_json);
    run("mdm_msg make missing . in");
    EXPECT_EQ(status, 3);
    EXPECT_EQ(out, "");
    EXPECT_EQ(err, "mdm-msg: missing: cannot be read: No such file or directory\n"
                   "mdm-msg: .: cannot be read: Is a directory\n");
    run("mdm_msg make --output missing/file in");
    EXPECT_EQ(status, 3);
    EXPECT_EQ(err.substr(0, 40), "mdm-msg: missing/file: cannot be written");
    EXPECT_EQ(std::count(err.begin(), err.end(), '\n'), 1);
    run("mdm_msg make --output . in");
    EXPECT_EQ(status, 3);
    EXPECT_EQ(err, "mdm-msg: .: cannot be written: Is a directory\n");
    run("mdm_msg make in > /dev/full");
    EXPECT_EQ(status, 3);
    EXPECT_EQ(err, "mdm-msg: cannot write: No space left on device\n");
}

TEST_F(MakeProgram, NamesStandardInput)
{
    run("echo '{' | mdm_msg make");
    EXPECT_EQ(status, 1);
    EXPECT_EQ(err, "mdm-msg: standard input: line 2, column 1: expected the name of a member, "
                   "found the end\n");
}

TEST_F(MakeProgram, WritesNoBytesToATerminal)
{
    write("in", smallest_json);
    if (!has_script()) {
        GTEST_SKIP() << "there is no script(1), which makes a terminal";
    }
    run("script -qec '" MDM_MSG " make in' /dev/null");
    EXPECT_EQ(status, 2);
    EXPECT_EQ(out, "mdm-msg: standard output is a terminal; say --hex or --output FILE; "
                   "see 'mdm-msg make --help'\r\n");
    run("script -qec '" MDM_MSG " make --hex in' /dev/null");
    EXPECT_EQ(status, 0);
    EXPECT_EQ(out.substr(0, 14), "20 00 00 00 46");
    run("script -qec '" MDM_MSG " make --output - in' /dev/null");
    EXPECT_EQ(status, 0);
    EXPECT_EQ(out.size(), smallest.size());
}

// A reader that has seen enough is no failure: the program ends as others do, even if its parent
// ignores the signal.
TEST_F(MakeProgram, EndsSilentlyIfNobodyReads)
{
    std::string json;
    for (int message = 0; message < 10000; ++message) {
        json += smallest_json;
    }
    write("in", json);
    for (const char *signal : {"", "trap '' PIPE; "}) {
        run(std::string(signal) + "{ mdm_msg make in; echo $? > ended; } | head -c 1 > /dev/null");
        EXPECT_EQ(err, "");
        EXPECT_EQ(contents("ended"), std::to_string(128 + SIGPIPE) + "\n");
    }
}

TEST_F(ShowProgram, HasColoursOnATerminalAlone)
{
    write("a", smallest);
    if (!has_script()) {
        GTEST_SKIP() << "there is no script(1), which makes a terminal";
    }
    const auto is_coloured = [this](const std::string &environment) {
        run("unset NO_COLOR; export TERM=xterm" + environment +
            "; script -qec '" MDM_MSG " show a' /dev/null");
        EXPECT_EQ(status, 0);
        EXPECT_THAT(out, testing::HasSubstr("header.type"));
        return out.find("\x1b[") != std::string::npos;
    };
    EXPECT_TRUE(is_coloured(""));
    EXPECT_TRUE(is_coloured(" NO_COLOR="));
    EXPECT_FALSE(is_coloured(" NO_COLOR=1"));
    EXPECT_FALSE(is_coloured(" TERM=dumb"));
}

TEST_F(ShowProgram, SaysOfAHugeFileWhatIsWrong)
{
    write("huge", "");
    fs::resize_file("huge", 1 << 30);
    for (const char *command : {"show", "check"}) {
        run(std::string("mdm_msg ") + command + " huge");
        EXPECT_EQ(status, 1) << command;
        EXPECT_THAT(err,
                    testing::StartsWith("mdm-msg: huge: header.length announces a message of 8 "
                                        "bytes, 1073741824 are there"));
        EXPECT_EQ(std::count(err.begin(), err.end(), '\n'), 1);
        EXPECT_LT(out.size(), 1000);
    }
}

}  // namespace
}  // namespace mdm::msg::program_test

// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include "log/log.hpp"
#include "support/allocation_trace.hpp"
#include "support/cancellable.hpp"
#include "support/log_recorder.hpp"
#include "support/no_memory.hpp"

namespace mdm::test::log_test {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::IsEmpty;
using ::testing::StartsWith;

std::string contents(const std::string &path)
{
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::string> lines_of(const std::string &path)
{
    std::ifstream file(path);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        lines.push_back(line);
    }
    return lines;
}

// The one that the next file to be opened gets.
int next_descriptor()
{
    const int next = dup(STDOUT_FILENO);
    close(next);
    return next;
}

std::vector<int> priorities(const LogRecorder &log)
{
    std::vector<int> seen;
    for (const PlatformLine &line : log.platform_lines()) {
        seen.push_back(line.priority);
    }
    return seen;
}

// Every named level, and one above them.
void print_one_line_a_level()
{
    for (const uint32_t level : {0U, 1U, 2U, 3U, 4U, 7U}) {
        __mdm_log_print(level, "TAG", "line");
    }
}

class Log : public ::testing::Test {
protected:
    void SetUp() override { std::filesystem::create_directory(directory_); }
    void TearDown() override
    {
        mdm_log_set_path(nullptr);
        mdm_log_set_level(MDM_LOG_INFO);
        std::filesystem::remove_all(directory_);
    }

    std::string path(const char *name) const { return directory_ + "/" + name; }

private:
    std::string directory_ = ::testing::TempDir() + "mdm-log-test-" + std::to_string(getpid());
};

TEST_F(Log, StartsAtInfoWithoutFile)
{
    EXPECT_EQ(mdm_log_get_level(), MDM_LOG_INFO);
    const LogRecorder log(MDM_LOG_INFO);
    AllocationTrace trace;
    __mdm_log_print(MDM_LOG_INFO, "TAG", "text");
    trace.stop();
    EXPECT_THAT(trace.allocated(), IsEmpty());  // an open file would need a buffer
}

TEST_F(Log, AcceptsAnyThreshold)
{
    for (const uint32_t level : {0U, 1U, 2U, 3U, 4U, 5U, 0xFFFFFFFFU}) {
        mdm_log_set_level(level);
        EXPECT_EQ(mdm_log_get_level(), level);
    }
}

// Q-LOG-3
TEST_F(Log, EnablingRestoresInfoAndDisablingSilences)
{
    mdm_log_set_level(MDM_LOG_DEBUG);
    mdm_log_set_enabled(1);
    EXPECT_EQ(mdm_log_get_level(), MDM_LOG_INFO);
    mdm_log_set_enabled(0);
    EXPECT_EQ(mdm_log_get_level(), MDM_LOG_NONE);
    mdm_log_set_enabled(-1);
    EXPECT_EQ(mdm_log_get_level(), MDM_LOG_INFO);
}

// Q-LOG-6
TEST_F(Log, Threshold0EmitsEveryLevelWithItsPriority)
{
    const LogRecorder log(MDM_LOG_DEBUG);
    print_one_line_a_level();
    EXPECT_THAT(priorities(log), ElementsAre(3, 4, 5, 6, 8, 1));
}

TEST_F(Log, Threshold1DropsLevel0Only)
{
    const LogRecorder log(MDM_LOG_INFO);
    print_one_line_a_level();
    EXPECT_THAT(priorities(log), ElementsAre(4, 5, 6, 8, 1));
}

TEST_F(Log, Threshold2And3DropWhatIsBelow)
{
    {
        const LogRecorder log(MDM_LOG_WARN);
        print_one_line_a_level();
        EXPECT_THAT(priorities(log), ElementsAre(5, 6, 8, 1));
    }
    const LogRecorder log(MDM_LOG_CRITICAL);
    print_one_line_a_level();
    EXPECT_THAT(priorities(log), ElementsAre(6, 8, 1));
}

// Q-LOG-2
TEST_F(Log, Threshold4EmitsNothing)
{
    const LogRecorder log(MDM_LOG_NONE);
    const std::string file = path("log");
    mdm_log_set_path(file.c_str());
    print_one_line_a_level();
    EXPECT_THAT(priorities(log), IsEmpty());
    EXPECT_FALSE(std::filesystem::exists(file));
}

// Q-LOG-2
TEST_F(Log, ThresholdAbove4ComparesAsANumber)
{
    const LogRecorder log(7);
    print_one_line_a_level();
    __mdm_log_print(6, "TAG", "dropped");
    __mdm_log_print(0xFFFFFFFF, "TAG", "emitted");
    EXPECT_THAT(priorities(log), ElementsAre(1, 1));
}

TEST_F(Log, Level5IsTheFirstWithTheDefaultPriority)
{
    const LogRecorder log(MDM_LOG_DEBUG);
    __mdm_log_print(5, "TAG", "line");
    EXPECT_THAT(priorities(log), ElementsAre(1));
}

TEST_F(Log, ALineLeavesErrnoAlone)
{
    const LogRecorder log(MDM_LOG_INFO);
    const std::string file = path("missing/log");
    mdm_log_set_path(file.c_str());
    errno = E2BIG;
    __mdm_log_print(MDM_LOG_INFO, "TAG", "line");
    EXPECT_EQ(errno, E2BIG);
}

TEST_F(Log, PassesBufferTagAndFormatThroughAndReturnsThePlatformsResult)
{
    const LogRecorder log(MDM_LOG_INFO);
    EXPECT_EQ(__mdm_log_print(MDM_LOG_INFO, "TAG", "%s is %d", "answer", 42), recorder_result);
    ASSERT_EQ(log.platform_lines().size(), 1U);
    const PlatformLine &line = log.platform_lines().front();
    EXPECT_EQ(line.buffer_id, 2);
    EXPECT_EQ(line.tag, "TAG");
    EXPECT_EQ(line.format, "%s is %d");
    EXPECT_EQ(line.text, "answer is 42");
}

TEST_F(Log, FilteredLineReturnsZero)
{
    const LogRecorder log(MDM_LOG_INFO);
    EXPECT_EQ(__mdm_log_print(MDM_LOG_DEBUG, "TAG", "dropped"), 0);
}

TEST_F(Log, NullTagAndFormatReachThePlatformAsTheyStand)
{
    const LogRecorder log(MDM_LOG_INFO);
    const char *volatile nothing = nullptr;
    EXPECT_EQ(__mdm_log_print(MDM_LOG_INFO, nothing, nothing, 0), recorder_result);
    ASSERT_EQ(log.platform_lines().size(), 1U);
    EXPECT_EQ(log.platform_lines().front().tag, std::nullopt);
    EXPECT_EQ(log.platform_lines().front().format, std::nullopt);
}

TEST_F(Log, NullTagReachesTheFileAsTheCLibraryPrintsIt)
{
    const LogRecorder log(MDM_LOG_INFO);
    const std::string file = path("log");
    mdm_log_set_path(file.c_str());
    const char *volatile nothing = nullptr;
    __mdm_log_print(MDM_LOG_INFO, nothing, "text");
    EXPECT_EQ(contents(file), "1 (null) text\n");
}

TEST_F(Log, NullFormatReachesTheFileAsNoText)
{
    const std::string file = path("log");
    mdm_log_set_path(file.c_str());
    const char *volatile nothing = nullptr;
    __mdm_log_print(MDM_LOG_INFO, "TAG", nothing, 0);
    EXPECT_EQ(contents(file), "1 TAG \n");
}

// No character of the locale "C" stands for the wide one.
TEST_F(Log, TextThatCannotBeFormattedReachesTheFileUpToThere)
{
    const std::string file = path("log");
    mdm_log_set_path(file.c_str());
    const std::array<wchar_t, 2> text = {L'\x20AC', 0};
    errno = ENOMEM;  // an earlier failure of the caller's
    __mdm_log_print(MDM_LOG_INFO, "TAG", "%d %ls %d", 1, text.data(), 2);
    EXPECT_EQ(contents(file), "1 TAG 1 \n");
}

TEST_F(Log, FileAndPlatformReceiveTheSameErrnoWhateverThePlatformDoesToIt)
{
    LogRecorder log(MDM_LOG_INFO);
    const std::string file = path("log");
    mdm_log_set_path(file.c_str());
    log.during_print([] { errno = EDOM; });
    errno = E2BIG;
    const char *volatile format = "%s: %m";  // not in ISO C, so that no compiler may see it
    __mdm_log_print(MDM_LOG_INFO, "TAG", format, "exec");
    EXPECT_EQ(errno, E2BIG);
    const std::string text = std::string("exec: ") + std::strerror(E2BIG);
    EXPECT_EQ(log.platform_lines().at(0).text, text);
    EXPECT_EQ(contents(file), "1 TAG " + text + "\n");
}

TEST_F(Log, ALineForWhichThereIsNoMemoryIsLeftOutOfTheFile)
{
    const LogRecorder log(MDM_LOG_INFO);
    const std::string file = path("log");
    mdm_log_set_path(file.c_str());
    __mdm_log_print(MDM_LOG_INFO, "TAG", "first");
    {
        const NoMemory no_memory;
        EXPECT_EQ(__mdm_log_print(MDM_LOG_INFO, "TAG", "second"), recorder_result);
    }
    {
        const NoMemoryForText no_memory;
        EXPECT_EQ(__mdm_log_print(MDM_LOG_INFO, "TAG", "third"), recorder_result);
    }
    __mdm_log_print(MDM_LOG_INFO, "TAG", "fourth");
    EXPECT_EQ(contents(file), "1 TAG first\n1 TAG fourth\n");
}

TEST_F(Log, FileIsCreatedWithThePermissionsThatTheUmaskLeaves)
{
    const std::string file = path("log");
    mdm_log_set_path(file.c_str());
    const mode_t previous = umask(002);
    __mdm_log_print(MDM_LOG_INFO, "TAG", "text");
    umask(previous);
    EXPECT_EQ(std::filesystem::status(file).permissions(), std::filesystem::perms{0664});
}

// Q-LOG-6, Q-LOG-8
TEST_F(Log, FileReceivesLevelTagAndTextOfEveryEmittedLine)
{
    const LogRecorder log(MDM_LOG_INFO);
    const std::string file = path("log");
    EXPECT_EQ(mdm_log_set_path(file.c_str()), 0);
    __mdm_log_print(MDM_LOG_DEBUG, "TAG", "dropped");
    __mdm_log_print(MDM_LOG_INFO, "TAG", "%s %d", "one", 1);
    __mdm_log_print(MDM_LOG_NONE, "OTHER", "\033[0;31mred\033[0;m");
    __mdm_log_print(0xFFFFFFFF, "TAG", "%c%s", 'x', "");
    EXPECT_EQ(contents(file), "1 TAG one 1\n4 OTHER \033[0;31mred\033[0;m\n-1 TAG x\n");

    EXPECT_EQ(mdm_log_set_path(nullptr), 0);
    __mdm_log_print(MDM_LOG_INFO, "TAG", "after");
    EXPECT_EQ(contents(file), "1 TAG one 1\n4 OTHER \033[0;31mred\033[0;m\n-1 TAG x\n");
}

TEST_F(Log, ALineIsOnDiskWhenTheCallReturnsAndTheFileMayBeDeleted)
{
    const LogRecorder log(MDM_LOG_INFO);
    const std::string file = path("log");
    mdm_log_set_path(file.c_str());
    __mdm_log_print(MDM_LOG_INFO, "TAG", "first");
    EXPECT_EQ(contents(file), "1 TAG first\n");
    std::filesystem::remove(file);
    __mdm_log_print(MDM_LOG_INFO, "TAG", "second");
    EXPECT_EQ(contents(file), "1 TAG second\n");
}

TEST_F(Log, AppendsToWhatTheFileHolds)
{
    const LogRecorder log(MDM_LOG_INFO);
    const std::string file = path("log");
    std::ofstream(file) << "old\n";
    mdm_log_set_path(file.c_str());
    __mdm_log_print(MDM_LOG_INFO, "TAG", "new");
    EXPECT_EQ(contents(file), "old\n1 TAG new\n");
}

// Q-LOG-4
TEST_F(Log, KeepsThePointerAndNotTheText)
{
    const LogRecorder log(MDM_LOG_INFO);
    std::string file = path("a");
    mdm_log_set_path(file.c_str());
    __mdm_log_print(MDM_LOG_INFO, "TAG", "first");
    file.back() = 'b';
    __mdm_log_print(MDM_LOG_INFO, "TAG", "second");
    EXPECT_EQ(contents(path("a")), "1 TAG first\n");
    EXPECT_EQ(contents(path("b")), "1 TAG second\n");
}

// The platform call comes first, and without the lock: the path that it sets is the line's own.
TEST_F(Log, ThePlatformsCallComesBeforeTheFileAndOutsideTheLock)
{
    LogRecorder log(MDM_LOG_INFO);
    const std::string first = path("a");
    const std::string second = path("b");
    mdm_log_set_path(first.c_str());
    log.during_print([&] {
        EXPECT_FALSE(std::filesystem::exists(first));
        mdm_log_set_path(second.c_str());
    });
    __mdm_log_print(MDM_LOG_INFO, "TAG", "text");
    EXPECT_FALSE(std::filesystem::exists(first));
    EXPECT_EQ(contents(second), "1 TAG text\n");
}

// Q-LOG-5
TEST_F(Log, UnopenableFileIsSkippedInSilence)
{
    const LogRecorder log(MDM_LOG_INFO);
    const std::string file = path("missing/log");
    mdm_log_set_path(file.c_str());
    EXPECT_EQ(__mdm_log_print(MDM_LOG_INFO, "TAG", "text"), recorder_result);
    EXPECT_EQ(log.platform_lines().size(), 1U);
    EXPECT_FALSE(std::filesystem::exists(path("missing")));
}

TEST_F(Log, ADirectoryInTheFilesPlaceIsSkippedInSilence)
{
    const LogRecorder log(MDM_LOG_INFO);
    const std::string directory = path("directory");
    std::filesystem::create_directory(directory);
    mdm_log_set_path(directory.c_str());
    EXPECT_EQ(__mdm_log_print(MDM_LOG_INFO, "TAG", "text"), recorder_result);
    EXPECT_TRUE(std::filesystem::is_empty(directory));
}

TEST_F(Log, ALineLeavesNoDescriptorOpen)
{
    const LogRecorder log(MDM_LOG_INFO);
    const std::string file = path("log");
    mdm_log_set_path(file.c_str());
    const int before = next_descriptor();
    __mdm_log_print(MDM_LOG_INFO, "TAG", "text");
    EXPECT_EQ(next_descriptor(), before);
}

int logs_every_kind_of_line(bool holds)
{
    const mdm::Log log(MDM_ORIGIN("some_function"));
    MDM_ENTER();
    MDM_INFO("Size = %d", 7);
    MDM_CRITICAL("p_msg is NULL");
    MDM_ASSERT(holds, -195);
    return MDM_EXIT(5);
}

// The text behind the number of the source line.
std::string text_of(const PlatformLine &line)
{
    return line.text.substr(line.text.find(')'));
}

TEST_F(Log, MacrosUseTheLibrarysTagPrefixAndColours)
{
    LogRecorder log(MDM_LOG_DEBUG);
    EXPECT_EQ(logs_every_kind_of_line(true), 5);
    ASSERT_EQ(log.platform_lines().size(), 4U);
    for (const PlatformLine &line : log.platform_lines()) {
        EXPECT_EQ(line.tag, "MDM_COMMON");
        EXPECT_THAT(line.text, StartsWith("log_test.cpp: some_function("));
    }
    EXPECT_EQ(text_of(log.platform_lines()[0]), ") > \033[0;32mENTER >>>>\033[0;m");
    EXPECT_EQ(text_of(log.platform_lines()[1]), ") > Size = 7");
    EXPECT_EQ(text_of(log.platform_lines()[2]), ") > \033[0;31m* Critical * p_msg is NULL\033[0;m");
    EXPECT_EQ(text_of(log.platform_lines()[3]), ") > \033[0;32mEXIT  <<<<\033[0;m");
    EXPECT_THAT(priorities(log), ElementsAre(3, 4, 6, 3));
}

// Q-LOG-1
TEST_F(Log, FailedAssertReturnsWithoutExitLine)
{
    LogRecorder log(MDM_LOG_DEBUG);
    EXPECT_EQ(logs_every_kind_of_line(false), -195);
    ASSERT_EQ(log.platform_lines().size(), 4U);
    EXPECT_EQ(text_of(log.platform_lines()[3]), ") > \033[0;31m* Critical * _ASSERT fails\033[0;m");
}

int log_failure()
{
    const mdm::Log log(MDM_ORIGIN("log_failure"));
    MDM_CRITICAL("p_msg is NULL");
    return __LINE__ - 1;
}

TEST_F(Log, FileLineOfTheLibraryReadsAsDocumented)
{
    const LogRecorder recorder(MDM_LOG_INFO);
    const std::string file = path("log");
    mdm_log_set_path(file.c_str());
    const int line = log_failure();
    EXPECT_EQ(contents(file), "3 MDM_COMMON log_test.cpp: log_failure(" + std::to_string(line) +
                                  ") > \033[0;31m* Critical * p_msg is NULL\033[0;m\n");
}

TEST_F(Log, FilteredMacroEvaluatesNoArgument)
{
    const LogRecorder recorder(MDM_LOG_CRITICAL);
    const mdm::Log log(MDM_ORIGIN("TestBody"));
    int evaluated = 0;
    MDM_DEBUG("%d", ++evaluated);
    MDM_INFO("%d", ++evaluated);
    EXPECT_EQ(evaluated, 0);
    MDM_CRITICAL("%d", ++evaluated);
    EXPECT_EQ(evaluated, 1);
}

TEST_F(Log, SilentLogSaysNothing)
{
    LogRecorder recorder(MDM_LOG_DEBUG);
    const mdm::Log log(MDM_ORIGIN("TestBody"), mdm::Log::Function::silent);
    int evaluated = 0;
    MDM_ENTER();
    MDM_DEBUG("%d", ++evaluated);
    MDM_INFO("%d", ++evaluated);
    MDM_CRITICAL("%d", ++evaluated);
    EXPECT_EQ(MDM_EXIT(3), 3);
    EXPECT_EQ(evaluated, 0);
    EXPECT_THAT(recorder.platform_lines(), IsEmpty());
}

// As long as the longest texts that are allowed.
TEST_F(Log, LongLinesAreWhole)
{
    LogRecorder recorder(MDM_LOG_DEBUG);
    const mdm::Log log(MDM_ORIGIN("mdm_phone_res_limit_of_data_calls_parse_parameters"));
    MDM_CRITICAL("0123456789012345678901234567890123456789012345678901234567890123456789012345678"
                 "9012345678901234567890123456789012345678901234567890123456789012345678901234567"
                 "890123456789012345678901234567%s",
                 "!");
    ASSERT_EQ(recorder.platform_lines().size(), 1U);
    EXPECT_THAT(recorder.platform_lines()[0].text, EndsWith("4567!\033[0;m"));
}

// 8 threads write lines that are longer than any buffer, while another one changes path and
// threshold: each line is whole, and is in one file or the other.
TEST_F(Log, ThreadsNeitherInterleaveNorLoseLines)
{
    constexpr int writers = 8;
    constexpr int lines = 40;
    const std::string part(4000, '.');  // as long as a buffer, so that a line takes many writes
    const std::string padding = part + part + part + part + part + part;
    const LogRecorder log(MDM_LOG_INFO);
    const std::array files = {path("a"), path("b")};
    mdm_log_set_path(files[0].c_str());

    std::atomic<bool> done = false;
    std::thread changer([&] {
        for (size_t i = 0; !done; ++i) {
            mdm_log_set_path(files[i % 2].c_str());
            mdm_log_set_level(i % 2 == 0 ? MDM_LOG_DEBUG : MDM_LOG_INFO);
            std::this_thread::yield();
        }
    });
    std::vector<std::thread> threads;
    for (int writer = 0; writer < writers; ++writer) {
        threads.emplace_back([writer, &part] {
            for (int line = 0; line < lines; ++line) {
                const char *text = part.c_str();
                __mdm_log_print(MDM_LOG_INFO, "TAG", "writer %d line %d %s%s%s%s%s%s", writer, line,
                                text, text, text, text, text, text);
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    done = true;
    changer.join();

    std::multiset<std::string> seen;
    for (const std::string &name : files) {
        for (const std::string &line : lines_of(name)) {
            seen.insert(line);
        }
    }
    std::multiset<std::string> expected;
    for (int writer = 0; writer < writers; ++writer) {
        for (int line = 0; line < lines; ++line) {
            expected.insert("1 TAG writer " + std::to_string(writer) + " line " +
                            std::to_string(line) + " " + padding);
        }
    }
    EXPECT_TRUE(seen == expected);  // too long to print
}

class CancelledThread : public Log {
    const Deadline deadline_{60};  // for TearDown(), too: it sets the path
};

// A thread that logs on and on is cancelled wherever it happens to be.
TEST_F(CancelledThread, LeavesNoLockNoDescriptorAndNoPartOfALine)
{
    const std::string file = path("log");
    const std::string text(200, '.');
    mdm_log_set_path(file.c_str());
    const int descriptor = next_descriptor();
    for (int round = 0; round < 200; ++round) {
        std::atomic<bool> logs = false;
        const CancellableThread thread([&] {
            for (;;) {
                __mdm_log_print(MDM_LOG_INFO, "TAG", "%s", text.c_str());
                logs = true;
                pthread_testcancel();
            }
        });
        while (!logs) {
            std::this_thread::yield();
        }
        thread.cancel();
        EXPECT_TRUE(thread.ends_cancelled());
        __mdm_log_print(MDM_LOG_INFO, "TAG", "%s", text.c_str());
    }
    EXPECT_EQ(next_descriptor(), descriptor);
    const auto lines = lines_of(file);
    EXPECT_GE(lines.size(), 400U);
    EXPECT_THAT(lines, Each("1 TAG " + text));
}

TEST_F(CancelledThread, LogsOnUntilItsNextCancellationPoint)
{
    const std::string file = path("log");
    mdm_log_set_path(file.c_str());
    const CancellableThread thread([] {
        pthread_cancel(pthread_self());
        __mdm_log_print(MDM_LOG_INFO, "TAG", "first");
        __mdm_log_print(MDM_LOG_INFO, "TAG", "second");
        pthread_testcancel();
        __mdm_log_print(MDM_LOG_INFO, "TAG", "third");
    });
    EXPECT_TRUE(thread.ends_cancelled());
    EXPECT_EQ(contents(file), "1 TAG first\n1 TAG second\n");
}

// With the asynchronous type a thread ends at once: but not within a line.
TEST_F(CancelledThread, OfTheAsynchronousTypeEndsWithTheLine)
{
    const std::string file = path("log");
    mdm_log_set_path(file.c_str());
    LogRecorder log(MDM_LOG_INFO);
    log.during_print([] { pthread_cancel(pthread_self()); });
    const CancellableThread thread([] {
        int type = 0;
        // NOLINTNEXTLINE(cert-pos47-c,concurrency-thread-canceltype-asynchronous): it is the point
        pthread_setcanceltype(PTHREAD_CANCEL_ASYNCHRONOUS, &type);
        __mdm_log_print(MDM_LOG_INFO, "TAG", "first");
        __mdm_log_print(MDM_LOG_INFO, "TAG", "second");
    });
    thread.ends_cancelled();  // glibc 2.36 ends the thread, but does not say how
    log.during_print(nullptr);
    __mdm_log_print(MDM_LOG_INFO, "TAG", "third");
    EXPECT_EQ(contents(file), "1 TAG first\n1 TAG third\n");
    EXPECT_EQ(log.platform_lines().size(), 2U);
}

TEST_F(Log, ALineLeavesTheCancelabilityStateAsItWas)
{
    const std::string file = path("log");
    mdm_log_set_path(file.c_str());
    for (const int state : {PTHREAD_CANCEL_DISABLE, PTHREAD_CANCEL_ENABLE}) {
        int previous = 0;
        pthread_setcancelstate(state, &previous);
        __mdm_log_print(MDM_LOG_INFO, "TAG", "emitted");
        __mdm_log_print(MDM_LOG_DEBUG, "TAG", "dropped");
        mdm_log_set_path(file.c_str());
        pthread_setcancelstate(state, &previous);
        EXPECT_EQ(previous, state);
    }
}

}  // namespace
}  // namespace mdm::test::log_test

// SPDX-License-Identifier: Apache-2.0
//
// The way of a line if the log file does not take it, or is no regular file.
#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pthread.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "mdm/log.h"
#include "support/cancellable.hpp"
#include "support/log_recorder.hpp"
#include "support/private_mounts.hpp"

namespace mdm::test::log_file_test {
namespace {

std::string contents(const std::string &path)
{
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

int log_text(const std::string &text)
{
    return __mdm_log_print(MDM_LOG_INFO, "TAG", "%s", text.c_str());
}

class LogFile : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_NE(mkdtemp(directory_.data()), nullptr);
        log_to(directory_ + "/log");
    }
    void TearDown() override
    {
        mdm_log_set_path(nullptr);
        std::filesystem::remove_all(directory_);
    }

    void log_to(const std::string &path)
    {
        path_ = path;
        mdm_log_set_path(path_.c_str());
    }

    const std::string &directory() const { return directory_; }
    const std::string &path() const { return path_; }

private:
    std::string directory_ = ::testing::TempDir() + "mdm-log-file-test-XXXXXX";
    std::string path_;
    const Deadline deadline_{60};
};

void set_file_size_limit(rlim_t size)
{
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = size;
    setrlimit(RLIMIT_FSIZE, &limit);
}

// Lets a file take the bytes that fit into the limit, and no more: as a full disk does, but for
// errno. The signal comes with the first write that has no byte within the limit.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t size, void (*handler)(int) = SIG_IGN)
        : previous_handler_(std::signal(SIGXFSZ, handler))
    {
        getrlimit(RLIMIT_FSIZE, &previous_);
        set_file_size_limit(size);
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &previous_);
        std::signal(SIGXFSZ, previous_handler_);
    }
    FileSizeLimit(const FileSizeLimit &) = delete;
    FileSizeLimit &operator=(const FileSizeLimit &) = delete;

private:
    void (*previous_handler_)(int);
    rlimit previous_{};
};

// Allows a file to be appended to, and no other change.
bool truncating_fails = false;

class NoTruncation {
public:
    NoTruncation() { truncating_fails = true; }
    ~NoTruncation() { truncating_fails = false; }
    NoTruncation(const NoTruncation &) = delete;
    NoTruncation &operator=(const NoTruncation &) = delete;
};

TEST_F(LogFile, KeepsNoPartOfALineThatDoesNotFit)
{
    log_text("first");
    {
        const FileSizeLimit limit(25);
        errno = E2BIG;
        EXPECT_EQ(log_text("longer than what is left"), recorder_result);
        EXPECT_EQ(errno, E2BIG);
        EXPECT_EQ(contents(path()), "1 TAG first\n");
        log_text("2nd");
        log_text("third");
    }
    log_text("fourth");
    EXPECT_EQ(contents(path()), "1 TAG first\n1 TAG 2nd\n1 TAG fourth\n");
}

TEST_F(LogFile, EndsALineThatCannotBeTakenBackBeforeTheNextOne)
{
    const NoTruncation no_truncation;
    log_text("first");
    {
        const FileSizeLimit limit(25);
        log_text("longer than what is left");
        log_text("no room to end that one");
        EXPECT_EQ(contents(path()), "1 TAG first\n1 TAG longer ");
    }
    log_text("next");
    log_text("last");
    EXPECT_EQ(contents(path()), "1 TAG first\n1 TAG longer \n1 TAG next\n1 TAG last\n");
}

// Another process has gone on, or the file is another one.
TEST_F(LogFile, EndsNothingInAFileThatHasChanged)
{
    const NoTruncation no_truncation;
    {
        const FileSizeLimit limit(10);
        log_text("longer than what is left");
    }
    std::ofstream(path(), std::ios::app) << "\nother\n";
    log_text("next");
    EXPECT_EQ(contents(path()), "1 TAG long\nother\n1 TAG next\n");
    {
        const FileSizeLimit limit(40);
        log_text("longer than what is left");
    }
    std::filesystem::remove(path());
    log_text("in a new file");
    EXPECT_EQ(contents(path()), "1 TAG in a new file\n");
}

TEST_F(LogFile, KeepsNoPartOfALineThatIsLongerThanABuffer)
{
    log_text("first");
    {
        const FileSizeLimit limit(50000);
        log_text(std::string(60000, '.'));
    }
    log_text("second");
    EXPECT_TRUE(contents(path()) == "1 TAG first\n1 TAG second\n");  // or else too long to print
}

TEST_F(LogFile, StaysEmptyWhereNothingFits)
{
    {
        const FileSizeLimit limit(0);
        log_text("text");
    }
    EXPECT_EQ(contents(path()), "");
    log_text("text");
    EXPECT_EQ(contents(path()), "1 TAG text\n");
}

std::string path_of_another_process;

// Another process: it finds room again, and appends.
void append_as_another_process(int /*signal*/)
{
    set_file_size_limit(RLIM_INFINITY);
    const int file = open(path_of_another_process.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
    if (write(file, "another's\n", 10) != 10) {
        std::abort();
    }
    close(file);
}

TEST_F(LogFile, KeepsWhatAnotherProcessHasAppendedToAPartOfALine)
{
    log_text("first");
    path_of_another_process = path();
    {
        const FileSizeLimit limit(20, append_as_another_process);
        log_text("longer than what is left");
    }
    EXPECT_EQ(contents(path()), "1 TAG first\n1 TAG loanother's\n");
}

TEST_F(LogFile, KeepsNoPartOfALineOnAFullDisk)
{
    const auto reason = mount_empty(directory(), "size=4k");
    if (reason) {
        GTEST_SKIP() << "this machine gives no private mount namespace: " << *reason;
    }
    log_text("first");
    log_text(std::string(100000, '.'));
    log_text("third");
    EXPECT_TRUE(contents(path()) == "1 TAG first\n1 TAG third\n");
    mdm_log_set_path(nullptr);
    EXPECT_EQ(umount(directory().c_str()), 0);
}

TEST_F(LogFile, ThatIsADeviceWithoutRoomDoesNoHarm)
{
    log_to("/dev/full");
    errno = E2BIG;
    EXPECT_EQ(log_text("lost"), recorder_result);
    EXPECT_EQ(errno, E2BIG);
    log_to(directory() + "/log");
    log_text("next");
    EXPECT_EQ(contents(path()), "1 TAG next\n");
}

void do_nothing(int /*signal*/)
{
}

// As many bytes as there are until the writer closes the FIFO.
std::string all_of(int fifo)
{
    std::string text;
    char part[4096];
    for (;;) {
        pollfd readable{fifo, POLLIN, 0};
        poll(&readable, 1, -1);
        const ssize_t count = read(fifo, part, sizeof part);
        if (count <= 0) {
            return text;
        }
        text.append(part, static_cast<size_t>(count));
    }
}

int bytes_waiting(int fifo)
{
    int count = 0;
    ioctl(fifo, FIONREAD, &count);
    return count;
}

TEST_F(LogFile, ThatIsAFifoGetsWholeLinesThoughSignalsInterruptThem)
{
    struct sigaction previous {};
    struct sigaction interrupting {};  // without SA_RESTART
    interrupting.sa_handler = do_nothing;
    sigaction(SIGUSR1, &interrupting, &previous);
    const std::string fifo_path = directory() + "/fifo";
    ASSERT_EQ(mkfifo(fifo_path.c_str(), 0600), 0);
    const int fifo = open(fifo_path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    log_to(fifo_path);
    const std::string text(300000, '.');

    std::thread writer([&text] { log_text(text); });
    while (bytes_waiting(fifo) < fcntl(fifo, F_GETPIPE_SZ)) {
        std::this_thread::yield();
    }
    for (int i = 0; i < 10; ++i) {
        pthread_kill(writer.native_handle(), SIGUSR1);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_TRUE(all_of(fifo) == "1 TAG " + text + "\n");  // too long to print
    writer.join();
    close(fifo);
    sigaction(SIGUSR1, &previous, nullptr);
}

}  // namespace
}  // namespace mdm::test::log_file_test

// In front of the C library's own.
extern "C" int ftruncate(int file, off_t size) noexcept
{
    if (mdm::test::log_file_test::truncating_fails) {
        errno = EPERM;
        return -1;
    }
    return static_cast<int>(syscall(SYS_ftruncate, file, size));
}

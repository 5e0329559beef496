// SPDX-License-Identifier: Apache-2.0
//
// The status store at two places: below its exported functions in a temporary directory, and the
// exported functions in the directory that they promise, under mounts that nobody else sees.
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <limits>
#include <list>
#include <locale>
#include <optional>
#include <ostream>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "mdm/noti.h"
#include "status/mdm_noti.hpp"
#include "support/log_recorder.hpp"
#include "support/private_mounts.hpp"
#include "support/unprivileged.hpp"

namespace mdm::test::noti_test {
namespace {

using namespace std::string_literals;
using ::testing::AnyOf;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::SizeIs;
using ::testing::StartsWith;

constexpr LoggingFunction reader{"mdm_read_noti", "mdm_noti.cpp"};
constexpr LoggingFunction writer{"mdm_write_noti", "mdm_noti.cpp"};
constexpr const char *some_key = "some-status";
constexpr int32_t untouched = 0x5A5A5A5A;
constexpr int earlier_error = EDOM;  // no file and no conversion fails with it
constexpr int32_t least = std::numeric_limits<int32_t>::min();
constexpr int32_t greatest = std::numeric_limits<int32_t>::max();

// The result of a call, the caller's status behind it, and its lines in the log.
struct Outcome {
    int32_t result;
    int32_t status;
    std::vector<LogLine> lines;

    friend bool operator==(const Outcome &, const Outcome &) = default;
};

std::ostream &operator<<(std::ostream &out, const Outcome &outcome)
{
    out << "result " << outcome.result << ", status " << outcome.status;
    for (const LogLine &line : outcome.lines) {
        out << "\n    " << line;
    }
    return out;
}

template <class Call>
Outcome outcome_of(const Call &call)
{
    LogRecorder log;
    int32_t status = untouched;
    errno = earlier_error;
    const int32_t result = call(&status);
    return {result, status, log.take()};
}

Outcome failed(const Origin &function, const std::string &text, int error)
{
    const std::string reason =
        "errno = " + std::to_string(error) + ", [" + std::strerror(error) + "]";
    return {-999, untouched, {critical(function, text), critical(function, reason)}};
}

// How the standard library describes the failure of `use`, a use of a stream that throws.
template <class Stream, class Use>
std::string stream_failure(const Use &use)
{
    Stream file;
    file.exceptions(std::ios::failbit | std::ios::badbit);
    try {
        use(file);
    } catch (const std::ios::failure &failure) {
        return failure.what();
    }
    return "nothing";
}

Outcome stream_failed(const Origin &function, const std::string &description, int error)
{
    return failed(function,
                  "Opening/reading/closing file exception, ['" + description + "'] thrown.", error);
}

Outcome failed_unknown(const Origin &function, int error)
{
    return failed(function, "Unknown exception thrown.", error);
}

size_t open_descriptors()
{
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    return static_cast<size_t>(std::distance(begin(descriptors), end(descriptors)));
}

// The one that the next file to be opened gets.
int next_descriptor()
{
    const int next = open("/", O_RDONLY | O_CLOEXEC);
    close(next);
    return next;
}

class Umask {
public:
    explicit Umask(mode_t mask) : previous_(umask(mask)) {}
    ~Umask() { umask(previous_); }
    Umask(const Umask &) = delete;
    Umask &operator=(const Umask &) = delete;

private:
    mode_t previous_;
};

class GlobalLocale {
public:
    explicit GlobalLocale(const std::locale &locale) : previous_(std::locale::global(locale)) {}
    ~GlobalLocale() { std::locale::global(previous_); }
    GlobalLocale(const GlobalLocale &) = delete;
    GlobalLocale &operator=(const GlobalLocale &) = delete;

private:
    std::locale previous_;
};

// Runs a hook whenever a file's characters pass between the stream and the system.
class HookedConversion : public std::codecvt<char, char, std::mbstate_t> {
public:
    explicit HookedConversion(std::function<void()> hook) : hook_(std::move(hook)) {}

private:
    using Plain = std::codecvt<char, char, std::mbstate_t>;

    bool do_always_noconv() const noexcept override { return false; }

    result do_in(std::mbstate_t &state, const char *from, const char *from_end,
                 const char *&from_next, char *to, char *to_end, char *&to_next) const override
    {
        hook_();
        return Plain::do_in(state, from, from_end, from_next, to, to_end, to_next);
    }

    result do_out(std::mbstate_t &state, const char *from, const char *from_end,
                  const char *&from_next, char *to, char *to_end, char *&to_next) const override
    {
        hook_();
        return Plain::do_out(state, from, from_end, from_next, to, to_end, to_next);
    }

    std::function<void()> hook_;
};

struct GroupedDigits : std::numpunct<char> {
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

// Lets every write to a file fail with EFBIG.
class NoFileMayGrow {
public:
    NoFileMayGrow() : previous_handler_(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &previous_);
        const rlimit none{0, previous_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &none);
    }
    ~NoFileMayGrow()
    {
        setrlimit(RLIMIT_FSIZE, &previous_);
        std::signal(SIGXFSZ, previous_handler_);
    }
    NoFileMayGrow(const NoFileMayGrow &) = delete;
    NoFileMayGrow &operator=(const NoFileMayGrow &) = delete;

private:
    void (*previous_handler_)(int);
    rlimit previous_{};
};

// A call by a thread of its own.
class Attempt {
public:
    explicit Attempt(std::function<void()> call)
        : thread_([this, call = std::move(call)] {
              id_ = gettid();
              call();
              finished_ = true;
          })
    {
    }
    ~Attempt() { thread_.join(); }
    Attempt(const Attempt &) = delete;
    Attempt &operator=(const Attempt &) = delete;

    // Runs until the call is either stopped by a lock or through.
    bool is_stopped() const
    {
        while (!finished_) {
            if (sleeps()) {
                return true;
            }
            std::this_thread::yield();
        }
        return false;
    }

private:
    bool sleeps() const
    {
        std::ifstream file("/proc/self/task/" + std::to_string(id_) + "/stat");
        std::string id;
        std::string name;
        char state = 0;
        return file >> id && std::getline(file, name, ')') && file >> state && state == 'S';
    }

    std::atomic<pid_t> id_ = 0;
    std::atomic<bool> finished_ = false;
    std::thread thread_;  // last, because it uses the others
};

enum class Place { temporary_directory, fixed_directory };

std::ostream &operator<<(std::ostream &out, Place place)
{
    return out << (place == Place::fixed_directory ? "FixedDirectory" : "TemporaryDirectory");
}

class StatusStore : public ::testing::TestWithParam<Place> {
protected:
    void SetUp() override
    {
        if (GetParam() == Place::fixed_directory) {
            static const auto reason = mount_empty("/opt");
            if (reason) {
                GTEST_SKIP() << "this machine gives no private mount namespace: " << *reason;
            }
            root_ = "/opt";
        } else {
            root_ = ::testing::TempDir() + "mdm-noti-test-XXXXXX";
            ASSERT_NE(mkdtemp(root_.data()), nullptr) << std::strerror(errno);
        }
        std::filesystem::create_directories(directory());
    }

    void TearDown() override
    {
        if (root_.empty()) {
            return;
        }
        chmod(directory().c_str(), 0700);
        std::filesystem::remove_all(root_ + "/etc");
        if (GetParam() == Place::temporary_directory) {
            std::filesystem::remove(root_);
        }
    }

    std::string directory() const { return root_ + "/etc/mdm/"; }
    std::string path(const std::string &key = some_key) const { return directory() + key; }

    void put(const std::string &text) const { std::ofstream(path()) << text; }

    void put(const std::string &text, mode_t mode) const
    {
        put(text);
        ASSERT_EQ(chmod(path().c_str(), mode), 0);
    }

    std::string contents(const std::string &key = some_key) const
    {
        std::ifstream file(path(key));
        return {std::istreambuf_iterator<char>(file), {}};
    }

    struct stat attributes() const
    {
        struct stat attributes {};
        EXPECT_EQ(stat(path().c_str(), &attributes), 0);
        return attributes;
    }

    std::vector<std::string> listing() const
    {
        std::vector<std::string> names;
        for (const auto &entry : std::filesystem::directory_iterator(directory())) {
            names.push_back(entry.path().filename());
        }
        return names;
    }

    int32_t call_read(const char *key, int32_t *status) const
    {
        return GetParam() == Place::fixed_directory
                   ? ::mdm_read_noti(key, status)
                   : mdm::mdm_read_noti(directory().c_str(), key, status);
    }

    int32_t call_write(const char *key, int32_t status) const
    {
        return GetParam() == Place::fixed_directory
                   ? ::mdm_write_noti(key, status)
                   : mdm::mdm_write_noti(directory().c_str(), key, status);
    }

    // The result and the status.
    std::pair<int32_t, int32_t> read_status(const char *key) const
    {
        int32_t status = untouched;
        const int32_t result = call_read(key, &status);
        return {result, status};
    }

    Outcome read(const char *key = some_key) const
    {
        return outcome_of([&](int32_t *status) { return call_read(key, status); });
    }

    Outcome write(int32_t status, const char *key = some_key) const
    {
        return outcome_of([&](int32_t *) { return call_write(key, status); });
    }

    Outcome read_of(const std::string &text) const
    {
        put(text);
        return read();
    }

    Outcome has_read(int32_t status, const char *hexadecimal, const char *key = some_key) const
    {
        const std::string text = "Red status ["s + hexadecimal + "] from \"" + path(key) + "\"";
        return {0, status, {debug(reader, text.c_str())}};
    }

    Outcome has_written(const char *hexadecimal, const char *key = some_key) const
    {
        const std::string text = "Wrote status ["s + hexadecimal + "] into \"" + path(key) + "\"";
        return {0, untouched, {debug(writer, text.c_str())}};
    }

    // To be called under the conditions that made the call under test fail.
    Outcome read_failed(int error, const char *key = some_key) const
    {
        const std::string description = stream_failure<std::ifstream>([&](std::ifstream &file) {
            std::string word;
            file.open(path(key));
            file >> word;
        });
        return stream_failed(reader, description, error);
    }

    Outcome write_failed(int error, const char *key = some_key) const
    {
        const std::string description = stream_failure<std::fstream>([&](std::fstream &file) {
            file.open(path(key), std::ios::in | std::ios::out | std::ios::trunc);
            file << "5";
            file.close();
        });
        return stream_failed(writer, description, error);
    }

    void expect_open_fails(int error, const char *key = some_key) const
    {
        EXPECT_EQ(read(key), read_failed(error, key));
        EXPECT_EQ(write(5, key), write_failed(error, key));
    }

    // Each time the first call logs, a reader and a writer of other keys try and are stopped.
    void expect_locked_while_it_logs(size_t lines, const std::function<void()> &first_call) const
    {
        LogRecorder log;
        std::list<Attempt> attempts;
        log.during_print([&, first = std::this_thread::get_id()] {
            if (std::this_thread::get_id() == first) {
                attempts.emplace_back([this] { read_status("a"); });
                EXPECT_TRUE(attempts.back().is_stopped());
                attempts.emplace_back([this] { call_write("b", 5); });
                EXPECT_TRUE(attempts.back().is_stopped());
            }
        });
        first_call();
        EXPECT_THAT(attempts, SizeIs(2 * lines));
    }

private:
    std::string root_;
};

// The temporary directory first: the other place moves the process to other mounts.
INSTANTIATE_TEST_SUITE_P(TemporaryDirectory, StatusStore,
                         ::testing::Values(Place::temporary_directory));
INSTANTIATE_TEST_SUITE_P(Exported, StatusStore, ::testing::Values(Place::fixed_directory));

// Q-STATUS-1
TEST_P(StatusStore, StatusIsDecimalTextInTheFileAndHexadecimalInTheLog)
{
    struct {
        int32_t status;
        const char *decimal;
        const char *hexadecimal;
    } const rows[] = {
        {5, "5", "0x00000005"},
        {0, "0", "0x00000000"},
        {-1, "-1", "0xffffffff"},
        {0x105, "261", "0x00000105"},
        {0x0ABCDEF0, "180150000", "0x0abcdef0"},
        {greatest, "2147483647", "0x7fffffff"},
        {least, "-2147483648", "0x80000000"},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(write(row.status), has_written(row.hexadecimal));
        EXPECT_EQ(contents(), row.decimal);
        EXPECT_EQ(read(), has_read(row.status, row.hexadecimal));
    }
}

TEST_P(StatusStore, LinesCarryTheTagAndTheFileThatLogs)
{
    const LogRecorder log;
    call_write(some_key, 5);
    read_status(some_key);
    call_write("missing/k", 5);
    read_status("missing/k");
    EXPECT_THAT(log.platform_lines(), SizeIs(6));
    for (const PlatformLine &line : log.platform_lines()) {
        EXPECT_EQ(line.tag, "MDM_COMMON");
        EXPECT_THAT(line.text, StartsWith("mdm_noti.cpp: mdm_"));
    }
}

TEST_P(StatusStore, SuccessIsSilentByDefault)
{
    LogRecorder log(MDM_LOG_INFO);
    EXPECT_EQ(call_write(some_key, 5), 0);
    EXPECT_EQ(read_status(some_key), std::pair(0, 5));
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_P(StatusStore, FailuresAreTheSameWithTheLoggerOff)
{
    LogRecorder log(MDM_LOG_NONE);
    EXPECT_EQ(call_write(nullptr, 5), -195);
    EXPECT_EQ(call_write("missing/k", 5), -999);
    EXPECT_EQ(read_status(nullptr), std::pair(-195, untouched));
    EXPECT_EQ(read_status("missing/k"), std::pair(-999, untouched));
    put("abc");
    EXPECT_EQ(read_status(some_key), std::pair(-999, untouched));
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_P(StatusStore, WritingMakesNothingButTheKeysFile)
{
    write(5);
    EXPECT_THAT(listing(), ElementsAre(some_key));
}

TEST_P(StatusStore, WritingReplacesALongerText)
{
    put("123456");
    EXPECT_EQ(write(7), has_written("0x00000007"));
    EXPECT_EQ(contents(), "7");
}

TEST_P(StatusStore, NewFileHasTheDefaultPermissions)
{
    struct {
        mode_t mask;
        mode_t mode;
    } const rows[] = {{0, 0666}, {022, 0644}, {077, 0600}};
    for (const auto &row : rows) {
        const Umask mask(row.mask);
        write(5);
        EXPECT_EQ(attributes().st_mode & 07777U, row.mode);
        std::filesystem::remove(path());
    }
}

TEST_P(StatusStore, ExistingFileStaysTheSameFile)
{
    put("123456", 0600);
    const auto before = attributes();
    write(7);
    EXPECT_EQ(attributes().st_ino, before.st_ino);
    EXPECT_EQ(attributes().st_mode, before.st_mode);
}

TEST_P(StatusStore, ReadingLeavesTheFileAlone)
{
    for (const char *text : {" 42 17\n", "abc", "99999999999"}) {
        read_of(text);
        EXPECT_EQ(contents(), text);
    }
}

TEST_P(StatusStore, NothingIsCached)
{
    write(5);
    EXPECT_EQ(read(), has_read(5, "0x00000005"));
    put("6");
    EXPECT_EQ(read(), has_read(6, "0x00000006"));
    std::filesystem::remove(path());
    EXPECT_EQ(read(), read_failed(ENOENT));
    EXPECT_EQ(write(5), has_written("0x00000005"));
    EXPECT_EQ(contents(), "5");
}

TEST_P(StatusStore, KeysHaveAFileEach)
{
    write(5, "a");
    write(6, "b");
    EXPECT_EQ(read("a"), has_read(5, "0x00000005", "a"));
    EXPECT_EQ(read("b"), has_read(6, "0x00000006", "b"));
}

TEST_P(StatusStore, NullKeyIsRefusedBeforeAnyFileIsTouched)
{
    EXPECT_EQ(read(nullptr),
              (Outcome{-195, untouched, {critical(reader, "p_key argument = NULL")}}));
    EXPECT_EQ(write(5, nullptr),
              (Outcome{-195, untouched, {critical(writer, "noti argument = NULL")}}));
    EXPECT_THAT(listing(), IsEmpty());
}

TEST_P(StatusStore, NullKeyIsRefusedWithoutADirectory)
{
    std::filesystem::remove(directory());
    EXPECT_EQ(read(nullptr).result, -195);
    EXPECT_EQ(write(5, nullptr).result, -195);
}

TEST_P(StatusStore, KeyIsUsedAsItStands)
{
    std::filesystem::create_directory(path("sub"));
    for (const char *key : {"sub/k", "../k", "/k", "./k", "sub/../k", " a b ", "%s%n", "k.txt"}) {
        EXPECT_EQ(write(5, key), has_written("0x00000005", key));
        EXPECT_EQ(contents(key), "5");
        EXPECT_EQ(read(key), has_read(5, "0x00000005", key));
        std::filesystem::remove(path(key));
    }
}

TEST_P(StatusStore, EmptyKeyNamesTheDirectoryAndFails)
{
    expect_open_fails(EISDIR, "");
    EXPECT_THAT(listing(), IsEmpty());
}

TEST_P(StatusStore, DirectoryInTheFilesPlaceFails)
{
    std::filesystem::create_directory(path());
    expect_open_fails(EISDIR);
}

TEST_P(StatusStore, ReadingDoesNotCreateAMissingFile)
{
    EXPECT_EQ(read(), read_failed(ENOENT));
    EXPECT_THAT(listing(), IsEmpty());
}

TEST_P(StatusStore, MissingSubdirectoryIsNotCreated)
{
    expect_open_fails(ENOENT, "sub/k");
    EXPECT_THAT(listing(), IsEmpty());
}

TEST_P(StatusStore, MissingDirectoryIsNotCreated)
{
    std::filesystem::remove(directory());
    expect_open_fails(ENOENT);
    EXPECT_FALSE(std::filesystem::exists(directory()));
}

TEST_P(StatusStore, KeyThatNoFileCanHaveFails)
{
    expect_open_fails(ENAMETOOLONG, std::string(300, 'k').c_str());
    put("5");
    expect_open_fails(ENOTDIR, "some-status/k");
}

// Q-STATUS-5
TEST_P(StatusStore, FileWithoutAWordFailsWithWhateverErrorCameBefore)
{
    for (const char *text : {"", " ", "\n", " \t\n\v\f\r "}) {
        EXPECT_EQ(read_of(text), read_failed(earlier_error));
    }
}

// Q-STATUS-2
TEST_P(StatusStore, FirstWordsLeadingDigitsCount)
{
    struct {
        const char *text;
        int32_t status;
        const char *hexadecimal;
    } const rows[] = {
        {"42", 42, "0x0000002a"},
        {"42\n", 42, "0x0000002a"},
        {" \t\n\v\f\r42\n", 42, "0x0000002a"},
        {"42abc", 42, "0x0000002a"},
        {"-42abc", -42, "0xffffffd6"},
        {"4.9", 4, "0x00000004"},
        {"1e3", 1, "0x00000001"},
        {"1,000", 1, "0x00000001"},
        {"5-3", 5, "0x00000005"},
        {"0x10", 0, "0x00000000"},
        {"007", 7, "0x00000007"},
        {"010", 10, "0x0000000a"},
        {"+7", 7, "0x00000007"},
        {"-0", 0, "0x00000000"},
        {"42 17", 42, "0x0000002a"},
        {"42\n17\n", 42, "0x0000002a"},
        {"42 abc", 42, "0x0000002a"},
        {"42\t99999999999", 42, "0x0000002a"},
        {"2147483647", greatest, "0x7fffffff"},
        {"-2147483648", least, "0x80000000"},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(read_of(row.text), has_read(row.status, row.hexadecimal)) << row.text;
    }
}

// Q-STATUS-3, Q-STATUS-5
TEST_P(StatusStore, WordWithoutLeadingDigitsFailsWithError0)
{
    for (const char *text : {"abc", "-", "+", "--5", "+-5", "- 5", "abc 5", "x10", ".5"}) {
        EXPECT_EQ(read_of(text), failed_unknown(reader, 0)) << text;
    }
}

TEST_P(StatusStore, NumberBeyond32BitsFailsWithARangeError)
{
    for (const char *text :
         {"2147483648", "-2147483649", "4294967295", "4294967301", "99999999999", "-99999999999",
          "99999999999999999999999", "-99999999999999999999999", "99999999999abc"}) {
        EXPECT_EQ(read_of(text), failed_unknown(reader, ERANGE)) << text;
    }
}

// Q-STATUS-3
TEST_P(StatusStore, ZeroByteEndsTheNumber)
{
    const Outcome zero = has_read(0, "0x00000000");
    const Outcome twelve = has_read(12, "0x0000000c");
    EXPECT_EQ(read_of("\0"s), zero);
    EXPECT_EQ(read_of("\00042"s), zero);
    EXPECT_EQ(read_of("\0abc"s), zero);
    EXPECT_EQ(read_of(" \n\0 42"s), zero);
    EXPECT_EQ(read_of("12\0 34"s), twelve);
    EXPECT_EQ(read_of("12\00034"s), twelve);
}

// Q-STATUS-4
TEST_P(StatusStore, SixtyThreeCharactersOfAWordAreRead)
{
    const Outcome seven = has_read(7, "0x00000007");
    EXPECT_EQ(read_of(std::string(62, '0') + "7"), seven);
    EXPECT_EQ(read_of(std::string(62, '0') + "7\n"), seven);
    EXPECT_EQ(read_of(std::string(62, '0') + "75"), seven);
    EXPECT_EQ(read_of(" " + std::string(62, '0') + "75"), seven);
    EXPECT_EQ(read_of(std::string(100000, '0') + "7"), has_read(0, "0x00000000"));
    EXPECT_EQ(read_of(std::string(100000, '9')), failed_unknown(reader, ERANGE));
    EXPECT_EQ(read_of(std::string(100000, 'x')), failed_unknown(reader, 0));
}

TEST_P(StatusStore, ReadingNeedsPermissionToReadOnly)
{
    put("5", 0400);
    const Unprivileged unprivileged;
    EXPECT_EQ(read(), has_read(5, "0x00000005"));
}

TEST_P(StatusStore, ReadingNeedsPermissionToRead)
{
    for (const mode_t mode : {0U, 0200U}) {
        put("5", mode);
        const Unprivileged unprivileged;
        EXPECT_EQ(read(), read_failed(EACCES));
        std::filesystem::remove(path());
    }
}

// Q-STATUS-6
TEST_P(StatusStore, WritingNeedsPermissionToReadAndWrite)
{
    for (const mode_t mode : {0U, 0200U, 0400U}) {
        put("123456", mode);
        {
            const Unprivileged unprivileged;
            EXPECT_EQ(write(5), write_failed(EACCES));
        }
        ASSERT_EQ(chmod(path().c_str(), 0600), 0);
        EXPECT_EQ(contents(), "123456");
        std::filesystem::remove(path());
    }
}

TEST_P(StatusStore, NewFileNeedsPermissionToCreateIt)
{
    ASSERT_EQ(chmod(directory().c_str(), 0500), 0);
    const Unprivileged unprivileged;
    EXPECT_EQ(write(5), write_failed(EACCES));
    EXPECT_THAT(listing(), IsEmpty());
}

TEST_P(StatusStore, DirectoryThatMayNotBeSearchedFails)
{
    put("5");
    ASSERT_EQ(chmod(directory().c_str(), 0600), 0);
    const Unprivileged unprivileged;
    expect_open_fails(EACCES);
}

// Q-STATUS-7
TEST_P(StatusStore, FailedWriteLeavesTheFileEmptied)
{
    put("123456");
    const NoFileMayGrow limit;
    const Outcome outcome = write(5);
    EXPECT_EQ(contents(), "");
    EXPECT_EQ(outcome, write_failed(EFBIG));
}

TEST_P(StatusStore, FullDeviceFailsTheWrite)
{
    std::filesystem::create_symlink("/dev/full", path());
    EXPECT_EQ(write(5), write_failed(ENOSPC));
}

TEST_P(StatusStore, LocaleDoesNotGroupTheDigits)
{
    const Outcome outcome = outcome_of([&](int32_t *) {
        const GlobalLocale locale({std::locale::classic(), new GroupedDigits});
        return call_write(some_key, 1234567);
    });
    EXPECT_EQ(outcome, has_written("0x0012d687"));
    EXPECT_EQ(contents(), "1234567");
}

TEST_P(StatusStore, AnyOtherExceptionIsAnswered)
{
    const auto fail = [] { throw std::runtime_error("no conversion"); };
    put("5");
    const Outcome read_outcome = outcome_of([&](int32_t *status) {
        const GlobalLocale locale({std::locale::classic(), new HookedConversion(fail)});
        return call_read(some_key, status);
    });
    EXPECT_EQ(read_outcome, failed_unknown(reader, earlier_error));
    const Outcome write_outcome = outcome_of([&](int32_t *) {
        const GlobalLocale locale({std::locale::classic(), new HookedConversion(fail)});
        return call_write(some_key, 5);
    });
    EXPECT_EQ(write_outcome, failed_unknown(writer, earlier_error));
}

TEST_P(StatusStore, FailingCloseFailsTheRead)
{
    put("42 17");
    const auto take_away = [file = next_descriptor()] { close(file); };
    const Outcome outcome = outcome_of([&](int32_t *status) {
        const GlobalLocale locale({std::locale::classic(), new HookedConversion(take_away)});
        return call_read(some_key, status);
    });
    const std::string description = stream_failure<std::ifstream>(
        [](std::ifstream &file) { file.setstate(std::ios::failbit); });
    EXPECT_EQ(outcome, stream_failed(reader, description, EBADF));
}

TEST_P(StatusStore, NoDescriptorStaysOpen)
{
    std::filesystem::create_directory(path("sub"));
    const size_t before = open_descriptors();
    for (const char *key : {"a", "", "missing/k", "sub"}) {
        write(5, key);
        read(key);
    }
    for (const char *text : {"", "abc", "99999999999"}) {
        read_of(text);
    }
    EXPECT_EQ(open_descriptors(), before);
}

TEST_P(StatusStore, ThreadsSeeWholeStatusesOnly)
{
    constexpr std::array<int32_t, 4> statuses = {5, -1, 123456, least};
    constexpr int rounds = 200;
    LogRecorder log(MDM_LOG_CRITICAL);
    ASSERT_EQ(call_write(some_key, statuses[0]), 0);
    std::array<std::vector<std::pair<int32_t, int32_t>>, statuses.size()> seen;
    std::vector<std::thread> threads;
    for (size_t i = 0; i < statuses.size(); ++i) {
        threads.emplace_back([&, i] {
            for (int round = 0; round < rounds; ++round) {
                EXPECT_EQ(call_write(some_key, statuses[i]), 0);
            }
        });
        threads.emplace_back([&, i] {
            for (int round = 0; round < rounds; ++round) {
                seen[i].push_back(read_status(some_key));
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    for (const auto &reads : seen) {
        EXPECT_THAT(reads, Each(Pair(0, AnyOf(5, -1, 123456, least))));
    }
    EXPECT_THAT(log.take(), IsEmpty());
}

// Q-STATUS-8
TEST_P(StatusStore, SuccessIsLoggedUnderTheLock)
{
    expect_locked_while_it_logs(1, [this] { call_write(some_key, 5); });
    expect_locked_while_it_logs(1, [this] { read_status(some_key); });
}

// Q-STATUS-8
TEST_P(StatusStore, FailureIsLoggedUnderTheLock)
{
    expect_locked_while_it_logs(1, [this] { read_status(nullptr); });
    expect_locked_while_it_logs(1, [this] { call_write(nullptr, 5); });
    expect_locked_while_it_logs(2, [this] { read_status("missing"); });
    expect_locked_while_it_logs(2, [this] { call_write("missing/k", 5); });
    put("abc");
    expect_locked_while_it_logs(2, [this] { read_status(some_key); });
}

TEST_P(StatusStore, ProcessesSeeWholeStatusesOrNone)
{
    constexpr int32_t odd = 111111;
    constexpr int32_t even = 222222;
    ASSERT_EQ(call_write(some_key, even), 0);
    const pid_t child = fork();
    ASSERT_GE(child, 0) << std::strerror(errno);
    if (child == 0) {
        bool written = true;
        for (int round = 1; round <= 200; ++round) {
            written = written && call_write(some_key, round % 2 == 0 ? even : odd) == 0;
        }
        _exit(written ? 0 : 1);
    }
    std::set<std::pair<int32_t, int32_t>> seen;
    int child_status = 0;
    do {
        seen.insert(read_status(some_key));
    } while (waitpid(child, &child_status, WNOHANG) == 0);
    EXPECT_EQ(child_status, 0);
    EXPECT_THAT(seen, Each(AnyOf(Pair(0, odd), Pair(0, even), Pair(-999, untouched))));
    EXPECT_EQ(read(), has_read(even, "0x0003640e"));
}

// On a file system of its own without a byte left.
class FullStatusStore : public StatusStore {
protected:
    void SetUp() override
    {
        StatusStore::SetUp();
        if (IsSkipped()) {
            return;
        }
        ASSERT_EQ(mount_empty(directory(), "size=4k"), std::nullopt);
        mounted_ = true;
        const int file = open(path("filler").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        while (::write(file, "x", 1) == 1) {}
        EXPECT_EQ(errno, ENOSPC);
        close(file);
    }

    void TearDown() override
    {
        if (mounted_) {
            umount(directory().c_str());
        }
        StatusStore::TearDown();
    }

private:
    bool mounted_ = false;
};

INSTANTIATE_TEST_SUITE_P(Exported, FullStatusStore, ::testing::Values(Place::fixed_directory));

TEST_P(FullStatusStore, FailedWriteLeavesAnEmptyFile)
{
    const Outcome outcome = write(5);
    EXPECT_EQ(std::filesystem::file_size(path()), 0);
    EXPECT_EQ(outcome, write_failed(ENOSPC));
}

}  // namespace
}  // namespace mdm::test::noti_test

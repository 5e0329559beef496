// SPDX-License-Identifier: Apache-2.0
//
// The status word: a file that holds anything is read as another reader of the same rules reads it,
// and a status that was read can be written and read again. The input is the file.
#include <algorithm>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

#include <sys/mman.h>
#include <unistd.h>

#include "mdm/result.h"
#include "status/mdm_noti.hpp"
#include "support.hpp"

namespace mdm::fuzz {
namespace {

constexpr int32_t untouched = 0x5A5A5A5A;
constexpr size_t longest_word = 63;

// A file without a name: the system leads to it by its number.
constexpr const char *directory = "/proc/self/fd/";

class NamelessFile {
public:
    NamelessFile()
        : descriptor_(memfd_create("status", MFD_CLOEXEC)), key_(std::to_string(descriptor_))
    {
        promise(descriptor_ >= 0, "there is a file");
    }
    ~NamelessFile() { close(descriptor_); }
    NamelessFile(const NamelessFile &) = delete;
    NamelessFile &operator=(const NamelessFile &) = delete;

    const char *key() const { return key_.c_str(); }

    void put(std::string_view text) const
    {
        promise(ftruncate(descriptor_, 0) == 0 && pwrite(descriptor_, text.data(), text.size(),
                                                         0) == static_cast<ssize_t>(text.size()),
                "the file can be written");
    }

    std::string contents() const
    {
        std::string text(4096, '\0');
        const ssize_t count = pread(descriptor_, text.data(), text.size(), 0);
        promise(count >= 0, "the file can be read");
        text.resize(static_cast<size_t>(count));
        return text;
    }

private:
    int descriptor_;
    std::string key_;
};

// The first word, cut to the bytes that are read; no value if there is no word.
std::optional<std::string_view> word_of(std::string_view text)
{
    const size_t begin = text.find_first_not_of(spaces);
    if (begin == std::string_view::npos) {
        return std::nullopt;
    }
    text.remove_prefix(begin);
    return text.substr(0, std::min(text.find_first_of(spaces), longest_word));
}

// The status of a word; no value if it begins without a number, or with one outside 32 bits.
std::optional<int32_t> status_of(std::string_view word)
{
    if (word.starts_with('\0')) {
        return 0;
    }
    const std::optional<int64_t> number = take_number(word);
    if (!number || *number < std::numeric_limits<int32_t>::min() ||
        *number > std::numeric_limits<int32_t>::max()) {
        return std::nullopt;
    }
    return static_cast<int32_t>(*number);
}

void write_again(const NamelessFile &file, int32_t status)
{
    promise(mdm::mdm_write_noti(directory, file.key(), status) == MDM_RESULT_SUCCESS,
            "a status can be written");
    promise(file.contents() == std::to_string(status), "nothing else is in the file");
    int32_t again = untouched;
    promise(mdm::mdm_read_noti(directory, file.key(), &again) == MDM_RESULT_SUCCESS &&
                again == status,
            "what was written is read again");
}

}  // namespace
}  // namespace mdm::fuzz

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using namespace mdm::fuzz;
    static const NamelessFile file;
    const std::string text(data, data + size);
    file.put(text);

    const std::optional<std::string_view> word = word_of(text);
    const std::optional<int32_t> expected = word ? status_of(*word) : std::nullopt;
    int32_t status = untouched;
    const int32_t result = mdm::mdm_read_noti(directory, file.key(), &status);
    promise(result == (expected ? MDM_RESULT_SUCCESS : MDM_RESULT_FAILED),
            "a word that is a number is a status");
    promise(status == expected.value_or(untouched), "the status is the word's number");
    promise(take_critical_lines().size() == (expected ? 0 : 2),
            "a failure is logged with its reason");
    if (expected) {
        write_again(file, *expected);
    }
    return 0;
}

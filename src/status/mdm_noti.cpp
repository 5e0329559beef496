// SPDX-License-Identifier: Apache-2.0
#include "status/mdm_noti.hpp"

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <mutex>
#include <stdexcept>
#include <string>

#include <glib.h>

#include "log/log.hpp"
#include "mdm/noti.h"

namespace mdm {
namespace {

constexpr const char *status_directory = "/opt/etc/mdm/";

// One mutex for all keys. A call holds it to its end, log lines included, so the logger's own mutex
// is always the inner one. Q-STATUS-8
std::mutex store_mutex;

// More than the longest status, eleven characters, needs. A longer word in a file is cut.
constexpr size_t status_size = 64;  // Q-STATUS-4

// The number at the start of a word. If there is none, errno is 0. If it does not fit a status,
// errno is ERANGE, even where the host's long can hold the number.
int32_t status_of(const char *word)
{
    if (*word == '\0') {  // Q-STATUS-3
        return 0;
    }
    errno = 0;
    try {
        return std::stoi(word);  // Q-STATUS-2
    } catch (const std::out_of_range &) {
        errno = ERANGE;
        throw;
    }
}

void read(std::fstream &file, int32_t *status)
{
    char word[status_size];
    file >> word;
    file.close();
    *status = status_of(word);
}

// NOLINTNEXTLINE(readability-non-const-parameter): read() has the same parameters
void write(std::fstream &file, int32_t *status)
{
    char text[status_size];
    std::snprintf(text, sizeof text, "%d", *status);
    file << text;  // Q-STATUS-7
    file.close();
}

using Use = void(std::fstream &file, int32_t *status);

void log_errno(const Log &log)  // Q-STATUS-5
{
    MDM_CRITICAL("errno = %d, [%s]", errno, g_strerror(errno));
}

// Opens the file of a key, lets it be used, and logs `done` with the status and the path.
int32_t with_file(const Log &log, const char *directory, const char *key, std::ios::openmode mode,
                  Use *use, int32_t *status, const char *done)
{
    try {
        std::string path = directory;
        path += key;
        std::fstream file;
        file.exceptions(std::ios::failbit | std::ios::badbit);
        file.open(path, mode);
        // For a stream library whose open() fails without throwing. The tests' library throws.
        if (!file.is_open()) {  // GCOVR_EXCL_START
            MDM_CRITICAL("File [%s] has not been opened.", path.c_str());
            return MDM_RESULT_FAILED;
        }  // GCOVR_EXCL_STOP
        use(file, status);
        log.debug(__LINE__, done, static_cast<uint32_t>(*status), path.c_str());
        return MDM_RESULT_SUCCESS;
    } catch (const std::ios::failure &failure) {
        MDM_CRITICAL("Opening/reading/closing file exception, ['%s'] thrown.", failure.what());
        log_errno(log);
    } catch (...) {
        MDM_CRITICAL("Unknown exception thrown.");
        log_errno(log);
    }
    return MDM_RESULT_FAILED;
}

}  // namespace

int32_t mdm_read_noti(const char *directory, const char *p_key, int32_t *p_status)
{
    const Log log(MDM_ORIGIN("mdm_read_noti"));
    const std::lock_guard lock(store_mutex);
    if (p_key == nullptr) {
        MDM_CRITICAL("p_key argument = NULL");
        return MDM_RESULT_INVALID_ARGUMENT;
    }
    return with_file(log, directory, p_key, std::ios::in, read, p_status,
                     "Red status [0x%08x] from \"%s\"");  // Q-STATUS-1
}

int32_t mdm_write_noti(const char *directory, const char *noti, int32_t status)
{
    const Log log(MDM_ORIGIN("mdm_write_noti"));
    const std::lock_guard lock(store_mutex);
    if (noti == nullptr) {
        MDM_CRITICAL("noti argument = NULL");
        return MDM_RESULT_INVALID_ARGUMENT;
    }
    return with_file(log, directory, noti, std::ios::in | std::ios::out | std::ios::trunc, write,
                     &status, "Wrote status [0x%08x] into \"%s\"");  // Q-STATUS-6
}

}  // namespace mdm

int32_t mdm_read_noti(const char *p_key, int32_t *p_status)
{
    return mdm::mdm_read_noti(mdm::status_directory, p_key, p_status);
}

int32_t mdm_write_noti(const char *noti, int32_t status)
{
    return mdm::mdm_write_noti(mdm::status_directory, noti, status);
}

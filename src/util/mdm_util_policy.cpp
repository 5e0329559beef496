// SPDX-License-Identifier: Apache-2.0
#include "mdm/util_policy.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

#include <glib.h>

#include "log/log.hpp"

namespace mdm {
namespace {

constexpr int limit_numbers = 1 + MDM_PHONE_RES_LIMIT_VALUES;
constexpr guint parameters = 4;

bool is_limit_type(int32_t type)
{
    return static_cast<uint32_t>(type) <= 1;
}

// The number that a device's own 32-bit long would hold. A wider long saturates later. Q-LIMIT-3
int32_t saturated(long number)
{
    return static_cast<int32_t>(std::clamp<long>(number, std::numeric_limits<int32_t>::min(),
                                                 std::numeric_limits<int32_t>::max()));
}

// Reads up to seven numbers from the beginning of the text and stores them. Returns their count, or
// -1 if the text ends before the first, as the scanner does. Q-LIMIT-4
int scan_limit(const char *text, int32_t *limit_type, int32_t *limit_data)
{
    long scanned[limit_numbers] = {};  // Q-LIMIT-2
    // The format has the scanner's rules, and an overflow saturates. NOLINTNEXTLINE(cert-err34-c)
    const int count = std::sscanf(text, "%ld,%ld,%ld,%ld,%ld,%ld,%ld", &scanned[0], &scanned[1],
                                  &scanned[2], &scanned[3], &scanned[4], &scanned[5], &scanned[6]);
    if (count > 0) {  // Q-LIMIT-1
        *limit_type = saturated(scanned[0]);
        std::transform(scanned + 1, scanned + count, limit_data, saturated);
    }
    return count;
}

// A parameter is never negative. Q-LIMIT-5
int32_t parameter_of(const char *field)
{
    return std::max(0, saturated(std::strtol(field, nullptr, 10)));
}

// The steps between the argument check and the clean-up. The caller frees the vector.
int32_t parse_parameters(const Log &log, gchar **&token_vector, const char *text, int32_t &date_set,
                         int32_t &period, uint32_t &send_limit, uint32_t &recv_limit)
{
    MDM_INFO("Checking: \"%s\" == MDM_UTIL_POLICY_DEFAULT_EMPTY_STRING (\"%s\").", text,
             MDM_UTIL_POLICY_DEFAULT_EMPTY_STRING);
    if (g_strcmp0(text, MDM_UTIL_POLICY_DEFAULT_EMPTY_STRING) == 0) {  // Q-LIMIT-7
        MDM_INFO("we have empty data \n");                             // Q-LIMIT-8
        return MDM_RESULT_SUCCESS;
    }

    MDM_INFO("Splitting string against MDM_UTIL_POLICY_DELIM (\"%s\")", MDM_UTIL_POLICY_DELIM);
    token_vector = g_strsplit(text, MDM_UTIL_POLICY_DELIM, parameters);  // Q-LIMIT-6
    if (token_vector == nullptr) {
        MDM_CRITICAL("Unable to split string \"%s\", delimiter: \"%s\"!", text,
                     MDM_UTIL_POLICY_DELIM);
        return MDM_RESULT_FAILED;
    }
    const guint number_of_tokens = g_strv_length(token_vector);
    MDM_INFO("number_of_tokens == %u", number_of_tokens);
    if (number_of_tokens < parameters) {
        MDM_CRITICAL("Incorrect length of token vector from string \"%s\", delimiter: \"%s\"! "
                     "Expected: %u, got: %u.",
                     text, MDM_UTIL_POLICY_DELIM, parameters, number_of_tokens);
        return MDM_RESULT_FAILED;
    }

    date_set = parameter_of(token_vector[0]);
    period = parameter_of(token_vector[1]);
    send_limit = static_cast<uint32_t>(parameter_of(token_vector[2]));
    recv_limit = static_cast<uint32_t>(parameter_of(token_vector[3]));
    return MDM_RESULT_SUCCESS;
}

}  // namespace
}  // namespace mdm

int32_t mdm_phone_res_limit_serialize(int32_t limit_type, const int32_t *limit_data,
                                      char **serialized_data, uint32_t *serialized_data_size)
{
    const mdm::Log log(MDM_ORIGIN("mdm_phone_res_limit_serialize"));
    MDM_ENTER();
    MDM_FAIL_IF(!mdm::is_limit_type(limit_type), MDM_RESULT_INVALID_ARGUMENT,
                "Incorrect limit_type: %d!", limit_type);
    MDM_FAIL_IF(serialized_data == nullptr, MDM_RESULT_INVALID_ARGUMENT, "serialized_data == NULL");
    MDM_FAIL_IF(serialized_data_size == nullptr, MDM_RESULT_INVALID_ARGUMENT,
                "serialized_data_size == NULL");

    *serialized_data =
        g_strdup_printf("%d,%d,%d,%d,%d,%d,%d", limit_type, limit_data[0], limit_data[1],
                        limit_data[2], limit_data[3], limit_data[4], limit_data[5]);
    MDM_FAIL_IF(*serialized_data == nullptr, MDM_RESULT_OUT_OF_MEMORY, "*serialized_data == NULL");
    *serialized_data_size = static_cast<uint32_t>(std::strlen(*serialized_data) + 1);
    return MDM_EXIT(MDM_RESULT_SUCCESS);
}

int32_t mdm_phone_res_limit_deserialize(const char *serialized_data, int32_t *limit_type,
                                        int32_t *limit_data)
{
    const mdm::Log log(MDM_ORIGIN("mdm_phone_res_limit_deserialize"));
    MDM_ENTER();
    MDM_FAIL_IF(serialized_data == nullptr, MDM_RESULT_INVALID_ARGUMENT, "serialized_data == NULL");
    MDM_FAIL_IF(limit_type == nullptr, MDM_RESULT_INVALID_ARGUMENT, "limit_type == NULL");
    MDM_FAIL_IF(limit_data == nullptr, MDM_RESULT_INVALID_ARGUMENT, "limit_data == NULL");

    const int count = mdm::scan_limit(serialized_data, limit_type, limit_data);
    MDM_FAIL_IF(count != mdm::limit_numbers, MDM_RESULT_INVALID_ARGUMENT,
                "Error parsing input parameters: \"%s\", %d != %d", serialized_data, count,
                mdm::limit_numbers);
    MDM_FAIL_IF(!mdm::is_limit_type(*limit_type), MDM_RESULT_INVALID_ARGUMENT,
                "Incorrect limit type %d!", *limit_type);
    return MDM_EXIT(MDM_RESULT_SUCCESS);
}

int32_t mdm_phone_res_limit_of_data_calls_parse_parameters(const char *text, int32_t *p_date_set,
                                                           int32_t *p_period,
                                                           uint32_t *p_send_limit,
                                                           uint32_t *p_recv_limit)
{
    const mdm::Log log(MDM_ORIGIN("mdm_phone_res_limit_of_data_calls_parse_parameters"));
    MDM_ENTER();
    MDM_FAIL_IF(text == nullptr || p_date_set == nullptr || p_period == nullptr ||
                    p_send_limit == nullptr || p_recv_limit == nullptr,
                MDM_RESULT_INVALID_ARGUMENT,
                "Invalid parameter, at least one is NULL: p_date_set: %p, p_period: %p, "
                "p_send_limit: %p, p_recv_limit: %p",  // Q-LIMIT-10
                static_cast<void *>(p_date_set), static_cast<void *>(p_period),
                static_cast<void *>(p_send_limit), static_cast<void *>(p_recv_limit));

    gchar **token_vector = nullptr;
    const int32_t result = mdm::parse_parameters(log, token_vector, text, *p_date_set, *p_period,
                                                 *p_send_limit, *p_recv_limit);
    MDM_INFO("Cleaning up (token_vector == %p)", static_cast<void *>(token_vector));
    g_strfreev(token_vector);  // Q-LIMIT-9
    MDM_INFO("ret: %d, date set: %ld, period: %ld, send limit: %u, recv limit: %u", result,
             static_cast<long>(*p_date_set), static_cast<long>(*p_period), *p_send_limit,
             *p_recv_limit);
    return MDM_EXIT(result);
}

// SPDX-License-Identifier: Apache-2.0
#include "mdm/util.h"

#include <cctype>
#include <cstring>
#include <string_view>

#include "log/log.hpp"

namespace mdm {
namespace {

// One word for the whole list. The strings have no counts. Q-UTIL-1
constexpr size_t list_overhead = 4;

bool is_package_name_char(unsigned char byte)
{
    return std::isalnum(byte) != 0 || byte == '-' || byte == '.';
}

}  // namespace
}  // namespace mdm

int32_t mdm_get_list_data_size(GList *pkg_list)
{
    const mdm::Log log(MDM_ORIGIN("mdm_get_list_data_size"));  // Q-UTIL-5
    MDM_FAIL_IF(pkg_list == nullptr, 0, "pkg_list is NULL!");
    const GList *current = g_list_first(pkg_list);  // Q-UTIL-3
    MDM_FAIL_IF(current->data == nullptr, MDM_RESULT_INVALID_ARGUMENT, "current is NULL!");

    size_t bytes = mdm::list_overhead;
    for (; current != nullptr && current->data != nullptr; current = current->next) {  // Q-UTIL-2
        bytes += std::strlen(static_cast<const char *>(current->data));
    }
    const auto size = static_cast<int32_t>(bytes);
    MDM_INFO("size : %d", size);
    return size;
}

int32_t mdm_is_valid_package_name(const char *package_name)
{
    const mdm::Log log(MDM_ORIGIN("mdm_is_valid_package_name"));
    MDM_FAIL_IF(package_name == nullptr, 0, "package_name is NULL!");
    const std::string_view name = package_name;
    MDM_FAIL_IF(name.empty(), 0, "package_name is BLANK!");
    for (const char letter : name) {
        if (!mdm::is_package_name_char(static_cast<unsigned char>(letter))) {
            return 0;  // Q-UTIL-4
        }
    }
    return 1;
}

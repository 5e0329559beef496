// SPDX-License-Identifier: Apache-2.0
#include "ipc/category.hpp"

#include <array>
#include <iterator>

namespace mdm {
namespace {

#define MDM_ENUMERATOR(first, last, name, file) name,
enum class Row : uint8_t {
    none,
    MDM_CATEGORIES(MDM_ENUMERATOR, MDM_ENUMERATOR, MDM_NO_CATEGORY)  // with handlers of their own
    roaming_res,
    single_list,
    unread_list,
    count,
};

}  // namespace

// A row is a line.
// clang-format off
#define MDM_ROW(first, last, name, file) \
    {_set_##name, _get_##name, _size_of_##name, _free_##name, nullptr},
#define MDM_VALIDATED_ROW(first, last, name, file) \
    {_set_##name, _get_##name, _size_of_##name, _free_##name, _validate_##name},
constexpr ipc_handler_row handler_rows[] = {
    {nullptr, nullptr, nullptr, nullptr, nullptr},
    MDM_CATEGORIES(MDM_VALIDATED_ROW, MDM_ROW, MDM_NO_CATEGORY)
    {_set_roaming_res, _get_roaming_res, _size_of_roaming_res, _free_roaming,
     _validate_roaming_res},
    {_set_single_list, _get_single_list, _size_of_single_list, _free_single_list,
     _validate_single_list},
    {_set_single_list, _get_unread_list, _size_of_single_list, _free_single_list,
     _validate_single_list},
};
// clang-format on
static_assert(std::size(handler_rows) == static_cast<size_t>(Row::count));

#define MDM_NAMES_OF_SHARED(first, last, name, file, row) MDM_NAMES(#file, #name) "\0"
#define MDM_NAMES_OF(first, last, name, file) MDM_NAMES_OF_SHARED(first, last, name, file, name)
constexpr char category_names[] = MDM_CATEGORIES(MDM_NAMES_OF, MDM_NAMES_OF, MDM_NAMES_OF_SHARED);

constexpr std::array<TypeEntry, last_message_type + 1> type_entries = [] {
    std::array<TypeEntry, last_message_type + 1> entries{};
    uint16_t names = 0;
#define MDM_FILL_SHARED_TYPES(first, last, name, file, row)                          \
    static_assert(sizeof(#file #name "mdm_ipc_.cpp_size_of_") < Log::longest_origin, \
                  "too long for a line");                                            \
    for (size_t type = (first); type <= (last); ++type) {                            \
        entries[type] = {static_cast<uint8_t>(Row::row), names};                     \
    }                                                                                \
    names += sizeof(MDM_NAMES_OF_SHARED(first, last, name, file, row)) - 1;
#define MDM_FILL_TYPES(first, last, name, file) MDM_FILL_SHARED_TYPES(first, last, name, file, name)
    MDM_CATEGORIES(MDM_FILL_TYPES, MDM_FILL_TYPES, MDM_FILL_SHARED_TYPES)
    return entries;
}();

}  // namespace mdm

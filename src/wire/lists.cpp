// SPDX-License-Identifier: Apache-2.0
#include "wire/lists.hpp"

namespace mdm {

bool has_null_element(void *list)
{
    return g_list_find(g_list_first(static_cast<GList *>(list)), nullptr) != nullptr;
}

}  // namespace mdm

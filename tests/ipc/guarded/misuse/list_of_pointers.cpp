// SPDX-License-Identifier: Apache-2.0
// The type of the elements is not the type of the cells' data.
#include <mdm/guarded.hpp>

bool f(const GList *names)
{
    return *mdm::list<const char *>(names).begin() != nullptr;
}

// SPDX-License-Identifier: Apache-2.0
// A list of strings is no list of letters.
#include <mdm/guarded.hpp>

bool f(const GList *names)
{
    return *mdm::list<char>(names).begin() == 'a';
}

// SPDX-License-Identifier: Apache-2.0
// Nobody asks whether the bytes were refused.
#include <mdm/guarded.hpp>

void f(const unsigned char *bytes)
{
    mdm::open(bytes, 40);
}

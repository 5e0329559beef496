// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace mdm {

// Assigns the listed members of a value class, in the order of the list.
template <class Value, class... Member>
void assign(Value &to, const Value &from, Member Value::*...members)
{
    ((to.*members = from.*members), ...);
}

}  // namespace mdm

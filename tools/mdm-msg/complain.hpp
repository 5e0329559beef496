// SPDX-License-Identifier: Apache-2.0
//
// The lines on standard error, each of which begins with "mdm-msg: ", and the end of the program.
#pragma once

#include <string>

namespace mdm::msg {

// Prints one line. Bytes that a terminal would act on are escaped.
[[gnu::format(printf, 1, 2)]] void complain(const char *format, ...);

// Prints why a command was used wrongly and where its help is. Returns wrong_usage. `command` is
// null for the program itself.
[[gnu::format(printf, 2, 3)]] int wrong_usage_of(const char *command, const char *format, ...);

// Flushes standard output. Returns `status`; unreadable, with a line, if something could not be
// written.
int finish(int status);

}  // namespace mdm::msg

// SPDX-License-Identifier: Apache-2.0
//
// The sub-commands. Each has a source of its own.
#pragma once

namespace mdm::msg {

// What the program returns. Of several files, the largest counts.
enum ExitStatus : int {
    whole = 0,      // diff: no difference
    malformed = 1,  // diff: a difference
    wrong_usage = 2,
    unreadable = 3,  // or not writable
};

// argv[0] is the name of the sub-command.
using Command = int(int argc, char **argv);

Command run_show, run_json, run_make, run_check, run_diff, run_html, run_forms;

}  // namespace mdm::msg

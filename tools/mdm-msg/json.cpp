// SPDX-License-Identifier: Apache-2.0
#include "command.hpp"

namespace mdm::msg {

int run_json(int /*argc*/, char ** /*argv*/)
{
    return wrong_usage;
}

}  // namespace mdm::msg

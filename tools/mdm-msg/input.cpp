// SPDX-License-Identifier: Apache-2.0
#include "input.hpp"

#include <algorithm>
#include <fstream>
#include <iterator>

#include "command.hpp"
#include "complain.hpp"

namespace mdm::msg {

int for_each_message(const std::vector<std::string> &files, const InputOptions & /*options*/,
                     const std::function<int(const Input &)> &use)
{
    int status = whole;
    for (const std::string &file : files) {
        std::ifstream in(file, std::ios::binary);
        if (!in) {
            complain("%s: cannot be read", file.c_str());
            status = unreadable;
            continue;
        }
        const std::vector<char> bytes{std::istreambuf_iterator<char>(in), {}};
        status = std::max(
            status,
            use({file, {reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size()}, ""}));
    }
    return status;
}

}  // namespace mdm::msg

// SPDX-License-Identifier: Apache-2.0
#include "instructions.hpp"

#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace mdm::bench {

double InstructionCounter::total_of_dump()
{
    const std::string name = out_file_ + "." + std::to_string(++dumps_);
    std::ifstream dump(name);
    for (std::string word; dump >> word;) {
        double total = 0;
        if (word == "totals:" && dump >> total) {
            return total;
        }
    }
    std::fprintf(stderr, "callgrind has left no %s\n", name.c_str());
    std::abort();
}

}  // namespace mdm::bench

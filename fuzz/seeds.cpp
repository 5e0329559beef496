// SPDX-License-Identifier: Apache-2.0
//
// Writes a message of every category and every form into a directory, one file each, and beside it
// the same with every variation.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "message.hpp"
#include "support/messages.hpp"

namespace {

void write(const std::filesystem::path &path, const std::vector<uint8_t> &bytes)
{
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char *>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) {
        std::fprintf(stderr, "cannot write %s\n", path.c_str());
        std::exit(EXIT_FAILURE);
    }
}

}  // namespace

int main(int argc, char **argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s DIRECTORY\n", argv[0]);
        return EXIT_FAILURE;
    }
    const std::filesystem::path directory = argv[1];
    for (mdm::test::GoodMessage &message : mdm::test::good_messages()) {
        write(directory / message.name, message.bytes);
        message.bytes[mdm::fuzz::second_reserved_offset] = mdm::fuzz::every_one;
        write(directory / (message.name + "-varied"), message.bytes);
    }
    return EXIT_SUCCESS;
}

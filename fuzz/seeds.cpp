// SPDX-License-Identifier: Apache-2.0
//
// Writes a message of every category and every shape into a directory, one file each.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "support/shapes.hpp"

int main(int argc, char **argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s DIRECTORY\n", argv[0]);
        return EXIT_FAILURE;
    }
    for (const mdm::test::GoodMessage &message : mdm::test::good_messages()) {
        std::ofstream file(std::filesystem::path(argv[1]) / message.name, std::ios::binary);
        file.write(reinterpret_cast<const char *>(message.bytes.data()),
                   static_cast<std::streamsize>(message.bytes.size()));
        file.close();
        if (!file) {
            std::fprintf(stderr, "cannot write %s\n", message.name.c_str());
            return EXIT_FAILURE;
        }
    }
    return EXIT_SUCCESS;
}

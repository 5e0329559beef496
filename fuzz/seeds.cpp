// SPDX-License-Identifier: Apache-2.0
//
// Writes a message of every category and every form into a directory, one file each, and beside it
// the same with every variation. Or writes a fuzzer's dictionary.
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <string_view>

#include "message.hpp"
#include "support/format.hpp"
#include "support/messages.hpp"

namespace {

void write(const std::filesystem::path &path, const std::string &bytes)
{
    std::ofstream file(path, std::ios::binary);
    file << bytes;
    file.close();
    if (!file) {
        std::fprintf(stderr, "cannot write %s\n", path.c_str());
        std::exit(EXIT_FAILURE);
    }
}

void write_messages(const std::filesystem::path &directory)
{
    for (mdm::test::GoodMessage &message : mdm::test::good_messages()) {
        write(directory / message.name, {message.bytes.begin(), message.bytes.end()});
        message.bytes[mdm::fuzz::second_reserved_offset] = mdm::fuzz::every_one;
        write(directory / (message.name + "-varied"), {message.bytes.begin(), message.bytes.end()});
    }
}

// Small counts, lengths and sizes; huge ones, which no message reaches; all discriminators.
std::set<uint32_t> words()
{
    std::set<uint32_t> all = {0,          1,          2,          0x100,      0x40000000,
                              0x7FFFFFFF, 0x80000000, 0x80000001, 0xFFFFFFFE, 0xFFFFFFFF};
    for (const mdm::test::CategoryFormat &category : mdm::test::category_formats()) {
        for (const mdm::test::Form &form : category.forms) {
            all.insert(form.types.begin(), form.types.end());
        }
    }
    return all;
}

// Little-endian, as in a message.
std::string dictionary()
{
    std::string text;
    for (uint32_t word : words()) {
        text += '"';
        for (int i = 0; i < 4; ++i, word >>= 8) {
            std::array<char, sizeof "\\x00"> byte{};
            std::snprintf(byte.data(), byte.size(), "\\x%02x", word & 0xFF);
            text += byte.data();
        }
        text += "\"\n";
    }
    return text;
}

}  // namespace

int main(int argc, char **argv)
{
    if (argc == 2) {
        write_messages(argv[1]);
    } else if (argc == 3 && argv[1] == std::string_view("--dictionary")) {
        write(argv[2], dictionary());
    } else {
        std::fprintf(stderr, "usage: %s DIRECTORY\n       %s --dictionary FILE\n", argv[0],
                     argv[0]);
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}

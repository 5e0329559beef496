// SPDX-License-Identifier: Apache-2.0
#include "hex.hpp"

#include <numeric>

#include <gtest/gtest.h>

#include "text.hpp"

namespace mdm::msg::hex_test {
namespace {

// The message of which the programs have made the dumps below.
std::vector<uint8_t> message()
{
    return {0x3e, 0, 0,   0,   7,   0,   0,    0,   1, 0, 0, 0, 2,    0, 0, 0, 2, 0,
            0,    0, 'h', 'i', 3,   0,   0,    0,   6, 0, 0, 0, 7,    0, 0, 0, 4, 0,
            0,    0, 5,   0,   0,   0,   0x59, 1,   0, 0, 0, 0, 0,    0, 1, 0, 0, 0,
            4,    0, 0,   0,   'h', 'o', 'm',  'e', 8, 0, 0, 0, 0x2a, 0, 0, 0};
}

// "0a ff", or the error: "3:17: 'g' is no hex digit"
std::string read(std::string_view text)
{
    const HexText result = read_hex(text);
    if (result.error) {
        return std::to_string(result.error->line) + ":" + std::to_string(result.error->column) +
               ": " + result.error->reason;
    }
    return hex(result.bytes);
}

constexpr const char *is_other_dump =
    "this looks like a dump with offsets; use the output of 'xxd' or 'hexdump -C' instead";

TEST(HexText, HasManyWaysToSeparateBytes)
{
    for (const char *text :
         {"3e00aB07", "3e 00 ab 07", "3E:00:AB:07", "3e,00,ab,07", "0x3e, 0x00, 0xAB, 0x07,",
          "0X3e00 0xab07", R"(\x3e\x00\xab\x07)", "3e00\nab07\n", "3e\r\n00\r\n\r\nab\t07",
          "3e # 00\n#11\n00ab07# 1", "\\x3e \\x00#\nab07"}) {
        EXPECT_EQ(read(text), "3e 00 ab 07") << text;
    }
    for (const char *text : {"", "\n", "# nothing", " \n\t# 00\n"}) {
        EXPECT_EQ(read(text), "") << text;
    }
}

TEST(HexText, IsRefusedAtABadDigit)
{
    EXPECT_EQ(read("00 11\n# comment\n00 11 22 33 44 0g 55"), "3:17: 'g' is no hex digit");
    EXPECT_EQ(read("hello"), "1:1: 'h' is no hex digit");
    EXPECT_EQ(read("00-11"), "1:3: '-' is no hex digit");
    EXPECT_EQ(read("00 0x1y"), "1:7: 'y' is no hex digit");
    EXPECT_EQ(read("000x11"), "1:4: 'x' is no hex digit");
    EXPECT_EQ(read("00 \\n"), "1:4: '\\' is no hex digit");
    EXPECT_EQ(read("00 \u00e9"), "1:4: '\u00e9' is no hex digit");
    EXPECT_EQ(read("00\xff"), "1:3: '\\xff' is no hex digit");
    EXPECT_EQ(read("00\x1b[2J"), "1:3: '\\x1b' is no hex digit");
    EXPECT_EQ(read(std::string_view("00\0", 3)), "1:3: '\\x00' is no hex digit");
}

TEST(HexText, IsRefusedAtAnOddDigit)
{
    EXPECT_EQ(read("00 11 2"), "1:7: an odd number of digits");
    EXPECT_EQ(read("00 112 33"), "1:6: an odd number of digits");
    EXPECT_EQ(read("00\n0x1, 0x22"), "2:3: an odd number of digits");
    EXPECT_EQ(read(R"(\x1\x22)"), "1:3: an odd number of digits");
    EXPECT_EQ(read("0\n0"), "1:1: an odd number of digits");
    EXPECT_EQ(read("00 0x"), "1:5: no digits follow");
    EXPECT_EQ(read("00 \\x, 11"), "1:5: no digits follow");
}

TEST(HexText, MayBeTheOutputOfXxd)
{
    const std::string bytes = hex(message());
    EXPECT_EQ(read("00000000: 3e00 0000 0700 0000 0100 0000 0200 0000  >...............\n"
                   "00000010: 0200 0000 6869 0300 0000 0600 0000 0700  ....hi..........\n"
                   "00000020: 0000 0400 0000 0500 0000 5901 0000 0000  ..........Y.....\n"
                   "00000030: 0000 0100 0000 0400 0000 686f 6d65 0800  ..........home..\n"
                   "00000040: 0000 2a00 0000                           ..*...\n"),
              bytes);
    EXPECT_EQ(read("3e00000007000000010000000200000002000000686903000000060000\r\n"
                   "000700000004000000050000005901000000000000010000000400000068\r\n"
                   "6f6d65080000002a000000\r\n"),
              bytes);
    EXPECT_EQ(read("00000000: 3e 00 00 00 07  >....\n00000005: 23 20 20  #\n"),
              "3e 00 00 00 07 23 20 20");
    EXPECT_EQ(read("# a cut one\n\n00000010: 3E000000  >...\n00000014: 226922  \"i\"\n"),
              "3e 00 00 00 22 69 22");
}

TEST(HexText, MayBeTheOutputOfHexdump)
{
    EXPECT_EQ(
        read("00000000  3e 00 00 00 07 00 00 00  01 00 00 00 02 00 00 00  |>...............|\n"
             "00000010  02 00 00 00 68 69 03 00  00 00 06 00 00 00 07 00  |....hi..........|\n"
             "00000020  00 00 04 00 00 00 05 00  00 00 59 01 00 00 00 00  |..........Y.....|\n"
             "00000030  00 00 01 00 00 00 04 00  00 00 68 6f 6d 65 08 00  |..........home..|\n"
             "00000040  00 00 2a 00 00 00                                 |..*...|\n"
             "00000046\n"),
        hex(message()));
    EXPECT_EQ(
        read("00000000  7c 23 22                                          ||#\"|\n00000003\n"),
        "7c 23 22");
}

TEST(HexText, HasAsManyCharactersAsBytesInARowOfHexdump)
{
    EXPECT_EQ(read("00000000  3e 00 |0 07  |>...|\n"), "1:17: '|' is no hex digit");
    EXPECT_EQ(read("00000000  3e 00  |>..|\n"), "1:18: '|' is no hex digit");
    EXPECT_EQ(read("00000000  3e 00 |0 07\n"), "1:17: '|' is no hex digit");
    EXPECT_EQ(read("00000000  3e 00  |x.|  \n"), "3e 00");  // a byte was changed by hand
    EXPECT_EQ(read("00000000  3e 00  |>\n"), "3e 00");
}

TEST(HexText, MayHaveRepeatedRows)
{
    constexpr const char *hexdump =
        "00000000  3e 00 00 00 07 00 00 00  01 00 00 00 02 00 00 00  |>...............|\n"
        "00000010  61 61 61 61 61 61 61 61  61 61 61 61 61 61 61 61  |aaaaaaaaaaaaaaaa|\n"
        "*\n"
        "00000040  61 61                                             |aa|\n"
        "00000042\n";
    const HexText result = read_hex(hexdump);
    ASSERT_FALSE(result.error);
    ASSERT_EQ(result.bytes.size(), 0x42U);
    EXPECT_EQ(std::accumulate(result.bytes.begin() + 16, result.bytes.end(), size_t{0}),
              size_t{'a'} * 50);

    const HexText zeros = read_hex("00000000: 0000 0000 0000 0000 0000 0000 0000 0000  ......\n"
                                   "*\n"
                                   "00000050: 0000                                     ..\n");
    EXPECT_EQ(zeros.bytes, std::vector<uint8_t>(0x52)) << zeros.error->reason;
}

TEST(HexText, MayNotRepeatRowsWithoutEnd)
{
    const std::string row =
        "00000000  00 00 00 00 00 00 00 00  00 00 00 00 00 00 00 00  |................|\n";
    EXPECT_EQ(read(row + "*\n"), "2:1: no row follows '*', so the number of its rows is unknown");
    EXPECT_EQ(read(row + "*\nfffffff0\n"),
              "3:1: '*' stands for too many rows; at most 1 MiB is repeated");
    EXPECT_EQ(read_hex(row + "*\n00100010\n").bytes.size(), (1U << 20) + 16);
    EXPECT_EQ(read(row + "*\n00100020\n"),
              "3:1: '*' stands for too many rows; at most 1 MiB is repeated");
    EXPECT_EQ(read(row + "*\n00000015\n"), "3:1: this row does not follow the row in front of it");
    EXPECT_EQ(read(row + "*\n00000010\n"), "3:1: this row does not follow the row in front of it");
    EXPECT_EQ(read("*\n" + row), "1:1: '*' is no hex digit");
}

TEST(HexText, IsADumpWithAllItsRows)
{
    EXPECT_EQ(read("00000000: 0011  ..\n00000004: 2233  \"3\n"),
              "2:1: this row does not follow the row in front of it");
    EXPECT_EQ(read("00000000  00 11  |..|\n00000003\n"),
              "2:1: this row does not follow the row in front of it");
    EXPECT_EQ(read("00000000: 0011  ..\n00000000: 2233  \"3\n"), "00 11 22 33");
    EXPECT_EQ(read("00000000: 0011  ..\n22 33\n"),
              "2:1: this is no row of the dump that begins above");
    EXPECT_EQ(read("22 33\n00000000: 0011  ..\n"), "2:1: a row of a dump stands behind other text");
    EXPECT_EQ(read("00000000: 0011 2g  ...\n"), "1:17: 'g' is no hex digit");
    EXPECT_EQ(read("00000000: 0011 222  ...\n"), "1:18: an odd number of digits");
    EXPECT_EQ(read("00000000  00 1g  |..|\n"), "1:15: 'g' is no hex digit");
    EXPECT_EQ(read("00000000  00 111  |..|\n"), "1:16: an odd number of digits");
}

TEST(HexText, IsNoDumpOfWordsInAnUnknownOrder)
{
    EXPECT_EQ(read("0000000 003e 0000 0007 0000 0001 0000 0002 0000\n"),
              std::string("1:1: ") + is_other_dump);
    EXPECT_EQ(read("0000000 000076 000000 000007 000000\n"), std::string("1:1: ") + is_other_dump);
    EXPECT_EQ(read("000000 3e 00 00 00 07 00 00 00 01 00 00 00 02 00 00 00\n"
                   "000010 02 00 00 00\n"),
              std::string("2:1: ") + is_other_dump);
    EXPECT_EQ(read("0x0000:  3e00 0000\n0x0004:  0700\n"), std::string("2:1: ") + is_other_dump);
    EXPECT_EQ(read("0000 3e00\n0002 0000\n"), std::string("2:1: ") + is_other_dump);
    EXPECT_EQ(read("0000 3e00\n0003 0000\n"), "00 00 3e 00 00 03 00 00");
    EXPECT_EQ(read("00000000: 0000003e 00000007 00000001 00000002  >...............\n"),
              "1:1: the bytes of the words are reversed; use xxd without -e");
}

TEST(HexText, WarnsIfTheCharactersOfARowAreOthers)
{
    EXPECT_EQ(read_hex("00000000: 6162 6364  abcd\n").warning, "");
    EXPECT_EQ(read_hex("00000000: 6162 6364\n").warning, "");
    EXPECT_EQ(read_hex("00000000: 6162 6364  abcd\n00000004: 6165 6364  abcd\n").warning,
              "the characters at the end of line 2 are not those of its bytes");
}

TEST(HexText, MayBeTheOutputOfStrace)
{
    const std::string escapes =
        R"(\x3e\x00\x00\x00\x07\x00\x00\x00\x01\x00\x00\x00\x02\x00\x00\x00\x02\x00\x00\x00\x68)"
        R"(\x69\x03\x00\x00\x00\x06\x00\x00\x00\x07\x00\x00\x00\x04\x00\x00\x00\x05\x00\x00\x00)"
        R"(\x59\x01\x00\x00\x00\x00\x00\x00\x01\x00\x00\x00\x04\x00\x00\x00\x68\x6f\x6d\x65)"
        R"(\x08\x00\x00\x00\x2a\x00\x00\x00)";
    const std::string bytes = hex(message());
    EXPECT_EQ(read("sendto(3, \"" + escapes + "\", 70, 0, NULL, 0) = 70\n+++ exited with 0 +++\n"),
              bytes);
    EXPECT_EQ(read("[pid 12524] 18:59:47.544246 recvfrom(6, \"" + escapes +
                   "\", 100, 0, 0x7ffc3af42770, [110 => 0]) = 70\n"),
              bytes);
    EXPECT_EQ(read("sendto(5, \"" + escapes +
                   "\", 70, 0, {sa_family=AF_UNIX, "
                   R"(sun_path="\x2f\x74\x6d\x70\x2f\x6e\x6f\x73\x75\x63\x68"}, 14) = -1 ENOENT )"
                   "(No such file or directory)\n"),
              bytes);
    EXPECT_EQ(read("bind(6, {sa_family=AF_UNIX, sun_path=@\"\\x61\\x62\\x63\"}, 6) = 0\n"
                   "sendto(5, \"" +
                   escapes + "\", 70, 0, {sa_family=AF_UNIX, sun_path=@\"\\x61\\x62\"}, 6) = 70\n" +
                   "--- SIGCHLD {si_signo=SIGCHLD, si_pid=17683, si_status=0} ---\n"),
              bytes);
    EXPECT_EQ(
        read(R"(sendto(5, ">\0\0\0\7\0\0\0\1\0\0\0\2\0\0\0\2\0\0\0hi\3\0\0\0\6\0\0\0\7\0\0\0)"
             R"(\4\0\0\0\5\0\0\0Y\1\0\0\0\0\0\0\1\0\0\0\4\0\0\0home\10\0\0\0*\0\0\0", 70, 0, )"
             R"({sa_family=AF_UNIX, sun_path="/tmp/nosuch"}, 14) = 70)"),
        bytes);
}

TEST(HexText, TakesTheStringsOfStrace)
{
    EXPECT_EQ(read(R"(sendmsg(3, {msg_name=NULL, msg_iov=[{iov_base="\x3e\x00", iov_len=2}, )"
                   R"({iov_base="\x07", iov_len=1}], msg_iovlen=2, msg_flags=0}, 0) = 3)"),
              "3e 00 07");
    EXPECT_EQ(read("write(3, \"\\x01\\x02\\x03\", 3) = 1\nwrite(3, \"\\x02\\x03\", 2) = 2\n"),
              "01 02 03");
    EXPECT_EQ(
        read("read(3, \"\\x01\", 9) = 1\n<... read resumed>\"\\x02\", 9) = 1\nread(3, \"\", 1)"
             " = 0\n"),
        "01 02");
    EXPECT_EQ(read(R"("\x00\n\t\r\\\"\1\1772" "\e")"), "00 0a 09 0d 5c 22 01 7f 32 1b");
    EXPECT_EQ(read("[pid 7] read(3,  <unfinished ...>\n[pid 8] write(4, \"\\x01\", 1 <unfinished "
                   "...>\n[pid 7] <... read resumed>\"\\x02\", 9) = 1\n"
                   "[pid 8] <... write resumed>) = 1\n"),
              "01 02");
    EXPECT_EQ(read("poll([{fd=3, events=POLLIN}], 1, 1000) = 1\nread(3, \"a#\", 9) = 2\n"),
              "61 23");
    EXPECT_EQ(read("read(3, \"\\x3g\", 9) = 1\n"), "1:13: 'g' is no hex digit");
    EXPECT_EQ(read("read(3, \"\\q\", 9) = 1\n"), "1:10: an unknown escape");
    EXPECT_EQ(read("read(3, \"\\x33"), "1:9: the string has no end");
    EXPECT_EQ(read("read(3, \"\\x3"), "1:13: the string has no end");
    EXPECT_EQ(read("3e00\nread(3, \"\\x33\", 1) = 1"), "1:1: this is no line of strace");
}

TEST(HexText, MayHaveRemarksOfStrace)
{
    EXPECT_EQ(read("strace: Process 7 attached\nstrace: Process 8 attached with 2 threads\n"
                   "[pid 7] write(4, \"\\x01\\x02\", 2) = 2\n"
                   "strace: Process 7 detached\n <detached ...>\n"),
              "01 02");
    EXPECT_EQ(read("[pid 7] vfork(strace: Process 8 attached\r\n <unfinished ...>\r\n"
                   "[pid 8] write(4, \"\\x03\", 1) = 1\r\n[pid 7]  <detached ...>\r\n"),
              "03");
}

TEST(HexText, TakesNoStringsOfOtherCalls)
{
    const std::string message = "write(4, \"\\x01\\x02\", 2) = 2\n";
    for (const char *line : {R"(readlink("/proc/self/exe", "/usr/bin/agent", 4095) = 14)",
                             R"(readlinkat(3, "a", "b", 9) = 1)", R"(sendfile(1, 2, "x", 9) = 1)",
                             R"(openat(AT_FDCWD, "file", O_RDONLY) = 3)"}) {
        EXPECT_EQ(read(line + ("\n" + message)), "01 02") << line;
    }
    EXPECT_EQ(
        read(R"(sendto(5<UNIX-STREAM:[17->18,"/run/server"]>, "\x01\x02", 2, 0, NULL, 0) = 2)"),
        "01 02");
}

TEST(HexText, TakesAllBytesOfCallsThatCountMessages)
{
    EXPECT_EQ(read(R"(sendmmsg(3, [{msg_hdr={msg_iov=[{iov_base="\x01\x02", iov_len=2}], )"
                   R"(msg_iovlen=1}, msg_len=2}], 1, 0) = 1)"),
              "01 02");
}

TEST(HexText, TakesAFailedCallOnlyIfThereIsNoOther)
{
    const std::string failed = "sendto(3, \"\\x01\", 1, 0, NULL, 0) = -1 EAGAIN (again)\n";
    EXPECT_EQ(read(failed), "01");
    EXPECT_EQ(read(failed + failed), "01");
    EXPECT_EQ(read_hex(failed).warning, "the call in line 1 has failed");
    EXPECT_EQ(read(failed + "sendto(3, \"\\x01\", 1, 0, NULL, 0) = 1\n"), "01");
}

TEST(HexText, TakesTheResultBehindBlanks)
{
    const std::string failed = "write(3, \"\\x01\\x02\", 2)              = -1 EAGAIN (again)\n";
    EXPECT_EQ(read(failed + "write(3, \"\\x01\\x02\", 2)              = 1\n"), "01");
    EXPECT_EQ(read("write(3, \"\\x01\", 1) = ? ERESTARTSYS (To be restarted)\n"
                   "write(3, \"\\x02\", 1) = 1\n"),
              "02");
    EXPECT_EQ(read("write(3, \") = -1 \\x02\", 8) = 8\n"), "29 20 3d 20 2d 31 20 02");
}

TEST(HexText, KnowsTheNameOfACallThatGoesOn)
{
    EXPECT_EQ(read("[pid 7] <... readlink resumed>\"/usr/bin/agent\", 4095) = 14\n"
                   "[pid 7] <... recvmmsg resumed>[{iov_base=\"\\x01\\x02\"}], 1) = 1\n"
                   "[pid 7] <... read resumed>\"a>, b\", 9) = 5\n"),
              "01 02 61 3e 2c 20 62");
}

TEST(HexText, HasNoOctalEscapesAbove377)
{
    EXPECT_EQ(read("\"\\377\""), "ff");
    EXPECT_EQ(read("\"\\400\""), "1:2: an unknown escape");
}

TEST(HexText, IsNoJson)
{
    EXPECT_EQ(read(" {\"header\": {\"type\": 1}}"),
              "1:2: this is JSON; 'mdm-msg make' makes a message of it");
}

TEST(HexText, EndsWhereStraceHasCutIt)
{
    const HexText result = read_hex("read(3, \"\\x01\", 1) = 1\n"
                                    "sendto(3, \"\\x3e\\x00\\x00\"..., 70, 0, NULL, 0) = 70\n"
                                    "sendto(3, \"\\x3e\\x00\\x00\"..., 70, 0, NULL, 0) = 70\n");
    EXPECT_FALSE(result.error);
    EXPECT_EQ(hex(result.bytes), "01 3e 00 00");
    EXPECT_EQ(result.warning, "strace has cut the string in line 2, and the bytes end there; call "
                              "strace with -s 65536");
}

}  // namespace
}  // namespace mdm::msg::hex_test

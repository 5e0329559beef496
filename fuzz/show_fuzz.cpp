// SPDX-License-Identifier: Apache-2.0
//
// What mdm-msg prints of any bytes. Nothing in it acts on a terminal. The bytes that it shows are
// read again, and are those that were shown. A whole message comes back from its JSON, and the JSON
// of a malformed one makes no message. The page is whole. If texts are hidden, what is printed of a
// whole message does not depend on them. Messages differ exactly if their bytes do.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "compare.hpp"
#include "hex.hpp"
#include "html.hpp"
#include "json_message.hpp"
#include "message.hpp"
#include "show.hpp"
#include "text.hpp"

namespace mdm::fuzz {
namespace {

std::string shown(const Bytes &bytes, const msg::ShowOptions &options)
{
    char *text = nullptr;
    size_t size = 0;
    std::FILE *out = open_memstream(&text, &size);
    msg::show_message(out, bytes, options);
    std::fclose(out);
    std::string copy(text, size);
    std::free(text);
    return copy;
}

// Every line is as printable() would write it.
bool is_inert(std::string_view text)
{
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        if (msg::printable(line) != line) {
            return false;
        }
        text.remove_prefix(std::min(text.size(), line.size() + 1));
    }
    return true;
}

// The bytes of the lines, each of which begins with an offset.
std::string bytes_column(std::string_view text)
{
    std::string column;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(text.size(), line.size() + 1));
        const size_t begin = line.find("  ");
        if (line.starts_with("0x") && begin != std::string_view::npos) {
            const std::string_view bytes = line.substr(begin + 2);
            column += bytes.substr(0, bytes.find("  "));
            column += '\n';
        }
    }
    return column;
}

void promise_shown(const Bytes &bytes)
{
    const std::string full = shown(bytes, {.full = true});
    promise(is_inert(full), "nothing acts on a terminal");
    const msg::HexText again = msg::read_hex(bytes_column(full));
    promise(!again.error && again.bytes == bytes, "the bytes that are shown are the bytes");
    promise(is_inert(shown(bytes, {.hide_texts = true, .any_length = true})),
            "nothing acts on a terminal if texts are hidden");
}

void promise_json(const Bytes &bytes)
{
    for (const bool is_pretty : {false, true}) {
        const msg::MessageJson json = msg::to_json(bytes, is_pretty);
        promise(is_inert(json.text), "no JSON acts on a terminal");
        const msg::MadeMessages made = msg::from_json(json.text);
        if (json.fault) {
            promise(made.messages.empty() && !made.error.empty(),
                    "a malformed message is not made");
        } else {
            promise(made.error.empty() && made.messages.size() == 1 && made.messages[0] == bytes,
                    "the JSON makes the bytes again");
        }
    }
}

// Compares a whole message with one that has other letters in its texts, its raw bytes and the
// bytes that belong to no field.
void promise_hidden(const Bytes &bytes)
{
    Bytes other = bytes;
    const auto fault = msg::inspect(bytes, [&](const ipc_part_t &part) {
        for (uint32_t i = 0; i < part.length; ++i) {
            other[static_cast<size_t>(part.bytes - bytes.data()) + i] ^= 0x15;
        }
    });
    if (fault) {
        return;
    }
    const msg::ShowOptions options = {.full = true, .hide_texts = true};
    promise_same(shown(bytes, options), shown(other, options), "hidden texts are not shown");
    promise_same(msg::page_of({"bytes", bytes, ""}, true).html,
                 msg::page_of({"bytes", other, ""}, true).html, "hidden texts are in no page");
}

void promise_page(const Bytes &bytes)
{
    const msg::Page page = msg::page_of({"bytes", bytes, ""}, false);
    promise(page.html.ends_with("</html>\n"), "the page is whole");
    promise(is_inert(page.html), "no page has control characters");
}

bool differ(const Bytes &a, const Bytes &b, bool all)
{
    bool found = false;
    msg::compare(a, b, all, [&](msg::Mark mark, const std::string &text) {
        promise(is_inert(text), "no difference acts on a terminal");
        found |= mark != msg::Mark::same && mark != msg::Mark::note;
    });
    return found;
}

void promise_differences(const Bytes &bytes)
{
    promise(!differ(bytes, bytes, true), "a message does not differ from itself");
    if (bytes.empty()) {
        return;
    }
    const size_t place =
        size_t{byte_at(bytes, first_reserved_offset)} << 8 | byte_at(bytes, second_reserved_offset);
    Bytes other = bytes;
    other[place % bytes.size()] ^= 1;
    promise(differ(bytes, other, false), "another byte is a difference");
    other.resize(bytes.size() / 2);
    promise(differ(other, bytes, false), "missing bytes are a difference");
}

}  // namespace
}  // namespace mdm::fuzz

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using namespace mdm::fuzz;
    if (size > largest_message) {
        return 0;
    }
    const Silence silence;
    const Bytes bytes(data, data + size);
    promise_shown(bytes);
    promise_json(bytes);
    promise_page(bytes);
    promise_hidden(bytes);
    promise_differences(bytes);
    return 0;
}

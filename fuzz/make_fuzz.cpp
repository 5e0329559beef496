// SPDX-License-Identifier: Apache-2.0
//
// Texts that mdm-msg reads: JSON and hex text. A text makes messages or gives a reason. A message
// that is made can be opened, and its JSON makes it again.
#include <string>
#include <string_view>

#include "hex.hpp"
#include "json_message.hpp"
#include "support.hpp"

namespace mdm::fuzz {
namespace {

void promise_made(std::string_view text)
{
    const msg::MadeMessages made = msg::from_json(text);
    promise(made.error.empty() || made.messages.empty(), "an error makes nothing");
    for (const Bytes &message : made.messages) {
        const msg::MessageJson json = msg::to_json(message, false);
        promise(!json.fault, "what is made can be opened");
        const msg::MadeMessages again = msg::from_json(json.text);
        promise(again.messages.size() == 1 && again.messages[0] == message,
                "its JSON makes it again");
    }
}

void promise_hex(std::string_view text)
{
    const msg::HexText hex = msg::read_hex(text);
    if (hex.error) {
        promise(hex.error->line >= 1 && hex.error->column >= 1 && !hex.error->reason.empty(),
                "a bad digit has a place");
        return;
    }
    promise(hex.bytes.size() <= text.size() + msg::most_repeated,
            "a byte has at least one character, or is repeated");
    const msg::HexText again = msg::read_hex(msg::hex(hex.bytes));
    promise(!again.error && again.bytes == hex.bytes, "the bytes are read again");
}

}  // namespace
}  // namespace mdm::fuzz

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using namespace mdm::fuzz;
    const Silence silence;
    const Block block({data, size});  // without a terminator
    const std::string_view text(block.text(), size);
    promise_made(text);
    promise_hex(text);
    return 0;
}

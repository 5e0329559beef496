// SPDX-License-Identifier: Apache-2.0
//
// The page around the bytes and the fields.
#include <glib.h>

#include "html.hpp"
#include "html_parts.hpp"
#include "parts.hpp"

namespace mdm::msg {
namespace {

// What a browser compares the style and the script with before it uses them.
std::string checksum(std::string_view text)
{
    GChecksum *sum = g_checksum_new(G_CHECKSUM_SHA256);
    g_checksum_update(sum, reinterpret_cast<const guchar *>(text.data()),
                      static_cast<gssize>(text.size()));
    guint8 digest[32];
    gsize size = sizeof digest;
    g_checksum_get_digest(sum, digest, &size);
    g_checksum_free(sum);
    gchar *base64 = g_base64_encode(digest, size);
    std::string source = std::string("'sha256-") + base64 + "'";
    g_free(base64);
    return source;
}

struct Subject {
    std::string heading;  // the form, or what is known of it
    std::string numbers;  // that select it
};

Subject subject_of(const std::vector<ipc_part_t> &parts)
{
    Subject subject{"no message type", ""};
    uint8_t type = 0;
    for (const ipc_part_t &part : parts) {
        if (std::string_view(part.path) == "header.type") {
            type = static_cast<uint8_t>(part.number);
            subject.heading = ipc_category_name(type);
            subject.numbers = "message type " + std::to_string(type) + ", ";
        } else if (is_discriminator(part)) {
            subject.heading = ipc_form_name(type, part.number);
            subject.numbers += "discriminator " + std::to_string(number_of(part)) + ", ";
            break;
        }
    }
    if (subject.heading == "none") {
        subject.heading = "no category";
    }
    return subject;
}

std::string head(const std::string &title)
{
    return "<!DOCTYPE html>\n"
           "<html lang=\"en\" dir=\"ltr\">\n"
           "<head>\n"
           "<meta charset=\"utf-8\">\n"
           "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src " +
           checksum(page_style) + "; script-src " + checksum(page_script) +
           "; base-uri 'none'; form-action 'none'\">\n"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
           "<meta name=\"color-scheme\" content=\"light dark\">\n"
           "<meta name=\"referrer\" content=\"no-referrer\">\n"
           "<title>" +
           title + "</title>\n<style>" + std::string(page_style) +
           "</style>\n"
           "</head>\n";
}

std::string header(const Input &input, const Inspected &message, const Subject &subject)
{
    std::string out = "<header>\n<h1>" + escaped(subject.heading) + "</h1>\n<p>" +
                      escaped(subject.numbers) + counted(message.bytes.size(), "byte") +
                      " in <bdi>" + escaped(printable(input.name)) + "</bdi></p>\n";
    if (message.fault) {
        out += R"(<p class="broken"><strong>Malformed:</strong> <a href="#fault">)" +
               escaped(sentence(*message.fault)) + "</a></p>\n";
    } else {
        out += "<p class=\"whole\"><strong>Whole</strong></p>\n";
    }
    if (message.hides_texts) {
        out += "<p class=\"note\">Texts and raw bytes are hidden. Their lengths are shown.</p>\n";
    } else if (!input.warning.empty()) {
        out += "<p class=\"note\">" + escaped(printable(input.warning)) + "</p>\n";
    }
    return out + "</header>\n";
}

}  // namespace

std::string escaped(std::string_view text)
{
    std::string out;
    out.reserve(text.size());
    for (const char letter : text) {
        switch (letter) {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '"':
            out += "&quot;";
            break;
        case '\'':
            out += "&#39;";
            break;
        default:
            out += letter;
        }
    }
    return out;
}

char class_of(ipc_part_kind_t kind)
{
    switch (kind) {
    case IPC_PART_U8:
    case IPC_PART_U32:
    case IPC_PART_I32:
        return 'n';
    case IPC_PART_COUNT:
        return 'c';
    case IPC_PART_STR:
        return 's';
    case IPC_PART_BYTES:
        return 'b';
    case IPC_PART_RESERVED:
    case IPC_PART_PADDING:
        return 'u';
    case IPC_PART_REST:
        break;
    }
    return 'r';
}

std::optional<size_t> undecoded_from(const Inspected &message)
{
    if (!message.fault) {
        return std::nullopt;
    }
    const bool has_rest = !message.parts.empty() && message.parts.back().kind == IPC_PART_REST;
    return has_rest ? message.parts.back().offset : message.bytes.size();
}

Page page_of(const Input &input, bool hides_texts)
{
    Inspected message{input.bytes, {}, std::nullopt, hides_texts};
    message.fault = inspect(input.bytes, [&](const ipc_part_t &part) {  //
        message.parts.push_back(part);
    });
    const Subject subject = subject_of(message.parts);
    std::string out = head(escaped(subject.heading + ": " + printable(input.name)));
    out += "<body>\n" + header(input, message, subject);
    out += "<main>\n<section id=\"bytes\" aria-labelledby=\"bytes-heading\" tabindex=\"0\">\n"
           "<h2 id=\"bytes-heading\">Bytes</h2>\n";
    append_bytes(out, message);
    out += "</section>\n<section id=\"fields\" aria-labelledby=\"fields-heading\">\n"
           "<h2 id=\"fields-heading\">Fields</h2>\n";
    append_fields(out, message);
    out += "</section>\n</main>\n<footer id=\"bar\" role=\"status\" hidden></footer>\n<script>";
    out += page_script;
    out += "</script>\n</body>\n</html>\n";
    return {out, message.fault};
}

}  // namespace mdm::msg

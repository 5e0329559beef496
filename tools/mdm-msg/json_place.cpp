// SPDX-License-Identifier: Apache-2.0
#include "json_place.hpp"

#include <algorithm>

#include <glib.h>

#include "text.hpp"

namespace mdm::msg {
namespace {

std::vector<std::string_view> names_in(std::string_view path)
{
    std::vector<std::string_view> names;
    for (size_t dot = path.find('.'); dot != std::string_view::npos; dot = path.find('.')) {
        names.push_back(path.substr(0, dot));
        path.remove_prefix(dot + 1);
    }
    names.push_back(path);
    return names;
}

bool is_identifier(std::string_view name)
{
    return !name.empty() && g_ascii_isdigit(name.front()) == 0 &&
           std::all_of(name.begin(), name.end(),
                       [](char letter) { return g_ascii_isalnum(letter) != 0 || letter == '_'; });
}

void append_name(std::string &path, std::string_view name)
{
    if (is_identifier(name)) {
        path += '.';
        path += name;
        return;
    }
    std::string escaped;
    for (const char letter : name) {
        if (letter == '\'' || letter == '\\') {
            escaped += '\\';
        }
        escaped += letter;
    }
    path += "['" + printable(escaped) + "']";
}

}  // namespace

JsonPlace JsonPlaces::of(const ipc_part_t &part)
{
    const std::vector<std::string_view> names = names_in(part.path);
    if (names.size() == 1) {  // "padding" and "rest"
        return {{names[0]}};
    }
    JsonPlace place = {{names[0] == "header" ? "header" : "body"}};
    size_t first = 1;
    if (part.element < 0) {
        list_ = part.kind == IPC_PART_COUNT ? names[1] : list_;
    } else {
        place.push_back({names.size() == 2 ? names[1] : list_});
        place.push_back({{}, part.element});
        first = 2;
    }
    for (; first < names.size(); ++first) {
        place.push_back({names[first]});
    }
    if (part.inner >= 0) {
        place.push_back({{}, part.inner});
    }
    return place;
}

std::string json_path(const JsonPlace &place)
{
    std::string path = "$";
    for (const JsonStep &step : place) {
        if (step.position >= 0) {
            path += '[' + std::to_string(step.position) + ']';
        } else {
            append_name(path, step.name);
        }
    }
    return path;
}

}  // namespace mdm::msg

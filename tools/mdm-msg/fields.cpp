// SPDX-License-Identifier: Apache-2.0
#include "fields.hpp"

#include "parts.hpp"

namespace mdm::msg {
namespace {

std::vector<std::string> names_of(const ipc_part_t &part)
{
    std::vector<std::string> names;
    const std::string name = name_of(part);
    size_t begin = 0;
    for (size_t dot = name.find('.'); dot != std::string::npos; dot = name.find('.', begin)) {
        names.push_back(name.substr(begin, dot - begin));
        begin = dot + 1;
    }
    names.push_back(name.substr(begin));
    return names;
}

std::string without_position(const std::string &name)
{
    return name.substr(0, name.find('['));
}

// The list or record that the last part belongs to, or a new one.
Field &last_or_new(std::vector<Field> &fields, Field::Kind kind, const std::string &name,
                   size_t part)
{
    const bool goes_on = !fields.empty() && fields.back().kind == kind &&
                         (kind == Field::Kind::list || fields.back().name == name);
    if (!goes_on) {
        fields.push_back({kind, name, part, part});
    }
    fields.back().end = part + 1;
    return fields.back();
}

bool is_element_of(const ipc_part_t &part, const ipc_part_t &count)
{
    return count.element < 0 ? part.element == 0 : part.element == count.element && part.inner == 0;
}

bool begins_list(const std::vector<ipc_part_t> &parts, size_t index)
{
    return parts[index].kind == IPC_PART_COUNT && index + 1 < parts.size() &&
           is_element_of(parts[index + 1], parts[index]);
}

void append(std::vector<Field> &fields, const std::vector<ipc_part_t> &parts, size_t index)
{
    const ipc_part_t &part = parts[index];
    const std::vector<std::string> names = names_of(part);
    std::vector<Field> *at = &fields;
    for (size_t depth = 0; depth < names.size(); ++depth) {
        const std::string &name = names[depth];
        if ((depth == 1 && part.element >= 0) || (depth == 2 && part.inner >= 0)) {
            at = &last_or_new(*at, Field::Kind::list, without_position(name), index).fields;
        }
        if (depth + 1 < names.size()) {
            at = &last_or_new(*at, Field::Kind::record, name, index).fields;
        }
    }
    if (begins_list(parts, index)) {
        at->push_back({Field::Kind::list, names.back(), index, index + 1});
        at = &at->back().fields;
    }
    at->push_back({Field::Kind::part, names.back(), index, index + 1});
}

}  // namespace

std::vector<Field> fields_of(const std::vector<ipc_part_t> &parts)
{
    std::vector<Field> fields;
    for (size_t index = 0; index < parts.size(); ++index) {
        append(fields, parts, index);
    }
    return fields;
}

}  // namespace mdm::msg

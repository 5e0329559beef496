// SPDX-License-Identifier: Apache-2.0
#include "kaitai_nodes.hpp"

#include <algorithm>
#include <iterator>
#include <map>

#include "languages.hpp"
#include "parts.hpp"

namespace mdm::msg {
namespace {

using Fields = std::span<const FieldDescription>;

// The names of a path from a level on: "network.ssid" of "wifi.network.ssid" from 1 on.
std::string_view names_from(std::string_view path, size_t level)
{
    for (; level > 0; --level) {
        const size_t dot = path.find('.');
        path.remove_prefix(dot == std::string_view::npos ? path.size() : dot + 1);
    }
    return path;
}

// Whether both are the same but for what is in them.
bool is_alike(const Node &one, const Node &two)
{
    return one.kind == two.kind && one.name == two.name && one.is_byte == two.is_byte &&
           one.has_sign == two.has_sign && one.type == two.type;
}

// The first names of a longer path: "wifi_network" for two of "wifi.network.ssid"
std::string type_name(const std::string &path, size_t names)
{
    const size_t rest = names_from(path, names).size();
    return identifier(path.substr(0, path.size() - rest - 1));
}

Nodes nodes_of(Fields fields, size_t level, int depth);

Node node_of(const FieldDescription &field, size_t level)
{
    Node node = {Node::Kind::number, name_at(field.path, level)};
    node.is_byte = field.kind == IPC_PART_U8;
    node.has_sign = has_sign(field.path, field.kind);
    if (field.kind == IPC_PART_STR) {
        node.kind = Node::Kind::text;
    } else if (field.kind == IPC_PART_BYTES) {
        node.kind = Node::Kind::bytes;
    } else if (field.kind == IPC_PART_RESERVED) {
        node.kind = Node::Kind::reserved;
    }
    return node;
}

Node list_of(const FieldDescription &field, Node::Kind kind, Fields elements, size_t level)
{
    Node list = {kind, name_at(field.path, level)};
    list.has_sign = has_sign(field.path, field.kind);
    list.element_size = element_size(elements);
    if (has_texts(field, elements)) {
        list.type = kaitai_text;
    } else {
        list.nodes = nodes_of(elements, element_level, elements.front().depth);
        list.type = identifier(record_path(elements));
    }
    return list;
}

// How many fields belong to the same record as the first one; 0 if it belongs to none.
size_t record_size(Fields fields, size_t level)
{
    if (names_from(fields.front().path, level + 1).empty()) {
        return 0;
    }
    const std::string name = name_at(fields.front().path, level);
    const auto end = std::ranges::find_if(
        fields, [&](const FieldDescription &field) { return name_at(field.path, level) != name; });
    return static_cast<size_t>(end - fields.begin());
}

Nodes nodes_of(Fields fields, size_t level, int depth)
{
    Nodes nodes;
    while (!fields.empty()) {
        const FieldDescription &field = fields.front();
        size_t size = 1;
        if (field.depth > depth) {
            size = elements_size(fields, depth);
            nodes.push_back(list_of(field, Node::Kind::array, fields.first(size), level));
        } else if (const size_t in_record = record_size(fields, level); in_record != 0) {
            size = in_record;
            nodes.push_back({Node::Kind::record, name_at(field.path, level)});
            nodes.back().nodes = nodes_of(fields.first(size), level + 1, depth);
            nodes.back().type = type_name(field.path, level + 1);
        } else if (field.kind == IPC_PART_COUNT) {
            const size_t in_list = elements_size(fields.subspan(1), depth);
            size += in_list;
            nodes.push_back(list_of(field, Node::Kind::list, fields.subspan(1, in_list), level));
        } else {
            nodes.push_back(node_of(field, level));
        }
        fields = fields.subspan(size);
    }
    return nodes;
}

// Adds nodes to those that are there, and keeps the order of both. `is_there` compares two nodes;
// `join` is called for the node that is there and the one that is added.
template <class IsThere, class Join>
void merge(Nodes &all, const Nodes &added, IsThere is_there, Join join)
{
    Nodes merged;
    auto rest = all.begin();
    Nodes new_ones;  // since the last one that was there
    const auto append_new = [&] {
        std::ranges::move(new_ones, std::back_inserter(merged));
        new_ones.clear();
    };
    for (const Node &node : added) {
        const auto found =
            std::find_if(rest, all.end(), [&](const Node &old) { return is_there(old, node); });
        if (found == all.end()) {
            new_ones.push_back(node);
            join(new_ones.back(), node);
            continue;
        }
        join(*found, node);
        std::move(rest, found, std::back_inserter(merged));
        append_new();
        merged.push_back(std::move(*found));
        rest = found + 1;
    }
    std::move(rest, all.end(), std::back_inserter(merged));
    append_new();
    all = std::move(merged);
}

void merge_variant(Nodes &all, const Nodes &added, const Variant &variant)
{
    merge(all, added, is_alike, [&variant](Node &node, const Node &also) {
        node.variants.push_back(&variant);
        merge_variant(node.nodes, also.nodes, variant);
    });
}

Nodes nodes_of(const FormDescription &form, size_t head)
{
    const Fields own = Fields(form.fields).subspan(head);
    if (form.variants.empty()) {
        return nodes_of(own, 1, 0);
    }
    Nodes all;
    for (const Variant &variant : form.variants) {
        FieldDescriptions fields(own.begin(), own.end());
        fields.insert(fields.end(), variant.fields.begin(), variant.fields.end());
        merge_variant(all, nodes_of(fields, 1, 0), variant);
    }
    return all;
}

std::string_view suffix_of(const Node &node)
{
    return node.kind == Node::Kind::text ? "_text" : node.is_byte ? "_byte" : "_number";
}

// A name that two nodes have gets the name of the C union's member behind it.
void tell_apart(Nodes &nodes)
{
    std::map<std::string, int> times;
    for (Node &node : nodes) {
        ++times[node.name];
        tell_apart(node.nodes);
    }
    for (Node &node : nodes) {
        if (times[node.name] > 1) {
            node.name += suffix_of(node);
        }
    }
}

}  // namespace

std::string name_at(std::string_view path, size_t level)
{
    const std::string_view names = names_from(path, level);
    return std::string(names.substr(0, names.find('.')));
}

std::string identifier(std::string path)
{
    std::ranges::replace(path, '.', '_');
    return path;
}

bool is_same(const Node &one, const Node &two)
{
    return is_alike(one, two) && std::ranges::equal(one.nodes, two.nodes, is_same);
}

Nodes header_nodes()
{
    return nodes_of(describe_header(), 1, 0);
}

Nodes head_nodes_of(const CategoryDescription &category)
{
    return nodes_of(Fields(category.forms.front().fields).first(category.head), 1, 0);
}

Nodes payload_nodes_of(const CategoryDescription &category)
{
    Nodes all;
    for (const FormDescription &form : category.forms) {
        const auto is_there = [&form](const Node &old, const Node &node) {
            return is_same(old, node) && old.forms.front()->payload == form.payload &&
                   old.variants.empty() && node.variants.empty();
        };
        merge(all, nodes_of(form, category.head), is_there,
              [&form](Node &node, const Node &) { node.forms.push_back(&form); });
    }
    tell_apart(all);
    return all;
}

}  // namespace mdm::msg

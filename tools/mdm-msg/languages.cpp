// SPDX-License-Identifier: Apache-2.0
#include "languages.hpp"

#include <map>

#include <glib.h>

namespace mdm::msg {
namespace {

using Fields = std::span<const FieldDescription>;

bool is_word(ipc_part_kind_t kind)
{
    return kind == IPC_PART_U32 || kind == IPC_PART_I32;
}

class Check {
public:
    void form(const FormDescription &form)
    {
        fields(form.fields, 0);
        for (const Variant &variant : form.variants) {
            fields(variant.fields, 0);
            require(!variant.values.others || variant.fields.empty(), form.name,
                    "a number that is not listed selects fields");
        }
    }

private:
    static void require(bool is_known, const std::string &path, const char *what)
    {
        if (!is_known) {
            g_error("no description can say this of %s: %s", path.c_str(), what);
        }
    }

    void fields(Fields fields, int depth)
    {
        while (!fields.empty()) {
            const FieldDescription &field = fields.front();
            const bool has_no_count = field.depth > depth;
            const Fields behind = fields.subspan(has_no_count ? 0 : 1);
            const size_t size = elements_size(behind, depth);
            if (size != 0) {
                list(field, behind.first(size));
            } else {
                value(field);
            }
            fields = behind.subspan(size);
        }
    }

    void list(const FieldDescription &field, Fields elements)
    {
        for (const FieldDescription &element : elements) {
            require(element.kind != IPC_PART_BYTES && element.kind != IPC_PART_RESERVED, field.path,
                    "the size of an element is unknown");
        }
        if (has_texts(field, elements)) {
            require(elements.size() == 1 && elements.front().kind == IPC_PART_STR, field.path,
                    "it is a list of something else than texts and records");
        } else {
            fields(elements, elements.front().depth);
        }
    }

    // A path may have a word and a text, but no words with and without a sign.
    void value(const FieldDescription &field)
    {
        if (is_word(field.kind)) {
            const auto [known, is_new] = words_.try_emplace(field.path, field.kind);
            require(known->second == field.kind, field.path, "it has a sign in some forms");
        }
    }

    std::map<std::string, ipc_part_kind_t> words_;
};

}  // namespace

bool has_texts(const FieldDescription &list, Fields elements)
{
    return elements.front().path == list.path;
}

std::string record_path(Fields elements)
{
    const std::string &path = elements.front().path;
    return path.substr(0, path.find('.', path.find('.') + 1));
}

void check_forms(Categories categories)
{
    Check check;
    for (const CategoryDescription &category : categories) {
        for (const FormDescription &form : category.forms) {
            check.form(form);
        }
    }
}

}  // namespace mdm::msg

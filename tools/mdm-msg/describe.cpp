// SPDX-License-Identifier: Apache-2.0
#include "describe.hpp"

#include <algorithm>
#include <array>
#include <cstring>

#include "parts.hpp"

namespace mdm::msg {
namespace {

constexpr uint32_t last_type = UINT8_MAX;
// Discriminators above are selected by nothing in particular.
constexpr uint32_t last_discriminator = 4095;
// The same of other fields that select something.
constexpr uint32_t last_selector = 15;
// Stands for every number that is not listed.
constexpr uint32_t other = UINT32_MAX;

struct Message {
    uint32_t type;
    uint32_t discriminator;
    uint32_t data_size = 1;
    std::string_view selector = {};  // the path of another field
    uint32_t selector_value = 0;
};

struct Questions {
    const Message &message;
    FieldDescriptions fields = {};
};

bool ends_with(const char *path, std::string_view end)
{
    return std::string_view(path).ends_with(end);
}

uint32_t number_for(const ipc_part_t &part, const Message &message)
{
    if (part.kind == IPC_PART_COUNT) {
        return 1;
    }
    if (std::strcmp(part.path, "header.type") == 0) {
        return message.type;
    }
    if (is_discriminator(part)) {
        return message.discriminator;
    }
    if (ends_with(part.path, ".data_size")) {
        return message.data_size;
    }
    return part.path == message.selector ? message.selector_value : 0;
}

// The library asks for raw bytes as long as `data_size` says, which is 1, and for the reserved
// ones.
bool answer(ipc_part_t *part, void *user_data)
{
    static constexpr std::array<uint8_t, 16> zeros{};
    auto &questions = *static_cast<Questions *>(user_data);
    if (part->length > zeros.size()) {
        return false;
    }
    const int depth = (part->element >= 0 ? 1 : 0) + (part->inner >= 0 ? 1 : 0);
    questions.fields.push_back({part->path, part->kind, depth});
    part->number = number_for(*part, questions.message);
    part->bytes = zeros.data();
    if (part->kind == IPC_PART_STR || part->kind == IPC_PART_PADDING) {
        part->length = 0;
    }
    return true;
}

// Without a value there is no such message.
std::optional<FieldDescriptions> fields_of(const Message &message)
{
    Questions questions{message};
    uint32_t length = 0;
    uint8_t *bytes = ipc_compose(answer, &questions, &length, nullptr);
    if (bytes == nullptr) {
        return std::nullopt;
    }
    g_free(bytes);
    questions.fields.pop_back();  // the padding
    return questions.fields;
}

bool is_in_header(const FieldDescription &field)
{
    return field.path.starts_with("header.");
}

FieldDescriptions body_of(FieldDescriptions fields)
{
    std::erase_if(fields, is_in_header);
    return fields;
}

PayloadFollows when_payload_follows(const Message &message)
{
    const auto fields = [message](int32_t data_size) {
        Message other_size = message;
        other_size.data_size = static_cast<uint32_t>(data_size);
        return fields_of(other_size);
    };
    const auto announced = fields(1);
    if (fields(0) == announced) {
        return PayloadFollows::always;
    }
    return fields(-1) == announced ? PayloadFollows::if_not_zero : PayloadFollows::if_positive;
}

// What follows a field, by its value. One variant if the value selects nothing.
std::vector<Variant> variants_behind(Message message, const FieldDescriptions &fields, size_t index)
{
    std::vector<Variant> variants;
    message.selector = fields[index].path;
    for (uint32_t i = 0; i <= last_selector + 1; ++i) {
        message.selector_value = i <= last_selector ? i : other;
        FieldDescriptions behind = body_of(fields_of(message).value_or(FieldDescriptions()));
        behind.erase(behind.begin(), behind.begin() + static_cast<std::ptrdiff_t>(
                                                          std::min(index + 1, behind.size())));
        auto variant = std::ranges::find(variants, behind, &Variant::fields);
        if (variant == variants.end()) {
            variant = variants.insert(variants.end(), {{}, behind});
        }
        if (message.selector_value == other) {
            variant->values.others = true;
        } else {
            variant->values.numbers.push_back(i);
        }
    }
    return variants;
}

bool may_select(const FieldDescription &field)
{
    return (field.kind == IPC_PART_U32 || field.kind == IPC_PART_I32) &&
           !field.path.ends_with(".type") && !is_data_size(field);
}

// What selects the same as the numbers that are not listed is not listed either.
void fold(Selectors &selectors)
{
    if (selectors.others) {
        selectors.numbers.clear();
    }
}

void add_fields(FormDescription &form, uint32_t type)
{
    const Selectors &selectors = form.discriminators;
    const Message message{type, selectors.others ? other : selectors.numbers.front()};
    form.fields = body_of(fields_of(message).value_or(FieldDescriptions()));
    form.payload = when_payload_follows(message);
    for (size_t i = 0; i < form.fields.size(); ++i) {
        if (!may_select(form.fields[i])) {
            continue;
        }
        auto variants = variants_behind(message, form.fields, i);
        if (variants.size() == 1) {
            continue;
        }
        for (Variant &variant : variants) {
            fold(variant.values);
        }
        std::ranges::stable_sort(variants, {},
                                 [](const Variant &variant) { return variant.values.others; });
        form.variants = std::move(variants);
        form.fields.resize(i + 1);
    }
}

// In the order of their first discriminators, the form of all others at the end.
std::vector<FormDescription> forms_of(uint8_t type)
{
    std::vector<FormDescription> forms;
    for (uint32_t i = 0; i <= last_discriminator; ++i) {
        const char *name = ipc_form_name(type, i);
        auto form = std::ranges::find(forms, name, &FormDescription::name);
        if (form == forms.end()) {
            form = forms.insert(forms.end(), {name, {}, {}});
        }
        form->discriminators.numbers.push_back(i);
    }
    for (FormDescription &form : forms) {
        form.discriminators.others = form.name == ipc_form_name(type, other);
        fold(form.discriminators);
    }
    std::ranges::stable_sort(
        forms, {}, [](const FormDescription &form) { return form.discriminators.others; });
    return forms;
}

// "8", "8, 9", "8 to 10"
std::string run_text(uint32_t first, uint32_t last)
{
    std::string text = std::to_string(first);
    if (first == last) {
        return text;
    }
    return text + (last == first + 1 ? ", " : " to ") + std::to_string(last);
}

}  // namespace

std::string Selectors::text() const
{
    std::string text;
    for (size_t i = 0; i < numbers.size();) {
        size_t end = i + 1;
        while (end < numbers.size() && numbers[end] == numbers[end - 1] + 1) {
            ++end;
        }
        text += (text.empty() ? "" : ", ") + run_text(numbers[i], numbers[end - 1]);
        i = end;
    }
    return others ? "any other" : text;
}

std::vector<CategoryDescription> describe_categories()
{
    std::vector<CategoryDescription> categories;
    for (uint32_t i = 0; i <= last_type; ++i) {
        const auto type = static_cast<uint8_t>(i);
        if (mdm_category_of(type) == MDM_CATEGORY_NONE) {
            continue;
        }
        const char *name = ipc_category_name(type);
        auto category = std::ranges::find(categories, name, &CategoryDescription::name);
        if (category == categories.end()) {
            category = categories.insert(categories.end(), {name, {}, forms_of(type)});
        }
        category->types.push_back(type);
    }
    return categories;
}

void add_fields(CategoryDescription &category)
{
    for (FormDescription &form : category.forms) {
        add_fields(form, category.types.front());
    }
}

FieldDescriptions describe_header()
{
    const std::vector<uint32_t> types = types_without_category();
    return fields_of({types.front(), 0}).value_or(FieldDescriptions());
}

std::vector<uint32_t> types_without_category()
{
    std::vector<uint32_t> types;
    for (uint32_t type = 0; type <= last_type; ++type) {
        if (mdm_category_of(static_cast<uint8_t>(type)) == MDM_CATEGORY_NONE &&
            fields_of({type, 0})) {
            types.push_back(type);
        }
    }
    return types;
}

bool is_data_size(const FieldDescription &field)
{
    return field.path.ends_with(".data_size");
}

}  // namespace mdm::msg

// SPDX-License-Identifier: Apache-2.0
#include "describe.hpp"

#include <algorithm>
#include <array>
#include <cstring>

#include "parts.hpp"
#include "text.hpp"

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

struct Composed {
    FieldDescriptions fields;  // without the padding
    uint32_t size;
    uint32_t length;  // in the header
};

// Without a value there is no such message.
std::optional<Composed> compose(const Message &message)
{
    Questions questions{message};
    uint32_t size = 0;
    uint8_t *bytes = ipc_compose(answer, &questions, &size, nullptr);
    if (bytes == nullptr) {
        return std::nullopt;
    }
    const uint32_t length = first_word({bytes, size});
    g_free(bytes);
    questions.fields.pop_back();
    return Composed{std::move(questions.fields), size, length};
}

std::optional<FieldDescriptions> fields_of(const Message &message)
{
    auto composed = compose(message);
    return composed ? std::optional(std::move(composed->fields)) : std::nullopt;
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
    const auto head = fields(0);
    if (head == announced) {
        return PayloadFollows::always;
    }
    return fields(-1) == head ? PayloadFollows::if_positive : PayloadFollows::if_not_zero;
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

Message message_of(const FormDescription &form, uint32_t type)
{
    const Selectors &selectors = form.discriminators;
    return {type, selectors.others ? other : selectors.numbers.front()};
}

void add_fields(FormDescription &form, uint32_t type)
{
    const Message message = message_of(form, type);
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

mdm_form_t form_id(uint8_t type, uint32_t discriminator)
{
    mdm_msg_t msg{};
    msg.type = type;
    msg.body.res.type = discriminator;  // every body begins with its discriminator
    return mdm_form_of(&msg);
}

// How many fields both begin with.
size_t common_size(const FieldDescriptions &one, const FieldDescriptions &two)
{
    return static_cast<size_t>(std::ranges::mismatch(one, two).in1 - one.begin());
}

size_t head_size(const CategoryDescription &category)
{
    const FieldDescriptions &first = category.forms.front().fields;
    size_t size = first.size();
    for (const FormDescription &form : category.forms) {
        Message message = message_of(form, category.types.front());
        message.data_size = 0;
        const auto head = body_of(fields_of(message).value_or(FieldDescriptions()));
        size = std::min({size, common_size(head, first), common_size(head, form.fields)});
    }
    return size;
}

// In the order of their first discriminators, the form of all others at the end.
std::vector<FormDescription> forms_of(uint8_t type)
{
    std::vector<FormDescription> forms;
    for (uint32_t i = 0; i <= last_discriminator; ++i) {
        const mdm_form_t id = form_id(type, i);
        auto form = std::ranges::find(forms, id, &FormDescription::id);
        if (form == forms.end()) {
            form = forms.insert(forms.end(), {mdm_form_name(id), id, {}, {}});
        }
        form->discriminators.numbers.push_back(i);
    }
    for (FormDescription &form : forms) {
        form.discriminators.others = form.id == form_id(type, other);
        fold(form.discriminators);
    }
    std::ranges::stable_sort(
        forms, {}, [](const FormDescription &form) { return form.discriminators.others; });
    return forms;
}

// "8", "8, 9", "8 to 10"
std::string run_text(const Run &run)
{
    std::string text = std::to_string(run.first);
    if (run.first == run.last) {
        return text;
    }
    return text + (run.last == run.first + 1 ? ", " : " to ") + std::to_string(run.last);
}

}  // namespace

std::vector<Run> Selectors::runs() const
{
    std::vector<Run> runs;
    for (const uint32_t number : numbers) {
        if (!runs.empty() && number == runs.back().last + 1) {
            runs.back().last = number;
        } else {
            runs.push_back({number, number});
        }
    }
    return runs;
}

std::string Selectors::text() const
{
    return others ? "any other" : joined(runs(), ", ", run_text);
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
    category.head = head_size(category);
}

FieldDescriptions describe_header()
{
    const std::vector<uint32_t> types = types_without_category();
    return fields_of({types.front(), 0}).value_or(FieldDescriptions());
}

Run message_types()
{
    Run types = {last_type + 1, 0};
    for (uint32_t type = 0; type <= last_type; ++type) {
        if (fields_of({type, 0})) {
            types = {std::min(types.first, type), type};
        }
    }
    return types;
}

EnvelopeSizes envelope_sizes()
{
    const auto composed = compose({types_without_category().front(), 0});
    return composed ? EnvelopeSizes{composed->size, composed->size - composed->length}
                    : EnvelopeSizes{};
}

std::vector<uint32_t> types_without_category()
{
    std::vector<uint32_t> types;
    const Run all = message_types();
    for (uint32_t type = all.first; type <= all.last; ++type) {
        if (mdm_category_of(static_cast<uint8_t>(type)) == MDM_CATEGORY_NONE) {
            types.push_back(type);
        }
    }
    return types;
}

size_t elements_size(std::span<const FieldDescription> fields, int depth)
{
    const auto end = std::ranges::find_if(
        fields, [depth](const FieldDescription &field) { return field.depth <= depth; });
    return static_cast<size_t>(end - fields.begin());
}

uint32_t element_size(std::span<const FieldDescription> elements)
{
    uint32_t size = 0;
    for (const FieldDescription &field : elements) {
        if (field.depth == elements.front().depth) {
            size += field.kind == IPC_PART_U8 ? 1 : 4;
        }
    }
    return size;
}

bool is_data_size(const FieldDescription &field)
{
    return field.path.ends_with(".data_size");
}

}  // namespace mdm::msg

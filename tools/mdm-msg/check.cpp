// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <cstdio>
#include <string>
#include <string_view>

#include <json-glib/json-glib.h>

#include "command.hpp"
#include "complain.hpp"
#include "json_message.hpp"
#include "options.hpp"
#include "verdict.hpp"

namespace mdm::msg {
namespace {

struct Checked {
    Names names;
    std::optional<ipc_fault_t> fault;
};

Checked check(Bytes message)
{
    Checked checked;
    checked.fault =
        inspect(message, [&checked](const ipc_part_t &part) { checked.names.see(part); });
    return checked;
}

// One object in one line of standard output.
class Object {
public:
    Object() : builder_(json_builder_new()) { json_builder_begin_object(builder_); }
    Object(const Object &) = delete;
    Object &operator=(const Object &) = delete;
    ~Object() { g_object_unref(builder_); }

    // A text that is no UTF-8 is escaped; a null one is left out.
    Object &add(const char *name, const char *text)
    {
        if (text != nullptr) {
            member(name);
            const bool is_utf8 = g_utf8_validate(text, -1, nullptr) != FALSE;
            json_builder_add_string_value(builder_, is_utf8 ? text : printable(text).c_str());
        }
        return *this;
    }
    Object &add(const char *name, size_t number)
    {
        member(name);
        json_builder_add_int_value(builder_, static_cast<gint64>(number));
        return *this;
    }
    Object &add(const char *name, bool value)
    {
        member(name);
        json_builder_add_boolean_value(builder_, value ? TRUE : FALSE);
        return *this;
    }
    Object &add(const ipc_fault_t &fault)
    {
        member("fault");
        json_builder_begin_object(builder_);
        add("path", fault.path).add("offset", size_t{fault.offset});
        add("needed", size_t{fault.needed}).add("left", size_t{fault.left});
        add("reason", sentence(fault).c_str());
        json_builder_end_object(builder_);
        return *this;
    }

    void print()
    {
        json_builder_end_object(builder_);
        JsonNode *root = json_builder_get_root(builder_);
        gchar *text = json_to_string(root, FALSE);
        std::puts(without_terminal_actions(text).c_str());
        g_free(text);
        json_node_unref(root);
    }

private:
    void member(const char *name) { json_builder_set_member_name(builder_, name); }

    JsonBuilder *builder_;
};

void print_object(const Input &input, const Checked &checked)
{
    Object object;
    object.add("file", input.file.c_str());
    object.add("message", input.number == 0 ? size_t{1} : input.number);
    object.add("ok", !checked.fault);
    object.add("category", checked.names.category()).add("form", checked.names.form());
    object.add("length", input.bytes.size());
    if (checked.fault) {
        object.add(*checked.fault);
    }
    object.add("warning", input.warning.empty() ? nullptr : input.warning.c_str());
    object.print();
}

void print_object(const Trouble &trouble)
{
    Object object;
    object.add("file", trouble.file.c_str()).add("ok", false);
    object.add("error", trouble.reason.c_str());
    object.print();
}

// "FILE: ok (wifi, wifi.network, 63 bytes)"
void print_line(const Input &input, const Names &names)
{
    std::string line = printable(input.name) + ": ok (" + names.category() + ", ";
    if (names.form() != nullptr) {
        line += std::string(names.form()) + ", ";
    }
    std::printf("%s%zu bytes)\n", line.c_str(), input.bytes.size());
}

struct Counts {
    size_t ok = 0;
    size_t malformed = 0;
    size_t unreadable = 0;

    void add(int status)
    {
        ++(status == whole ? ok : status == mdm::msg::malformed ? malformed : unreadable);
    }
    size_t all() const { return ok + malformed + unreadable; }

    void print() const
    {
        std::printf("%zu messages: %zu ok, %zu malformed", all(), ok, malformed);
        if (unreadable != 0) {
            std::printf(", %zu unreadable", unreadable);
        }
        std::printf("\n");
    }
};

constexpr const char *summary =
    "Says in one line for each message whether it is whole: on standard output if it is, on\n"
    "standard error if it is not.\n"
    "\n"
    "Exit status: 0 if all messages are whole, 1 if one is malformed, 2 for wrong usage, 3 if a\n"
    "file cannot be read.";

}  // namespace

int run_check(int argc, char **argv)
{
    gboolean json = FALSE;
    gboolean quiet = FALSE;
    const std::array<GOptionEntry, 3> entries = {{
        {"json", 0, 0, G_OPTION_ARG_NONE, &json,
         "Print a JSON object a line, also for a file that cannot be read", nullptr},
        {"quiet", 0, 0, G_OPTION_ARG_NONE, &quiet, "Print nothing on standard output", nullptr},
        {},
    }};
    Options options("check", "[FILE…]", summary);
    options.add(entries.data());
    options.add_input();
    const auto files = options.parse(argc, argv);
    if (!files) {
        return wrong_usage;
    }
    if (json != FALSE && quiet != FALSE) {
        return wrong_usage_of("check", "say --json or --quiet, not both");
    }
    Counts counts;
    const auto use = [&](const Input &input) {
        const Checked checked = check(input.bytes);
        const int status = judge(input, checked.fault);
        counts.add(status);
        if (json != FALSE) {
            print_object(input, checked);
        } else if (status == whole && quiet == FALSE) {
            print_line(input, checked.names);
        }
        return status;
    };
    const auto report = [&](const Trouble &trouble) {
        counts.add(trouble.status);
        if (json != FALSE) {
            print_object(trouble);
        }
    };
    const int status = for_each_message(*files, options.input(), use, report);
    if (counts.all() > 1 && json == FALSE && quiet == FALSE) {
        counts.print();
    }
    return status;
}

}  // namespace mdm::msg

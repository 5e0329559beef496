/* SPDX-License-Identifier: Apache-2.0 */
/* Who may ask for what, the options, and the texts that others have chosen. */
#include <string.h>
#include <unistd.h>

#include <glib/gstdio.h>

#include "common/text.h"
#include "server/limits.h"
#include "server/rules.h"

static struct rules *load(const char *text, GError **error)
{
    char *path = NULL;
    const int fd = g_file_open_tmp("mdm-rules-XXXXXX", &path, NULL);
    g_assert_cmpint(fd, >=, 0);
    close(fd);
    g_assert_true(g_file_set_contents(path, text, -1, NULL));
    struct rules *rules = rules_load(path, error);
    g_remove(path);
    g_free(path);
    return rules;
}

static void allow_what_the_first_group_of_a_user_says(void)
{
    struct rules *rules = load("[uid 1000]\ncategories=admin;wifi;\n"
                               "[uid 1000-1002]\ncategories=all\n"
                               "[uid 1004]\ncategories=none\n"
                               "[others]\ncategories=misc_cb\n",
                               NULL);
    g_assert_nonnull(rules);
    g_assert_true(rules_allow(rules, 1000, MDM_CATEGORY_ADMIN));
    g_assert_true(rules_allow(rules, 1000, MDM_CATEGORY_WIFI));
    g_assert_false(rules_allow(rules, 1000, MDM_CATEGORY_SECURITY));
    g_assert_false(rules_allow(rules, 1000, MDM_CATEGORY_BLUETOOTH));
    g_assert_true(rules_allow(rules, 1001, MDM_CATEGORY_PWD));
    g_assert_true(rules_allow(rules, 1002, MDM_CATEGORY_MISC_CB));
    g_assert_false(rules_allow(rules, 1003, MDM_CATEGORY_PWD));
    g_assert_true(rules_allow(rules, 1003, MDM_CATEGORY_MISC_CB));
    g_assert_true(rules_allow(rules, 999, MDM_CATEGORY_MISC_CB));
    g_assert_false(rules_allow(rules, 1004, MDM_CATEGORY_MISC_CB));
    g_assert_true(rules_allow(rules, UINT32_MAX - 1, MDM_CATEGORY_MISC_CB));
    rules_free(rules);
}

static void allow_nothing_without_a_group(void)
{
    struct rules *rules = load("[uid 4294967294]\ncategories=all\n", NULL);
    g_assert_nonnull(rules);
    g_assert_false(rules_allow(rules, 0, MDM_CATEGORY_ADMIN));
    g_assert_true(rules_allow(rules, 4294967294, MDM_CATEGORY_ADMIN));
    rules_free(rules);
}

static void expect_error(const char *text, const char *reason)
{
    GError *error = NULL;
    g_assert_null(load(text, &error));
    if (strstr(error->message, reason) == NULL) {
        g_error("%s", error->message);
    }
    g_error_free(error);
}

static void name_the_group_that_is_wrong(void)
{
    const char *shape = "is neither 'uid NUMBER', 'uid FIRST-LAST' nor 'others'";
    const char *const wrong[] = {"uid",      "uid x",
                                 "uid -1",   "uid 1-",
                                 "uid 2-1",  "uid 1-2-3",
                                 "uid 1,2",  "user 1",
                                 "Others",   "uid  1",
                                 "uid 1 ",   "uid 4294967295",
                                 "uid 0x10", "uid 99999999999999999999"};
    for (size_t i = 0; i < G_N_ELEMENTS(wrong); ++i) {
        char *text = g_strdup_printf("[%s]\ncategories=all\n", wrong[i]);
        char *reason = g_strdup_printf("group [%s]: %s", wrong[i], shape);
        expect_error(text, reason);
        g_free(reason);
        g_free(text);
    }
    expect_error("[others]\ncategories=admin;wlan\n", "group [others]: there is no such category");
    expect_error("[others]\n", "categories");
    expect_error("categories=all\n", "");
}

static void name_a_file_that_is_not_there(void)
{
    GError *error = NULL;
    g_assert_null(rules_load("/nonexistent/rules", &error));
    g_assert_cmpstr(error->message, ==, "/nonexistent/rules: No such file or directory");
    g_error_free(error);
}

static bool parse(struct limits *limits, const char *option, GError **error)
{
    limits_init(limits);
    GOptionContext *context = g_option_context_new(NULL);
    g_option_context_add_main_entries(context, limits_options(limits), NULL);
    char *words[] = {g_strdup("program"), g_strdup(option), NULL};
    char **left = g_memdup2(words, sizeof words);
    const bool is_parsed =
        g_option_context_parse_strv(context, &left, error) && limits_check(limits, error);
    g_strfreev(left);
    g_option_context_free(context);
    return is_parsed;
}

static void expect_range(const char *name, size_t offset, int standard, int least, int most)
{
    const int values[] = {least, most};
    struct limits limits;
    limits_init(&limits);
    g_assert_cmpint(G_STRUCT_MEMBER(int, &limits, offset), ==, standard);
    for (size_t i = 0; i < G_N_ELEMENTS(values); ++i) {
        char *option = g_strdup_printf("--%s=%d", name, values[i]);
        g_assert_true(parse(&limits, option, NULL));
        g_assert_cmpint(G_STRUCT_MEMBER(int, &limits, offset), ==, values[i]);
        g_free(option);
    }
    const int outside[] = {least - 1, most + 1};
    for (size_t i = 0; i < G_N_ELEMENTS(outside); ++i) {
        GError *error = NULL;
        char *option = g_strdup_printf("--%s=%d", name, outside[i]);
        char *text = g_strdup_printf("%s is not between %d and %d", option, least, most);
        g_assert_false(parse(&limits, option, &error));
        g_assert_cmpstr(error->message, ==, text);
        g_error_free(error);
        g_free(text);
        g_free(option);
    }
}

static void have_ranges(void)
{
#define EXPECT_RANGE(name, member, ...) \
    expect_range(name, G_STRUCT_OFFSET(struct limits, member), __VA_ARGS__)
    EXPECT_RANGE("max-clients", clients, 256, 1, 65536);
    EXPECT_RANGE("max-clients-per-user", clients_per_user, 32, 1, 65536);
    EXPECT_RANGE("max-connects-per-user", connects, 32, 1, 65536);
    EXPECT_RANGE("max-message", message, 65536, 512, 131072);
    EXPECT_RANGE("max-queued", queued, 131072, 512, 16777216);
    EXPECT_RANGE("max-policy", policy, 262144, 512, 1073741824);
    EXPECT_RANGE("max-faults", faults, 16, 1, 65536);
    EXPECT_RANGE("fault-delay", fault_delay, 100, 0, 60000);
    EXPECT_RANGE("first-timeout", first_timeout, 10, 1, 86400);
    EXPECT_RANGE("idle-timeout", idle_timeout, 600, 1, 86400);
    EXPECT_RANGE("answer-timeout", answer_timeout, 30, 1, 86400);
    EXPECT_RANGE("stop-timeout", stop_timeout, 5, 1, 60);
#undef EXPECT_RANGE
}

static void show_their_defaults(void)
{
    struct limits limits;
    limits_init(&limits);
    GOptionContext *context = g_option_context_new(NULL);
    g_option_context_add_main_entries(context, limits_options(&limits), NULL);
    char *help = g_option_context_get_help(context, FALSE, NULL);
    g_assert_nonnull(strstr(help, "--max-clients=N"));
    g_assert_nonnull(strstr(help, "connections at once (default 256)"));
    g_assert_nonnull(strstr(help, "length of a message (default 65536)"));
    g_free(help);
    g_option_context_free(context);
}

static void have_no_control_characters(void)
{
    char *escaped = text_escaped("a\033[2J\n\xc3\xa4\"\\'");
    g_assert_cmpstr(escaped, ==, "a\\033[2J\\n\\303\\244\"\\\\'");
    g_free(escaped);
    escaped = text_escaped(NULL);
    g_assert_cmpstr(escaped, ==, "");
    g_free(escaped);
    escaped = text_escaped_bytes("a\0\x7f\xff\\", 5);
    g_assert_cmpstr(escaped, ==, "a\\000\\177\\377\\134");
    g_free(escaped);
}

int main(int argc, char **argv)
{
    g_test_init(&argc, &argv, NULL);
    g_test_add_func("/rules/allow_what_the_first_group_of_a_user_says",
                    allow_what_the_first_group_of_a_user_says);
    g_test_add_func("/rules/allow_nothing_without_a_group", allow_nothing_without_a_group);
    g_test_add_func("/rules/name_the_group_that_is_wrong", name_the_group_that_is_wrong);
    g_test_add_func("/rules/name_a_file_that_is_not_there", name_a_file_that_is_not_there);
    g_test_add_func("/limits/have_ranges", have_ranges);
    g_test_add_func("/limits/show_their_defaults", show_their_defaults);
    g_test_add_func("/texts/have_no_control_characters", have_no_control_characters);
    return g_test_run();
}

/* SPDX-License-Identifier: Apache-2.0 */
#include "rules.h"

#include <stdint.h>
#include <string.h>

enum { CATEGORIES = 32 };

struct rule {
    uid_t first;
    uid_t last;
    uint32_t categories; /* a bit each */
};

struct rules {
    GArray *rules;
};

static bool fail(GError **error, const char *group, const char *reason)
{
    g_set_error(error, G_KEY_FILE_ERROR, G_KEY_FILE_ERROR_INVALID_VALUE, "group [%s]: %s", group,
                reason);
    return false;
}

static bool read_uid(const char **text, uid_t *uid)
{
    char *end = NULL;
    const guint64 number = g_ascii_strtoull(*text, &end, 10);
    const bool is_number = g_ascii_isdigit(**text) && number < UINT32_MAX;
    *text = end;
    *uid = (uid_t)number;
    return is_number;
}

/* "others", "uid 1000" or "uid 10000-19999" */
static bool read_users(const char *group, struct rule *rule)
{
    if (strcmp(group, "others") == 0) {
        rule->first = 0;
        rule->last = UINT32_MAX;
        return true;
    }
    if (!g_str_has_prefix(group, "uid ")) {
        return false;
    }
    const char *text = group + strlen("uid ");
    if (!read_uid(&text, &rule->first)) {
        return false;
    }
    rule->last = rule->first;
    if (*text == '-') {
        ++text;
        return read_uid(&text, &rule->last) && *text == '\0' && rule->first <= rule->last;
    }
    return *text == '\0';
}

static bool add_category(struct rule *rule, const char *name)
{
    if (strcmp(name, "all") == 0) {
        rule->categories = UINT32_MAX;
        return true;
    }
    if (strcmp(name, "none") == 0) {
        return true;
    }
    for (unsigned category = MDM_CATEGORY_NONE + 1; category < CATEGORIES; ++category) {
        if (strcmp(name, mdm_category_name((mdm_category_t)category)) == 0) {
            rule->categories |= 1U << category;
            return true;
        }
    }
    return false;
}

static bool read_categories(char *const *names, const char *group, struct rule *rule,
                            GError **error)
{
    for (; *names != NULL; ++names) {
        if (!add_category(rule, *names)) {
            return fail(error, group, "there is no such category");
        }
    }
    return true;
}

static bool read_group(GKeyFile *file, const char *group, struct rule *rule, GError **error)
{
    if (!read_users(group, rule)) {
        return fail(error, group, "is neither 'uid NUMBER', 'uid FIRST-LAST' nor 'others'");
    }
    char **names = g_key_file_get_string_list(file, group, "categories", NULL, error);
    if (names == NULL) {
        return false;
    }
    const bool is_read = read_categories(names, group, rule, error);
    g_strfreev(names);
    return is_read;
}

static bool read_groups(GKeyFile *file, GArray *rules, GError **error)
{
    char **groups = g_key_file_get_groups(file, NULL);
    bool is_read = true;
    for (char **group = groups; is_read && *group != NULL; ++group) {
        struct rule rule = {0};
        is_read = read_group(file, *group, &rule, error);
        g_array_append_val(rules, rule);
    }
    g_strfreev(groups);
    return is_read;
}

struct rules *rules_load(const char *path, GError **error)
{
    struct rules *rules = g_new0(struct rules, 1);
    rules->rules = g_array_new(FALSE, FALSE, sizeof(struct rule));
    GKeyFile *file = g_key_file_new();
    const bool is_loaded = g_key_file_load_from_file(file, path, G_KEY_FILE_NONE, error) &&
                           read_groups(file, rules->rules, error);
    g_key_file_free(file);
    if (!is_loaded) {
        g_prefix_error(error, "%s: ", path);
        rules_free(rules);
        return NULL;
    }
    return rules;
}

void rules_free(struct rules *rules)
{
    g_array_free(rules->rules, TRUE);
    g_free(rules);
}

bool rules_allow(const struct rules *rules, uid_t uid, mdm_category_t category)
{
    for (guint i = 0; i < rules->rules->len; ++i) {
        const struct rule *rule = &g_array_index(rules->rules, struct rule, i);
        if (rule->first <= uid && uid <= rule->last) {
            return (rule->categories >> category & 1U) != 0;
        }
    }
    return false;
}

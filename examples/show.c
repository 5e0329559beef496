/* SPDX-License-Identifier: Apache-2.0 */
#include "show.h"

#include <stdbool.h>
#include <stdio.h>
#include <string.h>

#include <mdm/inspect.h>
#include <mdm/noti.h>

/* The row that is being printed. */
struct row {
    const char *side;
    const char *direction;
    uint32_t length;
    uint32_t number; /* of the request */
    int32_t result;
    uint8_t type;
    bool is_in_body;
};

static bool is_in_header(const ipc_part_t *part)
{
    return g_str_has_prefix(part->path, "header.");
}

static void read_header(struct row *row, const ipc_part_t *part)
{
    if (strcmp(part->path, "header.type") == 0) {
        row->type = (uint8_t)part->number;
    } else if (strcmp(part->path, "header.hdr_word1") == 0) {
        row->number = part->number;
    } else if (strcmp(part->path, "header.hdr_word2") == 0) {
        row->result = (int32_t)part->number;
    }
}

static void begin_row(const struct row *row)
{
    printf("%s  %s %2u  %4u  %-11s  %5u  %6d ", row->side, row->direction, row->number, row->type,
           ipc_category_name(row->type), row->length, row->result);
}

/* Every field of the body is a name and a value. The name of the category is left out. */
static void show_field(const ipc_part_t *part)
{
    const char *dot = strchr(part->path, '.');
    printf(" %s", dot != NULL ? dot + 1 : part->path);
    if (part->element >= 0) {
        printf("[%d]", part->element);
    }
    switch (part->kind) {
    case IPC_PART_U8:
    case IPC_PART_U32:
        printf("=%u", part->number);
        break;
    case IPC_PART_I32:
    case IPC_PART_COUNT:
        printf("=%d", (int32_t)part->number);
        break;
    default:
        printf("='%.*s'", (int)part->length, (const char *)part->bytes);
    }
}

static bool show_part(const ipc_part_t *part, void *user_data)
{
    struct row *row = user_data;
    if (is_in_header(part)) {
        read_header(row, part);
        return true;
    }
    if (!row->is_in_body) {
        row->is_in_body = true;
        begin_row(row);
    }
    show_field(part);
    return true;
}

void show_head(const char *side)
{
    printf("%s     no  type  category     bytes  result  fields\n", side);
}

void show_message(const char *side, const char *direction, const uint8_t *bytes, uint32_t length)
{
    struct row row = {.side = side, .direction = direction, .length = length};
    ipc_inspect(bytes, length, show_part, &row, NULL);
    if (!row.is_in_body) { /* the message type has no category */
        begin_row(&row);
    }
    putchar('\n');
}

void show_status(const char *side, const char *key)
{
    int32_t status = 0;
    if (mdm_read_noti(key, &status) == MDM_RESULT_SUCCESS) {
        printf("%s  status %s is %d\n", side, key, status);
    } else {
        printf("%s  status %s is not there\n", side, key);
    }
}

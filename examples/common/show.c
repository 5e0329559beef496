/* SPDX-License-Identifier: Apache-2.0 */
#include "show.h"

#include <stdbool.h>
#include <stdio.h>
#include <string.h>

#include <mdm/inspect.h>

#include "text.h"

/* A line that is being printed. */
struct line {
    const char *direction;
    uint32_t length;
    uint32_t number; /* of the request */
    int32_t result;
    uint8_t type;
    bool is_begun;
};

static void read_header(struct line *line, const ipc_part_t *part)
{
    if (strcmp(part->path, "header.type") == 0) {
        line->type = (uint8_t)part->number;
    } else if (strcmp(part->path, "header.hdr_word1") == 0) {
        line->number = part->number;
    } else if (strcmp(part->path, "header.hdr_word2") == 0) {
        line->result = (int32_t)part->number;
    }
}

static void begin(struct line *line)
{
    if (!line->is_begun) {
        line->is_begun = true;
        printf("  %s %u %s, %u bytes, number %u, result %d:", line->direction, line->type,
               ipc_category_name(line->type), line->length, line->number, line->result);
    }
}

static void print_value(const ipc_part_t *part)
{
    char *text = NULL;
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
        text = text_escaped_bytes(part->bytes, part->length);
        printf("='%s'", text);
        g_free(text);
    }
}

/* The name of a field is printed without the name of its category. */
static bool show_part(const ipc_part_t *part, void *user_data)
{
    struct line *line = user_data;
    if (g_str_has_prefix(part->path, "header.")) {
        read_header(line, part);
        return true;
    }
    begin(line);
    const char *dot = strchr(part->path, '.');
    printf(" %s", dot != NULL ? dot + 1 : part->path);
    if (part->element >= 0) {
        printf("[%d]", part->element);
    }
    print_value(part);
    return true;
}

void show_message(const char *direction, const uint8_t *bytes, uint32_t length)
{
    struct line line = {.direction = direction, .length = length};
    ipc_fault_t fault;
    const bool is_whole =
        ipc_inspect(bytes, length, show_part, &line, &fault) == MDM_RESULT_SUCCESS;
    begin(&line); /* a message type without a category has no body */
    if (!is_whole) {
        char *reason = ipc_fault_describe(&fault);
        printf(" (malformed: %s)", reason);
        g_free(reason);
    }
    putchar('\n');
}

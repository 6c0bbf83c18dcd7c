/*
 * Command tables: rows of keywords, the handlers they select, and the help they yield.
 *
 * A line holds commands separated by ";" or by any character that is not printable ASCII.  A
 * command runs the row whose keywords match the most of its leading words, whole words ignoring
 * case; among rows that match equally deep the first wins.  The handler gets the rest of the
 * command after the last matched keyword, or NULL.
 *
 * Diagnostics go to standard output as the bits of kt_debug_print_ktcmd allow: 0x04 warnings,
 * 0x10 traces.
 */
#ifndef RUK_COMMAND_TABLE_H
#define RUK_COMMAND_TABLE_H

#include "ruk/types.h"

#ifdef __cplusplus
extern "C" {
#endif

enum command_type {
    COMMAND_TABLE_END = 0,
    COMMAND_RUN = 1,          /* a command */
    COMMAND_HELP_MORE = 2,    /* one more help line of the row above */
    COMMAND_HELP_HEADING = 3, /* a help line of its own */
    COMMAND_HELP_CALLBACK = 4 /* help that the row's callback writes */
};

enum { COMMAND_KEYWORDS = 7 };

/* Runs a command with the rest of its text.  A result of -2 drops the rest of the line. */
typedef int32_t (*CommandHandler)(const char *arguments);

/* Writes help into the room bytes at buffer.  Returns the length of the whole text. */
typedef uint32_t (*CommandHelp)(char *buffer, uint32_t room);

/* One row: fourteen 8-byte slots.  A table ends with a row of type COMMAND_TABLE_END. */
typedef struct CommandEntry {
    uint32_t type;                          /* command_type */
    CommandHandler handler;                 /* NULL for rows that are only help */
    CommandHelp help;                       /* for COMMAND_HELP_CALLBACK */
    const char *text;                       /* description or heading */
    const char *hint;                       /* shown after the keywords, or NULL */
    const char *keywords[COMMAND_KEYWORDS]; /* in order; NULL ends them */
    const char *spare;                      /* NULL */
    uint32_t from_agent;                    /* 1: may run on the Agent's behalf */
} CommandEntry;

static_assert(sizeof(CommandEntry) == 112, "fourteen slots of 8 bytes");
static_assert(offsetof(CommandEntry, handler) == 8, "slot");
static_assert(offsetof(CommandEntry, help) == 16, "slot");
static_assert(offsetof(CommandEntry, text) == 24, "slot");
static_assert(offsetof(CommandEntry, hint) == 32, "slot");
static_assert(offsetof(CommandEntry, keywords) == 40, "slot");
static_assert(offsetof(CommandEntry, spare) == 96, "slot");
static_assert(offsetof(CommandEntry, from_agent) == 104, "slot");

RUK_EXPORT extern uint32_t kt_debug_print_ktcmd;

/*
 * Runs every command in the length bytes at buffer, which need no terminator, until a handler
 * returns -2.  A command of 256 characters or more is dropped with everything after it.  With
 * fromdpa non-zero, rows whose from_agent is 0 are refused.
 */
RUK_EXPORT void ktcmd_parse_multiple(const CommandEntry *table, const unsigned char *buffer,
                                     uint32_t length, uint32_t fromdpa);

/*
 * Runs one terminated command.  Returns the handler's result, or -1 when no row matches or the
 * row is refused.  length is not looked at.
 */
RUK_EXPORT int32_t ktcmd_parse_single(const CommandEntry *table, const char *command,
                                      uint32_t length, uint32_t fromdpa);

/*
 * Writes the table's help into the maxlen bytes at buffer.  Returns its length, or maxlen when
 * it does not fit; what fits is terminated.
 */
RUK_EXPORT uint32_t ktcmd_snprintf_help(const CommandEntry *table, char *buffer, uint32_t maxlen);

/*
 * Returns the length of the terminated text at data, 0 when it is empty, -1 when it has more than
 * maxlen characters or maxlen is below 1.  Characters that are neither printable, nor white space
 * are reported and counted.  Reads at most maxlen + 1 bytes.
 */
RUK_EXPORT int32_t ktcmd_validate_data(const char *data, int32_t maxlen);

#ifdef __cplusplus
}
#endif

#endif /* RUK_COMMAND_TABLE_H */

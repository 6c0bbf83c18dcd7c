/*
 * The front end of the event log: what ruklog does, for programs that embed it.
 *
 * A host that runs command lines itself sets the globals below, points ruk_rcli_buffer_ptr at the
 * start of ruk_rcli_buffer, calls ruk_log_run, and sends out what lies between the start and the
 * cursor.  In paged mode (ruk_rcli_fromdpa non-zero) show debug, show all and show last print at
 * most 7 records a run and leave a cookie in ruk_rcli_more_output; while that is not 0 the host
 * empties the buffer and runs the command again with "cookie" and the cookie appended to its
 * keywords (and to the count of show last); docs/embedding.md tells the traps.
 *
 * The front end is not made for several threads.
 */
#ifndef RUK_FRONT_END_H
#define RUK_FRONT_END_H

#include "ruk/command_table.h"
#include "ruk/log.h"
#include "ruk/types.h"

#ifdef __cplusplus
extern "C" {
#endif

enum {
    RUK_RCLI_BUFFER_SIZE = 50000,
    /* Bytes that must be left for a write while ruk_rcli_entry_start_ptr is NULL. */
    RUK_RCLI_ROOM = 201,
    /* Records that a run prints in paged mode. */
    PAGE_RECORDS = 7
};

/* Where output goes while ruk_rcli_buffer_ptr is not NULL. */
RUK_EXPORT extern char ruk_rcli_buffer[RUK_RCLI_BUFFER_SIZE];

/*
 * Where the next write goes; NULL sends output to standard output.  It moves on even past the
 * buffer's end, by the length that a cut or refused write would have had; nothing is written there.
 */
RUK_EXPORT extern char *ruk_rcli_buffer_ptr;

/* Not NULL: a write needs no more room than one byte.  NULL: RUK_RCLI_ROOM bytes. */
RUK_EXPORT extern char *ruk_rcli_entry_start_ptr;

/* Whole length of the last buffered write. */
RUK_EXPORT extern int32_t ruk_rcli_print_len;

/* Cookie of a paged command; 0 when its output is complete. */
RUK_EXPORT extern uint32_t ruk_rcli_more_output;

/* Not 0: paged mode, on the Agent's behalf. */
RUK_EXPORT extern uint32_t ruk_rcli_fromdpa;

/* 1: the log service is called through the functions of ruk/log.h, not through the Agent. */
RUK_EXPORT extern uint32_t ruk_rcli_dpa_loga_log;

RUK_EXPORT extern uint32_t kt_debug_print_ruk_log;

/* Returns 0. */
RUK_EXPORT int32_t ruk_log_init(void);
RUK_EXPORT void ruk_log_exit(void);

/* Runs the commands in the length bytes at buffer.  Returns length. */
RUK_EXPORT int32_t ruk_log_run(char *buffer, int32_t length);

/* Writes the help into the length bytes at buffer.  Returns the number of bytes. */
RUK_EXPORT int32_t ruk_log_help(char *buffer, int32_t length);

/*
 * Writes to the buffer or to standard output.  In the buffer a text is cut at the end; a text for
 * which there is no room is dropped.
 */
RUK_EXPORT void ruk_rcli_printf(const char *format, ...) RUK_PRINTF_LIKE(1, 2);

/* The commands. */
RUK_EXPORT extern const CommandEntry ruk_cmd_list[];

/* One level: its bit, name and letter. */
typedef struct LogLevel {
    uint32_t bit;
    const char *name;
    char letter;
} LogLevel;

/* The eight levels, from bit 0x01 up; a row without a name ends them. */
RUK_EXPORT extern const LogLevel ruk_log_levels[];

/* Returns the name of a single level bit, "" for any other value. */
RUK_EXPORT const char *ruk_levelstring(int32_t level);

/* Returns the bit of a level's letter in either case, or 0. */
RUK_EXPORT uint32_t ruk_log_level_from_char(int32_t c);

/*
 * Writes 8 characters and a terminator: each level's letter in upper case when its bit is in
 * mask, else a blank.
 */
RUK_EXPORT void ruk_log_level_letters(char *out, uint32_t mask);

/* Prints the status; in the short form without the lines Enabled and Stop After.  NULL: nothing. */
RUK_EXPORT void ruk_log_print_info(int32_t short_form, const LogInfo *info);

RUK_EXPORT void ruk_log_print_module_header(void);
RUK_EXPORT void ruk_log_print_module(const LogModule *module);
RUK_EXPORT void ruk_log_print_entry_header(void);

/* Prints one entry and may change its message in place.  NULL: nothing. */
RUK_EXPORT void ruk_log_print_entry(LogEntry *entry);

/*
 * Stops logging for a read-out: a stop with local not 0, else a hold on the Agent's behalf.
 * Returns non-zero when logging was on, for ruk_log_release.
 */
RUK_EXPORT uint32_t ruk_log_hold(int32_t local);

/* Ends a read-out: resumes logging if it was on. */
RUK_EXPORT void ruk_log_release(uint32_t was_on, int32_t local);

/*
 * The handlers of ruk_cmd_list.  Each takes the text after its keywords, or NULL, and returns 0, or
 * -1 after a failure that it has reported.
 */
RUK_EXPORT int32_t ruk_log_show(const char *arguments);
RUK_EXPORT int32_t ruk_log_show_info(const char *arguments);
RUK_EXPORT int32_t ruk_log_show_all(const char *arguments);
RUK_EXPORT int32_t ruk_log_show_last(const char *arguments);
RUK_EXPORT int32_t ruk_log_show_tail(const char *arguments);
RUK_EXPORT int32_t ruk_log_show_debug(const char *arguments);
RUK_EXPORT int32_t ruk_log_start(const char *arguments);
RUK_EXPORT int32_t ruk_log_stop(const char *arguments);
RUK_EXPORT int32_t ruk_log_resume(const char *arguments);
RUK_EXPORT int32_t ruk_log_clear(const char *arguments);
RUK_EXPORT int32_t ruk_log_debug(const char *arguments);

#ifdef __cplusplus
}
#endif

#endif /* RUK_FRONT_END_H */

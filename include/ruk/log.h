/*
 * The event log's service: its records, its requests, and the functions that stand for those
 * requests inside the Agent's own process.
 *
 * Each request is one kt_dpa_call_indirect1 with a fixed record as its buffer.  Status 0 is
 * success, anything else a failure that leaves the record as the call left it.
 *
 * Entries and modules are read one a request.  The record sent holds a cursor, an entry's number
 * or a module's index, and the record that comes back is the next one after it; all ones stand
 * before the first.
 */
#ifndef RUK_LOG_H
#define RUK_LOG_H

#include "ruk/levels.h"
#include "ruk/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Operation codes of the Agent. */
enum kt_opcode {
    KT_OPC_MANAGEMENT_IP = 56,    /* 4 bytes back: the management address */
    KT_OPC_VERSION = 63,          /* status 6: the versions differ */
    KT_OPC_LOG_INFO = 233,        /* LogInfo back */
    KT_OPC_LOG_ENTRY = 234,       /* LogEntry: cursor there, next entry back */
    KT_OPC_SET_LOG = 236,         /* ident LogSetOp, 8-byte value there and back */
    KT_OPC_LOG_MODULE = 311,      /* LogModule: cursor there, next module back */
    KT_OPC_FIND_LOG_MODULE = 312, /* LogModule: name there, module back */
    KT_OPC_SET_LOG_MODULE = 313   /* ident module index, 4-byte mask there */
};

/* Operations of KT_OPC_SET_LOG, its ident. */
typedef enum LogSetOp {
    LOG_SET_START = 1,  /* value: stop after so many further entries, 0 = never */
    LOG_SET_STOP = 2,   /* value: stop after so many further entries, 0 = now; back: was on */
    LOG_SET_RESUME = 3, /* keeps the limit of an earlier start or stop */
    LOG_SET_CLEAR = 4,
    LOG_SET_HOLD = 5,   /* back: non-zero in the low 32 bits if logging was on */
    LOG_SET_RELEASE = 6 /* ends a hold */
} LogSetOp;

/* The log's status. */
typedef struct LogInfo {
    uint32_t available;  /* entries that the log holds now */
    uint32_t enabled;    /* non-zero while logging is on */
    uint64_t total;      /* entries logged so far, and the number of the next one */
    uint64_t wrapped;    /* entries overwritten by the wrap of the ring */
    uint64_t lost;       /* entries that could not be taken */
    uint64_t skipped;    /* entries that came while logging was off or their level was */
    uint64_t stop_after; /* number of the entry after which logging stops; all ones = none */
} LogInfo;

enum { LOG_MESSAGE_SIZE = 128, LOG_MODULE_NAME_SIZE = 32 };

/* One event. */
typedef struct LogEntry {
    uint32_t seconds;               /* since 1970 */
    uint32_t microseconds;          /* 0 to 999,999 */
    uint64_t entry;                 /* number; in a request the cursor */
    uint32_t module;                /* index of the module that logged it */
    uint16_t level;                 /* one kt_level bit */
    uint16_t cpu;                   /* processor that logged it */
    char message[LOG_MESSAGE_SIZE]; /* usually ends in a line feed and a terminator */
} LogEntry;

/* One module's levels, as sets of kt_level bits. */
typedef struct LogModule {
    uint32_t index;     /* in a request the cursor */
    uint32_t available; /* what the module can log */
    uint32_t printing;  /* what it logs now */
    uint32_t default_printing;
    char name[LOG_MODULE_NAME_SIZE];
} LogModule;

static_assert(sizeof(LogInfo) == 48, "record of the service");
static_assert(offsetof(LogInfo, available) == 0, "record of the service");
static_assert(offsetof(LogInfo, enabled) == 4, "record of the service");
static_assert(offsetof(LogInfo, total) == 8, "record of the service");
static_assert(offsetof(LogInfo, wrapped) == 16, "record of the service");
static_assert(offsetof(LogInfo, lost) == 24, "record of the service");
static_assert(offsetof(LogInfo, skipped) == 32, "record of the service");
static_assert(offsetof(LogInfo, stop_after) == 40, "record of the service");
static_assert(sizeof(LogEntry) == 152, "record of the service");
static_assert(offsetof(LogEntry, seconds) == 0, "record of the service");
static_assert(offsetof(LogEntry, microseconds) == 4, "record of the service");
static_assert(offsetof(LogEntry, entry) == 8, "record of the service");
static_assert(offsetof(LogEntry, module) == 16, "record of the service");
static_assert(offsetof(LogEntry, level) == 20, "record of the service");
static_assert(offsetof(LogEntry, cpu) == 22, "record of the service");
static_assert(offsetof(LogEntry, message) == 24, "record of the service");
static_assert(sizeof(LogModule) == 48, "record of the service");
static_assert(offsetof(LogModule, index) == 0, "record of the service");
static_assert(offsetof(LogModule, available) == 4, "record of the service");
static_assert(offsetof(LogModule, printing) == 8, "record of the service");
static_assert(offsetof(LogModule, default_printing) == 12, "record of the service");
static_assert(offsetof(LogModule, name) == 16, "record of the service");

/* Trace word of the in-process functions below; nothing traces yet. */
RUK_EXPORT extern uint32_t kt_debug_print_ktlog_api;

/*
 * The requests as functions of the process itself, called instead of the Agent while
 * ruk_rcli_dpa_loga_log (ruk/front_end.h) is 1.  The libraries hold weak placeholders that return
 * 0 and touch nothing; a host that embeds the front end links its own definitions, which then
 * serve it with the static and with the shared library alike.  Each takes the request's ident
 * and buffer and returns its status.
 */
RUK_EXPORT int32_t kt_get_log_info(uint32_t ident, LogInfo *info);
RUK_EXPORT int32_t kt_get_log_entry(uint32_t ident, LogEntry *entry);
RUK_EXPORT int32_t kt_set_log(uint32_t operation, uint64_t *value);
RUK_EXPORT int32_t kt_get_log_module(uint32_t ident, LogModule *module);
RUK_EXPORT int32_t kt_find_log_module(uint32_t ident, LogModule *module);
RUK_EXPORT int32_t kt_set_log_module(uint32_t index, uint32_t *mask);

/*
 * For the port log; the front end never calls them.  Placeholders likewise, of which
 * kt_get_log_entries and kt_get_portlog_entries return 2.
 */
RUK_EXPORT int32_t kt_get_log_entries(uint32_t ident, void *buffer);
RUK_EXPORT int32_t kt_get_portlog_info(uint32_t ident, void *buffer);
RUK_EXPORT int32_t kt_get_portlog_entry(uint32_t ident, void *buffer);
RUK_EXPORT int32_t kt_get_portlog_entries(uint32_t ident, void *buffer);
RUK_EXPORT int32_t kt_set_portlog(uint32_t ident, void *buffer);
RUK_EXPORT int32_t kt_get_portlog_module(uint32_t ident, void *buffer);

#ifdef __cplusplus
}
#endif

#endif /* RUK_LOG_H */

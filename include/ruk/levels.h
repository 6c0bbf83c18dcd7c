/*
 * The eight levels of the event log.  The same bits switch the trace messages of the libraries:
 * every source module has one exported word kt_debug_print_<module>, initially
 * KT_TRACE_DEFAULT, and a message of a level prints to standard output only while the level's
 * bit is set in its module's word.
 */
#ifndef RUK_LEVELS_H
#define RUK_LEVELS_H

#include "ruk/types.h"

enum kt_level {
    KT_LEVEL_ERROR = 0x01,
    KT_LEVEL_NOTICE = 0x02,
    KT_LEVEL_WARNING = 0x04,
    KT_LEVEL_INFO = 0x08,
    KT_LEVEL_DEBUG = 0x10,
    KT_LEVEL_TEMP = 0x20,
    KT_LEVEL_PACKET = 0x40,
    KT_LEVEL_LOG = 0x80,
    /* What every trace word starts as: Error, Notice, Warning and Log. */
    KT_TRACE_DEFAULT = 0x87
};

#endif /* RUK_LEVELS_H */

// Trace messages: printed to standard output while their level's bit is set in a module's word.
#pragma once

#include "ruk/levels.h"

inline bool kt_traces(uint32_t word, uint32_t level)
{
    return (word & level) != 0;
}

[[gnu::format(printf, 3, 4)]] void kt_trace(uint32_t word, uint32_t level, const char *format, ...);

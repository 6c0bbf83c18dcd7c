// The one place where trace messages are printed.
#include "infra/utils/kttrace.h"

#include <cstdarg>
#include <cstdio>

void kt_trace(uint32_t word, uint32_t level, const char *format, ...)
{
    if (!kt_traces(word, level)) {
        return;
    }
    va_list arguments;
    va_start(arguments, format);
    vprintf(format, arguments);
    va_end(arguments);
}

/* Lines by ctime_r and printf: the plain way. */
#define _GNU_SOURCE

#include <stdio.h>
#include <time.h>

#include "log_client.h"

void print_header(void)
{
    printf("%s", header_line);
}

void print_entry(const struct entry *entry)
{
    const time_t seconds = entry->seconds;
    char date[32];
    ctime_r(&seconds, date);
    printf("%.15s.%06d %8llu %2d %3d %3d %7s %.*s", date + 4, (int)entry->microseconds,
           (unsigned long long)entry->number, entry->cpu, (int)entry->module, entry->level,
           level_name(entry->level), 128, entry->message);
}

void finish(void)
{
    fflush(stdout);
}

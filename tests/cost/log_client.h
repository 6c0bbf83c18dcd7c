/* A client of the Agent in the fewest steps: the requests of "show last N" and static buffers. */
#ifndef RUK_LOG_CLIENT_H
#define RUK_LOG_CLIENT_H

#include <stdint.h>

struct entry {
    uint32_t seconds;
    uint32_t microseconds;
    uint64_t number;
    uint32_t module;
    uint16_t level;
    uint16_t cpu;
    char message[128];
};

extern const char header_line[];

/* What differs between the clients: how lines get to standard output. */
void print_header(void);
void print_entry(const struct entry *entry);
void finish(void);

const char *level_name(unsigned level);

#endif

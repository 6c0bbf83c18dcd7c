/* Lines by hand into a block that is written when it is full: next to what the kernel takes.  The
   date of a second is converted once. */
#define _GNU_SOURCE

#include <string.h>
#include <time.h>
#include <unistd.h>

#include "log_client.h"

#define BLOCK 65536
#define LONGEST_LINE 256

static char block[BLOCK];
static size_t filled;

static void write_block(void)
{
    for (size_t written = 0; written < filled;) {
        const ssize_t n = write(STDOUT_FILENO, block + written, filled - written);
        if (n <= 0) {
            _exit(1);
        }
        written += (size_t)n;
    }
    filled = 0;
}

/* Right-aligned in width columns or more, with a blank behind. */
static char *put_number(char *out, uint64_t value, int width, char blank)
{
    char digits[20];
    int length = 0;
    do {
        digits[length++] = (char)('0' + value % 10);
        value /= 10;
    } while (value != 0);
    for (; width > length; --width) {
        *out++ = blank;
    }
    while (length > 0) {
        *out++ = digits[--length];
    }
    *out++ = ' ';
    return out;
}

static char *put_date(char *out, time_t seconds)
{
    static time_t converted = -1;
    static char date[32];
    if (seconds != converted) {
        ctime_r(&seconds, date);
        converted = seconds;
    }
    memcpy(out, date + 4, 15);
    return out + 15;
}

void print_header(void)
{
    memcpy(block, header_line, strlen(header_line));
    filled = strlen(header_line);
}

void print_entry(const struct entry *entry)
{
    char *out = put_date(block + filled, entry->seconds);
    *out++ = '.';
    out = put_number(out, entry->microseconds, 6, '0');
    out = put_number(out, entry->number, 8, ' ');
    out = put_number(out, entry->cpu, 2, ' ');
    out = put_number(out, entry->module, 3, ' ');
    out = put_number(out, entry->level, 3, ' ');
    const char *name = level_name(entry->level);
    const size_t name_length = strlen(name);
    memset(out, ' ', 8);
    memcpy(out + 7 - name_length, name, name_length);
    out += 8;
    const size_t message_length = strnlen(entry->message, sizeof entry->message);
    memcpy(out, entry->message, message_length);
    filled = (size_t)(out - block) + message_length;
    if (filled > BLOCK - LONGEST_LINE) {
        write_block();
    }
}

void finish(void)
{
    write_block();
}

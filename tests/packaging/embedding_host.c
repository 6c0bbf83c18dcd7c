/*
 * A program that embeds the front end, built like any other against the installed libraries: it
 * takes the output into the library's buffer and serves the log from a function of its own.
 * Succeeds when the library follows what the program stored in the library's globals.
 */
#include <stdio.h>
#include <string.h>

#include "ruk/front_end.h"
#include "ruk/log.h"

/* Takes the place of the library's. */
int32_t kt_get_log_info(uint32_t ident, LogInfo *info)
{
    (void)ident;
    memset(info, 0, sizeof *info);
    info->enabled = 1;
    info->total = 7;
    info->available = 5;
    info->wrapped = 2;
    info->stop_after = UINT64_MAX;
    return 0;
}

int main(void)
{
    static const char expected[] = "          Enabled: Yes\n"
                                   "    Total Entries: 7\n"
                                   "  Wrapped Entries: 2\n"
                                   "     Lost Entries: 0\n"
                                   "  Skipped Entries: 0\n"
                                   "Available Entries: 5\n"
                                   " Stop After Entry: Not Specified\n";
    char line[] = "show info";
    ruk_rcli_dpa_loga_log = 1;
    ruk_rcli_buffer_ptr = ruk_rcli_buffer;
    ruk_log_init();
    ruk_log_run(line, (int32_t)strlen(line));
    const size_t length = (size_t)(ruk_rcli_buffer_ptr - ruk_rcli_buffer);
    ruk_rcli_buffer_ptr = NULL;
    if (length != strlen(expected) || memcmp(ruk_rcli_buffer, expected, length) != 0) {
        printf("%zu bytes in the buffer: %.*s\n", length, (int)length, ruk_rcli_buffer);
        return 1;
    }
    printf("embedded\n");
    return 0;
}

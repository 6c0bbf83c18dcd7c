/*
 * Lists the event log's last entries:  last_entries [COUNT], 10 when not given.
 *
 * It shows the road of every request to the Agent: open the connection once, make calls, look at
 * each call's status, close the connection.
 */
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "ruk/agent.h"
#include "ruk/log.h"

/* Flags of the log service: its answer fills the record; the record also says what is asked. */
enum { REPLY_ONLY = 0x01, BOTH_WAYS = 0x03 };

/*
 * Requests of the log service have one fixed record each.  Without AGENT_FLAG_COUNTED its size
 * says it all, and no element count is needed.
 */
static int32_t call_log(enum kt_opcode opcode, uint8_t flags, void *record, uint32_t size)
{
    return kt_dpa_call_indirect1((uint16_t)opcode, 0, flags, record, size, NULL);
}

/*
 * The cursor behind which the last count entries stand.  Entries are numbered from the log's start,
 * total is the next one's number, and the log still holds the newest "available" of them.
 */
static uint64_t cursor_before_last(uint64_t count, const LogInfo *info)
{
    const uint64_t shown = count < info->available ? count : info->available;
    /* For an entry numbered 0 this wraps to all ones, which stands before the first entry. */
    return info->total - shown - 1;
}

static void print_entry(const LogEntry *entry)
{
    /* A message need not end in a line feed, and one that fills its field has no terminator. */
    const size_t length = strnlen(entry->message, sizeof entry->message);
    const int shown = (int)(length > 0 && entry->message[length - 1] == '\n' ? length - 1 : length);
    printf("%6" PRIu64 "  module %u  level 0x%02x  %.*s\n", entry->entry, entry->module,
           (unsigned)entry->level, shown, entry->message);
}

/* Each reply's number is the cursor of the next request; the reply after the newest entry fails. */
static void print_after(uint64_t cursor, uint64_t count)
{
    LogEntry entry = {.entry = cursor};
    for (; count > 0; --count) {
        if (call_log(KT_OPC_LOG_ENTRY, BOTH_WAYS, &entry, sizeof entry) != AGENT_STATUS_OK) {
            break;
        }
        print_entry(&entry);
    }
}

int main(int argc, char **argv)
{
    const uint64_t count = argc > 1 ? strtoull(argv[1], NULL, 10) : 10;
    if (kt_dpa_api_init() != 0) {
        fprintf(stderr, "last_entries: no Agent answers on %s\n", KT_AGENT_SOCKET_PATH);
        return EXIT_FAILURE;
    }
    LogInfo info = {0};
    const int32_t status = call_log(KT_OPC_LOG_INFO, REPLY_ONLY, &info, sizeof info);
    if (status == AGENT_STATUS_OK) {
        print_after(cursor_before_last(count, &info), count);
    } else {
        fprintf(stderr, "last_entries: the log's status can't be read (status %d)\n", (int)status);
    }
    kt_dpa_api_exit();
    return status == AGENT_STATUS_OK ? EXIT_SUCCESS : EXIT_FAILURE;
}

// One entry as a line of text, and the header above the entries.
#include "rukcmd/entry_printer.h"

#include <cstring>

#include "ruk/front_end.h"
#include "rukcmd/entry_line.h"
#include "rukcmd/output.h"

size_t settle_message(LogEntry &entry)
{
    char *const message = entry.message;
    constexpr size_t k_last = LOG_MESSAGE_SIZE - 1;
    size_t length = strnlen(message, LOG_MESSAGE_SIZE);
    if (length > k_last) {
        message[k_last] = '\0';
        length = k_last;
    }
    if (length > 0 && message[length - 1] == '\n') {
        return length;
    }
    // Kept: the line feed goes to a fixed place, so a short message without one prints with none.
    if (length == k_last) {
        message[k_last] = '\n'; // the field's end is the terminator
    } else {
        message[k_last - 1] = '\n';
        message[k_last] = '\0';
    }
    return strnlen(message, LOG_MESSAGE_SIZE);
}

void ruk_log_print_entry_header(void)
{
    ruk_rcli_printf("Timestamp                  Entry CPU  Mod Lv         Message\n");
}

void ruk_log_print_entry(LogEntry *entry)
{
    if (entry == nullptr) {
        return;
    }
    const size_t message_length = settle_message(*entry);
    char line[entry_line::k_size];
    output::put({line, entry_line::write(line, *entry, message_length)});
}

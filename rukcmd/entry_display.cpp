// show all, show last and show tail: the commands that print entries.
#include "ruk/front_end.h"

#include <cstdio>
#include <unistd.h>

#include "rukcmd/entry_pages.h"
#include "rukcmd/held_log.h"
#include "rukcmd/log_service.h"
#include "rukcmd/newest_entries.h"
#include "rukcmd/paging.h"

namespace
{

constexpr unsigned k_tail_pause_seconds = 2;

// One request of show tail.  The log is held just for its length, and released whatever the hold
// returned.
bool next_entry_of_tail(LogEntry &entry)
{
    ruk_log_hold(log_service::k_on_agents_behalf);
    const bool got = log_service::next_entry(entry);
    ruk_log_release(1, log_service::k_on_agents_behalf);
    return got;
}

// Never returns: the user ends it by ending the process.
[[noreturn]] void follow(uint64_t cursor)
{
    LogEntry entry{};
    entry.entry = cursor;
    for (;;) {
        if (next_entry_of_tail(entry)) {
            ruk_log_print_entry(&entry);
            continue;
        }
        // A pipe's reader sees an entry when it happens, not when a buffer is full.
        fflush(stdout);
        sleep(k_tail_pause_seconds);
    }
}

} // namespace

int32_t ruk_log_show_all(const char *arguments)
{
    if (paging::is_paged()) {
        return show_all_page(arguments);
    }
    ruk_log_print_entry_header();
    HeldLog log;
    log.show_after(log_service::k_before_first_entry);
    return 0;
}

int32_t ruk_log_show_last(const char *arguments)
{
    if (paging::is_paged()) {
        return show_last_page(arguments);
    }
    const uint32_t count = newest_entries::count_of(arguments);
    HeldLog log;
    LogInfo info{};
    if (!log_service::get_info(info)) {
        log.give_up(log_service::k_no_info);
        return -1;
    }
    log.print_header();
    log.show_after(newest_entries::cursor_before(count, info));
    return 0;
}

int32_t ruk_log_show_tail(const char *)
{
    if (paging::is_paged()) {
        ruk_rcli_printf("Not supported in TOB\n");
        return -1;
    }
    ruk_log_hold(log_service::k_on_agents_behalf);
    LogInfo info{};
    const bool got_info = log_service::require_info(info);
    ruk_log_release(1, log_service::k_on_agents_behalf);
    if (!got_info) {
        return -1;
    }
    ruk_rcli_printf("Press control-C to interrupt this command.\n");
    ruk_log_print_entry_header();
    follow(newest_entries::cursor_before(newest_entries::k_default_count, info));
}

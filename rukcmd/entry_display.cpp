// show all, show last and show tail: the commands that print entries.
#include "ruk/front_end.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <unistd.h>

#include "rukcmd/entry_display.h"
#include "rukcmd/held_log.h"
#include "rukcmd/log_service.h"
#include "rukcmd/paging.h"

namespace
{

constexpr uint32_t k_default_count = 25;
constexpr uint32_t k_most_count = 10000;
constexpr uint64_t k_no_limit = UINT64_MAX;
constexpr unsigned k_tail_pause_seconds = 2;
constexpr int32_t k_on_agents_behalf = 0; // the argument local of ruk_log_hold

void report_no_info()
{
    ruk_rcli_printf("Can't get log info\n");
}

// The count at the start of the arguments of show last.
uint32_t count_of(const char *arguments)
{
    if (arguments == nullptr) {
        return k_default_count;
    }
    const auto count = static_cast<uint32_t>(strtoul(arguments, nullptr, 0));
    if (count == 0) {
        return 1;
    }
    return count > k_most_count ? k_most_count : count;
}

// Whether the newest count entries are fewer than the log holds.  An empty log passes: available -
// 1 wraps.
bool is_part_of_log(uint32_t count, const LogInfo &info)
{
    return count < info.available - 1;
}

uint64_t cursor_before_last(uint32_t count, const LogInfo &info)
{
    return is_part_of_log(count, info) ? info.total - count - 1 : log_service::k_before_first_entry;
}

// Prints what follows cursor, at most limit entries.  True when the limit was reached; entry is
// then the last one printed.
bool print_after(LogEntry &entry, uint64_t cursor, uint64_t limit)
{
    entry.entry = cursor;
    for (uint64_t printed = 0; printed < limit; ++printed) {
        if (!log_service::next_entry(entry)) {
            return false;
        }
        ruk_log_print_entry(&entry);
    }
    return true;
}

// First steps of a paged read-out: a running log is not read on the Agent's behalf.
enum class Start { ready, done, failed };

Start start_page(const char *running_message)
{
    LogInfo info{};
    if (!log_service::get_info(info)) {
        report_no_info();
        return Start::failed;
    }
    if (info.enabled != 0) {
        ruk_rcli_printf("%s", running_message);
        return Start::done;
    }
    return Start::ready;
}

int32_t result_of(Start start)
{
    return start == Start::failed ? -1 : 0;
}

// One page of show all.  Its cookie is the number of the last entry shown.
int32_t show_all_page(const char *arguments)
{
    const Start start = start_page("Need to stop ruklog before show all\n");
    if (start != Start::ready) {
        return result_of(start);
    }
    const uint32_t cookie = paging::cookie_of(arguments);
    const uint32_t was_on = ruk_log_hold(k_on_agents_behalf);
    LogInfo info{};
    if (!log_service::get_info(info)) {
        report_no_info();
        ruk_log_release(was_on, k_on_agents_behalf);
        return -1;
    }
    if (info.available == 0) {
        // Kept: no release here; hosts count on the requests as they are.
        ruk_rcli_more_output = 0;
        return 0;
    }
    uint64_t cursor = cookie;
    if (cookie == 0) {
        cursor = log_service::k_before_first_entry;
        ruk_log_print_entry_header();
    }
    LogEntry entry{};
    const bool is_full = print_after(entry, cursor, PAGE_RECORDS);
    ruk_rcli_more_output = is_full ? static_cast<uint32_t>(entry.entry) : 0;
    ruk_log_release(was_on, k_on_agents_behalf);
    return 0;
}

// What the arguments of a paged show last ask for.
struct LastPage {
    uint32_t count = k_default_count;
    bool is_limited = false; // to a page
    uint32_t cookie = 0;     // entries shown by earlier pages
};

// False, after a message, when the arguments can't be understood.
bool parse_last_page(const char *arguments, LastPage &page)
{
    if (arguments == nullptr) {
        return true;
    }
    char field[paging::k_field_size];
    paging::copy_arguments(field, arguments);
    constexpr const char *k_separators = " \n";
    char *rest = nullptr;
    const char *count = strtok_r(field, k_separators, &rest);
    if (count == nullptr) {
        ruk_rcli_printf("Error in command string processing\n");
        return false;
    }
    page.count = count_of(count);
    const char *keyword = strtok_r(nullptr, k_separators, &rest);
    if (keyword == nullptr) {
        page.is_limited = true;
        return true;
    }
    // Kept: any other word lifts the limit.
    if (strcmp(keyword, "cookie") != 0) {
        return true;
    }
    const char *cookie = strtok_r(nullptr, k_separators, &rest);
    if (cookie == nullptr) {
        ruk_rcli_printf("Error in command string processing, no <n> in cookie <n>\n");
        return false;
    }
    page.cookie = static_cast<uint32_t>(strtoul(cookie, nullptr, 0));
    page.is_limited = true;
    return true;
}

// Where a page of show last begins.
uint64_t cursor_of(const LastPage &page, const LogInfo &info)
{
    if (!is_part_of_log(page.count, info)) {
        // Kept: every page of such a read-out begins at the oldest entry, whatever its cookie.
        ruk_rcli_printf("Setting entry as invalid \n");
        return log_service::k_before_first_entry;
    }
    return info.total - 1 + page.cookie - page.count;
}

// One page of show last.
int32_t show_last_page(const char *arguments)
{
    const Start start = start_page("Need to stop ruklog before show all/show last n\n");
    if (start != Start::ready) {
        return result_of(start);
    }
    LastPage page;
    if (!parse_last_page(arguments, page)) {
        return -1;
    }
    const uint32_t was_on = ruk_log_hold(k_on_agents_behalf);
    LogInfo info{};
    if (!log_service::get_info(info)) {
        report_no_info();
        ruk_log_release(was_on, k_on_agents_behalf);
        return -1;
    }
    const uint64_t cursor = cursor_of(page, info);
    if (page.cookie == 0) {
        ruk_log_print_entry_header();
    }
    LogEntry entry{};
    const uint64_t limit = page.is_limited ? uint64_t{PAGE_RECORDS} : k_no_limit;
    const bool is_full = print_after(entry, cursor, limit);
    if (page.is_limited) {
        ruk_rcli_more_output = is_full ? page.cookie + PAGE_RECORDS : 0;
    }
    ruk_log_release(was_on, k_on_agents_behalf);
    return 0;
}

// One request of show tail.  The log is held just for its length, and released whatever the hold
// returned.
bool next_entry_of_tail(LogEntry &entry)
{
    ruk_log_hold(k_on_agents_behalf);
    const bool got = log_service::next_entry(entry);
    ruk_log_release(1, k_on_agents_behalf);
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

void settle_message(LogEntry &entry)
{
    char *const message = entry.message;
    constexpr size_t k_last = LOG_MESSAGE_SIZE - 1;
    size_t length = strnlen(message, LOG_MESSAGE_SIZE);
    if (length > k_last) {
        message[k_last] = '\0';
        length = k_last;
    }
    if (length > 0 && message[length - 1] == '\n') {
        return;
    }
    // Kept: the line feed goes to a fixed place, so a short message without one prints with none.
    if (length == k_last) {
        message[k_last] = '\n'; // the field's end is the terminator
    } else {
        message[k_last - 1] = '\n';
        message[k_last] = '\0';
    }
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
    settle_message(*entry);
    const time_t seconds = entry->seconds;
    char date[32] = {}; // "Www Mmm dd hh:mm:ss yyyy", of which month, day and time are shown
    ctime_r(&seconds, date);
    ruk_rcli_printf("%.15s.%06d %8llu %2d %3d %3d %7s %.*s", date + 4,
                    static_cast<int32_t>(entry->microseconds),
                    static_cast<unsigned long long>(entry->entry), entry->cpu,
                    static_cast<int32_t>(entry->module), entry->level,
                    ruk_levelstring(entry->level), LOG_MESSAGE_SIZE, entry->message);
}

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
    const uint32_t count = count_of(arguments);
    HeldLog log;
    LogInfo info{};
    if (!log_service::get_info(info)) {
        report_no_info();
        log.release();
        return -1;
    }
    ruk_log_print_entry_header();
    log.show_after(cursor_before_last(count, info));
    return 0;
}

int32_t ruk_log_show_tail(const char *)
{
    if (paging::is_paged()) {
        ruk_rcli_printf("Not supported in TOB\n");
        return -1;
    }
    ruk_log_hold(k_on_agents_behalf);
    LogInfo info{};
    const bool got_info = log_service::get_info(info);
    if (!got_info) {
        report_no_info();
    }
    ruk_log_release(1, k_on_agents_behalf);
    if (!got_info) {
        return -1;
    }
    const uint64_t cursor = info.available - 1 > k_default_count
                                ? info.total - k_default_count - 1
                                : log_service::k_before_first_entry;
    ruk_rcli_printf("Press control-C to interrupt this command.\n");
    ruk_log_print_entry_header();
    follow(cursor);
}

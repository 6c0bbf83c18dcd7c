// show all and show last in paged mode: one page a run.
#include "rukcmd/entry_pages.h"

#include "infra/utils/kttext.h"
#include "ruk/front_end.h"
#include "rukcmd/log_service.h"
#include "rukcmd/newest_entries.h"
#include "rukcmd/paging.h"

namespace
{

constexpr uint64_t k_no_limit = UINT64_MAX;

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
    if (!log_service::require_info(info)) {
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

// Cuts the next word off rest: blanks and line feeds lie between words.  Null when there is none.
const char *next_word(char *&rest)
{
    const auto separates = [](char c) { return c == ' ' || c == '\n'; };
    while (separates(*rest)) {
        ++rest;
    }
    char *const word = rest;
    while (*rest != '\0' && !separates(*rest)) {
        ++rest;
    }
    if (*rest != '\0') {
        *rest++ = '\0';
    }
    return *word == '\0' ? nullptr : word;
}

// What the arguments of a paged show last ask for.
struct LastPage {
    uint32_t count = newest_entries::k_default_count;
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
    char *rest = field;
    const char *count = next_word(rest);
    if (count == nullptr) {
        ruk_rcli_printf("Error in command string processing\n");
        return false;
    }
    page.count = newest_entries::count_of(count);
    const char *keyword = next_word(rest);
    if (keyword == nullptr) {
        page.is_limited = true;
        return true;
    }
    // Kept: any other word lifts the limit.
    if (!kttext::is(keyword, "cookie")) {
        return true;
    }
    const char *cookie = next_word(rest);
    if (cookie == nullptr) {
        ruk_rcli_printf("Error in command string processing, no <n> in cookie <n>\n");
        return false;
    }
    page.cookie = static_cast<uint32_t>(strtoull(cookie, nullptr, 0));
    page.is_limited = true;
    return true;
}

// Where a page of show last begins.
uint64_t cursor_of(const LastPage &page, const LogInfo &info)
{
    if (!newest_entries::are_part_of_log(page.count, info)) {
        // Kept: every page of such a read-out begins at the oldest entry, whatever its cookie.
        ruk_rcli_printf("Setting entry as invalid \n");
        return log_service::k_before_first_entry;
    }
    return info.total - 1 + page.cookie - page.count;
}

} // namespace

int32_t show_all_page(const char *arguments)
{
    const Start start = start_page("Need to stop ruklog before show all\n");
    if (start != Start::ready) {
        return result_of(start);
    }
    const uint32_t cookie = paging::cookie_of(arguments);
    const uint32_t was_on = ruk_log_hold(log_service::k_on_agents_behalf);
    LogInfo info{};
    if (!log_service::require_info(info)) {
        ruk_log_release(was_on, log_service::k_on_agents_behalf);
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
    ruk_log_release(was_on, log_service::k_on_agents_behalf);
    return 0;
}

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
    const uint32_t was_on = ruk_log_hold(log_service::k_on_agents_behalf);
    LogInfo info{};
    if (!log_service::require_info(info)) {
        ruk_log_release(was_on, log_service::k_on_agents_behalf);
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
    ruk_log_release(was_on, log_service::k_on_agents_behalf);
    return 0;
}

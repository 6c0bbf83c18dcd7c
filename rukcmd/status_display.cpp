// show info and show debug: the log's status and the levels of every module.
#include "ruk/front_end.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <string_view>

#include "rukcmd/log_service.h"
#include "rukcmd/output.h"
#include "rukcmd/paging.h"

namespace
{

using namespace std::string_view_literals;

constexpr size_t k_letters_size = 9; // eight levels and a terminator

// A line of show info.  The most common command does without the formatted print, which alone
// would be a third of what it executes.
void print_count(std::string_view label, uint64_t value)
{
    char line[64];
    char *out = std::copy(label.begin(), label.end(), line);
    out = std::to_chars(out, std::end(line), value).ptr;
    *out++ = '\n';
    output::put({line, out});
}

int32_t show_modules_after(uint32_t cursor)
{
    LogModule module{};
    module.index = cursor;
    while (log_service::next_module(module)) {
        ruk_log_print_module(&module);
    }
    return 0;
}

// One page.  Its cookie is the index of the last module shown.
int32_t show_module_page(uint32_t cookie)
{
    LogModule module{};
    module.index = cookie;
    if (cookie == 0) {
        module.index = log_service::k_before_first_module;
        ruk_log_print_module_header();
    }
    for (int shown = 0; shown < PAGE_RECORDS; ++shown) {
        if (!log_service::next_module(module)) {
            ruk_rcli_more_output = 0;
            return 0;
        }
        ruk_log_print_module(&module);
    }
    ruk_rcli_more_output = module.index;
    return 0;
}

} // namespace

void ruk_log_print_info(int32_t short_form, const LogInfo *info)
{
    if (info == nullptr) {
        return;
    }
    if (short_form == 0) {
        output::put(info->enabled != 0 ? "          Enabled: Yes\n"sv
                                       : "          Enabled: No\n"sv);
    }
    print_count("    Total Entries: ", info->total);
    print_count("  Wrapped Entries: ", info->wrapped);
    print_count("     Lost Entries: ", info->lost);
    print_count("  Skipped Entries: ", info->skipped);
    print_count("Available Entries: ", info->available);
    if (short_form != 0) {
        return;
    }
    if (info->stop_after == UINT64_MAX) {
        output::put(" Stop After Entry: Not Specified\n");
    } else {
        print_count(" Stop After Entry: ", info->stop_after);
    }
}

void ruk_log_print_module_header(void)
{
    ruk_rcli_printf("              Module           Available            Printing\n");
}

void ruk_log_print_module(const LogModule *module)
{
    if (module == nullptr) {
        return;
    }
    char available[k_letters_size];
    char printing[k_letters_size];
    ruk_log_level_letters(available, module->available);
    ruk_log_level_letters(printing, module->printing);
    // The precision bounds a name without a terminator by its field.
    ruk_rcli_printf("%20.*s  %12s (%3d)  %12s (%3d)\n", LOG_MODULE_NAME_SIZE, module->name,
                    available, static_cast<int32_t>(module->available), printing,
                    static_cast<int32_t>(module->printing));
}

int32_t ruk_log_show(const char *)
{
    return 0;
}

int32_t ruk_log_show_info(const char *)
{
    LogInfo info{};
    if (!log_service::require_info(info)) {
        return -1;
    }
    ruk_log_print_info(0, &info);
    return 0;
}

int32_t ruk_log_show_debug(const char *arguments)
{
    if (paging::is_paged()) {
        return show_module_page(paging::cookie_of(arguments));
    }
    ruk_log_print_module_header();
    return show_modules_after(log_service::k_before_first_module);
}

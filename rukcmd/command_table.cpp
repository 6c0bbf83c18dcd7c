// The commands of ruklog: one row each, and the lines of the help in between.
#include "ruk/front_end.h"

namespace
{

constexpr CommandEntry heading(const char *text)
{
    return {COMMAND_HELP_HEADING, nullptr, nullptr, text, nullptr, {}, nullptr, 0};
}

constexpr CommandEntry help_more(const char *text)
{
    return {COMMAND_HELP_MORE, nullptr, nullptr, text, nullptr, {}, nullptr, 0};
}

// The words that select the row.
struct Keywords {
    const char *at[COMMAND_KEYWORDS];
};

enum Permission : uint32_t { k_not_from_agent = 0, k_from_agent = 1 };

constexpr CommandEntry command(CommandHandler handler, const Keywords &words, const char *hint,
                               const char *text, Permission permission)
{
    const auto &at = words.at;
    return {COMMAND_RUN, handler,   nullptr,
            text,        hint,      {at[0], at[1], at[2], at[3], at[4], at[5], at[6]},
            nullptr,     permission};
}

constexpr CommandEntry k_end{};

} // namespace

// Keywords are plain words: "<number>" would match only itself.  A number that is typed ends the
// match and reaches the handler with the rest of the line; the deeper keywords are there for the
// help.
// clang-format off
const CommandEntry ruk_cmd_list[] = {
    heading("ruklog help:"),
    heading(""),
    command(ruk_log_show,       {{"show"}},                                 nullptr,     "",                                          k_from_agent),
    command(ruk_log_show_info,  {{"show", "info"}},                         nullptr,     "Show log info",                             k_from_agent),
    command(ruk_log_show_all,   {{"show", "all", "cookie"}},                "<number>",  "Show all entries in the log",               k_from_agent),
    command(ruk_log_show_last,  {{"show", "last", "<number>", "cookie"}},   "<number>",  "Show last <n> entries in the log",          k_from_agent),
    help_more("(minimum 1, default 25, maximum 10000)"),
    command(ruk_log_show_tail,  {{"show", "tail"}},                         nullptr,     "Show continuous tail (like unix 'tail -f')", k_not_from_agent),
    command(ruk_log_start,      {{"start"}},                                "<entries>", "Start logging",                             k_from_agent),
    help_more("if <entries> is specified, stop after next <n>"),
    command(ruk_log_stop,       {{"stop"}},                                 "<entries>", "Stop logging after next <n> entries",       k_from_agent),
    help_more("or immediately if <entries> is unspecified."),
    command(ruk_log_resume,     {{"resume"}},                               nullptr,     "Resume logging",                            k_from_agent),
    help_more("Any <entries> value from previous start or stop"),
    help_more("is preserved."),
    command(ruk_log_clear,      {{"clear"}},                                nullptr,     "Clear the log",                             k_from_agent),
    command(ruk_log_debug,      {{"debug"}},                                "<module|all> [-][all|none|default|e|w|n|i|d|p|t]",
                                                                                         "Enable and disable debug levels",           k_from_agent),
    command(ruk_log_show_debug, {{"show", "debug", "cookie"}},              "<number>",  "Display debug settings",                    k_from_agent),
    k_end,
};
// clang-format on

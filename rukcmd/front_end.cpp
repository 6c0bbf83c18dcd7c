// The front end's entry points: run a command line, give the help.
#include "ruk/front_end.h"

#include <algorithm>

#include "infra/utils/kttrace.h"

uint32_t ruk_rcli_more_output = 0;
uint32_t ruk_rcli_fromdpa = 0;
uint32_t ruk_rcli_dpa_loga_log = 0;
uint32_t kt_debug_print_ruk_log = KT_TRACE_DEFAULT;

int32_t ruk_log_init(void)
{
    return 0;
}

void ruk_log_exit(void) {}

int32_t ruk_log_run(char *buffer, int32_t length)
{
    kt_trace(kt_debug_print_ruk_log, KT_LEVEL_DEBUG, "ruk_log_run(buffer %p, length %d)\n",
             static_cast<void *>(buffer), length);
    const uint32_t size = static_cast<uint32_t>(std::max(length, 0));
    // Bounded, since the buffer needs no terminator.
    kt_trace(kt_debug_print_ruk_log, KT_LEVEL_DEBUG, "buff:%.*s\n", static_cast<int>(size), buffer);
    // Kept: never as from the Agent, so the table's permission column plays no part here.
    ktcmd_parse_multiple(ruk_cmd_list, reinterpret_cast<const unsigned char *>(buffer), size, 0);
    return length;
}

int32_t ruk_log_help(char *buffer, int32_t length)
{
    kt_trace(kt_debug_print_ruk_log, KT_LEVEL_DEBUG, "ruk_log_help(buffer %p, length %d)\n",
             static_cast<void *>(buffer), length);
    const uint32_t size = static_cast<uint32_t>(std::max(length, 0));
    return static_cast<int32_t>(ktcmd_snprintf_help(ruk_cmd_list, buffer, size));
}

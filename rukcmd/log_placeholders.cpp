// Stand-ins for the log functions of a process that holds the log itself.  They are weak: a host
// that embeds the front end links its own, which then replace them.
#include "ruk/log.h"

uint32_t kt_debug_print_ktlog_api = KT_TRACE_DEFAULT;

[[gnu::weak]] int32_t kt_get_log_info(uint32_t, LogInfo *)
{
    return 0;
}

[[gnu::weak]] int32_t kt_get_log_entry(uint32_t, LogEntry *)
{
    return 0;
}

[[gnu::weak]] int32_t kt_set_log(uint32_t, uint64_t *)
{
    return 0;
}

[[gnu::weak]] int32_t kt_get_log_module(uint32_t, LogModule *)
{
    return 0;
}

[[gnu::weak]] int32_t kt_find_log_module(uint32_t, LogModule *)
{
    return 0;
}

[[gnu::weak]] int32_t kt_set_log_module(uint32_t, uint32_t *)
{
    return 0;
}

[[gnu::weak]] int32_t kt_get_log_entries(uint32_t, void *)
{
    return 2;
}

[[gnu::weak]] int32_t kt_get_portlog_info(uint32_t, void *)
{
    return 0;
}

[[gnu::weak]] int32_t kt_get_portlog_entry(uint32_t, void *)
{
    return 0;
}

[[gnu::weak]] int32_t kt_get_portlog_entries(uint32_t, void *)
{
    return 2;
}

[[gnu::weak]] int32_t kt_set_portlog(uint32_t, void *)
{
    return 0;
}

[[gnu::weak]] int32_t kt_get_portlog_module(uint32_t, void *)
{
    return 0;
}

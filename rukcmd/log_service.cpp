// The requests of the log service, and the hold that keeps the log still during a read-out.
#include "rukcmd/log_service.h"

#include "ruk/agent.h"
#include "ruk/front_end.h"

namespace log_service
{
namespace
{

constexpr uint8_t k_reply_only = 0x01;
constexpr uint8_t k_both_ways = 0x03;

template <typename Record>
bool ask_agent(kt_opcode opcode, uint32_t ident, uint8_t flags, Record &record)
{
    const uint32_t count = 1;
    return kt_dpa_call_indirect1(static_cast<uint16_t>(opcode), static_cast<int32_t>(ident), flags,
                                 &record, sizeof record, &count) == AGENT_STATUS_OK;
}

} // namespace

bool is_in_process()
{
    return ruk_rcli_dpa_loga_log == 1;
}

bool get_info(LogInfo &info)
{
    return is_in_process() ? kt_get_log_info(0, &info) == 0
                           : ask_agent(KT_OPC_LOG_INFO, 0, k_reply_only, info);
}

bool require_info(LogInfo &info)
{
    const bool got = get_info(info);
    if (!got) {
        ruk_rcli_printf("%s", k_no_info);
    }
    return got;
}

bool next_entry(LogEntry &entry)
{
    return is_in_process() ? kt_get_log_entry(0, &entry) == 0
                           : ask_agent(KT_OPC_LOG_ENTRY, 0, k_both_ways, entry);
}

bool set_log(LogSetOp operation, uint64_t &value)
{
    return is_in_process() ? kt_set_log(operation, &value) == 0
                           : ask_agent(KT_OPC_SET_LOG, operation, k_both_ways, value);
}

bool next_module(LogModule &module)
{
    return is_in_process() ? kt_get_log_module(0, &module) == 0
                           : ask_agent(KT_OPC_LOG_MODULE, 0, k_both_ways, module);
}

bool find_module(LogModule &module)
{
    return is_in_process() ? kt_find_log_module(0, &module) == 0
                           : ask_agent(KT_OPC_FIND_LOG_MODULE, 0, k_both_ways, module);
}

void set_module(uint32_t index, uint32_t mask)
{
    // The mask is a copy: what comes back in it is nobody's business.
    if (is_in_process()) {
        kt_set_log_module(index, &mask);
    } else {
        ask_agent(KT_OPC_SET_LOG_MODULE, index, k_both_ways, mask);
    }
}

bool release(uint32_t was_on, Hold kind)
{
    uint64_t value = 0;
    return was_on == 0 || set_log(kind == k_local ? LOG_SET_RESUME : LOG_SET_RELEASE, value);
}

void report_failed_release()
{
    ruk_rcli_printf("Could not resume log\n");
}

} // namespace log_service

uint32_t ruk_log_hold(int32_t local)
{
    uint64_t value = 0;
    if (!log_service::set_log(local != 0 ? LOG_SET_STOP : LOG_SET_HOLD, value)) {
        ruk_rcli_printf("Could not suspend log\n");
    }
    return static_cast<uint32_t>(value);
}

void ruk_log_release(uint32_t was_on, int32_t local)
{
    const auto kind = local != 0 ? log_service::k_local : log_service::k_on_agents_behalf;
    if (!log_service::release(was_on, kind)) {
        log_service::report_failed_release();
    }
}

// The log functions of a process that holds the log itself.  They replace the library's
// placeholders of the same names when this program is linked.
#include "agentsim/in_process_log.h"

#include "ruk/log.h"

namespace
{

// The front end has no connection; its holds end with the process.
struct InProcess {
    agentsim::LogService *service = nullptr;
    agentsim::Client client;
};

InProcess in_process;

template <typename Record> int32_t ask(uint16_t opcode, uint32_t ident, Record &record)
{
    if (in_process.service == nullptr) {
        return AGENT_STATUS_TRANSPORT_FAILED;
    }
    AgentRequest request{};
    request.opcode = opcode;
    request.ident = static_cast<int32_t>(ident);
    return in_process.service->answer(in_process.client, request,
                                      std::as_writable_bytes(std::span(&record, 1)));
}

} // namespace

namespace agentsim
{

void serve_in_process(LogService &service)
{
    in_process.service = &service;
}

} // namespace agentsim

int32_t kt_get_log_info(uint32_t ident, LogInfo *info)
{
    return ask(KT_OPC_LOG_INFO, ident, *info);
}

int32_t kt_get_log_entry(uint32_t ident, LogEntry *entry)
{
    return ask(KT_OPC_LOG_ENTRY, ident, *entry);
}

int32_t kt_set_log(uint32_t operation, uint64_t *value)
{
    return ask(KT_OPC_SET_LOG, operation, *value);
}

int32_t kt_get_log_module(uint32_t ident, LogModule *module)
{
    return ask(KT_OPC_LOG_MODULE, ident, *module);
}

int32_t kt_find_log_module(uint32_t ident, LogModule *module)
{
    return ask(KT_OPC_FIND_LOG_MODULE, ident, *module);
}

int32_t kt_set_log_module(uint32_t index, uint32_t *mask)
{
    return ask(KT_OPC_SET_LOG_MODULE, index, *mask);
}

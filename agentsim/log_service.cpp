// The log service's requests: a table of them, and a function for each.
#include "agentsim/log_service.h"

#include <cstring>
#include <utility>

#include "agentsim/text.h"

namespace agentsim
{

namespace
{

// The payload stands anywhere in a connection's buffer, so records are copied out and in.
template <typename Record> Record record_in(std::span<const std::byte> payload)
{
    Record record;
    memcpy(&record, payload.data(), sizeof record);
    return record;
}

template <typename Record> int32_t give(const Record &record, std::span<std::byte> payload)
{
    memcpy(payload.data(), &record, sizeof record);
    return AGENT_STATUS_OK;
}

template <typename Record> int32_t give(const Record *record, std::span<std::byte> payload)
{
    return record != nullptr ? give(*record, payload) : int32_t{STATUS_NO_SUCH_RECORD};
}

} // namespace

struct LogService::Operation {
    uint16_t opcode;
    size_t size; // of the record, and so of buffer 1
    Handler handler;
};

constexpr LogService::Operation LogService::k_operations[] = {
    {KT_OPC_MANAGEMENT_IP, 4, &LogService::management_ip},
    {KT_OPC_VERSION, sizeof(uint32_t), &LogService::version},
    {KT_OPC_LOG_INFO, sizeof(LogInfo), &LogService::log_info},
    {KT_OPC_LOG_ENTRY, sizeof(LogEntry), &LogService::log_entry},
    {KT_OPC_SET_LOG, sizeof(uint64_t), &LogService::set_log},
    {KT_OPC_LOG_MODULE, sizeof(LogModule), &LogService::log_module},
    {KT_OPC_FIND_LOG_MODULE, sizeof(LogModule), &LogService::find_log_module},
    {KT_OPC_SET_LOG_MODULE, sizeof(uint32_t), &LogService::set_log_module},
};

LogService::LogService(EventLog log, ModuleTable modules, Identity identity)
    : log_(std::move(log)), modules_(std::move(modules)), identity_(identity)
{
}

int32_t LogService::answer(Client &client, const AgentRequest &request,
                           std::span<std::byte> payload)
{
    for (const Operation &operation : k_operations) {
        if (operation.opcode == request.opcode) {
            return payload.size() == operation.size
                       ? (this->*operation.handler)(client, request, payload)
                       : int32_t{STATUS_WRONG_SIZE};
        }
    }
    return STATUS_UNKNOWN_OPCODE;
}

void LogService::forget(Client &client)
{
    while (client.holds > 0) {
        release(client);
    }
}

void LogService::log(const LogEntry &event)
{
    if (modules_.prints(event.module, event.level)) {
        log_.add(event);
    } else {
        log_.skip();
    }
}

int32_t LogService::management_ip(Client &, const AgentRequest &, std::span<std::byte> payload)
{
    return give(identity_.management_ip, payload);
}

int32_t LogService::version(Client &, const AgentRequest &, std::span<std::byte>)
{
    return identity_.version_mismatch ? AGENT_STATUS_VERSION_MISMATCH : AGENT_STATUS_OK;
}

int32_t LogService::log_info(Client &, const AgentRequest &, std::span<std::byte> payload)
{
    return give(log_.info(), payload);
}

int32_t LogService::log_entry(Client &, const AgentRequest &, std::span<std::byte> payload)
{
    return give(log_.after(record_in<LogEntry>(payload).entry), payload);
}

int32_t LogService::set_log(Client &client, const AgentRequest &request,
                            std::span<std::byte> payload)
{
    const auto count = record_in<uint64_t>(payload);
    const auto tell_was_on = [payload](bool was_on) { return give(uint64_t{was_on}, payload); };
    switch (request.ident) {
    case LOG_SET_START:
        log_.start(count);
        return AGENT_STATUS_OK;
    case LOG_SET_STOP: {
        const bool was_on = log_.enabled();
        log_.stop(count);
        return tell_was_on(was_on);
    }
    case LOG_SET_RESUME:
        log_.resume();
        return AGENT_STATUS_OK;
    case LOG_SET_CLEAR:
        log_.clear();
        return AGENT_STATUS_OK;
    case LOG_SET_HOLD:
        return tell_was_on(hold(client));
    case LOG_SET_RELEASE:
        release(client);
        return AGENT_STATUS_OK;
    default:
        return STATUS_UNKNOWN_OPERATION;
    }
}

int32_t LogService::log_module(Client &, const AgentRequest &, std::span<std::byte> payload)
{
    return give(modules_.after(record_in<LogModule>(payload).index), payload);
}

int32_t LogService::find_log_module(Client &, const AgentRequest &, std::span<std::byte> payload)
{
    const auto asked = record_in<LogModule>(payload);
    const std::string_view name = bounded_text(asked.name);
    // Clients take "all" in any case, so it is known in any case; modules are not.
    return is_word(name, "all") ? give(modules_.all(), payload)
                                : give(modules_.find(name), payload);
}

int32_t LogService::set_log_module(Client &, const AgentRequest &request,
                                   std::span<std::byte> payload)
{
    const auto index = static_cast<uint32_t>(request.ident);
    return modules_.set_printing(index, record_in<uint32_t>(payload))
               ? int32_t{AGENT_STATUS_OK}
               : int32_t{STATUS_NO_SUCH_RECORD};
}

// A hold counts only while logging is on, because a client that is told "off" sends no release.
bool LogService::hold(Client &client)
{
    if (!log_.enabled()) {
        return false;
    }
    ++client.holds;
    log_.hold();
    return true;
}

// Followers release whatever their hold returned: a release without a hold is nothing.
void LogService::release(Client &client)
{
    if (client.holds > 0) {
        --client.holds;
        log_.release();
    }
}

} // namespace agentsim

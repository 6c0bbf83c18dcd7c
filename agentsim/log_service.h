// The log service: answers requests over records, without knowing how they travel.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "agentsim/event_log.h"
#include "agentsim/module_table.h"
#include "ruk/agent.h"

namespace agentsim
{

// The service's own answers, beside those of ruk/agent.h.  Clients tell none of them apart.
enum ServiceStatus : int32_t {
    STATUS_NO_SUCH_RECORD = 3,
    STATUS_UNKNOWN_OPCODE = 4,
    STATUS_WRONG_SIZE = 5,
    STATUS_UNKNOWN_OPERATION = 7,
};

// What the service says of itself.
struct Identity {
    bool version_mismatch = false;
    std::array<uint8_t, 4> management_ip = {127, 0, 0, 1}; // octets in text order
};

// What belongs to one connection: its holds, which end with it.
struct Client {
    uint64_t holds = 0;
};

class LogService
{
public:
    LogService(EventLog log, ModuleTable modules, Identity identity);

    // Answers one request: changes the record in payload, never its size, and returns the
    // status.  With a status other than 0 the payload is left untouched.
    int32_t answer(Client &client, const AgentRequest &request, std::span<std::byte> payload);

    // Releases what a client held that has gone.
    void forget(Client &client);

    // Logs an event that happened, if its module prints its level.
    void log(const LogEntry &event);

    // Counts events that happened but could not be taken.
    void lose(uint64_t count) { log_.lose(count); }

    const ModuleTable &modules() const { return modules_; }

private:
    using Handler = int32_t (LogService::*)(Client &client, const AgentRequest &request,
                                            std::span<std::byte> payload);
    struct Operation;
    static const Operation k_operations[];

    int32_t management_ip(Client &client, const AgentRequest &request,
                          std::span<std::byte> payload);
    int32_t version(Client &client, const AgentRequest &request, std::span<std::byte> payload);
    int32_t log_info(Client &client, const AgentRequest &request, std::span<std::byte> payload);
    int32_t log_entry(Client &client, const AgentRequest &request, std::span<std::byte> payload);
    int32_t set_log(Client &client, const AgentRequest &request, std::span<std::byte> payload);
    int32_t log_module(Client &client, const AgentRequest &request, std::span<std::byte> payload);
    int32_t find_log_module(Client &client, const AgentRequest &request,
                            std::span<std::byte> payload);
    int32_t set_log_module(Client &client, const AgentRequest &request,
                           std::span<std::byte> payload);

    bool hold(Client &client);
    void release(Client &client);

    EventLog log_;
    ModuleTable modules_;
    Identity identity_;
};

} // namespace agentsim

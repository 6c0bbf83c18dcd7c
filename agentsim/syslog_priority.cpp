// The priorities of syslog (RFC 5424, section 6.2.1) as levels and modules.
#include "agentsim/syslog_priority.h"

#include <iterator>
#include <string_view>

namespace agentsim
{

namespace
{

// One row per severity, from emergency (0) to debug (7).
constexpr uint16_t k_levels[] = {KT_LEVEL_ERROR,   KT_LEVEL_ERROR,  KT_LEVEL_ERROR, KT_LEVEL_ERROR,
                                 KT_LEVEL_WARNING, KT_LEVEL_NOTICE, KT_LEVEL_INFO,  KT_LEVEL_DEBUG};

// One row per facility; those above, 16 to 23, are for local use.
constexpr std::string_view k_modules[] = {
    "kern",   // kernel messages
    "user",   // user-level messages
    "daemon", // mail
    "daemon", // system daemons
    "auth",   // security and authorisation
    "syslog", // syslog itself
    "daemon", // line printer
    "daemon", // network news
    "daemon", // file copies between hosts
    "cron",   // clock daemon
    "auth",   // security and authorisation, private
    "daemon", // file transfer
    "daemon", // network time
    "auth",   // log audit
    "syslog", // log alert
    "cron",   // clock daemon
};

} // namespace

uint16_t level_of_priority(uint32_t priority)
{
    return k_levels[priority % std::size(k_levels)];
}

uint32_t module_of_priority(uint32_t priority, const ModuleTable &modules)
{
    const uint32_t facility = priority / 8;
    return modules.index_for(facility < std::size(k_modules) ? k_modules[facility] : "local",
                             facility);
}

} // namespace agentsim

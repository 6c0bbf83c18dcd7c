// The priorities and facilities of syslog, as levels and modules of the event log.
#pragma once

#include <cstdint>

#include "agentsim/module_table.h"

namespace agentsim
{

// Level of a priority as in "<30>" or in a kernel record: its low three bits are the severity.
uint16_t level_of_priority(uint32_t priority);

// Module of that priority's facility, its bits above those three.
uint32_t module_of_priority(uint32_t priority, const ModuleTable &modules);

} // namespace agentsim

// The log service inside the process: what the front end calls instead of an Agent.
#pragma once

#include "agentsim/log_service.h"

namespace agentsim
{

// From now on the functions kt_get_log_info and its family act on service, which outlives them.
// Until then they fail.
void serve_in_process(LogService &service);

} // namespace agentsim

// The log service as the front end calls it: through the Agent, or through the functions of the
// process itself while ruk_rcli_dpa_loga_log is 1.
#pragma once

#include "ruk/log.h"

namespace log_service
{

// The cursor before the first entry or module.
constexpr uint64_t k_before_first_entry = UINT64_MAX;
constexpr uint32_t k_before_first_module = UINT32_MAX;

// The argument local of ruk_log_hold and ruk_log_release.
enum Hold : int32_t { k_on_agents_behalf = 0, k_local = 1 };

// What is printed when the status can't be had.
constexpr const char *k_no_info = "Can't get log info\n";

bool is_in_process();

// Each is false when the service failed; the record is then as the call left it.
bool get_info(LogInfo &info);
bool require_info(LogInfo &info); // says so when it failed
bool next_entry(LogEntry &entry);
bool set_log(LogSetOp operation, uint64_t &value);
bool next_module(LogModule &module);
bool find_module(LogModule &module);
void set_module(uint32_t index, uint32_t mask); // its failure shows in show debug only

// The two halves of ruk_log_release, for a read-out that prints its entries in between.
bool release(uint32_t was_on, Hold kind);
void report_failed_release();

} // namespace log_service

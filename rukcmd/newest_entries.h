// Which entries "the newest so many" are.
#pragma once

#include <algorithm>
#include <cstdlib>

#include "ruk/log.h"
#include "rukcmd/log_service.h"

namespace newest_entries
{

constexpr uint32_t k_default_count = 25;
constexpr uint32_t k_most_count = 10000;

// The count at the start of the arguments of show last.
inline uint32_t count_of(const char *arguments)
{
    if (arguments == nullptr) {
        return k_default_count;
    }
    const auto count = static_cast<uint32_t>(strtoull(arguments, nullptr, 0));
    return std::clamp(count, uint32_t{1}, k_most_count);
}

// Whether they are fewer than the log holds.  An empty log passes: available - 1 wraps.
inline bool are_part_of_log(uint32_t count, const LogInfo &info)
{
    return count < info.available - 1;
}

// Where reading them begins.
inline uint64_t cursor_before(uint32_t count, const LogInfo &info)
{
    return are_part_of_log(count, info) ? info.total - count - 1
                                        : log_service::k_before_first_entry;
}

} // namespace newest_entries

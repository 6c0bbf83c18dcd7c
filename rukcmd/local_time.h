// Local time as the lines of the log show it.
#pragma once

#include <ctime>

namespace local_time
{

constexpr size_t k_size = 15; // "Mmm dd hh:mm:ss"

// Writes month, day and time of day as ctime_r tells them to the k_size bytes at out.  False when
// it tells no such text.  Costs a conversion a minute and zone, not one a call.  Each thread has
// its own minute.  A new zone is noticed, as long as its names or its offset from UTC are others.
bool put(char *out, time_t seconds);

} // namespace local_time

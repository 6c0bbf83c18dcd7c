// The event log's ring.  The entries held are always the numbers from total - available up to
// total - 1, so a cursor is answered by arithmetic and never by a search.
#include "agentsim/event_log.h"

namespace agentsim
{

EventLog::EventLog(uint32_t capacity, uint64_t first_entry) : ring_(capacity), total_(first_entry)
{
}

void EventLog::add(const LogEntry &event)
{
    if (!enabled_ || holds_ != 0) {
        ++skipped_;
        return;
    }
    if (total_ == k_all_ones) {
        // The numbers are used up: all ones can't be told from "before the oldest".
        ++lost_;
        return;
    }
    LogEntry &place = ring_[total_ % ring_.size()];
    place = event;
    place.entry = total_;
    if (available_ == ring_.size()) {
        ++wrapped_;
    } else {
        ++available_;
    }
    if (total_ == stop_after_) {
        enabled_ = false;
        stop_after_ = k_all_ones;
    }
    ++total_;
}

const LogEntry *EventLog::after(uint64_t cursor) const
{
    if (available_ == 0) {
        return nullptr;
    }
    const uint64_t oldest = total_ - available_;
    if (cursor == k_all_ones || cursor < oldest) {
        return &ring_[oldest % ring_.size()];
    }
    return cursor + 1 < total_ ? &ring_[(cursor + 1) % ring_.size()] : nullptr;
}

LogInfo EventLog::info() const
{
    return {.available = available_,
            .enabled = enabled_ ? 1U : 0U,
            .total = total_,
            .wrapped = wrapped_,
            .lost = lost_,
            .skipped = skipped_,
            .stop_after = stop_after_};
}

void EventLog::start(uint64_t count)
{
    enabled_ = true;
    limit_to(count);
}

void EventLog::stop(uint64_t count)
{
    if (count == 0) {
        enabled_ = false;
    } else {
        limit_to(count);
    }
}

// A limit beyond the last number that an entry can have is never reached: it is none.
void EventLog::limit_to(uint64_t count)
{
    const bool reachable = count != 0 && count <= k_all_ones - total_;
    stop_after_ = reachable ? total_ + (count - 1) : k_all_ones;
}

} // namespace agentsim

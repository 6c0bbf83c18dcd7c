// The event log: a ring of entries whose numbers never repeat, and the switch, the limit and the
// holds that decide whether an arriving event is kept.  Knows nothing of modules and requests.
#pragma once

#include <cstdint>
#include <vector>

#include "ruk/log.h"

namespace agentsim
{

class EventLog
{
public:
    // As a cursor: before the oldest entry.  As a limit: none.  Never an entry's number.
    static constexpr uint64_t k_all_ones = UINT64_MAX;

    // Logging is on from the start.  capacity must not be 0; first_entry is the number of the
    // first entry, and so the log's total until it comes.
    EventLog(uint32_t capacity, uint64_t first_entry);

    // Numbers the event and keeps it, over the oldest one when the ring is full.  While logging
    // is off or held the event is counted as skipped instead.
    void add(const LogEntry &event);

    // Counts an event that its module does not print.
    void skip() { ++skipped_; }

    // Counts events that never arrived here.
    void lose(uint64_t count) { lost_ += count; }

    // The oldest entry whose number exceeds cursor, or null.  Valid until the next change.
    const LogEntry *after(uint64_t cursor) const;

    LogInfo info() const;

    // Whether logging is switched on; a hold does not change that.
    bool enabled() const { return enabled_; }

    // Switches on, to stop by itself after count further entries; 0 means no limit.
    void start(uint64_t count);

    // Switches off at once (0, which keeps an earlier limit for a resume), or sets the limit.
    void stop(uint64_t count);

    void resume() { enabled_ = true; }

    // Empties the ring.  Numbers and counters go on, since cursors are worked out from the total.
    void clear() { available_ = 0; }

    // Holds count: events are skipped until each hold has been released.
    void hold() { ++holds_; }
    void release() { --holds_; }

private:
    void limit_to(uint64_t count);

    std::vector<LogEntry> ring_; // an entry's place is its number modulo the size
    uint32_t available_ = 0;
    bool enabled_ = true;
    uint64_t total_;
    uint64_t wrapped_ = 0;
    uint64_t lost_ = 0;
    uint64_t skipped_ = 0;
    uint64_t stop_after_ = k_all_ones;
    uint64_t holds_ = 0;
};

} // namespace agentsim

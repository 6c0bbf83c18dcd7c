// Where events come from.  The server waits for its sources together with its clients.
#pragma once

#include <cstdint>

#include "agentsim/log_service.h"

namespace agentsim
{

class EventSource
{
public:
    static constexpr int64_t k_never = INT64_MAX;

    EventSource() = default;
    virtual ~EventSource() = default;
    EventSource(const EventSource &) = delete;
    EventSource &operator=(const EventSource &) = delete;

    // Events wait when this descriptor can be read; -1 means none.
    virtual int descriptor() const { return -1; }

    // Events wait at this time of the monotonic clock, in nanoseconds.
    virtual int64_t due() const { return k_never; }

    // Hands a bounded number of waiting events to service, so that clients get their turn.
    // False: the source has ended.
    virtual bool collect(LogService &service, int64_t now) = 0;
};

} // namespace agentsim

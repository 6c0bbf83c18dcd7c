// The built-in generator: the life of a small data path, told at a steady rate.
#pragma once

#include <cstdint>

#include "agentsim/event_source.h"
#include "ruk/log.h"

namespace agentsim
{

class Generator : public EventSource
{
public:
    // rate is in events per second; 0 makes none by itself.
    Generator(uint32_t rate, int64_t now) : rate_(rate), started_(now), collected_(now) {}

    int64_t due() const override;
    bool collect(LogService &service, int64_t now) override;

    // Makes count events at once.
    void preload(LogService &service, uint64_t count);

private:
    uint64_t due_by(int64_t now) const;

    uint32_t rate_;
    int64_t started_;
    int64_t collected_;      // time of the last collection
    uint64_t scheduled_ = 0; // events made or lost since started_
    uint32_t told_ = 0;      // number of the next event, from which its text follows
};

} // namespace agentsim

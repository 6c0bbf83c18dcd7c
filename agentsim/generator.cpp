// The built-in generator.
#include "agentsim/generator.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

#include "agentsim/event.h"

namespace agentsim
{

namespace
{

// At high rates several events are made at a time, since each wait costs more than an event.
constexpr int64_t k_shortest_wait = 1'000'000;

// Events made before clients get their turn.
constexpr uint64_t k_batch = 4096;

// One kind of event.  write tells the n-th of all events.
struct Kind {
    const char *module;
    uint16_t level;
    int (*write)(char *text, size_t size, uint32_t n);
};

// The kinds take turns in this order.
constexpr Kind k_kinds[] = {
    {"flow", KT_LEVEL_INFO,
     [](char *text, size_t size, uint32_t n) {
         return snprintf(text, size, "flow %u added: port %u to port %u", n, n % 48, (n + 7) % 48);
     }},
    {"bridge", KT_LEVEL_DEBUG,
     [](char *text, size_t size, uint32_t n) {
         return snprintf(text, size, "learned 02:00:00:%02x:%02x:%02x on port %u", n >> 16 & 0xFF,
                         n >> 8 & 0xFF, n & 0xFF, n % 48);
     }},
    {"port", KT_LEVEL_NOTICE,
     [](char *text, size_t size, uint32_t n) {
         return snprintf(text, size, "port %u: link is %s", n % 48, n % 2 == 0 ? "up" : "down");
     }},
    {"vxlan", KT_LEVEL_INFO,
     [](char *text, size_t size, uint32_t n) {
         return snprintf(text, size, "segment %u: peer 192.0.2.%u reachable", 4096 + n % 512,
                         1 + n % 254);
     }},
    {"flow", KT_LEVEL_INFO,
     [](char *text, size_t size, uint32_t n) {
         return snprintf(text, size, "flow %u aged out after %u packets", n, n * 37 % 10007);
     }},
    {"mirror", KT_LEVEL_PACKET,
     [](char *text, size_t size, uint32_t n) {
         return snprintf(text, size, "mirrored %u bytes from port %u", 64 + n * 61 % 1455, n % 48);
     }},
    {"port", KT_LEVEL_WARNING,
     [](char *text, size_t size, uint32_t n) {
         return snprintf(text, size, "port %u: receive queue %u%% full", n % 48, 75 + n % 25);
     }},
    {"timer", KT_LEVEL_LOG,
     [](char *text, size_t size, uint32_t n) {
         return snprintf(text, size, "statistics sweep %u done", n);
     }},
    {"vxlan", KT_LEVEL_ERROR,
     [](char *text, size_t size, uint32_t n) {
         return snprintf(text, size, "segment %u: no route to peer 192.0.2.%u", 4096 + n % 512,
                         1 + n % 254);
     }},
};

void tell(LogService &service, uint32_t n)
{
    const auto index = static_cast<uint32_t>(n % std::size(k_kinds));
    const Kind &kind = k_kinds[index];
    char text[LOG_MESSAGE_SIZE];
    kind.write(text, sizeof text, n);
    const uint32_t module = service.modules().index_for(kind.module, index);
    service.log(event_now(module, kind.level, text, Ending::LINE_FEED));
}

} // namespace

int64_t Generator::due() const
{
    if (rate_ == 0) {
        return k_never;
    }
    const uint64_t next = scheduled_ + 1;
    const auto seconds = static_cast<int64_t>(next / rate_);
    const auto fraction = static_cast<int64_t>(next % rate_) * k_nanoseconds;
    // Rounded up: at that time the event must be due.
    const int64_t time = started_ + seconds * k_nanoseconds + (fraction + rate_ - 1) / rate_;
    return std::max(time, collected_ + k_shortest_wait);
}

bool Generator::collect(LogService &service, int64_t now)
{
    collected_ = now;
    uint64_t waiting = due_by(now) - scheduled_;
    if (waiting > rate_) {
        // More than a second behind, as after a suspension: what is older is lost.
        service.lose(waiting - rate_);
        scheduled_ += waiting - rate_;
        waiting = rate_;
    }
    const uint64_t count = std::min(waiting, k_batch);
    scheduled_ += count;
    preload(service, count);
    return true;
}

void Generator::preload(LogService &service, uint64_t count)
{
    for (uint64_t i = 0; i < count; ++i) {
        tell(service, told_++);
    }
}

// Events that should have happened by now.  Whole seconds apart, so that no product overflows.
uint64_t Generator::due_by(int64_t now) const
{
    const auto passed = static_cast<uint64_t>(std::max<int64_t>(now - started_, 0));
    constexpr auto k_second = static_cast<uint64_t>(k_nanoseconds);
    return passed / k_second * rate_ + passed % k_second * rate_ / k_second;
}

} // namespace agentsim

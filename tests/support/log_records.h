// The log service's records as bytes, laid out here by hand.
#pragma once

#include "tests/support/scripted_agent.h"

namespace ruk_test
{

inline std::string u16(uint16_t value)
{
    return u32(value).substr(0, 2);
}

// Text in a field of size bytes, filled up with zeros; a text as long as the field has no
// terminator.
inline std::string field(std::string text, size_t size)
{
    text.resize(size, '\0');
    return text;
}

constexpr uint64_t k_no_stop = ~uint64_t{0};

struct InfoFields {
    uint32_t available = 0;
    uint32_t enabled = 0;
    uint64_t total = 0;
    uint64_t wrapped = 0;
    uint64_t lost = 0;
    uint64_t skipped = 0;
    uint64_t stop_after = k_no_stop;
};

inline std::string log_info(const InfoFields &info)
{
    return u32(info.available) + u32(info.enabled) + u64(info.total) + u64(info.wrapped) +
           u64(info.lost) + u64(info.skipped) + u64(info.stop_after);
}

struct EntryFields {
    uint32_t seconds = 0;
    uint32_t microseconds = 0;
    uint64_t entry = 0;
    uint32_t module = 0;
    uint16_t level = 0;
    uint16_t cpu = 0;
    std::string message = "";
};

inline std::string log_entry(const EntryFields &entry)
{
    return u32(entry.seconds) + u32(entry.microseconds) + u64(entry.entry) + u32(entry.module) +
           u16(entry.level) + u16(entry.cpu) + field(entry.message, 128);
}

struct ModuleFields {
    uint32_t index = 0;
    uint32_t available = 0;
    uint32_t printing = 0;
    uint32_t default_printing = 0;
    std::string name = "";
};

inline std::string log_module(const ModuleFields &module)
{
    return u32(module.index) + u32(module.available) + u32(module.printing) +
           u32(module.default_printing) + field(module.name, 32);
}

} // namespace ruk_test

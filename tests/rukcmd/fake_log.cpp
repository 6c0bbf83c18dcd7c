// A small log that answers requests and in-process calls.
#include "tests/rukcmd/fake_log.h"

namespace ruk_test
{

void FakeLog::add_events(uint64_t first, uint64_t last)
{
    const std::lock_guard lock(mutex_);
    for (uint64_t n = first; n <= last; ++n) {
        entries_.push_back(numbered_entry(n));
    }
    next_number_ = last + 1;
}

void FakeLog::add_modules(const std::vector<uint32_t> &indexes)
{
    const std::lock_guard lock(mutex_);
    for (const uint32_t index : indexes) {
        modules_.push_back({index, 0xff, 0x87, 0x03, "mod" + std::to_string(index)});
    }
}

void FakeLog::set_enabled(bool enabled)
{
    const std::lock_guard lock(mutex_);
    enabled_ = enabled;
}

bool FakeLog::is_enabled() const
{
    const std::lock_guard lock(mutex_);
    return enabled_;
}

uint32_t FakeLog::printing_of(uint32_t index) const
{
    const std::lock_guard lock(mutex_);
    for (const Module &module : modules_) {
        if (module.index == index) {
            return module.printing;
        }
    }
    return UINT32_MAX;
}

int32_t FakeLog::answer(uint16_t opcode, uint32_t ident, std::string &payload)
{
    const std::lock_guard lock(mutex_);
    switch (opcode) {
    case 63:
        return 0;
    case 233:
        payload = info_bytes(info());
        return 0;
    case 234:
        return next_entry(payload);
    case 236:
        return set_log(ident, payload);
    case 311:
        return next_module(payload);
    case 312:
        return find_module(payload);
    case 313:
        return set_module(ident, number_at<uint32_t>(payload, 0));
    default:
        return 9;
    }
}

Info FakeLog::info() const
{
    Info info;
    info.available = static_cast<uint32_t>(entries_.size());
    info.enabled = enabled_ ? 1 : 0;
    info.total = next_number_;
    return info;
}

int32_t FakeLog::next_entry(std::string &payload) const
{
    const auto cursor = number_at<uint64_t>(payload, 8);
    for (const std::string &entry : entries_) {
        if (cursor == UINT64_MAX || number_at<uint64_t>(entry, 8) > cursor) {
            payload = entry;
            return 0;
        }
    }
    return 9;
}

int32_t FakeLog::next_module(std::string &payload) const
{
    const auto cursor = number_at<uint32_t>(payload, 0);
    for (const Module &module : modules_) {
        if (cursor == UINT32_MAX || module.index > cursor) {
            payload = module_bytes(module);
            return 0;
        }
    }
    return 9;
}

int32_t FakeLog::find_module(std::string &payload) const
{
    const std::string name = payload.substr(16);
    if (name == padded("all", 32)) {
        payload = module_bytes({0, 0xff, 0x01, 0x87, "all"});
        return 0;
    }
    for (const Module &module : modules_) {
        if (name == padded(module.name, 32)) {
            payload = module_bytes(module);
            return 0;
        }
    }
    return 9;
}

int32_t FakeLog::set_log(uint32_t operation, std::string &payload)
{
    const bool was_on = enabled_;
    switch (operation) {
    case 1:
    case 3:
        enabled_ = true;
        return 0;
    case 2:
        enabled_ = false;
        payload = bytes_of(uint64_t{was_on});
        return 0;
    case 4:
        entries_.clear();
        return 0;
    case 5:
        payload = bytes_of(uint64_t{was_on});
        return 0;
    case 6:
        return 0;
    default:
        return 9;
    }
}

int32_t FakeLog::set_module(uint32_t index, uint32_t mask)
{
    for (Module &module : modules_) {
        if (module.index == index) {
            module.printing = mask;
            return 0;
        }
    }
    return 9;
}

} // namespace ruk_test

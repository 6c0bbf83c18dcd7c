// A small log of a test: answers the service's requests from records that the test puts in.
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "tests/support/log_records.h"

namespace ruk_test
{

class FakeLog
{
public:
    // Events from first to last.
    void add_events(uint64_t first, uint64_t last);

    // Modules of the given indexes, called "mod<index>".
    void add_modules(const std::vector<uint32_t> &indexes);

    void set_enabled(bool enabled);
    bool is_enabled() const;

    // Answers one request: the status, and the record in place of the payload.  Refuses what it
    // doesn't know with status 9.
    int32_t answer(uint16_t opcode, uint32_t ident, std::string &payload);

    // The printing bits of the module at index.
    uint32_t printing_of(uint32_t index) const;

private:
    int32_t next_entry(std::string &payload) const;
    int32_t next_module(std::string &payload) const;
    int32_t find_module(std::string &payload) const;
    int32_t set_log(uint32_t operation, std::string &payload);
    int32_t set_module(uint32_t index, uint32_t mask);
    Info info() const;

    mutable std::mutex mutex_;
    bool enabled_ = false;
    uint64_t next_number_ = 0;
    std::vector<std::string> entries_;
    std::vector<Module> modules_;
};

} // namespace ruk_test

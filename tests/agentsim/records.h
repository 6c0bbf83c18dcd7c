// Records of the log service as tests write and compare them.
#pragma once

#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <string_view>

#include "ruk/agent.h"
#include "ruk/log.h"

namespace ruk_test
{

constexpr uint64_t k_none = 0xFFFFFFFFFFFFFFFF;

inline LogEntry event_of(uint32_t module, uint16_t level, std::string_view text)
{
    LogEntry event{};
    event.seconds = 1'600'000'000;
    event.microseconds = 250'000;
    event.module = module;
    event.level = level;
    event.cpu = 3;
    text.copy(event.message, sizeof event.message);
    return event;
}

inline void expect_info(const LogInfo &info, const LogInfo &expected)
{
    EXPECT_EQ(info.available, expected.available);
    EXPECT_EQ(info.enabled, expected.enabled);
    EXPECT_EQ(info.total, expected.total);
    EXPECT_EQ(info.wrapped, expected.wrapped);
    EXPECT_EQ(info.lost, expected.lost);
    EXPECT_EQ(info.skipped, expected.skipped);
    EXPECT_EQ(info.stop_after, expected.stop_after);
}

// A request with one buffer of size bytes, every field that means nothing filled with noise.
inline AgentRequest request_of(uint16_t opcode, int32_t ident, uint32_t size)
{
    AgentRequest request;
    memset(&request, 0xA5, sizeof request);
    request.opcode = opcode;
    request.version = 348;
    request.flags1 = 3;
    request.ident = ident;
    request.bsize1 = size;
    request.elements1 = 0;
    request.esize1 = 0;
    return request;
}

template <typename Record> std::string bytes_of(const Record &record)
{
    return {reinterpret_cast<const char *>(&record), sizeof record};
}

template <typename Record> Record record_of(std::string_view bytes, size_t offset = 0)
{
    Record record{};
    memcpy(&record, bytes.substr(offset, sizeof record).data(), sizeof record);
    return record;
}

} // namespace ruk_test

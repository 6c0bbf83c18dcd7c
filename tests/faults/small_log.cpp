// The answers to requests, from a log that never changes but once.
#include "tests/faults/small_log.h"

#include "tests/support/log_records.h"

namespace ruk_test::small_log
{
namespace
{

constexpr size_t k_header = 56;
constexpr int k_entry9_from_request = 20;
constexpr uint16_t k_first_echoing_opcode = 1000;

// What the log holds.
const Event k_events[] = {
    {1'600'000'000, 42, 7, 3, 1, 2, "seven\n"},
    {1'600'000'061, 999'999, 8, 12, 0x10, 11, "eight\n"},
    {1'600'000'122, 1, 9, 3, 4, 0, "nine\n"},
};
const Module k_modules[] = {
    {0, 0xff, 0x87, 0x07, "flow"},
    {4, 0x1f, 0x01, 0x03, "port"},
};

struct Answer {
    int32_t status;
    std::string payload;
};

Answer next_entry(const std::string &request, int number)
{
    const auto cursor = number_at<uint64_t>(request, k_header + 8);
    for (const Event &event : k_events) {
        if (event.entry + 1 > cursor + 1 && (event.entry < 9 || number >= k_entry9_from_request)) {
            return {0, entry_bytes(event)};
        }
    }
    return {1, request.substr(k_header)};
}

Answer next_module(const std::string &request)
{
    const auto cursor = number_at<uint32_t>(request, k_header);
    for (const Module &module : k_modules) {
        if (module.index + 1 > cursor + 1) {
            return {0, module_bytes(module)};
        }
    }
    return {1, request.substr(k_header)};
}

Answer set_log(const std::string &request)
{
    const auto operation = number_at<int32_t>(request, 8);
    // Stop and hold tell that the log was on.
    return {0, operation == 2 || operation == 5 ? bytes_of(uint64_t{1}) : request.substr(k_header)};
}

Answer add_one_to_each(const std::string &request)
{
    std::string payload = request.substr(k_header);
    for (char &c : payload) {
        ++c;
    }
    return {0, payload};
}

Answer echo_header(const std::string &request)
{
    const Answer rest = add_one_to_each(request);
    return {0, request.substr(0, 2) + request.substr(8, 4) + rest.payload.substr(6)};
}

Answer answer_of(const std::string &request, int number)
{
    const auto opcode = number_at<uint16_t>(request, 0);
    if (opcode >= k_first_echoing_opcode) {
        return echo_header(request);
    }
    switch (opcode) {
    case 233:
        return {0, info_bytes({.available = 2, .enabled = 1, .total = 9, .wrapped = 3})};
    case 234:
        return next_entry(request, number);
    case 236:
        return set_log(request);
    case 311:
        return next_module(request);
    case 312:
        return {0, module_bytes(k_modules[0])};
    case 300:
        return add_one_to_each(request);
    default:
        return {0, request.substr(k_header)};
    }
}

} // namespace

std::string reply_of(const std::string &request, int number)
{
    const Answer answer = answer_of(request, number);
    return request.substr(0, 12) + bytes_of(answer.status) + request.substr(16, k_header - 16) +
           answer.payload;
}

} // namespace ruk_test::small_log

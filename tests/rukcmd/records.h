// The records of the log service as bytes, typed here by their offsets so that the tests don't lean
// on the structures that they check.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>

namespace ruk_test
{

// A number's bytes in host order.
template <typename Number> std::string bytes_of(Number number)
{
    std::string bytes(sizeof number, '\0');
    memcpy(bytes.data(), &number, sizeof number);
    return bytes;
}

template <typename Number> Number number_at(const std::string &bytes, size_t offset)
{
    Number number;
    memcpy(&number, &bytes.at(offset), sizeof number);
    return number;
}

// text cut or filled with zeros to size bytes.
inline std::string padded(const std::string &text, size_t size)
{
    std::string bytes(size, '\0');
    text.copy(bytes.data(), size);
    return bytes;
}

struct Info {
    uint32_t available = 0;
    uint32_t enabled = 0;
    uint64_t total = 0;
    uint64_t wrapped = 0;
    uint64_t lost = 0;
    uint64_t skipped = 0;
    uint64_t stop_after = UINT64_MAX;
};

inline std::string info_bytes(const Info &info)
{
    return bytes_of(info.available) + bytes_of(info.enabled) + bytes_of(info.total) +
           bytes_of(info.wrapped) + bytes_of(info.lost) + bytes_of(info.skipped) +
           bytes_of(info.stop_after);
}

struct Event {
    uint32_t seconds = 0;
    uint32_t microseconds = 0;
    uint64_t entry = 0;
    uint32_t module = 0;
    uint16_t level = 0;
    uint16_t cpu = 0;
    std::string message = "";
};

inline std::string entry_bytes(const Event &event)
{
    return bytes_of(event.seconds) + bytes_of(event.microseconds) + bytes_of(event.entry) +
           bytes_of(event.module) + bytes_of(event.level) + bytes_of(event.cpu) +
           padded(event.message, 128);
}

struct Module {
    uint32_t index = 0;
    uint32_t available = 0;
    uint32_t printing = 0;
    uint32_t default_printing = 0;
    std::string name = "";
};

inline std::string module_bytes(const Module &module)
{
    return bytes_of(module.index) + bytes_of(module.available) + bytes_of(module.printing) +
           bytes_of(module.default_printing) + padded(module.name, 32);
}

// Event number n of many alike, and the line that it prints as.
inline std::string numbered_entry(uint64_t n)
{
    return entry_bytes({.seconds = 1700000000,
                        .microseconds = 5,
                        .entry = n,
                        .module = 2,
                        .level = 8,
                        .cpu = 1,
                        .message = "event " + std::to_string(n) + "\n"});
}

inline std::string numbered_line(uint64_t n)
{
    const std::string number = std::to_string(n);
    const std::string blanks(number.size() < 8 ? 8 - number.size() : 0, ' ');
    return "Nov 14 22:13:20.000005 " + blanks + number + "  1   2   8    Info event " + number +
           "\n";
}

// The lines of the events from first to last.
inline std::string numbered_lines(uint64_t first, uint64_t last)
{
    std::string lines;
    for (uint64_t n = first; n <= last; ++n) {
        lines += numbered_line(n);
    }
    return lines;
}

constexpr const char *k_entry_header =
    "Timestamp                  Entry CPU  Mod Lv         Message\n";
constexpr const char *k_module_header =
    "              Module           Available            Printing\n";

} // namespace ruk_test

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
std::string padded(const std::string &text, size_t size);

struct Info {
    uint32_t available = 0;
    uint32_t enabled = 0;
    uint64_t total = 0;
    uint64_t wrapped = 0;
    uint64_t lost = 0;
    uint64_t skipped = 0;
    uint64_t stop_after = UINT64_MAX;
};
std::string info_bytes(const Info &info);

struct Event {
    uint32_t seconds = 0;
    uint32_t microseconds = 0;
    uint64_t entry = 0;
    uint32_t module = 0;
    uint16_t level = 0;
    uint16_t cpu = 0;
    std::string message = "";
};
std::string entry_bytes(const Event &event);

struct Module {
    uint32_t index = 0;
    uint32_t available = 0;
    uint32_t printing = 0;
    uint32_t default_printing = 0;
    std::string name = "";
};
std::string module_bytes(const Module &module);

// Event number n of many alike, and the line that it prints as.
std::string numbered_entry(uint64_t n);
std::string numbered_line(uint64_t n);

// The lines of the events from first to last.
std::string numbered_lines(uint64_t first, uint64_t last);

inline const std::string k_entry_header =
    "Timestamp                  Entry CPU  Mod Lv         Message\n";
inline const std::string k_module_header =
    "              Module           Available            Printing\n";

} // namespace ruk_test

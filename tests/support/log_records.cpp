// The records of the log service, byte by byte.
#include "tests/support/log_records.h"

namespace ruk_test
{

std::string padded(const std::string &text, size_t size)
{
    std::string bytes(size, '\0');
    text.copy(bytes.data(), size);
    return bytes;
}

std::string info_bytes(const Info &info)
{
    return bytes_of(info.available) + bytes_of(info.enabled) + bytes_of(info.total) +
           bytes_of(info.wrapped) + bytes_of(info.lost) + bytes_of(info.skipped) +
           bytes_of(info.stop_after);
}

std::string entry_bytes(const Event &event)
{
    return bytes_of(event.seconds) + bytes_of(event.microseconds) + bytes_of(event.entry) +
           bytes_of(event.module) + bytes_of(event.level) + bytes_of(event.cpu) +
           padded(event.message, 128);
}

std::string module_bytes(const Module &module)
{
    return bytes_of(module.index) + bytes_of(module.available) + bytes_of(module.printing) +
           bytes_of(module.default_printing) + padded(module.name, 32);
}

std::string numbered_entry(uint64_t n)
{
    return entry_bytes({.seconds = 1700000000,
                        .microseconds = 5,
                        .entry = n,
                        .module = 2,
                        .level = 8,
                        .cpu = 1,
                        .message = "event " + std::to_string(n) + "\n"});
}

std::string numbered_line(uint64_t n)
{
    const std::string number = std::to_string(n);
    const std::string blanks(number.size() < 8 ? 8 - number.size() : 0, ' ');
    return "Nov 14 22:13:20.000005 " + blanks + number + "  1   2   8    Info event " + number +
           "\n";
}

std::string numbered_lines(uint64_t first, uint64_t last)
{
    std::string lines;
    for (uint64_t n = first; n <= last; ++n) {
        lines += numbered_line(n);
    }
    return lines;
}

} // namespace ruk_test

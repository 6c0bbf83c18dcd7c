// Formatted print, to standard output and to a buffer.  Everything that has no list of arguments of
// its own prints through these two: each further function of the C library's family would be one
// more name to look up whenever the tool starts.
#pragma once

#include <cstddef>

[[gnu::format(printf, 1, 2)]] void kt_print(const char *format, ...);

// Returns the length of the whole text, as snprintf does.
[[gnu::format(printf, 3, 4)]] int kt_print_to(char *buffer, size_t size, const char *format, ...);

// The output buffer and the print operation of the front end, for formats and for text.
#include "rukcmd/output.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "ruk/front_end.h"

// Large variables lie behind the small ones, which every command touches and which share a page.
[[gnu::section(".bss.large")]] char ruk_rcli_buffer[RUK_RCLI_BUFFER_SIZE];
char *ruk_rcli_buffer_ptr = nullptr;
char *ruk_rcli_entry_start_ptr = nullptr;
int32_t ruk_rcli_print_len = 0;

namespace
{

// Bytes from the cursor to the buffer's end; 0 when the cursor lies outside.  Addresses, since a
// cursor beyond the end is no pointer that may be compared.
size_t bytes_left()
{
    const auto start = reinterpret_cast<uintptr_t>(&ruk_rcli_buffer[0]);
    const auto cursor = reinterpret_cast<uintptr_t>(ruk_rcli_buffer_ptr);
    const bool inside = cursor >= start && cursor < start + RUK_RCLI_BUFFER_SIZE;
    return inside ? start + RUK_RCLI_BUFFER_SIZE - cursor : 0;
}

bool has_room()
{
    const size_t needed = ruk_rcli_entry_start_ptr != nullptr ? 1 : RUK_RCLI_ROOM;
    return bytes_left() >= needed;
}

// The cursor moves even when nothing was written: once the buffer is full, every later line of the
// command is dropped whole.
void advance_cursor()
{
    const auto cursor = reinterpret_cast<uintptr_t>(ruk_rcli_buffer_ptr);
    const auto step = static_cast<uintptr_t>(static_cast<intptr_t>(ruk_rcli_print_len));
    ruk_rcli_buffer_ptr = reinterpret_cast<char *>(cursor + step);
}

// At the cursor, terminated, as much as there is room for.
void copy_to_buffer(std::string_view text)
{
    const size_t copied = std::min(text.size(), bytes_left() - 1);
    memcpy(ruk_rcli_buffer_ptr, text.data(), copied);
    ruk_rcli_buffer_ptr[copied] = '\0';
    ruk_rcli_print_len = static_cast<int32_t>(text.size());
}

} // namespace

void output::put(std::string_view text)
{
    if (goes_to_stdout()) {
        fwrite(text.data(), 1, text.size(), stdout);
    } else if (has_room()) {
        copy_to_buffer(text);
    }
    advance_cursor();
}

bool output::goes_to_stdout()
{
    return ruk_rcli_buffer_ptr == nullptr;
}

void ruk_rcli_printf(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    if (output::goes_to_stdout()) {
        vprintf(format, arguments);
    } else if (has_room()) {
        ruk_rcli_print_len = vsnprintf(ruk_rcli_buffer_ptr, bytes_left(), format, arguments);
    }
    va_end(arguments);
    advance_cursor();
}

// One entry as a line of text.
#pragma once

#include <cstddef>

#include "ruk/log.h"

namespace entry_line
{

// Room for the longest line: the fields at their widest, the message and a terminator.
constexpr size_t k_size = 256;

// Both write the line into the k_size bytes at line and return its length.  The message must have
// been settled.  write does at a tenth of the cost what the one format of write_plainly says.
size_t write(char *line, const LogEntry &entry, size_t message_length);
size_t write_plainly(char *line, const LogEntry &entry);

} // namespace entry_line

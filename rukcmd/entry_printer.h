// What the printing of entries shares with the read-out.
#pragma once

#include <cstddef>

#include "ruk/log.h"

// Cuts the message to its field and gives it the line feed that it should end in.  Returns its
// length.
size_t settle_message(LogEntry &entry);

// What the printing of entries shares with the read-out.
#pragma once

#include "ruk/log.h"

// Cuts the message to its field and gives it the line feed that it should end in.
void settle_message(LogEntry &entry);

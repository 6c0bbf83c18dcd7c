// The stand-alone tool's read-out.  Logging is stopped for as long as the exchanges take: entries
// are read into memory first and everything is printed once the log runs again, so that a slow
// reader of the output costs no events.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ruk/log.h"
#include "rukcmd/interruption.h"
#include "rukcmd/line_store.h"

// Stops the log when made and lets it run again when it ends, at the latest.
class HeldLog
{
public:
    HeldLog();
    ~HeldLog();
    HeldLog(const HeldLog &) = delete;
    HeldLog &operator=(const HeldLog &) = delete;

    // The header of the entries, printed before the first of them.
    void print_header() { header_due_ = true; }

    // Reads what follows cursor, ends the hold and prints.
    void show_after(uint64_t cursor);

    // Ends the hold and prints message instead.
    void give_up(const char *message);

private:
    void read_after(uint64_t cursor);
    bool keep(const LogEntry &entry, size_t message_length);
    void end();
    void print();
    void print_held(LogEntry *last);
    void let_exchanges_finish();

    InterruptionGuard guard_; // first: nothing may interrupt the stop itself
    uint32_t was_on_;
    bool ended_ = false;
    bool header_due_ = false;
    LineStore lines_;
    const char *last_words_ = nullptr;
};

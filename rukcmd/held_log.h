// The stand-alone tool's read-out.  Logging is stopped for as long as the exchanges take: entries
// are read into memory first and everything is printed once the log runs again, so that a slow
// reader of the output costs no events.
#pragma once

#include <cstddef>

#include "ruk/log.h"
#include "rukcmd/interruption.h"

// Entries, their messages settled, between reading and printing.
class EntryStore
{
public:
    EntryStore() = default;
    ~EntryStore();
    EntryStore(const EntryStore &) = delete;
    EntryStore &operator=(const EntryStore &) = delete;

    // False when memory, or the share of it that a log may take, is used up.
    bool add(const LogEntry &entry);

    // Prints until the end, or until guard has noted a signal.
    void print_and_empty(const InterruptionGuard &guard);

private:
    size_t print_line(size_t at);
    size_t print_block(size_t begin, const InterruptionGuard &guard);

    LogEntry *entries_ = nullptr;
    size_t count_ = 0;
    size_t capacity_ = 0;
};

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
    void end();
    void print();
    void print_held(LogEntry *last);
    void let_exchanges_finish();

    InterruptionGuard guard_; // first: nothing may interrupt the stop itself
    uint32_t was_on_;
    bool ended_ = false;
    bool header_due_ = false;
    EntryStore entries_;
    const char *last_words_ = nullptr;
};

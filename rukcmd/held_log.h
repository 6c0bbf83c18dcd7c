// The stand-alone tool's read-out.  Logging is stopped for as long as the exchanges take: entries
// are read into memory first and printed once the log runs again, so that a slow reader of the
// output costs no events.
#pragma once

#include <cstddef>

#include "ruk/log.h"
#include "rukcmd/interruption.h"

// Entries between reading and printing.
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
    LogEntry *entries_ = nullptr;
    size_t count_ = 0;
    size_t capacity_ = 0;
};

// Stops the log when made; one of the two members must then be called to let it run again.
class HeldLog
{
public:
    HeldLog();

    // Reads what follows cursor, releases the log and prints.
    void show_after(uint64_t cursor);
    void release();

private:
    void read_into(EntryStore &entries, uint64_t cursor);
    void print_held(EntryStore &entries, LogEntry *last);
    void let_exchanges_finish();

    InterruptionGuard guard_; // first: nothing may interrupt the stop itself
    uint32_t was_on_;
};

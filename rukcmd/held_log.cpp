// The stand-alone tool's read-out: stop, read into memory, release, print.
#include "rukcmd/held_log.h"

#include <cstdlib>
#include <unistd.h>

#include "ruk/agent.h"
#include "ruk/front_end.h"
#include "rukcmd/entry_line.h"
#include "rukcmd/entry_printer.h"
#include "rukcmd/log_service.h"
#include "rukcmd/output.h"

namespace
{

constexpr size_t k_first_capacity = 1024;
constexpr size_t k_most_entries = size_t{1} << 20;
constexpr size_t k_block_size = size_t{128} * 1024;

// What has been read is then printed before the release: the release connects anew, and what that
// has to say when the Agent is gone belongs behind the entries.
bool connection_is_broken()
{
    return !log_service::is_in_process() && kt_dpa_call_fd == -1;
}

} // namespace

EntryStore::~EntryStore()
{
    free(entries_);
}

bool EntryStore::add(const LogEntry &entry)
{
    if (count_ == capacity_) {
        const size_t wanted = capacity_ == 0 ? k_first_capacity : capacity_ * 2;
        void *const grown =
            wanted > k_most_entries ? nullptr : realloc(entries_, wanted * sizeof entry);
        if (grown == nullptr) {
            return false;
        }
        entries_ = static_cast<LogEntry *>(grown);
        capacity_ = wanted;
    }
    entries_[count_++] = entry;
    return true;
}

void EntryStore::print_and_empty(const InterruptionGuard &guard)
{
    size_t printed = 0;
    while (printed < count_ && !guard.interrupted()) {
        printed += output::goes_to_stdout() ? print_block(printed, guard) : print_line(printed);
    }
    count_ = 0;
}

// The buffer's rule of what still fits is one for lines.
size_t EntryStore::print_line(size_t at)
{
    ruk_log_print_entry(&entries_[at]);
    return 1;
}

// Hundreds of lines with one call.  Returns how many.
size_t EntryStore::print_block(size_t begin, const InterruptionGuard &guard)
{
    static char block[k_block_size];
    size_t length = 0;
    size_t i = begin;
    while (i < count_ && length <= sizeof block - entry_line::k_size && !guard.interrupted()) {
        length += entry_line::write(block + length, entries_[i++]);
    }
    output::put({block, length});
    return i - begin;
}

HeldLog::HeldLog() : was_on_(ruk_log_hold(log_service::k_local)) {}

HeldLog::~HeldLog()
{
    if (!ended_) {
        end();
    }
}

void HeldLog::show_after(uint64_t cursor)
{
    read_after(cursor);
    end();
}

void HeldLog::give_up(const char *message)
{
    last_words_ = message;
    end();
}

void HeldLog::read_after(uint64_t cursor)
{
    LogEntry entry{};
    entry.entry = cursor;
    let_exchanges_finish();
    while (!guard_.interrupted() && log_service::next_entry(entry)) {
        // The record is the next request's cursor and carries its message as it prints.
        settle_message(entry);
        // In process there is no exchange to keep up with, and a log whose reading never ends must
        // not fill the memory.
        if (log_service::is_in_process() || !entries_.add(entry)) {
            print_held(&entry);
        }
    }
}

void HeldLog::end()
{
    ended_ = true;
    if (connection_is_broken()) {
        print_held(nullptr);
    }
    const bool released = log_service::release(was_on_, log_service::k_local);
    guard_.end();
    print();
    if (!released) {
        log_service::report_failed_release();
    }
}

// Whatever has not been printed yet, as long as nothing interrupts.  A guard that has ended notes
// no signals.
void HeldLog::print()
{
    if (header_due_ && !guard_.interrupted()) {
        header_due_ = false;
        ruk_log_print_entry_header();
    }
    entries_.print_and_empty(guard_);
    if (last_words_ != nullptr && !guard_.interrupted()) {
        ruk_rcli_printf("%s", last_words_);
        last_words_ = nullptr;
    }
}

// Prints while the log is stopped: a reader that takes nothing, or has gone, must not keep it so.
void HeldLog::print_held(LogEntry *last)
{
    guard_.restart_calls(false);
    print();
    if (!guard_.interrupted()) {
        ruk_log_print_entry(last);
    }
    let_exchanges_finish();
}

void HeldLog::let_exchanges_finish()
{
    guard_.restart_calls(!log_service::is_in_process());
}

// The stand-alone tool's read-out: stop, read into memory, release, print.
#include "rukcmd/held_log.h"

#include "ruk/agent.h"
#include "ruk/front_end.h"
#include "rukcmd/entry_printer.h"
#include "rukcmd/log_service.h"
#include "rukcmd/output.h"

namespace
{

// What has been read is then printed before the release: the release connects anew, and what that
// has to say when the Agent is gone belongs behind the entries.
bool connection_is_broken()
{
    return !log_service::is_in_process() && kt_dpa_call_fd == -1;
}

} // namespace

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
        const size_t message_length = settle_message(entry);
        if (!keep(entry, message_length)) {
            print_held(&entry);
        }
    }
}

// False for what is to be printed at once.  The output buffer has no reader that could be slow, and
// its rule of what still fits is one for single lines; in process there is no exchange to keep up
// with, and a log whose reading never ends must not fill the memory.
bool HeldLog::keep(const LogEntry &entry, size_t message_length)
{
    return output::goes_to_stdout() && !log_service::is_in_process() &&
           lines_.add(entry, message_length);
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
    lines_.print_and_empty(guard_);
    if (last_words_ != nullptr && !guard_.interrupted()) {
        ruk_rcli_printf("%s", last_words_);
        last_words_ = nullptr;
    }
}

// Prints while the log is stopped: a reader that takes nothing, or has gone, must not keep it so.
void HeldLog::print_held(LogEntry *last)
{
    if (output::goes_to_stdout()) {
        guard_.restart_calls(false);
    }
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

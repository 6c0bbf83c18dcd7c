// The embedded front end: run a command, ship the buffer, follow the cookie.
#include "agentsim/console.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <unistd.h>

#include "agentsim/in_process_log.h"
#include "ruk/front_end.h"
#include "ruk/words.h"

namespace agentsim
{
namespace
{

// A longer line is no command; it is dropped rather than kept growing.
constexpr size_t k_longest_line = 16384;

// What show last prints when it was asked for no less than the log holds.  Its pages then all begin
// at the oldest entry, so following them would never end.
constexpr std::string_view k_whole_log = "Setting entry as invalid \n";

// Runs one command and takes what it wrote.
std::string run_once(std::string command)
{
    // All three before each run: a command that does not page leaves the cookie as it was.
    ruk_rcli_buffer_ptr = ruk_rcli_buffer;
    ruk_rcli_print_len = 0;
    ruk_rcli_more_output = 0;
    ruk_log_run(command.data(), static_cast<int32_t>(command.size()));
    // The cursor counts text that did not fit, too.  The buffer's last byte is a terminator then.
    const auto written = reinterpret_cast<uintptr_t>(ruk_rcli_buffer_ptr) -
                         reinterpret_cast<uintptr_t>(&ruk_rcli_buffer[0]);
    return {ruk_rcli_buffer, std::min<size_t>(written, RUK_RCLI_BUFFER_SIZE - 1)};
}

void ship(const std::string &text)
{
    fwrite(text.data(), 1, text.size(), stdout);
}

// The command without a cookie that was typed: the one to follow takes its place.
std::string without_cookie(const std::string &command)
{
    for (const char *word = command.c_str(); word != nullptr; word = kt_find_next_arg(word)) {
        if (stris(word, "cookie") == 0) {
            return command.substr(0, static_cast<size_t>(word - command.c_str()));
        }
    }
    return command;
}

void run_command(const std::string &command)
{
    std::string page = run_once(command);
    ship(page);
    while (ruk_rcli_more_output != 0) {
        if (page.find(k_whole_log) != page.npos) {
            ship("The log holds no more than that; \"show all\" shows it.\n");
            return;
        }
        page =
            run_once(without_cookie(command) + " cookie " + std::to_string(ruk_rcli_more_output));
        ship(page);
    }
}

} // namespace

void run_console_line(std::string_view line)
{
    // Command by command, since a cookie belongs to one.
    while (!line.empty()) {
        const size_t end = std::min(line.find(';'), line.size());
        run_command(std::string(line.substr(0, end)));
        line.remove_prefix(std::min(end + 1, line.size()));
    }
    fflush(stdout);
}

Console::Console(int descriptor, LogService &service)
    : descriptor_(descriptor), is_terminal_(isatty(descriptor) != 0)
{
    serve_in_process(service);
    ruk_rcli_dpa_loga_log = 1;
    ruk_rcli_fromdpa = 1;
}

void Console::prompt() const
{
    if (is_terminal_) {
        fputs("ruklog> ", stdout);
        fflush(stdout);
    }
}

bool Console::collect(LogService &, int64_t)
{
    char piece[4096];
    const ssize_t got = read(descriptor_, piece, sizeof piece);
    if (got < 0 && (errno == EINTR || errno == EAGAIN)) {
        return true;
    }
    if (got <= 0) {
        run_console_line(pending_);
        kill(getpid(), SIGTERM);
        return false;
    }
    pending_.append(piece, static_cast<size_t>(got));
    for (size_t end; (end = pending_.find('\n')) != pending_.npos;) {
        run_console_line(std::string_view(pending_).substr(0, end));
        pending_.erase(0, end + 1);
        prompt();
    }
    if (pending_.size() > k_longest_line) {
        pending_.clear();
    }
    return true;
}

} // namespace agentsim

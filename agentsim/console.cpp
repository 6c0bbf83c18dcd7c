// The embedded front end: run a command, ship the buffer, follow the cookie.
#include "agentsim/console.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <unistd.h>

#include "agentsim/in_process_log.h"
#include "ruk/front_end.h"
#include "ruk/words.h"

namespace agentsim
{
namespace
{

// A longer line is no command; it is refused rather than kept growing.
constexpr size_t k_longest_line = 16384;

// What show last prints when it was asked for no less than the log holds.  Its pages then all begin
// at the oldest entry, so following them would never end.
constexpr std::string_view k_whole_log = "Setting entry as invalid \n";

constexpr const char *k_no_more = "The rest can't be paged; ruklog show all shows the whole log.\n";

// Runs one command and takes what it wrote.
std::string run_once(std::string command)
{
    // All before each run: a command that does not page leaves the cookie as it was, and one that
    // writes nothing leaves the text of the one before.
    ruk_rcli_buffer[0] = '\0';
    ruk_rcli_buffer_ptr = ruk_rcli_buffer;
    ruk_rcli_print_len = 0;
    ruk_rcli_more_output = 0;
    ruk_log_run(command.data(), static_cast<int32_t>(command.size()));
    // The cursor counts text that did not fit, too; what was written ends at a terminator.
    return {ruk_rcli_buffer, strnlen(ruk_rcli_buffer, RUK_RCLI_BUFFER_SIZE)};
}

void ship(const std::string &text)
{
    fwrite(text.data(), 1, text.size(), stdout);
}

// The words by which the next page is asked for.  Only show last has an argument to keep; whatever
// else was typed would be taken for the cookie.
std::string page_command(const std::string &command)
{
    const char *first = command.c_str() + command.find_first_not_of(' ');
    const char *second = kt_find_next_arg(first);
    const bool has_count = second != nullptr && stris(second, "last") == 0;
    const char *end = kt_find_next_arg(has_count ? kt_find_next_arg(second) : second);
    return end == nullptr ? std::string(first) + " " : std::string(first, end);
}

void run_command(const std::string &command)
{
    std::string page = run_once(command);
    ship(page);
    while (ruk_rcli_more_output != 0) {
        const uint32_t cookie = ruk_rcli_more_output;
        const bool is_whole_log = page.find(k_whole_log) != page.npos;
        page = run_once(page_command(command) + "cookie " + std::to_string(cookie));
        // Pages that all begin at the oldest entry, or whose cookie does not grow, come for ever.
        if (is_whole_log || (ruk_rcli_more_output != 0 && ruk_rcli_more_output <= cookie)) {
            ship(k_no_more);
            return;
        }
        ship(page);
    }
}

} // namespace

void run_console_line(std::string_view line)
{
    // Command by command, since a cookie belongs to one.  The matcher ends a command at the same
    // characters.
    const auto ends_command = [](char c) { return c == ';' || c < ' ' || c > '~'; };
    while (!line.empty()) {
        const auto end = std::find_if(line.begin(), line.end(), ends_command);
        const auto length = static_cast<size_t>(end - line.begin());
        run_command(std::string(line.substr(0, length)));
        line.remove_prefix(std::min(length + 1, line.size()));
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

void Console::take(std::string_view piece)
{
    while (!piece.empty()) {
        const size_t end = std::min(piece.find('\n'), piece.size());
        is_too_long_ = is_too_long_ || pending_.size() + end > k_longest_line;
        if (!is_too_long_) {
            pending_.append(piece.substr(0, end));
        }
        if (end == piece.size()) {
            return;
        }
        end_line();
        prompt();
        piece.remove_prefix(end + 1);
    }
}

void Console::end_line()
{
    if (is_too_long_) {
        fputs("The line is too long; nothing of it was run.\n", stdout);
    } else {
        run_console_line(pending_);
    }
    pending_.clear();
    is_too_long_ = false;
}

bool Console::collect(LogService &, int64_t)
{
    char piece[4096];
    const ssize_t got = read(descriptor_, piece, sizeof piece);
    if (got < 0 && (errno == EINTR || errno == EAGAIN)) {
        return true;
    }
    if (got <= 0) {
        end_line();
        kill(getpid(), SIGTERM);
        return false;
    }
    take({piece, static_cast<size_t>(got)});
    return true;
}

} // namespace agentsim

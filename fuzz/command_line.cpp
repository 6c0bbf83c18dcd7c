// Any text as a command line, in the tool's mode and in the embedding host's, over a log service in
// the process whose every answer comes from the input.
//
// Input: a byte of modes, the line up to a zero byte, then the service's answers.
#include <cctype>
#include <csetjmp>
#include <cstring>
#include <memory>
#include <strings.h>
#include <vector>

#include "fuzz/input.h"
#include "fuzz/target.h"
#include "ruk/front_end.h"

using fuzz::require;

namespace
{

constexpr uint8_t k_paged = 0x01;
constexpr uint8_t k_buffered = 0x02;
constexpr uint8_t k_from_agent = 0x04;
constexpr uint8_t k_traced = 0x08;
constexpr uint8_t k_nearly_full = 0x10;

fuzz::Input answers(nullptr, 0);
jmp_buf tail_ended;
thread_local bool runs_commands = false; // libFuzzer has threads that sleep
bool is_held = false;                    // by a read-out, which must end that

// The service has no more to say once the input is used up, so every command comes to an end.
template <typename Record> int32_t answer(Record *record)
{
    if (answers.empty()) {
        return 1;
    }
    const uint8_t kind = answers.byte();
    if ((kind & 1) != 0) {
        answers.fill(*record);
    }
    return kind >> 6 == 3 ? kind : 0;
}

std::vector<const CommandEntry *> handled; // the rows that ran

void check_arguments(const char *arguments)
{
    // What follows the keywords starts with a word and has no separators.
    require(arguments == nullptr ||
            (isspace(static_cast<unsigned char>(arguments[0])) == 0 && arguments[0] != '\0' &&
             strlen(arguments) < 256 && strchr(arguments, ';') == nullptr));
}

// Every row's handler, seen on its way.
template <size_t row> int32_t handle(const char *arguments)
{
    check_arguments(arguments);
    handled.push_back(&ruk_cmd_list[row]);
    const int32_t result = ruk_cmd_list[row].handler(arguments);
    // Logging is on again after a read-out.  (But not after every paged one: an empty log stays as
    // it is.)
    require(!is_held || ruk_rcli_fromdpa != 0 || ruk_cmd_list[row].handler == ruk_log_stop);
    is_held = false;
    return result;
}

constexpr size_t k_most_rows = 32;

template <size_t... row> std::vector<CommandEntry> watched_table(std::index_sequence<row...>)
{
    constexpr CommandHandler k_handlers[] = {handle<row>...};
    std::vector<CommandEntry> table;
    for (size_t i = 0;; ++i) {
        require(i < k_most_rows);
        table.push_back(ruk_cmd_list[i]);
        if (table.back().type == COMMAND_TABLE_END) {
            return table;
        }
        if (table.back().handler != nullptr) {
            table.back().handler = k_handlers[i];
        }
    }
}

void set_modes(uint8_t modes)
{
    ruk_rcli_dpa_loga_log = 1;
    ruk_rcli_fromdpa = (modes & k_paged) != 0 ? 1 : 0;
    ruk_rcli_more_output = 0;
    ruk_rcli_buffer_ptr = (modes & k_buffered) != 0 ? ruk_rcli_buffer : nullptr;
    if ((modes & k_buffered) != 0 && (modes & k_nearly_full) != 0) {
        ruk_rcli_buffer_ptr += RUK_RCLI_BUFFER_SIZE - 300;
    }
    kt_debug_print_ktcmd = kt_debug_print_ruk_log = (modes & k_traced) != 0 ? 0xff : 0x87;
}

// True unless show tail ended it.
bool run(const CommandEntry *table, const unsigned char *line, uint32_t length, uint32_t from_agent)
{
    if (setjmp(tail_ended) != 0) {
        return false;
    }
    ktcmd_parse_multiple(table, line, length, from_agent);
    return true;
}

// The rows that a plain reading of the line runs, in their order: pieces between separators, each
// by the row whose words the piece begins with, the most words first.
std::vector<const CommandEntry *> rows_of(const std::string &line, bool from_agent)
{
    std::vector<const CommandEntry *> rows;
    std::vector<std::string> pieces(1);
    for (const char c : line) {
        if (c < 0x20 || c > 0x7e || c == ';') {
            pieces.emplace_back();
        } else {
            pieces.back() += c;
            if (pieces.back().find_first_not_of(' ') == std::string::npos) {
                pieces.back().clear(); // blanks before a command don't count
            }
        }
        if (pieces.back().size() == 256) {
            pieces.pop_back(); // and the rest of the line with it
            break;
        }
    }
    for (const std::string &piece : pieces) {
        std::vector<std::string> words;
        for (const char c : " " + piece) {
            if (c == ' ') {
                if (words.empty() || !words.back().empty()) {
                    words.emplace_back();
                }
            } else {
                words.back() += c;
            }
        }
        const CommandEntry *best = nullptr;
        size_t best_depth = 0;
        for (const CommandEntry *row = ruk_cmd_list; row->type != COMMAND_TABLE_END; ++row) {
            size_t depth = 0;
            while (row->handler != nullptr && depth < COMMAND_KEYWORDS && depth < words.size() &&
                   row->keywords[depth] != nullptr &&
                   strcasecmp(words[depth].c_str(), row->keywords[depth]) == 0) {
                ++depth;
            }
            if (depth > best_depth) {
                best = row;
                best_depth = depth;
            }
        }
        if (best != nullptr && (!from_agent || best->from_agent != 0)) {
            rows.push_back(best);
        }
    }
    return rows;
}

// The help in a block of exactly so many bytes: what fits of the whole, terminated.
void check_help(uint32_t size)
{
    static const std::string whole = [] {
        std::vector<char> text(16384);
        return std::string(text.data(), static_cast<size_t>(ruk_log_help(text.data(), 16384)));
    }();
    const auto block = std::make_unique<char[]>(size);
    const uint32_t length = ktcmd_snprintf_help(ruk_cmd_list, block.get(), size);
    require(length == std::min<size_t>(whole.size(), size));
    require(size == 0 || block.get() == whole.substr(0, size - 1));
}

// The text in a block of exactly its size.
void check_validation(const std::string &text, int32_t most)
{
    const auto block = std::make_unique<char[]>(text.size() + 1);
    std::copy(text.begin(), text.end(), block.get());
    const bool is_taken = text.empty() || (most >= 1 && text.size() <= static_cast<size_t>(most));
    require(ktcmd_validate_data(block.get(), most) ==
            (is_taken ? static_cast<int32_t>(text.size()) : -1));
}

} // namespace

// The log service of this process, in place of the placeholders.
int32_t kt_get_log_info(uint32_t, LogInfo *info)
{
    return answer(info);
}

int32_t kt_get_log_entry(uint32_t, LogEntry *entry)
{
    return answer(entry);
}

int32_t kt_set_log(uint32_t operation, uint64_t *value)
{
    require(operation >= LOG_SET_START && operation <= LOG_SET_RELEASE);
    const int32_t status = answer(value);
    is_held = (operation == LOG_SET_STOP || operation == LOG_SET_HOLD) &&
              static_cast<uint32_t>(*value) != 0;
    return status;
}

int32_t kt_get_log_module(uint32_t, LogModule *module)
{
    return answer(module);
}

int32_t kt_find_log_module(uint32_t, LogModule *module)
{
    require(memchr(module->name, '\0', sizeof module->name) != nullptr);
    return answer(module);
}

int32_t kt_set_log_module(uint32_t, uint32_t *mask)
{
    return answer(mask);
}

// The pause of show tail, which looks again for ever: here until the answers have run out.
extern "C" unsigned __real_sleep(unsigned seconds);

extern "C" unsigned __wrap_sleep(unsigned seconds)
{
    if (!runs_commands) {
        return __real_sleep(seconds);
    }
    if (answers.empty()) {
        longjmp(tail_ended, 1);
    }
    return 0;
}

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz::silence_stdout();
    runs_commands = true;
    static const std::vector<CommandEntry> table =
        watched_table(std::make_index_sequence<k_most_rows>{});
    fuzz::Input input(data, size);
    const uint8_t modes = input.byte();
    const std::string line = input.text_until('\0');
    // A block of the exact size, without a terminator, so that a sanitizer sees a read too far.
    const auto block = std::make_unique<unsigned char[]>(line.size());
    std::copy(line.begin(), line.end(), block.get());

    check_help(static_cast<uint32_t>(line.size() * 23 % 2000));
    check_validation(line, modes - 64);

    answers = input;
    handled.clear();
    is_held = false;
    set_modes(modes);
    const bool from_agent = (modes & k_from_agent) != 0;
    if (run(table.data(), block.get(), static_cast<uint32_t>(line.size()), from_agent ? 1 : 0)) {
        require(handled == rows_of(line, from_agent));
    }
    if ((modes & k_buffered) != 0 && ruk_rcli_buffer_ptr != ruk_rcli_buffer) {
        require(memchr(ruk_rcli_buffer, '\0', sizeof ruk_rcli_buffer) != nullptr);
    }
    return 0;
}

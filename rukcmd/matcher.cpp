// The command matcher: splits a line into commands, picks the row that matches the most leading
// words, and formats a table's help.  It knows nothing of the log.
#include "ruk/command_table.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

#include "infra/utils/ktprint.h"
#include "infra/utils/kttext.h"
#include "infra/utils/kttrace.h"
#include "ruk/words.h"

uint32_t kt_debug_print_ktcmd = KT_TRACE_DEFAULT;

namespace
{

using kttext::is_printable;
using kttext::is_space;

constexpr size_t k_command_size = 256;
constexpr int32_t k_no_match = -1;
constexpr int32_t k_drop_line = -2;
constexpr size_t k_words = COMMAND_KEYWORDS + 1;

bool belongs_to_command(unsigned char c)
{
    return is_printable(static_cast<char>(c)) && c != ';';
}

// The words of a command.  Each is the rest of the command from there on; null once it has ended.
struct Words {
    const char *at[k_words];
};

Words words_of(const char *command)
{
    Words words{{command}};
    for (size_t i = 1; i < k_words; ++i) {
        words.at[i] = kt_find_next_arg(words.at[i - 1]);
    }
    return words;
}

// How many leading words the row's keywords match.
int32_t depth_of(const CommandEntry &row, const Words &words)
{
    int32_t depth = 0;
    for (const char *keyword : row.keywords) {
        const char *word = words.at[depth];
        if (word == nullptr || keyword == nullptr || stris(word, keyword) != 0) {
            break;
        }
        ++depth;
    }
    return depth;
}

struct Match {
    const CommandEntry *row;
    int32_t index;
    int32_t matched; // words, at least 1
};

Match find_row(const CommandEntry *table, const Words &words)
{
    Match best{nullptr, -1, 0};
    for (int32_t index = 0; table[index].type != COMMAND_TABLE_END; ++index) {
        const CommandEntry &row = table[index];
        const int32_t matched = row.handler == nullptr ? 0 : depth_of(row, words);
        if (matched > best.matched) {
            best = {&row, index, matched};
        }
    }
    return best;
}

const char *or_empty(const char *text)
{
    return text == nullptr ? "" : text;
}

void trace_match(const char *command, const Match &match, const char *arguments)
{
    const auto &keywords = match.row->keywords;
    kt_trace(kt_debug_print_ktcmd, KT_LEVEL_DEBUG,
             "Match found for %s: index %d depth %d, %s %s %s %s\n", command, match.index,
             match.matched - 1, or_empty(keywords[0]), or_empty(keywords[1]), or_empty(keywords[2]),
             or_empty(keywords[3]));
    kt_trace(kt_debug_print_ktcmd, KT_LEVEL_DEBUG, "Calling %p(%s)\n",
             reinterpret_cast<void *>(match.row->handler),
             arguments == nullptr ? "NULL" : arguments);
}

// Help under way: what fits is in the buffer, length counts what would have been there.
struct Help {
    char *buffer;
    uint32_t maxlen;
    uint64_t length;

    char *end() const { return buffer + std::min<uint64_t>(length, maxlen); }
    uint32_t room() const
    {
        return maxlen - static_cast<uint32_t>(std::min<uint64_t>(length, maxlen));
    }

    [[gnu::format(printf, 2, 3)]] void print(const char *format, ...)
    {
        va_list arguments;
        va_start(arguments, format);
        const int written = vsnprintf(end(), room(), format, arguments);
        va_end(arguments);
        length += static_cast<uint64_t>(std::max(written, 0));
    }
};

constexpr size_t k_syntax_size = 80;
constexpr size_t k_syntax_column = 32;

// A row's keywords and argument hint, each followed by a blank, cut to the scratch's size.
struct Syntax {
    char text[k_syntax_size] = {};
    size_t length = 0;

    void add(const char *word)
    {
        const int written = kt_print_to(text + length, sizeof text - length, "%s ", word);
        length = std::min(length + static_cast<size_t>(std::max(written, 0)), sizeof text - 1);
    }

    bool is_full() const { return length > sizeof text - 2; }
};

Syntax syntax_of(const CommandEntry &row)
{
    Syntax syntax;
    for (const char *keyword : row.keywords) {
        if (keyword != nullptr) {
            syntax.add(keyword);
        }
        if (syntax.is_full()) {
            return syntax;
        }
    }
    if (row.hint != nullptr) {
        syntax.add(row.hint);
    }
    return syntax;
}

void add_command_help(Help &help, const CommandEntry &row)
{
    const Syntax syntax = syntax_of(row);
    const char *first_column = syntax.text;
    if (syntax.length >= k_syntax_column) {
        help.print("%s\n", syntax.text);
        first_column = "";
    }
    help.print("%-32s %s\n", first_column, or_empty(row.text));
}

void add_row_help(Help &help, const CommandEntry &row)
{
    switch (row.type) {
    case COMMAND_RUN:
    case COMMAND_HELP_MORE:
        add_command_help(help, row);
        break;
    case COMMAND_HELP_HEADING:
        help.print("%s\n", or_empty(row.text));
        break;
    case COMMAND_HELP_CALLBACK:
        help.length += row.help(help.end(), help.room());
        break;
    default:
        break;
    }
}

} // namespace

void ktcmd_parse_multiple(const CommandEntry *table, const unsigned char *buffer, uint32_t length,
                          uint32_t fromdpa)
{
    size_t position = 0;
    int32_t result = 0;
    while (position < length && result != k_drop_line) {
        while (position < length && is_space(static_cast<char>(buffer[position]))) {
            ++position;
        }
        char command[k_command_size];
        uint32_t used = 0;
        while (position < length && belongs_to_command(buffer[position])) {
            command[used++] = static_cast<char>(buffer[position++]);
            if (used == k_command_size) {
                kt_trace(kt_debug_print_ktcmd, KT_LEVEL_WARNING,
                         "Max command length reached; discarding\n");
                return;
            }
        }
        if (used > 0) {
            command[used] = '\0';
            result = ktcmd_parse_single(table, command, used, fromdpa);
        }
        ++position; // the character that ended the command
    }
}

int32_t ktcmd_parse_single(const CommandEntry *table, const char *command, uint32_t,
                           uint32_t fromdpa)
{
    const Words words = words_of(command);
    const Match match = find_row(table, words);
    // Kept: with the trace on, a refusal is printed twice, once as trace and once for the user.
    if (match.row == nullptr) {
        constexpr const char *k_message = "No match found for %s\n";
        kt_trace(kt_debug_print_ktcmd, KT_LEVEL_DEBUG, k_message, command);
        kt_print(k_message, command);
        return k_no_match;
    }
    const char *arguments = words.at[match.matched];
    trace_match(command, match, arguments);
    if (fromdpa != 0 && match.row->from_agent == 0) {
        constexpr const char *k_message = "Cmd not permitted from DPA %p\n";
        void *handler = reinterpret_cast<void *>(match.row->handler);
        kt_trace(kt_debug_print_ktcmd, KT_LEVEL_DEBUG, k_message, handler);
        kt_print(k_message, handler);
        return k_no_match;
    }
    return match.row->handler(arguments);
}

uint32_t ktcmd_snprintf_help(const CommandEntry *table, char *buffer, uint32_t maxlen)
{
    Help help{buffer, maxlen, 0};
    for (const CommandEntry *row = table; row->type != COMMAND_TABLE_END; ++row) {
        add_row_help(help, *row);
        if (help.length >= maxlen) {
            kt_trace(kt_debug_print_ktcmd, KT_LEVEL_WARNING,
                     "Help text length exceeds maxlen. Need to redefine the maxlen\n");
            return maxlen;
        }
    }
    return static_cast<uint32_t>(help.length);
}

int32_t ktcmd_validate_data(const char *data, int32_t maxlen)
{
    if (data[0] == '\0') {
        return 0;
    }
    if (maxlen < 1) {
        return -1;
    }
    int32_t length = 0;
    for (; data[length] != '\0'; ++length) {
        if (length == maxlen) {
            kt_trace(kt_debug_print_ktcmd, KT_LEVEL_WARNING, "Data length > %d\n", maxlen);
            return -1;
        }
        if (!is_printable(data[length]) && !is_space(data[length])) {
            // Kept: the character goes out signed, so from 0x80 on it prints as eight digits.
            kt_trace(kt_debug_print_ktcmd, KT_LEVEL_WARNING, "ktcmd invalid character %02x\n",
                     static_cast<unsigned>(static_cast<signed char>(data[length])));
        }
    }
    return length;
}

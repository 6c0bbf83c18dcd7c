// The command matcher over tables of the test's own: splitting, matching, help, validation.
#include "ruk/command_table.h"

#include <cstdio>

#include "tests/rukcmd/rig.h"

using namespace ruk_test;

namespace
{

// Calls as "<handler>" or "<handler>(<arguments>)", in order.
std::vector<std::string> calls;

template <char Name, int32_t Result> int32_t note(const char *arguments)
{
    calls.push_back(arguments == nullptr ? std::string(1, Name)
                                         : std::string(1, Name) + "(" + arguments + ")");
    return Result;
}

using Keywords = std::vector<const char *>;

CommandEntry command(CommandHandler handler, const Keywords &keywords, const char *hint = nullptr,
                     const char *text = "")
{
    CommandEntry row{};
    row.type = 1;
    row.handler = handler;
    row.text = text;
    row.hint = hint;
    row.from_agent = 1;
    for (size_t i = 0; i < keywords.size(); ++i) {
        row.keywords[i] = keywords[i];
    }
    return row;
}

CommandEntry help_row(uint32_t type, const char *text)
{
    CommandEntry row{};
    row.type = type;
    row.text = text;
    return row;
}

const CommandEntry k_end{};

const CommandEntry k_letters[] = {
    command(note<'A', 0>, {"a"}),     command(note<'B', 7>, {"b"}),
    command(note<'F', -1>, {"fail"}), command(note<'S', -2>, {"stop"}),
    command(note<'M', -3>, {"more"}), k_end,
};

struct Observed {
    std::vector<std::string> calls;
    std::string out;
};

Observed split(const std::string &line, uint32_t length, uint32_t fromdpa = 0)
{
    calls.clear();
    // A block of its own, so that a sanitizer sees a read behind it.
    const std::vector<unsigned char> bytes(line.begin(), line.end());
    const std::string out =
        captured_stdout([&] { ktcmd_parse_multiple(k_letters, bytes.data(), length, fromdpa); });
    return {calls, out};
}

Observed split(const std::string &line)
{
    return split(line, static_cast<uint32_t>(line.size()));
}

std::string text_of(const void *pointer)
{
    char text[40];
    snprintf(text, sizeof text, "%p", pointer);
    return text;
}

std::string text_of(CommandHandler handler)
{
    return text_of(reinterpret_cast<void *>(handler));
}

} // namespace

using ktcmd_parse_multiple_ = FrontEnd;

TEST_F(ktcmd_parse_multiple_, splits_at_semicolons_and_unprintable_characters)
{
    using namespace std::string_literals;
    struct {
        std::string line;
        std::vector<std::string> calls;
    } const rows[] = {
        {"", {}},
        {"a", {"A"}},
        {"a;b", {"A", "B"}},
        {"a;", {"A"}},
        {";a", {"A"}},
        {";", {}},
        {";;", {}},
        {"; ;\t; ", {}},
        {"    ", {}},
        {" \t\n\v\f\r ", {}},
        {" \t\n\v\f\r a", {"A"}},
        {"a ; b", {"A", "B"}},
        {"a x;b", {"A(x)", "B"}},
        {"a  x   y ", {"A(x   y )"}},
        {"   a   x", {"A(x)"}},
        {"a\tb", {"A", "B"}},
        {"a\nb", {"A", "B"}},
        {"a\r\nb\r\n", {"A", "B"}},
        {"a\vb\fa", {"A", "B", "A"}},
        {"a\0b"s, {"A", "B"}},
        {"\0\0a\0"s, {"A"}},
        {"a\x01"
         "b",
         {"A", "B"}},
        {"a\x1f"
         "b",
         {"A", "B"}},
        {"a\x7f"
         "b",
         {"A", "B"}},
        {"a\x80"
         "b",
         {"A", "B"}},
        {"a\xff"
         "b",
         {"A", "B"}},
        {"\x80\xc3\xa9 a", {"A"}},
        {"a x \x80 b y", {"A(x )", "B(y)"}},
        {"a ~!\"|", {"A(~!\"|)"}},
        {"a b", {"A(b)"}},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(hex(row.line));
        const Observed run = split(row.line);
        EXPECT_EQ(run.calls, row.calls);
        EXPECT_EQ(run.out, "");
    }
}

TEST_F(ktcmd_parse_multiple_, reads_no_more_than_length)
{
    const std::vector<std::string> none;
    EXPECT_EQ(split("a;b", 0).calls, none);
    EXPECT_EQ(split("a;b", 1).calls, std::vector<std::string>{"A"});
    EXPECT_EQ(split("a;b", 2).calls, std::vector<std::string>{"A"});
    EXPECT_EQ(split("a;b", 3).calls, (std::vector<std::string>{"A", "B"}));
    EXPECT_EQ(split("a xyz", 4).calls, std::vector<std::string>{"A(xy)"});
    captured_stdout([] { ktcmd_parse_multiple(k_letters, nullptr, 0, 0); });
}

TEST_F(ktcmd_parse_multiple_, goes_on_after_every_result_but_minus_2)
{
    struct {
        const char *line;
        std::vector<std::string> calls;
        const char *out;
    } const rows[] = {
        {"fail;a", {"F", "A"}, ""},
        {"b;a", {"B", "A"}, ""},
        {"more;a", {"M", "A"}, ""},
        {"stop;a", {"S"}, ""},
        {"stop 1\na", {"S(1)"}, ""},
        {"a;stop;b;a", {"A", "S"}, ""},
        {"a;; stop ;;b", {"A", "S"}, ""},
        {"nothing;a", {"A"}, "No match found for nothing\n"},
        {"x y ;a;sto;b", {"A", "B"}, "No match found for x y \nNo match found for sto\n"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.line);
        const Observed run = split(row.line);
        EXPECT_EQ(run.calls, row.calls);
        EXPECT_EQ(run.out, row.out);
    }
}

TEST_F(ktcmd_parse_multiple_, drops_a_command_of_256_characters_and_what_follows)
{
    const std::string x253(253, 'x');
    const std::string warning = "Max command length reached; discarding\n";
    // clang-format off
    struct {
        std::string line;
        std::vector<std::string> calls;
        std::string out;
    } const rows[] = {
        {"a " + x253,                       {"A(" + x253 + ")"},      ""     }, // 255
        {"a " + x253 + ";b",                {"A(" + x253 + ")", "B"}, ""     },
        {"a " + x253 + "y",                 {},                       warning}, // 256
        {"a " + x253 + "y;b",               {},                       warning},
        {"a " + x253 + "yz;b",              {},                       warning},
        {"b;a " + x253 + "y;b",             {"B"},                    warning},
        {"a " + std::string(16000, 'x'),    {},                       warning},
        {std::string(300, ' ') + "a",       {"A"},                    ""     }, // not counted
        {std::string(300, ' ') + "a " + x253, {"A(" + x253 + ")"},    ""     },
        {std::string(300, ';') + "a",       {"A"},                    ""     },
        {"a" + std::string(254, ' '),       {"A"},                    ""     },
        {"a" + std::string(255, ' '),       {},                       warning},
    };
    // clang-format on
    for (const auto &row : rows) {
        SCOPED_TRACE(row.line.size());
        const Observed run = split(row.line);
        EXPECT_EQ(run.calls, row.calls);
        EXPECT_EQ(run.out, row.out);
    }
    kt_debug_print_ktcmd = 0x87 & ~0x04U;
    const Observed quiet = split("a " + x253 + "y;b");
    EXPECT_EQ(quiet.calls, std::vector<std::string>{});
    EXPECT_EQ(quiet.out, "");
}

TEST_F(ktcmd_parse_multiple_, hands_fromdpa_on)
{
    CommandEntry table[] = {command(note<'A', 0>, {"a"}), command(note<'B', 0>, {"b"}), k_end};
    table[0].from_agent = 0;
    const auto run = [&](uint32_t fromdpa) {
        calls.clear();
        return captured_stdout([&] {
            const unsigned char line[] = {'a', ';', 'b'};
            ktcmd_parse_multiple(table, line, sizeof line, fromdpa);
        });
    };
    EXPECT_EQ(run(0), "");
    EXPECT_EQ(calls, (std::vector<std::string>{"A", "B"}));
    EXPECT_EQ(run(1), "Cmd not permitted from DPA " + text_of(note<'A', 0>) + "\n");
    EXPECT_EQ(calls, std::vector<std::string>{"B"});
}

using ktcmd_parse_single_ = FrontEnd;

namespace
{

Observed parse(const CommandEntry *table, const std::string &text, int32_t expected_result,
               uint32_t fromdpa = 0)
{
    calls.clear();
    const std::string out = captured_stdout([&] {
        EXPECT_EQ(
            ktcmd_parse_single(table, text.c_str(), static_cast<uint32_t>(text.size()), fromdpa),
            expected_result);
    });
    return {calls, out};
}

} // namespace

TEST_F(ktcmd_parse_single_, takes_the_deepest_row_and_of_equals_the_first)
{
    CommandEntry no_handler = command(nullptr, {"x", "y", "z"});
    CommandEntry gap = command(note<'G', 0>, {"gap", nullptr, "deep"});
    CommandEntry other_type = command(note<'T', 0>, {"typed"});
    other_type.type = 77;
    const CommandEntry table[] = {
        command(note<'1', 0>, {"x", "y"}),
        command(note<'2', 0>, {"x"}),
        command(note<'3', 0>, {"X", "Y"}),
        no_handler,
        command(note<'4', 0>, {"x", "w", "v"}),
        gap,
        other_type,
        command(note<'5', 0>, {""}),
        command(note<'6', 0>, {nullptr, "second"}),
        k_end,
        command(note<'9', 0>, {"hidden"}),
    };
    struct {
        const char *text;
        std::string call; // "" when nothing matches
    } const rows[] = {
        {"x", "1"},
        {"x q", "1(q)"},
        {"x y", "1"},
        {"x y z", "1(z)"}, // the row without a handler is not there
        {"X Y z q", "1(z q)"},
        {"x w", "4"}, // deeper than the first row
        {"x w v", "4"},
        {"x w q", "4(q)"},
        {"x w v q", "4(q)"},
        {"gap deep", "G(deep)"}, // a gap ends a row's keywords
        {"gap x deep", "G(x deep)"},
        {"typed", "T"}, // the type is not looked at
        {"", "5"},
        {" x", "5(x)"}, // the empty word before the blank
        {"second", ""},
        {"hidden", ""},
        {"xx", ""},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.text);
        const bool matches = !row.call.empty();
        const Observed run = parse(table, row.text, matches ? 0 : -1);
        EXPECT_EQ(run.calls,
                  matches ? std::vector<std::string>{row.call} : std::vector<std::string>{});
        EXPECT_EQ(run.out, matches ? "" : "No match found for " + std::string(row.text) + "\n");
    }
}

TEST_F(ktcmd_parse_single_, compares_seven_keywords_and_no_more)
{
    CommandEntry row = command(note<'A', 5>, {"1", "2", "3", "4", "5", "6", "7"});
    row.spare = "8";
    const CommandEntry table[] = {row, k_end};
    EXPECT_EQ(parse(table, "1 2 3 4 5 6 7", 5).calls, std::vector<std::string>{"A"});
    EXPECT_EQ(parse(table, "1 2 3 4 5 6 7 8 9", 5).calls, std::vector<std::string>{"A(8 9)"});
    EXPECT_EQ(parse(table, "1 2 3 4 5 6 8 9", 5).calls, std::vector<std::string>{"A(8 9)"});
}

TEST_F(ktcmd_parse_single_, finds_nothing_in_an_empty_table)
{
    const CommandEntry table[] = {k_end, command(note<'A', 0>, {"a"})};
    const Observed run = parse(table, "a b", -1);
    EXPECT_EQ(run.calls, std::vector<std::string>{});
    EXPECT_EQ(run.out, "No match found for a b\n");
}

TEST_F(ktcmd_parse_single_, returns_what_the_handler_returns)
{
    EXPECT_EQ(parse(k_letters, "a", 0).out, "");
    EXPECT_EQ(parse(k_letters, "b", 7).out, "");
    EXPECT_EQ(parse(k_letters, "fail", -1).out, "");
    EXPECT_EQ(parse(k_letters, "stop", -2).out, "");
}

TEST_F(ktcmd_parse_single_, traces_and_then_says_refusals_twice)
{
    CommandEntry refused = command(note<'R', 0>, {"no", "way", "out", "of", "here"});
    refused.from_agent = 0;
    const CommandEntry table[] = {help_row(3, "heading"), command(note<'A', 3>, {"a"}), refused,
                                  k_end};
    const std::string a = text_of(note<'A', 3>);
    const std::string r = text_of(note<'R', 0>);
    kt_debug_print_ktcmd = 0x10;
    EXPECT_EQ(parse(table, "a", 3).out,
              "Match found for a: index 1 depth 0, a   \nCalling " + a + "(NULL)\n");
    EXPECT_EQ(parse(table, "A b  c ", 3, 1).out,
              "Match found for A b  c : index 1 depth 0, a   \nCalling " + a + "(b  c )\n");
    EXPECT_EQ(parse(table, "no way out x", 0, 0).out,
              "Match found for no way out x: index 2 depth 2, no way out of\nCalling " + r +
                  "(x)\n");
    const Observed run = parse(table, "no", -1, 1);
    EXPECT_EQ(run.calls, std::vector<std::string>{});
    EXPECT_EQ(run.out, "Match found for no: index 2 depth 0, no way out of\nCalling " + r +
                           "(NULL)\nCmd not permitted from DPA " + r +
                           "\nCmd not permitted from DPA " + r + "\n");
    EXPECT_EQ(parse(table, "zip", -1).out, "No match found for zip\nNo match found for zip\n");
    kt_debug_print_ktcmd = 0xef;
    EXPECT_EQ(parse(table, "zip", -1).out, "No match found for zip\n");
    EXPECT_EQ(parse(table, "no", -1, 2).out, "Cmd not permitted from DPA " + r + "\n");
    EXPECT_EQ(parse(table, "a", 3, 1).out, "");
    kt_debug_print_ktcmd = 0;
    EXPECT_EQ(parse(table, "zip", -1).out, "No match found for zip\n");
}

using ktcmd_snprintf_help_ = FrontEnd;

namespace
{

struct Help {
    uint32_t result;
    std::string bytes; // the whole buffer, "#" where nothing was written
    std::string out;

    // What was written before the terminator.
    std::string text() const { return bytes.substr(0, bytes.find('\0')); }
};

Help help_of(const CommandEntry *table, uint32_t maxlen)
{
    Help help;
    std::vector<char> buffer(maxlen + 4, '#');
    help.out =
        captured_stdout([&] { help.result = ktcmd_snprintf_help(table, buffer.data(), maxlen); });
    help.bytes.assign(buffer.begin(), buffer.end());
    return help;
}

constexpr const char *k_help_warning =
    "Help text length exceeds maxlen. Need to redefine the maxlen\n";

struct {
    char *buffer;
    uint32_t room;
} asked;

uint32_t give_help(char *buffer, uint32_t room)
{
    asked = {buffer, room};
    return static_cast<uint32_t>(snprintf(buffer, room, "from the callback\n"));
}

uint32_t give_too_much_help(char *, uint32_t room)
{
    return room + 1000;
}

} // namespace

TEST_F(ktcmd_snprintf_help_, formats_each_type_of_row)
{
    CommandEntry callback = help_row(4, "not shown");
    callback.help = give_help;
    const CommandEntry table[] = {
        help_row(3, "heading"),
        help_row(3, ""),
        command(note<'A', 0>, {"do", "it"}, "<n>", "Does it"),
        help_row(2, "(more of it)"),
        callback,
        help_row(5, "unknown"),
        help_row(UINT32_MAX, "unknown"),
        command(nullptr, {"help", "only"}, nullptr, "No handler"),
        command(note<'A', 0>, {"first", nullptr, "third"}, nullptr, "A gap is no end here"),
        command(note<'A', 0>, {}, "<hint>", "A hint alone"),
        k_end,
        help_row(3, "behind the end"),
    };
    const std::string before_callback = "heading\n"
                                        "\n"
                                        "do it <n>                        Does it\n"
                                        "                                 (more of it)\n";
    const std::string whole = before_callback +
                              "from the callback\n"
                              "help only                        No handler\n"
                              "first third                      A gap is no end here\n"
                              "<hint>                           A hint alone\n";
    asked = {nullptr, 0};
    std::vector<char> buffer(1000, '#');
    const std::string out = captured_stdout(
        [&] { EXPECT_EQ(ktcmd_snprintf_help(table, buffer.data(), 1000), whole.size()); });
    EXPECT_EQ(out, "");
    EXPECT_EQ(std::string(buffer.data(), whole.size() + 2), whole + '\0' + '#');
    EXPECT_EQ(asked.buffer, buffer.data() + before_callback.size());
    EXPECT_EQ(asked.room, 1000 - before_callback.size());
}

TEST_F(ktcmd_snprintf_help_, gives_long_syntaxes_a_line_of_their_own_and_cuts_them)
{
    const auto k = [](size_t n) { return std::string(n, 'k'); };
    const std::string indent(33, ' ');
    struct {
        std::string keyword;
        std::string keyword2;
        const char *hint;
        std::string expected;
    } const rows[] = {
        // The syntax is the keyword and a blank: 31 characters, then 32.
        {k(30), "", nullptr, k(30) + "   text\n"},
        {k(31), "", nullptr, k(31) + " \n" + indent + "text\n"},
        {k(28), "", "h", k(28) + " h   text\n"},
        {k(28), "", "hh", k(28) + " hh \n" + indent + "text\n"},
        // At most 79 characters; beyond 78 nothing is added.
        {k(76), "", "hint", k(76) + " hi\n" + indent + "text\n"},
        {k(77), "", "hint", k(77) + " h\n" + indent + "text\n"},
        {k(77), "", nullptr, k(77) + " \n" + indent + "text\n"},
        {k(78), "", "hint", k(78) + " \n" + indent + "text\n"},
        {k(79), "", "hint", k(79) + "\n" + indent + "text\n"},
        {k(80), "", "hint", k(79) + "\n" + indent + "text\n"},
        {k(500), "", "hint", k(79) + "\n" + indent + "text\n"},
        {k(70), "two", "hint", k(70) + " two hint\n" + indent + "text\n"},
        {k(70), "four5678", "hint", k(70) + " four5678\n" + indent + "text\n"},
        {k(77), "two", "hint", k(77) + " t\n" + indent + "text\n"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.expected);
        const char *second = row.keyword2.empty() ? nullptr : row.keyword2.c_str();
        const CommandEntry table[] = {
            command(nullptr, {row.keyword.c_str(), second}, row.hint, "text"), k_end};
        const Help help = help_of(table, 1000);
        EXPECT_EQ(help.text(), row.expected);
        EXPECT_EQ(help.result, row.expected.size());
        EXPECT_EQ(help.out, "");
    }
}

TEST_F(ktcmd_snprintf_help_, returns_its_own_size_when_the_text_reaches_it)
{
    const CommandEntry table[] = {help_row(3, "abc"), help_row(3, "de"), k_end};
    struct {
        uint32_t maxlen;
        uint32_t result;
        std::string bytes;
        const char *out;
    } const rows[] = {
        {0, 0, std::string("####"), k_help_warning},
        {1, 1, std::string("\0####", 5), k_help_warning},
        {3, 3, std::string("ab\0####", 7), k_help_warning},
        {4, 4, std::string("abc\0####", 8), k_help_warning},
        {5, 5, std::string("abc\n\0####", 9), k_help_warning},
        {6, 6, std::string("abc\nd\0####", 10), k_help_warning},
        {7, 7, std::string("abc\nde\0####", 11), k_help_warning},
        {8, 7, std::string("abc\nde\n\0####", 12), ""},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.maxlen);
        const Help help = help_of(table, row.maxlen);
        EXPECT_EQ(help.result, row.result);
        EXPECT_EQ(help.bytes, row.bytes);
        EXPECT_EQ(help.out, row.out);
    }
    kt_debug_print_ktcmd = 0xfb;
    EXPECT_EQ(help_of(table, 3).out, "");
    EXPECT_EQ(help_of(table, 3).result, 3U);
}

TEST_F(ktcmd_snprintf_help_, stops_after_a_callback_that_claims_more_than_the_room)
{
    CommandEntry callback = help_row(4, nullptr);
    callback.help = give_too_much_help;
    const CommandEntry table[] = {help_row(3, "abc"), callback, help_row(3, "never"), k_end};
    const Help help = help_of(table, 100);
    EXPECT_EQ(help.result, 100U);
    EXPECT_EQ(help.text(), "abc\n");
    EXPECT_EQ(help.out, k_help_warning);
}

TEST_F(ktcmd_snprintf_help_, gives_0_for_an_empty_table)
{
    for (const uint32_t maxlen : {0U, 4U}) {
        const Help help = help_of(&k_end, maxlen);
        EXPECT_EQ(help.result, 0U);
        EXPECT_EQ(help.bytes, std::string(maxlen + 4, '#'));
        EXPECT_EQ(help.out, "");
    }
}

using ktcmd_validate_data_ = FrontEnd;

TEST_F(ktcmd_validate_data_, counts_and_reports_what_cannot_be_printed)
{
    struct {
        std::string data;
        int32_t maxlen;
        int32_t result;
        const char *out;
    } const rows[] = {
        {"", 10, 0, ""},
        {"", 0, 0, ""},
        {"", -1, 0, ""},
        {"a", 0, -1, ""},
        {"a", -1, -1, ""},
        {"\x01", INT32_MIN, -1, ""},
        {"a", 1, 1, ""},
        {"abc", 3, 3, ""},
        {"abc", INT32_MAX, 3, ""},
        {"abcd", 3, -1, "Data length > 3\n"},
        {"abcdefgh", 1, -1, "Data length > 1\n"},
        {" a~\t\n\v\f\r", 20, 8, ""},
        {"\x01", 20, 1, "ktcmd invalid character 01\n"},
        {"a\x1f\x7f", 20, 3, "ktcmd invalid character 1f\nktcmd invalid character 7f\n"},
        {"\x80", 20, 1, "ktcmd invalid character ffffff80\n"},
        {"\xff z", 20, 3, "ktcmd invalid character ffffffff\n"},
        {"\x02yz", 2, -1, "ktcmd invalid character 02\nData length > 2\n"},
        {"yz\x02", 2, -1, "Data length > 2\n"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(hex(row.data) + " " + std::to_string(row.maxlen));
        int32_t result = -99;
        const auto validate = [&] { result = ktcmd_validate_data(row.data.c_str(), row.maxlen); };
        EXPECT_EQ(captured_stdout(validate), row.out);
        EXPECT_EQ(result, row.result);
        kt_debug_print_ktcmd = 0xfb;
        EXPECT_EQ(captured_stdout(validate), "");
        EXPECT_EQ(result, row.result);
        kt_debug_print_ktcmd = 0x87;
    }
}

TEST_F(ktcmd_validate_data_, needs_no_terminator_behind_maxlen_and_one_character)
{
    const std::vector<char> data{'a', 'b', 'c'};
    int32_t result = 0;
    const std::string out = captured_stdout([&] { result = ktcmd_validate_data(data.data(), 2); });
    EXPECT_EQ(out, "Data length > 2\n");
    EXPECT_EQ(result, -1);
}

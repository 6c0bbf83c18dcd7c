// The table of the log commands, its help, and the two entry points that use it.
#include "ruk/front_end.h"

#include <cstdio>
#include <utility>

#include "tests/rukcmd/rig.h"
#include "tests/support/help_text.h"

using namespace ruk_test;

namespace
{

constexpr const char *k_debug_hint = "<module|all> [-][all|none|default|e|w|n|i|d|p|t]";

struct Row {
    uint32_t type;
    CommandHandler handler;
    const char *keywords[4];
    const char *hint;
    const char *text;
    uint32_t from_agent;
};

// clang-format off
const Row k_rows[] = {
    {3, nullptr,            {},                                     nullptr,      "ruklog help:",                                     0},
    {3, nullptr,            {},                                     nullptr,      "",                                                 0},
    {1, ruk_log_show,       {"show"},                               nullptr,      "",                                                 1},
    {1, ruk_log_show_info,  {"show", "info"},                       nullptr,      "Show log info",                                    1},
    {1, ruk_log_show_all,   {"show", "all", "cookie"},              "<number>",   "Show all entries in the log",                      1},
    {1, ruk_log_show_last,  {"show", "last", "<number>", "cookie"}, "<number>",   "Show last <n> entries in the log",                 1},
    {2, nullptr,            {},                                     nullptr,      "(minimum 1, default 25, maximum 10000)",           0},
    {1, ruk_log_show_tail,  {"show", "tail"},                       nullptr,      "Show continuous tail (like unix 'tail -f')",       0},
    {1, ruk_log_start,      {"start"},                              "<entries>",  "Start logging",                                    1},
    {2, nullptr,            {},                                     nullptr,      "if <entries> is specified, stop after next <n>",   0},
    {1, ruk_log_stop,       {"stop"},                               "<entries>",  "Stop logging after next <n> entries",              1},
    {2, nullptr,            {},                                     nullptr,      "or immediately if <entries> is unspecified.",      0},
    {1, ruk_log_resume,     {"resume"},                             nullptr,      "Resume logging",                                   1},
    {2, nullptr,            {},                                     nullptr,      "Any <entries> value from previous start or stop",  0},
    {2, nullptr,            {},                                     nullptr,      "is preserved.",                                    0},
    {1, ruk_log_clear,      {"clear"},                              nullptr,      "Clear the log",                                    1},
    {1, ruk_log_debug,      {"debug"},                              k_debug_hint, "Enable and disable debug levels",                  1},
    {1, ruk_log_show_debug, {"show", "debug", "cookie"},            "<number>",   "Display debug settings",                           1},
    {0, nullptr,            {},                                     nullptr,      nullptr,                                            0},
};
// clang-format on

constexpr size_t k_row_count = 19;

constexpr int32_t k_help_length = 1079;

// The handlers of the copied table tell their row.
std::string called;

template <size_t Row> int32_t note(const char *arguments)
{
    called = std::to_string(Row) + (arguments == nullptr ? "" : std::string(" ") + arguments);
    return 0;
}

template <size_t... Rows> std::vector<CommandEntry> table_that_notes(std::index_sequence<Rows...>)
{
    std::vector<CommandEntry> table(ruk_cmd_list, ruk_cmd_list + k_row_count);
    ((table[Rows].handler = table[Rows].handler == nullptr ? nullptr : note<Rows>), ...);
    return table;
}

std::string text_of(const void *pointer)
{
    char text[40];
    snprintf(text, sizeof text, "%p", pointer);
    return text;
}

} // namespace

TEST(ruk_cmd_list_, holds_19_rows)
{
    static_assert(std::size(k_rows) == k_row_count);
    for (size_t i = 0; i < k_row_count; ++i) {
        SCOPED_TRACE(i);
        const CommandEntry &row = ruk_cmd_list[i];
        EXPECT_EQ(row.type, k_rows[i].type);
        EXPECT_EQ(row.handler, k_rows[i].handler);
        EXPECT_EQ(row.help, nullptr);
        EXPECT_STREQ(row.text, k_rows[i].text);
        EXPECT_STREQ(row.hint, k_rows[i].hint);
        for (size_t k = 0; k < 7; ++k) {
            EXPECT_STREQ(row.keywords[k], k < 4 ? k_rows[i].keywords[k] : nullptr) << k;
        }
        EXPECT_EQ(row.spare, nullptr);
        EXPECT_EQ(row.from_agent, k_rows[i].from_agent);
    }
}

using ruk_cmd_list_matches = FrontEnd;

TEST_F(ruk_cmd_list_matches, the_documented_rows)
{
    const auto table = table_that_notes(std::make_index_sequence<k_row_count>());
    struct {
        const char *command;
        const char *expected; // row and arguments; nullptr when nothing matches
    } const rows[] = {
        {"show", "2"},
        {"show xyz", "2 xyz"},
        {"show inf", "2 inf"},
        {"show ", "2"},
        {"show last10", "2 last10"},
        {"show info", "3"},
        {"SHOW INFO", "3"},
        {"sHoW   InFo  more words", "3 more words"},
        {"show all", "4"},
        {"show all 5", "4 5"},
        {"show all cookie 5", "4 5"},
        {"show all COOKIE 5", "4 5"},
        {"show all cookie", "4"},
        {"show last", "5"},
        {"show last 10", "5 10"},
        {"show last 10 cookie 7", "5 10 cookie 7"},
        {"show last cookie 7", "5 cookie 7"},
        {"show last <number>", "5"},
        {"show last <number> 7", "5 7"},
        {"show last <number> cookie 7", "5 7"},
        {"show tail", "7"},
        {"show tail x", "7 x"},
        {"start", "8"},
        {"start 100", "8 100"},
        {"stop", "10"},
        {"stop 0x10", "10 0x10"},
        {"resume", "12"},
        {"clear", "15"},
        {"debug", "16"},
        {"debug all all none w", "16 all all none w"},
        {"show debug", "17"},
        {"show debug 6", "17 6"},
        {"show debug cookie 6", "17 6"},
        {"sh", nullptr},
        {"sh info", nullptr},
        {"shows", nullptr},
        {"info", nullptr},
        {"help", nullptr},
        {"HELP", nullptr},
        {"cookie 5", nullptr},
        {"ruklog help:", nullptr},
        {"", nullptr},
        {" show info", nullptr},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.command);
        called = "";
        const std::string command = row.command;
        const std::string out = captured_stdout([&] {
            EXPECT_EQ(ktcmd_parse_single(table.data(), row.command,
                                         static_cast<uint32_t>(command.size()), 0),
                      row.expected == nullptr ? -1 : 0);
        });
        EXPECT_EQ(called, row.expected == nullptr ? "" : row.expected);
        EXPECT_EQ(out, row.expected == nullptr ? "No match found for " + command + "\n" : "");
    }
}

TEST_F(ruk_cmd_list_matches, on_the_agents_behalf_everything_but_show_tail)
{
    const Peer peer(replies({})); // refuses every request
    struct {
        const char *command;
        int32_t result;
        std::string out;
    } const rows[] = {
        {"show", 0, ""},
        {"show info", -1, "Can't get log info\n"},
        {"show all", 0, std::string(k_entry_header) + "Could not suspend log\n"},
        {"show last", -1, "Could not suspend log\nCan't get log info\n"},
        {"start", 0, "Could not start log\nStarted log\n"},
        {"stop", 0, "Could not suspend log\nSuspended log\n"},
        {"resume", 0, "Could not resume log\nResumed log\n"},
        {"clear", 0, "Could not clear log\nCleared log\n"},
        {"debug m w", 0, "Module m does not exist.\n"},
        {"show debug", 0, k_module_header},
        {"show tail", -1,
         "Cmd not permitted from DPA " + text_of(reinterpret_cast<void *>(ruk_log_show_tail)) +
             "\n"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.command);
        int32_t result = 99;
        const std::string out =
            captured_stdout([&] { result = ktcmd_parse_single(ruk_cmd_list, row.command, 0, 1); });
        EXPECT_EQ(out, row.out);
        EXPECT_EQ(result, row.result);
    }
}

using ruk_log_help_ = FrontEnd;

TEST_F(ruk_log_help_, is_whole_to_the_byte)
{
    std::vector<char> buffer(16384, '#');
    const std::string out =
        captured_stdout([&] { EXPECT_EQ(ruk_log_help(buffer.data(), 16384), k_help_length); });
    EXPECT_EQ(out, "");
    EXPECT_STREQ(buffer.data(), k_help.c_str());
    EXPECT_EQ(buffer[k_help_length + 1], '#');
}

TEST_F(ruk_log_help_, warns_when_the_buffer_is_too_small)
{
    const std::string &help = k_help;
    for (const int32_t length : {0, 1, 12, 13, 500, k_help_length - 1, k_help_length}) {
        SCOPED_TRACE(length);
        std::vector<char> buffer(static_cast<size_t>(length) + 1, '#');
        const std::string out =
            captured_stdout([&] { EXPECT_EQ(ruk_log_help(buffer.data(), length), length); });
        EXPECT_EQ(out, "Help text length exceeds maxlen. Need to redefine the maxlen\n");
        EXPECT_EQ(buffer[static_cast<size_t>(length)], '#');
        if (length > 0) {
            const std::string text = buffer.data();
            EXPECT_LT(text.size(), static_cast<size_t>(length));
            EXPECT_EQ(text, help.substr(0, text.size()));
        }
    }
    std::vector<char> enough(k_help_length + 1);
    EXPECT_EQ(captured_stdout([&] {
                  EXPECT_EQ(ruk_log_help(enough.data(), k_help_length + 1), k_help_length);
              }),
              "");
    EXPECT_STREQ(enough.data(), k_help.c_str());
}

TEST_F(ruk_log_help_, traces_its_arguments)
{
    kt_debug_print_ruk_log = 0x10;
    std::vector<char> buffer(2000);
    EXPECT_EQ(captured_stdout([&] { ruk_log_help(buffer.data(), 2000); }),
              "ruk_log_help(buffer " + text_of(buffer.data()) + ", length 2000)\n");
}

using ruk_log_run_ = FrontEnd;

TEST_F(ruk_log_run_, returns_the_length_and_runs_every_command)
{
    const Peer peer(replies({}));
    EXPECT_EQ(output_of("clear; resume"),
              "Could not clear log\nCleared log\nCould not resume log\nResumed log\n");
    EXPECT_EQ(output_of("nonsense;start 5;x"), "No match found for nonsense\n"
                                               "Could not start log\nStarted log\n"
                                               "No match found for x\n");
    EXPECT_EQ(output_of("show\tinfo"), "No match found for info\n");
    EXPECT_EQ(output_of("show info; clear"),
              "Can't get log info\nCould not clear log\nCleared log\n");
    EXPECT_EQ(output_of(";;"), "");
    EXPECT_EQ(output_of("    "), "");
    EXPECT_EQ(output_of(""), "");
    EXPECT_EQ(output_of("HELP"), "No match found for HELP\n");
}

TEST_F(ruk_log_run_, takes_no_more_than_length_bytes)
{
    std::vector<char> line{'s', 'h', 'o', 'w', 'x'};
    EXPECT_EQ(captured_stdout([&] { EXPECT_EQ(ruk_log_run(line.data(), 4), 4); }), "");
    EXPECT_EQ(captured_stdout([&] { EXPECT_EQ(ruk_log_run(line.data(), 0), 0); }), "");
    EXPECT_EQ(captured_stdout([&] { EXPECT_EQ(ruk_log_run(line.data(), 5), 5); }),
              "No match found for showx\n");
}

// The permission column is for the matcher's own flag, which this entry point never sets.
TEST_F(ruk_log_run_, never_refuses_as_from_the_agent)
{
    ruk_rcli_fromdpa = 1;
    EXPECT_EQ(output_of("show tail"), "Not supported in TOB\n");
}

TEST_F(ruk_log_run_, traces_its_arguments_and_the_line)
{
    kt_debug_print_ruk_log = 0x10;
    std::string line = "show;x";
    const auto run = [&](int32_t length) {
        return captured_stdout([&] { ruk_log_run(line.data(), length); });
    };
    const std::string at = text_of(line.data());
    EXPECT_EQ(run(6), "ruk_log_run(buffer " + at +
                          ", length 6)\nbuff:show;x\n"
                          "No match found for x\n");
    EXPECT_EQ(run(2), "ruk_log_run(buffer " + at +
                          ", length 2)\nbuff:sh\n"
                          "No match found for sh\n");
    EXPECT_EQ(run(0), "ruk_log_run(buffer " + at + ", length 0)\nbuff:\n");
    kt_debug_print_ruk_log = 0xef;
    EXPECT_EQ(run(6), "No match found for x\n");
}

TEST_F(ruk_log_run_, has_a_beginning_and_an_end_that_do_nothing)
{
    EXPECT_EQ(captured_stdout([] {
                  EXPECT_EQ(ruk_log_init(), 0);
                  ruk_log_exit();
                  EXPECT_EQ(ruk_log_show(nullptr), 0);
                  EXPECT_EQ(ruk_log_show("arguments"), 0);
              }),
              "");
}

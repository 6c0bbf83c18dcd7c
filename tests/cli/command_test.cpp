// Each command of ruklog as a whole process: the requests that it sends and the text that it
// prints, byte for byte.
#include "tests/support/child.h"
#include "tests/support/help_text.h"
#include "tests/support/log_records.h"
#include "tests/support/scripted_agent.h"

#include <csignal>

namespace
{

using namespace ruk_test;

constexpr uint8_t k_reply_only = 0x01;
constexpr uint8_t k_both_ways = 0x03;

// Requests as a command sends them.
std::string version_probe()
{
    return request_bytes(63, 0, k_reply_only, u32(0));
}
std::string info_request()
{
    return request_bytes(233, 0, k_reply_only, info_bytes({.stop_after = 0}));
}
std::string set_log(int32_t operation, uint64_t value = 0)
{
    return request_bytes(236, operation, k_both_ways, u64(value));
}
std::string entry_request(const Event &cursor)
{
    return request_bytes(234, 0, k_both_ways, entry_bytes(cursor));
}
std::string module_request(const Module &cursor)
{
    return request_bytes(311, 0, k_both_ways, module_bytes(cursor));
}
std::string find_request(const std::string &name)
{
    return request_bytes(312, 0, k_both_ways, module_bytes({.name = name}));
}
std::string set_module(int32_t index, uint32_t mask)
{
    return request_bytes(313, index, k_both_ways, u32(mask));
}

constexpr uint64_t k_first = ~uint64_t{0};
constexpr uint32_t k_first_module = ~uint32_t{0};

const Event k_entry7{.seconds = 1'600'000'000,
                     .microseconds = 42,
                     .entry = 7,
                     .module = 3,
                     .level = 1,
                     .cpu = 2,
                     .message = "seven\n"};
const Event k_entry8{.seconds = 1'600'000'061,
                     .microseconds = 999'999,
                     .entry = 8,
                     .module = 12,
                     .level = 0x10,
                     .cpu = 11,
                     .message = "eight\n"};
const std::string k_text7 = "Sep 13 12:26:40.000042        7  2   3   1   Error seven\n";
const std::string k_text8 = "Sep 13 12:27:41.999999        8 11  12  16   Debug eight\n";
const Module k_flow{
    .index = 0, .available = 0xff, .printing = 0x87, .default_printing = 0x07, .name = "flow"};
const Module k_port{
    .index = 4, .available = 0x1f, .printing = 0x01, .default_printing = 0x03, .name = "port"};

struct Row {
    std::vector<std::string> arguments;
    std::vector<Reply> replies;        // after the version probe's
    std::vector<std::string> requests; // after the version probe
    std::string out;
    int exit_status = 0;
    int32_t version_status = 0;
};

void expect_row(const Row &row)
{
    std::vector<Reply> script{{row.version_status, ""}};
    script.insert(script.end(), row.replies.begin(), row.replies.end());
    ScriptedAgent agent(replies(script));
    std::vector<std::string> command{RUKLOG_PATH};
    command.insert(command.end(), row.arguments.begin(), row.arguments.end());

    const Outcome outcome = run(command);

    EXPECT_EQ(outcome.out, row.out);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.exit_status, row.exit_status);
    std::vector<std::string> expected{version_probe()};
    expected.insert(expected.end(), row.requests.begin(), row.requests.end());
    const std::vector<std::string> sent = agent.defined_requests();
    ASSERT_EQ(sent.size(), expected.size());
    for (size_t i = 0; i < sent.size(); ++i) {
        EXPECT_EQ(hex(sent[i]), hex(expected[i])) << "request " << i;
    }
    EXPECT_EQ(agent.connections(), 1);
}

void expect_rows(const std::vector<Row> &rows)
{
    for (const Row &row : rows) {
        std::string line;
        for (const std::string &argument : row.arguments) {
            line += argument + " ";
        }
        SCOPED_TRACE(line);
        expect_row(row);
    }
}

} // namespace

TEST(start, fails_without_an_agent)
{
    const Outcome outcome = run({RUKLOG_PATH, "show", "info"});
    EXPECT_EQ(outcome.out,
              "kt_platform_open: Failed binding local socket err: 2 - No such file or directory\n"
              "Error initializing kt_dpa_api_init()\n");
    EXPECT_EQ(outcome.exit_status, 255);
}

TEST(start, refuses_another_version_and_nothing_else)
{
    const std::string mismatch = "Cannot execute ruklog: ruklog utility version does not match the "
                                 "running RUK version.\n";
    expect_rows({
        {{"show", "info"}, {}, {}, mismatch, 255, 6},
        {{}, {}, {}, mismatch, 255, 6},
        {{"clear"}, {{0, ""}}, {set_log(4)}, "Cleared log\n", 0, 1},
        {{"clear"}, {{0, ""}}, {set_log(4)}, "Cleared log\n", 0, 5},
        {{"clear"}, {{0, ""}}, {set_log(4)}, "Cleared log\n", 0, -6},
    });
}

TEST(help, needs_no_argument_or_the_word_help)
{
    expect_rows({
        {{}, {}, {}, k_help},
        {{"help"}, {}, {}, k_help},
        {{"help", "me"}, {}, {}, k_help},
        {{"HELP"}, {}, {}, "No match found for HELP\n"},
        {{"helpme"}, {}, {}, "No match found for helpme\n"},
        {{"help me"}, {}, {}, "No match found for help me\n"},
    });
}

TEST(line, is_joined_split_and_matched)
{
    const Reply info{
        0, info_bytes(
               {.available = 1, .enabled = 1, .total = 2, .wrapped = 3, .lost = 4, .skipped = 5})};
    const std::string text = "          Enabled: Yes\n"
                             "    Total Entries: 2\n"
                             "  Wrapped Entries: 3\n"
                             "     Lost Entries: 4\n"
                             "  Skipped Entries: 5\n"
                             "Available Entries: 1\n"
                             " Stop After Entry: Not Specified\n";
    const std::vector<std::string> asked{info_request()};
    expect_rows({
        {{"show", "info"}, {info}, asked, text},
        {{"show info"}, {info}, asked, text},
        {{"SHOW", "Info"}, {info}, asked, text},
        {{"show", "info", "now"}, {info}, asked, text},
        {{" show", " info "}, {info}, asked, text},
        {{"show info; clear"},
         {info, {0, ""}},
         {info_request(), set_log(4)},
         text + "Cleared log\n"},
        {{"show", "info;clear"},
         {info, {0, ""}},
         {info_request(), set_log(4)},
         text + "Cleared log\n"},
        {{"xyzzy", ";", "clear"},
         {{0, ""}},
         {set_log(4)},
         "No match found for xyzzy \nCleared log\n"},
        {{"show\tinfo"}, {}, {}, "No match found for info\n"},
        {{"sh", "info"}, {}, {}, "No match found for sh info\n"},
        {{"show"}, {}, {}, ""},
        {{"show", "xyz"}, {}, {}, ""},
        {{";;"}, {}, {}, ""},
        {{"   "}, {}, {}, ""},
        {{""}, {}, {}, ""},
        {{std::string(255, 'x')}, {}, {}, "No match found for " + std::string(255, 'x') + "\n"},
        {{std::string(256, 'x'), "clear"}, {}, {}, "Max command length reached; discarding\n"},
    });
}

TEST(line, is_cut_to_its_buffer)
{
    // The buffer takes 16,383 characters; the last command is cut from "stop" to "sto".
    const std::string blanks(16'383 - 3 - 6, ' ');
    expect_rows({
        {{"clear;" + blanks + "stop"},
         {{0, ""}},
         {set_log(4)},
         "Cleared log\nNo match found for sto\n"},
    });
}

TEST(line, leaves_out_the_arguments_behind_its_end)
{
    // The first two fill the buffer to the last character; "clear" would be a command.
    const std::string blanks(16'383 - 5 - 1, ' ');
    expect_rows({
        {{"stop;", blanks, ";clear", "resume"}, {{0, ""}}, {set_log(2)}, "Suspended log\n"},
    });
}

TEST(show_info, prints_the_status)
{
    expect_rows({
        {{"show", "info"},
         {{0, info_bytes({.available = 0xffffffff,
                          .enabled = 0,
                          .total = 18446744073709551615u,
                          .stop_after = 17})}},
         {info_request()},
         "          Enabled: No\n"
         "    Total Entries: 18446744073709551615\n"
         "  Wrapped Entries: 0\n"
         "     Lost Entries: 0\n"
         "  Skipped Entries: 0\n"
         "Available Entries: 4294967295\n"
         " Stop After Entry: 17\n"},
        {{"show", "info"}, {{5, ""}}, {info_request()}, "Can't get log info\n"},
    });
}

TEST(show_debug, lists_the_modules)
{
    const Module unterminated{
        .index = 9, .available = 0x1ff, .printing = 0, .name = "abcdefghijklmnopqrstuvwxyz012345"};
    expect_rows({
        {{"show", "debug"},
         {{0, module_bytes(k_flow)},
          {0, module_bytes(k_port)},
          {0, module_bytes(unterminated)},
          {1, ""}},
         {module_request({.index = k_first_module}), module_request(k_flow), module_request(k_port),
          module_request(unterminated)},
         k_module_header +
             "                flow      ENWIDTPL (255)      ENW    L (135)\n"
             "                port      ENWID    ( 31)      E        (  1)\n"
             "abcdefghijklmnopqrstuvwxyz012345      ENWIDTPL (511)               (  0)\n"},
        {{"show", "debug", "cookie", "3"},
         {{1, ""}},
         {module_request({.index = k_first_module})},
         k_module_header},
    });
}

TEST(show_all, stops_reads_and_resumes)
{
    expect_rows({
        {{"show", "all"},
         {{0, u64(1)}, {0, entry_bytes(k_entry7)}, {0, entry_bytes(k_entry8)}, {3, ""}, {0, ""}},
         {set_log(2), entry_request({.entry = k_first}), entry_request(k_entry7),
          entry_request(k_entry8), set_log(3)},
         k_entry_header + k_text7 + k_text8},
        {{"show", "all", "5"},
         {{0, u64(0)}, {1, ""}},
         {set_log(2), entry_request({.entry = k_first})},
         k_entry_header},
        {{"show", "all"},
         {{0, u64(0x100000000)}, {1, ""}},
         {set_log(2), entry_request({.entry = k_first})},
         k_entry_header},
        {{"show", "all"},
         {{1, u64(1)}, {0, entry_bytes(k_entry7)}, {3, ""}, {9, ""}},
         {set_log(2), entry_request({.entry = k_first}), entry_request(k_entry7), set_log(3)},
         k_entry_header + "Could not suspend log\n" + k_text7 + "Could not resume log\n"},
    });
}

// An entry's message goes into the next request as it was made to end for printing.
TEST(show_all, asks_on_with_the_message_as_it_prints)
{
    Event unended = k_entry7;
    unended.message = "seven";
    Event printed = k_entry7;
    printed.message = padded("seven", 126) + "\n";
    Event full = k_entry8;
    full.message = std::string(128, 'a');
    Event cut = k_entry8;
    cut.message = std::string(127, 'a') + "\n";
    expect_rows({
        {{"show", "all"},
         {{0, u64(0)}, {0, entry_bytes(unended)}, {0, entry_bytes(full)}, {1, ""}},
         {set_log(2), entry_request({.entry = k_first}), entry_request(printed),
          entry_request(cut)},
         k_entry_header + "Sep 13 12:26:40.000042        7  2   3   1   Error seven" +
             "Sep 13 12:27:41.999999        8 11  12  16   Debug " + cut.message},
    });
}

TEST(show_last, counts_from_the_end)
{
    const auto info = [](uint32_t available) {
        return Reply{0, info_bytes({.available = available, .enabled = 1, .total = 100'000})};
    };
    const auto row = [&](std::vector<std::string> arguments, uint32_t available, uint64_t cursor) {
        return Row{std::move(arguments),
                   {{0, u64(1)}, info(available), {1, ""}, {0, ""}},
                   {set_log(2), info_request(), entry_request({.entry = cursor}), set_log(3)},
                   k_entry_header};
    };
    expect_rows({
        row({"show", "last"}, 20'000, 99'974),
        row({"show", "last", "1"}, 20'000, 99'998),
        row({"show", "last", "0"}, 20'000, 99'998),
        row({"show", "last", "abc"}, 20'000, 99'998),
        row({"show", "last", "0x10"}, 20'000, 99'983),
        row({"show", "last", "010"}, 20'000, 99'991),
        row({"show", "last", "10000"}, 20'000, 89'999),
        row({"show", "last", "10001"}, 20'000, 89'999),
        row({"show", "last", "20000"}, 20'000, 89'999),
        row({"show", "last", "-1"}, 20'000, 89'999),
        row({"show", "last", "4294967296"}, 20'000, 99'998),
        row({"show", "last", "10", "cookie", "7"}, 20'000, 99'989),
        row({"show", "last", "10"}, 12, 99'989),
        row({"show", "last", "10"}, 11, k_first),
        row({"show", "last", "10"}, 10, k_first),
        row({"show", "last", "1"}, 1, k_first),
        row({"show", "last", "10"}, 0, 99'989),
    });
}

TEST(show_last, prints_what_it_reads)
{
    expect_rows({
        {{"show", "last", "2"},
         {{0, u64(1)},
          {0, info_bytes({.available = 9, .enabled = 1, .total = 9})},
          {0, entry_bytes(k_entry7)},
          {0, entry_bytes(k_entry8)},
          {1, ""},
          {0, ""}},
         {set_log(2), info_request(), entry_request({.entry = 6}), entry_request(k_entry7),
          entry_request(k_entry8), set_log(3)},
         k_entry_header + k_text7 + k_text8},
        {{"show", "last"},
         {{0, u64(1)}, {1, ""}, {0, ""}},
         {set_log(2), info_request(), set_log(3)},
         "Can't get log info\n"},
        {{"show", "last"},
         {{0, u64(0)}, {1, ""}},
         {set_log(2), info_request()},
         "Can't get log info\n"},
    });
}

TEST(entries, end_their_messages_within_the_field)
{
    struct {
        std::string message;
        std::string printed;
    } const rows[] = {
        {"", ""},
        {"\n", "\n"},
        {"short", "short"},
        {std::string(125, 'a'), std::string(125, 'a')},
        {std::string(125, 'a') + "\n", std::string(125, 'a') + "\n"},
        {std::string(126, 'a'), std::string(126, 'a') + "\n"},
        {std::string(126, 'a') + "\n", std::string(126, 'a') + "\n"},
        {std::string(127, 'a'), std::string(127, 'a') + "\n"},
        {std::string(127, 'a') + "\n", std::string(127, 'a') + "\n"},
        {std::string(128, 'a'), std::string(127, 'a') + "\n"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.message);
        Event entry = k_entry7;
        entry.message = row.message;
        ScriptedAgent agent(replies({{0, ""}, {0, u64(0)}, {0, entry_bytes(entry)}}));
        EXPECT_EQ(run({RUKLOG_PATH, "show", "all"}).out,
                  k_entry_header + "Sep 13 12:26:40.000042        7  2   3   1   Error " +
                      row.printed);
    }
}

TEST(entries, print_every_field_at_its_width)
{
    const Event entry{.seconds = 0xffffffff,
                      .microseconds = 5,
                      .entry = k_first - 1,
                      .module = 0xffffffff,
                      .level = 3,
                      .cpu = 0xffff,
                      .message = "x\n"};
    ScriptedAgent agent(replies({{0, ""}, {0, u64(0)}, {0, entry_bytes(entry)}}));
    EXPECT_EQ(run({RUKLOG_PATH, "show", "all"}).out,
              k_entry_header +
                  "Feb  7 06:28:15.000005 18446744073709551614 65535  -1   3         x\n");
}

TEST(control, sends_one_request_and_reports)
{
    expect_rows({
        {{"start"}, {{0, ""}}, {set_log(1)}, "Started log\n"},
        {{"start", "100"}, {{0, ""}}, {set_log(1, 100)}, "Started log\n"},
        {{"start", "0x10", "200"}, {{0, ""}}, {set_log(1, 16)}, "Started log\n"},
        {{"start", "abc"}, {{0, ""}}, {set_log(1)}, "Started log\n"},
        {{"start", "18446744073709551615"}, {{0, ""}}, {set_log(1, k_first)}, "Started log\n"},
        {{"start"}, {{2, ""}}, {set_log(1)}, "Could not start log\nStarted log\n"},
        {{"resume"}, {{0, ""}}, {set_log(3)}, "Resumed log\n"},
        {{"resume", "5"}, {{0, ""}}, {set_log(3)}, "Resumed log\n"},
        {{"resume"}, {{2, ""}}, {set_log(3)}, "Could not resume log\nResumed log\n"},
        {{"clear"}, {{0, ""}}, {set_log(4)}, "Cleared log\n"},
        {{"clear"}, {{-1, ""}}, {set_log(4)}, "Could not clear log\nCleared log\n"},
        {{"stop"}, {{0, u64(0)}}, {set_log(2)}, "Suspended log\n"},
        {{"stop"}, {{0, u64(1)}}, {set_log(2)}, "Will suspend log after next 0 entries\n"},
        {{"stop", "5"}, {{0, u64(1)}}, {set_log(2, 5)}, "Will suspend log after next 5 entries\n"},
        {{"stop", "0x10"},
         {{0, u64(1)}},
         {set_log(2, 16)},
         "Will suspend log after next 16 entries\n"},
        {{"stop", "4294967301"},
         {{0, u64(1)}},
         {set_log(2, 4294967301)},
         "Will suspend log after next 5 entries\n"},
        {{"stop", "5"}, {{0, u64(0)}}, {set_log(2, 5)}, "Suspended log\n"},
        {{"stop", "abc"}, {{0, u64(0)}}, {set_log(2)}, "Suspended log\n"},
        {{"stop", "5"},
         {{3, ""}},
         {set_log(2, 5)},
         "Could not suspend log\nWill suspend log after next 5 entries\n"},
        {{"stop"}, {{3, ""}}, {set_log(2)}, "Could not suspend log\nSuspended log\n"},
    });
}

TEST(debug, changes_one_module)
{
    const auto row = [](std::vector<std::string> words, uint32_t mask) {
        std::vector<std::string> arguments{"debug", "flow"};
        arguments.insert(arguments.end(), words.begin(), words.end());
        return Row{arguments,
                   {{0, module_bytes(k_port)}, {0, ""}},
                   {find_request("flow"), set_module(4, mask)},
                   ""};
    };
    expect_rows({
        row({}, 0x01),
        row({"w"}, 0x05),
        row({"warning"}, 0x05),
        row({"W"}, 0x05),
        row({"-e"}, 0x00),
        row({"-d"}, 0x01),
        row({"x"}, 0x01),
        row({"-"}, 0x01),
        row({"l"}, 0x81),
        row({"all"}, 0xff),
        row({"ALL"}, 0xff),
        row({"-all"}, 0x00),
        row({"none"}, 0x00),
        row({"-none"}, 0xff),
        row({"default"}, 0x03),
        row({"-default"}, 0x00),
        row({"defaults"}, 0x11),
        row({"--e"}, 0x01),
        row({"all", "-p", "-t", "-l"}, 0x1f),
        row({"e", "n", "w", "i", "d", "t", "p", "l"}, 0xff),
    });
}

TEST(debug, changes_every_module_to_the_same_mask)
{
    const Module all{.index = 0xffff, .printing = 0x30, .default_printing = 0x07, .name = "all"};
    Module first = all;
    first.index = k_first_module;
    expect_rows({
        {{"debug", "all", "all", "none", "w"},
         {{0, module_bytes(all)},
          {0, module_bytes(k_flow)},
          {7, u32(0)},
          {0, module_bytes(k_port)},
          {0, ""},
          {1, ""}},
         {find_request("all"), module_request(first), set_module(0, 4), module_request(k_flow),
          set_module(4, 4), module_request(k_port)},
         ""},
        {{"debug", "ALL", "-i", "w"},
         {{0, module_bytes(all)}, {0, module_bytes(k_flow)}, {0, ""}, {1, ""}},
         {find_request("ALL"), module_request(first), set_module(0, 0x34), module_request(k_flow)},
         ""},
    });
}

TEST(debug, looks_the_name_up_first)
{
    expect_rows({
        {{"debug"}, {}, {}, ""},
        {{"debug", "nosuch", "e"},
         {{1, ""}},
         {find_request("nosuch")},
         "Module nosuch does not exist.\n"},
        {{"debug", "all", "e"}, {{1, ""}}, {find_request("all")}, "Module all does not exist.\n"},
        {{"debug", "abcdefghijklmnopqrstuvwxyz0123456789", "e"},
         {{1, ""}},
         {find_request("abcdefghijklmnopqrstuvwxyz01234")},
         "Module abcdefghijklmnopqrstuvwxyz01234 does not exist.\n"},
    });
}

TEST(show_tail, begins_with_the_newest_and_goes_on)
{
    // The 27th entry is there at once, the next only after a pause.
    int refusals = 0;
    ScriptedAgent agent([&](const Request &request) -> std::optional<std::string> {
        switch (request.opcode()) {
        case 233:
            return reply_to(request, 0, info_bytes({.available = 27, .enabled = 1, .total = 9}));
        case 234:
            if (request.payload() == entry_bytes(k_entry7) && refusals++ == 0) {
                return reply_to(request, 1);
            }
            return request.payload() == entry_bytes(k_entry7)
                       ? reply_to(request, 0, entry_bytes(k_entry8))
                   : request.payload() == entry_bytes(k_entry8)
                       ? reply_to(request, 1)
                       : reply_to(request, 0, entry_bytes(k_entry7));
        default:
            return reply_to(request, 0);
        }
    });
    Child tail({RUKLOG_PATH, "show", "tail"});
    const std::string beginning =
        "Press control-C to interrupt this command.\n" + k_entry_header + k_text7;
    ASSERT_TRUE(tail.wait_for_output(k_text7));
    EXPECT_EQ(tail.out(), beginning);
    ASSERT_TRUE(tail.wait_for_output(k_text8));
    tail.send_signal(SIGINT);
    const Outcome outcome = tail.wait();
    EXPECT_EQ(outcome.signal, SIGINT);
    EXPECT_EQ(outcome.out, beginning + k_text8);

    const std::vector<std::string> expected{
        version_probe(), set_log(5), info_request(),
        set_log(6),      set_log(5), entry_request({.entry = 9 - 26ull}),
        set_log(6),      set_log(5), entry_request(k_entry7),
        set_log(6),      set_log(5), entry_request(k_entry7),
        set_log(6),      set_log(5), entry_request(k_entry8),
        set_log(6),
    };
    const std::vector<std::string> sent = agent.defined_requests();
    ASSERT_GE(sent.size(), expected.size());
    for (size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(hex(sent[i]), hex(expected[i])) << "request " << i;
    }
}

TEST(show_tail, ends_without_the_status)
{
    expect_rows({
        {{"show", "tail"},
         {{0, u64(0)}, {1, ""}, {0, ""}},
         {set_log(5), info_request(), set_log(6)},
         "Can't get log info\n"},
    });
}

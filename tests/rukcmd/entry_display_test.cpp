// The entry printer, and show all, show last and show tail of the stand-alone tool.
#include "ruk/front_end.h"

#include <csignal>
#include <cstdlib>
#include <ctime>

#include "tests/rukcmd/forked.h"
#include "tests/rukcmd/rig.h"
#include "tests/support/eventually.h"

using namespace ruk_test;

namespace
{

// A record in a block of its own with the one spare byte that a caller provides.
struct Printed {
    std::string out;
    std::string record;
};

Printed print_entry(const std::string &bytes)
{
    union {
        LogEntry entry;
        char bytes[sizeof(LogEntry) + 8];
    } record;
    EXPECT_EQ(bytes.size(), sizeof record.entry);
    memset(record.bytes, '#', sizeof record.bytes);
    memcpy(record.bytes, bytes.data(), bytes.size());
    Printed printed;
    printed.out = captured_stdout([&] { ruk_log_print_entry(&record.entry); });
    printed.record.assign(record.bytes, sizeof record.entry);
    return printed;
}

std::string m(size_t length)
{
    return std::string(length, 'm');
}

std::string entry_with(uint64_t number, const std::string &message)
{
    Event event;
    event.seconds = 1700000000;
    event.entry = number;
    event.level = 1;
    event.message = message;
    return entry_bytes(event);
}

// What stands before the message of entry_with(1, ...).
constexpr const char *k_prefix = "Nov 14 22:13:20.000000        1  0   0   1   Error ";

} // namespace

using ruk_log_print_entry_ = FrontEnd;

TEST_F(ruk_log_print_entry_, prints_the_header_and_nothing_for_null)
{
    EXPECT_EQ(captured_stdout([] { ruk_log_print_entry_header(); }),
              "Timestamp                  Entry CPU  Mod Lv         Message\n");
    EXPECT_EQ(captured_stdout([] { ruk_log_print_entry(nullptr); }), "");
}

TEST_F(ruk_log_print_entry_, formats_each_field)
{
    const struct {
        Event event;
        const char *text;
    } rows[] = {
        {{1700000000, 123456, 42, 3, 1, 2, "hello\n"},
         "Nov 14 22:13:20.123456       42  2   3   1   Error hello\n"},
        {{0, 0, 0, 0, 0, 0, "x\n"}, "Jan  1 00:00:00.000000        0  0   0   0         x\n"},
        {{951782399, 7, 12345678, 123, 2, 12, "x\n"},
         "Feb 28 23:59:59.000007 12345678 12 123   2  Notice x\n"},
        {{951782400, 999999, 123456789, 1234, 4, 100, "x\n"},
         "Feb 29 00:00:00.999999 123456789 100 1234   4 Warning x\n"},
        {{1, 1, 1, 1, 8, 1, "x\n"}, "Jan  1 00:00:01.000001        1  1   1   8    Info x\n"},
        {{1, 1, 1, 1, 16, 1, "x\n"}, "Jan  1 00:00:01.000001        1  1   1  16   Debug x\n"},
        {{1, 1, 1, 1, 32, 1, "x\n"}, "Jan  1 00:00:01.000001        1  1   1  32    Temp x\n"},
        {{1, 1, 1, 1, 64, 1, "x\n"}, "Jan  1 00:00:01.000001        1  1   1  64  Packet x\n"},
        {{1, 1, 1, 1, 128, 1, "x\n"}, "Jan  1 00:00:01.000001        1  1   1 128     Log x\n"},
        {{1, 1, 1, 1, 3, 1, "x\n"}, "Jan  1 00:00:01.000001        1  1   1   3         x\n"},
        {{1, 1, 1, 1, 65535, 65535, "x\n"},
         "Jan  1 00:00:01.000001        1 65535   1 65535         x\n"},
        {{4294967295, 1000000, UINT64_MAX, 4294967295, 256, 0, "%s %n\n"},
         "Feb  7 06:28:15.1000000 18446744073709551615  0  -1 256         %s %n\n"},
        {{2147483648, 4294967295, 1, 2147483648, 1, 0, "x\n"},
         "Jan 19 03:14:08.-00001        1  0 -2147483648   1   Error x\n"},
    };
    for (const auto &row : rows) {
        const std::string record = entry_bytes(row.event);
        const Printed printed = print_entry(record);
        EXPECT_EQ(printed.out, row.text);
        EXPECT_EQ(hex(printed.record.substr(0, 24)), hex(record.substr(0, 24)));
    }
}

TEST_F(ruk_log_print_entry_, shows_local_time)
{
    setenv("TZ", "IST-5:30", 1);
    tzset();
    EXPECT_EQ(print_entry(entry_with(1, "x\n")).out,
              "Nov 15 03:43:20.000000        1  0   0   1   Error x\n");
    setenv("TZ", "UTC", 1);
    tzset();
    EXPECT_EQ(print_entry(entry_with(1, "x\n")).out, k_prefix + std::string("x\n"));
}

// Messages around the field's end: what is printed, and what the field holds then.
TEST_F(ruk_log_print_entry_, gives_long_messages_their_line_feed_at_a_fixed_place)
{
    const struct {
        std::string message;
        std::string printed;
        std::string field;
    } rows[] = {
        {"", "", m(0)},
        {"\n", "\n", "\n"},
        {"hello", "hello", "hello"},
        {"hello\n", "hello\n", "hello\n"},
        {"a\nb", "a\nb", "a\nb"},
        {m(124) + "\n", m(124) + "\n", m(124) + "\n"},
        {m(125), m(125), m(125)},
        {m(125) + "\n", m(125) + "\n", m(125) + "\n"},
        {m(126), m(126) + "\n", m(126) + "\n"},
        {m(126) + "\n", m(126) + "\n", m(126) + "\n"},
        {m(127), m(127) + "\n", m(127) + "\n"},
        {m(128), m(127) + "\n", m(127) + "\n"}, // no terminator
        {m(127) + "\n", m(127) + "\n", m(127) + "\n"},
        {m(126) + "\n\n", m(126) + "\n", m(126) + "\n"},
        {m(126) + "\nx", m(126) + "\n", m(126) + "\n"},
        {m(120) + "\nabcdefg", m(120) + "\nabcdef\n", m(120) + "\nabcdef\n"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.message.size());
        const Printed printed = print_entry(entry_with(1, row.message));
        EXPECT_EQ(printed.out, k_prefix + row.printed);
        // A message shorter than 126 without a line feed gets its one behind its terminator.
        std::string field = padded(row.field, 128);
        const bool ends_line = !row.message.empty() && row.message.back() == '\n';
        if (row.message.size() < 126 && !ends_line) {
            field[126] = '\n';
        }
        EXPECT_EQ(hex(printed.record.substr(24)), hex(field));
    }
}

// The byte before an empty message belongs to the cpu and is no line feed, whatever it holds.
TEST_F(ruk_log_print_entry_, looks_at_no_byte_before_an_empty_message)
{
    const Printed printed = print_entry(entry_bytes({.cpu = 0x0a0a}));
    EXPECT_EQ(printed.out, "Jan  1 00:00:00.000000        0 2570   0   0         ");
    EXPECT_EQ(printed.record[24 + 126], '\n');
}

TEST_F(ruk_log_print_entry_, forgets_what_stood_behind_a_short_message)
{
    std::string record = entry_with(1, "short");
    record.replace(24 + 6, 122, std::string(122, 'z'));
    const Printed printed = print_entry(record);
    EXPECT_EQ(printed.out, k_prefix + std::string("short"));
    EXPECT_EQ(hex(printed.record.substr(24)),
              hex(std::string("short\0", 6) + std::string(120, 'z') + std::string("\n\0", 2)));
}

using ruk_log_show_all_ = FrontEnd;

namespace
{

// The message as the printer leaves it in the record.
std::string settled(uint64_t number, const std::string &message)
{
    std::string record = entry_with(number, message);
    record[24 + 126] = '\n';
    record[24 + 127] = '\0';
    return record;
}

} // namespace

TEST_F(ruk_log_show_all_, sends_each_entry_back_as_it_printed)
{
    const std::string unended(127, 'x');
    const std::string unterminated(128, 'y');
    const std::string plain = entry_with(4, "plain\n");
    for (const char *arguments : {static_cast<const char *>(nullptr), "5", "cookie 5"}) {
        const Peer peer(replies({
            {0, bytes_of(uint64_t{1})},
            {0, entry_with(1, "short")},
            {0, entry_with(2, unended)},
            {0, entry_with(3, unterminated)},
            {0, plain},
            {0, entry_with(5, "")},
            {0, entry_with(6, m(126))},
            {9, ""},
            {0, bytes_of(uint64_t{0})},
        }));
        int32_t result = 99;
        EXPECT_EQ(captured_stdout([&] { result = ruk_log_show_all(arguments); }),
                  "Timestamp                  Entry CPU  Mod Lv         Message\n"
                  "Nov 14 22:13:20.000000        1  0   0   1   Error short"
                  "Nov 14 22:13:20.000000        2  0   0   1   Error " +
                      unended +
                      "\n"
                      "Nov 14 22:13:20.000000        3  0   0   1   Error " +
                      std::string(127, 'y') +
                      "\n"
                      "Nov 14 22:13:20.000000        4  0   0   1   Error plain\n"
                      "Nov 14 22:13:20.000000        5  0   0   1   Error "
                      "Nov 14 22:13:20.000000        6  0   0   1   Error " +
                      m(126) + "\n");
        EXPECT_EQ(result, 0);
        expect_requests(peer.agent, {
                                        set_log_request(2, 0),
                                        first_entry_request(),
                                        entry_request(settled(1, "short")),
                                        entry_request(entry_with(2, unended + "\n")),
                                        entry_request(entry_with(3, std::string(127, 'y') + "\n")),
                                        entry_request(plain),
                                        entry_request(settled(5, "")),
                                        entry_request(settled(6, m(126))),
                                        set_log_request(3, 0),
                                    });
    }
}

TEST_F(ruk_log_show_all_, resumes_a_log_that_was_on_and_only_that)
{
    struct {
        Reply hold;
        Reply release;
        bool is_released;
        std::string before;
        std::string after;
    } const rows[] = {
        {{0, bytes_of(uint64_t{0})}, {0, ""}, false, "", ""},
        {{0, bytes_of(uint64_t{1})}, {0, ""}, true, "", ""},
        {{0, bytes_of(uint64_t{0x100000000})}, {0, ""}, false, "", ""},
        {{0, bytes_of(uint64_t{1})}, {5, ""}, true, "", "Could not resume log\n"},
        {{3, bytes_of(uint64_t{0})}, {0, ""}, false, "Could not suspend log\n", ""},
        {{3, bytes_of(uint64_t{2})},
         {7, ""},
         true,
         "Could not suspend log\n",
         "Could not resume log\n"},
    };
    for (const auto &row : rows) {
        const std::string event = numbered_entry(5);
        const Peer peer(replies({row.hold, {0, event}, {1, ""}, row.release}));
        EXPECT_EQ(output_of("show all"),
                  k_entry_header + row.before + numbered_line(5) + row.after);
        std::vector<std::string> expected{set_log_request(2, 0), first_entry_request(),
                                          entry_request(event)};
        if (row.is_released) {
            expected.push_back(set_log_request(3, 0));
        }
        expect_requests(peer.agent, expected);
    }
}

TEST_F(ruk_log_show_all_, shows_a_log_of_thousands)
{
    FakeLog log;
    log.add_events(0, 2999);
    log.set_enabled(true);
    const Peer peer(serve(log));
    EXPECT_EQ(output_of("show all"), k_entry_header + numbered_lines(0, 2999));
    EXPECT_TRUE(log.is_enabled());
}

using ruk_log_show_last_ = FrontEnd;

TEST_F(ruk_log_show_last_, starts_behind_the_entries_that_are_not_asked_for)
{
    struct {
        const char *arguments;
        Info info;
        uint64_t cursor;
    } const rows[] = {
        {nullptr, {.available = 20000, .total = 50000}, 49974},
        {"", {.available = 20000, .total = 50000}, 49998},
        {"0", {.available = 20000, .total = 50000}, 49998},
        {"1", {.available = 20000, .total = 50000}, 49998},
        {"2", {.available = 20000, .total = 50000}, 49997},
        {"25", {.available = 20000, .total = 50000}, 49974},
        {"0x10", {.available = 20000, .total = 50000}, 49983},
        {"010", {.available = 20000, .total = 50000}, 49991},
        {"abc", {.available = 20000, .total = 50000}, 49998},
        {"cookie 7", {.available = 20000, .total = 50000}, 49998},
        {"10 cookie 7", {.available = 20000, .total = 50000}, 49989},
        {"  12", {.available = 20000, .total = 50000}, 49987},
        {"9999", {.available = 20000, .total = 50000}, 40000},
        {"10000", {.available = 20000, .total = 50000}, 39999},
        {"10001", {.available = 20000, .total = 50000}, 39999},
        {"20000", {.available = 20000, .total = 50000}, 39999},
        {"-5", {.available = 20000, .total = 50000}, 39999},
        {"4294967296", {.available = 20000, .total = 50000}, 49998},
        {"99999999999999999999", {.available = 20000, .total = 50000}, 39999},
        // Against available - 1, unsigned.
        {"25", {.available = 27, .total = 100}, 74},
        {"25", {.available = 26, .total = 100}, UINT64_MAX},
        {"25", {.available = 25, .total = 100}, UINT64_MAX},
        {"1", {.available = 3, .total = 3}, 1},
        {"1", {.available = 2, .total = 2}, UINT64_MAX},
        {"1", {.available = 1, .total = 1}, UINT64_MAX},
        {"1", {.available = 0, .total = 1000}, 998},
        {nullptr, {.available = 0, .total = 0}, UINT64_MAX - 25},
        {"10000", {.available = 10001, .total = 1}, UINT64_MAX},
        {"10000", {.available = 10002, .total = 20002}, 10001},
        {"3", {.available = 9, .total = UINT64_MAX}, UINT64_MAX - 4},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.arguments == nullptr ? "NULL" : row.arguments);
        const Peer peer(replies({
            {0, ""},
            {0, info_bytes(row.info)},
        }));
        int32_t result = 99;
        EXPECT_EQ(captured_stdout([&] { result = ruk_log_show_last(row.arguments); }),
                  k_entry_header);
        EXPECT_EQ(result, 0);
        expect_requests(peer.agent, {set_log_request(2, 0), info_request(),
                                     entry_request(entry_bytes({.entry = row.cursor}))});
    }
}

TEST_F(ruk_log_show_last_, reads_to_the_end_and_releases)
{
    FakeLog log;
    log.add_events(0, 59);
    log.set_enabled(true);
    const Peer peer(serve(log));
    struct {
        const char *line;
        uint64_t first;
    } const rows[] = {
        {"show last", 35},      {"show last 0", 59},
        {"show last 3", 57},    {"show last 3 cookie 1", 57},
        {"show last 58", 2},    {"show last 59", 0}, // not below 59: all
        {"show last 20000", 0},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.line);
        EXPECT_EQ(output_of(row.line), k_entry_header + numbered_lines(row.first, 59));
        EXPECT_TRUE(log.is_enabled());
        EXPECT_EQ(peer.agent.defined_requests().back(), set_log_request(3, 0));
    }
}

TEST_F(ruk_log_show_last_, releases_after_a_failed_info)
{
    struct {
        uint64_t was_on;
        int32_t release_status;
        std::string out;
    } const rows[] = {
        {0, 0, "Can't get log info\n"},
        {1, 0, "Can't get log info\n"},
        {1, 4, "Can't get log info\nCould not resume log\n"},
    };
    for (const auto &row : rows) {
        const Peer peer(replies({{0, bytes_of(row.was_on)}, {1, ""}, {row.release_status, ""}}));
        int32_t result = 99;
        EXPECT_EQ(captured_stdout([&] { result = ruk_log_show_last("5"); }), row.out);
        EXPECT_EQ(result, -1);
        std::vector<std::string> expected{set_log_request(2, 0), info_request()};
        if (row.was_on != 0) {
            expected.push_back(set_log_request(3, 0));
        }
        expect_requests(peer.agent, expected);
    }
}

TEST_F(ruk_log_show_last_, prints_the_failed_hold_before_the_header)
{
    const Peer peer(replies({{2, ""}, {0, info_bytes({})}}));
    EXPECT_EQ(output_of("show last"), std::string("Could not suspend log\n") + k_entry_header);
}

using ruk_log_show_tail_ = FrontEnd;

TEST_F(ruk_log_show_tail_, is_not_for_the_agents_behalf)
{
    const Peer peer(replies({}));
    ruk_rcli_fromdpa = 1;
    int32_t result = 99;
    EXPECT_EQ(captured_stdout([&] { result = ruk_log_show_tail(nullptr); }),
              "Not supported in TOB\n");
    EXPECT_EQ(result, -1);
    expect_requests(peer.agent, {});
}

TEST_F(ruk_log_show_tail_, ends_after_a_failed_info_and_releases_in_every_case)
{
    struct {
        Reply hold;
        int32_t release_status;
        std::string out;
    } const rows[] = {
        {{0, bytes_of(uint64_t{0})}, 0, "Can't get log info\n"},
        {{0, bytes_of(uint64_t{1})}, 0, "Can't get log info\n"},
        {{5, ""}, 0, "Could not suspend log\nCan't get log info\n"},
        {{5, ""}, 5, "Could not suspend log\nCan't get log info\nCould not resume log\n"},
    };
    for (const auto &row : rows) {
        const Peer peer(replies({row.hold, {1, ""}, {row.release_status, ""}}));
        int32_t result = 99;
        EXPECT_EQ(captured_stdout([&] { result = ruk_log_show_tail("ignored"); }), row.out);
        EXPECT_EQ(result, -1);
        expect_requests(peer.agent, {set_log_request(5, 0), info_request(), set_log_request(6, 0)});
    }
}

namespace
{

void follow_tail()
{
    const Connection connection;
    ruk_log_show_tail(nullptr);
}

} // namespace

// Each run is endless: it is ended once its first entry request has come.
TEST_F(ruk_log_show_tail_, starts_25_entries_before_the_end)
{
    struct {
        Info info;
        uint64_t cursor;
    } const rows[] = {
        {{.available = 1000, .total = 5000}, 4974},
        {{.available = 27, .total = 5000}, 4974},
        {{.available = 26, .total = 5000}, UINT64_MAX},
        {{.available = 1, .total = 5000}, UINT64_MAX},
        {{.available = 0, .total = 0}, UINT64_MAX - 25},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.info.available);
        const ScriptedAgent agent([&](const Request &request) {
            const bool is_info = request.opcode() == 233;
            return std::optional(reply_to(request, request.opcode() == 234 ? 1 : 0,
                                          is_info ? info_bytes(row.info) : std::string()));
        });
        Forked tail(follow_tail);
        EXPECT_TRUE(tail.wait_for_output("Message\n"));
        tail.send_signal(SIGINT);
        const Forked::End end = tail.wait();
        EXPECT_EQ(end.signal, SIGINT);
        EXPECT_EQ(end.out,
                  std::string("Press control-C to interrupt this command.\n") + k_entry_header);
        expect_requests(agent,
                        {set_log_request(5, 0), info_request(), set_log_request(6, 0),
                         set_log_request(5, 0), entry_request(entry_bytes({.entry = row.cursor})),
                         set_log_request(6, 0)});
    }
}

// One pause of the tail passes here.
TEST_F(ruk_log_show_tail_, follows_new_entries_and_holds_around_each_request)
{
    FakeLog log;
    log.add_events(0, 29);
    const ScriptedAgent agent(serve(log));
    Forked tail(follow_tail);
    ASSERT_TRUE(tail.wait_for_output(numbered_line(29)));
    const size_t requests_to_first_pause = 3 + 3 * 26;
    ASSERT_TRUE(eventually([&] { return agent.requests().size() >= requests_to_first_pause; }));
    log.add_events(30, 31);
    ASSERT_TRUE(tail.wait_for_output(numbered_line(31)));
    tail.send_signal(SIGTERM);
    const Forked::End end = tail.wait();
    EXPECT_EQ(end.signal, SIGTERM);
    EXPECT_EQ(end.out, std::string("Press control-C to interrupt this command.\n") +
                           k_entry_header + numbered_lines(5, 31));

    std::vector<std::string> expected{set_log_request(5, 0), info_request(), set_log_request(6, 0)};
    const auto expect_entry = [&](const std::string &record) {
        expected.push_back(set_log_request(5, 0));
        expected.push_back(entry_request(record));
        expected.push_back(set_log_request(6, 0));
    };
    expect_entry(entry_bytes({.entry = 4}));
    for (uint64_t n = 5; n <= 29; ++n) {
        expect_entry(numbered_entry(n));
    }
    expect_entry(numbered_entry(29)); // after the pause
    expect_entry(numbered_entry(30));
    expect_entry(numbered_entry(31));
    expect_requests(agent, expected);
}

TEST_F(ruk_log_show_tail_, reports_each_failed_hold_and_release_and_goes_on)
{
    const std::string event = numbered_entry(3);
    int entries_asked = 0;
    const ScriptedAgent agent([&](const Request &request) -> std::optional<std::string> {
        switch (request.opcode()) {
        case 233:
            return reply_to(request, 0, info_bytes({.available = 3, .total = 4}));
        case 234:
            return ++entries_asked == 1 ? reply_to(request, 0, event) : reply_to(request, 1);
        default:
            return reply_to(request, 1);
        }
    });
    Forked tail(follow_tail);
    const std::string failures = "Could not suspend log\nCould not resume log\n";
    EXPECT_TRUE(tail.wait_for_output(numbered_line(3) + failures));
    tail.send_signal(SIGHUP);
    const Forked::End end = tail.wait();
    EXPECT_EQ(end.signal, SIGHUP);
    EXPECT_EQ(end.out, failures + "Press control-C to interrupt this command.\n" + k_entry_header +
                           failures + numbered_line(3) + failures);
}

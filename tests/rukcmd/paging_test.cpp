// Paged mode as an embedding host sees it: the exported globals, and cookies followed until 0.
#include "ruk/front_end.h"

#include "tests/rukcmd/rig.h"

using namespace ruk_test;

namespace
{

constexpr const char *k_as_invalid = "Setting entry as invalid \n";

std::string module_line(uint32_t index)
{
    const std::string name = "mod" + std::to_string(index);
    return std::string(20 - name.size(), ' ') + name + "      ENWIDTPL (255)      ENW    L (135)\n";
}

std::string module_lines(const std::vector<uint32_t> &indexes)
{
    std::string lines;
    for (const uint32_t index : indexes) {
        lines += module_line(index);
    }
    return lines;
}

using Texts = std::vector<std::string>;

} // namespace

using paged_show_debug = FrontEnd;

TEST_F(paged_show_debug, follows_the_module_index)
{
    FakeLog log;
    log.add_modules({0, 1, 2, 3, 4, 5, 6, 10, 11, 12, 13, 14, 15, 16, 300});
    const Peer peer(serve(log));
    EXPECT_EQ(follow_cookies("show debug"),
              (Texts{k_module_header + module_lines({0, 1, 2, 3, 4, 5, 6}),
                     module_lines({10, 11, 12, 13, 14, 15, 16}), module_lines({300})}));
    // A page asks 7 times; the last one until the first failure.
    EXPECT_EQ(peer.agent.requests().size(), 7U + 7U + 2U);
    const auto requests = peer.agent.defined_requests();
    EXPECT_EQ(hex(requests[0]), hex(module_request(module_bytes({.index = UINT32_MAX}))));
    EXPECT_EQ(hex(requests[1]), hex(module_request(module_bytes({0, 0xff, 0x87, 3, "mod0"}))));
    EXPECT_EQ(hex(requests[7]), hex(module_request(module_bytes({.index = 6}))));
    EXPECT_EQ(hex(requests[14]), hex(module_request(module_bytes({.index = 16}))));
}

TEST_F(paged_show_debug, ends_with_an_empty_page_after_a_full_last_one)
{
    FakeLog log;
    log.add_modules({1, 2, 3, 4, 5, 6, 7});
    const Peer peer(serve(log));
    EXPECT_EQ(follow_cookies("show debug"),
              (Texts{k_module_header + module_lines({1, 2, 3, 4, 5, 6, 7}), ""}));
}

TEST_F(paged_show_debug, leaves_no_cookie_when_it_is_done)
{
    FakeLog log;
    const Peer peer(serve(log));
    ruk_rcli_more_output = 99;
    const Page empty = run_page("show debug");
    EXPECT_EQ(empty.text, k_module_header);
    EXPECT_EQ(empty.more, 0U);
    log.add_modules({4, 5});
    ruk_rcli_more_output = 99;
    const Page page = run_page("show debug");
    EXPECT_EQ(page.text, k_module_header + module_lines({4, 5}));
    EXPECT_EQ(page.more, 0U);
}

TEST_F(paged_show_debug, reads_its_cookie_in_every_base)
{
    const std::string blanks(236, ' ');
    struct {
        std::string arguments; // "-" for none
        uint32_t cursor;
        bool has_header;
    } const rows[] = {
        {"-", UINT32_MAX, true},
        {"", UINT32_MAX, true},
        {"0", UINT32_MAX, true},
        {"abc", UINT32_MAX, true},
        {"cookie 5", UINT32_MAX, true}, // the keyword is cut off by the matcher, not here
        {"5", 5, false},
        {"5 6", 5, false},
        {"0x10", 16, false},
        {"010", 8, false},
        {"-5", 0xfffffffb, false},
        {"4294967295", UINT32_MAX, false},
        {blanks + "123", 123, false},  // 239 characters
        {blanks + "1234", 123, false}, // cut to 239
        {blanks + "    5", UINT32_MAX, true},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.arguments);
        const Peer peer(replies({}));
        ruk_rcli_fromdpa = 7; // any non-zero value
        ruk_rcli_more_output = 99;
        int32_t result = 99;
        const char *arguments = row.arguments == "-" ? nullptr : row.arguments.c_str();
        EXPECT_EQ(captured_stdout([&] { result = ruk_log_show_debug(arguments); }),
                  row.has_header ? k_module_header : "");
        EXPECT_EQ(result, 0);
        EXPECT_EQ(ruk_rcli_more_output, 0U);
        expect_requests(peer.agent, {module_request(module_bytes({.index = row.cursor}))});
    }
}

using paged_show_all = FrontEnd;

TEST_F(paged_show_all, follows_the_entry_number)
{
    FakeLog log;
    log.add_events(100, 115);
    const Peer peer(serve(log));
    EXPECT_EQ(follow_cookies("show all"),
              (Texts{k_entry_header + numbered_lines(100, 106), numbered_lines(107, 113),
                     numbered_lines(114, 115)}));
    std::vector<std::string> first_page{info_request(), set_log_request(5, 0), info_request(),
                                        first_entry_request()};
    for (uint64_t n = 100; n <= 105; ++n) {
        first_page.push_back(entry_request(numbered_entry(n)));
    }
    // The second page begins with its cookie; the log was off, so no release is sent.
    first_page.push_back(info_request());
    first_page.push_back(set_log_request(5, 0));
    first_page.push_back(info_request());
    first_page.push_back(entry_request(entry_bytes({.entry = 106})));
    auto requests = peer.agent.defined_requests();
    ASSERT_GE(requests.size(), first_page.size());
    for (size_t i = 0; i < first_page.size(); ++i) {
        EXPECT_EQ(hex(requests[i]), hex(first_page[i])) << "request " << i;
    }
}

TEST_F(paged_show_all, ends_with_an_empty_page_after_a_full_last_one)
{
    FakeLog log;
    log.add_events(0, 13);
    const Peer peer(serve(log));
    EXPECT_EQ(follow_cookies("show all"),
              (Texts{k_entry_header + numbered_lines(0, 6), numbered_lines(7, 13), ""}));
}

TEST_F(paged_show_all, prints_nothing_of_an_empty_log_and_does_not_release_it)
{
    const Peer peer(replies({
        {0, info_bytes({})},
        {0, bytes_of(uint64_t{1})},
        {0, info_bytes({})},
    }));
    ruk_rcli_more_output = 99;
    const Page page = run_page("show all");
    EXPECT_EQ(page.text, "");
    EXPECT_EQ(page.out, "");
    EXPECT_EQ(page.more, 0U);
    expect_requests(peer.agent, {info_request(), set_log_request(5, 0), info_request()});
}

TEST_F(paged_show_all, releases_a_log_that_was_on_at_the_hold)
{
    const std::string event = numbered_entry(5);
    const std::string info = info_bytes({.available = 1, .total = 6});
    const Peer peer(replies({
        {0, info},
        {0, bytes_of(uint64_t{1})},
        {0, info},
        {0, event},
        {1, ""},
        {4, ""},
    }));
    EXPECT_EQ(run_page("show all").text,
              k_entry_header + numbered_line(5) + "Could not resume log\n");
    expect_requests(peer.agent,
                    {info_request(), set_log_request(5, 0), info_request(), first_entry_request(),
                     entry_request(event), set_log_request(6, 0)});
}

TEST_F(paged_show_all, refuses_a_running_log)
{
    const Peer peer(replies({{0, info_bytes({.available = 1, .enabled = 2})}}));
    ruk_rcli_more_output = 99;
    ruk_rcli_fromdpa = 1;
    int32_t result = 99;
    EXPECT_EQ(captured_stdout([&] { result = ruk_log_show_all("5"); }),
              "Need to stop ruklog before show all\n");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(ruk_rcli_more_output, 99U);
    expect_requests(peer.agent, {info_request()});
}

TEST_F(paged_show_all, fails_with_either_info)
{
    const std::string info = info_bytes({.available = 1});
    struct {
        std::vector<Reply> script;
        std::string out;
        std::vector<std::string> requests;
    } const rows[] = {
        {{{1, ""}}, "Can't get log info\n", {info_request()}},
        {{{0, info}, {0, bytes_of(uint64_t{0})}, {1, ""}},
         "Can't get log info\n",
         {info_request(), set_log_request(5, 0), info_request()}},
        {{{0, info}, {0, bytes_of(uint64_t{1})}, {1, ""}, {0, ""}},
         "Can't get log info\n",
         {info_request(), set_log_request(5, 0), info_request(), set_log_request(6, 0)}},
        {{{0, info}, {3, ""}, {1, ""}},
         "Could not suspend log\nCan't get log info\n",
         {info_request(), set_log_request(5, 0), info_request()}},
    };
    for (const auto &row : rows) {
        const Peer peer(replies(row.script));
        ruk_rcli_fromdpa = 1;
        ruk_rcli_more_output = 99;
        int32_t result = 99;
        EXPECT_EQ(captured_stdout([&] { result = ruk_log_show_all(nullptr); }), row.out);
        EXPECT_EQ(result, -1);
        EXPECT_EQ(ruk_rcli_more_output, 99U);
        expect_requests(peer.agent, row.requests);
    }
}

TEST_F(paged_show_all, reads_its_cookie_in_every_base_from_the_low_32_bits)
{
    const std::string info = info_bytes({.available = 1});
    struct {
        const char *arguments;
        uint64_t cursor;
        bool has_header;
    } const rows[] = {
        {nullptr, UINT64_MAX, true},
        {"0", UINT64_MAX, true},
        {"abc", UINT64_MAX, true},
        {"4294967296", UINT64_MAX, true},
        {"7", 7, false},
        {"0x1f", 31, false},
        {"017", 15, false},
        {"4294967295", 4294967295, false},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.arguments == nullptr ? "NULL" : row.arguments);
        const Peer peer(replies({{0, info}, {0, ""}, {0, info}}));
        ruk_rcli_fromdpa = 1;
        EXPECT_EQ(captured_stdout([&] { EXPECT_EQ(ruk_log_show_all(row.arguments), 0); }),
                  row.has_header ? k_entry_header : "");
        expect_requests(peer.agent, {info_request(), set_log_request(5, 0), info_request(),
                                     entry_request(entry_bytes({.entry = row.cursor}))});
    }
}

// A cookie has 32 bits: a 7th entry whose number ends in 32 zero bits ends the output.
TEST_F(paged_show_all, leaves_the_low_32_bits_of_the_7th_number)
{
    for (const uint64_t last : {uint64_t{0x100000005}, uint64_t{0x100000000}}) {
        FakeLog log;
        log.add_events(last - 6, last + 3);
        const Peer peer(serve(log));
        const Page page = run_page("show all");
        EXPECT_EQ(page.text, k_entry_header + numbered_lines(last - 6, last));
        EXPECT_EQ(page.more, static_cast<uint32_t>(last & 0xffffffff));
    }
}

using paged_show_last = FrontEnd;

TEST_F(paged_show_last, follows_the_count_of_entries_shown)
{
    FakeLog log;
    log.add_events(0, 99);
    const Peer peer(serve(log));
    EXPECT_EQ(follow_cookies("show last 10"),
              (Texts{k_entry_header + numbered_lines(90, 96), numbered_lines(97, 99)}));
    auto requests = peer.agent.defined_requests();
    ASSERT_GE(requests.size(), 14U);
    EXPECT_EQ(hex(requests[0]), hex(info_request()));
    EXPECT_EQ(hex(requests[1]), hex(set_log_request(5, 0)));
    EXPECT_EQ(hex(requests[2]), hex(info_request()));
    EXPECT_EQ(hex(requests[3]), hex(entry_request(entry_bytes({.entry = 89}))));
    EXPECT_EQ(hex(requests[9]), hex(entry_request(numbered_entry(95))));
    EXPECT_EQ(hex(requests[13]), hex(entry_request(entry_bytes({.entry = 96}))));
}

TEST_F(paged_show_last, ends_with_an_empty_page_after_a_full_last_one)
{
    FakeLog log;
    log.add_events(0, 99);
    const Peer peer(serve(log));
    EXPECT_EQ(follow_cookies("show last 14"),
              (Texts{k_entry_header + numbered_lines(86, 92), numbered_lines(93, 99), ""}));
    EXPECT_EQ(follow_cookies("show last 7"), (Texts{k_entry_header + numbered_lines(93, 99), ""}));
    EXPECT_EQ(follow_cookies("show last 0"), Texts{k_entry_header + numbered_line(99)});
    EXPECT_EQ(follow_cookies("show last 6"), Texts{k_entry_header + numbered_lines(94, 99)});
}

TEST_F(paged_show_last, is_unlimited_without_a_count_or_with_another_second_word)
{
    FakeLog log;
    log.add_events(0, 99);
    const Peer peer(serve(log));
    struct {
        const char *line;
        uint64_t first;
    } const rows[] = {
        {"show last", 75},
        {"show last 30 words", 70},
        {"show last 30 COOKIE 7", 70}, // the word is case-sensitive here
        {"show last 30 cookies 7", 70},
        {"show last 30 7 cookie", 70},
        {"show last cookie 7", 99}, // a count that is no number, and a second word
        {"show last abc x", 99},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.line);
        ruk_rcli_more_output = 99;
        const Page page = run_page(row.line);
        EXPECT_EQ(page.text, k_entry_header + numbered_lines(row.first, 99));
        EXPECT_EQ(page.more, 99U); // untouched
    }
}

TEST_F(paged_show_last, takes_its_arguments_apart_at_blanks_and_line_feeds)
{
    const std::string blanks(236, ' ');
    const std::string info = info_bytes({.available = 20000, .total = 50000});
    struct {
        std::string arguments;
        uint64_t cursor;
        bool has_header;
        uint32_t more; // left after the failed first request
    } const rows[] = {
        {"10", 49989, true, 0},
        {"0x10", 49983, true, 0},
        {"010", 49991, true, 0},
        {"abc", 49998, true, 0},
        {"-5", 39999, true, 0},
        {"20000", 39999, true, 0},
        {"4294967296", 49998, true, 0},
        {"  10  \n", 49989, true, 0},
        {"10\tcookie", 49989, true, 0}, // a tab separates nothing: one token
        {"10 cookie 7", 49996, false, 0},
        {"10\ncookie\n7", 49996, false, 0},
        {" \n10   cookie  7 more", 49996, false, 0},
        {"10 cookie 0x7", 49996, false, 0},
        {"10 cookie 010", 49997, false, 0},
        {"10 cookie abc", 49989, true, 0},
        {"10 cookie 4294967296", 49989, true, 0},
        {"10 cookie 10", 49999, false, 0},
        {"10 cookie 14", 50003, false, 0},
        {"10 cooki", 49989, true, 99},
        {"10 x cookie 7", 49989, true, 99},
        {blanks + "123", 49876, true, 0},
        {blanks + "1234", 49876, true, 0}, // cut to 239 characters
        {"10" + blanks + "x", 49989, true, 99},
        {"10" + blanks + " x", 49989, true, 0}, // the x is cut off
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.arguments);
        const Peer peer(replies({{0, info}, {0, ""}, {0, info}}));
        ruk_rcli_fromdpa = 1;
        ruk_rcli_more_output = 99;
        EXPECT_EQ(captured_stdout([&] { EXPECT_EQ(ruk_log_show_last(row.arguments.c_str()), 0); }),
                  row.has_header ? k_entry_header : "");
        EXPECT_EQ(ruk_rcli_more_output, row.more);
        expect_requests(peer.agent, {info_request(), set_log_request(5, 0), info_request(),
                                     entry_request(entry_bytes({.entry = row.cursor}))});
    }
}

TEST_F(paged_show_last, refuses_arguments_that_it_cannot_take_apart)
{
    constexpr const char *k_error = "Error in command string processing\n";
    constexpr const char *k_no_number =
        "Error in command string processing, no <n> in cookie <n>\n";
    // clang-format off
    const struct {
        std::string arguments;
        const char *out;
    } rows[] = {
        {"",                              k_error    },
        {" \n ",                          k_error    },
        {std::string(239, ' ') + "5",     k_error    }, // cut off
        {"10 cookie",                     k_no_number},
        {"10 cookie \n ",                 k_no_number},
        {"10 cookie" + std::string(230, ' ') + "7", k_no_number},
    };
    // clang-format on
    for (const auto &row : rows) {
        SCOPED_TRACE(row.arguments);
        const Peer peer(replies({{0, info_bytes({.available = 5})}}));
        ruk_rcli_fromdpa = 1;
        ruk_rcli_more_output = 99;
        EXPECT_EQ(captured_stdout([&] { EXPECT_EQ(ruk_log_show_last(row.arguments.c_str()), -1); }),
                  row.out);
        EXPECT_EQ(ruk_rcli_more_output, 99U);
        expect_requests(peer.agent, {info_request()});
    }
}

// The count is not below available - 1: every page starts at the oldest entry and says so, and the
// cookie grows for ever.
TEST_F(paged_show_last, starts_every_page_anew_when_the_whole_log_is_asked_for)
{
    FakeLog log;
    log.add_events(0, 9);
    const Peer peer(serve(log));
    Page page = run_page("show last 9");
    EXPECT_EQ(page.text, std::string(k_as_invalid) + k_entry_header + numbered_lines(0, 6));
    EXPECT_EQ(page.more, 7U);
    for (uint32_t more = 7; more < 40; more += 7) {
        page = run_page("show last 9 cookie " + std::to_string(more));
        EXPECT_EQ(page.text, k_as_invalid + numbered_lines(0, 6));
        EXPECT_EQ(page.more, more + 7);
    }
    page = run_page("show last");
    EXPECT_EQ(page.text, std::string(k_as_invalid) + k_entry_header + numbered_lines(0, 9));
    // One entry fewer, and pages follow each other.
    EXPECT_EQ(follow_cookies("show last 8"),
              (Texts{k_entry_header + numbered_lines(2, 8), numbered_line(9)}));
}

TEST_F(paged_show_last, ends_a_short_log_of_which_all_is_asked_for)
{
    FakeLog log;
    log.add_events(0, 4);
    const Peer peer(serve(log));
    EXPECT_EQ(follow_cookies("show last 10"),
              Texts{std::string(k_as_invalid) + k_entry_header + numbered_lines(0, 4)});
}

// available - 1 wraps: an empty log is treated as one that holds more than is asked for.
TEST_F(paged_show_last, reads_an_empty_log)
{
    FakeLog log;
    const Peer peer(serve(log));
    EXPECT_EQ(follow_cookies("show last 10"), Texts{k_entry_header});
    EXPECT_EQ(hex(peer.agent.defined_requests().back()),
              hex(entry_request(entry_bytes({.entry = UINT64_MAX - 10}))));
}

TEST_F(paged_show_last, wraps_its_cookie_at_32_bits)
{
    FakeLog log;
    log.add_events(0, 9);
    const Peer peer(serve(log));
    EXPECT_EQ(run_page("show last 9 cookie 4294967294").more, 5U);
    EXPECT_EQ(run_page("show last 9 cookie 4294967289").more, 0U);
}

TEST_F(paged_show_last, refuses_a_running_log)
{
    FakeLog log;
    log.add_events(0, 9);
    log.set_enabled(true);
    const Peer peer(serve(log));
    for (const char *line : {"show last", "show last 5", "show last 5 cookie"}) {
        ruk_rcli_more_output = 99;
        const Page page = run_page(line);
        EXPECT_EQ(page.text, "Need to stop ruklog before show all/show last n\n");
        EXPECT_EQ(page.more, 99U);
    }
    expect_requests(peer.agent, {info_request(), info_request(), info_request()});
    EXPECT_EQ(run_page("show all").text, "Need to stop ruklog before show all\n");
}

TEST_F(paged_show_last, releases_a_log_that_was_on_at_the_hold)
{
    const std::string event = numbered_entry(5);
    const std::string info = info_bytes({.available = 10, .total = 6});
    for (const char *line : {"show last 1", "show last"}) {
        const bool is_all = line == std::string("show last");
        const Peer peer(replies({
            {0, info},
            {0, bytes_of(uint64_t{1})},
            {0, info},
            {0, event},
            {1, ""},
            {4, ""},
        }));
        EXPECT_EQ(run_page(line).text, (is_all ? k_as_invalid : "") + std::string(k_entry_header) +
                                           numbered_line(5) + "Could not resume log\n");
        expect_requests(peer.agent, {info_request(), set_log_request(5, 0), info_request(),
                                     entry_request(entry_bytes({.entry = is_all ? UINT64_MAX : 4})),
                                     entry_request(event), set_log_request(6, 0)});
    }
}

TEST_F(paged_show_last, fails_with_either_info)
{
    const std::string info = info_bytes({.available = 1});
    struct {
        std::vector<Reply> script;
        std::vector<std::string> requests;
    } const rows[] = {
        {{{1, ""}}, {info_request()}},
        {{{0, info}, {0, bytes_of(uint64_t{0})}, {1, ""}},
         {info_request(), set_log_request(5, 0), info_request()}},
        {{{0, info}, {0, bytes_of(uint64_t{1})}, {1, ""}, {0, ""}},
         {info_request(), set_log_request(5, 0), info_request(), set_log_request(6, 0)}},
    };
    for (const auto &row : rows) {
        const Peer peer(replies(row.script));
        ruk_rcli_fromdpa = 1;
        EXPECT_EQ(captured_stdout([&] { EXPECT_EQ(ruk_log_show_last("5"), -1); }),
                  "Can't get log info\n");
        expect_requests(peer.agent, row.requests);
    }
}

using paged_mode = FrontEnd;

TEST_F(paged_mode, runs_the_other_commands_as_ever)
{
    FakeLog log;
    log.add_modules({3});
    const Peer peer(serve(log));
    const Page page = run_page("start;stop;resume;clear;debug mod3 none;show info;show;bad");
    EXPECT_EQ(page.text, "Started log\n"
                         "Will suspend log after next 0 entries\n"
                         "Resumed log\n"
                         "Cleared log\n"
                         "          Enabled: Yes\n"
                         "    Total Entries: 0\n"
                         "  Wrapped Entries: 0\n"
                         "     Lost Entries: 0\n"
                         "  Skipped Entries: 0\n"
                         "Available Entries: 0\n"
                         " Stop After Entry: Not Specified\n");
    EXPECT_EQ(page.out, "No match found for bad\n"); // the matcher has no buffer
    EXPECT_EQ(log.printing_of(3), 0U);
    EXPECT_EQ(run_page("show tail").text, "Not supported in TOB\n");
}

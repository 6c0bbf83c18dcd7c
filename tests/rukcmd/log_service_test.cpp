// The requests of the log service, hold and release, and the in-process placeholders.
#include "ruk/log.h"

#include "ruk/front_end.h"
#include "tests/rukcmd/rig.h"

using namespace ruk_test;

using log_service_requests = FrontEnd;

// Each of the requests as one row: opcode, ident, flags and size.
TEST_F(log_service_requests, are_sent_as_documented)
{
    struct {
        const char *command;
        std::vector<Reply> script;
        std::string request; // the last one
    } const rows[] = {
        {"show info", {}, request_bytes(233, 0, 1, std::string(48, '\0'))},
        {"show all",
         {{0, bytes_of(uint64_t{0})}},
         request_bytes(234, 0, 3, entry_bytes({.entry = UINT64_MAX}))},
        {"start 7", {}, request_bytes(236, 1, 3, bytes_of(uint64_t{7}))},
        {"stop 8", {}, request_bytes(236, 2, 3, bytes_of(uint64_t{8}))},
        {"resume", {}, request_bytes(236, 3, 3, bytes_of(uint64_t{0}))},
        {"clear", {}, request_bytes(236, 4, 3, bytes_of(uint64_t{0}))},
        {"show debug", {}, request_bytes(311, 0, 3, module_bytes({.index = UINT32_MAX}))},
        {"debug net w", {}, request_bytes(312, 0, 3, module_bytes({.name = "net"}))},
        {"debug net w",
         {{0, module_bytes({.index = 300, .printing = 1, .name = "net"})}},
         request_bytes(313, 300, 3, bytes_of(uint32_t{5}))},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.command);
        const Peer peer(replies(row.script));
        output_of(row.command);
        const std::vector<std::string> got = peer.agent.defined_requests();
        ASSERT_EQ(got.size(), row.script.size() + 1);
        EXPECT_EQ(hex(got.back()), hex(row.request));
    }
}

// Only 0 is success.
TEST_F(log_service_requests, fail_with_every_other_status)
{
    for (const int32_t status : {1, 2, 6, -1, 256, INT32_MAX, INT32_MIN}) {
        SCOPED_TRACE(status);
        const std::string event = numbered_entry(7);
        const Peer peer(replies({
            {status, info_bytes({})},
            {status, bytes_of(uint64_t{0})},
            {0, event},
            {status, event},
        }));
        EXPECT_EQ(output_of("show info"), "Can't get log info\n");
        EXPECT_EQ(output_of("show all"),
                  std::string(k_entry_header) + "Could not suspend log\n" + numbered_line(7));
        EXPECT_EQ(peer.agent.requests().size(), 4U);
    }
}

TEST_F(log_service_requests, fail_when_the_agent_hangs_up)
{
    const Peer peer([](const Request &) { return std::nullopt; });
    EXPECT_EQ(output_of("show info"), "Can't get log info\n");
    EXPECT_EQ(output_of("clear"), "Could not clear log\nCleared log\n");
    expect_requests(peer.agent, {info_request(), set_log_request(4, 0)});
    EXPECT_EQ(peer.agent.connections(), 2);
}

using ruk_log_hold_ = FrontEnd;

TEST_F(ruk_log_hold_, stops_or_holds_and_tells_whether_logging_was_on)
{
    struct {
        int32_t local;
        int32_t operation;
        Reply reply;
        uint32_t was_on;
        const char *out;
    } const rows[] = {
        {1, 2, {0, bytes_of(uint64_t{1})}, 1, ""},
        {0, 5, {0, bytes_of(uint64_t{1})}, 1, ""},
        {-1, 2, {0, bytes_of(uint64_t{0})}, 0, ""},
        {INT32_MIN, 2, {0, bytes_of(uint64_t{7})}, 7, ""},
        {0, 5, {0, bytes_of(uint64_t{0})}, 0, ""},
        {0, 5, {0, bytes_of(uint64_t{0x100000000})}, 0, ""},
        {1, 2, {0, bytes_of(uint64_t{0x500000009})}, 9, ""},
        {1, 2, {0, bytes_of(UINT64_MAX)}, 0xffffffff, ""},
        {1, 2, {1, ""}, 0, "Could not suspend log\n"},
        {0, 5, {6, bytes_of(uint64_t{3})}, 3, "Could not suspend log\n"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(hex(row.reply.payload));
        const Peer peer(replies({row.reply}));
        uint32_t was_on = 99;
        EXPECT_EQ(captured_stdout([&] { was_on = ruk_log_hold(row.local); }), row.out);
        EXPECT_EQ(was_on, row.was_on);
        expect_requests(peer.agent, {set_log_request(row.operation, 0)});
    }
}

using ruk_log_release_ = FrontEnd;

TEST_F(ruk_log_release_, resumes_or_releases_a_log_that_was_on)
{
    struct {
        uint32_t was_on;
        int32_t local;
        int32_t operation;
    } const rows[] = {
        {1, 1, 3}, {1, 0, 6}, {7, -5, 3}, {0x80000000, 0, 6}, {UINT32_MAX, 1, 3},
    };
    for (const auto &row : rows) {
        const Peer peer(replies({{0, bytes_of(uint64_t{55})}, {4, ""}}));
        EXPECT_EQ(captured_stdout([&] { ruk_log_release(row.was_on, row.local); }), "");
        EXPECT_EQ(captured_stdout([&] { ruk_log_release(row.was_on, row.local); }),
                  "Could not resume log\n");
        expect_requests(peer.agent,
                        {set_log_request(row.operation, 0), set_log_request(row.operation, 0)});
    }
}

TEST_F(ruk_log_release_, sends_nothing_when_logging_was_off)
{
    const Peer peer(replies({}));
    EXPECT_EQ(captured_stdout([] {
                  ruk_log_release(0, 1);
                  ruk_log_release(0, 0);
              }),
              "");
    expect_requests(peer.agent, {});
}

using in_process_placeholders = FrontEnd;

TEST_F(in_process_placeholders, return_0_or_2_and_touch_nothing)
{
    union {
        LogInfo info;
        LogEntry entry;
        LogModule module;
        uint64_t value;
        uint32_t mask;
        unsigned char bytes[sizeof(LogEntry)];
    } record;
    memset(record.bytes, 0xa5, sizeof record.bytes);
    EXPECT_EQ(kt_get_log_info(0, &record.info), 0);
    EXPECT_EQ(kt_get_log_entry(0, &record.entry), 0);
    EXPECT_EQ(kt_set_log(2, &record.value), 0);
    EXPECT_EQ(kt_get_log_module(0, &record.module), 0);
    EXPECT_EQ(kt_find_log_module(0, &record.module), 0);
    EXPECT_EQ(kt_set_log_module(3, &record.mask), 0);
    EXPECT_EQ(kt_get_log_entries(0, record.bytes), 2);
    EXPECT_EQ(kt_get_portlog_info(0, record.bytes), 0);
    EXPECT_EQ(kt_get_portlog_entry(0, record.bytes), 0);
    EXPECT_EQ(kt_get_portlog_entries(0, record.bytes), 2);
    EXPECT_EQ(kt_set_portlog(0, record.bytes), 0);
    EXPECT_EQ(kt_get_portlog_module(0, record.bytes), 0);
    for (const unsigned char byte : record.bytes) {
        EXPECT_EQ(byte, 0xa5);
    }
}

TEST_F(in_process_placeholders, stand_for_the_agent_when_the_switch_is_1)
{
    const Peer peer(replies({}));
    ruk_rcli_dpa_loga_log = 1;
    // The record is shown as it was before the request, which filled nothing.
    EXPECT_EQ(output_of("show info"), "          Enabled: No\n"
                                      "    Total Entries: 0\n"
                                      "  Wrapped Entries: 0\n"
                                      "     Lost Entries: 0\n"
                                      "  Skipped Entries: 0\n"
                                      "Available Entries: 0\n"
                                      " Stop After Entry: 0\n");
    EXPECT_EQ(output_of("start 5;stop 6;stop;resume;clear"),
              "Started log\nWill suspend log after next 6 entries\nSuspended log\n"
              "Resumed log\nCleared log\n");
    EXPECT_EQ(output_of("debug net w"), "");
    uint32_t was_on = 99;
    EXPECT_EQ(captured_stdout([&] {
                  was_on = ruk_log_hold(1);
                  ruk_log_release(1, 1);
              }),
              "");
    EXPECT_EQ(was_on, 0U);
    expect_requests(peer.agent, {});
}

TEST_F(in_process_placeholders, are_not_asked_for_any_other_value_of_the_switch)
{
    for (const uint32_t value : {0U, 2U, 0xffffffffU, 0x101U}) {
        const Peer peer(replies({}));
        ruk_rcli_dpa_loga_log = value;
        EXPECT_EQ(output_of("show info"), "Can't get log info\n");
        expect_requests(peer.agent, {info_request()});
    }
}

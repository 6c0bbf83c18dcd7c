// start, stop, resume, clear and debug.
#include "ruk/front_end.h"

#include "tests/rukcmd/rig.h"

using namespace ruk_test;

using control_commands = FrontEnd;

TEST_F(control_commands, send_one_request_and_report_success_in_every_case)
{
    struct {
        CommandHandler handler;
        const char *arguments;
        int32_t operation;
        uint64_t value;
        std::string failure;
        std::string success;
    } const rows[] = {
        {ruk_log_start, nullptr, 1, 0, "Could not start log\n", "Started log\n"},
        {ruk_log_start, "25", 1, 25, "Could not start log\n", "Started log\n"},
        {ruk_log_resume, nullptr, 3, 0, "Could not resume log\n", "Resumed log\n"},
        {ruk_log_resume, "25", 3, 0, "Could not resume log\n", "Resumed log\n"},
        {ruk_log_clear, nullptr, 4, 0, "Could not clear log\n", "Cleared log\n"},
        {ruk_log_clear, "25", 4, 0, "Could not clear log\n", "Cleared log\n"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.success);
        const Peer peer(replies({
            {0, bytes_of(uint64_t{99})}, // what comes back is not looked at
            {3, bytes_of(uint64_t{99})},
        }));
        int32_t result = 99;
        const auto run = [&] { result = row.handler(row.arguments); };
        EXPECT_EQ(captured_stdout(run), row.success);
        EXPECT_EQ(result, 0);
        EXPECT_EQ(captured_stdout(run), row.failure + row.success);
        EXPECT_EQ(result, 0);
        const std::string request = set_log_request(row.operation, row.value);
        expect_requests(peer.agent, {request, request});
    }
}

namespace
{

struct {
    const char *arguments;
    uint64_t value;
    const char *stop_text; // when the value comes back as it was sent
} const k_entries[] = {
    {nullptr, 0, "Suspended log\n"},
    {"0", 0, "Suspended log\n"},
    {"", 0, "Suspended log\n"},
    {"abc", 0, "Suspended log\n"},
    {"x10", 0, "Suspended log\n"},
    {"1", 1, "Will suspend log after next 1 entries\n"},
    {"16", 16, "Will suspend log after next 16 entries\n"},
    {"0x10", 16, "Will suspend log after next 16 entries\n"},
    {"0XfF", 255, "Will suspend log after next 255 entries\n"},
    {"010", 8, "Will suspend log after next 8 entries\n"},
    {"09", 0, "Suspended log\n"},
    {"12 34 words", 12, "Will suspend log after next 12 entries\n"},
    {"12abc", 12, "Will suspend log after next 12 entries\n"},
    {"+5", 5, "Will suspend log after next 5 entries\n"},
    {"20000", 20000, "Will suspend log after next 20000 entries\n"},
    {"-5", 18446744073709551611U, "Will suspend log after next 4294967291 entries\n"},
    {"4294967295", 4294967295U, "Will suspend log after next 4294967295 entries\n"},
    {"4294967296", 4294967296U, "Will suspend log after next 0 entries\n"},
    {"4294967301", 4294967301U, "Will suspend log after next 5 entries\n"},
    {"18446744073709551615", UINT64_MAX, "Will suspend log after next 4294967295 entries\n"},
    {"99999999999999999999", UINT64_MAX, "Will suspend log after next 4294967295 entries\n"},
};

} // namespace

TEST_F(control_commands, read_the_entries_of_start)
{
    for (const auto &row : k_entries) {
        SCOPED_TRACE(row.arguments == nullptr ? "NULL" : row.arguments);
        const Peer peer(replies({{0, ""}}));
        EXPECT_EQ(captured_stdout([&] { EXPECT_EQ(ruk_log_start(row.arguments), 0); }),
                  "Started log\n");
        expect_requests(peer.agent, {set_log_request(1, row.value)});
    }
}

TEST_F(control_commands, read_the_entries_of_stop)
{
    for (const auto &row : k_entries) {
        SCOPED_TRACE(row.arguments == nullptr ? "NULL" : row.arguments);
        const Peer peer(replies({{0, ""}, {5, ""}}));
        const auto stop = [&] { EXPECT_EQ(ruk_log_stop(row.arguments), 0); };
        EXPECT_EQ(captured_stdout(stop), row.stop_text);
        EXPECT_EQ(captured_stdout(stop), std::string("Could not suspend log\n") + row.stop_text);
        expect_requests(peer.agent, {set_log_request(2, row.value), set_log_request(2, row.value)});
    }
}

// The line of stop depends on what came back, its number on what was asked for.
TEST_F(control_commands, tell_what_stop_came_back_with)
{
    struct {
        const char *arguments;
        Reply reply;
        const char *text;
    } const rows[] = {
        {nullptr, {0, bytes_of(uint64_t{0})}, "Suspended log\n"},
        {nullptr, {0, bytes_of(uint64_t{1})}, "Will suspend log after next 0 entries\n"},
        {"5", {0, bytes_of(uint64_t{0})}, "Suspended log\n"},
        {"5", {0, bytes_of(uint64_t{9})}, "Will suspend log after next 5 entries\n"},
        {nullptr, {0, bytes_of(uint64_t{0x100000000})}, "Will suspend log after next 0 entries\n"},
        {nullptr,
         {1, bytes_of(uint64_t{1})},
         "Could not suspend log\nWill suspend log after next 0 entries\n"},
        {"5", {1, bytes_of(uint64_t{0})}, "Could not suspend log\nSuspended log\n"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(hex(row.reply.payload));
        const Peer peer(replies({row.reply}));
        EXPECT_EQ(captured_stdout([&] { EXPECT_EQ(ruk_log_stop(row.arguments), 0); }), row.text);
    }
}

TEST_F(control_commands, speak_of_failure_when_the_agent_is_gone)
{
    const Peer peer([](const Request &) { return std::nullopt; });
    EXPECT_EQ(output_of("stop 7;stop;debug net w"),
              "Could not suspend log\nWill suspend log after next 7 entries\n"
              "Could not suspend log\nSuspended log\n"
              "Module net does not exist.\n");
}

using ruk_log_debug_ = FrontEnd;

TEST_F(ruk_log_debug_, does_nothing_without_an_argument)
{
    const Peer peer(replies({}));
    EXPECT_EQ(captured_stdout([] { EXPECT_EQ(ruk_log_debug(nullptr), 0); }), "");
    expect_requests(peer.agent, {});
}

// The module has printing bits 0x12 (Notice, Debug) and default bits 0x87.
TEST_F(ruk_log_debug_, builds_the_mask_word_by_word)
{
    struct {
        const char *words;
        uint32_t mask;
    } const rows[] = {
        {"", 0x12},
        {"all", 0xff},
        {"-all", 0x00},
        {"none", 0x00},
        {"-none", 0xff},
        {"default", 0x87},
        {"-default", 0x00},
        {"ALL", 0xff},
        {"-NoNe", 0xff},
        {"DEFAULT", 0x87},
        {"e", 0x13},
        {"n", 0x12},
        {"w", 0x16},
        {"i", 0x1a},
        {"d", 0x12},
        {"t", 0x32},
        {"p", 0x52},
        {"l", 0x92},
        {"W", 0x16},
        {"warning", 0x16},
        {"wxyz", 0x16},
        {"-e", 0x12},
        {"-n", 0x10},
        {"-d", 0x02},
        {"-D", 0x02},
        {"-debug", 0x02},
        {"x", 0x12},
        {"-x", 0x12},
        {"-", 0x12},
        {"- w", 0x16},
        {"--w", 0x12},
        {"--all", 0x12},
        {"al", 0x12},
        {"alll", 0x12},
        {"nonesuch", 0x12},
        {"-nonesuch", 0x10},
        {"defaults", 0x12},
        {"1", 0x12},
        {"e w p", 0x57},
        {"e  w   p ", 0x57},
        {"all -e -l", 0x7e},
        {"none w", 0x04},
        {"all none w", 0x04},
        {"w none", 0x00},
        {"default -e t", 0xa6},
        {"none default", 0x87},
        {"-all e -e e", 0x01},
        {"x none y p z", 0x40},
        {"a b c e f g h j k m n o q r s u v x y z", 0x13},
    };
    const std::string found = module_bytes({41, 0xff, 0x12, 0x87, "net"});
    const Peer peer([&](const Request &request) {
        const bool is_find = request.opcode() == 312;
        return std::optional(reply_to(request, 0, is_find ? found : bytes_of(uint32_t{0})));
    });
    size_t seen = 0;
    for (const auto &row : rows) {
        SCOPED_TRACE(row.words);
        const std::string arguments = std::string("net ") + row.words;
        EXPECT_EQ(captured_stdout([&] { EXPECT_EQ(ruk_log_debug(arguments.c_str()), 0); }), "");
        const std::vector<std::string> requests = peer.agent.defined_requests();
        ASSERT_EQ(requests.size(), seen + 2);
        EXPECT_EQ(hex(requests[seen]), hex(find_module_request(module_bytes({.name = "net"}))));
        EXPECT_EQ(hex(requests[seen + 1]), hex(set_module_request(41, row.mask)));
        seen += 2;
    }
}

// Bits beyond the eight levels come through the lookup and stay until a keyword replaces them.
TEST_F(ruk_log_debug_, keeps_unknown_bits_of_the_lookup)
{
    const std::string found = module_bytes({2, 0xff, 0xffffff00, 0x80000001, "net"});
    struct {
        const char *words;
        uint32_t mask;
    } const rows[] = {
        {"e", 0xffffff01},
        {"-e", 0xffffff00},
        {"default", 0x80000001},
        {"all", 0x000000ff},
    };
    for (const auto &row : rows) {
        const Peer peer(replies({{0, found}, {0, ""}}));
        EXPECT_EQ(output_of(std::string("debug net ") + row.words), "");
        expect_requests(peer.agent, {find_module_request(module_bytes({.name = "net"})),
                                     set_module_request(2, row.mask)});
    }
}

TEST_F(ruk_log_debug_, takes_31_characters_of_the_name)
{
    // clang-format off
    struct {
        std::string arguments;
        std::string name;
    } const rows[] = {
        {"net",                                    "net"                            },
        {"net  -all",                              "net"                            },
        {"NET w",                                  "NET"                            },
        {"0123456789abcdef0123456789ABCDE w",      "0123456789abcdef0123456789ABCDE"},
        {"0123456789abcdef0123456789ABCDEF w",     "0123456789abcdef0123456789ABCDE"},
        {std::string(200, 'm'),                    std::string(31, 'm')             },
    };
    // clang-format on
    for (const auto &row : rows) {
        SCOPED_TRACE(row.arguments);
        const Peer peer(replies({{7, ""}}));
        EXPECT_EQ(captured_stdout([&] { EXPECT_EQ(ruk_log_debug(row.arguments.c_str()), 0); }),
                  "Module " + row.name + " does not exist.\n");
        expect_requests(peer.agent, {find_module_request(module_bytes({.name = row.name}))});
    }
}

TEST_F(ruk_log_debug_, sets_a_negative_looking_index_and_ignores_the_result)
{
    const Peer peer(replies({
        {0, module_bytes({0xfffffffe, 0xff, 1, 1, "other name"})},
        {9, bytes_of(uint32_t{77})},
    }));
    EXPECT_EQ(output_of("debug net w"), "");
    expect_requests(peer.agent, {find_module_request(module_bytes({.name = "net"})),
                                 set_module_request(-2, 5)});
}

// The mask starts from what the lookup of "all" gave, and each module gets the same one.
TEST_F(ruk_log_debug_, gives_every_module_the_same_mask)
{
    struct {
        const char *line;
        const char *name;
        uint32_t mask;
    } const rows[] = {
        {"debug all w", "all", 0x15},       {"debug all", "all", 0x11},
        {"debug ALL -all", "ALL", 0x00},    {"debug all all none w", "all", 0x04},
        {"debug all default", "all", 0x2a}, {"debug all -e", "all", 0x10},
    };
    const std::string found = module_bytes({7, 0xff, 0x11, 0x2a, "all"});
    const std::string first = module_bytes({0, 0xff, 0x87, 0x87, "core"});
    const std::string second = module_bytes({3, 0x0f, 0x00, 0x01, "net"});
    std::string start = found;
    start.replace(0, 4, bytes_of(UINT32_MAX));
    for (const auto &row : rows) {
        SCOPED_TRACE(row.line);
        const Peer peer(replies({
            {0, found},
            {0, first},
            {0, bytes_of(uint32_t{1234})}, // neither the mask that comes back
            {0, second},
            {4, ""}, // nor a failure matters
        }));
        EXPECT_EQ(output_of(row.line), "");
        expect_requests(peer.agent, {
                                        find_module_request(module_bytes({.name = row.name})),
                                        module_request(start),
                                        set_module_request(0, row.mask),
                                        module_request(first),
                                        set_module_request(3, row.mask),
                                        module_request(second),
                                    });
    }
}

TEST_F(ruk_log_debug_, changes_nothing_when_all_is_unknown)
{
    const Peer peer(replies({}));
    EXPECT_EQ(output_of("debug all none"), "Module all does not exist.\n");
    expect_requests(peer.agent, {find_module_request(module_bytes({.name = "all"}))});
}

TEST_F(ruk_log_debug_, writes_to_the_buffer_when_there_is_one)
{
    const Peer peer(replies({}));
    const Page page = run_page("debug net w;clear;stop 3");
    EXPECT_EQ(page.out, "");
    EXPECT_EQ(page.text, "Module net does not exist.\n"
                         "Could not clear log\nCleared log\n"
                         "Could not suspend log\nWill suspend log after next 3 entries\n");
}

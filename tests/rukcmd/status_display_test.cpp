// show info and show debug, and their printers.
#include "ruk/front_end.h"

#include "tests/rukcmd/rig.h"

using namespace ruk_test;

namespace
{

template <typename Record> Record record_of(const std::string &bytes)
{
    Record record;
    EXPECT_EQ(bytes.size(), sizeof record);
    memcpy(&record, bytes.data(), sizeof record);
    return record;
}

std::string printed_module(const Module &module)
{
    const auto record = record_of<LogModule>(module_bytes(module));
    return captured_stdout([&] { ruk_log_print_module(&record); });
}

const Info k_small{.available = 12,
                   .enabled = 1,
                   .total = 34,
                   .wrapped = 56,
                   .lost = 78,
                   .skipped = 90,
                   .stop_after = 123};
const Info k_largest{.available = UINT32_MAX,
                     .enabled = 0x80000000,
                     .total = UINT64_MAX,
                     .wrapped = UINT64_MAX - 1,
                     .lost = UINT64_MAX - 2,
                     .skipped = UINT64_MAX - 3,
                     .stop_after = UINT64_MAX - 4};

constexpr const char *k_small_text = "          Enabled: Yes\n"
                                     "    Total Entries: 34\n"
                                     "  Wrapped Entries: 56\n"
                                     "     Lost Entries: 78\n"
                                     "  Skipped Entries: 90\n"
                                     "Available Entries: 12\n"
                                     " Stop After Entry: 123\n";

} // namespace

using ruk_log_print_info_ = FrontEnd;

TEST_F(ruk_log_print_info_, prints_long_and_short_form)
{
    struct {
        int32_t short_form;
        Info info;
        const char *text;
    } const rows[] = {
        {0, k_small, k_small_text},
        {1, k_small,
         "    Total Entries: 34\n"
         "  Wrapped Entries: 56\n"
         "     Lost Entries: 78\n"
         "  Skipped Entries: 90\n"
         "Available Entries: 12\n"},
        {-1,
         {},
         "    Total Entries: 0\n"
         "  Wrapped Entries: 0\n"
         "     Lost Entries: 0\n"
         "  Skipped Entries: 0\n"
         "Available Entries: 0\n"},
        {0,
         {},
         "          Enabled: No\n"
         "    Total Entries: 0\n"
         "  Wrapped Entries: 0\n"
         "     Lost Entries: 0\n"
         "  Skipped Entries: 0\n"
         "Available Entries: 0\n"
         " Stop After Entry: Not Specified\n"},
        {0, k_largest,
         "          Enabled: Yes\n"
         "    Total Entries: 18446744073709551615\n"
         "  Wrapped Entries: 18446744073709551614\n"
         "     Lost Entries: 18446744073709551613\n"
         "  Skipped Entries: 18446744073709551612\n"
         "Available Entries: 4294967295\n"
         " Stop After Entry: 18446744073709551611\n"},
    };
    for (const auto &row : rows) {
        const auto info = record_of<LogInfo>(info_bytes(row.info));
        EXPECT_EQ(captured_stdout([&] { ruk_log_print_info(row.short_form, &info); }), row.text);
    }
    EXPECT_EQ(captured_stdout([] {
                  ruk_log_print_info(0, nullptr);
                  ruk_log_print_info(1, nullptr);
              }),
              "");
}

TEST_F(ruk_log_print_info_, goes_to_the_buffer_line_by_line)
{
    ruk_rcli_buffer_ptr = ruk_rcli_buffer;
    const auto info = record_of<LogInfo>(info_bytes(k_small));
    EXPECT_EQ(captured_stdout([&] { ruk_log_print_info(0, &info); }), "");
    EXPECT_STREQ(ruk_rcli_buffer, k_small_text);
    EXPECT_EQ(ruk_rcli_print_len, 23); // of the last line
}

using ruk_log_print_module_ = FrontEnd;

TEST_F(ruk_log_print_module_, prints_a_header_and_a_line_each)
{
    EXPECT_EQ(captured_stdout([] { ruk_log_print_module_header(); }),
              "              Module           Available            Printing\n");
    EXPECT_EQ(captured_stdout([] { ruk_log_print_module(nullptr); }), "");
    struct {
        Module module;
        const char *text;
    } const rows[] = {
        {{1, 0xff, 0x87, 3, "net"},
         "                 net      ENWIDTPL (255)      ENW    L (135)\n"},
        {{1, 0, 1, 0, ""}, "                                   (  0)      E        (  1)\n"},
        {{1, 0x10, 0x7f, 0, "twenty-characters-20"},
         "twenty-characters-20          D    ( 16)      ENWIDTP  (127)\n"},
        {{1, 1, 2, 0, "a-name-of-31-characters-exactly"},
         "a-name-of-31-characters-exactly      E        (  1)       N       (  2)\n"},
        // Bits without a letter show in the number only, which is signed.
        {{1, 0x100, 0xffffffff, 0, "wide"},
         "                wide               (256)      ENWIDTPL ( -1)\n"},
        {{1, 0x80000000, 0x10080, 0, "wide"},
         "                wide               (-2147483648)             L (65664)\n"},
        // 32 bytes without a terminator: what follows the field is not read.
        {{1, 0xff, 1, 0, "0123456789abcdef0123456789ABCDEF"},
         "0123456789abcdef0123456789ABCDEF      ENWIDTPL (255)      E        (  1)\n"},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(printed_module(row.module), row.text);
    }
}

using ruk_log_show_info_ = FrontEnd;

TEST_F(ruk_log_show_info_, prints_what_the_agent_answers)
{
    const Peer peer(replies({
        {0, info_bytes(k_small)},
        {0, info_bytes(k_largest)},
        {0, info_bytes({})},
    }));
    int32_t result = 99;
    EXPECT_EQ(captured_stdout([&] { result = ruk_log_show_info(nullptr); }), k_small_text);
    EXPECT_EQ(result, 0);
    EXPECT_EQ(captured_stdout([&] { result = ruk_log_show_info("ignored 5"); }),
              "          Enabled: Yes\n"
              "    Total Entries: 18446744073709551615\n"
              "  Wrapped Entries: 18446744073709551614\n"
              "     Lost Entries: 18446744073709551613\n"
              "  Skipped Entries: 18446744073709551612\n"
              "Available Entries: 4294967295\n"
              " Stop After Entry: 18446744073709551611\n");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(output_of("show info"), "          Enabled: No\n"
                                      "    Total Entries: 0\n"
                                      "  Wrapped Entries: 0\n"
                                      "     Lost Entries: 0\n"
                                      "  Skipped Entries: 0\n"
                                      "Available Entries: 0\n"
                                      " Stop After Entry: Not Specified\n");
    EXPECT_EQ(captured_stdout([&] { result = ruk_log_show_info(nullptr); }),
              "Can't get log info\n");
    EXPECT_EQ(result, -1);
    expect_requests(peer.agent, {info_request(), info_request(), info_request(), info_request()});
}

using ruk_log_show_debug_ = FrontEnd;

TEST_F(ruk_log_show_debug_, reads_module_after_module_until_one_fails)
{
    const std::string first = module_bytes({0, 0xff, 0x87, 0x01, "core"});
    const std::string second =
        module_bytes({5, 0x07, 0x00, 0x02, "a-name-of-31-characters-exactly"});
    const std::string third =
        module_bytes({UINT32_MAX - 1, 0x80, 0x80, 0xff, "0123456789abcdef0123456789ABCDEF"});
    for (const char *arguments : {static_cast<const char *>(nullptr), "5", "cookie"}) {
        const Peer peer(replies({
            {0, first},
            {0, second},
            {0, third},
        }));
        int32_t result = 99;
        ruk_rcli_more_output = 77;
        EXPECT_EQ(captured_stdout([&] { result = ruk_log_show_debug(arguments); }),
                  "              Module           Available            Printing\n"
                  "                core      ENWIDTPL (255)      ENW    L (135)\n"
                  "a-name-of-31-characters-exactly      ENW      (  7)               (  0)\n"
                  "0123456789abcdef0123456789ABCDEF             L (128)             L (128)\n");
        EXPECT_EQ(result, 0);
        EXPECT_EQ(ruk_rcli_more_output, 77U);
        // Each request carries the reply before it.
        expect_requests(peer.agent,
                        {module_request(module_bytes({.index = UINT32_MAX})), module_request(first),
                         module_request(second), module_request(third)});
    }
}

TEST_F(ruk_log_show_debug_, prints_the_header_alone_without_modules)
{
    const Peer peer(replies({}));
    EXPECT_EQ(output_of("show debug"),
              "              Module           Available            Printing\n");
    expect_requests(peer.agent, {module_request(module_bytes({.index = UINT32_MAX}))});
}

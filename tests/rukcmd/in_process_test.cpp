// A host that embeds the front end and holds the log itself: it links its own definitions of the
// in-process functions, which replace the library's placeholders.  The same file is linked with
// the static and with the shared library.
#include "ruk/front_end.h"

#include <gtest/gtest.h>

#include "ruk/agent.h"
#include "tests/rukcmd/fake_log.h"
#include "tests/support/capture.h"

using namespace ruk_test;

namespace
{

FakeLog *host_log;

// Requests that reached the host, as "<opcode>/<ident>".
std::vector<std::string> asked;

template <typename Record> int32_t answer(uint16_t opcode, uint32_t ident, Record *record)
{
    asked.push_back(std::to_string(opcode) + "/" + std::to_string(ident));
    std::string payload(reinterpret_cast<const char *>(record), sizeof *record);
    const int32_t status = host_log->answer(opcode, ident, payload);
    memcpy(record, payload.data(), sizeof *record);
    return status;
}

} // namespace

int32_t kt_get_log_info(uint32_t ident, LogInfo *info)
{
    return answer(233, ident, info);
}

int32_t kt_get_log_entry(uint32_t ident, LogEntry *entry)
{
    return answer(234, ident, entry);
}

int32_t kt_set_log(uint32_t operation, uint64_t *value)
{
    return answer(236, operation, value);
}

int32_t kt_get_log_module(uint32_t ident, LogModule *module)
{
    return answer(311, ident, module);
}

int32_t kt_find_log_module(uint32_t ident, LogModule *module)
{
    return answer(312, ident, module);
}

int32_t kt_set_log_module(uint32_t index, uint32_t *mask)
{
    return answer(313, index, mask);
}

namespace
{

class EmbeddingHost : public testing::Test
{
protected:
    void SetUp() override
    {
        host_log = &log;
        asked.clear();
        ruk_rcli_dpa_loga_log = 1;
        ruk_rcli_fromdpa = 0;
        ruk_rcli_buffer_ptr = nullptr;
        ruk_rcli_print_len = 0;
        ruk_rcli_more_output = 0;
    }

    // No Agent was ever looked for.
    void TearDown() override { EXPECT_EQ(kt_dpa_call_fd, -1); }

    static std::string output_of(std::string line)
    {
        return captured_stdout(
            [&] { ruk_log_run(line.data(), static_cast<int32_t>(line.size())); });
    }

    // One page through the exported buffer.
    static std::string page_of(std::string line)
    {
        ruk_rcli_fromdpa = 1;
        ruk_rcli_buffer_ptr = ruk_rcli_buffer;
        EXPECT_EQ(output_of(std::move(line)), "");
        return {ruk_rcli_buffer, ruk_rcli_buffer_ptr};
    }

    FakeLog log;
};

using Asked = std::vector<std::string>;

} // namespace

TEST_F(EmbeddingHost, shows_its_own_status)
{
    log.add_events(0, 4);
    log.set_enabled(true);
    EXPECT_EQ(output_of("show info"), "          Enabled: Yes\n"
                                      "    Total Entries: 5\n"
                                      "  Wrapped Entries: 0\n"
                                      "     Lost Entries: 0\n"
                                      "  Skipped Entries: 0\n"
                                      "Available Entries: 5\n"
                                      " Stop After Entry: Not Specified\n");
    EXPECT_EQ(asked, Asked{"233/0"});
}

TEST_F(EmbeddingHost, shows_its_own_entries)
{
    log.add_events(0, 59);
    log.set_enabled(true);
    EXPECT_EQ(output_of("show all"), k_entry_header + numbered_lines(0, 59));
    EXPECT_EQ(asked.size(), 1U + 61U + 1U);
    EXPECT_EQ(asked.front(), "236/2");
    EXPECT_EQ(asked.back(), "236/3");
    asked.clear();
    EXPECT_EQ(output_of("show last 2"), k_entry_header + numbered_lines(58, 59));
    EXPECT_EQ(asked, (Asked{"236/2", "233/0", "234/0", "234/0", "234/0", "236/3"}));
    EXPECT_TRUE(log.is_enabled());
}

TEST_F(EmbeddingHost, controls_its_own_log)
{
    log.add_events(0, 4);
    EXPECT_EQ(output_of("start 5;stop;resume;clear"), "Started log\n"
                                                      "Will suspend log after next 0 entries\n"
                                                      "Resumed log\n"
                                                      "Cleared log\n");
    EXPECT_EQ(asked, (Asked{"236/1", "236/2", "236/3", "236/4"}));
    EXPECT_TRUE(log.is_enabled());
    EXPECT_EQ(output_of("show all"), k_entry_header);
}

TEST_F(EmbeddingHost, shows_and_changes_its_own_modules)
{
    log.add_modules({2, 9});
    EXPECT_EQ(output_of("debug mod9 none w;debug nosuch w"), "Module nosuch does not exist.\n");
    EXPECT_EQ(asked, (Asked{"312/0", "313/9", "312/0"}));
    EXPECT_EQ(log.printing_of(2), 0x87U);
    EXPECT_EQ(log.printing_of(9), 0x04U);
    EXPECT_EQ(output_of("show debug"),
              std::string(k_module_header) +
                  "                mod2      ENWIDTPL (255)      ENW    L (135)\n"
                  "                mod9      ENWIDTPL (255)        W      (  4)\n");
    EXPECT_EQ(output_of("debug all t"), "");
    EXPECT_EQ(log.printing_of(2), 0x21U);
    EXPECT_EQ(log.printing_of(9), 0x21U);
}

TEST_F(EmbeddingHost, pages_through_the_exported_buffer)
{
    log.add_events(0, 9);
    EXPECT_EQ(page_of("show all"), k_entry_header + numbered_lines(0, 6));
    EXPECT_EQ(ruk_rcli_more_output, 6U);
    EXPECT_EQ(page_of("show all cookie 6"), numbered_lines(7, 9));
    EXPECT_EQ(ruk_rcli_more_output, 0U);
    EXPECT_EQ(page_of("show last 8"), k_entry_header + numbered_lines(2, 8));
    EXPECT_EQ(ruk_rcli_more_output, 7U);
    EXPECT_EQ(page_of("show last 8 cookie 7"), numbered_line(9));
    EXPECT_EQ(ruk_rcli_more_output, 0U);
}

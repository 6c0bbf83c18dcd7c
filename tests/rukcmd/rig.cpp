// What the tests of the front end share.
#include "tests/rukcmd/rig.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "ruk/agent.h"
#include "ruk/front_end.h"

namespace ruk_test
{

void reset_front_end()
{
    memset(ruk_rcli_buffer, 0, RUK_RCLI_BUFFER_SIZE);
    ruk_rcli_buffer_ptr = nullptr;
    ruk_rcli_entry_start_ptr = nullptr;
    ruk_rcli_print_len = 0;
    ruk_rcli_more_output = 0;
    ruk_rcli_fromdpa = 0;
    ruk_rcli_dpa_loga_log = 0;
    kt_debug_print_ruk_log = 0x87;
    kt_debug_print_ktcmd = 0x87;
}

Connection::Connection()
{
    if (kt_dpa_api_init() != 0) {
        fputs("The scripted peer can't be reached.\n", stderr);
        abort();
    }
}

Connection::~Connection()
{
    kt_dpa_api_exit();
}

ScriptedAgent::Handler serve(FakeLog &log)
{
    return [&log](const Request &request) {
        std::string payload = request.payload();
        const int32_t status =
            log.answer(request.opcode(), static_cast<uint32_t>(request.ident()), payload);
        return std::optional(reply_to(request, status, payload));
    };
}

std::string info_request()
{
    return request_bytes(233, 0, 1, std::string(48, '\0'));
}

std::string entry_request(const std::string &record)
{
    return request_bytes(234, 0, 3, record);
}

std::string first_entry_request()
{
    return entry_request(entry_bytes({.entry = UINT64_MAX}));
}

std::string module_request(const std::string &record)
{
    return request_bytes(311, 0, 3, record);
}

std::string find_module_request(const std::string &record)
{
    return request_bytes(312, 0, 3, record);
}

std::string set_log_request(int32_t operation, uint64_t value)
{
    return request_bytes(236, operation, 3, bytes_of(value));
}

std::string set_module_request(int32_t index, uint32_t mask)
{
    return request_bytes(313, index, 3, bytes_of(mask));
}

void expect_requests(const ScriptedAgent &agent, const std::vector<std::string> &expected)
{
    const std::vector<std::string> got = agent.defined_requests();
    EXPECT_EQ(got.size(), expected.size());
    for (size_t i = 0; i < std::min(got.size(), expected.size()); ++i) {
        EXPECT_EQ(hex(got[i]), hex(expected[i])) << "request " << i;
    }
}

std::string output_of(std::string line)
{
    return captured_stdout([&] {
        const auto length = static_cast<int32_t>(line.size());
        EXPECT_EQ(ruk_log_run(line.data(), length), length);
    });
}

Page run_page(std::string line)
{
    ruk_rcli_fromdpa = 1;
    ruk_rcli_buffer_ptr = ruk_rcli_buffer;
    Page page;
    page.out = output_of(std::move(line));
    page.text.assign(ruk_rcli_buffer, static_cast<size_t>(ruk_rcli_buffer_ptr - ruk_rcli_buffer));
    page.more = ruk_rcli_more_output;
    return page;
}

std::vector<std::string> follow_cookies(const std::string &command)
{
    constexpr size_t k_most_pages = 20;
    std::vector<std::string> texts;
    std::string line = command;
    while (texts.size() < k_most_pages) {
        const Page page = run_page(line);
        EXPECT_EQ(page.out, "");
        texts.push_back(page.text);
        if (page.more == 0) {
            break;
        }
        line = command + " cookie " + std::to_string(page.more);
    }
    return texts;
}

} // namespace ruk_test

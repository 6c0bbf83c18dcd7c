// The call forms of both clients: what they put into a record, what they refuse, what they say.
#include "ruk/agent.h"
#include "ruk/command_service.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <functional>
#include <memory>

#include "tests/dpa/faults.h"
#include "tests/dpa/peer.h"
#include "tests/dpa/wire_bytes.h"
#include "tests/support/capture.h"
#include "tests/support/scripted_agent.h"

namespace
{

using ruk_test::captured_stdout;
using ruk_test::Header;
using ruk_test::hex;
using ruk_test::Listener;
using ruk_test::Peer;
using ruk_test::WordSetting;

using Simple = int32_t (*)(uint16_t, int32_t, uint8_t, void *, uint32_t);
using Indirect1 = int32_t (*)(uint16_t, int32_t, uint8_t, void *, uint32_t, const uint32_t *);
using Indirect2 = int32_t (*)(uint16_t, int32_t, uint8_t, void *, uint32_t, const uint32_t *,
                              void *, uint32_t, const uint32_t *);

// One client and what its forms say.
struct Client {
    std::string prefix; // of the forms' names
    const char *socket_path;
    uint16_t version;
    Simple simple;
    Indirect1 indirect1;
    Indirect2 indirect2;
    uint32_t *word;
    int32_t (*open)();
    int32_t (*close)();

    std::string simple_announcement; // with the opcode 63
    std::string indirect1_announcement;
    std::string indirect2_announcement;
    std::string no_count; // each with the opcode 63
    std::string no_count1;
    std::string no_count2;
    uint32_t simple_failure_bit;
    std::string simple_failure;
    std::string indirect1_failure;
    std::string indirect2_failure;
};

const Client k_clients[] = {
    {
        .prefix = "kt_dpa_call_indirect",
        .socket_path = "/var/tmp/brelovs_api_socket",
        .version = 348,
        .simple = kt_dpa_call_indirect_simple,
        .indirect1 = kt_dpa_call_indirect1,
        .indirect2 = kt_dpa_call_indirect2,
        .word = &kt_debug_print_ktdpa_indirect,
        .open = kt_dpa_api_init,
        .close = kt_dpa_api_exit,
        .simple_announcement = "kt_dpa_call_indirect_simple: Generating ioctl() for opcode 63\n",
        .indirect1_announcement = "kt_dpa_call_indirect1: Generating ioctl() for opcode 63\n",
        .indirect2_announcement = "kt_dpa_call_indirect2: Generating ioctl() for opcode 63\n",
        .no_count = "dpa/userspace/ktdpa_indirect/134: Failed, opcode 63\n",
        .no_count1 = "dpa/userspace/ktdpa_indirect/190: Failed, opcode 63\n",
        .no_count2 = "dpa/userspace/ktdpa_indirect/204: Failed, opcode 63\n",
        .simple_failure_bit = 0x10,
        .simple_failure = "dpa/userspace/ktdpa_indirect/105: Failed\n",
        .indirect1_failure = "dpa/userspace/ktdpa_indirect/152: Failed: -1, opcode 63\n"
                             "di status 1\n",
        .indirect2_failure = "dpa/userspace/ktdpa_indirect/217: Failed, opcode 63\n"
                             "di status 1\n",
    },
    {
        .prefix = "kt_rukcmd_call_indirect",
        .socket_path = "/var/tmp/ktrukcmd_api_socket",
        .version = 2,
        .simple = kt_rukcmd_call_indirect_simple,
        .indirect1 = kt_rukcmd_call_indirect1,
        .indirect2 = kt_rukcmd_call_indirect2,
        .word = &kt_debug_print_ktrukcmd_indirect,
        .open = dpa_platform_open,
        .close = dpa_platform_close,
        .simple_announcement = "",
        .indirect1_announcement = "",
        .indirect2_announcement = "",
        .no_count = "dpa/command/ktrukcmd_indirect/321: Failed, opcode 63\n",
        .no_count1 = "dpa/command/ktrukcmd_indirect/368: Failed, opcode 63\n",
        .no_count2 = "dpa/command/ktrukcmd_indirect/382: Failed, opcode 63\n",
        .simple_failure_bit = 0x01,
        .simple_failure = "dpa/command/ktrukcmd_indirect/294: Failed\n",
        .indirect1_failure = "dpa/command/ktrukcmd_indirect/339: Failed: -1, opcode 63\n"
                             "di status 1\n",
        .indirect2_failure = "dpa/command/ktrukcmd_indirect/395: Failed, opcode 63\n"
                             "di status 1\n",
    },
};

// Runs the tests for one client after the other, each on a connection of its own.
class CallForms : public testing::Test
{
protected:
    void SetUp() override
    {
        for (const Client &client : k_clients) {
            if (!ruk_test::is_free(client.socket_path)) {
                GTEST_SKIP() << "somebody listens on " << client.socket_path;
            }
        }
        descriptors_ = ruk_test::open_descriptors();
    }

    void TearDown() override
    {
        if (!IsSkipped()) {
            EXPECT_EQ(ruk_test::open_descriptors(), descriptors_);
        }
    }

    static void with_each(const std::function<void(const Client &, const Peer &)> &test)
    {
        for (const Client &client : k_clients) {
            SCOPED_TRACE(client.prefix);
            const Listener listener(client.socket_path);
            ASSERT_NE(client.open(), -1);
            {
                const Peer peer = listener.accept();
                test(client, peer);
            }
            EXPECT_EQ(client.close(), 0);
            EXPECT_FALSE(listener.has_connection());
        }
    }

private:
    int descriptors_ = 0;
};

std::string reply(int32_t status, const std::string &payload)
{
    return Header{.status = status}.bytes() + payload;
}

// What the wire must hold, apart from what no client defines: status and reserved bytes.
std::string defined(std::string bytes)
{
    if (bytes.size() >= 56) {
        bytes.replace(6, 2, 2, '\0');
        bytes.replace(12, 4, 4, '\0');
    }
    return hex(bytes);
}

TEST_F(CallForms, simple_sends_one_buffer_and_never_counts)
{
    with_each([](const Client &client, const Peer &peer) {
        for (const uint8_t flags :
             std::initializer_list<uint8_t>{0x00, 0x01, 0x03, 0x04, 0x07, 0xf7}) {
            SCOPED_TRACE(static_cast<int>(flags));
            char buffer[] = "abcdef";
            peer.reply(reply(9, "ABCDE"));
            EXPECT_EQ(client.simple(0xfedc, -2, flags, buffer, 5), 9);
            const Header header{.opcode = 0xfedc,
                                .version = client.version,
                                .flags1 = flags,
                                .flags2 = 0,
                                .ident = -2,
                                .bsize1 = 5,
                                .ptr1 = buffer};
            EXPECT_EQ(defined(peer.received()), hex(header.bytes() + "abcde"));
            EXPECT_STREQ(buffer, "ABCDEf");
        }
    });
}

TEST_F(CallForms, indirect1_counts_only_with_flag_0x04)
{
    struct {
        uint8_t flags;
        bool has_count;
        uint32_t elements1, esize1;
        size_t length1;
    } const rows[] = {
        {0x01, true, 0, 0, 8},   {0x03, false, 0, 0, 8},  {0xf3, true, 0, 0, 8},
        {0x04, true, 10, 1, 18}, {0x07, true, 10, 1, 18},
    };
    with_each([&](const Client &client, const Peer &peer) {
        for (const auto &row : rows) {
            SCOPED_TRACE(&row - rows);
            std::string buffer = "abcdefghijklmnopqr#";
            const uint32_t count = 10;
            peer.reply(reply(-5, std::string("ABCDEFGHIJKLMNOPQR").substr(0, row.length1)));
            EXPECT_EQ(client.indirect1(311, INT32_MIN, row.flags, buffer.data(), 8,
                                       row.has_count ? &count : nullptr),
                      -5);
            const Header header{.opcode = 311,
                                .version = client.version,
                                .flags1 = row.flags,
                                .ident = INT32_MIN,
                                .bsize1 = 8,
                                .elements1 = row.elements1,
                                .esize1 = row.esize1,
                                .ptr1 = buffer.data(),
                                .ptr2 = nullptr};
            EXPECT_EQ(
                defined(peer.received()),
                hex(header.bytes() + std::string("abcdefghijklmnopqr").substr(0, row.length1)));
            EXPECT_EQ(buffer, row.length1 == 8 ? "ABCDEFGHijklmnopqr#" : "ABCDEFGHIJKLMNOPQR#");
            EXPECT_EQ(count, 10U);
        }
    });
}

TEST_F(CallForms, indirect2_exchanges_buffer_2_only_with_flag_0x08)
{
    struct {
        uint8_t flags;
        uint32_t bsize1, bsize2;
        bool has_counts; // 3 and 5
        uint32_t elements1, elements2, esize;
        size_t length1, length2;
    } const rows[] = {
        {0x01, 8, 4, true, 0, 0, 0, 8, 0},  {0x01, 8, 4, false, 0, 0, 0, 8, 0},
        {0x09, 8, 4, false, 0, 0, 0, 8, 4}, {0x08, 8, 4, true, 0, 0, 0, 8, 4},
        {0x08, 0, 4, true, 0, 0, 0, 0, 4},  {0x04, 8, 0, true, 3, 5, 1, 11, 0},
        {0x0c, 8, 0, true, 3, 5, 1, 11, 5}, {0x0c, 8, 4, true, 3, 5, 1, 11, 9},
        {0xff, 0, 0, true, 3, 5, 1, 3, 5},
    };
    with_each([&](const Client &client, const Peer &peer) {
        for (const auto &row : rows) {
            SCOPED_TRACE(&row - rows);
            std::string buffer1 = std::string("abcdefghijk").substr(0, row.length1);
            std::string buffer2 = row.length2 > 0 ? std::string("nopqrstuvw").substr(0, row.length2)
                                                  : std::string("untouched");
            const uint32_t count1 = 3;
            const uint32_t count2 = 5;
            const std::string answer1 = std::string("ABCDEFGHIJK").substr(0, row.length1);
            const std::string answer2 = std::string("NOPQRSTUVW").substr(0, row.length2);
            const std::string sent = buffer1 + buffer2.substr(0, row.length2);
            peer.reply(reply(0, answer1 + answer2));
            EXPECT_EQ(client.indirect2(56, 3, row.flags, buffer1.data(), row.bsize1,
                                       row.has_counts ? &count1 : nullptr, buffer2.data(),
                                       row.bsize2, row.has_counts ? &count2 : nullptr),
                      0);
            const Header header{.opcode = 56,
                                .version = client.version,
                                .flags1 = row.flags,
                                .ident = 3,
                                .bsize1 = row.bsize1,
                                .bsize2 = row.bsize2,
                                .elements1 = row.elements1,
                                .elements2 = row.elements2,
                                .esize1 = row.esize,
                                .esize2 = row.esize,
                                .ptr1 = buffer1.data(),
                                .ptr2 = buffer2.data()};
            EXPECT_EQ(defined(peer.received()), hex(header.bytes() + sent));
            EXPECT_EQ(buffer1, answer1);
            EXPECT_EQ(buffer2, row.length2 > 0 ? answer2 : "untouched");
        }
    });
}

TEST_F(CallForms, the_version_probe_is_60_bytes_each_way)
{
    with_each([](const Client &client, const Peer &peer) {
        uint32_t version = 0x11223344;
        const uint32_t ignored = 1000;
        peer.reply(reply(6, std::string("\x5c\x01\x00\x00", 4)));
        EXPECT_EQ(client.indirect1(63, 0, 0x01, &version, 4, &ignored), 6);
        const std::string sent = peer.received();
        EXPECT_EQ(sent.size(), 60U);
        EXPECT_EQ(hex(sent.substr(56)), "44332211");
        EXPECT_EQ(version, 348U);
    });
}

TEST_F(CallForms, return_any_status_without_a_word)
{
    with_each([](const Client &client, const Peer &peer) {
        const WordSetting word(*client.word, 0xef);
        for (const int32_t status : {0, 1, 2, 6, 300, -1, INT32_MAX, INT32_MIN}) {
            SCOPED_TRACE(status);
            int32_t results[3];
            peer.reply(reply(status, "") + reply(status, "") + reply(status, ""));
            EXPECT_EQ(captured_stdout([&] {
                          results[0] = client.simple(63, 0, 0, nullptr, 0);
                          results[1] = client.indirect1(63, 0, 0, nullptr, 0, nullptr);
                          results[2] =
                              client.indirect2(63, 0, 0, nullptr, 0, nullptr, nullptr, 0, nullptr);
                      }),
                      "");
            EXPECT_THAT(results, testing::Each(status));
        }
    });
}

// A status of 1 or -1 that the service itself gives is no failed exchange.  Shown for the Agent:
// the command service's word traces the transfers as well.
TEST_F(CallForms, report_no_failure_when_the_service_answered)
{
    const Listener listener(ruk_test::k_agent_path);
    ASSERT_EQ(kt_dpa_api_init(), 0);
    {
        const Peer peer = listener.accept();
        const WordSetting word(kt_debug_print_ktdpa_indirect, 0x10);
        for (const int32_t status : {-1, 1}) {
            peer.reply(reply(status, "") + reply(status, "") + reply(status, ""));
            EXPECT_EQ(captured_stdout([] {
                          kt_dpa_call_indirect_simple(63, 0, 0, nullptr, 0);
                          kt_dpa_call_indirect1(63, 0, 0, nullptr, 0, nullptr);
                          kt_dpa_call_indirect2(63, 0, 0, nullptr, 0, nullptr, nullptr, 0, nullptr);
                      }),
                      "kt_dpa_call_indirect_simple: Generating ioctl() for opcode 63\n"
                      "kt_dpa_call_indirect1: Generating ioctl() for opcode 63\n"
                      "kt_dpa_call_indirect2: Generating ioctl() for opcode 63\n");
        }
    }
    EXPECT_EQ(kt_dpa_api_exit(), 0);
}

TEST_F(CallForms, refuse_a_missing_count_and_send_nothing)
{
    with_each([](const Client &client, const Peer &peer) {
        char buffer[8] = "abcdefg";
        const uint32_t count = 1;
        struct {
            std::function<int32_t()> call;
            std::string expected;
        } const rows[] = {
            {[&] { return client.indirect1(63, 0, 0x04, buffer, 4, nullptr); },
             client.indirect1_announcement + client.no_count},
            {[&] { return client.indirect1(63, 0, 0xff, nullptr, 0, nullptr); },
             client.indirect1_announcement + client.no_count},
            {[&] { return client.indirect2(63, 0, 0x04, buffer, 4, nullptr, buffer, 4, &count); },
             client.indirect2_announcement + client.no_count1},
            {[&] { return client.indirect2(63, 0, 0x0c, buffer, 4, nullptr, buffer, 4, nullptr); },
             client.indirect2_announcement + client.no_count1},
            {[&] { return client.indirect2(63, 0, 0x04, buffer, 4, &count, buffer, 4, nullptr); },
             client.indirect2_announcement + client.no_count2},
        };
        for (const auto &row : rows) {
            SCOPED_TRACE(&row - rows);
            for (const uint32_t bits : {0x10U, 0xefU}) {
                const WordSetting word(*client.word, bits);
                int32_t result = 0;
                EXPECT_EQ(captured_stdout([&] { result = row.call(); }),
                          bits == 0x10 ? row.expected : "");
                EXPECT_EQ(result, 2);
            }
        }
        EXPECT_EQ(peer.received(), "");
        EXPECT_STREQ(buffer, "abcdefg");
    });
}

TEST_F(CallForms, refuse_a_missing_count_without_a_connection)
{
    for (const Client &client : k_clients) {
        const Listener listener(client.socket_path);
        EXPECT_EQ(client.indirect1(63, 0, 0x04, nullptr, 0, nullptr), 2);
        EXPECT_EQ(client.indirect2(63, 0, 0x04, nullptr, 0, nullptr, nullptr, 0, nullptr), 2);
        EXPECT_FALSE(listener.has_connection());
    }
}

// With nobody listening: status 1 and the form's own lines, after those of the failed connect.
TEST_F(CallForms, report_a_failed_exchange)
{
    const std::string connect_failure[] = {
        "kt_platform_open: Failed binding local socket err: 2 - No such file or directory\n",
        "dpa_platform_open: Failed connect local socket err: 2 - No such file or directory\n",
    };
    for (const Client &client : k_clients) {
        SCOPED_TRACE(client.prefix);
        const std::string &connect = connect_failure[&client - k_clients];
        char buffer[] = "abcd";
        const auto simple = [&] { return client.simple(63, 0, 0x01, buffer, 4); };
        const auto indirect1 = [&] { return client.indirect1(63, 0, 0x01, buffer, 4, nullptr); };
        const auto indirect2 = [&] {
            return client.indirect2(63, 0, 0x09, buffer, 2, nullptr, buffer + 2, 2, nullptr);
        };
        const bool is_agent = client.version == 348;
        // The Agent's connect reports under a word of its own, which stays as it is.
        const std::string quiet_connect = is_agent ? connect : "";
        struct {
            std::function<int32_t()> call;
            uint32_t word;
            std::string expected;
        } const rows[] = {
            {simple, 0x87, connect + (is_agent ? "" : client.simple_failure)},
            {simple, 0x10,
             client.simple_announcement + quiet_connect + (is_agent ? client.simple_failure : "")},
            {simple, 0x97, client.simple_announcement + connect + client.simple_failure},
            {simple, 0xee, quiet_connect},
            {indirect1, 0x87, connect},
            {indirect1, 0x10,
             client.indirect1_announcement + quiet_connect + client.indirect1_failure},
            {indirect1, 0xee, quiet_connect},
            {indirect2, 0x87, connect},
            {indirect2, 0x10,
             client.indirect2_announcement + quiet_connect + client.indirect2_failure},
            {indirect2, 0xee, quiet_connect},
        };
        for (const auto &row : rows) {
            SCOPED_TRACE(&row - rows);
            const WordSetting word(*client.word, row.word);
            int32_t result = 0;
            EXPECT_EQ(captured_stdout([&] { result = row.call(); }), row.expected);
            EXPECT_EQ(result, 1);
            EXPECT_STREQ(buffer, "abcd");
        }
    }
}

// A reply that breaks off: the transfer's lines, then the form's.
TEST_F(CallForms, report_a_failed_exchange_after_its_transfer)
{
    const std::string transfers[] = {
        "kt_dpa_socket_api: Sent (0) bytes, not (60), sending (60) more\n"
        "kt_dpa_socket_api: EOF reading bytes back 0\n",
        "kt_rukcmd_socket_api: Sending (60) bytes across\n"
        "kt_rukcmd_socket_api: Sent (0) bytes, not (60), sending (60) more\n"
        "kt_rukcmd_socket_api: EOF reading bytes back 0\n",
    };
    with_each([&](const Client &client, const Peer &peer) {
        const WordSetting socket_word(kt_debug_print_brel_dpa_api, 0x10);
        const WordSetting word(*client.word, 0x10);
        char buffer[] = "abcd";
        peer.reply(reply(0, "ABC"));
        peer.end_of_replies();
        int32_t status = 0;
        EXPECT_EQ(
            captured_stdout([&] { status = client.indirect1(63, 0, 0x01, buffer, 4, nullptr); }),
            client.indirect1_announcement + transfers[&client - k_clients] +
                client.indirect1_failure);
        EXPECT_EQ(status, 1);
        EXPECT_STREQ(buffer, "abcd");
    });
}

TEST(call_forms, start_with_the_default_trace_word)
{
    EXPECT_EQ(kt_debug_print_ktdpa_indirect, 0x87U);
    EXPECT_EQ(kt_debug_print_ktrukcmd_indirect, 0x87U);
}

TEST(kt_dpa_api_print_di, prints_every_field_while_bit_0x08_is_set)
{
    AgentRequest request{};
    request.opcode = 65535;
    request.version = 348;
    request.flags1 = 0xfe;
    request.flags2 = 0x0a;
    request.reserved = 0xffff;
    request.ident = -3;
    request.status = -1;
    request.bsize1 = 4096;
    request.bsize2 = 0xffffffff;
    request.elements1 = 7;
    request.elements2 = 0x80000000;
    request.esize1 = 1;
    request.esize2 = 0xfffffffe;
    request.ptr1 = reinterpret_cast<void *>(0x12345678abcd);
    const WordSetting word(kt_debug_print_brel_dpa_api, 0x08);
    EXPECT_EQ(captured_stdout([&] { kt_dpa_api_print_di("before 100%d", &request); }),
              "before 100%d\n"
              "DPA API status -1\n"
              "DPA API opcode 65535\n"
              "DPA API version 348\n"
              "DPA API ident -3\n"
              "DPA API flags1 fe flags2 a\n"
              "DPA API ptr1 0x12345678abcd bsize1 4096\n"
              "DPA API ptr2 (nil) bsize -1\n"
              "DPA API esize1 1  elements1 7\n"
              "DPA API esize2 -2  elements2 -2147483648\n");
    for (const uint32_t off : {0x87U, 0xf7U, 0x00U}) {
        kt_debug_print_brel_dpa_api = off;
        EXPECT_EQ(captured_stdout([&] { kt_dpa_api_print_di("title", &request); }), "");
    }
}

// Stands in for standard output: keeps each line and clears the trace word after the last one
// that is wanted.
struct LineLimit {
    int lines_left;
    std::string text;

    static ssize_t write(void *cookie, const char *bytes, size_t size)
    {
        auto *const limit = static_cast<LineLimit *>(cookie);
        limit->text.append(bytes, size);
        limit->lines_left -= static_cast<int>(std::count(bytes, bytes + size, '\n'));
        if (limit->lines_left <= 0) {
            kt_debug_print_brel_dpa_api = 0x87;
        }
        return static_cast<ssize_t>(size);
    }
};

TEST(kt_dpa_api_print_di, tests_its_bit_before_every_line)
{
    const AgentRequest request{};
    const std::string lines[] = {
        "title\n",
        "DPA API status 0\n",
        "DPA API opcode 0\n",
        "DPA API version 0\n",
        "DPA API ident 0\n",
        "DPA API flags1 0 flags2 0\n",
        "DPA API ptr1 (nil) bsize1 0\n",
        "DPA API ptr2 (nil) bsize 0\n",
        "DPA API esize1 0  elements1 0\n",
        "DPA API esize2 0  elements2 0\n",
    };
    std::string expected;
    for (int wanted = 1; wanted <= 10; ++wanted) {
        SCOPED_TRACE(wanted);
        expected += lines[wanted - 1];
        const WordSetting word(kt_debug_print_brel_dpa_api, 0x8f);
        LineLimit limit{wanted, ""};
        FILE *const before = stdout;
        stdout = fopencookie(&limit, "w", {nullptr, LineLimit::write, nullptr, nullptr});
        ASSERT_NE(stdout, nullptr);
        setvbuf(stdout, nullptr, _IOLBF, 4096);
        kt_dpa_api_print_di("title", &request);
        fclose(stdout);
        stdout = before;
        EXPECT_EQ(limit.text, expected);
    }
}

} // namespace

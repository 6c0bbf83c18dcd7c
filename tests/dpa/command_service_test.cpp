// The connection to the command service: opened by the first exchange, closed in two ways.
#include "ruk/command_service.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <thread>

#include "tests/dpa/faults.h"
#include "tests/dpa/peer.h"
#include "tests/dpa/wire_bytes.h"
#include "tests/support/capture.h"
#include "tests/support/scripted_agent.h"

namespace
{

using ruk_test::Blocks;
using ruk_test::Call;
using ruk_test::captured_stdout;
using ruk_test::Fault;
using ruk_test::Header;
using ruk_test::is_open;
using ruk_test::k_command_path;
using ruk_test::Listener;
using ruk_test::Peer;
using ruk_test::ScriptedAgent;
using ruk_test::WordSetting;

const std::string k_absent =
    "dpa_platform_open: Failed connect local socket err: 2 - No such file or directory\n";
const std::string k_refused =
    "dpa_platform_open: Failed connect local socket err: 111 - Connection refused\n";

// Every test ends closed and leaves neither a descriptor nor a block.
class CommandService : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!ruk_test::is_free(k_command_path)) {
            GTEST_SKIP() << "somebody listens on " << k_command_path;
        }
        descriptors_ = ruk_test::open_descriptors();
    }

    void TearDown() override
    {
        if (!IsSkipped()) {
            EXPECT_EQ(dpa_platform_close(), 0);
            EXPECT_EQ(ruk_test::open_descriptors(), descriptors_);
            EXPECT_EQ(blocks_.held(), 0);
        }
    }

    static int32_t call() { return kt_rukcmd_call_indirect1(9, 0, 0x01, nullptr, 0, nullptr); }

private:
    int descriptors_ = 0;
    Blocks blocks_;
};

std::string reply(int32_t status)
{
    return Header{.status = status}.bytes();
}

TEST_F(CommandService, the_first_call_connects)
{
    ScriptedAgent service(ruk_test::replies({{.status = 3, .payload = "ABCD"}, {.status = 4}}),
                          k_command_path);
    const WordSetting word(kt_debug_print_ktrukcmd_indirect, 0x97);
    char buffer[] = "abcd";
    int32_t status = 0;
    EXPECT_EQ(
        captured_stdout([&] { status = kt_rukcmd_call_indirect_simple(300, -1, 0x01, buffer, 4); }),
        "kt_rukcmd_socket_api: Sending (60) bytes across\n"
        "kt_rukcmd_socket_api: Sent (0) bytes, not (60), sending (60) more\n");
    EXPECT_EQ(status, 3);
    EXPECT_STREQ(buffer, "ABCD");
    EXPECT_EQ(captured_stdout([&] { status = call(); }),
              "kt_rukcmd_socket_api: Sending (56) bytes across\n"
              "kt_rukcmd_socket_api: Sent (0) bytes, not (56), sending (56) more\n");
    EXPECT_EQ(status, 4);
    EXPECT_EQ(service.connections(), 1);
    EXPECT_THAT(service.defined_requests(),
                testing::ElementsAre(ruk_test::request_bytes(300, -1, 0x01, "abcd", 2),
                                     ruk_test::request_bytes(9, 0, 0x01, "", 2)));
}

TEST_F(CommandService, open_connects_and_changes_neither_mode_nor_lock)
{
    const Listener listener(k_command_path);
    const WordSetting word(kt_debug_print_ktrukcmd_indirect, 0xff);
    int32_t fd = -1;
    EXPECT_EQ(captured_stdout([&] {
                  const Fault fault(Call::change_mode, EPERM); // nobody asks for it
                  fd = dpa_platform_open();
              }),
              "");
    ASSERT_GE(fd, 0);
    EXPECT_TRUE(listener.has_connection());
    struct stat status;
    ASSERT_EQ(fstat(fd, &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0777U); // as every socket begins
    EXPECT_EQ(apimutex, nullptr);
    EXPECT_EQ(kt_dpa_call_fd, -1);

    // "/var/tmp/ktrukcmd_api_socket" has 28 characters.
    const ruk_test::ConnectArguments &arguments = ruk_test::latest_connect();
    EXPECT_EQ(arguments.length, 31U);
    EXPECT_EQ(arguments.address.sun_family, AF_UNIX);
    const char path[108] = "/var/tmp/ktrukcmd_api_socket"; // and zeros
    EXPECT_EQ(memcmp(arguments.address.sun_path, path, sizeof path), 0);

    // The calls use the descriptor that was opened.
    const Peer peer = listener.accept();
    peer.reply(reply(7));
    const WordSetting silent(kt_debug_print_ktrukcmd_indirect, 0);
    EXPECT_EQ(call(), 7);
    EXPECT_FALSE(listener.has_connection());
    EXPECT_EQ(dpa_platform_close(), 0);
    EXPECT_FALSE(is_open(fd));
    EXPECT_EQ(dpa_platform_close(), 0);
}

TEST_F(CommandService, open_says_why_it_failed)
{
    struct {
        uint32_t word;
        bool can_open;
        bool exists; // the socket, without anybody who listens
        std::string expected;
    } const rows[] = {
        {0x87, true, false, k_absent},
        {0x01, true, false, k_absent},
        {0xfe, true, false, ""},
        {0x87, false, false, "dpa_platform_open: Error opening local socket\n"},
        {0xfe, false, false, ""},
        {0x87, true, true, k_refused},
        {0xfe, true, true, ""},
    };
    const int descriptors = ruk_test::open_descriptors();
    for (const auto &row : rows) {
        SCOPED_TRACE(&row - rows);
        const WordSetting word(kt_debug_print_ktrukcmd_indirect, row.word);
        if (row.exists) {
            close(open(k_command_path, O_CREAT | O_WRONLY, 0700));
        }
        int32_t result = 0;
        const std::string printed = captured_stdout([&] {
            if (row.can_open) {
                result = dpa_platform_open();
                return;
            }
            const Fault fault(Call::open_socket, EMFILE);
            result = dpa_platform_open();
        });
        unlink(k_command_path);
        EXPECT_EQ(printed, row.expected);
        EXPECT_EQ(result, -1);
        EXPECT_EQ(ruk_test::open_descriptors(), descriptors);
    }
}

TEST_F(CommandService, an_exchange_that_cannot_connect_has_status_1)
{
    AgentRequest request{};
    EXPECT_EQ(captured_stdout([&] { EXPECT_EQ(kt_rukcmd_socket_api(-1, &request, 56), -1); }),
              k_absent);
    EXPECT_EQ(request.status, 1);
    // Each call tries anew.
    for (int i = 0; i < 2; ++i) {
        int32_t status = 0;
        EXPECT_EQ(captured_stdout([&] { status = call(); }), k_absent);
        EXPECT_EQ(status, 1);
    }
}

TEST_F(CommandService, a_broken_reply_closes_and_the_next_call_connects_anew)
{
    ScriptedAgent service(
        [served = 0](const ruk_test::Request &request) mutable {
            return ++served == 1 ? std::nullopt : std::optional(ruk_test::reply_to(request, 5));
        },
        k_command_path);
    EXPECT_EQ(call(), 1);
    EXPECT_EQ(call(), 5);
    EXPECT_EQ(call(), 5);
    EXPECT_EQ(service.connections(), 2);
}

TEST_F(CommandService, a_failed_transfer_closes_its_own_descriptor_and_not_the_argument)
{
    const Listener listener(k_command_path);
    const int32_t fd = dpa_platform_open();
    ASSERT_GE(fd, 0);
    ruk_test::Pair pair;
    pair.peer().hang_up();
    AgentRequest request{};
    EXPECT_EQ(kt_rukcmd_socket_api(pair.client(), &request, 56), -1);
    EXPECT_EQ(request.status, 1);
    EXPECT_TRUE(is_open(pair.client()));
    EXPECT_FALSE(is_open(fd));
}

TEST_F(CommandService, exit_keeps_the_number_so_that_one_call_fails)
{
    ScriptedAgent service(ruk_test::replies({{.status = 3}, {.status = 4}, {.status = 5}}),
                          k_command_path);
    EXPECT_EQ(call(), 3);
    int32_t status = 0;
    EXPECT_EQ(captured_stdout([&] {
                  kt_rukcmd_api_exit(); // nothing may reuse the number before the call
                  status = call();
              }),
              ""); // no connect is tried
    EXPECT_EQ(status, 1);
    EXPECT_EQ(service.connections(), 1);
    EXPECT_EQ(call(), 4);
    EXPECT_EQ(call(), 5);
    EXPECT_EQ(service.connections(), 2);
}

TEST_F(CommandService, exit_closes_and_close_after_it_resets)
{
    const Listener listener(k_command_path);
    const int32_t fd = dpa_platform_open();
    ASSERT_TRUE(is_open(fd));
    kt_rukcmd_api_exit();
    EXPECT_FALSE(is_open(fd));
    kt_rukcmd_api_exit(); // the number is closed already
    EXPECT_EQ(dpa_platform_close(), 0);
    // Reset: the next exchange connects at once.
    ASSERT_EQ(dpa_platform_open(), fd);
    const Peer first = listener.accept();
    EXPECT_EQ(first.received(), "");
    EXPECT_TRUE(is_open(fd));
}

TEST_F(CommandService, exit_without_a_connection_does_nothing)
{
    kt_rukcmd_api_exit();
    ScriptedAgent service(ruk_test::replies({{.status = 3}}), k_command_path);
    EXPECT_EQ(call(), 3);
}

// The stale number may be somebody else's file by then: nothing is written to it, but it is
// closed when the exchange fails.
TEST_F(CommandService, after_exit_a_reused_number_fails_once_and_is_closed)
{
    const Listener listener(k_command_path);
    const int32_t fd = dpa_platform_open();
    ASSERT_GE(fd, 0);
    kt_rukcmd_api_exit();
    const int file = memfd_create("innocent", MFD_CLOEXEC);
    ASSERT_EQ(file, fd);
    const int second = dup(file);
    EXPECT_EQ(call(), 1);
    EXPECT_FALSE(is_open(file));
    struct stat status;
    ASSERT_EQ(fstat(second, &status), 0);
    EXPECT_EQ(status.st_size, 0);
    close(second);
}

// Opening again forgets the connection before: its number may be stale, so it is not closed.
TEST_F(CommandService, opening_again_leaves_the_first_connection_open)
{
    const Listener listener(k_command_path);
    const int32_t first = dpa_platform_open();
    const int32_t second = dpa_platform_open();
    EXPECT_NE(first, second);
    EXPECT_TRUE(is_open(first));
    EXPECT_EQ(dpa_platform_close(), 0);
    EXPECT_FALSE(is_open(second));
    EXPECT_TRUE(is_open(first));
    close(first);
}

TEST_F(CommandService, takes_no_lock)
{
    const Listener listener(k_command_path);
    ASSERT_GE(dpa_platform_open(), 0);
    const Peer peer = listener.accept();
    peer.reply(reply(6));
    // With the Agent's lock held a call would wait for ever if it took that one.
    ASSERT_EQ(ktdpa_mutex_create(&apimutex), 0);
    ASSERT_EQ(ktdpa_mutex_lock(apimutex), 0);
    EXPECT_EQ(call(), 6);
    EXPECT_EQ(ktpda_mutex_trylock(apimutex), EBUSY); // nor did it unlock
    ASSERT_EQ(ktdpa_mutex_unlock(apimutex), 0);
    ASSERT_EQ(ktdpa_mutex_destroy(apimutex), 0);
    apimutex = nullptr;
}

} // namespace

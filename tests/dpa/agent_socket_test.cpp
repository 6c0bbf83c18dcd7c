// The connection to the Agent: opening, closing, the lock, and what becomes of both when an
// exchange fails.
#include "ruk/agent.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <pthread.h>
#include <sys/stat.h>
#include <thread>

#include "tests/dpa/faults.h"
#include "tests/dpa/peer.h"
#include "tests/dpa/wire_bytes.h"
#include "tests/support/capture.h"
#include "tests/support/eventually.h"
#include "tests/support/scripted_agent.h"

namespace
{

using ruk_test::Blocks;
using ruk_test::Call;
using ruk_test::captured_stdout;
using ruk_test::eventually;
using ruk_test::Fault;
using ruk_test::Header;
using ruk_test::is_open;
using ruk_test::k_agent_path;
using ruk_test::Listener;
using ruk_test::Peer;
using ruk_test::Request;
using ruk_test::ScriptedAgent;
using ruk_test::WordSetting;

const std::string k_refused =
    "kt_platform_open: Failed binding local socket err: 111 - Connection refused\n";
const std::string k_absent =
    "kt_platform_open: Failed binding local socket err: 2 - No such file or directory\n";
const std::string k_connecting =
    "kt_platform_open: Connecting to path (/var/tmp/brelovs_api_socket)\n";

// Every test begins and ends in the closed state and leaves neither a descriptor nor a block.
class AgentSocket : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!ruk_test::is_free(k_agent_path)) {
            GTEST_SKIP() << "an Agent listens on " << k_agent_path;
        }
        ASSERT_EQ(kt_dpa_call_fd, -1);
        ASSERT_EQ(apimutex, nullptr);
        descriptors_ = ruk_test::open_descriptors();
    }

    void TearDown() override
    {
        if (!IsSkipped()) {
            EXPECT_EQ(kt_dpa_call_fd, -1);
            EXPECT_EQ(apimutex, nullptr);
            EXPECT_EQ(ruk_test::open_descriptors(), descriptors_);
            EXPECT_EQ(blocks_.held(), 0);
        }
    }

    // What kt_dpa_api_exit prints.
    static std::string exit_output()
    {
        int32_t result = -1;
        const std::string printed = captured_stdout([&] { result = kt_dpa_api_exit(); });
        EXPECT_EQ(result, 0);
        return printed;
    }

    // Ends a connection that an exchange opened by itself.  The mutex was unlocked once too
    // often, which this C library counts: it will not be destroyed, is forgotten, and stays with
    // the test.
    static void exit_after_opening_exchange()
    {
        ktdpa_mutex *const forgotten = apimutex;
        EXPECT_EQ(exit_output(),
                  "DPATHREAD_API_ERR ktdpa_mutex_destroy: Failed to destroy mutex. Err 16 \n"
                  "kt_platform_close: Error destroying mutex\n");
        free(forgotten);
    }

    static int32_t probe() { return kt_dpa_call_indirect1(63, 0, 0x01, nullptr, 0, nullptr); }

private:
    int descriptors_ = 0;
    Blocks blocks_;
};

std::string reply(int32_t status)
{
    return Header{.status = status}.bytes();
}

// Whether another thread finds the lock taken.
bool is_locked(ktdpa_mutex *mutex)
{
    bool locked = false;
    std::thread([&] {
        locked = ktpda_mutex_trylock(mutex) == EBUSY;
        if (!locked) {
            ktdpa_mutex_unlock(mutex);
        }
    }).join();
    return locked;
}

TEST_F(AgentSocket, starts_closed_with_the_default_trace_word)
{
    EXPECT_EQ(kt_dpa_call_fd, -1);
    EXPECT_EQ(apimutex, nullptr);
    EXPECT_EQ(kt_debug_print_brel_dpa_api, 0x87U);
}

TEST_F(AgentSocket, init_connects_and_makes_the_lock)
{
    const Listener listener(k_agent_path);
    int32_t result = -1;
    EXPECT_EQ(captured_stdout([&] { result = kt_dpa_api_init(); }), "");
    EXPECT_EQ(result, 0);
    EXPECT_TRUE(listener.has_connection());
    ASSERT_NE(apimutex, nullptr);
    EXPECT_FALSE(is_locked(apimutex));

    struct stat status;
    ASSERT_EQ(fstat(kt_dpa_call_fd, &status), 0);
    EXPECT_TRUE(S_ISSOCK(status.st_mode));
    EXPECT_EQ(status.st_mode & 07777, 0700U);

    const int32_t fd = kt_dpa_call_fd;
    EXPECT_EQ(exit_output(), "");
    EXPECT_FALSE(is_open(fd));
}

TEST_F(AgentSocket, connects_with_the_length_of_the_path_plus_3)
{
    const Listener listener(k_agent_path);
    ASSERT_EQ(kt_dpa_api_init(), 0);
    const ruk_test::ConnectArguments &arguments = ruk_test::latest_connect();
    EXPECT_EQ(arguments.length, 30U);
    EXPECT_EQ(arguments.address.sun_family, AF_UNIX);
    const char path[108] = "/var/tmp/brelovs_api_socket"; // and zeros
    EXPECT_EQ(memcmp(arguments.address.sun_path, path, sizeof path), 0);
    // The client's own end has no name.
    sockaddr_un own;
    socklen_t own_length = sizeof own;
    ASSERT_EQ(getsockname(kt_dpa_call_fd, reinterpret_cast<sockaddr *>(&own), &own_length), 0);
    EXPECT_EQ(own_length, sizeof own.sun_family);
    EXPECT_EQ(exit_output(), "");
}

TEST_F(AgentSocket, init_says_why_nothing_opened)
{
    struct {
        Call failing;
        int error;
        uint32_t word;
        std::string expected;
    } const rows[] = {
        {Call::open_socket, EMFILE, 0x87, "kt_platform_open: Error opening local socket\n"},
        {Call::open_socket, EMFILE, 0x10, ""},
        {Call::change_mode, EPERM, 0x87,
         "kt_platform_open: Failed fchmod local socket err: 1 - Operation not permitted\n"},
        {Call::change_mode, EACCES, 0xef,
         "kt_platform_open: Failed fchmod local socket err: 13 - Permission denied\n"},
        {Call::change_mode, EPERM, 0x10, k_connecting},
        {Call::allocate, ENOMEM, 0x87,
         "DPATHREAD_MALLOC_ERR ktdpa_mutex_create: Failed to alloc mutex\n"
         "kt_platform_open: Failed creating mutex\n"},
        {Call::mutex_init, EAGAIN, 0x01,
         "DPATHREAD_API_ERR ktdpa_mutex_create: Failed to init mutex. Err 11 \n"
         "kt_platform_open: Failed creating mutex\n"},
        {Call::mutex_init, EAGAIN, 0xfe,
         k_connecting + "DPATHREAD_API_ERR ktdpa_mutex_create: Failed to init mutex. Err 11 \n"},
    };
    const Listener listener(k_agent_path);
    const int descriptors = ruk_test::open_descriptors();
    for (const auto &row : rows) {
        SCOPED_TRACE(&row - rows);
        const WordSetting word(kt_debug_print_brel_dpa_api, row.word);
        int32_t result = 0;
        const std::string printed = captured_stdout([&] {
            const Fault fault(row.failing, row.error);
            result = kt_dpa_api_init();
        });
        EXPECT_EQ(printed, row.expected);
        EXPECT_EQ(result, -1);
        EXPECT_EQ(kt_dpa_call_fd, -1);
        EXPECT_EQ(apimutex, nullptr);
        EXPECT_EQ(ruk_test::open_descriptors(), descriptors);
    }
}

TEST_F(AgentSocket, init_without_an_agent_reports_the_connect)
{
    struct {
        uint32_t word;
        std::string absent;  // no socket on the path
        std::string refused; // a socket on which nobody listens
    } const rows[] = {
        {0x87, k_absent, k_refused},
        {0x01, k_absent, k_refused},
        {0x10, k_connecting, k_connecting},
        {0x11, k_connecting + k_absent, k_connecting + k_refused},
        {0xee, "", ""},
    };
    const int dead = socket(AF_UNIX, SOCK_STREAM, 0);
    for (const auto &row : rows) {
        SCOPED_TRACE(&row - rows);
        const WordSetting word(kt_debug_print_brel_dpa_api, row.word);
        EXPECT_EQ(captured_stdout([] { EXPECT_EQ(kt_dpa_api_init(), -1); }), row.absent);
        EXPECT_EQ(kt_dpa_call_fd, -1);
    }
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    strcpy(address.sun_path, k_agent_path);
    ASSERT_EQ(bind(dead, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
    for (const auto &row : rows) {
        SCOPED_TRACE(&row - rows);
        const WordSetting word(kt_debug_print_brel_dpa_api, row.word);
        EXPECT_EQ(captured_stdout([] { EXPECT_EQ(kt_dpa_api_init(), -1); }), row.refused);
        EXPECT_EQ(kt_dpa_call_fd, -1);
    }
    close(dead);
    unlink(k_agent_path);
    EXPECT_EQ(apimutex, nullptr);
}

TEST_F(AgentSocket, a_call_without_an_agent_tries_to_connect_once_and_gives_1)
{
    EXPECT_EQ(captured_stdout([] { EXPECT_EQ(kt_dpa_api_init(), -1); }), k_absent);
    int32_t status = 0;
    EXPECT_EQ(captured_stdout([&] { status = probe(); }), k_absent);
    EXPECT_EQ(status, 1);
    AgentRequest request{};
    EXPECT_EQ(captured_stdout([&] { EXPECT_EQ(kt_dpa_socket_api(-1, &request, 56), -1); }),
              k_absent);
    EXPECT_EQ(request.status, 1);
    EXPECT_EQ(kt_dpa_call_fd, -1);
    EXPECT_EQ(apimutex, nullptr);
}

TEST_F(AgentSocket, open_and_close_work_without_init_and_exit)
{
    const Listener listener(k_agent_path);
    const WordSetting word(kt_debug_print_brel_dpa_api, 0x97);
    int32_t fd = -1;
    EXPECT_EQ(captured_stdout([&] { fd = kt_platform_open(); }), k_connecting);
    EXPECT_GE(fd, 0);
    EXPECT_EQ(fd, kt_dpa_call_fd);
    // The argument does not matter: the global's descriptor is closed.
    const int other = dup(fd);
    EXPECT_EQ(kt_platform_close(other), 0);
    EXPECT_TRUE(is_open(other));
    EXPECT_FALSE(is_open(fd));
    close(other);
}

TEST_F(AgentSocket, opening_again_keeps_the_lock_and_forgets_the_descriptor)
{
    const Listener listener(k_agent_path);
    ASSERT_EQ(kt_dpa_api_init(), 0);
    ktdpa_mutex *const mutex = apimutex;
    const int32_t forgotten = kt_dpa_call_fd;
    ASSERT_EQ(kt_platform_open(), kt_dpa_call_fd);
    EXPECT_NE(kt_dpa_call_fd, forgotten);
    EXPECT_TRUE(is_open(forgotten));
    EXPECT_EQ(apimutex, mutex);
    EXPECT_EQ(exit_output(), "");
    close(forgotten);
}

// As two threads do that both found the connection broken.
TEST_F(AgentSocket, connecting_anew_leaves_no_descriptor_behind)
{
    ScriptedAgent agent([](const Request &request) { return reply_to(request, 0); });
    ASSERT_EQ(kt_dpa_api_init(), 0);
    AgentRequest request{};
    EXPECT_EQ(kt_dpa_socket_api(kt_dpa_call_fd, &request, 56), 0);
    const int descriptors = ruk_test::open_descriptors();
    EXPECT_EQ(kt_dpa_socket_api(-1, &request, 56), 0);
    EXPECT_EQ(kt_dpa_socket_api(-1, &request, 56), 0);
    EXPECT_EQ(request.status, 0);
    EXPECT_EQ(agent.connections(), 3);
    // Once the peer, too, has closed its ends.
    EXPECT_TRUE(eventually([&] { return ruk_test::open_descriptors() == descriptors; }));
    EXPECT_EQ(exit_output(), "");
}

// A failed open in the broken state keeps the lock too.
TEST_F(AgentSocket, failing_to_reopen_keeps_the_lock)
{
    ktdpa_mutex *mutex = nullptr;
    {
        const Listener listener(k_agent_path);
        ASSERT_EQ(kt_dpa_api_init(), 0);
        mutex = apimutex;
    }
    EXPECT_EQ(probe(), 1); // the connection breaks
    EXPECT_EQ(kt_dpa_call_fd, -1);
    int32_t status = 0;
    EXPECT_EQ(captured_stdout([&] { status = probe(); }), k_absent);
    EXPECT_EQ(status, 1);
    EXPECT_EQ(apimutex, mutex);
    EXPECT_FALSE(is_locked(apimutex));
    EXPECT_EQ(exit_output(), "");
}

TEST_F(AgentSocket, exit_twice_closes_once_and_reports_the_missing_lock)
{
    const std::string classed = "DPATHREAD_INV_PARAM ktdpa_mutex_destroy: Invalid Arg \n";
    const std::string own = "kt_platform_close: Error destroying mutex\n";
    const Listener listener(k_agent_path);
    ASSERT_EQ(kt_dpa_api_init(), 0);
    EXPECT_EQ(exit_output(), "");
    EXPECT_EQ(exit_output(), classed + own);
    EXPECT_EQ(captured_stdout([] { EXPECT_EQ(kt_platform_close(0), 0); }), classed + own);
    EXPECT_TRUE(is_open(0));
    {
        const WordSetting word(kt_debug_print_brel_dpa_api, 0xfe);
        EXPECT_EQ(exit_output(), classed);
    }
    {
        const WordSetting word(kt_debug_print_ktdpa_thread, 0x7f);
        EXPECT_EQ(exit_output(), own);
    }
}

TEST_F(AgentSocket, exit_forgets_a_lock_that_cannot_be_destroyed)
{
    const Listener listener(k_agent_path);
    ASSERT_EQ(kt_dpa_api_init(), 0);
    ktdpa_mutex *const mutex = apimutex;
    const int32_t fd = kt_dpa_call_fd;
    std::string printed;
    {
        const Fault fault(Call::mutex_destroy, EBUSY);
        printed = exit_output();
    }
    EXPECT_EQ(printed, "DPATHREAD_API_ERR ktdpa_mutex_destroy: Failed to destroy mutex. Err 16 \n"
                       "kt_platform_close: Error destroying mutex\n");
    EXPECT_EQ(apimutex, nullptr);
    EXPECT_FALSE(is_open(fd));
    EXPECT_EQ(ktdpa_mutex_destroy(mutex), 0);
}

TEST_F(AgentSocket, init_works_again_after_exit)
{
    ScriptedAgent agent(ruk_test::replies({{.status = 3}, {.status = 4}}));
    ASSERT_EQ(kt_dpa_api_init(), 0);
    EXPECT_EQ(probe(), 3);
    EXPECT_EQ(exit_output(), "");
    ASSERT_EQ(kt_dpa_api_init(), 0);
    EXPECT_EQ(probe(), 4);
    EXPECT_EQ(exit_output(), "");
    EXPECT_EQ(agent.connections(), 2);
}

#ifdef __GLIBC__
// The exchange makes the lock when it connects and unlocks it at its end without having locked
// it.  The exchanges go on as if nothing were; only the destruction tells.
TEST_F(AgentSocket, the_first_exchange_connects_and_unlocks_what_nobody_locked)
{
    ScriptedAgent agent(ruk_test::replies({{.status = 3}, {.status = 4}, {.status = 5}}));
    const WordSetting thread_word(kt_debug_print_ktdpa_thread, 0x97);
    int32_t status = 0;
    EXPECT_EQ(captured_stdout([&] { status = probe(); }), "");
    EXPECT_EQ(status, 3);
    EXPECT_GE(kt_dpa_call_fd, 0);
    ASSERT_NE(apimutex, nullptr);
    EXPECT_FALSE(is_locked(apimutex));
    EXPECT_EQ(captured_stdout([&] { status = probe(); }), "");
    EXPECT_EQ(status, 4);
    EXPECT_EQ(probe(), 5);
    EXPECT_EQ(agent.connections(), 1);
    exit_after_opening_exchange();
}

TEST_F(AgentSocket, any_negative_descriptor_connects_first)
{
    ScriptedAgent agent(ruk_test::replies({{.status = 3}, {.status = 4}}));
    AgentRequest request{};
    const WordSetting word(kt_debug_print_brel_dpa_api, 0x10);
    EXPECT_EQ(captured_stdout([&] { EXPECT_EQ(kt_dpa_socket_api(-7, &request, 56), 0); }),
              k_connecting + "kt_dpa_socket_api: Sent (0) bytes, not (56), sending (56) more\n");
    EXPECT_EQ(request.status, 3);
    EXPECT_EQ(captured_stdout([&] { EXPECT_EQ(kt_dpa_socket_api(INT32_MIN, &request, 56), 0); }),
              k_connecting + "kt_dpa_socket_api: Sent (0) bytes, not (56), sending (56) more\n");
    EXPECT_EQ(request.status, 4);
    EXPECT_EQ(agent.connections(), 2);
    kt_debug_print_brel_dpa_api = 0x87;
    exit_after_opening_exchange();
}
#endif

TEST_F(AgentSocket, a_broken_reply_closes_and_the_next_call_connects_anew)
{
    for (const size_t cut : {size_t{1}, size_t{15}, size_t{56}, size_t{59}}) {
        SCOPED_TRACE(cut);
        const Listener listener(k_agent_path);
        ASSERT_EQ(kt_dpa_api_init(), 0);
        ktdpa_mutex *const mutex = apimutex;
        const int32_t fd = kt_dpa_call_fd;
        Peer broken = listener.accept();
        broken.reply((reply(0) + "ABCD").substr(0, cut));
        broken.end_of_replies();
        char buffer[] = "abcd";
        EXPECT_EQ(kt_dpa_call_indirect1(63, 0, 0x01, buffer, 4, nullptr), 1);
        EXPECT_STREQ(buffer, "abcd");
        EXPECT_EQ(kt_dpa_call_fd, -1);
        EXPECT_FALSE(is_open(fd));
        EXPECT_EQ(apimutex, mutex);
        EXPECT_FALSE(is_locked(apimutex));
        EXPECT_FALSE(listener.has_connection());

        // The peer of the next connection answers once it is there.
        std::thread answering([&] {
            EXPECT_TRUE(eventually([&] { return listener.has_connection(); }));
            const Peer peer = listener.accept();
            peer.reply(reply(0) + "ABCD");
            EXPECT_TRUE(eventually([&] { return peer.received().size() == 60; }));
        });
        EXPECT_EQ(kt_dpa_call_indirect1(63, 0, 0x01, buffer, 4, nullptr), 0);
        answering.join();
        EXPECT_STREQ(buffer, "ABCD");
        EXPECT_EQ(apimutex, mutex);
        EXPECT_EQ(exit_output(), "");
    }
}

TEST_F(AgentSocket, a_failed_transfer_closes_the_global_and_not_the_argument)
{
    const Listener listener(k_agent_path);
    ASSERT_EQ(kt_dpa_api_init(), 0);
    const int32_t fd = kt_dpa_call_fd;
    ruk_test::Pair pair;
    pair.peer().hang_up();
    AgentRequest request{};
    EXPECT_EQ(kt_dpa_socket_api(pair.client(), &request, 56), -1);
    EXPECT_TRUE(is_open(pair.client()));
    EXPECT_FALSE(is_open(fd));
    EXPECT_EQ(kt_dpa_call_fd, -1);
    EXPECT_EQ(exit_output(), "");
}

TEST_F(AgentSocket, missing_memory_leaves_the_connection_open)
{
    const Listener listener(k_agent_path);
    ASSERT_EQ(kt_dpa_api_init(), 0);
    const Peer peer = listener.accept();
    const int32_t fd = kt_dpa_call_fd;
    std::string buffer(4041, 'a');
    for (const int nth : {1, 2}) {
        const Fault fault(Call::allocate, ENOMEM, nth);
        EXPECT_EQ(kt_dpa_call_indirect1(63, 0, 0x01, buffer.data(), 4041, nullptr), 1);
        EXPECT_EQ(kt_dpa_call_fd, fd);
    }
    EXPECT_FALSE(is_locked(apimutex));
    peer.reply(reply(8));
    EXPECT_EQ(probe(), 8);
    EXPECT_EQ(peer.received().size(), 56U);
    EXPECT_EQ(exit_output(), "");
}

TEST_F(AgentSocket, a_null_request_locks_nothing)
{
    const Listener listener(k_agent_path);
    ASSERT_EQ(kt_dpa_api_init(), 0);
    ASSERT_EQ(ktdpa_mutex_lock(apimutex), 0);
    EXPECT_EQ(kt_dpa_socket_api(kt_dpa_call_fd, nullptr, 56), -1); // would wait for ever
    EXPECT_TRUE(is_locked(apimutex));
    ASSERT_EQ(ktdpa_mutex_unlock(apimutex), 0);
    EXPECT_EQ(exit_output(), "");
}

TEST_F(AgentSocket, an_exchange_holds_the_lock_until_the_reply_is_in_place)
{
    bool locked = false;
    ScriptedAgent agent([&](const Request &request) {
        locked = is_locked(apimutex);
        return std::optional(ruk_test::reply_to(request, 0));
    });
    ASSERT_EQ(kt_dpa_api_init(), 0);
    EXPECT_EQ(probe(), 0);
    EXPECT_TRUE(locked);
    EXPECT_FALSE(is_locked(apimutex));
    EXPECT_EQ(exit_output(), "");
}

TEST_F(AgentSocket, an_exchange_waits_for_the_lock)
{
    const Listener listener(k_agent_path);
    ASSERT_EQ(kt_dpa_api_init(), 0);
    const Peer peer = listener.accept();
    peer.reply(reply(5));
    ASSERT_EQ(ktdpa_mutex_lock(apimutex), 0);
    std::atomic<bool> started{false};
    std::atomic<int32_t> status{-1};
    std::thread waiting([&] {
        started = true;
        status = probe();
    });
    EXPECT_TRUE(eventually([&] { return started.load(); }));
    EXPECT_EQ(peer.received(), "");
    EXPECT_EQ(status, -1);
    ASSERT_EQ(ktdpa_mutex_unlock(apimutex), 0);
    waiting.join();
    EXPECT_EQ(status, 5);
    EXPECT_EQ(peer.received().size(), 56U);
    EXPECT_EQ(exit_output(), "");
}

// Until this process's thread of that number sleeps.
bool is_waiting(pid_t thread)
{
    std::ifstream stat("/proc/self/task/" + std::to_string(thread) + "/stat");
    std::string line;
    return std::getline(stat, line) && line.find(") S ") != std::string::npos;
}

// The connection of before may be gone by the time that an exchange has the lock, and its number
// stand for something else of the process.
TEST_F(AgentSocket, an_exchange_that_waited_uses_the_connection_of_now)
{
    const Listener listener(k_agent_path);
    ASSERT_EQ(kt_dpa_api_init(), 0);
    listener.accept().hang_up();
    ASSERT_EQ(ktdpa_mutex_lock(apimutex), 0);
    std::atomic<pid_t> thread{0};
    std::atomic<int32_t> status{-1};
    std::thread waiting([&] {
        thread = gettid();
        status = probe();
    });
    EXPECT_TRUE(eventually([&] { return thread != 0 && is_waiting(thread); }));

    // As an exchange does that fails meanwhile; then the number is given to another socket.
    const int32_t number = kt_dpa_call_fd;
    __atomic_store_n(&kt_dpa_call_fd, -1, __ATOMIC_RELAXED);
    ruk_test::Pair other;
    ASSERT_EQ(dup2(other.client(), number), number);
    other.peer().reply(reply(9)); // or the exchange would wait for ever
    std::thread answering([&] {
        if (eventually([&] { return listener.has_connection(); }, std::chrono::seconds(2))) {
            const Peer peer = listener.accept();
            peer.reply(reply(5));
            EXPECT_TRUE(eventually([&] { return peer.received().size() == 56; }));
        }
    });
    ASSERT_EQ(ktdpa_mutex_unlock(apimutex), 0);
    waiting.join();
    answering.join();
    EXPECT_EQ(status, 5);
    EXPECT_EQ(other.peer().received(), "");
    EXPECT_TRUE(is_open(number));
    close(number);
    EXPECT_EQ(exit_output(), "");
}

// Requests larger than the socket holds would mix if two threads wrote at once.
TEST_F(AgentSocket, exchanges_of_several_threads_never_mix)
{
    constexpr int threads = 4;
    constexpr int rounds = 25;
    constexpr uint32_t size = 300000;
    ScriptedAgent agent([](const Request &request) {
        // The answer is every byte plus one.
        std::string payload = request.payload();
        for (char &c : payload) {
            ++c;
        }
        return std::optional(ruk_test::reply_to(request, request.ident(), payload));
    });
    ASSERT_EQ(kt_dpa_api_init(), 0);
    std::vector<std::thread> running;
    std::atomic<int> wrong{0};
    for (int i = 0; i < threads; ++i) {
        running.emplace_back([i, &wrong] {
            for (int round = 0; round < rounds; ++round) {
                const char letter = static_cast<char>('a' + 2 * i);
                const uint32_t length = round % 5 == 0 ? size : 40 + static_cast<uint32_t>(round);
                std::string buffer(length, letter);
                const int32_t ident = 1000 * (i + 1) + round;
                const int32_t status = kt_dpa_call_indirect1(static_cast<uint16_t>(i), ident, 0x01,
                                                             buffer.data(), length, nullptr);
                const bool right =
                    status == ident && buffer == std::string(length, static_cast<char>(letter + 1));
                wrong += right ? 0 : 1;
            }
        });
    }
    for (std::thread &thread : running) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(agent.connections(), 1);
    const std::vector<Request> requests = agent.requests();
    EXPECT_EQ(requests.size(), size_t{threads * rounds});
    for (const Request &request : requests) {
        const char letter = static_cast<char>('a' + 2 * request.opcode());
        EXPECT_EQ(request.payload().find_first_not_of(letter), std::string::npos);
        EXPECT_EQ(request.ident() / 1000, request.opcode() + 1);
    }
    EXPECT_EQ(exit_output(), "");
}

// Each peer hangs up after a few requests, so that threads meet a broken connection over and over:
// a call fails with status 1 or succeeds whole, and every descriptor is closed in the end.
TEST_F(AgentSocket, several_threads_survive_broken_connections)
{
    constexpr int threads = 4;
    constexpr int rounds = 50;
    std::atomic<int> right{0};
    std::atomic<int> failed{0};
    std::atomic<int> wrong{0};
    {
        ScriptedAgent agent([served = 0](const Request &request) mutable {
            return ++served % 7 == 0 ? std::nullopt
                                     : std::optional(ruk_test::reply_to(request, request.ident()));
        });
        ASSERT_EQ(kt_dpa_api_init(), 0);
        std::vector<std::thread> running;
        for (int i = 0; i < threads; ++i) {
            running.emplace_back([&, i] {
                for (int round = 0; round < rounds; ++round) {
                    const int32_t ident = 1000 * (i + 1) + round;
                    const int32_t status = kt_dpa_call_indirect1(63, ident, 0, nullptr, 0, nullptr);
                    ++(status == ident ? right : status == 1 ? failed : wrong);
                }
            });
        }
        for (std::thread &thread : running) {
            thread.join();
        }
        EXPECT_GT(agent.connections(), 1);
        EXPECT_EQ(exit_output(), "");
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_GT(right, 0);
    EXPECT_GT(failed, 0);
    EXPECT_EQ(right + failed, threads * rounds);
}

} // namespace

// Many threads on one connection, whose other end is killed and started anew all the time: every
// reply belongs to its request, and no status is anything but 0 and 1.
#include "ruk/agent.h"
#include "ruk/command_service.h"

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <new>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "tests/dpa/peer.h"
#include "tests/faults/distinct_exchange.h"
#include "tests/faults/faulty_agent.h"
#include "tests/support/capture.h"
#include "tests/support/eventually.h"
#include "tests/support/scripted_agent.h"

namespace
{

using namespace ruk_test;

constexpr int k_threads = 16;

// The exchanges of all threads together; the environment may ask for another number.
int exchanges()
{
    const char *wanted = getenv("RUK_THREAD_EXCHANGES");
    return wanted != nullptr ? atoi(wanted) : 100000;
}

// A process that keeps an Agent and restarts it, however busy that is, until told to let it be.
class Restarter
{
public:
    explicit Restarter(const char *path)
    {
        void *shared =
            mmap(nullptr, sizeof(Board), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        board_ = new (shared) Board;
        pid_ = fork();
        if (pid_ == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            keep_restarting(path);
        }
        EXPECT_TRUE(eventually([this] { return board_->starts > 0; }));
    }
    ~Restarter()
    {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
        munmap(board_, sizeof(Board));
    }
    Restarter(const Restarter &) = delete;
    Restarter &operator=(const Restarter &) = delete;

    // From here on the Agent stays.
    void settle() const
    {
        board_->wanted = false;
        EXPECT_TRUE(eventually([this] { return board_->settled.load(); }));
    }

    int starts() const { return board_->starts; }

private:
    struct Board {
        std::atomic<int> starts{0};
        std::atomic<bool> wanted{true};
        std::atomic<bool> settled{false};
    };

    [[noreturn]] void keep_restarting(const char *path) const
    {
        for (;;) {
            const FaultyAgent agent(path, {-1, Step::connect, Fault_kind::closed});
            ++board_->starts;
            usleep(20000);
            while (!board_->wanted) {
                board_->settled = true;
                pause();
            }
        }
    }

    Board *board_;
    pid_t pid_;
};

// Makes each exchange until it succeeds.
void exchange_all(CallForm call, int thread, int rounds, Tally &tally)
{
    for (int round = 0; round < rounds; ++round) {
        const DistinctExchange exchange(thread, round);
        for (int32_t status = 1; status == 1;) {
            std::string buffer = exchange.payload;
            status = exchange.make(call, buffer);
            tally.add(exchange, status, buffer);
        }
    }
}

void run_threads(const char *name, CallForm call, const Restarter &agent)
{
    const int rounds = exchanges() / k_threads;
    Tally tally;
    std::vector<std::thread> running;
    for (int i = 0; i < k_threads; ++i) {
        running.emplace_back([&, i] { exchange_all(call, i, rounds, tally); });
    }
    for (std::thread &thread : running) {
        thread.join();
    }
    EXPECT_EQ(tally.right, rounds * k_threads);
    EXPECT_EQ(tally.wrong_status, 0);
    EXPECT_EQ(tally.wrong_reply, 0);
    EXPECT_GT(agent.starts(), 1);
    EXPECT_GT(tally.failed, 0);
    printf("%s: %d exchanges answered, %d failed, %d starts of the Agent\n", name,
           tally.right.load(), tally.failed.load(), agent.starts());
}

int32_t probe(CallForm call)
{
    return call(63, 0, 0x01, nullptr, 0, nullptr);
}

TEST(threads, share_the_connection_to_an_agent_that_restarts)
{
    if (!is_free(k_agent_path)) {
        GTEST_SKIP() << "an Agent listens on " << k_agent_path;
    }
    const int descriptors = open_descriptors();
    // While the Agent is away every attempt says so.
    const WordSetting quiet(kt_debug_print_brel_dpa_api, 0x86);
    {
        const Restarter agent(k_agent_path);
        ASSERT_TRUE(eventually([] { return kt_dpa_api_init() == 0; }));
        run_threads("Agent", kt_dpa_call_indirect1, agent);
        agent.settle();
        probe(kt_dpa_call_indirect1); // by which a connection of before is found broken
        EXPECT_EQ(probe(kt_dpa_call_indirect1), 0);
        EXPECT_EQ(captured_stdout([] { EXPECT_EQ(kt_dpa_api_exit(), 0); }), "");
    }
    EXPECT_EQ(open_descriptors(), descriptors);
}

TEST(threads, take_turns_on_the_connection_to_a_command_service_that_restarts)
{
    if (!is_free(k_command_path)) {
        GTEST_SKIP() << "somebody listens on " << k_command_path;
    }
    const int descriptors = open_descriptors();
    const WordSetting quiet(kt_debug_print_ktrukcmd_indirect, 0x86);
    {
        const Restarter service(k_command_path);
        run_threads("command service", call_service_in_turn, service);
        service.settle();
        probe(call_service_in_turn);
        EXPECT_EQ(probe(call_service_in_turn), 0);
        EXPECT_EQ(dpa_platform_close(), 0);
    }
    EXPECT_EQ(open_descriptors(), descriptors);
}

} // namespace

// The fault matrix with many threads on the connection: the fault happens to one thread's exchange
// while the others wait for their turn.
#include "ruk/agent.h"
#include "ruk/command_service.h"

#include <atomic>
#include <thread>
#include <vector>

#include "tests/dpa/peer.h"
#include "tests/faults/distinct_exchange.h"
#include "tests/faults/matrix.h"
#include "tests/faults/sabotage.h"
#include "tests/support/capture.h"
#include "tests/support/scripted_agent.h"

namespace
{

using namespace ruk_test;

constexpr int k_threads = 6;
constexpr int k_rounds = 8; // of each thread

struct Client {
    const char *name;
    const char *path;
    CallForm call;
    int32_t (*open)();
    int32_t (*close)();
};
const Client k_clients[] = {
    {"Agent", k_agent_path, kt_dpa_call_indirect1, kt_dpa_api_init, kt_dpa_api_exit},
    {"command service", k_command_path, call_service_in_turn, [] { return 0; }, dpa_platform_close},
};

class Case
{
public:
    Case(const Client &client, Step step, Fault_kind kind, Fate fate)
        : client_(client), step_(step), kind_(kind), fate_(fate), descriptors_(open_descriptors()),
          agent_(client.path, {kind == Fault_kind::no_memory ? -1 : 1, step, kind})
    {
    }

    void run()
    {
        ASSERT_EQ(client_.open(), 0);
        const DistinctExchange first(0, 1);
        make(first);
        std::vector<std::thread> running;
        for (int i = 1; i < k_threads; ++i) {
            running.emplace_back([this, i] { wait_and_make_all(i); });
        }
        meet_the_fault();
        done_ = true;
        agent_.come_back();
        make_all(0);
        for (std::thread &thread : running) {
            thread.join();
        }
        expect_tally();
        EXPECT_EQ(client_.close(), 0);
        EXPECT_EQ(open_descriptors(), descriptors_);
    }

private:
    int32_t make(const DistinctExchange &exchange)
    {
        std::string buffer = exchange.payload;
        const int32_t status = exchange.make(client_.call, buffer);
        tally_.add(exchange, status, buffer);
        return status;
    }

    void make_all(int thread)
    {
        for (int round = 1; round <= k_rounds; ++round) {
            const DistinctExchange exchange(thread, round);
            while (make(exchange) == 1) {
            }
        }
    }

    // They come when the faulty exchange is under way, which then has the lock, or is over.
    void wait_and_make_all(int thread)
    {
        while (!done_ && agent_.requests() < 2) {
            std::this_thread::yield();
        }
        make_all(thread);
    }

    void meet_the_fault()
    {
        const DistinctExchange exchange(0, 2);
        if (step_ == Step::connect) {
            std::string buffer = exchange.payload;
            EXPECT_EQ(exchange.make(client_.call, buffer), 1); // the connection is lost
        }
        const Sabotage sabotage(agent_, step_, kind_, {});
        std::string buffer = exchange.payload;
        status_ = exchange.make(client_.call, buffer);
        is_answered_ = exchange.is_answered_by(buffer);
    }

    void expect_tally() const
    {
        EXPECT_EQ(tally_.right, k_threads * k_rounds + 1);
        EXPECT_EQ(tally_.wrong_status, 0);
        EXPECT_EQ(tally_.wrong_reply, 0);
        switch (fate_) {
        case Fate::wrong_status:
            EXPECT_EQ(status_, 0x5a5a5a5a);
            EXPECT_EQ(tally_.failed, 0);
            break;
        case Fate::wrong_payload:
            EXPECT_EQ(status_, 0);
            EXPECT_FALSE(is_answered_);
            EXPECT_EQ(tally_.failed, 0);
            break;
        case Fate::whole:
            EXPECT_EQ(status_, 0);
            EXPECT_TRUE(is_answered_);
            EXPECT_EQ(tally_.failed, 0);
            break;
        case Fate::whole_then_end:
            EXPECT_EQ(status_, 0);
            EXPECT_TRUE(is_answered_);
            EXPECT_GE(tally_.failed, 1);
            break;
        case Fate::no_send_block: // which costs nobody else anything
            EXPECT_EQ(status_, 1);
            EXPECT_EQ(tally_.failed, 0);
            break;
        default:
            EXPECT_TRUE(step_ == Step::connect || status_ == 1);
        }
    }

    const Client &client_;
    Step step_;
    Fault_kind kind_;
    Fate fate_;
    int descriptors_;
    FaultyAgent agent_;
    std::atomic<bool> done_{false};
    Tally tally_;
    int32_t status_ = -1;
    bool is_answered_ = false;
};

TEST(fault_matrix, many_threads_on_one_connection)
{
    if (!is_free(k_agent_path) || !is_free(k_command_path)) {
        GTEST_SKIP() << "somebody listens on the sockets";
    }
    // While nobody listens every attempt says so.
    const WordSetting quiet_agent(kt_debug_print_brel_dpa_api, 0x86);
    const WordSetting quiet_service(kt_debug_print_ktrukcmd_indirect, 0x86);
    Matrix matrix("many threads");
    for (const Client &client : k_clients) {
        matrix.run(client.name, {.has_threads = true}, [&](Step step, Fault_kind kind, Fate fate) {
            Case(client, step, kind, fate).run();
        });
    }
    EXPECT_EQ(matrix.combinations(), 156);
}

} // namespace

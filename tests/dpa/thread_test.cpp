// Thread wrappers: names, creation, cancellation, who owns the handle.
#include "ruk/thread.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <pthread.h>
#include <string>
#include <sys/prctl.h>
#include <unistd.h>

#include "tests/dpa/faults.h"
#include "tests/dpa/thread_words.h"
#include "tests/support/eventually.h"

namespace
{

using ruk_test::Blocks;
using ruk_test::Call;
using ruk_test::captured_stdout;
using ruk_test::eventually;
using ruk_test::expect_classed;
using ruk_test::expect_with_words;
using ruk_test::Fault;
using ruk_test::shown;
using ruk_test::WordSetting;

// Restores the calling thread's name.
class NameGuard
{
public:
    NameGuard() { prctl(PR_GET_NAME, name_); }
    ~NameGuard() { prctl(PR_SET_NAME, name_); }
    NameGuard(const NameGuard &) = delete;
    NameGuard &operator=(const NameGuard &) = delete;

private:
    char name_[16] = {};
};

std::string own_name()
{
    char name[16] = {};
    prctl(PR_GET_NAME, name);
    return name;
}

TEST(thread_layer, starts_with_the_default_trace_word)
{
    EXPECT_EQ(kt_debug_print_ktdpa_thread, 0x87U);
}

TEST(ktdpa_set_thread_name, cuts_at_15_characters)
{
    const std::pair<std::string, std::string> rows[] = {
        {"", ""},
        {"a", "a"},
        {"fourteen_chars", "fourteen_chars"},
        {"fifteen_letters", "fifteen_letters"},
        {"sixteen_letters_", "sixteen_letters"},
        {"12345678901234567890", "123456789012345"},
        {"with blank;%d\t\n", "with blank;%d\t\n"},
    };
    const NameGuard guard;
    for (const auto &[name, expected] : rows) {
        SCOPED_TRACE(name);
        // On the heap without a byte to spare.
        const std::unique_ptr<char[]> exact(new char[name.size() + 1]);
        memcpy(exact.get(), name.c_str(), name.size() + 1);
        EXPECT_EQ(ktdpa_set_thread_name(exact.get()), 0);
        EXPECT_EQ(own_name(), expected);
    }
    // No terminator is looked for behind the 15th character.
    const std::unique_ptr<char[]> unterminated(new char[15]);
    memcpy(unterminated.get(), "no_terminator_x", 15);
    EXPECT_EQ(ktdpa_set_thread_name(unterminated.get()), 0);
    EXPECT_EQ(own_name(), "no_terminator_x");
}

TEST(ktdpa_set_thread_name, takes_no_name_for_an_empty_one)
{
    const NameGuard guard;
    ktdpa_set_thread_name("before");
    EXPECT_EQ(ktdpa_set_thread_name(nullptr), 0);
    EXPECT_EQ(own_name(), "");
}

// A thread that says its name and waits to be let go or cancelled.
struct Worker {
    std::string name;
    std::atomic<bool> started{false};
    std::atomic<bool> may_end{false};
    std::atomic<bool> ended{false};

    // Apart from run(), whose frame then holds nothing: a cancellation drops that frame without
    // telling AddressSanitizer that the objects in it have gone.
    [[gnu::noinline]] void introduce()
    {
        name = own_name();
        started = true;
    }

    static void *run(void *argument)
    {
        auto *const worker = static_cast<Worker *>(argument);
        worker->introduce();
        while (!worker->may_end) {
            usleep(1000); // where a cancellation takes effect
        }
        worker->ended = true;
        return argument;
    }
};

TEST(ktdpa_thread_create, starts_a_joinable_thread_that_inherits_the_name)
{
    const NameGuard guard;
    Worker worker;
    const Blocks blocks;
    const WordSetting word(kt_debug_print_ktdpa_thread, 0xff);
    EXPECT_EQ(captured_stdout([&] {
                  EXPECT_EQ(ktdpa_thread_create(Worker::run, &worker, "a_name_of_20_letters"), 0);
              }),
              "");
    EXPECT_EQ(own_name(), "a_name_of_20_le"); // the caller keeps it
    EXPECT_TRUE(eventually([&] { return worker.started.load(); }));
    EXPECT_EQ(worker.name, "a_name_of_20_le");

    // Nobody but the test, which watched the allocation, can find the handle: it was not freed,
    // and the thread can still be joined.
    EXPECT_EQ(blocks.held(), 1);
    auto *const handle = static_cast<ktdpa_thread *>(blocks.latest());
    worker.may_end = true;
    void *result = nullptr;
    ASSERT_EQ(pthread_join(*handle, &result), 0);
    EXPECT_EQ(result, &worker); // the routine got its argument
    free(handle);
}

TEST(ktdpa_thread_create, reports_a_null_routine_after_naming)
{
    const NameGuard guard;
    const std::string classed =
        "DPATHREAD_INV_PARAM ktdpa_thread_create: Invalid args: func (nil) \n";
    const std::string plain = "ktdpa_thread_create: Invalid arguments: func (nil)\n";
    expect_with_words({{0x87, classed + plain}, {0x80, classed}, {0x01, plain}, {0x7e, ""}}, 22,
                      [] {
                          ktdpa_set_thread_name("before");
                          const int32_t result = ktdpa_thread_create(nullptr, nullptr, "after");
                          EXPECT_EQ(own_name(), "after");
                          return result;
                      });
}

TEST(ktdpa_thread_create, reports_missing_memory)
{
    const NameGuard guard;
    const Blocks blocks;
    const std::string classed =
        "DPATHREAD_MALLOC_ERR ktdpa_thread_create: Failed to alloc thread struct.\n";
    const std::string plain = "ktdpa_thread_create: Failed to alloc thread struct\n";
    expect_with_words({{0x87, classed + plain}, {0x80, classed}, {0x01, plain}, {0x7e, ""}}, 12,
                      [] {
                          const Fault fault(Call::allocate, ENOMEM);
                          return ktdpa_thread_create(Worker::run, nullptr, "none");
                      });
    EXPECT_EQ(blocks.allocated(), 0);
}

TEST(ktdpa_thread_create, reports_a_thread_that_does_not_start)
{
    const NameGuard guard;
    const Blocks blocks;
    const std::string classed =
        "DPATHREAD_API_ERR ktdpa_thread_create: Failed to create thread. Err 11 \n";
    const std::string plain = "ktdpa_thread_create: Failed to create thread. Err 11 \n";
    expect_with_words({{0x87, classed + plain}, {0x80, classed}, {0x01, plain}, {0x7e, ""}}, 11,
                      [] {
                          const Fault fault(Call::thread_create, EAGAIN);
                          return ktdpa_thread_create(Worker::run, nullptr, "none");
                      });
    EXPECT_EQ(blocks.allocated(), 4);
    EXPECT_EQ(blocks.held(), 0);
}

TEST(ktdpa_helper_thread_create, hands_out_the_thread_that_inherits_the_name)
{
    const NameGuard guard;
    Worker worker;
    const Blocks blocks;
    auto *thread = reinterpret_cast<ktdpa_thread *>(0x1);
    const WordSetting word(kt_debug_print_ktdpa_thread, 0xff);
    EXPECT_EQ(captured_stdout([&] {
                  EXPECT_EQ(ktdpa_helper_thread_create(&thread, Worker::run, &worker,
                                                       "helper_with_a_name"),
                            0);
              }),
              "");
    EXPECT_EQ(own_name(), "helper_with_a_n");
    EXPECT_TRUE(eventually([&] { return worker.started.load(); }));
    EXPECT_EQ(worker.name, "helper_with_a_n");
    EXPECT_EQ(thread, blocks.latest());
    EXPECT_EQ(blocks.held(), 1);
    worker.may_end = true;
    void *result = nullptr;
    ASSERT_EQ(pthread_join(*thread, &result), 0);
    EXPECT_EQ(result, &worker);
    free(thread);
}

TEST(ktdpa_helper_thread_create, reports_each_null_argument_after_naming)
{
    const NameGuard guard;
    auto *thread = reinterpret_cast<ktdpa_thread *>(0x1);
    const auto message = [](auto *out, auto *routine) {
        return "DPATHREAD_INV_PARAM ktdpa_helper_thread_create: Invalid args:thread " + shown(out) +
               " func " + shown(routine) + " \n";
    };
    void *(*const none)(void *) = nullptr;
    ktdpa_thread **const nowhere = nullptr;
    struct {
        ktdpa_thread **out;
        void *(*routine)(void *);
        std::string printed;
    } const rows[] = {
        {nowhere, Worker::run, message(nowhere, &Worker::run)},
        {&thread, none, message(&thread, none)},
        {nowhere, none, message(nowhere, none)},
    };
    for (const auto &row : rows) {
        expect_classed(row.printed, 22, [&] {
            ktdpa_set_thread_name("before");
            const int32_t result =
                ktdpa_helper_thread_create(row.out, row.routine, nullptr, "after");
            EXPECT_EQ(own_name(), "after");
            return result;
        });
    }
    EXPECT_EQ(thread, reinterpret_cast<ktdpa_thread *>(0x1)); // left alone
}

TEST(ktdpa_helper_thread_create, leaves_null_behind_on_failure)
{
    const NameGuard guard;
    const Blocks blocks;
    struct {
        Call call;
        int error;
        std::string printed;
    } const rows[] = {
        {Call::allocate, ENOMEM,
         "DPATHREAD_MALLOC_ERR ktdpa_helper_thread_create: Failed to alloc thread struct.\n"},
        {Call::thread_create, EAGAIN,
         "DPATHREAD_API_ERR ktdpa_helper_thread_create: Failed to create thread. Err 11 \n"},
    };
    for (const auto &row : rows) {
        expect_classed(row.printed, row.error, [&] {
            auto *thread = reinterpret_cast<ktdpa_thread *>(0x1);
            const Fault fault(row.call, row.error);
            const int32_t result =
                ktdpa_helper_thread_create(&thread, Worker::run, nullptr, "none");
            EXPECT_EQ(thread, nullptr);
            return result;
        });
    }
    EXPECT_EQ(blocks.allocated(), 3);
    EXPECT_EQ(blocks.held(), 0);
}

// A running helper thread for the tests of its cancellation.
class HelperThread : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(ktdpa_helper_thread_create(&thread, Worker::run, &worker, "helper"), 0);
        id = *thread;
        ASSERT_TRUE(eventually([&] { return worker.started.load(); }));
    }

    void TearDown() override { EXPECT_EQ(blocks.held(), 0); }

    // What cancelling prints; its result is stored.
    std::string cancel(uint32_t word_bits)
    {
        const WordSetting word(kt_debug_print_ktdpa_thread, word_bits);
        return captured_stdout([&] { result = ktdpa_helper_thread_cancel(thread); });
    }

    void join_by_itself()
    {
        worker.may_end = true;
        ASSERT_EQ(pthread_join(id, nullptr), 0);
    }

    NameGuard guard;
    Blocks blocks;
    Worker worker;
    ktdpa_thread *thread = nullptr;
    pthread_t id{};
    int32_t result = -1;
};

constexpr const char *k_wait_failed_0 = "DPATHREAD_API_ERR ktdpa_helper_thread_cancel: "
                                        "Failed to wait on helper thread terminate ret 0 \n";

TEST_F(HelperThread, cancelled_cleanly_is_reported_and_keeps_its_handle)
{
    EXPECT_EQ(cancel(0x87), k_wait_failed_0);
    EXPECT_EQ(result, 0);
    EXPECT_EQ(blocks.held(), 1);
    free(thread);
}

TEST_F(HelperThread, cancelled_cleanly_says_nothing_without_bit_0x80)
{
    EXPECT_EQ(cancel(0x7f), "");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(blocks.held(), 1);
    free(thread);
}

// Ended, and nobody has joined it: the join inside is a clean one.
TEST_F(HelperThread, that_has_ended_unjoined_is_cancelled_like_a_running_one)
{
    worker.may_end = true;
    EXPECT_TRUE(eventually([&] { return worker.ended.load(); }));
    EXPECT_EQ(cancel(0x80), k_wait_failed_0);
    EXPECT_EQ(result, 0);
    EXPECT_EQ(blocks.held(), 1);
    free(thread);
}

TEST_F(HelperThread, joined_elsewhere_gives_its_handle_back)
{
    join_by_itself();
    EXPECT_EQ(cancel(0x87), "");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(blocks.held(), 0); // freed
}

TEST_F(HelperThread, that_cannot_be_cancelled_gives_its_handle_back)
{
    std::string printed;
    {
        const Fault fault(Call::thread_cancel, ESRCH);
        printed = cancel(0x10);
    }
    EXPECT_EQ(printed, "ktdpa_helper_thread_cancel: Failed to cancel thread 3\n");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(blocks.held(), 0);
    join_by_itself();
}

TEST_F(HelperThread, that_cannot_be_cancelled_is_silent_by_default)
{
    std::string printed;
    {
        const Fault fault(Call::thread_cancel, EPERM);
        printed = cancel(0xef);
    }
    EXPECT_EQ(printed, "");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(blocks.held(), 0);
    join_by_itself();
}

TEST_F(HelperThread, that_vanished_before_the_join_gives_its_handle_back)
{
    std::string printed;
    {
        const Fault fault(Call::thread_join, ESRCH);
        printed = cancel(0xff);
    }
    EXPECT_EQ(printed, "");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(blocks.held(), 0);
    join_by_itself();
}

TEST_F(HelperThread, that_cannot_be_joined_keeps_its_handle)
{
    std::string printed;
    {
        const Fault fault(Call::thread_join, EINVAL);
        printed = cancel(0x87);
    }
    EXPECT_EQ(printed, "DPATHREAD_API_ERR ktdpa_helper_thread_cancel: "
                       "Failed to wait on helper thread terminate ret 22 \n");
    EXPECT_EQ(result, 22);
    EXPECT_EQ(blocks.held(), 1);
    free(thread);
    join_by_itself();
}

TEST(ktdpa_helper_thread_cancel, reports_a_null_argument)
{
    expect_classed("DPATHREAD_INV_PARAM ktdpa_helper_thread_cancel: Invalid Arg \n", 22,
                   [] { return ktdpa_helper_thread_cancel(nullptr); });
}

} // namespace

// Mutex and condition wrappers: results, messages, ownership.
#include "ruk/thread.h"

#include <atomic>
#include <cerrno>
#include <pthread.h>
#include <string>
#include <thread>
#include <vector>

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
using ruk_test::expect_traced;
using ruk_test::expect_with_words;
using ruk_test::Fault;
using ruk_test::shown;
using ruk_test::WordSetting;

ktdpa_mutex *new_mutex()
{
    ktdpa_mutex *mutex = nullptr;
    EXPECT_EQ(ktdpa_mutex_create(&mutex), 0);
    return mutex;
}

ktdpa_cond *new_condition()
{
    ktdpa_cond *condition = nullptr;
    EXPECT_EQ(ktdpa_cond_init(&condition), 0);
    return condition;
}

// A mutex that reports its misuse, which a default one does not.
class CheckingMutex
{
public:
    CheckingMutex()
    {
        pthread_mutexattr_t attributes;
        pthread_mutexattr_init(&attributes);
        pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_ERRORCHECK);
        pthread_mutex_init(&mutex_, &attributes);
        pthread_mutexattr_destroy(&attributes);
    }
    ~CheckingMutex() { pthread_mutex_destroy(&mutex_); }
    CheckingMutex(const CheckingMutex &) = delete;
    CheckingMutex &operator=(const CheckingMutex &) = delete;
    ktdpa_mutex *get() { return &mutex_; }

private:
    pthread_mutex_t mutex_;
};

timespec in_seconds(time_t seconds)
{
    timespec deadline{};
    clock_gettime(CLOCK_REALTIME, &deadline);
    deadline.tv_sec += seconds;
    return deadline;
}

TEST(ktdpa_mutex_create, gives_an_unlocked_mutex_on_the_heap)
{
    const Blocks blocks;
    auto *mutex = reinterpret_cast<ktdpa_mutex *>(0x1);
    EXPECT_EQ(captured_stdout([&] { EXPECT_EQ(ktdpa_mutex_create(&mutex), 0); }), "");
    EXPECT_EQ(mutex, blocks.latest());
    EXPECT_EQ(blocks.held(), 1);
    EXPECT_EQ(ktpda_mutex_trylock(mutex), 0);
    EXPECT_EQ(ktpda_mutex_trylock(mutex), EBUSY); // not a recursive one
    EXPECT_EQ(ktdpa_mutex_unlock(mutex), 0);
    EXPECT_EQ(ktdpa_mutex_destroy(mutex), 0);
    EXPECT_EQ(blocks.held(), 0);
}

TEST(ktdpa_mutex_create, reports_a_null_argument)
{
    expect_classed("DPATHREAD_INV_PARAM ktdpa_mutex_create: Invalid Arg\n", 22,
                   [] { return ktdpa_mutex_create(nullptr); });
}

TEST(ktdpa_mutex_create, leaves_null_behind_without_memory)
{
    const Blocks blocks;
    expect_classed("DPATHREAD_MALLOC_ERR ktdpa_mutex_create: Failed to alloc mutex\n", 12, [] {
        const Fault fault(Call::allocate, ENOMEM);
        auto *mutex = reinterpret_cast<ktdpa_mutex *>(0x1);
        const int32_t result = ktdpa_mutex_create(&mutex);
        EXPECT_EQ(mutex, nullptr);
        return result;
    });
    EXPECT_EQ(blocks.held(), 0);
}

TEST(ktdpa_mutex_create, frees_what_cannot_be_initialised)
{
    const Blocks blocks;
    expect_classed("DPATHREAD_API_ERR ktdpa_mutex_create: Failed to init mutex. Err 11 \n", 11, [] {
        const Fault fault(Call::mutex_init, EAGAIN);
        auto *mutex = reinterpret_cast<ktdpa_mutex *>(0x1);
        const int32_t result = ktdpa_mutex_create(&mutex);
        EXPECT_EQ(mutex, nullptr);
        return result;
    });
    EXPECT_EQ(blocks.allocated(), 3);
    EXPECT_EQ(blocks.held(), 0);
}

TEST(ktdpa_mutex_destroy, reports_a_null_argument)
{
    expect_classed("DPATHREAD_INV_PARAM ktdpa_mutex_destroy: Invalid Arg \n", 22,
                   [] { return ktdpa_mutex_destroy(nullptr); });
}

TEST(ktdpa_mutex_destroy, leaves_a_mutex_usable_that_cannot_be_destroyed)
{
    const Blocks blocks;
    ktdpa_mutex *const mutex = new_mutex();
    expect_classed("DPATHREAD_API_ERR ktdpa_mutex_destroy: Failed to destroy mutex. Err 16 \n", 16,
                   [&] {
                       const Fault fault(Call::mutex_destroy, EBUSY);
                       return ktdpa_mutex_destroy(mutex);
                   });
    EXPECT_EQ(blocks.held(), 1);
    EXPECT_EQ(ktdpa_mutex_lock(mutex), 0);
    EXPECT_EQ(ktdpa_mutex_unlock(mutex), 0);
    EXPECT_EQ(ktdpa_mutex_destroy(mutex), 0);
    EXPECT_EQ(blocks.held(), 0);
}

TEST(ktdpa_mutex_lock, locks_and_unlocks_without_a_word)
{
    ktdpa_mutex *const mutex = new_mutex();
    const WordSetting word(kt_debug_print_ktdpa_thread, 0xff);
    EXPECT_EQ(captured_stdout([&] {
                  EXPECT_EQ(ktdpa_mutex_lock(mutex), 0);
                  EXPECT_EQ(ktpda_mutex_trylock(mutex), EBUSY);
                  EXPECT_EQ(ktdpa_mutex_unlock(mutex), 0);
                  EXPECT_EQ(ktpda_mutex_trylock(mutex), 0);
                  EXPECT_EQ(ktdpa_mutex_unlock(mutex), 0);
              }),
              "");
    EXPECT_EQ(ktdpa_mutex_destroy(mutex), 0);
}

TEST(ktdpa_mutex_lock, keeps_threads_apart)
{
    constexpr int threads = 4;
    constexpr int rounds = 2000;
    ktdpa_mutex *const mutex = new_mutex();
    int counter = 0; // guarded by mutex
    std::vector<std::thread> running;
    for (int i = 0; i < threads; ++i) {
        running.emplace_back([&] {
            for (int round = 0; round < rounds; ++round) {
                ktdpa_mutex_lock(mutex);
                ++counter;
                ktdpa_mutex_unlock(mutex);
            }
        });
    }
    for (std::thread &thread : running) {
        thread.join();
    }
    EXPECT_EQ(counter, threads * rounds);
    EXPECT_EQ(ktdpa_mutex_destroy(mutex), 0);
}

TEST(ktdpa_mutex_lock, traces_a_failure)
{
    CheckingMutex mutex;
    ASSERT_EQ(ktdpa_mutex_lock(mutex.get()), 0);
    expect_traced("ktdpa_mutex_lock: Failed to lock mutex. Err 35 \n", EDEADLK,
                  [&] { return ktdpa_mutex_lock(mutex.get()); });
    ASSERT_EQ(ktdpa_mutex_unlock(mutex.get()), 0);
}

TEST(ktpda_mutex_trylock, says_nothing_when_it_fails)
{
    ktdpa_mutex *const mutex = new_mutex();
    ASSERT_EQ(ktdpa_mutex_lock(mutex), 0);
    expect_with_words({{0xff, ""}}, 16, [&] { return ktpda_mutex_trylock(mutex); });
    ASSERT_EQ(ktdpa_mutex_unlock(mutex), 0);
    EXPECT_EQ(ktdpa_mutex_destroy(mutex), 0);
}

TEST(ktdpa_cond_init, gives_a_condition_variable_on_the_heap)
{
    const Blocks blocks;
    auto *condition = reinterpret_cast<ktdpa_cond *>(0x1);
    EXPECT_EQ(captured_stdout([&] { EXPECT_EQ(ktdpa_cond_init(&condition), 0); }), "");
    EXPECT_EQ(condition, blocks.latest());
    EXPECT_EQ(blocks.held(), 1);
    EXPECT_EQ(ktdpa_cond_destroy(condition), 0);
    EXPECT_EQ(blocks.held(), 0);
}

TEST(ktdpa_cond_init, reports_a_null_argument)
{
    expect_classed("DPATHREAD_INV_PARAM ktdpa_cond_init: Invalig Arg\n", 22,
                   [] { return ktdpa_cond_init(nullptr); });
}

TEST(ktdpa_cond_init, leaves_null_behind_without_memory)
{
    expect_classed("DPATHREAD_MALLOC_ERR ktdpa_cond_init: Failed to alloc condvar\n", 12, [] {
        const Fault fault(Call::allocate, ENOMEM);
        auto *condition = reinterpret_cast<ktdpa_cond *>(0x1);
        const int32_t result = ktdpa_cond_init(&condition);
        EXPECT_EQ(condition, nullptr);
        return result;
    });
}

TEST(ktdpa_cond_init, frees_what_cannot_be_initialised)
{
    for (const uint32_t bits : {0x80U, 0x7fU}) {
        const WordSetting word(kt_debug_print_ktdpa_thread, bits);
        const Blocks blocks;
        auto *condition = reinterpret_cast<ktdpa_cond *>(0x1);
        int32_t result = 0;
        const std::string printed = captured_stdout([&] {
            const Fault fault(Call::cond_init, EAGAIN);
            result = ktdpa_cond_init(&condition);
        });
        EXPECT_EQ(printed,
                  bits == 0x80
                      ? "DPATHREAD_API_ERR ktdpa_cond_init: Failed to initialize. CondVar " +
                            shown(blocks.latest()) + " Err 11 \n"
                      : "");
        EXPECT_EQ(result, 11);
        EXPECT_EQ(condition, nullptr);
        EXPECT_EQ(blocks.allocated(), 1);
        EXPECT_EQ(blocks.held(), 0);
    }
}

TEST(ktdpa_cond_destroy, reports_a_null_argument)
{
    expect_classed("DPATHREAD_INV_PARAM ktdpa_cond_destroy: Invalid Arg \n", 22,
                   [] { return ktdpa_cond_destroy(nullptr); });
}

TEST(ktdpa_cond_destroy, leaves_the_condition_as_it_is_on_failure)
{
    const Blocks blocks;
    ktdpa_cond *const condition = new_condition();
    expect_classed("DPATHREAD_API_ERR ktdpa_cond_destroy: Failed to Destroy. condvar " +
                       shown(condition) + " Err 16 \n",
                   16, [&] {
                       const Fault fault(Call::cond_destroy, EBUSY);
                       return ktdpa_cond_destroy(condition);
                   });
    EXPECT_EQ(blocks.held(), 1);
    EXPECT_EQ(ktdpa_cond_destroy(condition), 0);
    EXPECT_EQ(blocks.held(), 0);
}

TEST(ktdpa_cond, reports_each_null_argument)
{
    ktdpa_mutex *const mutex = new_mutex();
    ktdpa_cond *const condition = new_condition();
    const timespec deadline{};
    const auto args = [](const char *function, auto *c, auto *m) {
        return std::string("DPATHREAD_INV_PARAM ") + function + ": Invalid Args condvar " +
               shown(c) + " mutex " + shown(m);
    };
    using Function = int32_t (*)(ktdpa_cond *, ktdpa_mutex *);
    const std::pair<const char *, Function> functions[] = {
        {"ktdpa_cond_signal", ktdpa_cond_signal},
        {"ktdpa_cond_wait", ktdpa_cond_wait},
    };
    struct Row {
        ktdpa_cond *condition;
        ktdpa_mutex *mutex;
    } const rows[] = {
        {nullptr, mutex},
        {condition, nullptr},
        {nullptr, nullptr},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(&row - rows);
        for (const auto &[name, function] : functions) {
            expect_classed(args(name, row.condition, row.mutex) + "\n", 22,
                           [&, call = function] { return call(row.condition, row.mutex); });
        }
        expect_classed(args("ktdpa_cond_timedwait", row.condition, row.mutex) + " tspec " +
                           shown(const_cast<timespec *>(&deadline)) + "\n",
                       22,
                       [&] { return ktdpa_cond_timedwait(row.condition, row.mutex, &deadline); });
    }
    expect_classed(args("ktdpa_cond_timedwait", condition, mutex) + " tspec (nil)\n", 22,
                   [&] { return ktdpa_cond_timedwait(condition, mutex, nullptr); });
    EXPECT_EQ(ktpda_mutex_trylock(mutex), 0); // nothing was locked
    ktdpa_mutex_unlock(mutex);
    EXPECT_EQ(ktdpa_cond_destroy(condition), 0);
    EXPECT_EQ(ktdpa_mutex_destroy(mutex), 0);
}

TEST(ktdpa_cond_signal, locks_and_unlocks_the_mutex)
{
    // The lock fails because the caller holds the mutex; the unlock then takes it away.
    CheckingMutex mutex;
    ktdpa_cond *const condition = new_condition();
    const WordSetting word(kt_debug_print_ktdpa_thread, 0x10);
    ASSERT_EQ(ktdpa_mutex_lock(mutex.get()), 0);
    int32_t result = -1;
    EXPECT_EQ(captured_stdout([&] { result = ktdpa_cond_signal(condition, mutex.get()); }),
              "ktdpa_mutex_lock: Failed to lock mutex. Err 35 \n");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(ktpda_mutex_trylock(mutex.get()), 0);
    EXPECT_EQ(ktdpa_mutex_unlock(mutex.get()), 0);
    EXPECT_EQ(ktdpa_cond_destroy(condition), 0);
}

TEST(ktdpa_cond_signal, gives_0_and_traces_when_the_signal_failed)
{
    ktdpa_mutex *const mutex = new_mutex();
    ktdpa_cond *const condition = new_condition();
    expect_traced("ktdpa_cond_signal: retval 22 \n", 0, [&] {
        const Fault fault(Call::cond_signal, EINVAL);
        return ktdpa_cond_signal(condition, mutex);
    });
    EXPECT_EQ(ktpda_mutex_trylock(mutex), 0);
    ktdpa_mutex_unlock(mutex);
    EXPECT_EQ(ktdpa_cond_destroy(condition), 0);
    EXPECT_EQ(ktdpa_mutex_destroy(mutex), 0);
}

TEST(ktdpa_cond_wait, waits_for_the_signal_with_the_mutex_held)
{
    ktdpa_mutex *const mutex = new_mutex();
    ktdpa_cond *const condition = new_condition();
    bool ready = false; // both guarded by mutex
    bool seen = false;
    std::atomic<bool> waiting{false};
    std::thread waiter([&] {
        ktdpa_mutex_lock(mutex);
        waiting = true;
        while (!ready) {
            EXPECT_EQ(ktdpa_cond_wait(condition, mutex), 0);
            EXPECT_EQ(ktpda_mutex_trylock(mutex), EBUSY); // held again
        }
        seen = true;
        ktdpa_mutex_unlock(mutex);
    });
    EXPECT_TRUE(eventually([&] { return waiting.load(); }));
    // The waiter holds the mutex from before it said so until it waits.
    ktdpa_mutex_lock(mutex);
    EXPECT_FALSE(seen);
    ready = true;
    ktdpa_mutex_unlock(mutex);
    EXPECT_EQ(ktdpa_cond_signal(condition, mutex), 0);
    waiter.join();
    EXPECT_TRUE(seen);
    EXPECT_EQ(ktdpa_cond_destroy(condition), 0);
    EXPECT_EQ(ktdpa_mutex_destroy(mutex), 0);
}

TEST(ktdpa_cond_timedwait, gives_0_after_the_deadline_and_leaves_the_mutex_unlocked)
{
    ktdpa_mutex *const mutex = new_mutex();
    ktdpa_cond *const condition = new_condition();
    const timespec long_past{.tv_sec = 1, .tv_nsec = 0};
    const timespec just_past = in_seconds(-1);
    const timespec now = in_seconds(0);
    for (const timespec *deadline : {&long_past, &just_past, &now}) {
        expect_traced("ktdpa_cond_timedwait: retval 110 \n", 0,
                      [&] { return ktdpa_cond_timedwait(condition, mutex, deadline); });
        EXPECT_EQ(ktpda_mutex_trylock(mutex), 0);
        EXPECT_EQ(ktdpa_mutex_unlock(mutex), 0);
    }
    const timespec malformed{.tv_sec = 1, .tv_nsec = 1000000000};
    expect_traced("ktdpa_cond_timedwait: retval 22 \n", 0,
                  [&] { return ktdpa_cond_timedwait(condition, mutex, &malformed); });
    EXPECT_EQ(ktpda_mutex_trylock(mutex), 0);
    EXPECT_EQ(ktdpa_mutex_unlock(mutex), 0);
    EXPECT_EQ(ktdpa_cond_destroy(condition), 0);
    EXPECT_EQ(ktdpa_mutex_destroy(mutex), 0);
}

TEST(ktdpa_cond_timedwait, ends_with_a_signal_long_before_the_deadline)
{
    ktdpa_mutex *const mutex = new_mutex();
    ktdpa_cond *const condition = new_condition();
    const timespec deadline = in_seconds(600);
    std::atomic<bool> done{false};
    std::thread waiter([&] {
        EXPECT_EQ(ktdpa_cond_timedwait(condition, mutex, &deadline), 0);
        done = true;
    });
    // A signal before the wait is lost, so it is repeated.
    EXPECT_TRUE(eventually([&] {
        EXPECT_EQ(ktdpa_cond_signal(condition, mutex), 0);
        return done.load();
    }));
    waiter.join();
    EXPECT_EQ(ktpda_mutex_trylock(mutex), 0);
    EXPECT_EQ(ktdpa_mutex_unlock(mutex), 0);
    EXPECT_EQ(ktdpa_cond_destroy(condition), 0);
    EXPECT_EQ(ktdpa_mutex_destroy(mutex), 0);
}

// Misuse of a mutex, which ThreadSanitizer rightly reports.
#ifndef __SANITIZE_THREAD__
TEST(ktdpa_mutex_destroy, refuses_a_locked_mutex)
{
    ktdpa_mutex *const mutex = new_mutex();
    ASSERT_EQ(ktdpa_mutex_lock(mutex), 0);
    expect_classed("DPATHREAD_API_ERR ktdpa_mutex_destroy: Failed to destroy mutex. Err 16 \n", 16,
                   [&] { return ktdpa_mutex_destroy(mutex); });
    ASSERT_EQ(ktdpa_mutex_unlock(mutex), 0);
    EXPECT_EQ(ktdpa_mutex_destroy(mutex), 0);
}

TEST(ktdpa_mutex_unlock, traces_a_failure)
{
    CheckingMutex mutex;
    ASSERT_EQ(ktdpa_mutex_lock(mutex.get()), 0);
    std::thread([&] { // which is not the owner
        expect_traced("ktdpa_mutex_unlock: Failed to Unlock mutex. Err 1 \n", EPERM,
                      [&] { return ktdpa_mutex_unlock(mutex.get()); });
    })
        .join();
    ASSERT_EQ(ktdpa_mutex_unlock(mutex.get()), 0);
}

TEST(ktdpa_cond_wait, gives_0_and_traces_when_the_wait_failed)
{
    CheckingMutex mutex; // which the caller does not hold
    ktdpa_cond *const condition = new_condition();
    expect_traced("ktdpa_cond_wait: retval 1 \n", 0,
                  [&] { return ktdpa_cond_wait(condition, mutex.get()); });
    EXPECT_EQ(ktdpa_cond_destroy(condition), 0);
}
#endif

} // namespace

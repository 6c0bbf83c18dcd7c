// Memory refused at every allocation, one after the other: results, messages, and nothing leaked.
#include "ruk/agent.h"
#include "ruk/command_service.h"
#include "ruk/front_end.h"
#include "ruk/thread.h"

#include <cstdlib>
#include <optional>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "tests/dpa/peer.h"
#include "tests/faults/allocator.h"
#include "tests/faults/faulty_agent.h"
#include "tests/faults/texts.h"
#include "tests/support/capture.h"
#include "tests/support/help_text.h"
#include "tests/support/scripted_agent.h"

// rukcmd/main.cpp under another name.
int ruklog_main(int argc, char **argv);

namespace
{

using namespace ruk_test;

const Play k_no_fault{-1, Step::connect, Fault_kind::closed};

// The default and the traces.
constexpr uint32_t k_traced = 0x97;

// A call that allocates: what it gives and prints when its allocations are refused in turn, and its
// result when none is.
struct Refusal {
    int32_t result;
    std::string printed;
};
struct Row {
    const char *name;
    int32_t (*call)();
    std::vector<Refusal> refusals;
    int32_t result;
};

int32_t agent_exchange(size_t payload)
{
    std::string buffer(payload, 'a');
    const int32_t status =
        kt_dpa_call_indirect1(300, 0, 0x01, buffer.data(), static_cast<uint32_t>(payload), nullptr);
    EXPECT_EQ(buffer, std::string(payload, status == 0 ? 'b' : 'a'));
    return status;
}

int32_t service_exchange(size_t payload)
{
    std::string buffer(payload, 'a');
    const int32_t status =
        kt_rukcmd_call_indirect_simple(300, 0, 0x01, buffer.data(), static_cast<uint32_t>(payload));
    EXPECT_EQ(buffer, std::string(payload, status == 0 ? 'b' : 'a'));
    return status;
}

void *do_nothing(void *)
{
    return nullptr;
}

ktdpa_mutex *mutex = nullptr;
ktdpa_cond *condition = nullptr;
ktdpa_thread *thread = nullptr;

int32_t create_mutex()
{
    const int32_t result = ktdpa_mutex_create(&mutex);
    EXPECT_EQ(mutex == nullptr, result != 0);
    return result;
}

int32_t create_condition()
{
    const int32_t result = ktdpa_cond_init(&condition);
    EXPECT_EQ(condition == nullptr, result != 0);
    return result;
}

int32_t create_helper_thread()
{
    const int32_t result = ktdpa_helper_thread_create(&thread, do_nothing, nullptr, "helper");
    EXPECT_EQ(thread == nullptr, result != 0);
    return result;
}

// The handle is the caller's.
void join_thread()
{
    EXPECT_EQ(pthread_join(*thread, nullptr), 0);
    free(thread);
    thread = nullptr;
}

int32_t create_thread()
{
    return ktdpa_thread_create(do_nothing, nullptr, "thread");
}

// Refuses the first allocation of the owner, then the second, and so on, until the call makes
// fewer.
void expect_refusals(const Row &row, Owner owner)
{
    SCOPED_TRACE(row.name);
    for (size_t i = 0;; ++i) {
        SCOPED_TRACE(i + 1);
        int32_t result = -2;
        bool refused = false;
        int held = 0;
        const std::string printed = captured_stdout([&] {
            const Heap heap(owner, static_cast<int>(i) + 1);
            result = row.call();
            refused = heap.has_refused();
            held = heap.held(Owner::product);
        });
        if (!refused) {
            EXPECT_EQ(i, row.refusals.size());
            EXPECT_EQ(result, row.result);
            return;
        }
        ASSERT_LT(i, row.refusals.size());
        EXPECT_EQ(result, row.refusals[i].result);
        EXPECT_EQ(printed, row.refusals[i].printed);
        EXPECT_EQ(held, 0);
    }
}

class Allocation : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!is_free(k_agent_path) || !is_free(k_command_path)) {
            GTEST_SKIP() << "somebody listens on the sockets";
        }
        descriptors_ = open_descriptors();
    }
    void TearDown() override { EXPECT_EQ(open_descriptors(), descriptors_); }

private:
    int descriptors_ = 0;
};

TEST_F(Allocation, refused_to_the_agents_client)
{
    const FaultyAgent agent(k_agent_path, k_no_fault);
    expect_refusals({"init",
                     kt_dpa_api_init,
                     {{-1, "DPATHREAD_MALLOC_ERR ktdpa_mutex_create: Failed to alloc mutex\n"
                           "kt_platform_open: Failed creating mutex\n"}},
                     0},
                    Owner::product);
    {
        const WordSetting client(kt_debug_print_brel_dpa_api, k_traced);
        const WordSetting forms(kt_debug_print_ktdpa_indirect, k_traced);
        const std::string announced = "kt_dpa_call_indirect1: Generating ioctl() for opcode 300\n";
        const std::string failed =
            "dpa/userspace/ktdpa_indirect/152: Failed: -1, opcode 300\ndi status 1\n";
        const std::string data = "kt_dpa_socket_api: Failed allocating data\n";
        const std::string reply = "kt_dpa_socket_api: Failed allocating return buffer\n";
        expect_refusals({"4096 bytes",
                         [] { return agent_exchange(4040); },
                         {{1, announced + data + failed}},
                         0},
                        Owner::product);
        expect_refusals({"4097 bytes",
                         [] { return agent_exchange(4041); },
                         {{1, announced + reply + failed}, {1, announced + data + failed}},
                         0},
                        Owner::product);
    }
    EXPECT_EQ(agent.connections(), 2); // init's, which had to be given up, and one for all
    EXPECT_EQ(captured_stdout([] { EXPECT_EQ(kt_dpa_api_exit(), 0); }), "");
}

TEST_F(Allocation, refused_to_the_command_services_client)
{
    const FaultyAgent service(k_command_path, k_no_fault);
    const std::string data = "kt_rukcmd_socket_api: Failed allocating data\n";
    const std::string reply = "kt_rukcmd_socket_api: Failed allocating return buffer\n";
    const std::string failed = "dpa/command/ktrukcmd_indirect/294: Failed\n";
    expect_refusals({"4096 bytes", [] { return service_exchange(4040); }, {{1, data + failed}}, 0},
                    Owner::product);
    expect_refusals({"4097 bytes",
                     [] { return service_exchange(4041); },
                     {{1, reply + failed}, {1, data + failed}},
                     0},
                    Owner::product);
    EXPECT_EQ(service.connections(), 1); // which refused memory does not cost
    EXPECT_EQ(dpa_platform_close(), 0);
}

TEST_F(Allocation, refused_to_the_thread_wrappers)
{
    expect_refusals({"mutex",
                     create_mutex,
                     {{12, "DPATHREAD_MALLOC_ERR ktdpa_mutex_create: Failed to alloc mutex\n"}},
                     0},
                    Owner::product);
    EXPECT_EQ(ktdpa_mutex_destroy(mutex), 0);
    expect_refusals({"condition",
                     create_condition,
                     {{12, "DPATHREAD_MALLOC_ERR ktdpa_cond_init: Failed to alloc condvar\n"}},
                     0},
                    Owner::product);
    EXPECT_EQ(ktdpa_cond_destroy(condition), 0);
    // The handle; then what the C library needs for the first thread of the process, where it is
    // seen.
    const std::string helper = "DPATHREAD_MALLOC_ERR ktdpa_helper_thread_create: Failed to alloc "
                               "thread struct.\n";
    if (Heap::sees_library()) {
        expect_refusals(
            {"first thread",
             create_helper_thread,
             {{11, "DPATHREAD_API_ERR ktdpa_helper_thread_create: Failed to create thread. Err 11 "
                   "\n"}},
             0},
            Owner::library);
        join_thread();
    }
    expect_refusals({"helper thread", create_helper_thread, {{12, helper}}, 0}, Owner::product);
    join_thread();
    expect_refusals({"thread",
                     create_thread,
                     {{12, "DPATHREAD_MALLOC_ERR ktdpa_thread_create: Failed to alloc thread "
                           "struct.\n"
                           "ktdpa_thread_create: Failed to alloc thread struct\n"}},
                     0},
                    Owner::product);
    free(Heap::latest()); // the handle that nobody holds
}

// A command in a process of its own.
struct Report {
    bool has_ended;
    bool refused;
    int result;
    int descriptors;
    int held;
    int libc_allocations;
    int libc_held;
    int32_t next_status;
};
struct CommandEnd {
    std::string out;
    Report report;
};

// What the process does when it pauses: show tail ends there once it has seen everything.
std::function<void()> in_pause;

Report *shared_report()
{
    void *shared =
        mmap(nullptr, sizeof(Report), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    return static_cast<Report *>(shared);
}

[[noreturn]] void run_command(std::vector<std::string> arguments, Owner owner, int refused,
                              const FaultyAgent &agent, Report &report)
{
    arguments.insert(arguments.begin(), "ruklog");
    std::vector<char *> pointers;
    for (std::string &argument : arguments) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    if (Heap::sees_library()) {
        stdout = fdopen(STDOUT_FILENO, "w"); // which has no buffer yet
    }
    const int descriptors = open_descriptors();
    std::optional<Heap> heap;
    const auto end = [&](int result) {
        fflush(stdout);
        report.refused = heap->has_refused();
        report.held = heap->held(Owner::product);
        report.libc_allocations = heap->allocations(Owner::library);
        report.libc_held = heap->held(Owner::library);
        heap.reset();
        report.result = result;
        report.descriptors = open_descriptors() - descriptors - (kt_dpa_call_fd >= 0 ? 1 : 0);
        report.next_status = kt_dpa_call_indirect1(63, 0, 0x01, nullptr, 0, nullptr);
        report.has_ended = true;
        _exit(0);
    };
    in_pause = [&] {
        constexpr int k_enough_requests = 40;
        if (agent.requests() >= k_enough_requests) {
            end(0);
        }
    };
    heap.emplace(owner, refused);
    end(ruklog_main(static_cast<int>(arguments.size()), pointers.data()));
    abort();
}

CommandEnd run(const std::vector<std::string> &arguments, Owner owner, int refused)
{
    const FaultyAgent agent(k_agent_path, k_no_fault);
    Report *const report = shared_report();
    CommandEnd end;
    end.out = captured_stdout([&] {
        const pid_t pid = fork();
        if (pid == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            alarm(20);
            run_command(arguments, owner, refused, agent, *report);
        }
        waitpid(pid, nullptr, 0);
    });
    end.report = *report;
    munmap(report, sizeof(Report));
    return end;
}

// A command, and what it prints when its allocations are refused in turn, from the third on: the
// first is the lock's, without which nothing starts, the second the version probe's, which may
// fail.
struct Command {
    std::vector<std::string> arguments;
    std::string whole;
    std::vector<std::string> refused;
    bool is_endless = false;
};

const std::string k_no_start = "DPATHREAD_MALLOC_ERR ktdpa_mutex_create: Failed to alloc mutex\n"
                               "kt_platform_open: Failed creating mutex\n"
                               "Error initializing kt_dpa_api_init()\n";

const Command k_commands[] = {
    {{"help"}, k_help, {}},
    {{"show", "info"}, k_info, {k_no_info}},
    {{"show", "debug"},
     k_module_header + k_flow + k_port,
     {k_module_header, k_module_header + k_flow, k_module_header + k_flow + k_port}},
    {{"show", "all"},
     k_header + k_7 + k_8,
     {k_header + k_no_suspend + k_7 + k_8, k_header, k_header + k_7, k_header + k_7 + k_8,
      k_header + k_7 + k_8 + k_no_resume}},
    {{"show", "last"},
     k_header + k_7 + k_8,
     {k_no_suspend + k_header + k_7 + k_8, k_no_info, k_header, k_header + k_7,
      k_header + k_7 + k_8, k_header + k_7 + k_8 + k_no_resume}},
    {{"start"}, "Started log\n", {"Could not start log\nStarted log\n"}},
    {{"stop"}, k_will_suspend, {k_no_suspend + "Suspended log\n"}},
    {{"resume"}, "Resumed log\n", {k_no_resume + "Resumed log\n"}},
    {{"clear"}, "Cleared log\n", {"Could not clear log\nCleared log\n"}},
    {{"debug", "flow", "w"}, "", {"Module flow does not exist.\n", ""}},
    {{"debug", "all", "w"}, "", {"Module all does not exist.\n", "", "", "", "", ""}},
    // The first three exchanges, then hold, entry and release of each entry and of the first look
    // for another.
    {{"show", "tail"},
     k_press + k_789,
     {k_no_suspend + k_press + k_789, k_no_info, k_no_resume + k_press + k_789,
      k_press + k_no_suspend + k_789, k_press + k_789, k_press + k_no_resume + k_789,
      k_press + k_7 + k_no_suspend + k_8 + k_9, k_press + k_789,
      k_press + k_7 + k_no_resume + k_8 + k_9, k_press + k_7 + k_8 + k_no_suspend + k_9,
      k_press + k_789, k_press + k_7 + k_8 + k_no_resume + k_9},
     true},
};

std::string expected_text(const Command &command, size_t nth)
{
    if (nth == 1) {
        return k_no_start;
    }
    return nth == 2 || nth > command.refused.size() + 2 ? command.whole : command.refused[nth - 3];
}

TEST_F(Allocation, refused_to_every_command)
{
    int refusals = 0;
    for (const Command &command : k_commands) {
        const size_t most = command.refused.size() + 2;
        // One more than there are, but for a command that never ends.
        for (size_t nth = 1; nth <= most + (command.is_endless ? 0 : 1); ++nth) {
            SCOPED_TRACE(command.arguments.back() + ", allocation " + std::to_string(nth));
            const CommandEnd end = run(command.arguments, Owner::product, static_cast<int>(nth));
            EXPECT_EQ(end.out, expected_text(command, nth));
            EXPECT_TRUE(end.report.has_ended);
            EXPECT_EQ(end.report.refused, nth <= most);
            EXPECT_EQ(end.report.result, nth == 1 ? -1 : 0);
            EXPECT_EQ(end.report.descriptors, 0);
            EXPECT_EQ(end.report.held, nth == 1 ? 0 : 1); // the lock, to the end of the process
            EXPECT_EQ(end.report.next_status, 0);
            refusals += end.report.refused ? 1 : 0;
        }
    }
    printf("commands: %d allocations refused\n", refusals);
}

// The C library's own: the buffer of standard output, without which it writes byte by byte, and the
// time zone, without which it is UTC.  A command prints the same either way.
TEST_F(Allocation, refused_to_the_c_library_changes_nothing)
{
    if (!Heap::sees_library()) {
        GTEST_SKIP() << "the C library's allocations can't be seen here";
    }
    int refusals = 0;
    for (const Command &command : k_commands) {
        for (int nth = 1;; ++nth) {
            SCOPED_TRACE(command.arguments.back() + ", allocation " + std::to_string(nth));
            const CommandEnd end = run(command.arguments, Owner::library, nth);
            EXPECT_EQ(end.out, command.whole);
            EXPECT_EQ(end.report.result, 0);
            EXPECT_EQ(end.report.held, 1);
            EXPECT_EQ(end.report.next_status, 0);
            if (!end.report.refused) {
                printf("%s: %d allocations of the C library, %d kept\n",
                       command.arguments.back().c_str(), end.report.libc_allocations,
                       end.report.libc_held);
                break;
            }
            ++refusals;
        }
    }
    EXPECT_GT(refusals, 0);
    printf("C library: %d allocations refused\n", refusals);
}

} // namespace

extern "C" unsigned __wrap_sleep(unsigned)
{
    in_pause();
    return 0;
}

// The stand-alone tool's read-out: whatever interrupts it, the log is not left stopped, and a slow
// reader of the output doesn't keep it stopped.
#include "ruk/front_end.h"

#include <atomic>
#include <csignal>
#include <ctime>
#include <fstream>
#include <future>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "ruk/agent.h"
#include "tests/rukcmd/forked.h"
#include "tests/rukcmd/rig.h"
#include "tests/support/eventually.h"

using namespace ruk_test;

namespace
{

constexpr int k_guarded[] = {SIGINT, SIGTERM, SIGHUP, SIGPIPE};

void run_command(const std::string &line)
{
    const Connection connection;
    std::string buffer = line;
    ruk_log_run(buffer.data(), static_cast<int32_t>(buffer.size()));
}

// The process that the peer's handler is to send a signal to.  The handler may be called before
// the test knows the number, and then waits for it.
class Target
{
public:
    void set(const Forked &process) { pid_ = process.pid(); }
    void send_signal(int number) const
    {
        EXPECT_TRUE(eventually([this] { return pid_ != 0; }));
        kill(pid_, number);
    }

    // Returns once the process has taken the signal.
    void deliver_signal(int number) const
    {
        send_signal(number);
        EXPECT_TRUE(eventually([&] { return !has_pending(number); }));
    }

private:
    bool has_pending(int number) const
    {
        std::ifstream status("/proc/" + std::to_string(pid_) + "/status");
        for (std::string line; std::getline(status, line);) {
            if (line.starts_with("ShdPnd:")) {
                return (std::stoull(line.substr(7), nullptr, 16) >> (number - 1) & 1) != 0;
            }
        }
        return false;
    }

    std::atomic<pid_t> pid_{0};
};

std::vector<std::string> opcodes_of(const ScriptedAgent &agent)
{
    std::vector<std::string> opcodes;
    for (const Request &request : agent.requests()) {
        opcodes.push_back(std::to_string(request.opcode()) + "/" + std::to_string(request.ident()));
    }
    return opcodes;
}

using Opcodes = std::vector<std::string>;

// The entry number that an entry request carries.
uint64_t cursor_of(const Request &request)
{
    return number_at<uint64_t>(request.payload(), 8);
}

// Serves log, and before the reply to request number at (from 0) calls action.
ScriptedAgent::Handler serve_and_at(FakeLog &log, int at, std::function<void()> action)
{
    return [&log, at, action = std::move(action), count = 0](const Request &request) mutable {
        if (count++ == at) {
            action();
        }
        return serve(log)(request);
    };
}

} // namespace

using read_out = FrontEnd;

TEST_F(read_out, releases_the_log_before_it_ends_by_the_signal)
{
    struct {
        const char *command;
        int at; // request before whose reply the signal is sent
        Opcodes requests;
    } const rows[] = {
        {"show all", 0, {"236/2", "236/3"}},
        {"show all", 1, {"236/2", "234/0", "236/3"}},
        {"show all", 3, {"236/2", "234/0", "234/0", "234/0", "236/3"}},
        {"show last 9", 0, {"236/2", "233/0", "236/3"}},
        {"show last 9", 1, {"236/2", "233/0", "236/3"}},
        {"show last 9", 2, {"236/2", "233/0", "234/0", "236/3"}},
    };
    for (const int number : k_guarded) {
        for (const auto &row : rows) {
            SCOPED_TRACE(std::to_string(number) + " " + row.command + " " + std::to_string(row.at));
            FakeLog log;
            log.add_events(0, 99);
            log.set_enabled(true);
            Target target;
            const ScriptedAgent agent(
                serve_and_at(log, row.at, [&] { target.send_signal(number); }));
            Forked tool([&] {
                run_command(row.command);
                puts("went on"); // must not
            });
            target.set(tool);
            const Forked::End end = tool.wait();
            EXPECT_EQ(end.signal, number);
            EXPECT_EQ(end.out, "");
            EXPECT_EQ(opcodes_of(agent), row.requests);
            EXPECT_TRUE(log.is_enabled());
        }
    }
}

// A host's handler gets the signal after the release, one of three arguments too.
TEST_F(read_out, hands_the_signal_to_the_hosts_handler)
{
    FakeLog log;
    log.add_events(0, 99);
    log.set_enabled(true);
    Target target;
    const ScriptedAgent agent(serve_and_at(log, 3, [&] { target.send_signal(SIGTERM); }));
    Forked tool([] {
        struct sigaction action {
        };
        action.sa_flags = SA_SIGINFO;
        action.sa_sigaction = [](int number, siginfo_t *, void *) { _exit(number + 100); };
        sigaction(SIGTERM, &action, nullptr);
        run_command("show all");
    });
    target.set(tool);
    EXPECT_EQ(tool.wait().exit_status, SIGTERM + 100);
    EXPECT_EQ(opcodes_of(agent), (Opcodes{"236/2", "234/0", "234/0", "234/0", "236/3"}));
    EXPECT_TRUE(log.is_enabled());
}

TEST_F(read_out, finishes_the_release_that_a_signal_meets)
{
    FakeLog log;
    log.add_events(0, 1);
    log.set_enabled(true);
    Target target;
    const ScriptedAgent agent(serve_and_at(log, 4, [&] { target.send_signal(SIGTERM); }));
    Forked tool([] { run_command("show all"); });
    target.set(tool);
    EXPECT_EQ(tool.wait().signal, SIGTERM);
    EXPECT_EQ(opcodes_of(agent), (Opcodes{"236/2", "234/0", "234/0", "234/0", "236/3"}));
    EXPECT_TRUE(log.is_enabled());
}

TEST_F(read_out, releases_nothing_that_was_off)
{
    FakeLog log;
    log.add_events(0, 99);
    Target target;
    const ScriptedAgent agent(serve_and_at(log, 2, [&] { target.send_signal(SIGINT); }));
    Forked tool([] { run_command("show all"); });
    target.set(tool);
    EXPECT_EQ(tool.wait().signal, SIGINT);
    EXPECT_EQ(opcodes_of(agent), (Opcodes{"236/2", "234/0", "234/0"}));
}

TEST_F(read_out, releases_the_log_after_a_failed_info_and_a_signal)
{
    Target target;
    const ScriptedAgent agent([&](const Request &request) -> std::optional<std::string> {
        if (request.opcode() == 233) {
            target.send_signal(SIGHUP);
            return reply_to(request, 1);
        }
        return reply_to(request, 0, bytes_of(uint64_t{1}));
    });
    Forked tool([] { run_command("show last"); });
    target.set(tool);
    EXPECT_EQ(tool.wait().signal, SIGHUP);
    EXPECT_EQ(opcodes_of(agent), (Opcodes{"236/2", "233/0", "236/3"}));
}

// An Agent that has stalled does not make the tool unkillable.
TEST_F(read_out, ends_at_once_by_a_second_signal)
{
    for (const int number : k_guarded) {
        SCOPED_TRACE(number);
        std::promise<void> end_of_stall;
        const std::shared_future<void> stalled = end_of_stall.get_future().share();
        const ScriptedAgent agent([=](const Request &request) {
            if (request.opcode() == 234) {
                stalled.wait();
            }
            return std::optional(reply_to(request, 0, bytes_of(uint64_t{1})));
        });
        Forked tool([] { run_command("show all"); });
        EXPECT_TRUE(eventually([&] { return agent.requests().size() == 2; }));
        EXPECT_TRUE(tool.catches(number));
        tool.send_signal(number);
        EXPECT_TRUE(eventually([&] { return !tool.catches(number); }));
        tool.send_signal(number);
        EXPECT_EQ(tool.wait().signal, number);
        EXPECT_EQ(agent.requests().size(), 2U);
        end_of_stall.set_value();
    }
}

TEST_F(read_out, ends_at_once_by_a_second_signal_of_another_kind)
{
    std::promise<void> end_of_stall;
    const std::shared_future<void> stalled = end_of_stall.get_future().share();
    const ScriptedAgent agent([=](const Request &request) {
        if (request.opcode() == 234) {
            stalled.wait();
        }
        return std::optional(reply_to(request, 0, bytes_of(uint64_t{1})));
    });
    Forked tool([] { run_command("show all"); });
    EXPECT_TRUE(eventually([&] { return agent.requests().size() == 2; }));
    tool.send_signal(SIGHUP);
    EXPECT_TRUE(eventually([&] { return !tool.catches(SIGINT); }));
    tool.send_signal(SIGINT);
    EXPECT_EQ(tool.wait().signal, SIGINT);
    end_of_stall.set_value();
}

// Whoever ends a tool often does it twice: timeout signals the process and then its group, a shell
// hands on the hangup that the terminal has sent.
TEST_F(read_out, releases_the_log_between_two_signals_in_a_row)
{
    using Clock = std::chrono::steady_clock;
    const std::pair<int, int> pairs[] = {
        {SIGTERM, SIGTERM}, {SIGHUP, SIGHUP}, {SIGINT, SIGTERM}, {SIGTERM, SIGINT}};
    for (const auto &[first, second] : pairs) {
        SCOPED_TRACE(std::to_string(first) + " " + std::to_string(second));
        // The pair only counts as one within 40 ms, which a busy host may have let pass.
        for (auto taken = Clock::duration::max(); taken > std::chrono::milliseconds(20);) {
            FakeLog log;
            log.add_events(0, 99);
            log.set_enabled(true);
            Target target;
            Clock::time_point begun;
            const ScriptedAgent agent(serve_and_at(log, 2, [&, one = first, other = second] {
                begun = Clock::now();
                target.deliver_signal(one);
                target.deliver_signal(other);
            }));
            Forked tool([] { run_command("show all"); });
            target.set(tool);
            const Forked::End end = tool.wait();
            taken = Clock::now() - begun;
            if (taken <= std::chrono::milliseconds(20)) {
                EXPECT_EQ(end.signal, first);
                EXPECT_EQ(opcodes_of(agent), (Opcodes{"236/2", "234/0", "234/0", "236/3"}));
                EXPECT_TRUE(log.is_enabled());
            }
        }
    }
}

// What a tool inherits as blocked or ignored must not keep the second signal from ending it.
TEST_F(read_out, ends_by_a_second_signal_whatever_it_inherits)
{
    const auto block = [](int number) {
        sigset_t signals;
        sigemptyset(&signals);
        sigaddset(&signals, number);
        sigprocmask(SIG_BLOCK, &signals, nullptr);
    };
    const std::pair<int, bool> rows[] = {
        {SIGINT, true}, {SIGINT, false}, {SIGRTMAX - 1, true}, {SIGRTMAX - 1, false}};
    for (const auto &[number, is_blocked] : rows) {
        SCOPED_TRACE(number);
        std::promise<void> end_of_stall;
        const std::shared_future<void> stalled = end_of_stall.get_future().share();
        const ScriptedAgent agent([=](const Request &request) {
            if (request.opcode() == 234) {
                stalled.wait();
            }
            return std::optional(reply_to(request, 0, bytes_of(uint64_t{1})));
        });
        Forked tool([&, inherited = number, blocks = is_blocked] {
            blocks ? block(inherited) : static_cast<void>(signal(inherited, SIG_IGN));
            run_command("show all");
        });
        EXPECT_TRUE(eventually([&] { return agent.requests().size() == 2; }));
        tool.send_signal(SIGTERM);
        EXPECT_TRUE(eventually([&] { return !tool.catches(SIGTERM); }));
        tool.send_signal(SIGTERM);
        EXPECT_EQ(tool.wait().signal, SIGTERM);
        end_of_stall.set_value();
    }
}

// Each timer takes a place in the queue of signals, and there are none.
TEST_F(read_out, releases_the_log_where_timers_are_refused)
{
    FakeLog log;
    log.add_events(0, 99);
    log.set_enabled(true);
    Target target;
    const ScriptedAgent agent(serve_and_at(log, 2, [&] { target.send_signal(SIGINT); }));
    Forked tool([] {
        const rlimit none{0, 0};
        setrlimit(RLIMIT_SIGPENDING, &none);
        run_command("show all");
    });
    target.set(tool);
    EXPECT_EQ(tool.wait().signal, SIGINT);
    EXPECT_EQ(opcodes_of(agent), (Opcodes{"236/2", "234/0", "234/0", "236/3"}));
    EXPECT_TRUE(log.is_enabled());
}

namespace
{

timer_t host_timer;

void start_host_timer(int)
{
    const itimerspec at_once{.it_interval = {}, .it_value = {.tv_sec = 0, .tv_nsec = 1}};
    timer_settime(host_timer, 0, &at_once, nullptr);
}

} // namespace

// A signal of one of the host's timers is no end of the grace.
TEST_F(read_out, releases_the_log_before_it_ends_by_the_hosts_timer)
{
    for (const int number : {SIGTERM, SIGRTMAX - 1}) {
        SCOPED_TRACE(number);
        FakeLog log;
        log.add_events(0, 999);
        log.set_enabled(true);
        Target target;
        const ScriptedAgent agent(serve_and_at(log, 2, [&] { target.send_signal(SIGUSR1); }));
        Forked tool([ends = number] {
            sigevent event{};
            event.sigev_notify = SIGEV_SIGNAL;
            event.sigev_signo = ends;
            timer_create(CLOCK_MONOTONIC, &event, &host_timer);
            signal(SIGUSR1, start_host_timer);
            run_command("show all");
        });
        target.set(tool);
        EXPECT_EQ(tool.wait().signal, number);
        EXPECT_EQ(opcodes_of(agent).back(), "236/3");
        EXPECT_LT(opcodes_of(agent).size(), 1002U);
        EXPECT_TRUE(log.is_enabled());
    }
}

TEST_F(read_out, is_suspended_after_the_release)
{
    FakeLog log;
    log.add_events(0, 9);
    log.set_enabled(true);
    Target target;
    const ScriptedAgent agent(serve_and_at(log, 2, [&] { target.send_signal(SIGTSTP); }));
    Forked tool([] {
        setpgid(0, 0); // what control-Z suspends is a job of its shell
        run_command("show all");
    });
    target.set(tool);
    siginfo_t info{};
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(tool.pid()), &info, WEXITED | WSTOPPED | WNOWAIT), 0);
    EXPECT_EQ(info.si_code, CLD_STOPPED);
    EXPECT_EQ(opcodes_of(agent).back(), "236/3");
    EXPECT_TRUE(log.is_enabled());
    tool.send_signal(SIGCONT);
    const Forked::End end = tool.wait();
    EXPECT_EQ(end.exit_status, 0);
    EXPECT_EQ(end.out, k_entry_header + numbered_lines(0, 9));
}

TEST_F(read_out, lets_ignored_signals_be_ignored)
{
    for (const int number : k_guarded) {
        SCOPED_TRACE(number);
        FakeLog log;
        log.add_events(0, 9);
        log.set_enabled(true);
        Target target;
        const ScriptedAgent agent(serve_and_at(log, 3, [&] { target.send_signal(number); }));
        Forked tool([&] {
            signal(number, SIG_IGN);
            run_command("show all");
            struct sigaction now {
            };
            sigaction(number, nullptr, &now);
            puts(now.sa_handler == SIG_IGN ? "ignored" : "not ignored");
        });
        target.set(tool);
        const Forked::End end = tool.wait();
        EXPECT_EQ(end.signal, 0);
        EXPECT_EQ(end.out, k_entry_header + numbered_lines(0, 9) + "ignored\n");
        EXPECT_TRUE(log.is_enabled());
    }
}

namespace
{

// A host's own handlers, put in place for a scope.
volatile sig_atomic_t seen_signals;
volatile sig_atomic_t last_signal;

void note_signal(int number)
{
    seen_signals = seen_signals + 1;
    last_signal = number;
}

// As hosts do that end by the second signal.
void note_signal_once(int number)
{
    note_signal(number);
    signal(number, SIG_IGN); // the test goes on
}

class HostHandlers
{
public:
    explicit HostHandlers(void (*handler)(int))
    {
        seen_signals = 0;
        last_signal = 0;
        for (size_t i = 0; i < std::size(k_guarded); ++i) {
            struct sigaction action {
            };
            action.sa_handler = handler;
            action.sa_flags = SA_NODEFER | SA_RESTART;
            sigaddset(&action.sa_mask, SIGUSR2);
            sigaction(k_guarded[i], &action, &former_[i]);
        }
    }
    ~HostHandlers()
    {
        for (size_t i = 0; i < std::size(k_guarded); ++i) {
            sigaction(k_guarded[i], &former_[i], nullptr);
        }
    }
    HostHandlers(const HostHandlers &) = delete;
    HostHandlers &operator=(const HostHandlers &) = delete;

private:
    struct sigaction former_[std::size(k_guarded)];
};

using Handler = void (*)(int);

Handler handler_of(int number)
{
    struct sigaction action {
    };
    sigaction(number, nullptr, &action);
    return action.sa_handler;
}

} // namespace

TEST_F(read_out, catches_signals_for_its_length_and_puts_the_dispositions_back)
{
    FakeLog log;
    log.add_events(0, 9);
    const HostHandlers host(note_signal);
    std::vector<Handler> during;
    Peer peer(serve_and_at(log, 0, [&] {
        for (const int number : k_guarded) {
            during.push_back(handler_of(number));
        }
    }));
    for (const char *line : {"show all", "show last 3"}) {
        output_of(line);
        for (const int number : k_guarded) {
            struct sigaction now {
            };
            sigaction(number, nullptr, &now);
            EXPECT_EQ(now.sa_handler, note_signal);
            EXPECT_TRUE((now.sa_flags & SA_NODEFER) != 0);
            EXPECT_EQ(sigismember(&now.sa_mask, SIGUSR2), 1);
            EXPECT_EQ(sigismember(&now.sa_mask, SIGUSR1), 0);
        }
    }
    ASSERT_EQ(during.size(), std::size(k_guarded));
    for (const Handler handler : during) {
        EXPECT_NE(handler, note_signal);
    }
    EXPECT_EQ(seen_signals, 0);
}

// The host's handler gets the signal once, after the release; then what was read is printed.
TEST_F(read_out, hands_a_signal_on_to_the_hosts_handler)
{
    FakeLog log;
    log.add_events(0, 9);
    log.set_enabled(true);
    const HostHandlers host(note_signal);
    int seen_at_release = -1;
    bool is_sent = false;
    Peer peer([&](const Request &request) {
        if (!is_sent && request.opcode() == 234 && cursor_of(request) == 1) {
            is_sent = true;
            kill(getpid(), SIGTERM);
            // The process has two threads: the signal must have been taken before the reply goes.
            EXPECT_TRUE(eventually([] { return handler_of(SIGTERM) == note_signal; }));
        }
        if (request.opcode() == 236 && request.ident() == 3) {
            seen_at_release = seen_signals;
        }
        return serve(log)(request);
    });
    EXPECT_EQ(output_of("show all"), k_entry_header + numbered_lines(0, 2));
    EXPECT_EQ(seen_at_release, 0);
    EXPECT_EQ(seen_signals, 1);
    EXPECT_EQ(last_signal, SIGTERM);
    EXPECT_TRUE(log.is_enabled());
    // The next read-out is not touched by it.
    EXPECT_EQ(output_of("show all"), k_entry_header + numbered_lines(0, 9));
    EXPECT_EQ(seen_signals, 1);
}

TEST_F(read_out, leaves_alone_what_the_hosts_handler_changes)
{
    FakeLog log;
    log.add_events(0, 9);
    const HostHandlers host(note_signal_once);
    Peer peer(serve_and_at(log, 2, [&] {
        kill(getpid(), SIGTERM);
        EXPECT_TRUE(eventually([] { return handler_of(SIGTERM) == note_signal_once; }));
    }));
    EXPECT_EQ(output_of("show all"), k_entry_header + numbered_lines(0, 1));
    EXPECT_EQ(seen_signals, 1);
    EXPECT_EQ(handler_of(SIGTERM), SIG_IGN);
    EXPECT_EQ(handler_of(SIGINT), note_signal_once);
}

// The second signal reaches the host's handler while the read-out still goes on.
TEST_F(read_out, leaves_alone_what_the_hosts_handler_changes_meanwhile)
{
    FakeLog log;
    log.add_events(0, 9);
    const HostHandlers host(note_signal_once);
    Peer peer(serve_and_at(log, 2, [&] {
        kill(getpid(), SIGTERM);
        EXPECT_TRUE(eventually([] { return handler_of(SIGTERM) == note_signal_once; }));
        kill(getpid(), SIGHUP);
        EXPECT_TRUE(eventually([] { return handler_of(SIGHUP) == SIG_IGN; }));
    }));
    EXPECT_EQ(output_of("show all"), k_entry_header + numbered_lines(0, 1));
    EXPECT_EQ(seen_signals, 2);
    EXPECT_EQ(last_signal, SIGTERM); // the noted one comes last
    EXPECT_EQ(handler_of(SIGTERM), SIG_IGN);
    EXPECT_EQ(handler_of(SIGHUP), SIG_IGN);
    EXPECT_EQ(handler_of(SIGINT), note_signal_once);
}

// The output is more than a pipe holds and nobody reads it: the log runs again all the same.
TEST_F(read_out, releases_the_log_before_anyone_reads_the_output)
{
    FakeLog log;
    log.add_events(0, 4999);
    log.set_enabled(true);
    const ScriptedAgent agent(serve(log));
    Forked tool([] { run_command("show all"); });
    const auto is_released = [&] {
        const std::vector<Request> requests = agent.requests();
        return !requests.empty() && requests.back().ident() == 3;
    };
    EXPECT_TRUE(eventually(is_released));
    EXPECT_TRUE(log.is_enabled());
    const Forked::End end = tool.wait();
    EXPECT_EQ(end.exit_status, 0);
    EXPECT_EQ(end.out, k_entry_header + numbered_lines(0, 4999));
    EXPECT_EQ(agent.requests().size(), 1U + 5001U + 1U);
}

TEST_F(read_out, ends_by_sigpipe_after_the_release_when_the_reader_goes)
{
    FakeLog log;
    log.add_events(0, 4999);
    log.set_enabled(true);
    const ScriptedAgent agent(serve(log));
    Forked tool([] { run_command("show all"); });
    tool.close_output();
    EXPECT_EQ(tool.wait().signal, SIGPIPE);
    EXPECT_EQ(opcodes_of(agent).back(), "236/3");
    EXPECT_TRUE(log.is_enabled());
}

// The broken connection is made anew for the release.
TEST_F(read_out, prints_what_it_has_when_the_agent_hangs_up)
{
    FakeLog log;
    log.add_events(0, 9);
    log.set_enabled(true);
    Peer peer([&](const Request &request) -> std::optional<std::string> {
        const bool is_third = request.opcode() == 234 && cursor_of(request) == 1;
        return is_third ? std::nullopt : serve(log)(request);
    });
    EXPECT_EQ(output_of("show all"), k_entry_header + numbered_lines(0, 1));
    EXPECT_EQ(opcodes_of(peer.agent), (Opcodes{"236/2", "234/0", "234/0", "234/0", "236/3"}));
    EXPECT_EQ(peer.agent.connections(), 2);
    EXPECT_TRUE(log.is_enabled());
}

TEST_F(read_out, reports_an_agent_that_has_gone_behind_the_entries)
{
    FakeLog log;
    log.add_events(0, 9);
    log.set_enabled(true);
    Peer peer([&](const Request &request) -> std::optional<std::string> {
        if (request.opcode() == 234 && cursor_of(request) == 1) {
            unlink(k_agent_path);
            return std::nullopt;
        }
        return serve(log)(request);
    });
    EXPECT_EQ(output_of("show all"), k_entry_header + numbered_lines(0, 1) +
                                         "kt_platform_open: Failed binding local socket err: 2 - "
                                         "No such file or directory\n"
                                         "Could not resume log\n");
}

// The placeholders never refuse: a read-out in process never ends by itself.
TEST_F(read_out, never_ends_over_the_in_process_placeholders)
{
    Forked tool([] {
        ruk_rcli_dpa_loga_log = 1;
        std::string line = "show all";
        ruk_log_run(line.data(), static_cast<int32_t>(line.size()));
        puts("went on"); // must not
    });
    const std::string unfilled = "Jan  1 00:00:00.000000 18446744073709551615  0   0   0         ";
    std::string expected = k_entry_header;
    for (int i = 0; i < 5000; ++i) {
        expected += unfilled;
    }
    EXPECT_TRUE(tool.wait_for_output(expected));
    tool.send_signal(SIGINT);
    const Forked::End end = tool.wait();
    EXPECT_EQ(end.signal, SIGINT);
    EXPECT_EQ(end.out.substr(0, expected.size()), expected);
}

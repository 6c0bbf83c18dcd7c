// Every command, ended by every signal at random moments, over and over, against a quick and a slow
// Agent: whatever is interrupted, logging is on afterwards when it was on before.
//
// RUK_INTERRUPTIONS sets how often (3 by default, 200 for a full run), RUK_SEED repeats a run.
#include "tests/cli/live_agent.h"
#include "tests/support/eventually.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <poll.h>
#include <random>
#include <spawn.h>
#include <string>
#include <sys/wait.h>

namespace
{

using namespace ruk_test;
using Clock = std::chrono::steady_clock;
using std::chrono::microseconds;
using std::chrono::milliseconds;

constexpr milliseconds k_limit{20'000};

// What the tool promises.
constexpr milliseconds k_grace{40};
constexpr milliseconds k_end_by_second{100};

// A few replies of the slow Agent, and room for a busy host.
constexpr milliseconds k_end_by_signal{500};

int runs()
{
    const char *text = getenv("RUK_INTERRUPTIONS");
    return text != nullptr ? atoi(text) : 3;
}

std::mt19937 &generator()
{
    static const unsigned seed = [] {
        const char *text = getenv("RUK_SEED");
        const unsigned value = text != nullptr ? static_cast<unsigned>(strtoul(text, nullptr, 10))
                                               : std::random_device{}();
        printf("RUK_SEED=%u RUK_INTERRUPTIONS=%d\n", value, runs());
        return value;
    }();
    static std::mt19937 random(seed);
    return random;
}

microseconds random_time(microseconds end)
{
    return microseconds(std::uniform_int_distribution<long>(0, end.count())(generator()));
}

uint32_t random_number(uint32_t first, uint32_t last)
{
    return std::uniform_int_distribution<uint32_t>(first, last)(generator());
}

// The share of so many runs that must be interrupted for them to say anything.  Of a few runs on a
// busy host it may be none.
int least(int count)
{
    return count < 50 ? 0 : count / 10;
}

int random_signal()
{
    constexpr int k_signals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};
    return k_signals[random_number(0, 3)];
}

double in_ms(Clock::duration time)
{
    return std::chrono::duration<double, std::milli>(time).count();
}

// How long a task has been ready to run and had no processor, of which a busy host has too few.
Clock::duration time_in_queue(const std::string &task)
{
    std::ifstream statistics("/proc/" + task + "/schedstat");
    uint64_t running = 0;
    uint64_t waiting = 0;
    statistics >> running >> waiting;
    return std::chrono::nanoseconds(waiting);
}

// The tool as a process.  A pipe that only it keeps open tells its end to the microsecond.
class Tool
{
public:
    enum class Output { NOWHERE, PIPE };

    Tool(const std::vector<std::string> &words, Output output)
    {
        agentsim::UniqueFd life_end;
        agentsim::UniqueFd output_end;
        make_pipe(life_, life_end);
        make_pipe(output_, output_end);
        agentsim::UniqueFd nowhere(open("/dev/null", O_RDWR | O_CLOEXEC));
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, nowhere.get(), STDIN_FILENO);
        posix_spawn_file_actions_adddup2(
            &actions, output == Output::PIPE ? output_end.get() : nowhere.get(), STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&actions, life_end.get(), STDERR_FILENO);
        std::vector<char *> arguments{const_cast<char *>(RUKLOG_PATH)};
        for (const std::string &word : words) {
            arguments.push_back(const_cast<char *>(word.c_str()));
        }
        arguments.push_back(nullptr);
        // Whoever runs the tests may ignore signals (nohup), and the tool would inherit that.
        posix_spawnattr_t attributes;
        posix_spawnattr_init(&attributes);
        sigset_t signals;
        sigfillset(&signals);
        posix_spawnattr_setsigdefault(&attributes, &signals);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
        EXPECT_EQ(posix_spawn(&pid_, RUKLOG_PATH, &actions, &attributes, arguments.data(), environ),
                  0);
        posix_spawnattr_destroy(&attributes);
        posix_spawn_file_actions_destroy(&actions);
        started_ = Clock::now();
    }
    ~Tool()
    {
        if (pid_ > 0) {
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
    }
    Tool(const Tool &) = delete;
    Tool &operator=(const Tool &) = delete;

    Clock::time_point started() const { return started_; }
    void send_signal(int number) const { kill(pid_, number); }
    // Of the tool, whoever waits for it and its Agent.
    Clock::duration in_queue() const
    {
        Clock::duration sum = time_in_queue(std::to_string(pid_));
        for (const auto &thread : std::filesystem::directory_iterator("/proc/self/task")) {
            sum += time_in_queue("self/task/" + thread.path().filename().string());
        }
        return sum;
    }
    void close_output() { output_ = agentsim::UniqueFd(); }

    // Whether the tool ends, or prints on its pipe, within the limit.
    bool ends_within(milliseconds limit) const { return waits_for(life_.get(), limit); }
    bool prints_within(milliseconds limit) const { return waits_for(output_.get(), limit); }

    struct End {
        int signal; // 0 when it exited
        Clock::time_point time;
        Clock::duration in_queue;
    };
    End wait()
    {
        EXPECT_TRUE(ends_within(k_limit)) << "killed";
        const auto time = Clock::now();
        const auto queued = in_queue();
        kill(pid_, SIGKILL); // nothing to a process that has ended
        int status = 0;
        waitpid(std::exchange(pid_, -1), &status, 0);
        EXPECT_TRUE(WIFSIGNALED(status) || WEXITSTATUS(status) == 0) << status;
        return {WIFSIGNALED(status) ? WTERMSIG(status) : 0, time, queued};
    }

private:
    static void make_pipe(agentsim::UniqueFd &read_end, agentsim::UniqueFd &write_end)
    {
        int ends[2];
        ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
        read_end = agentsim::UniqueFd(ends[0]);
        write_end = agentsim::UniqueFd(ends[1]);
    }

    static bool waits_for(int fd, milliseconds limit)
    {
        pollfd wait{fd, POLLIN, 0};
        return poll(&wait, 1, static_cast<int>(limit.count())) > 0;
    }

    pid_t pid_ = -1;
    Clock::time_point started_;
    agentsim::UniqueFd life_;
    agentsim::UniqueFd output_;
};

struct Command {
    const char *name;
    std::vector<std::string> words;
    bool reads = false;   // stops the log while it reads all of it
    bool endless = false; // until it is interrupted
    bool silent = false;
    bool stops = false; // the log, which is its purpose
};

void PrintTo(const Command &command, std::ostream *stream)
{
    *stream << command.name;
}

const Command k_commands[] = {
    {.name = "help", .words = {"help"}},
    {.name = "nothing", .words = {}},
    {.name = "no_command", .words = {"no", "such"}},
    {.name = "show", .words = {"show"}, .silent = true},
    {.name = "show_info", .words = {"show", "info"}},
    {.name = "show_all", .words = {"show", "all"}, .reads = true},
    {.name = "show_last", .words = {"show", "last"}},
    {.name = "show_last_10000", .words = {"show", "last", "10000"}, .reads = true},
    {.name = "show_tail", .words = {"show", "tail"}, .endless = true},
    {.name = "show_debug", .words = {"show", "debug"}},
    {.name = "start", .words = {"start"}},
    {.name = "start_limited", .words = {"start", "1000000000"}},
    {.name = "stop", .words = {"stop"}, .stops = true},
    {.name = "stop_later", .words = {"stop", "1000000000"}},
    {.name = "resume", .words = {"resume"}},
    {.name = "clear", .words = {"clear"}},
    {.name = "debug_one", .words = {"debug", "flow", "-d"}, .silent = true},
    {.name = "debug_all", .words = {"debug", "all", "d"}, .silent = true},
    {.name = "several", .words = {"show info; show all; show last 9"}, .reads = true},
};

struct AgentKind {
    const char *name;
    uint32_t entries;
    microseconds delay;
};

// The log of either takes some ten milliseconds to read.
constexpr AgentKind k_agents[] = {{"quick", 1000, microseconds(0)},
                                  {"slow", 12, microseconds(2000)}};

class Storm : public testing::TestWithParam<Command>
{
protected:
    // How long the command takes, or an endless one until it has printed.
    static microseconds usual_time(const Command &command)
    {
        std::vector<Clock::duration> times;
        for (int i = 0; i < 5; ++i) {
            Tool tool(command.words, command.endless ? Tool::Output::PIPE : Tool::Output::NOWHERE);
            if (command.endless) {
                EXPECT_TRUE(tool.prints_within(k_limit));
                times.push_back(Clock::now() - tool.started());
                tool.send_signal(SIGTERM);
                tool.wait();
            } else {
                times.push_back(tool.wait().time - tool.started());
            }
        }
        std::sort(times.begin(), times.end());
        return std::chrono::duration_cast<microseconds>(times[2]);
    }

    // A closed pipe shows when something is written, and a follower that has written what there is
    // waits for the next event.
    static void close_output(Tool &tool, LiveAgent &agent)
    {
        tool.close_output();
        while (!tool.ends_within(milliseconds(100)) && GetParam().endless) {
            agent.logs_an_event();
        }
    }

    struct Tally {
        int runs = 0;
        int interrupted = 0;
        int inside = 0; // of them before a read-out had read everything
        Clock::duration worst{};
        Clock::duration worst_running{}; // without waiting for a processor
    };

    // Interrupts one run within time, which follows what runs to the end take.
    void interrupt(LiveAgent &agent, int number, microseconds &time, int requests, Tally &tally)
    {
        const Command &command = GetParam();
        const bool by_pipe = number == SIGPIPE;
        agent.set_enabled(true);
        agent.take_seen();
        Tool tool(command.words, by_pipe ? Tool::Output::PIPE : Tool::Output::NOWHERE);
        // A follower meets a pipe that closes later only at its next look at the log, in 2 s.
        const microseconds window = by_pipe && command.endless ? time / 2 : time + time / 8;
        std::this_thread::sleep_until(tool.started() + random_time(window));
        const auto queued = tool.in_queue();
        const auto sent = Clock::now();
        by_pipe ? close_output(tool, agent) : tool.send_signal(number);
        const Tool::End end = tool.wait();
        if (end.signal != 0 || command.endless) {
            ASSERT_EQ(end.signal, number);
            ++tally.interrupted;
            const auto took = end.time - sent;
            tally.worst = std::max(tally.worst, took);
            tally.worst_running = std::max(tally.worst_running, took - (end.in_queue - queued));
        } else {
            const auto took = std::chrono::duration_cast<microseconds>(end.time - tool.started());
            time += (took - time) / 4;
        }
        ++tally.runs;
        ASSERT_TRUE(agent.is_alone());
        const LiveAgent::Seen seen = agent.take_seen();
        tally.inside += seen.stops > 0 && seen.entry_requests < requests;
        if (!command.stops) {
            ASSERT_TRUE(agent.is_enabled());
            ASSERT_TRUE(agent.logs_an_event());
        }
    }
};

} // namespace

TEST_P(Storm, leaves_logging_on)
{
    const Command &command = GetParam();
    for (const AgentKind &kind : k_agents) {
        LiveAgent agent(kind.entries, kind.delay);
        microseconds time = usual_time(command);
        ASSERT_TRUE(agent.is_alone());
        const int requests = agent.take_seen().entry_requests / 5;
        const int count = command.reads ? 2 * runs() : runs();
        int inside = 0;
        for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE}) {
            if (number == SIGPIPE && command.silent) {
                continue;
            }
            Tally tally;
            while (tally.runs < count && !HasFatalFailure()) {
                interrupt(agent, number, time, requests, tally);
            }
            ASSERT_FALSE(HasFatalFailure()) << kind.name << " " << strsignal(number);
            printf("%-16s %-5s %-10s takes %6.1f ms: %d runs, %d interrupted, %d while reading, "
                   "longest until the end %.1f ms, %.1f ms without waiting for a processor\n",
                   command.name, kind.name, sigabbrev_np(number), in_ms(time), tally.runs,
                   tally.interrupted, tally.inside, in_ms(tally.worst), in_ms(tally.worst_running));
            inside += number == SIGPIPE ? 0 : tally.inside;
            EXPECT_GE(tally.interrupted, least(tally.runs));
            // A closed pipe shows only at the end of a command.
            EXPECT_TRUE(number == SIGPIPE || tally.worst_running < k_end_by_signal);
        }
        EXPECT_GE(inside, command.reads ? 1 + least(4 * count) : 0);
    }
}

INSTANTIATE_TEST_SUITE_P(interruption, Storm, testing::ValuesIn(k_commands),
                         [](const auto &row) { return std::string(row.param.name); });

namespace
{

const std::vector<std::string> k_read_outs[] = {
    {"show", "all"}, {"show", "last", "10000"}, {"show", "last"}};

// A read-out with the guard in place: its Agent has seen the stop.
bool is_reading(LiveAgent &agent, const Tool &tool)
{
    return eventually(
        [&] { return agent.take_seen().stops > 0 || tool.ends_within(milliseconds(0)); });
}

} // namespace

TEST(interruption, leaves_a_log_off_that_was_off)
{
    for (const AgentKind &kind : k_agents) {
        LiveAgent agent(kind.entries, kind.delay);
        agent.set_enabled(false);
        for (int run = 0; run < runs(); ++run) {
            for (const auto &words : k_read_outs) {
                Tool tool(words, Tool::Output::NOWHERE);
                ASSERT_TRUE(is_reading(agent, tool));
                std::this_thread::sleep_for(random_time(milliseconds(4)));
                tool.send_signal(random_signal());
                tool.wait();
                ASSERT_TRUE(agent.is_alone());
                ASSERT_FALSE(agent.is_enabled());
            }
        }
    }
}

// Two signals at random moments: the log runs again, unless its Agent took longer than the grace.
TEST(interruption, by_two_signals_leaves_logging_on)
{
    for (const AgentKind &kind : k_agents) {
        LiveAgent agent(kind.entries, kind.delay);
        int count = 0;
        int interrupted = 0;
        int late = 0;
        for (int run = 0; run < 4 * runs(); ++run) {
            for (const auto &words : k_read_outs) {
                agent.set_enabled(true);
                Tool tool(words, Tool::Output::NOWHERE);
                ASSERT_TRUE(is_reading(agent, tool));
                std::this_thread::sleep_for(random_time(milliseconds(5)));
                const auto first = Clock::now();
                tool.send_signal(random_signal());
                std::this_thread::sleep_for(random_time(microseconds(300)));
                tool.send_signal(random_signal());
                const Tool::End end = tool.wait();
                ASSERT_TRUE(agent.is_alone());
                ++count;
                interrupted += end.signal != 0;
                const bool took_longer = end.time - first >= k_grace;
                ASSERT_TRUE(agent.is_enabled() || took_longer) << in_ms(end.time - first);
                late += !agent.is_enabled();
            }
        }
        printf("two signals, %s Agent: %d runs, %d interrupted, %d beyond the grace\n", kind.name,
               count, interrupted, late);
        EXPECT_GE(interrupted, least(count));
    }
}

// The release then goes over a new connection, which a signal must not tear either.
TEST(interruption, of_a_read_out_whose_agent_hangs_up_leaves_logging_on)
{
    for (const AgentKind &kind : k_agents) {
        LiveAgent agent(kind.entries, kind.delay);
        int interrupted = 0;
        int count = 0;
        for (int run = 0; run < 4 * runs(); ++run) {
            const uint32_t skip = random_number(0, kind.entries - 1);
            agent.set_enabled(true);
            agent.hang_up_at({234, 0, skip});
            Tool tool({"show", "all"}, Tool::Output::NOWHERE);
            ASSERT_TRUE(is_reading(agent, tool));
            std::this_thread::sleep_for(random_time(microseconds(skip * 10) + kind.delay * skip));
            tool.send_signal(random_signal());
            interrupted += tool.wait().signal != 0;
            ++count;
            ASSERT_TRUE(agent.is_alone());
            ASSERT_TRUE(agent.is_enabled());
        }
        printf("hangups, %s Agent: %d runs, %d interrupted\n", kind.name, count, interrupted);
        EXPECT_GE(interrupted, least(count));
    }
}

// A stalled Agent does not keep the tool: before the read-out the first signal ends it, within it
// the second.
TEST(interruption, ends_by_the_second_signal_when_the_agent_stalls)
{
    struct {
        const char *name;
        LiveAgent::Point at;
        bool guarded;
    } const points[] = {
        {"version", {63, 0}, false}, {"stop", {236, 2}, true},         {"info", {233, 0}, true},
        {"entry 1", {234, 0}, true}, {"entry 18", {234, 0, 17}, true}, {"release", {236, 3}, true},
    };
    LiveAgent agent(1000, microseconds(0));
    for (const auto &point : points) {
        Clock::duration worst{};
        Clock::duration worst_running{};
        for (int run = 0; run < runs(); ++run) {
            agent.set_enabled(true);
            agent.stall_at(point.at);
            Tool tool({"show", "last", "100"}, Tool::Output::NOWHERE);
            ASSERT_TRUE(eventually([&] { return agent.has_stalled(); }));
            const int first = random_signal();
            int last = first;
            auto queued = tool.in_queue();
            tool.send_signal(first);
            auto sent = Clock::now();
            if (point.guarded) {
                ASSERT_FALSE(tool.ends_within(milliseconds(1))) << "by the first signal";
                // Every other time just when the grace ends.
                const auto wait = run % 2 == 0 ? random_time(milliseconds(80))
                                               : k_grace + random_time(microseconds(400));
                last = random_signal();
                std::this_thread::sleep_until(sent + wait);
                queued = tool.in_queue();
                sent = Clock::now();
                tool.send_signal(last);
            }
            const Tool::End end = tool.wait();
            worst = std::max(worst, end.time - sent);
            worst_running = std::max(worst_running, end.time - sent - (end.in_queue - queued));
            ASSERT_EQ(end.signal, last);
            agent.go_on();
            ASSERT_TRUE(agent.is_alone());
        }
        printf("stalled at %-8s: %d runs, longest from the %s signal to the end %.1f ms, %.1f ms "
               "without waiting for a processor\n",
               point.name, runs(), point.guarded ? "second" : "first", in_ms(worst),
               in_ms(worst_running));
        EXPECT_LE(worst_running, k_end_by_second);
    }
}

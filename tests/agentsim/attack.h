// What an attack on the program takes: a client that behaves, attackers, and what is measured.
#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <utility>
#include <vector>

#include "tests/agentsim/agent_client.h"
#include "tests/support/child.h"
#include "tests/support/eventually.h"

namespace ruk_test
{

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

#if defined(__SANITIZE_ADDRESS__)
constexpr bool k_is_sanitized = true;
#elif defined(__has_feature)
constexpr bool k_is_sanitized = __has_feature(address_sanitizer);
#else
constexpr bool k_is_sanitized = false;
#endif

// 128 connections with the longest request each, and the program itself.  AddressSanitizer keeps
// what was freed for a while.
constexpr long k_most_kilobytes = k_is_sanitized ? 800 * 1024 : 144 * 1024;

// Afterwards, a log of thousands of entries included.
constexpr long k_most_kilobytes_at_rest = k_is_sanitized ? k_most_kilobytes : 12 * 1024;

constexpr size_t k_most_connections = 128;

// Far more than any answer takes, and far less than waiting for an attacker would.
constexpr milliseconds k_longest_answer{2000};

constexpr uint64_t k_entries = 5000;

inline double in_ms(Clock::duration time)
{
    return std::chrono::duration<double, std::milli>(time).count();
}

// A client as it should be: one connection kept, and now and then a new one.  Every answer is
// compared with what it must be.
class WellBehaved
{
public:
    WellBehaved(std::string path, milliseconds pause)
        : path_(std::move(path)), pause_(pause), thread_([this] { run(); })
    {
    }
    ~WellBehaved() { stop(); }
    WellBehaved(const WellBehaved &) = delete;
    WellBehaved &operator=(const WellBehaved &) = delete;

    // Lets it go on until it has made so many more rounds.
    void make_rounds(int count) const
    {
        const int wanted = rounds_ + count;
        EXPECT_TRUE(eventually([&] { return rounds_ >= wanted || failures_ > 0; }));
    }

    void expect_well_served(const char *during)
    {
        stop();
        printf("%s: %d rounds of the well-behaved client, longest answer %.1f ms\n", during,
               rounds_.load(), in_ms(longest_));
        EXPECT_EQ(failures_, 0) << during << ": " << first_failure_;
        EXPECT_GT(rounds_, 0) << during;
        EXPECT_LT(longest_, k_longest_answer) << during;
    }

private:
    void run()
    {
        const AgentClient kept(path_);
        expect(kept.connected(), "connects");
        while (!stopped_ && failures_ == 0) {
            make_round(kept, "kept connection");
            if (rounds_ % 4 == 0) {
                const auto begun = Clock::now();
                const AgentClient fresh(path_);
                longest_ = std::max(longest_, Clock::now() - begun);
                make_round(fresh, "new connection");
            }
            ++rounds_;
            std::this_thread::sleep_for(pause_);
        }
    }

    void make_round(const AgentClient &client, const char *which)
    {
        uint32_t version = 7;
        expect(timed_call(client, 63, 0, version) == 0 && version == 7, which);
        LogInfo info{};
        expect(timed_call(client, 233, 0, info) == 0 && info.total == k_entries, which);
        const auto cursor = static_cast<uint64_t>(rounds_ * 37) % (k_entries - 1);
        LogEntry entry{};
        entry.entry = cursor;
        expect(timed_call(client, 234, 0, entry) == 0 && entry.entry == cursor + 1 &&
                   entry.message[0] == 'l',
               which);
        LogModule module{};
        module.index = 6;
        expect(timed_call(client, 311, 0, module) == 0 && module.index == 7 &&
                   std::string_view(module.name) == "flow",
               which);
        uint32_t word = 0;
        expect(timed_call(client, 9999, 0, word) == 4, which);
    }

    template <typename Record>
    int32_t timed_call(const AgentClient &client, uint16_t opcode, int32_t ident, Record &record)
    {
        const auto begun = Clock::now();
        const int32_t status = client.call(opcode, ident, record);
        longest_ = std::max(longest_, Clock::now() - begun);
        return status;
    }

    void expect(bool holds, const char *what)
    {
        if (!holds && failures_++ == 0) {
            first_failure_ = std::string(what) + " in round " + std::to_string(rounds_);
        }
    }

    void stop()
    {
        stopped_ = true;
        if (thread_.joinable()) {
            thread_.join();
        }
    }

    std::string path_;
    milliseconds pause_;
    std::atomic<bool> stopped_ = false;
    std::atomic<int> rounds_ = 0;
    std::atomic<int> failures_ = 0;
    std::string first_failure_;
    Clock::duration longest_{};
    std::thread thread_; // last
};

using Clients = std::vector<std::unique_ptr<AgentClient>>;

// Attackers in a process of their own, with their connections open until they are killed.
class Attackers
{
public:
    using Action = std::function<void(Clients &clients)>;

    // Returns once action has made the connections; then rest is done over and over.
    explicit Attackers(
        const Action &action, const Action &rest = [](Clients &) { pause(); })
    {
        int ready[2];
        EXPECT_EQ(pipe2(ready, O_CLOEXEC), 0);
        pid_ = fork();
        if (pid_ == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            // The connections of this process would otherwise be the child's, too.
            const int tell = dup2(ready[1], STDIN_FILENO);
            close_range(STDERR_FILENO + 1, ~0U, 0);
            Clients clients;
            action(clients);
            (void)!write(tell, "", 1);
            for (;;) {
                rest(clients);
            }
        }
        close(ready[1]);
        char byte;
        EXPECT_EQ(read(ready[0], &byte, 1), 1);
        close(ready[0]);
    }
    ~Attackers() { kill_them(); }
    Attackers(const Attackers &) = delete;
    Attackers &operator=(const Attackers &) = delete;

    // Returns once they are dead and their connections closed.
    void kill_them()
    {
        if (pid_ > 0) {
            kill(pid_, SIGKILL);
            waitpid(std::exchange(pid_, -1), nullptr, 0);
        }
    }

private:
    pid_t pid_;
};

class Attack : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        // The thousand connections are this process's.
        rlimit limit{};
        getrlimit(RLIMIT_NOFILE, &limit);
        limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, 4096);
        setrlimit(RLIMIT_NOFILE, &limit);
    }

    TemporaryFolder folder_;
    std::string path_ = folder_.file("socket");

    size_t at_rest_ = 0; // descriptors of the program without a client

    std::unique_ptr<Child> serve(const std::vector<std::string> &more)
    {
        std::vector<std::string> arguments = {RUK_AGENTSIM, "--socket", path_};
        arguments.insert(arguments.end(), more.begin(), more.end());
        auto agent = std::make_unique<Child>(arguments);
        EXPECT_TRUE(agent->wait_for_output("\n"));
        at_rest_ = descriptors(*agent);
        return agent;
    }

    // A log of k_entries lines, all alike.
    std::unique_ptr<Child> serve_lines()
    {
        std::ofstream feed(folder_.file("feed"));
        for (uint64_t i = 0; i < k_entries; ++i) {
            feed << "line\n";
        }
        feed.close();
        return serve({"--feed", folder_.file("feed")});
    }

    static long kilobytes(const Child &agent, const std::string &what)
    {
        std::ifstream status("/proc/" + std::to_string(agent.pid()) + "/status");
        for (std::string line; std::getline(status, line);) {
            if (line.starts_with(what + ":")) {
                return std::stol(line.substr(what.size() + 1));
            }
        }
        ADD_FAILURE() << "no " << what;
        return 0;
    }

    static size_t descriptors(const Child &agent)
    {
        const std::filesystem::directory_iterator folder("/proc/" + std::to_string(agent.pid()) +
                                                         "/fd");
        return static_cast<size_t>(std::distance(begin(folder), end(folder)));
    }

    // The limit that leaves the program so many descriptors more.
    static rlim_t limit_for(const Child &agent, int more)
    {
        const std::string folder = "/proc/" + std::to_string(agent.pid()) + "/fd/";
        rlim_t limit = 0;
        for (; more > 0; ++limit) {
            more -= std::filesystem::is_symlink(folder + std::to_string(limit)) ? 0 : 1;
        }
        return limit;
    }

    void expect_bounded(const Child &agent, const char *when) const
    {
        printf("%s: VmRSS %ld kB, VmHWM %ld kB, %zu descriptors\n", when, kilobytes(agent, "VmRSS"),
               kilobytes(agent, "VmHWM"), descriptors(agent));
        EXPECT_LE(kilobytes(agent, "VmHWM"), k_most_kilobytes) << when;
        EXPECT_LE(descriptors(agent), at_rest_ + k_most_connections) << when;
    }

    // What attackers took is given back once they have gone; a watcher may be left.
    void expect_recovered(Child &agent, const char *when) const
    {
        EXPECT_TRUE(eventually([&] { return descriptors(agent) <= at_rest_ + 1; }))
            << descriptors(agent);
        expect_bounded(agent, when);
        EXPECT_LE(kilobytes(agent, "VmRSS"), k_most_kilobytes_at_rest) << when;
        agent.send_signal(SIGTERM);
        const Outcome outcome = agent.wait(std::chrono::seconds(10));
        EXPECT_EQ(outcome.exit_status, 0) << outcome.err;
        EXPECT_EQ(outcome.err, "");
    }

    // So many connections, each with bytes sent.
    std::unique_ptr<Attackers> crowd(size_t count, const std::string &bytes = "") const
    {
        return std::make_unique<Attackers>([&](Clients &clients) {
            for (size_t i = 0; i < count; ++i) {
                clients.push_back(std::make_unique<AgentClient>(path_));
                clients.back()->send_bytes(bytes);
            }
        });
    }
};

// A whole request: the next entry after the cursor in its payload.
inline std::string entry_request()
{
    return bytes_of(request_of(234, 0, 152)) + std::string(152, '\0');
}

} // namespace ruk_test

// The tool's commands, beside clients of the same Agent that do nothing but what the kernel has to
// do or that do it the plain way, and beside a program that does nothing.  Times of programs are
// their user and system time; Agent and client share one processor.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include "ruk/front_end.h"
#include "tests/support/child.h"
#include "tests/support/cost.h"
#include "tests/support/fast_agent.h"
#include "tests/support/private_var_tmp.h"

namespace
{

using namespace ruk_test;
using Seconds = std::chrono::duration<double>;

constexpr uint32_t k_entries = 10'000;
constexpr uint32_t k_few = 60; // instructions are counted by the difference of two lengths
constexpr uint32_t k_many = 110;

FastAgent *agent;

Arguments ruklog(const std::vector<std::string> &words)
{
    Arguments arguments{RUKLOG_PATH};
    arguments.insert(arguments.end(), words.begin(), words.end());
    return arguments;
}

Arguments show_last(uint32_t count)
{
    return ruklog({"show", "last", std::to_string(count)});
}

Arguments by_hand(uint32_t count)
{
    return {HAND_CLIENT_PATH, std::to_string(count)};
}

Arguments by_printf(uint32_t count)
{
    return {PRINTF_CLIENT_PATH, std::to_string(count)};
}

Arguments show_info()
{
    return ruklog({"show", "info"});
}

Arguments empty_program()
{
    return {EMPTY_PROGRAM_PATH};
}

// Output is kept, as a file in memory, since a null device would take it for nothing.
class Output
{
public:
    Output() : fd_(memfd_create("output", MFD_CLOEXEC)) {}
    ~Output() { close(fd_); }
    Output(const Output &) = delete;
    Output &operator=(const Output &) = delete;

    int empty() const
    {
        lseek(fd_, 0, SEEK_SET);
        (void)!ftruncate(fd_, 0);
        return fd_;
    }

private:
    int fd_;
};

// Times and counts are counters of their comparison's benchmark, by the program's name.
struct Program {
    std::string name;
    Arguments arguments;
};

// What disturbs a run only ever makes it slower.
void keep_least(benchmark::State &state, const std::string &name, Seconds time)
{
    const double nanoseconds = std::chrono::duration<double, std::nano>(time).count();
    const auto [kept, first] = state.counters.try_emplace(name, nanoseconds);
    if (!first) {
        kept->second = std::min<double>(kept->second, nanoseconds);
    }
}

// The programs run by turns, so that none has the machine's good moments to itself, and to and fro,
// so that none always follows the same one.
void compare_cpu_times(benchmark::State &state, const std::vector<Program> &programs, int rounds)
{
    const Output output;
    for (auto _ : state) {
        for (int round = 0; round < rounds; ++round) {
            for (size_t turn = 0; turn < programs.size(); ++turn) {
                const size_t p = round % 2 == 0 ? turn : programs.size() - 1 - turn;
                keep_least(state, programs[p].name,
                           cpu_time_of(programs[p].arguments, output.empty()));
            }
        }
    }
}

struct Client {
    const char *name;
    Arguments (*command)(uint32_t entries);
};

constexpr Client k_clients[] = {{"ruk", show_last}, {"floor", by_hand}, {"printf", by_printf}};

// Counts are the same every time, so that each is taken once.  Where processes may not be traced
// there are none, rather than counts of nothing.
using Counters = std::vector<std::pair<std::string, double>>;

double user_instructions(const Arguments &arguments)
{
    return static_cast<double>(instructions_of(arguments).value());
}

Counters counts_per_entry()
{
    Counters counts;
    for (const auto &[name, command] : k_clients) {
        const double few = user_instructions(command(k_few));
        const double many = user_instructions(command(k_many));
        const auto calls = static_cast<double>(system_calls_of(command(k_entries)).value());
        counts.emplace_back(std::string(name) + ":instructions", (many - few) / (k_many - k_few));
        counts.emplace_back(std::string(name) + ":syscalls", calls / k_entries);
    }
    return counts;
}

Counters counts_of_show_info()
{
    return {{"ruk:instructions", user_instructions(show_info())}};
}

Counters counted(Counters (*count)())
{
    const bool may_trace = instructions_of(empty_program()).has_value();
    return may_trace ? count() : Counters{};
}

void drain(int fd)
{
    static char piece[1 << 20];
    while (read(fd, piece, sizeof piece) > 0) {
    }
}

// The slow reader takes nothing until the log runs again; the fast one takes all at once.
enum class Reader { fast, slow };

// How long the log is stopped, as the Agent sees it.
Seconds hold_time(Reader reader)
{
    int output[2];
    (void)!pipe2(output, O_CLOEXEC);
    agent->forget_releases();
    const pid_t tool = start(show_last(k_entries), output[1]);
    close(output[1]);
    if (reader == Reader::fast) {
        drain(output[0]);
    }
    const Seconds held = agent->wait_for_release();
    drain(output[0]);
    close(output[0]);
    waitpid(tool, nullptr, 0);
    return held;
}

void hold_bench(benchmark::State &state)
{
    for (auto _ : state) {
        keep_least(state, "fast", hold_time(Reader::fast));
        keep_least(state, "slow", hold_time(Reader::slow));
    }
}

// Standard output to nowhere, for what prints there.
class NullOutput
{
public:
    NullOutput() : former_(dup(STDOUT_FILENO))
    {
        fflush(stdout);
        const int null = open("/dev/null", O_WRONLY | O_CLOEXEC);
        dup2(null, STDOUT_FILENO);
        close(null);
    }
    ~NullOutput()
    {
        fflush(stdout);
        dup2(former_, STDOUT_FILENO);
        close(former_);
    }
    NullOutput(const NullOutput &) = delete;
    NullOutput &operator=(const NullOutput &) = delete;

private:
    int former_;
};

// A log of a hundred entries a second, as many as one read-out shows at most.
std::vector<LogEntry> some_entries()
{
    std::vector<LogEntry> entries(k_entries);
    for (uint32_t n = 0; n < k_entries; ++n) {
        LogEntry &entry = entries[n];
        entry.seconds = 1'700'000'000 + n / 100;
        entry.microseconds = n * 7919 % 1'000'000;
        entry.entry = n;
        entry.module = n % 40;
        entry.level = static_cast<uint16_t>(1U << n % 8);
        entry.cpu = static_cast<uint16_t>(n % 16);
        snprintf(entry.message, sizeof entry.message, "port %u changed its state: %.*s\n", n % 64,
                 static_cast<int>(n % 50), "mmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmm");
    }
    return entries;
}

void print_by_printf(LogEntry *entry)
{
    const time_t seconds = entry->seconds;
    char date[32];
    ctime_r(&seconds, date);
    fprintf(stdout, "%.15s.%06d %8llu %2d %3d %3d %7s %.*s", date + 4,
            static_cast<int32_t>(entry->microseconds),
            static_cast<unsigned long long>(entry->entry), entry->cpu,
            static_cast<int32_t>(entry->module), entry->level, ruk_levelstring(entry->level),
            LOG_MESSAGE_SIZE, entry->message);
}

template <auto Print> void format_entry_bench(benchmark::State &state)
{
    std::vector<LogEntry> entries = some_entries();
    const NullOutput nowhere;
    size_t next = 0;
    for (auto _ : state) {
        Print(&entries[next]);
        next = next + 1 == entries.size() ? 0 : next + 1;
    }
}

void show_last_bench(benchmark::State &state, const Counters &counts)
{
    std::vector<Program> programs;
    for (const auto &[name, command] : k_clients) {
        programs.push_back({name, command(k_entries)});
    }
    compare_cpu_times(state, programs, 6);
    state.counters.insert(counts.begin(), counts.end());
}

void show_info_bench(benchmark::State &state, const Counters &counts)
{
    compare_cpu_times(state, {{"ruk", show_info()}, {"empty_program", empty_program()}}, 60);
    state.counters.insert(counts.begin(), counts.end());
}

void register_all()
{
    // Short visits, many times over the whole run: a host's noise comes and goes.
    const auto compare = [](const char *name, auto &&function) {
        benchmark::RegisterBenchmark(name, function)->Iterations(1)->Repetitions(27);
    };
    compare("show_last", [counts = counted(counts_per_entry)](benchmark::State &state) {
        show_last_bench(state, counts);
    });
    compare("show_info", [counts = counted(counts_of_show_info)](benchmark::State &state) {
        show_info_bench(state, counts);
    });
    compare("hold", hold_bench);
    benchmark::RegisterBenchmark("format_entry/ruk", format_entry_bench<ruk_log_print_entry>);
    benchmark::RegisterBenchmark("format_entry/ctime_fprintf", format_entry_bench<print_by_printf>);
}

// All of them must print the same, or the comparison is one of unlike things.
void require_same_output()
{
    const std::string printed = run(show_last(k_entries)).out;
    if (run(by_hand(k_entries)).out != printed || run(by_printf(k_entries)).out != printed) {
        fputs("the clients' output differs\n", stderr);
        exit(1);
    }
}

} // namespace

int main(int argc, char **argv)
{
    enter_private_var_tmp();
    const OneProcessor agent_and_clients;
    FastAgent fast_agent(k_entries + 1000);
    agent = &fast_agent;
    setenv("TZ", "UTC0", 1);
    require_same_output();
    register_all();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}

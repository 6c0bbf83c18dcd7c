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

// A program among its peers.
struct Contender {
    std::vector<Arguments> programs;
    size_t measured; // which of them

    const Arguments &arguments() const { return programs[measured]; }
};

// The best of so many runs is one measurement: what disturbs a run only ever makes it slower.  The
// peers run in between, so that none has the machine's good moments to itself, and to and fro, so
// that none always follows the same one.
void measure_cpu_time(benchmark::State &state, const Contender &contender, int runs)
{
    const Output output;
    for (auto _ : state) {
        Seconds best = Seconds::max();
        for (int i = 0; i < runs; ++i) {
            for (size_t turn = 0; turn < contender.programs.size(); ++turn) {
                const size_t p = i % 2 == 0 ? turn : contender.programs.size() - 1 - turn;
                const Seconds time = cpu_time_of(contender.programs[p], output.empty());
                best = p == contender.measured ? std::min(best, time) : best;
            }
        }
        state.SetIterationTime(best.count());
    }
}

// Counts are the same every time, so that each is taken once.
template <typename Count> double once(const Arguments &arguments, Count count)
{
    return static_cast<double>(count(arguments).value_or(0));
}

using Command = Arguments (*)(uint32_t);

struct Counts {
    double instructions;
    double syscalls;
};

Counts counts_per_entry(Command command)
{
    const double few = once(command(k_few), instructions_of);
    const double many = once(command(k_many), instructions_of);
    const double calls = once(command(k_entries), system_calls_of);
    return {(many - few) / (k_many - k_few), calls / k_entries};
}

void show_last_bench(benchmark::State &state, const Contender &client, const Counts &counts)
{
    measure_cpu_time(state, client, 6);
    state.counters["instructions"] = counts.instructions;
    state.counters["syscalls"] = counts.syscalls;
}

void show_info_bench(benchmark::State &state, const Contender &program, double instructions)
{
    measure_cpu_time(state, program, 20);
    state.counters["instructions"] = instructions;
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

void hold_bench(benchmark::State &state, Reader reader)
{
    for (auto _ : state) {
        Seconds best = Seconds::max();
        for (int i = 0; i < 3; ++i) {
            best = std::min<Seconds>(best, hold_time(reader));
        }
        state.SetIterationTime(best.count());
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

void register_all()
{
    const auto add = [](const char *name, auto &&function) {
        return benchmark::RegisterBenchmark(name, function)->Unit(benchmark::kMicrosecond);
    };
    const std::pair<const char *, Command> clients[] = {{"show_last/ruk", show_last},
                                                        {"show_last/floor", by_hand},
                                                        {"show_last/printf", by_printf}};
    Contender client{{}, 0};
    for (const auto &[name, command] : clients) {
        client.programs.push_back(command(k_entries));
    }
    for (const auto &[name, command] : clients) {
        const Counts counts = counts_per_entry(command);
        add(name, [=](benchmark::State &state) { show_last_bench(state, client, counts); })
            ->UseManualTime()
            ->Iterations(1);
        ++client.measured;
    }
    Contender program{{show_info(), empty_program()}, 0};
    for (const char *name : {"show_info/ruk", "show_info/empty_program"}) {
        const double counted = once(program.arguments(), instructions_of);
        add(name, [=](benchmark::State &state) { show_info_bench(state, program, counted); })
            ->UseManualTime()
            ->Iterations(5);
        ++program.measured;
    }
    add("hold/fast", [](benchmark::State &state) { hold_bench(state, Reader::fast); })
        ->UseManualTime()
        ->Iterations(1);
    add("hold/slow", [](benchmark::State &state) { hold_bench(state, Reader::slow); })
        ->UseManualTime()
        ->Iterations(1);
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

// How long a read-out keeps the log stopped, with a reader that takes the output at once and with
// one that takes 20 kB a second: the time from the stop to the release, as the Agent sees it.
#include "tests/support/child.h"
#include "tests/support/eventually.h"
#include "tests/support/private_var_tmp.h"
#include "tests/support/scripted_agent.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <vector>

namespace
{

using namespace ruk_test;
using Clock = std::chrono::steady_clock;

constexpr uint64_t k_entries = 10'000;

// A log of k_entries that notes when it was stopped and when it ran again.
struct TimedLog {
    Clock::time_point stopped;
    Clock::time_point released;
    std::atomic<bool> is_released = false;

    std::optional<std::string> operator()(const Request &request)
    {
        if (request.opcode() == 236 && request.ident() == 2) {
            stopped = Clock::now();
            return reply_to(request, 0, u64(1));
        }
        if (request.opcode() == 236) {
            released = Clock::now();
            is_released = true;
        }
        return request.opcode() == 234 ? next_entry(request) : reply_to(request, 0);
    }

    static std::string next_entry(const Request &request)
    {
        std::string entry = request.payload();
        uint64_t number;
        memcpy(&number, &entry[8], sizeof number);
        ++number;
        entry.replace(8, 8, u64(number));
        entry.replace(24, 48, std::string(46, 'm') + "\n" + '\0');
        return reply_to(request, number < k_entries ? 0 : 1, entry);
    }
};

double hold_milliseconds(const std::string &reader)
{
    TimedLog log;
    ScriptedAgent agent([&](const Request &request) { return log(request); });
    Child tool({"/bin/bash", "-c", std::string(RUKLOG_PATH) + " show all | " + reader});
    if (!eventually([&] { return log.is_released.load(); })) {
        fputs("the log was not released\n", stderr);
    }
    return std::chrono::duration<double, std::milli>(log.released - log.stopped).count();
}

// The reader's first bytes are enough: it is killed once the log has been released.
const std::string k_fast = "cat >/dev/null";
const std::string k_slow = "while dd bs=2000 count=1 2>/dev/null | grep -q .; do sleep 0.1; done";

} // namespace

int main()
{
    enter_private_var_tmp();
    constexpr size_t k_rounds = 15;
    std::vector<double> fast;
    std::vector<double> slow;
    for (size_t round = 0; round < k_rounds; ++round) {
        fast.push_back(hold_milliseconds(k_fast));
        slow.push_back(hold_milliseconds(k_slow));
    }
    std::sort(fast.begin(), fast.end());
    std::sort(slow.begin(), slow.end());
    const auto print = [](const char *what, size_t at, const auto &a, const auto &b) {
        printf("%-8s %9.1f ms %9.1f ms %8.2f\n", what, a[at], b[at], b[at] / a[at]);
    };
    printf("time under hold, %llu entries, %zu rounds\n",
           static_cast<unsigned long long>(k_entries), k_rounds);
    printf("%-8s %12s %12s %8s\n", "", "fast reader", "slow reader", "ratio");
    print("least", 0, fast, slow);
    print("median", k_rounds / 2, fast, slow);
    print("most", k_rounds - 1, fast, slow);
}

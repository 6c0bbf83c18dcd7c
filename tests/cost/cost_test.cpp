// Counts of instructions and system calls, as limits: what makes the tool slower shows here, on any
// machine and however busy it is.  The limits stand a little above what was measured.
#include "tests/support/cost.h"

#include <cstdio>

#include "tests/support/child.h"
#include "tests/support/fast_agent.h"
#include "tests/support/private_var_tmp.h"

using namespace ruk_test;

namespace
{

// Each instruction is a stop of the process, so that more of them would take their time.
constexpr uint32_t k_few = 10;
constexpr uint32_t k_many = 40;

Arguments show_last(uint32_t count)
{
    return {RUKLOG_PATH, "show", "last", std::to_string(count)};
}

Arguments client(const char *path, uint32_t count)
{
    return {path, std::to_string(count)};
}

using Count = std::optional<uint64_t>(const Arguments &);

// What each further entry costs.  Negative where processes may not be traced.
template <typename Command> double per_entry(Count count, const Command &command)
{
    const auto few = count(command(k_few));
    const auto many = count(command(k_many));
    return few && many ? static_cast<double>(*many - *few) / (k_many - k_few) : -1;
}

double printf_client_per_entry(Count count)
{
    return per_entry(count, [](uint32_t n) { return client(PRINTF_CLIENT_PATH, n); });
}

class cost : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!instructions_of({"/bin/true"})) {
            GTEST_SKIP() << "SKIPPED: processes may not be traced here, so nothing is counted";
        }
    }

    FastAgent agent_{1000};
};

} // namespace

// Or the comparison would be one of unlike things.
TEST_F(cost, is_compared_with_clients_that_print_the_same)
{
    const std::string printed = run(show_last(500)).out;
    EXPECT_EQ(std::count(printed.begin(), printed.end(), '\n'), 501);
    EXPECT_EQ(run(client(PRINTF_CLIENT_PATH, 500)).out, printed);
    EXPECT_EQ(run(client(HAND_CLIENT_PATH, 500)).out, printed);
}

TEST_F(cost, of_an_entry_in_system_calls_is_one_send_and_one_receive)
{
    const double calls = per_entry(system_calls_of, show_last);
    printf("%.3f system calls an entry\n", calls);
    EXPECT_LE(calls, 2.04);
}

TEST_F(cost, of_an_entry_in_instructions)
{
    const double ours = per_entry(instructions_of, show_last);
    const double theirs = printf_client_per_entry(instructions_of);
    printf("%.1f instructions an entry, %.1f by printf: %.4f\n", ours, theirs, ours / theirs);
    EXPECT_LE(ours, 0.15 * theirs);
}

TEST_F(cost, of_show_info_in_instructions)
{
    const uint64_t instructions = *instructions_of({RUKLOG_PATH, "show", "info"});
    printf("%llu instructions\n", static_cast<unsigned long long>(instructions));
    EXPECT_LE(instructions, 135'000U);
}

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

// Two lengths, whose difference is what is counted.  Each instruction is a stop of the process, so
// that more of them would take their time.
struct Lengths {
    uint32_t few;
    uint32_t many;
};
constexpr Lengths k_for_calls{100, 900};
constexpr Lengths k_for_instructions{60, 110};
constexpr Lengths k_for_printf{10, 40};

Arguments show_last(uint32_t count)
{
    return {RUKLOG_PATH, "show", "last", std::to_string(count)};
}

Arguments client(const char *path, uint32_t count)
{
    return {path, std::to_string(count)};
}

using Count = std::optional<uint64_t>(const Arguments &);

// What each further entry costs.
double per_entry(Count count, Arguments (*command)(uint32_t), const Lengths &lengths)
{
    const std::optional<uint64_t> few = count(command(lengths.few));
    const std::optional<uint64_t> many = count(command(lengths.many));
    const uint32_t entries = lengths.many - lengths.few;
    return static_cast<double>(many.value() - few.value()) / entries;
}

Arguments printf_client(uint32_t count)
{
    return client(PRINTF_CLIENT_PATH, count);
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
    const double calls = per_entry(system_calls_of, show_last, k_for_calls);
    printf("%.3f system calls an entry\n", calls);
    EXPECT_GE(calls, 2.0);
    EXPECT_LE(calls, 2.01);
}

TEST_F(cost, of_an_entry_in_instructions)
{
    const double ours = per_entry(instructions_of, show_last, k_for_instructions);
    const double theirs = per_entry(instructions_of, printf_client, k_for_printf);
    printf("%.1f instructions an entry, %.1f by printf: %.4f\n", ours, theirs, ours / theirs);
    EXPECT_GT(ours, 0);
    EXPECT_LE(ours, 0.15 * theirs);
}

TEST_F(cost, of_show_info_in_instructions)
{
    const uint64_t instructions = *instructions_of({RUKLOG_PATH, "show", "info"});
    printf("%llu instructions\n", static_cast<unsigned long long>(instructions));
    EXPECT_LE(instructions, 135'000U);
}

// The read-out of the tool as a whole process: slow readers, readers that go away, signals.
#include "tests/support/child.h"
#include "tests/support/eventually.h"
#include "tests/support/scripted_agent.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <sys/wait.h>

namespace
{

using namespace ruk_test;

// A log of 20,000 entries: more output than a pipe takes.
ScriptedAgent::Handler long_log()
{
    return [](const Request &request) -> std::optional<std::string> {
        if (request.opcode() == 236) {
            return reply_to(request, 0, u64(1));
        }
        if (request.opcode() != 234) {
            return reply_to(request, 0);
        }
        std::string entry = request.payload();
        uint64_t number;
        memcpy(&number, &entry[8], sizeof number);
        ++number;
        entry.replace(8, 8, u64(number));
        entry.replace(24, 3, std::string("m\n\0", 3));
        return reply_to(request, number < 20'000 ? 0 : 1, entry);
    };
}

bool has_released(const ScriptedAgent &agent)
{
    for (const Request &request : agent.requests()) {
        if (request.opcode() == 236 && request.ident() == 3) {
            return true;
        }
    }
    return false;
}

size_t entry_requests(const ScriptedAgent &agent)
{
    size_t count = 0;
    for (const Request &request : agent.requests()) {
        count += request.opcode() == 234;
    }
    return count;
}

// A long log whose Agent hangs up once, at the entry request of that number.
ScriptedAgent::Handler log_that_breaks(size_t at)
{
    return [at, asked = size_t{0}](const Request &request) mutable -> std::optional<std::string> {
        if (request.opcode() == 234 && ++asked == at) {
            return std::nullopt;
        }
        return long_log()(request);
    };
}

// An agent whose log never ends.
std::optional<std::string> endless_log(const Request &request)
{
    return reply_to(request, 0, request.opcode() == 236 ? u64(1) : "");
}

} // namespace

TEST(read_out, does_not_wait_for_its_reader)
{
    ScriptedAgent agent(long_log());
    Child tool({RUKLOG_PATH, "show", "all"});
    // Nobody has read a byte of the output.
    EXPECT_TRUE(eventually([&] { return has_released(agent); }));
    const std::string out = tool.wait().out;
    EXPECT_EQ(std::count(out.begin(), out.end(), '\n'), 20'001);
}

// The pipe and the buffer are filled to the brim first, so that the very next line has to wait.
TEST(read_out, prints_nothing_while_the_log_is_stopped)
{
    constexpr size_t k_room = 65536 + 4096 - 20; // a pipe, and a buffer but for a few characters
    std::string line;
    for (size_t printed = 0; printed + 21 <= k_room; printed += 21) {
        line += "x;"; // "No match found for x"
    }
    for (const char *command : {"show last 1", "show last"}) {
        const bool has_info = strcmp(command, "show last 1") == 0;
        ScriptedAgent agent([has_info](const Request &request) {
            return request.opcode() == 233 && !has_info ? std::optional(reply_to(request, 1))
                                                        : long_log()(request);
        });
        Child tool({RUKLOG_PATH, line + command});
        EXPECT_TRUE(eventually([&] { return has_released(agent); }, std::chrono::seconds(5)));
        EXPECT_EQ(tool.wait().exit_status, 0);
    }
}

TEST(read_out, releases_the_log_when_its_reader_goes)
{
    ScriptedAgent agent(long_log());
    Child tool({RUKLOG_PATH, "show", "all"});
    tool.close_output();
    EXPECT_EQ(tool.wait().signal, SIGPIPE);
    EXPECT_TRUE(has_released(agent));
}

TEST(read_out, releases_the_log_when_it_is_interrupted)
{
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
        SCOPED_TRACE(number);
        ScriptedAgent agent(endless_log);
        Child tool({RUKLOG_PATH, "show", "all"});
        ASSERT_TRUE(eventually([&] { return entry_requests(agent) > 5; }));
        tool.send_signal(number);
        EXPECT_EQ(tool.wait().signal, number);
        EXPECT_TRUE(has_released(agent));
    }
}

TEST(read_out, ends_at_the_second_signal_when_the_agent_stalls)
{
    ScriptedAgent agent([](const Request &request) -> std::optional<std::string> {
        return request.opcode() == 234 ? "" : endless_log(request);
    });
    Child tool({RUKLOG_PATH, "show", "last"});
    ASSERT_TRUE(eventually([&] { return entry_requests(agent) == 1; }));
    tool.send_signal(SIGINT);
    // Any of the guarded signals does, once the first has been noted.  Had the first ended the
    // tool, the outcome would name it.
    const bool ended = eventually([&] {
        tool.send_signal(SIGTERM);
        siginfo_t info{};
        return waitid(P_PID, static_cast<id_t>(tool.pid()), &info, WEXITED | WNOHANG | WNOWAIT) ==
                   0 &&
               info.si_pid == tool.pid();
    });
    EXPECT_TRUE(ended);
    EXPECT_EQ(tool.wait().signal, SIGTERM);
    EXPECT_FALSE(has_released(agent));
}

// What the tool has read is printed before it tries to release a log whose Agent hung up.
TEST(read_out, releases_the_log_of_a_broken_connection_when_its_reader_goes)
{
    ScriptedAgent agent(log_that_breaks(500));
    Child tool({RUKLOG_PATH, "show", "all"});
    tool.close_output();
    EXPECT_EQ(tool.wait().signal, SIGPIPE);
    EXPECT_TRUE(has_released(agent));
}

TEST(read_out, releases_the_log_of_a_broken_connection_when_its_reader_stalls)
{
    ScriptedAgent agent(log_that_breaks(3000));
    Child tool({RUKLOG_PATH, "show", "all"});
    // Its entries are more than the pipe takes: it waits for its reader, or will.
    ASSERT_TRUE(eventually([&] { return entry_requests(agent) == 3000; }));
    EXPECT_FALSE(has_released(agent));
    tool.send_signal(SIGINT);
    EXPECT_TRUE(eventually([&] { return has_released(agent); }));
    EXPECT_EQ(tool.wait().signal, SIGINT);
}

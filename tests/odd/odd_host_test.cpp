// The tool where standard descriptors are closed, the disk is full, memory is short or the time
// zone is nonsense: same requests, same exit status, and no text goes where it does not belong.
#include "tests/support/child.h"
#include "tests/support/eventually.h"
#include "tests/support/log_records.h"
#include "tests/support/scripted_agent.h"

#include <csignal>

namespace
{

using namespace ruk_test;

// A log that was on and has so many entries.
ScriptedAgent::Handler log_of(uint64_t entries)
{
    return [entries](const Request &request) -> std::optional<std::string> {
        if (request.opcode() == 236) {
            return reply_to(request, 0, request.payload().empty() ? "" : u64(1));
        }
        if (request.opcode() != 234) {
            return reply_to(request, request.opcode() == 311 ? 1 : 0); // there are no modules
        }
        const uint64_t next = number_at<uint64_t>(request.payload(), 8) + 1;
        return next < entries ? reply_to(request, 0, numbered_entry(next)) : reply_to(request, 1);
    };
}

// The opcode of each request; a hold, a release and the like with what they ask for.
std::vector<std::string> asked(const ScriptedAgent &agent)
{
    std::vector<std::string> names;
    for (const Request &request : agent.requests()) {
        const std::string opcode = std::to_string(request.opcode());
        names.push_back(request.opcode() == 236 ? opcode + "/" + std::to_string(request.ident())
                                                : opcode);
    }
    return names;
}

// Runs the tool with the shell's redirections, and variables before it.
Outcome run_tool(const std::string &redirections, const std::string &command,
                 const std::string &before = "exec")
{
    Child tool({"/bin/sh", "-c", before + " " RUKLOG_PATH " '" + command + "' " + redirections});
    return tool.wait(10s);
}

constexpr const char *k_odd_descriptors[] = {
    ">&-", "<&-", "2>&-", "<&- >&-", ">&- 2>&-", "<&- >&- 2>&-", ">/dev/full",
};

} // namespace

// A connection that took the number of the closed output would get the text as a request, and the
// log would stay stopped.
TEST(closed_descriptors, leave_the_requests_as_they_are)
{
    for (const char *descriptors : k_odd_descriptors) {
        SCOPED_TRACE(descriptors);
        ScriptedAgent agent(log_of(1000)); // more text than a buffer holds
        const Outcome outcome = run_tool(descriptors, "show all;stop;show debug");
        EXPECT_EQ(outcome.exit_status, 0);
        EXPECT_EQ(outcome.err, "");
        const std::vector<std::string> requests = asked(agent);
        ASSERT_EQ(requests.size(), 1006U);
        EXPECT_EQ(requests[0], "63");
        EXPECT_EQ(requests[1], "236/2");
        EXPECT_EQ(requests[2], "234");
        EXPECT_EQ(requests[1002], "234");
        EXPECT_EQ(requests[1003], "236/3");
        EXPECT_EQ(requests[1004], "236/2");
        EXPECT_EQ(requests[1005], "311");
    }
}

TEST(closed_descriptors, leave_the_text_alone)
{
    for (const char *descriptors : {"<&-", "2>&-", "<&- 2>&-"}) {
        SCOPED_TRACE(descriptors);
        ScriptedAgent agent(log_of(2));
        EXPECT_EQ(run_tool(descriptors, "show all").out, k_entry_header + numbered_lines(0, 1));
    }
}

// A tail whose output goes nowhere stays what it is: the user's to end.
TEST(full_disk, leaves_a_tail_to_be_ended)
{
    ScriptedAgent agent(log_of(2));
    Child tool({"/bin/sh", "-c", "exec " RUKLOG_PATH " show tail >/dev/full"});
    EXPECT_TRUE(eventually([&] { return asked(agent).size() >= 8; }));
    tool.send_signal(SIGTERM);
    EXPECT_EQ(tool.wait().signal, SIGTERM);
}

// Without an Agent there is a message and a status; without an output there is the status.
TEST(closed_descriptors, leave_the_status_of_a_failed_start)
{
    for (const char *descriptors : k_odd_descriptors) {
        SCOPED_TRACE(descriptors);
        EXPECT_EQ(run_tool(descriptors, "show info").exit_status, 255);
    }
}

#ifndef RUK_SANITIZED
// The entries of a read-out are kept in memory; without it they are printed as they come.
TEST(short_memory, costs_no_entry)
{
    ScriptedAgent agent(log_of(40'000));
    const Outcome outcome = run_tool("", "show all", "ulimit -v 8192; exec");
    EXPECT_EQ(outcome.exit_status, 0);
    EXPECT_EQ(outcome.out, k_entry_header + numbered_lines(0, 39'999));
    EXPECT_EQ(asked(agent).back(), "236/3");
}
#endif

// What the C library makes of the variable: UTC of what it does not understand.
TEST(time_zone, is_the_c_librarys)
{
    const std::pair<const char *, const char *> rows[] = {
        {"TZ=", "Sep 13 12:26:40"},
        {"TZ=XYZ", "Sep 13 12:26:40"},
        {"TZ=:/nonexistent", "Sep 13 12:26:40"},
        {"TZ=/dev/null", "Sep 13 12:26:40"},
        {"TZ=../../etc/passwd", "Sep 13 12:26:40"},
        {"TZ=XYZ-1:30", "Sep 13 13:56:40"},
        {"TZ=<+05>-5", "Sep 13 17:26:40"},
        {"TZ=EST5EDT,M3.2.0,M11.1.0", "Sep 13 08:26:40"},
    };
    for (const auto &[variable, time] : rows) {
        SCOPED_TRACE(variable);
        ScriptedAgent agent(replies(
            {{}, {0, u64(1)}, {0, entry_bytes({.seconds = 1'600'000'000, .message = "now\n"})}}));
        const Outcome outcome = run({"/usr/bin/env", variable, RUKLOG_PATH, "show", "all"});
        EXPECT_EQ(outcome.out.substr(0, k_entry_header.size() + 15), k_entry_header + time);
    }
}

// Without the variable it is the host's zone, which date(1) knows as well.
TEST(time_zone, is_the_hosts_without_the_variable)
{
    const std::string expected =
        run({"/usr/bin/env", "-u", "TZ", "LC_ALL=C", "date", "-d", "@1600000000", "+%b %e %T"}).out;
    ScriptedAgent agent(replies(
        {{}, {0, u64(1)}, {0, entry_bytes({.seconds = 1'600'000'000, .message = "now\n"})}}));
    const Outcome outcome = run({"/usr/bin/env", "-u", "TZ", RUKLOG_PATH, "show", "all"});
    ASSERT_EQ(expected.size(), 16U);
    EXPECT_EQ(outcome.out.substr(0, k_entry_header.size() + 15),
              k_entry_header + expected.substr(0, 15));
}

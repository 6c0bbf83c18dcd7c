// The embedded front end: command lines run inside the stand-in Agent, paged, with the log
// functions in process.  The program is built twice, on the static and on the shared library.
#include "tests/support/child.h"
#include "tests/support/log_records.h"

#include <algorithm>
#include <fcntl.h>
#include <fstream>
#include <regex>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

using namespace ruk_test;

const std::string k_ready = "ruklog-agentsim: serving /var/tmp/brelovs_api_socket\n";
// Runs both programs over a log of count lines; they must agree.  Times and processors are masked.
std::string console(int count, const std::string &lines, const std::string &first_entry = "0")
{
    const std::string path = "/var/tmp/console-lines." + std::to_string(getpid());
    std::ofstream file(path);
    for (int i = 0; i < count; ++i) {
        file << "line " << i << '\n';
    }
    file.close();
    std::string agreed;
    for (const char *program : {AGENTSIM_PATH, AGENTSIM_ON_SHARED_PATH}) {
        const Outcome outcome =
            run({program, "--console", "--feed", path, "--first-entry", first_entry}, lines);
        EXPECT_EQ(outcome.exit_status, 0);
        EXPECT_EQ(outcome.err, "");
        const std::regex varying(
            "(^|\\n)[A-Z][a-z]{2} [ \\d]\\d [\\d:]{8}\\.\\d{6} ( *\\d+) [ \\d]\\d");
        const std::string masked = std::regex_replace(outcome.out, varying, "$1TIME $2 CP");
        EXPECT_TRUE(agreed.empty() || agreed == masked) << masked;
        agreed = masked;
    }
    unlink(path.c_str());
    EXPECT_EQ(agreed.substr(0, k_ready.size()), k_ready);
    return agreed.substr(k_ready.size());
}

std::string entries(int first, int last)
{
    std::string text;
    for (int i = first; i <= last; ++i) {
        char line[80];
        snprintf(line, sizeof line, "TIME %8d CP   1   8    Info line %d\n", i, i);
        text += line;
    }
    return text;
}

} // namespace

TEST(console, runs_unpaged_commands)
{
    EXPECT_EQ(console(3, "show info\nclear\nshow info; stop\nnonsense\n\n"),
              "          Enabled: Yes\n"
              "    Total Entries: 3\n"
              "  Wrapped Entries: 0\n"
              "     Lost Entries: 0\n"
              "  Skipped Entries: 0\n"
              "Available Entries: 3\n"
              " Stop After Entry: Not Specified\n"
              "Cleared log\n"
              "          Enabled: Yes\n"
              "    Total Entries: 3\n"
              "  Wrapped Entries: 0\n"
              "     Lost Entries: 0\n"
              "  Skipped Entries: 0\n"
              "Available Entries: 0\n"
              " Stop After Entry: Not Specified\n"
              "Will suspend log after next 0 entries\n"
              "No match found for nonsense\n");
}

TEST(console, runs_a_last_line_without_its_end)
{
    EXPECT_EQ(console(0, "clear"), "Cleared log\n");
}

// As in the tool, where each of them ends a command as well.
TEST(console, ends_a_command_at_what_cannot_be_printed)
{
    EXPECT_EQ(console(0, "clear\x7f"
                         "clear\tclear\xe9resume\n"),
              "Cleared log\nCleared log\nCleared log\nResumed log\n");
}

// A terminal gets a prompt before each line.
TEST(console, prompts_at_a_terminal)
{
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_TRUE(terminal >= 0 && grantpt(terminal) == 0 && unlockpt(terminal) == 0);
    const std::string command =
        std::string("exec " AGENTSIM_PATH " --console <") + ptsname(terminal);
    Child agent({"/bin/sh", "-c", command});
    EXPECT_TRUE(agent.wait_for_output("ruklog> "));
    // The end of the last line is the end of the file, which a terminal gives for Control-D.
    ASSERT_EQ(write(terminal, "clear\n\4", 7), 7);
    const Outcome outcome = agent.wait(10s);
    EXPECT_EQ(outcome.exit_status, 0);
    EXPECT_EQ(outcome.out, k_ready + "ruklog> Cleared log\nruklog> ");
    close(terminal);
}

TEST(console, refuses_a_line_that_is_too_long)
{
    EXPECT_EQ(console(0, "stop\n" + std::string(40'000, 'x') + ";clear\nclear\n"),
              "Will suspend log after next 0 entries\n"
              "The line is too long; nothing of it was run.\n"
              "Cleared log\n");
}

TEST(console, follows_the_modules_page_by_page)
{
    const std::string text = console(0, "debug all none e\nshow debug\n");
    EXPECT_EQ(text, "              Module           Available            Printing\n"
                    "                kern      ENWIDTPL (255)      E        (  1)\n"
                    "                user      ENWIDTPL (255)      E        (  1)\n"
                    "              daemon      ENWIDTPL (255)      E        (  1)\n"
                    "                auth      ENWIDTPL (255)      E        (  1)\n"
                    "              syslog      ENWIDTPL (255)      E        (  1)\n"
                    "                cron      ENWIDTPL (255)      E        (  1)\n"
                    "               local      ENWIDTPL (255)      E        (  1)\n"
                    "                flow      ENWIDTPL (255)      E        (  1)\n"
                    "                port      ENWIDTPL (255)      E        (  1)\n"
                    "              bridge      ENWIDTPL (255)      E        (  1)\n"
                    "               vxlan      ENWIDTPL (255)      E        (  1)\n"
                    "              mirror      ENWID P  ( 95)      E        (  1)\n"
                    "               timer      ENW    L (135)      E        (  1)\n");
}

TEST(console, refuses_a_running_log_and_the_tail)
{
    EXPECT_EQ(console(9, "show all\nshow last 3\nshow tail\n"),
              "Need to stop ruklog before show all\n"
              "Need to stop ruklog before show all/show last n\n"
              "Not supported in TOB\n");
}

TEST(console, follows_the_entries_page_by_page)
{
    const std::string stopped = "Will suspend log after next 0 entries\n";
    for (const int count : {0, 1, 6, 7, 8, 13, 14, 15, 100}) {
        SCOPED_TRACE(count);
        const std::string expected = count == 0 ? "" : k_entry_header + entries(0, count - 1);
        EXPECT_EQ(console(count, "stop\nshow all\n"), stopped + expected);
    }
    EXPECT_EQ(console(30, "stop\nshow last 20\n"), stopped + k_entry_header + entries(10, 29));
    EXPECT_EQ(console(30, "stop\nshow last 14\n"), stopped + k_entry_header + entries(16, 29));
    EXPECT_EQ(console(30, "stop\nshow last 3\n"), stopped + k_entry_header + entries(27, 29));
    EXPECT_EQ(console(30, "stop\nshow last\n"), stopped + k_entry_header + entries(5, 29));
}

TEST(console, replaces_a_cookie_that_was_typed)
{
    const std::string stopped = "Will suspend log after next 0 entries\n";
    EXPECT_EQ(console(30, "stop\nshow all cookie 9\n"), stopped + entries(10, 29));
    EXPECT_EQ(console(30, "stop\nshow all COOKIE 9\n"), stopped + entries(10, 29));
    EXPECT_EQ(console(30, "stop\nshow last 20 cookie 7\n"), stopped + entries(17, 29));
    EXPECT_EQ(console(30, "stop\nshow all 5 cookie 7\n"), stopped + entries(6, 29));
    EXPECT_EQ(console(30, "stop\nshow all 5\n"), stopped + entries(6, 29));
    EXPECT_EQ(console(30, "stop\n  show   all abc\n"), stopped + k_entry_header + entries(0, 29));
    EXPECT_EQ(console(30, "stop\n\tshow all\tshow debugs\n"),
              stopped + k_entry_header + entries(0, 29));
}

TEST(console, does_not_follow_pages_that_repeat)
{
    EXPECT_EQ(console(20, "stop\nshow last 20\n"),
              "Will suspend log after next 0 entries\n"
              "Setting entry as invalid \n" +
                  k_entry_header + entries(0, 6) +
                  "The rest can't be paged; ruklog show all shows the whole log.\n");
}

// A cookie has 32 bits: that of an entry 5,000,000,006 leads back to the beginning.
TEST(console, does_not_follow_a_cookie_that_repeats)
{
    const std::string text = console(20, "stop\nshow all\n", "5000000000");
    std::string page;
    for (int i = 0; i < 7; ++i) {
        page += "TIME 500000000" + std::to_string(i) + " CP   1   8    Info line " +
                std::to_string(i) + "\n";
    }
    EXPECT_EQ(text, "Will suspend log after next 0 entries\n" + k_entry_header + page +
                        "The rest can't be paged; ruklog show all shows the whole log.\n");
}

// More entries than the buffer takes: what did not fit is dropped, and nothing else comes out.
TEST(console, ships_what_was_written_and_no_more)
{
    const std::string stopped = "Will suspend log after next 0 entries\n";
    const std::string text = console(3000, "stop\nshow last 2000 x\nshow last 1990 y\n");
    ASSERT_EQ(text.substr(0, stopped.size()), stopped);
    const std::string rest = text.substr(stopped.size());
    const size_t second = rest.find(k_entry_header, 1);
    ASSERT_NE(second, rest.npos);
    const auto shown = [](const std::string &run) {
        return static_cast<int>(std::count(run.begin(), run.end(), '\n')) - 1;
    };
    const std::string runs[] = {rest.substr(0, second), rest.substr(second)};
    ASSERT_GT(shown(runs[0]), 100);
    EXPECT_EQ(runs[0], k_entry_header + entries(1000, 999 + shown(runs[0])));
    EXPECT_EQ(runs[1], k_entry_header + entries(1010, 1009 + shown(runs[1])));
}

TEST(console, serves_the_socket_meanwhile)
{
    // Standard input stays open: the program serves until it is told to stop.
    const std::string input = "/var/tmp/console-input." + std::to_string(getpid());
    ASSERT_EQ(mkfifo(input.c_str(), 0600), 0);
    const int open_end = open(input.c_str(), O_RDWR | O_CLOEXEC);
    Child agent({"/bin/sh", "-c", "exec " AGENTSIM_PATH " --console <" + input});
    ASSERT_TRUE(agent.wait_for_output(k_ready));
    EXPECT_EQ(run({RUKLOG_PATH, "clear"}).out, "Cleared log\n");
    close(open_end);
    EXPECT_EQ(agent.wait().exit_status, 0);
    unlink(input.c_str());
}

TEST(console, needs_standard_input_for_itself)
{
    const Outcome outcome = run({AGENTSIM_PATH, "--console", "--feed", "-"});
    EXPECT_EQ(outcome.exit_status, 2);
    EXPECT_EQ(outcome.err, "ruklog-agentsim: --console and --feed - both read standard input; "
                           "feed a file instead\n");
}

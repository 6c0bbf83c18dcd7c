// The tool against the stand-in Agent: real logs, several programs at once, restarts.
#include "tests/support/child.h"
#include "tests/support/eventually.h"
#include "tests/support/log_records.h"

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <regex>
#include <sstream>
#include <thread>

namespace
{

using namespace ruk_test;

std::string ruklog(std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), RUKLOG_PATH);
    const Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.exit_status, 0);
    return outcome.out;
}

// A stand-in Agent that serves when the constructor returns.
std::unique_ptr<Child> stand_in(std::vector<std::string> options)
{
    options.insert(options.begin(), AGENTSIM_PATH);
    auto agent = std::make_unique<Child>(options);
    EXPECT_TRUE(agent->wait_for_output("serving"));
    return agent;
}

std::vector<std::string> lines_of(const std::string &text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

// The number of an entry's line; it stands behind the time's 22 characters.
uint64_t entry_number(const std::string &line)
{
    return strtoull(line.c_str() + 22, nullptr, 10);
}

// Expects the lines after the header to be entries numbered first, first + 1, ... last.
void expect_entries(const std::string &text, uint64_t first, uint64_t last)
{
    const std::vector<std::string> lines = lines_of(text);
    ASSERT_EQ(lines.size(), last - first + 2);
    EXPECT_EQ(lines[0] + "\n", k_entry_header);
    for (uint64_t i = 0; i <= last - first; ++i) {
        ASSERT_EQ(entry_number(lines[i + 1]), first + i);
    }
}

bool info_has(const std::string &line)
{
    return ruklog({"show", "info"}).find(line) != std::string::npos;
}

// What show info prints of a log of 40 entries of which none was lost.
std::string info_of_forty(const std::string &enabled, const std::string &available,
                          const std::string &stop_after)
{
    return "          Enabled: " + enabled +
           "\n"
           "    Total Entries: 40\n"
           "  Wrapped Entries: 0\n"
           "     Lost Entries: 0\n"
           "  Skipped Entries: 0\n"
           "Available Entries: " +
           available + "\n Stop After Entry: " + stop_after + "\n";
}

// A file with these lines, gone at the end.
class LinesFile
{
public:
    explicit LinesFile(const std::vector<std::string> &lines)
        : path_("/var/tmp/ruklog-lines." + std::to_string(getpid()))
    {
        std::ofstream file(path_);
        for (const std::string &line : lines) {
            file << line << '\n';
        }
    }
    ~LinesFile() { unlink(path_.c_str()); }
    const std::string &path() const { return path_; }

private:
    std::string path_;
};

// A stand-in Agent that has logged count lines.
std::unique_ptr<Child> stand_in_with(size_t count)
{
    std::vector<std::string> lines;
    for (size_t i = 0; i < count; ++i) {
        lines.push_back("line " + std::to_string(i));
    }
    const LinesFile file(lines);
    auto agent = stand_in({"--feed", file.path()});
    const std::string total = "    Total Entries: " + std::to_string(count) + "\n";
    EXPECT_TRUE(eventually([&] { return info_has(total); }));
    return agent;
}

} // namespace

TEST(stand_in, gives_ten_thousand_entries)
{
    const auto agent = stand_in_with(12'000);
    expect_entries(ruklog({"show", "last", "10000"}), 2000, 11999);
    expect_entries(ruklog({"show", "last", "20000"}), 2000, 11999);
    expect_entries(ruklog({"show", "all"}), 0, 11999);
    expect_entries(ruklog({"show", "last", "1"}), 11999, 11999);
    EXPECT_EQ(ruklog({"show", "info"}), "          Enabled: Yes\n"
                                        "    Total Entries: 12000\n"
                                        "  Wrapped Entries: 0\n"
                                        "     Lost Entries: 0\n"
                                        "  Skipped Entries: 0\n"
                                        "Available Entries: 12000\n"
                                        " Stop After Entry: Not Specified\n");
}

TEST(stand_in, takes_a_file_of_a_hundred_thousand_lines)
{
    const auto agent = stand_in_with(100'000);
    EXPECT_EQ(ruklog({"show", "info"}), "          Enabled: Yes\n"
                                        "    Total Entries: 100000\n"
                                        "  Wrapped Entries: 83616\n"
                                        "     Lost Entries: 0\n"
                                        "  Skipped Entries: 0\n"
                                        "Available Entries: 16384\n"
                                        " Stop After Entry: Not Specified\n");
    const std::string text = ruklog({"show", "all"});
    expect_entries(text, 83616, 99999);
    const std::vector<std::string> shown = lines_of(text);
    for (size_t i = 1; i < shown.size(); ++i) {
        const std::string message = " line " + std::to_string(83616 + i - 1);
        ASSERT_EQ(shown[i].substr(shown[i].size() - message.size()), message);
    }
}

TEST(stand_in, shows_messages_of_every_length)
{
    struct {
        size_t length;
        std::string end; // of what is printed
    } const rows[] = {
        {0, ""},
        {1, "a"},
        {125, std::string(125, 'a')},
        {126, std::string(126, 'a') + "\n"},
        {127, std::string(127, 'a') + "\n"},
        {128, std::string(127, 'a') + "\n"},
        {500, std::string(127, 'a') + "\n"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.length);
        const LinesFile file({std::string(row.length, 'a')});
        const auto agent = stand_in({"--no-line-feed", "--feed", file.path()});
        ASSERT_TRUE(eventually([] { return info_has("Total Entries: 1\n"); }));
        const std::regex expected(k_entry_header +
                                  "[A-Z][a-z]{2} [ \\d]\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{6}        0 "
                                  "[ \\d]\\d [ \\d]{3}   8    Info " +
                                  row.end);
        EXPECT_TRUE(std::regex_match(ruklog({"show", "all"}), expected));
    }
}

TEST(stand_in, stops_resumes_and_clears)
{
    const auto agent = stand_in_with(40);
    EXPECT_EQ(ruklog({"stop"}), "Will suspend log after next 0 entries\n");
    EXPECT_EQ(ruklog({"show", "info"}), info_of_forty("No", "40", "Not Specified"));
    EXPECT_EQ(ruklog({"stop"}), "Suspended log\n");
    EXPECT_EQ(ruklog({"start", "5"}), "Started log\n");
    EXPECT_EQ(ruklog({"show", "info"}), info_of_forty("Yes", "40", "44"));
    EXPECT_EQ(ruklog({"resume"}), "Resumed log\n");
    EXPECT_EQ(ruklog({"show", "info"}), info_of_forty("Yes", "40", "44"));
    EXPECT_EQ(ruklog({"clear"}), "Cleared log\n");
    EXPECT_EQ(ruklog({"show", "info"}), info_of_forty("Yes", "0", "44"));
    EXPECT_EQ(ruklog({"show", "all"}), k_entry_header);
    EXPECT_EQ(ruklog({"debug", "nosuch", "e"}), "Module nosuch does not exist.\n");
    EXPECT_EQ(ruklog({"debug", "all", "all", "none", "w"}), "");
    for (const std::string &line : lines_of(ruklog({"show", "debug"}))) {
        if (line.find("Module") == std::string::npos) {
            EXPECT_EQ(line.substr(line.size() - 14), "  W      (  4)");
        }
    }
}

TEST(stand_in, serves_two_tools_and_a_tail_at_once)
{
    const auto agent = stand_in({"--preload", "100", "--rate", "500"});
    Child tail({RUKLOG_PATH, "show", "tail"});
    ASSERT_TRUE(tail.wait_for_output(k_entry_header));
    const auto newest = [] { return entry_number(lines_of(ruklog({"show", "last", "1"}))[1]); };
    const uint64_t begun = newest();
    const auto show_repeatedly = [] {
        for (int i = 0; i < 20; ++i) {
            const std::vector<std::string> lines = lines_of(ruklog({"show", "last", "50"}));
            ASSERT_GE(lines.size(), 51u);
            for (size_t k = 2; k < lines.size(); ++k) {
                ASSERT_EQ(entry_number(lines[k]), entry_number(lines[k - 1]) + 1);
            }
        }
    };
    std::thread first(show_repeatedly);
    std::thread second(show_repeatedly);
    first.join();
    second.join();
    ASSERT_TRUE(eventually([&] { return newest() > begun + 50; }));
    EXPECT_TRUE(info_has("     Lost Entries: 0\n"));

    // Whatever the others did to the log, the tail shows every entry that it has.
    ASSERT_TRUE(tail.wait_for_output(" " + std::to_string(newest()) + " "));
    tail.send_signal(SIGINT);
    const Outcome outcome = tail.wait();
    EXPECT_EQ(outcome.signal, SIGINT);
    const std::vector<std::string> lines = lines_of(outcome.out);
    ASSERT_GT(lines.size(), 27u);
    EXPECT_EQ(lines[0], "Press control-C to interrupt this command.");
    for (size_t i = 3; i + 1 < lines.size(); ++i) { // the last line may be cut by the signal
        ASSERT_EQ(entry_number(lines[i]), entry_number(lines[i - 1]) + 1);
    }
}

TEST(stand_in, may_restart_under_a_tail)
{
    auto agent = stand_in({"--preload", "3"});
    Child tail({RUKLOG_PATH, "show", "tail"});
    ASSERT_TRUE(tail.wait_for_output("        2 "));
    agent->send_signal(SIGTERM);
    EXPECT_EQ(agent->wait().exit_status, 0);
    ASSERT_TRUE(tail.wait_for_output("Could not suspend log\n"));
    agent = stand_in({"--first-entry", "3", "--preload", "2"});
    ASSERT_TRUE(tail.wait_for_output("        4 "));
    tail.send_signal(SIGINT);
    // Between the Agents' lives the tail says that it can't reach one.
    std::vector<uint64_t> shown;
    for (const std::string &line : lines_of(tail.wait().out)) {
        const bool is_entry = line.size() > 22 && line[6] == ' ' && line[15] == '.';
        if (is_entry) {
            shown.push_back(entry_number(line));
        }
    }
    EXPECT_EQ(shown, (std::vector<uint64_t>{0, 1, 2, 3, 4}));
}

// The fault matrix for every command of the tool, at each of its exchanges: what it prints, how it
// ends, descriptors, blocks, and the exchange that follows.
#include "ruk/agent.h"

#include <csignal>

#include "tests/dpa/peer.h"
#include "tests/faults/matrix.h"
#include "tests/faults/texts.h"
#include "tests/faults/tool_process.h"
#include "tests/support/help_text.h"
#include "tests/support/scripted_agent.h"

namespace
{

using namespace ruk_test;

// What a failed attempt to connect prints stands here in the expected texts.
const std::string k_open = "{open}";

// A round of show tail that finds no Agent at all: hold, entry, release.
const std::string k_dead_round = k_open + k_no_suspend + k_open + k_open + k_no_resume;
const std::string k_none = "none"; // no text: nothing connects after that exchange

// One exchange of a command, counted from the version probe, which is 0, and what the command
// prints when it goes wrong.
struct Exchange {
    int number;
    std::string broken;        // the exchange fails, the next one connects anew
    std::string gone;          // the exchange fails, and no connection can be made
    std::string wrong_status;  // all that follows byte 12 of the reply is garbage
    std::string wrong_payload; // the payload is garbage
};

struct Command {
    std::vector<std::string> arguments;
    std::string whole;
    std::vector<Exchange> exchanges; // consecutive
    bool follows = false;            // the last row is there for what happens after the one before
};

std::vector<Exchange> set_log(const std::string &failed, const std::string &done,
                              const std::string &done_anyway)
{
    return {{1, failed + done, k_none, failed + done_anyway, done_anyway}};
}

const Command k_commands[] = {
    {{"show", "info"},
     k_info,
     {{0, k_info, k_open + k_no_info, k_info, k_info},
      {1, k_no_info, k_none, k_no_info, k_garbage_info}}},
    {{"help"}, k_help, {{0, k_help, k_none, k_help, k_help}}},
    {{"show"}, "", {{0, "", k_none, "", ""}}},
    {{"xyzzy"},
     "No match found for xyzzy\n",
     {{0, "No match found for xyzzy\n", k_none, "No match found for xyzzy\n",
       "No match found for xyzzy\n"}}},
    {{"show", "all"},
     k_header + k_7 + k_8,
     {{0, k_header + k_7 + k_8, k_header + k_open + k_no_suspend + k_open, k_header + k_7 + k_8,
       k_header + k_7 + k_8},
      {1, k_header + k_no_suspend + k_7 + k_8, k_header + k_no_suspend + k_open,
       k_header + k_no_suspend + k_7 + k_8, k_header + k_7 + k_8},
      {2, k_header, k_header + k_open + k_no_resume, k_header, k_header + k_garbage_entry},
      {3, k_header + k_7, k_header + k_7 + k_open + k_no_resume, k_header + k_7,
       k_header + k_7 + k_garbage_entry},
      {4, k_header + k_7 + k_8, k_header + k_7 + k_8 + k_open + k_no_resume, k_header + k_7 + k_8,
       k_header + k_7 + k_8},
      {5, k_header + k_7 + k_8 + k_no_resume, k_none, k_header + k_7 + k_8 + k_no_resume,
       k_header + k_7 + k_8}}},
    {{"show", "last"},
     k_header + k_7 + k_8,
     {{1, k_no_suspend + k_header + k_7 + k_8, k_no_suspend + k_open + k_no_info,
       k_no_suspend + k_header + k_7 + k_8, k_header + k_7 + k_8},
      {2, k_no_info, k_no_info + k_open + k_no_resume, k_no_info, k_header},
      {3, k_header, k_header + k_open + k_no_resume, k_header, k_header + k_garbage_entry},
      {4, k_header + k_7, k_header + k_7 + k_open + k_no_resume, k_header + k_7,
       k_header + k_7 + k_garbage_entry},
      {5, k_header + k_7 + k_8, k_header + k_7 + k_8 + k_open + k_no_resume, k_header + k_7 + k_8,
       k_header + k_7 + k_8},
      {6, k_header + k_7 + k_8 + k_no_resume, k_none, k_header + k_7 + k_8 + k_no_resume,
       k_header + k_7 + k_8}}},
    {{"start"},
     "Started log\n",
     set_log("Could not start log\n", "Started log\n", "Started log\n")},
    {{"stop"}, k_will_suspend, set_log(k_no_suspend, "Suspended log\n", k_will_suspend)},
    {{"resume"}, "Resumed log\n", set_log(k_no_resume, "Resumed log\n", "Resumed log\n")},
    {{"clear"},
     "Cleared log\n",
     set_log("Could not clear log\n", "Cleared log\n", "Cleared log\n")},
    {{"debug", "flow", "w"},
     "",
     {{1, "Module flow does not exist.\n", k_none, "Module flow does not exist.\n", ""},
      {2, "", k_none, "", ""}}},
    {{"debug", "all", "w"},
     "",
     {{1, "Module all does not exist.\n", k_none, "Module all does not exist.\n", ""},
      {2, "", k_none, "", ""},
      {3, "", k_open, "", ""},
      {4, "", k_none, "", ""},
      {5, "", k_open, "", ""},
      {6, "", k_none, "", ""}}},
    {{"show", "debug"},
     k_module_header + k_flow + k_port,
     {{0, k_module_header + k_flow + k_port, k_module_header + k_open,
       k_module_header + k_flow + k_port, k_module_header + k_flow + k_port},
      {1, k_module_header, k_none, k_module_header, k_module_header + k_garbage_module},
      {2, k_module_header + k_flow, k_none, k_module_header + k_flow,
       k_module_header + k_flow + k_garbage_module},
      {3, k_module_header + k_flow + k_port, k_none, k_module_header + k_flow + k_port,
       k_module_header + k_flow + k_port}}},
    // A record of garbage, refused or not, is the cursor from then on, behind which nothing comes.
    {{"show", "tail"},
     k_press + k_789,
     {{0, k_press + k_789, k_open + k_no_suspend + k_open + k_no_info + k_open + k_no_resume,
       k_press + k_789, k_press + k_789},
      {1, k_no_suspend + k_press + k_789, k_no_suspend + k_open + k_no_info + k_open + k_no_resume,
       k_no_suspend + k_press + k_789, k_press + k_789},
      {2, k_no_info, k_no_info + k_open + k_no_resume, k_no_info, k_press},
      {3, k_no_resume + k_press + k_789, k_no_resume + k_press + k_dead_round + k_789,
       k_no_resume + k_press + k_789, k_press + k_789},
      {4, k_press + k_no_suspend + k_789,
       k_press + k_no_suspend + k_open + k_open + k_no_resume + k_789,
       k_press + k_no_suspend + k_789, k_press + k_789},
      {5, k_press + k_789, k_press + k_open + k_no_resume + k_789, k_press,
       k_press + k_garbage_entry},
      {6, k_press + k_no_resume + k_789, k_press + k_no_resume + k_7 + k_dead_round + k_8 + k_9,
       k_press + k_no_resume + k_789, k_press + k_789},
      {7, k_press + k_7 + k_no_suspend + k_8 + k_9,
       k_press + k_7 + k_no_suspend + k_open + k_open + k_no_resume + k_8 + k_9,
       k_press + k_7 + k_no_suspend + k_8 + k_9, k_press + k_789},
      {8, k_press + k_789, k_press + k_7 + k_open + k_no_resume + k_8 + k_9, k_press + k_7,
       k_press + k_7 + k_garbage_entry},
      {9, k_press + k_7 + k_no_resume + k_8 + k_9,
       k_press + k_7 + k_no_resume + k_8 + k_dead_round + k_9,
       k_press + k_7 + k_no_resume + k_8 + k_9, k_press + k_789},
      {10, k_press + k_7 + k_8 + k_no_suspend + k_9,
       k_press + k_7 + k_8 + k_no_suspend + k_open + k_open + k_no_resume + k_9,
       k_press + k_7 + k_8 + k_no_suspend + k_9, k_press + k_789},
      {11, k_press + k_789, k_press + k_7 + k_8 + k_open + k_no_resume + k_9, k_press + k_7 + k_8,
       k_press + k_7 + k_8},
      {12, k_press + k_7 + k_8 + k_no_resume + k_9, k_none, k_press + k_7 + k_8 + k_no_resume + k_9,
       k_press + k_789}},
     true},
};

// The line that a failed attempt to connect prints.
std::string open_line(Fault_kind kind)
{
    switch (kind) {
    case Fault_kind::descriptor_limit:
        return "kt_platform_open: Error opening local socket\n";
    case Fault_kind::descriptor_closed:
        return "kt_platform_open: Failed binding local socket err: 9 - Bad file descriptor\n";
    case Fault_kind::descriptor_reused:
        return "kt_platform_open: Failed binding local socket err: 88 - Socket operation on "
               "non-socket\n";
    default:
        return "kt_platform_open: Failed binding local socket err: 111 - Connection refused\n";
    }
}

std::string replaced(std::string text, const std::string &line)
{
    for (size_t at; (at = text.find(k_open)) != std::string::npos;) {
        text.replace(at, k_open.size(), line);
    }
    return text;
}

// The lost connection stays lost when there is no descriptor for another.
const std::string &text_of_loss(const Exchange &exchange, Fault_kind kind)
{
    const bool stays = kind == Fault_kind::descriptor_limit && exchange.gone != k_none;
    return stays ? exchange.gone : exchange.broken;
}

std::string expected_text(const Command &command, size_t index, Fault_kind kind, Fate fate)
{
    const Exchange &exchange = command.exchanges[index];
    const bool is_last = index + 1 == command.exchanges.size();
    switch (fate) {
    case Fate::no_connection:
        return exchange.gone;
    case Fate::not_sent:
    case Fate::ended:
    case Fate::failed:
        return text_of_loss(exchange, kind);
    case Fate::no_send_block:
        return exchange.broken;
    case Fate::wrong_status:
        return exchange.wrong_status;
    case Fate::wrong_payload:
        return exchange.wrong_payload;
    case Fate::whole_then_end:
        return is_last ? command.whole : text_of_loss(command.exchanges[index + 1], kind);
    default:
        return command.whole;
    }
}

void run_one(const Command &command, size_t index, Step step, Fault_kind kind, Fate fate)
{
    const Exchange &exchange = command.exchanges[index];
    const FaultyAgent agent(k_agent_path,
                            {kind == Fault_kind::no_memory ? -1 : exchange.number, step, kind});
    // The lock is made first, then one block an exchange.
    const CallsBefore calls{
        .connects = 1, .exchanges = exchange.number, .blocks = exchange.number + 1};
    const ToolEnd end = run_tool(
        agent, command.arguments, [] {},
        [&](std::optional<Sabotage> &sabotage) { sabotage.emplace(agent, step, kind, calls); },
        fate == Fate::whole_shifted);

    const std::string text = replaced(expected_text(command, index, kind, fate), open_line(kind));
    EXPECT_EQ(end.out, text);
    const bool is_interrupted = command.follows && text.find(k_no_info) == std::string::npos;
    EXPECT_EQ(end.signal, is_interrupted ? SIGINT : 0);
    EXPECT_EQ(end.aftermath.has_value(), !is_interrupted);
    if (!end.aftermath) {
        return;
    }
    EXPECT_EQ(end.aftermath->result, 0);
    EXPECT_EQ(end.aftermath->descriptors, 0);
    EXPECT_EQ(end.aftermath->blocks, 1);
    const bool is_last = index + 1 == command.exchanges.size();
    EXPECT_EQ(end.aftermath->next_status, fate == Fate::whole_then_end && is_last ? 1 : 0);
    EXPECT_EQ(end.aftermath->second_status, 0);
}

std::string line_of(const Command &command)
{
    std::string line;
    for (const std::string &argument : command.arguments) {
        line += argument + " ";
    }
    return line;
}

void run_command(Matrix &matrix, const Command &command)
{
    const size_t count = command.exchanges.size() - (command.follows ? 1 : 0);
    for (size_t index = 0; index < count; ++index) {
        const Exchange &exchange = command.exchanges[index];
        const Caller caller{.is_last_exchange = index + 1 == command.exchanges.size(),
                            .connects_after = exchange.gone != k_none,
                            .prints_records = true};
        matrix.run(line_of(command) + "exchange " + std::to_string(exchange.number), caller,
                   [&](Step step, Fault_kind kind, Fate fate) {
                       run_one(command, index, step, kind, fate);
                   });
    }
}

class fault_matrix_of_commands : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!is_free(k_agent_path)) {
            GTEST_SKIP() << "an Agent listens on " << k_agent_path;
        }
    }
};

TEST_F(fault_matrix_of_commands, every_command_but_show_tail)
{
    Matrix matrix("commands");
    for (const Command &command : k_commands) {
        if (!command.follows) {
            run_command(matrix, command);
        }
    }
    EXPECT_EQ(matrix.combinations(), 2413);
}

TEST_F(fault_matrix_of_commands, show_tail_across_restarts)
{
    Matrix matrix("show tail");
    for (const Command &command : k_commands) {
        if (command.follows) {
            run_command(matrix, command);
        }
    }
    EXPECT_EQ(matrix.combinations(), 900);
}

// The first connection of the tool.
TEST_F(fault_matrix_of_commands, start_up)
{
    const std::string cannot = "Error initializing kt_dpa_api_init()\n";
    const std::string refused = open_line(Fault_kind::closed);
    struct {
        Fault_kind kind;
        std::string out;
        int result;
    } const rows[] = {
        {Fault_kind::closed, refused + cannot, -1},
        {Fault_kind::shut_one_way, refused + cannot, -1},
        {Fault_kind::stalled, refused + cannot, -1},
        // The probe fails, which stops nothing; nobody listens any more.
        {Fault_kind::reset, refused + "Can't get log info\n", 0},
        {Fault_kind::descriptor_closed, open_line(Fault_kind::descriptor_closed) + cannot, -1},
        {Fault_kind::descriptor_reused, open_line(Fault_kind::descriptor_reused) + cannot, -1},
        {Fault_kind::descriptor_limit, open_line(Fault_kind::descriptor_limit) + cannot, -1},
        {Fault_kind::no_memory,
         "DPATHREAD_MALLOC_ERR ktdpa_mutex_create: Failed to alloc mutex\n"
         "kt_platform_open: Failed creating mutex\n" +
             cannot,
         -1},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(name_of(row.kind));
        const bool is_first = row.kind == Fault_kind::no_memory;
        const FaultyAgent agent(k_agent_path, {is_first ? -1 : 1, Step::connect, row.kind});
        // What the Agent does comes with a connection that it loses beforehand.
        const auto lose_connection = [&] {
            if (!is_first) {
                kt_dpa_api_init();
                kt_dpa_call_indirect1(63, 0, 0x01, nullptr, 0, nullptr);
                kt_dpa_call_indirect1(63, 0, 0x01, nullptr, 0, nullptr);
            }
        };
        const ToolEnd end = run_tool(
            agent, {"show", "info"}, lose_connection, [&](std::optional<Sabotage> &sabotage) {
                sabotage.emplace(agent, Step::connect, row.kind, CallsBefore{});
            });
        EXPECT_EQ(end.out, row.out);
        ASSERT_TRUE(end.aftermath.has_value());
        EXPECT_EQ(end.aftermath->result, row.result);
        EXPECT_EQ(end.aftermath->descriptors, 0);
        EXPECT_EQ(end.aftermath->blocks, 0);
        EXPECT_EQ(end.aftermath->next_status, 0);
        EXPECT_EQ(end.aftermath->second_status, 0);
    }
}

} // namespace

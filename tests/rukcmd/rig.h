// What the tests of the front end share: globals put back, a connection to a scripted peer, the
// requests as they must be, a page in paged mode.
#pragma once

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tests/rukcmd/fake_log.h"
#include "tests/support/capture.h"
#include "tests/support/log_records.h"
#include "tests/support/scripted_agent.h"

namespace ruk_test
{

// Puts every global of the front end back to its initial value.
void reset_front_end();

class FrontEnd : public testing::Test
{
protected:
    void SetUp() override { reset_front_end(); }
    void TearDown() override { reset_front_end(); }
};

// The front end's connection to the Agent, for a scope.
class Connection
{
public:
    Connection();
    ~Connection();
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;
};

// A scripted peer that the front end is connected to.
struct Peer {
    explicit Peer(ScriptedAgent::Handler handler) : agent(std::move(handler)) {}

    ScriptedAgent agent;
    Connection connection;
};

// A handler that answers from log.
ScriptedAgent::Handler serve(FakeLog &log);

// Requests as the wire has them.
std::string info_request();
std::string entry_request(const std::string &record);
std::string first_entry_request(); // the cursor before the oldest entry
std::string module_request(const std::string &record);
std::string find_module_request(const std::string &record);
std::string set_log_request(int32_t operation, uint64_t value);
std::string set_module_request(int32_t index, uint32_t mask);

void expect_requests(const ScriptedAgent &agent, const std::vector<std::string> &expected);

// What ruk_log_run prints to standard output.
std::string output_of(std::string line);

// One run in paged mode.
struct Page {
    std::string text; // between the buffer's start and the cursor
    std::string out;  // on standard output
    uint32_t more;
};
Page run_page(std::string line);

// Runs command page by page, as a host does, and returns the pages' texts.  Gives up after 20.
std::vector<std::string> follow_cookies(const std::string &command);

} // namespace ruk_test

// The program itself, over its socket.
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <memory>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>

#include "tests/agentsim/agent_client.h"
#include "tests/support/child.h"
#include "tests/support/eventually.h"
#include "tests/support/private_var_tmp.h"

using namespace ruk_test;

namespace
{

class ServerTest : public testing::Test
{
protected:
    TemporaryFolder folder_;
    std::string path_ = folder_.file("socket");

    // The stand-in Agent at path_, with further arguments.
    std::unique_ptr<Child> launch(const std::vector<std::string> &more = {},
                                  const std::string &input = "") const
    {
        std::vector<std::string> arguments = {RUK_AGENTSIM, "--socket", path_};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return std::make_unique<Child>(arguments, input);
    }

    std::unique_ptr<Child> serve(const std::vector<std::string> &more = {},
                                 const std::string &input = "") const
    {
        auto agent = launch(more, input);
        EXPECT_TRUE(agent->wait_for_output("\n"));
        EXPECT_EQ(agent->out(), "ruklog-agentsim: serving " + path_ + "\n");
        return agent;
    }

    bool exists(const std::string &path) const
    {
        struct stat file {
        };
        return lstat(path.c_str(), &file) == 0;
    }

    // How the program ended and what it said of it: "1 error\n".
    static std::string end_of(Child &program)
    {
        const Outcome outcome = program.wait(10s);
        return std::to_string(outcome.exit_status) + " " + outcome.err;
    }

    // Binds a socket file as a server that has died leaves it behind.
    void leave_dead_socket() const { close(bound_socket(SOCK_STREAM)); }

    int bound_socket(int type) const
    {
        const int fd = socket(AF_UNIX, type, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path_.copy(address.sun_path, sizeof address.sun_path - 1);
        EXPECT_EQ(bind(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
        return fd;
    }

    void expect_served() const
    {
        uint32_t word = 0;
        EXPECT_EQ(AgentClient(path_).call(63, 0, word), 0);
    }
};

} // namespace

TEST_F(ServerTest, serves_at_the_agents_own_path_by_default)
{
    if (!has_private_var_tmp() && AgentClient("/var/tmp/brelovs_api_socket").connected()) {
        GTEST_SKIP() << "an Agent of this host serves the path";
    }
    Child agent({RUK_AGENTSIM});
    ASSERT_TRUE(agent.wait_for_output("ruklog-agentsim: serving /var/tmp/brelovs_api_socket\n"));
    uint32_t word = 0;
    EXPECT_EQ(AgentClient("/var/tmp/brelovs_api_socket").call(63, 0, word), 0);
    agent.send_signal(SIGTERM);
    EXPECT_EQ(end_of(agent), "0 ");
}

TEST_F(ServerTest, says_when_it_is_ready_and_stops_clean)
{
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        SCOPED_TRACE(number);
        const auto agent = serve({"--pidfile", folder_.file("pid")});
        std::ifstream pidfile(folder_.file("pid"));
        pid_t pid = 0;
        pidfile >> pid;
        EXPECT_EQ(pid, agent->pid());
        AgentClient client(path_);
        EXPECT_TRUE(client.connected());
        agent->send_signal(number);
        EXPECT_EQ(end_of(*agent), "0 ");
        EXPECT_FALSE(exists(path_));
        EXPECT_FALSE(exists(folder_.file("pid")));
        EXPECT_TRUE(client.is_closed());
    }
}

TEST_F(ServerTest, outlives_the_terminal_when_told_to)
{
    signal(SIGHUP, SIG_IGN); // which the program inherits
    const auto agent = serve();
    signal(SIGHUP, SIG_DFL);
    agent->send_signal(SIGHUP);
    expect_served();
    agent->send_signal(SIGTERM);
    EXPECT_EQ(end_of(*agent), "0 ");
}

TEST_F(ServerTest, does_not_take_over_a_live_socket)
{
    const auto agent = serve();
    const auto second = launch();
    EXPECT_EQ(end_of(*second), "1 ruklog-agentsim: an Agent is serving " + path_ +
                                   " already; stop it or give another --socket\n");
    expect_served();
}

TEST_F(ServerTest, does_not_take_over_a_live_socket_whose_queue_is_full)
{
    const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path_.copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(bind(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
    ASSERT_EQ(listen(fd, 0), 0);
    const AgentClient waiting(path_);
    ASSERT_TRUE(waiting.connected());
    const auto second = launch();
    EXPECT_EQ(end_of(*second), "1 ruklog-agentsim: an Agent is serving " + path_ +
                                   " already; stop it or give another --socket\n");
    close(fd);
}

TEST_F(ServerTest, replaces_a_dead_socket)
{
    leave_dead_socket();
    const auto agent = serve();
    expect_served();
}

TEST_F(ServerTest, replaces_the_socket_of_an_agent_that_was_killed)
{
    const auto first = serve();
    first->send_signal(SIGKILL);
    EXPECT_EQ(first->wait(10s).signal, SIGKILL);
    ASSERT_TRUE(exists(path_));
    const auto second = serve();
    expect_served();
}

TEST_F(ServerTest, one_of_several_that_start_at_once_serves)
{
    leave_dead_socket();
    std::vector<std::unique_ptr<Child>> agents;
    for (int i = 0; i < 4; ++i) {
        agents.push_back(launch());
    }
    int serving = 0;
    for (const auto &agent : agents) {
        if (agent->wait_for_output("serving")) {
            ++serving;
        } else {
            EXPECT_EQ(agent->wait(10s).exit_status, 1);
        }
    }
    EXPECT_EQ(serving, 1);
    expect_served();
}

TEST_F(ServerTest, leaves_a_file_that_is_no_socket)
{
    std::ofstream(path_) << "precious";
    const auto agent = launch();
    EXPECT_EQ(end_of(*agent), "1 ruklog-agentsim: " + path_ +
                                  " exists and is not a socket; remove it or give another "
                                  "--socket\n");
    std::string text;
    std::ifstream(path_) >> text;
    EXPECT_EQ(text, "precious");
}

// Nothing is known about what answers there, so it stays.
TEST_F(ServerTest, leaves_a_socket_of_another_kind)
{
    const int fd = bound_socket(SOCK_DGRAM);
    const auto agent = launch();
    EXPECT_EQ(end_of(*agent), "1 ruklog-agentsim: cannot tell whether an Agent is serving " +
                                  path_ + ": Protocol wrong type for socket\n");
    EXPECT_TRUE(exists(path_));
    close(fd);
}

TEST_F(ServerTest, stops_when_its_socket_has_gone)
{
    const auto agent = serve();
    ASSERT_EQ(unlink(path_.c_str()), 0);
    agent->send_signal(SIGTERM);
    EXPECT_EQ(end_of(*agent), "0 ");
}

// A path without a folder is one of the working folder.
TEST_F(ServerTest, serves_in_the_working_folder)
{
    Child agent(
        {"/bin/sh", "-c", "cd " + folder_.file("") + " && exec " RUK_AGENTSIM " --socket socket"});
    EXPECT_TRUE(agent.wait_for_output("ruklog-agentsim: serving socket\n"));
    expect_served();
}

TEST_F(ServerTest, does_not_wait_for_a_locked_folder_for_ever)
{
    const int folder = open(folder_.file("").c_str(), O_RDONLY | O_DIRECTORY);
    ASSERT_EQ(flock(folder, LOCK_EX), 0);
    const auto agent = launch();
    EXPECT_EQ(end_of(*agent), "1 ruklog-agentsim: cannot lock the folder of " + path_ +
                                  ": Resource temporarily unavailable\n");
    close(folder);
}

TEST_F(ServerTest, leaves_a_socket_that_took_its_place)
{
    const auto agent = serve();
    ASSERT_EQ(unlink(path_.c_str()), 0);
    leave_dead_socket();
    agent->send_signal(SIGTERM);
    EXPECT_EQ(end_of(*agent), "0 ");
    EXPECT_TRUE(exists(path_));
}

TEST_F(ServerTest, says_why_it_cannot_start)
{
    const std::string lost = folder_.file("no/socket");
    const std::string feed = folder_.file("nothing");
    const std::string long_path = "/tmp/" + std::string(103, 'x');
    const auto expect_failure = [this](const std::vector<std::string> &arguments,
                                       const std::string &expected) {
        const auto agent = launch(arguments);
        EXPECT_EQ(end_of(*agent), expected);
        EXPECT_EQ(agent->out(), "");
        EXPECT_FALSE(exists(path_));
    };
    expect_failure({"--socket", lost}, "1 ruklog-agentsim: cannot lock the folder of " + lost +
                                           ": No such file or directory\n");
    expect_failure({"--socket", long_path},
                   "1 ruklog-agentsim: a socket's path has 1 to 107 characters\n");
    expect_failure({"--socket", "/proc/socket"},
                   "1 ruklog-agentsim: cannot bind /proc/socket: No such file or directory\n");
    expect_failure({"--feed", feed},
                   "1 ruklog-agentsim: cannot read " + feed + ": No such file or directory\n");
    expect_failure({"--feed", "/tmp"}, "1 ruklog-agentsim: cannot read /tmp: it is a directory\n");
    expect_failure({"--pidfile", lost},
                   "1 ruklog-agentsim: cannot write " + lost + ": No such file or directory\n");
    expect_failure({"--bogus"},
                   "2 ruklog-agentsim: unknown option --bogus; --help lists the options\n");
}

TEST_F(ServerTest, helps)
{
    const Outcome outcome = run({RUK_AGENTSIM, "--help"});
    EXPECT_EQ(outcome.exit_status, 0);
    EXPECT_TRUE(outcome.out.starts_with("Usage: ruklog-agentsim [options]\n"));
    for (const char *option : {"--preload", "--rate", "--feed", "--no-line-feed", "--kmsg",
                               "--capacity", "--first-entry", "--modules", "--socket", "--pidfile",
                               "--management-ip", "--version-mismatch", "--help"}) {
        EXPECT_NE(outcome.out.find(std::string("\n  ") + option + " "), std::string::npos)
            << option;
    }
}

TEST_F(ServerTest, answers_a_request_that_comes_byte_by_byte)
{
    const auto agent = serve();
    const AgentClient client(path_);
    AgentRequest request = request_of(56, 0, 4);
    const std::string sent = bytes_of(request) + "####";
    for (const char byte : sent) {
        ASSERT_TRUE(client.send_bytes({&byte, 1}));
    }
    request.status = 0;
    EXPECT_EQ(client.receive(60), bytes_of(request) + "\x7F" + std::string("\0\0\x01", 3));
}

TEST_F(ServerTest, a_torn_request_costs_nobody_else)
{
    const auto agent = serve();
    const std::string whole = bytes_of(request_of(234, 0, 152)) + std::string(152, '#');
    std::vector<std::unique_ptr<AgentClient>> torn;
    for (const size_t length : {1U, 55U, 56U, 57U, 207U}) {
        torn.push_back(std::make_unique<AgentClient>(path_));
        ASSERT_TRUE(torn.back()->send_bytes(whole.substr(0, length)));
    }
    expect_served();
    torn.clear();
    expect_served();
}

TEST_F(ServerTest, answers_a_client_that_sends_nothing_more)
{
    const auto agent = serve();
    const AgentClient client(path_);
    ASSERT_TRUE(client.send_bytes(bytes_of(request_of(63, 0, 4)) + "abcd"));
    shutdown(client.fd(), SHUT_WR);
    EXPECT_EQ(client.receive(100).size(), 60U);
}

TEST_F(ServerTest, closes_at_absurd_lengths)
{
    const auto agent = serve();
    for (const uint32_t size : {0xFFFFFFFFU, 0xFFFFFFC8U, 0x7FFFFFFFU, 1048521U}) {
        SCOPED_TRACE(size);
        const AgentClient client(path_);
        ASSERT_TRUE(client.send_bytes(bytes_of(request_of(63, 0, size))));
        EXPECT_TRUE(client.is_closed());
    }
    expect_served();
}

TEST_F(ServerTest, closes_at_an_absurd_length_behind_a_request)
{
    const auto agent = serve();
    const AgentClient client(path_);
    const std::string request = bytes_of(request_of(63, 0, 4)) + "word";
    ASSERT_TRUE(client.send_bytes(request + bytes_of(request_of(63, 0, 0xFFFFFFFF))));
    EXPECT_EQ(client.receive(60).size(), 60U);
    EXPECT_TRUE(client.is_closed());
    expect_served();
}

TEST_F(ServerTest, answers_the_longest_request)
{
    const auto agent = serve();
    const AgentClient client(path_);
    const AgentRequest request = request_of(63, 0, 1048520);
    const std::string payload(1048520, 'p');
    std::thread sender([&] { EXPECT_TRUE(client.send_bytes(bytes_of(request) + payload)); });
    const std::string answer = client.receive(1048576);
    sender.join();
    ASSERT_EQ(answer.size(), 1048576U);
    EXPECT_EQ(record_of<AgentRequest>(answer).status, 5);
    EXPECT_TRUE(answer.substr(56) == payload);
}

// A client that sends and never reads fills its own socket and stops there.
TEST_F(ServerTest, a_client_that_does_not_read_costs_nobody_else)
{
    const auto agent = serve();
    AgentClient flooder(path_);
    const std::string request = bytes_of(request_of(9999, 0, 4000)) + std::string(4000, 'f');
    fcntl(flooder.fd(), F_SETFL, O_NONBLOCK);
    size_t sent = 0;
    // Full for good: still full while the Agent has answered others many times.
    for (int answered = 0; answered < 100;) {
        const ssize_t more = send(flooder.fd(), request.data(), request.size(), MSG_NOSIGNAL);
        if (more > 0) {
            sent += static_cast<size_t>(more);
            answered = 0;
        } else {
            ASSERT_EQ(errno, EAGAIN);
            expect_served();
            ++answered;
        }
        ASSERT_LT(sent, size_t{64} << 20);
    }
    flooder.disconnect();
    expect_served();
}

TEST_F(ServerTest, a_slow_reader_gets_every_byte)
{
    const auto agent = serve();
    const AgentClient client(path_);
    const AgentRequest request = request_of(9999, 0, 1000);
    const std::string payload(1000, 's');
    const int count = 2000;
    std::thread sender([&] {
        for (int i = 0; i < count; ++i) {
            EXPECT_TRUE(client.send_bytes(bytes_of(request) + payload));
        }
    });
    for (int i = 0; i < count; ++i) {
        if (i % 500 == 0) {
            expect_served();
        }
        const std::string answer = client.receive(1056);
        ASSERT_EQ(answer.size(), 1056U);
        ASSERT_EQ(record_of<AgentRequest>(answer).status, 4);
        ASSERT_TRUE(answer.substr(56) == payload);
    }
    sender.join();
}

TEST_F(ServerTest, a_flood_of_connections_does_not_keep_others_out)
{
    const auto agent = serve();
    const AgentClient holder(path_);
    ASSERT_EQ(holder.set_log(5, 0), 1U);
    uint32_t word = 0;
    std::vector<std::unique_ptr<AgentClient>> flood;
    for (int i = 0; i < 127; ++i) {
        flood.push_back(std::make_unique<AgentClient>(path_));
        ASSERT_EQ(flood.back()->call(63, 0, word), 0);
    }
    // One more takes the place of that which has been idle longest, but for the holder.
    const AgentClient further(path_);
    EXPECT_EQ(further.call(63, 0, word), 0);
    EXPECT_TRUE(flood.front()->is_closed());
    EXPECT_EQ(flood.back()->call(63, 0, word), 0);
    EXPECT_EQ(holder.set_log(6, 0), 0U);
}

TEST_F(ServerTest, a_crowd_of_holders_is_not_broken_up)
{
    const auto agent = serve();
    std::vector<std::unique_ptr<AgentClient>> holders;
    for (int i = 0; i < 128; ++i) {
        holders.push_back(std::make_unique<AgentClient>(path_));
        ASSERT_EQ(holders.back()->set_log(5, 0), 1U);
    }
    EXPECT_TRUE(AgentClient(path_).is_closed());
    EXPECT_EQ(holders.front()->set_log(6, 0), 0U);
    uint32_t word = 0;
    EXPECT_TRUE(eventually([&] { return AgentClient(path_).call(63, 0, word) == 0; }));
}

TEST_F(ServerTest, two_clients_see_one_log)
{
    const auto agent = serve({"--preload", "9"});
    const AgentClient one(path_);
    const AgentClient two(path_);
    EXPECT_EQ(one.entries().size(), 8U);
    EXPECT_EQ(two.set_log(2, 0), 1U);
    expect_info(one.info(), {8, 0, 8, 0, 0, 1, k_none});
    EXPECT_EQ(one.set_log(4, 0), 0U);
    EXPECT_EQ(two.entries().size(), 0U);
    expect_info(two.info(), {0, 0, 8, 0, 0, 1, k_none});
}

TEST_F(ServerTest, a_client_that_dies_releases_its_holds)
{
    const std::string pipe = folder_.file("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const auto agent = serve({"--feed", pipe});
    std::ofstream feed(pipe);
    const AgentClient watcher(path_);
    AgentClient holder(path_);
    EXPECT_EQ(holder.set_log(5, 0), 1U);
    EXPECT_EQ(holder.set_log(5, 0), 1U);
    feed << "held\n" << std::flush;
    EXPECT_TRUE(eventually([&] { return watcher.info().skipped == 1; }));
    EXPECT_EQ(watcher.set_log(6, 0), 0U);
    feed << "still held\n" << std::flush;
    EXPECT_TRUE(eventually([&] { return watcher.info().skipped == 2; }));
    expect_info(watcher.info(), {0, 1, 0, 0, 0, 2, k_none});
    holder.disconnect();
    // The Agent may see a line before the end of the connection, so lines go on.
    EXPECT_TRUE(eventually([&] {
        feed << "free\n" << std::flush;
        return watcher.info().total > 0;
    }));
}

TEST_F(ServerTest, reads_a_file_before_it_is_ready)
{
    const std::string file = folder_.file("feed");
    std::ofstream(file) << "one\n<27>two\nPacket: three\n" << std::string(300, 'x');
    const auto agent = serve({"--feed", file, "--first-entry", "4294967295", "--capacity", "2"});
    const AgentClient client(path_);
    expect_info(client.info(), {2, 1, 0x100000002, 1, 0, 1, k_none});
    const auto all = client.entries();
    ASSERT_EQ(all.size(), 2U);
    EXPECT_EQ(all[0].entry, 0x100000000U);
    EXPECT_EQ(all[0].module, 2U);
    EXPECT_EQ(all[0].level, 0x01);
    EXPECT_STREQ(all[0].message, "two\n");
    EXPECT_EQ(all[1].entry, 0x100000001U);
    EXPECT_EQ(all[1].message, std::string(126, 'x') + "\n");
}

TEST_F(ServerTest, reads_standard_input)
{
    const auto agent = serve({"--feed", "-", "--no-line-feed"}, "first line\nsecond");
    const auto all = AgentClient(path_).entries();
    ASSERT_EQ(all.size(), 2U);
    EXPECT_STREQ(all[0].message, "first line");
    EXPECT_STREQ(all[1].message, "second");
}

TEST_F(ServerTest, reads_a_pipe_as_it_comes)
{
    const std::string pipe = folder_.file("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const auto agent = serve({"--feed", pipe});
    // Before there is a writer, between its pieces, and after it has gone.
    expect_served();
    const AgentClient client(path_);
    {
        std::ofstream feed(pipe);
        feed << "first li" << std::flush << "ne\nsecond" << std::flush;
        EXPECT_TRUE(eventually([&] { return client.info().total == 1; }));
    }
    EXPECT_TRUE(eventually([&] { return client.info().total == 2; }));
    EXPECT_STREQ(client.entries().at(1).message, "second\n");
    expect_served();
}

TEST_F(ServerTest, makes_events_at_a_rate)
{
    const auto agent = serve({"--rate", "1000"});
    const AgentClient client(path_);
    EXPECT_TRUE(eventually([&] { return client.info().total >= 50; }));
    EXPECT_EQ(client.info().lost, 0U);
}

TEST_F(ServerTest, start_stops_by_itself_while_events_come)
{
    const auto agent = serve({"--rate", "100000", "--capacity", "100"});
    const AgentClient client(path_);
    client.set_log(2, 0);
    const uint64_t before = client.info().total;
    client.set_log(4, 0);
    client.set_log(1, 50);
    EXPECT_TRUE(eventually([&] { return client.info().enabled == 0; }));
    const LogInfo info = client.info();
    EXPECT_EQ(info.total, before + 50);
    EXPECT_EQ(info.available, 50U);
    EXPECT_EQ(info.stop_after, k_none);
    const auto all = client.entries();
    EXPECT_EQ(all.size(), 50U);
    EXPECT_EQ(all.front().entry, before);
    EXPECT_EQ(all.back().entry, before + 49);
}

TEST_F(ServerTest, reads_the_kernels_log_or_says_why_not)
{
    const int kmsg = open("/dev/kmsg", O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (kmsg < 0) {
        const auto agent = launch({"--kmsg"});
        const std::string text = end_of(*agent);
        EXPECT_TRUE(text.starts_with(
            "1 ruklog-agentsim: cannot read /dev/kmsg (it may need to run as root): "))
            << text;
        return;
    }
    char record[8192];
    const ssize_t got = read(kmsg, record, sizeof record);
    close(kmsg);
    const auto agent = serve({"--kmsg"});
    const AgentClient client(path_);
    if (got <= 0) {
        EXPECT_EQ(client.info().total, 0U);
        return;
    }
    const std::vector<LogEntry> all = client.entries();
    ASSERT_FALSE(all.empty());
    for (const LogEntry &entry : all) {
        EXPECT_NE(entry.seconds, 0U);
        EXPECT_LE(entry.seconds, static_cast<uint64_t>(time(nullptr)) + 1);
        EXPECT_LT(entry.microseconds, 1'000'000U);
        const size_t length = strnlen(entry.message, sizeof entry.message);
        ASSERT_GT(length, 0U);
        ASSERT_LT(length, sizeof entry.message);
        EXPECT_EQ(entry.message[length - 1], '\n');
    }
}

TEST_F(ServerTest, says_what_it_is_told_to_say)
{
    const auto agent =
        serve({"--version-mismatch", "--management-ip", "192.0.2.9", "--modules", "2"});
    const AgentClient client(path_);
    uint32_t word = 7;
    EXPECT_EQ(client.call(63, 0, word), 6);
    EXPECT_EQ(word, 7U);
    std::array<uint8_t, 4> address{};
    EXPECT_EQ(client.call(56, 0, address), 0);
    EXPECT_EQ(address, (std::array<uint8_t, 4>{192, 0, 2, 9}));
    LogModule module{};
    module.index = 0;
    EXPECT_EQ(client.call(311, 0, module), 0);
    EXPECT_STREQ(module.name, "module1");
    EXPECT_EQ(client.call(311, 0, module), 3);
}

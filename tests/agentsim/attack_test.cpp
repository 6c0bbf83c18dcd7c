// The program under attack.  Whatever its clients do, a well-behaved one is served right and soon,
// and the memory and the descriptors that the program takes stay bounded.
//
// RUK_SEED repeats a run.
#include <array>
#include <ctime>
#include <fcntl.h>
#include <poll.h>
#include <random>

#include "tests/agentsim/attack.h"

using namespace ruk_test;

TEST_F(Attack, of_a_thousand_connections)
{
    const auto agent = serve_lines();
    expect_bounded(*agent, "before");
    const std::string whole = entry_request();
    const std::string waves[] = {"", whole.substr(0, 1), whole.substr(0, 56), whole, whole + whole};
    for (const milliseconds pause : {milliseconds(0), milliseconds(20)}) {
        WellBehaved client(path_, pause);
        client.make_rounds(1);
        for (const std::string &bytes : waves) {
            const auto attackers = crowd(1000, bytes);
            client.make_rounds(20);
            EXPECT_LE(descriptors(*agent), at_rest_ + k_most_connections);
        }
        client.expect_well_served("a thousand connections");
    }
    expect_recovered(*agent, "after a thousand connections");
}

// Each from a process of its own.
TEST_F(Attack, of_connections_of_many_processes)
{
    const auto agent = serve_lines();
    WellBehaved client(path_, milliseconds(1));
    client.make_rounds(1);
    std::vector<std::unique_ptr<Attackers>> many;
    for (int i = 0; i < 200; ++i) {
        many.push_back(crowd(1, i % 2 == 0 ? "" : entry_request()));
    }
    client.make_rounds(20);
    client.expect_well_served("connections of many processes");
    EXPECT_GE(descriptors(*agent), at_rest_ + 120);
    many.clear();
    expect_recovered(*agent, "after connections of many processes");
}

// Who holds the log on every connection keeps none of the others out.
TEST_F(Attack, of_a_thousand_holds)
{
    const auto agent = serve_lines();
    uint64_t value = 0;
    const auto attackers =
        crowd(1000, bytes_of(request_of(236, 5, sizeof value)) + bytes_of(value));
    WellBehaved client(path_, milliseconds(1));
    client.make_rounds(20);
    client.expect_well_served("a thousand holds");
    attackers->kill_them();
    expect_recovered(*agent, "after a thousand holds");
}

TEST_F(Attack, by_torn_requests)
{
    const auto agent = serve_lines();
    WellBehaved client(path_, milliseconds(1));
    const std::string whole = entry_request();
    Attackers torn([&](Clients &clients) {
        for (size_t length = 0; length < whole.size(); ++length) {
            for (const int how : std::array<int, 4>{-1, SHUT_WR, SHUT_RD, SHUT_RDWR}) {
                clients.push_back(std::make_unique<AgentClient>(path_));
                clients.back()->send_bytes(whole.substr(0, length));
                if (how >= 0) {
                    shutdown(clients.back()->fd(), how);
                }
                if (length % 2 == 0) {
                    clients.back()->disconnect();
                }
            }
        }
    });
    client.make_rounds(20);
    client.expect_well_served("torn requests");
    torn.kill_them();
    expect_recovered(*agent, "after torn requests");
}

namespace
{

// The fields that say a request's length, by their place in it.
constexpr size_t k_size_fields[] = {16, 20, 24, 28, 32, 36};
constexpr uint32_t k_extremes[] = {0,       1,          55,         56,         65535,     65536,
                                   1048520, 0x7FFFFFFF, 0x80000000, 0xFFFFFFC8, 0xFFFFFFFF};

uint32_t field(const std::string &header, size_t offset)
{
    return record_of<uint32_t>(header, offset);
}

// The length by the declared widths: sums and products of 32 bits, and more than 1 MiB ends the
// connection.  Buffer 2 counts only when its flag is set.
uint64_t request_length(const std::string &header)
{
    const uint32_t one = field(header, 32) * field(header, 24) + field(header, 16);
    const uint32_t two = field(header, 36) * field(header, 28) + field(header, 20);
    return uint64_t{56} + one + ((header[4] & 0x08) != 0 ? two : 0);
}

// Sends a header and what it promises, and checks the answer or the end.
void try_header(const std::string &path, const std::string &header)
{
    const AgentClient client(path);
    const uint64_t length = request_length(header);
    if (length > 1048576) {
        client.send_bytes(header);
        EXPECT_TRUE(client.is_closed());
        return;
    }
    const std::string request = header + std::string(length - header.size(), '\x5A');
    std::thread sender([&] { client.send_bytes(request); });
    const std::string answer = client.receive(length);
    sender.join();
    ASSERT_EQ(answer.size(), length);
    EXPECT_NE(record_of<int32_t>(answer, 12), 0);
    EXPECT_TRUE(answer.substr(0, 12) == request.substr(0, 12));
    EXPECT_TRUE(answer.substr(16) == request.substr(16));
}

} // namespace

TEST_F(Attack, by_absurd_lengths)
{
    const auto agent = serve_lines();
    WellBehaved client(path_, milliseconds(1));
    int tried = 0;
    for (const char flags : {'\x00', '\x08', '\xFF'}) {
        for (const size_t first : k_size_fields) {
            for (const size_t second : k_size_fields) {
                for (const uint32_t value : k_extremes) {
                    for (const uint32_t other : {value, 1U, 0xFFFFFFFFU}) {
                        std::string header = bytes_of(request_of(9999, 0, 0));
                        header[4] = flags;
                        header.replace(first, 4, bytes_of(value));
                        header.replace(second, 4, bytes_of(other));
                        SCOPED_TRACE(first);
                        try_header(path_, header);
                        ASSERT_FALSE(HasFatalFailure());
                        ++tried;
                    }
                }
            }
        }
    }
    printf("%d absurd headers\n", tried);
    client.expect_well_served("absurd lengths");
    expect_recovered(*agent, "after absurd lengths");
}

// Each sends until its socket is full; what it is owed fills the Agent's side.
TEST_F(Attack, by_clients_that_never_read)
{
    const auto agent = serve_lines();
    WellBehaved client(path_, milliseconds(1));
    client.make_rounds(1);
    const std::string request =
        bytes_of(request_of(9999, 0, 4000)) + std::string(4000, 'n') + entry_request();
    Attackers deaf([&](Clients &clients) {
        for (int i = 0; i < 120; ++i) {
            clients.push_back(std::make_unique<AgentClient>(path_));
            fcntl(clients.back()->fd(), F_SETFL, O_NONBLOCK);
        }
        // Full for good: as long as there is room anywhere they go on.
        for (int full = 0; full < 10; ++full) {
            for (const auto &one : clients) {
                while (send(one->fd(), request.data(), request.size(), MSG_NOSIGNAL) > 0) {
                    full = 0;
                }
            }
            std::this_thread::sleep_for(milliseconds(1));
        }
    });
    client.make_rounds(50);
    client.expect_well_served("clients that never read");
    EXPECT_TRUE(eventually([&] { return descriptors(*agent) == at_rest_ + 120; }));
    expect_bounded(*agent, "while nobody reads");
    deaf.kill_them();
    expect_recovered(*agent, "after clients that never read");
}

// Each asks and reads as fast as it can, many requests at a time.
TEST_F(Attack, by_clients_that_never_rest)
{
    const auto agent = serve_lines();
    WellBehaved client(path_, milliseconds(1));
    client.make_rounds(1);
    std::string requests;
    while (requests.size() < 20'000) {
        requests += entry_request();
    }
    const auto exchange = [&](Clients &clients) {
        char answers[65536];
        for (const auto &one : clients) {
            (void)!send(one->fd(), requests.data(), requests.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
            (void)!recv(one->fd(), answers, sizeof answers, MSG_DONTWAIT);
        }
    };
    const auto connect = [&](Clients &clients) {
        for (int i = 0; i < 50; ++i) {
            clients.push_back(std::make_unique<AgentClient>(path_));
        }
    };
    Attackers one(connect, exchange);
    Attackers two(connect, exchange);
    client.make_rounds(40);
    client.expect_well_served("clients that never rest");
    expect_bounded(*agent, "while nobody rests");
    one.kill_them();
    two.kill_them();
    expect_recovered(*agent, "after clients that never rest");
}

// The longest requests, each but for its last byte.
TEST_F(Attack, by_clients_that_never_finish)
{
    const auto agent = serve_lines();
    expect_bounded(*agent, "before");
    WellBehaved client(path_, milliseconds(1));
    client.make_rounds(1);
    const auto lazy =
        crowd(300, bytes_of(request_of(9999, 0, 1048520)) + std::string(1048519, 'u'));
    client.make_rounds(20);
    client.expect_well_served("clients that never finish");
    expect_bounded(*agent, "while nobody finishes");
    EXPECT_GT(kilobytes(*agent, "VmRSS"), 100 * 1024);
    lazy->kill_them();
    expect_recovered(*agent, "after clients that never finish");
}

namespace
{

std::mt19937_64 &generator()
{
    static const unsigned seed = [] {
        const char *text = getenv("RUK_SEED");
        const unsigned value = text != nullptr ? static_cast<unsigned>(strtoul(text, nullptr, 10))
                                               : std::random_device{}();
        printf("RUK_SEED=%u\n", value);
        return value;
    }();
    static std::mt19937_64 random(seed);
    return random;
}

size_t random_number(size_t first, size_t last)
{
    return std::uniform_int_distribution<size_t>(first, last)(generator());
}

} // namespace

TEST_F(Attack, by_ten_million_random_bytes)
{
    const auto agent = serve_lines();
    WellBehaved client(path_, milliseconds(1));
    client.make_rounds(1);
    constexpr size_t k_bytes = 10'000'000;
    Clients open(40);
    size_t connections = 0;
    size_t sent = 0;
    std::string piece;
    while (sent < k_bytes) {
        auto &one = open[random_number(0, open.size() - 1)];
        if (one == nullptr || random_number(0, 9) == 0) {
            one = std::make_unique<AgentClient>(path_);
            ++connections;
            // Half of them get random bytes where a record belongs; its opcode changes nothing.
            if (random_number(0, 1) == 0) {
                const uint16_t opcodes[] = {56, 63, 233, 234, 311, 312, 9999};
                const auto size = static_cast<uint32_t>(random_number(0, 5000));
                one->send_bytes(bytes_of(request_of(opcodes[random_number(0, 6)], 0, size)));
            }
        }
        piece.resize(std::min(random_number(1, random_number(1, 20'000)), k_bytes - sent));
        for (char &byte : piece) {
            byte = static_cast<char>(generator()());
        }
        fcntl(one->fd(), F_SETFL, O_NONBLOCK);
        // What has been closed, or is full since nobody reads it, makes way for another.
        const ssize_t taken = send(one->fd(), piece.data(), piece.size(), MSG_NOSIGNAL);
        sent += taken > 0 ? static_cast<size_t>(taken) : 0;
        if (taken < static_cast<ssize_t>(piece.size())) {
            one.reset();
        }
    }
    printf("%zu random bytes over %zu connections\n", sent, connections);
    client.expect_well_served("random bytes");
    open.clear();
    expect_recovered(*agent, "after random bytes");
}

namespace
{

// From a client's death until the log takes events again.
constexpr milliseconds k_longest_hold{1000};

bool is_logging(const AgentClient &watcher)
{
    const uint64_t total = watcher.info().total;
    std::this_thread::sleep_for(milliseconds(5));
    return watcher.info().total > total;
}

// The time until the log takes an event again.
Clock::duration time_until_logging(const AgentClient &watcher)
{
    const auto begun = Clock::now();
    const uint64_t total = watcher.info().total;
    EXPECT_TRUE(eventually([&] { return watcher.info().total > total; }));
    return Clock::now() - begun;
}

} // namespace

TEST_F(Attack, by_clients_that_die_inside_a_hold)
{
    const auto agent = serve({"--rate", "10000"});
    const AgentClient watcher(path_);
    EXPECT_TRUE(is_logging(watcher));
    const std::string torn[] = {"", "x", entry_request().substr(0, 100),
                                bytes_of(request_of(9999, 0, 1048520)) + std::string(100'000, 't'),
                                entry_request() + entry_request()};
    Clock::duration longest{};
    int deaths = 0;
    const auto expect_end_of_hold = [&] {
        longest = std::max(longest, time_until_logging(watcher));
        ++deaths;
    };
    for (const std::string &bytes : torn) {
        for (const int holds : {1, 2, 17}) {
            const auto hold = [&](const AgentClient &client) {
                uint64_t value = 0;
                for (int i = 0; i < holds; ++i) {
                    client.call(236, 5, value);
                }
                client.send_bytes(bytes);
            };
            Attackers holder([&](Clients &clients) {
                clients.push_back(std::make_unique<AgentClient>(path_));
                hold(*clients.back());
            });
            EXPECT_FALSE(is_logging(watcher));
            holder.kill_them();
            expect_end_of_hold();
            for (const int how : std::array<int, 3>{-1, SHUT_WR, SHUT_RDWR}) {
                AgentClient client(path_);
                hold(client);
                EXPECT_FALSE(is_logging(watcher));
                how < 0 ? client.disconnect() : static_cast<void>(shutdown(client.fd(), how));
                expect_end_of_hold();
            }
        }
    }
    printf("%d clients died inside a hold, longest until the log ran again %.1f ms\n", deaths,
           in_ms(longest));
    EXPECT_LT(longest, k_longest_hold);
    expect_recovered(*agent, "after deaths inside a hold");
}

// Many at once, in the middle of a crowd.
TEST_F(Attack, by_a_crowd_that_is_killed_inside_its_holds)
{
    const auto agent = serve({"--rate", "10000"});
    const AgentClient watcher(path_);
    EXPECT_TRUE(is_logging(watcher));
    const auto idle = crowd(1000);
    uint64_t value = 0;
    const std::string hold = bytes_of(request_of(236, 5, sizeof value)) + bytes_of(value);
    std::vector<std::unique_ptr<Attackers>> holders;
    for (int i = 0; i < 60; ++i) {
        holders.push_back(crowd(1, hold + hold + (i % 2 == 0 ? "" : "torn")));
    }
    EXPECT_TRUE(eventually([&] { return !is_logging(watcher); }));
    for (const auto &holder : holders) {
        holder->kill_them();
    }
    const Clock::duration time = time_until_logging(watcher);
    printf("60 clients killed inside their holds: the log ran again after %.1f ms\n", in_ms(time));
    EXPECT_LT(time, k_longest_hold);
    idle->kill_them();
    expect_recovered(*agent, "after a crowd of holders");
}

// Fewer descriptors than connections that it would serve: those must be enough for everyone, too.
TEST_F(Attack, of_connections_on_few_descriptors)
{
    const auto agent = serve_lines();
    const rlim_t limit = limit_for(*agent, 33);
    const rlimit few{limit, limit};
    ASSERT_EQ(prlimit(agent->pid(), RLIMIT_NOFILE, &few, nullptr), 0);
    WellBehaved client(path_, milliseconds(1));
    client.make_rounds(1);
    const auto attackers = crowd(200);
    client.make_rounds(40);
    client.expect_well_served("few descriptors");
    EXPECT_LE(descriptors(*agent), at_rest_ + 33);
    attackers->kill_them();
    expect_recovered(*agent, "after few descriptors");
}

// The last descriptor costs nobody anything as long as nobody waits for another.
TEST_F(Attack, takes_every_descriptor_that_there_is)
{
    const auto agent = serve_lines();
    const rlim_t limit = limit_for(*agent, 5);
    const rlimit few{limit, limit};
    ASSERT_EQ(prlimit(agent->pid(), RLIMIT_NOFILE, &few, nullptr), 0);
    Clients clients;
    for (int i = 0; i < 5; ++i) {
        clients.push_back(std::make_unique<AgentClient>(path_));
        EXPECT_EQ(clients.back()->info().total, k_entries);
    }
    for (const auto &one : clients) {
        EXPECT_EQ(one->info().total, k_entries);
    }
    const AgentClient further(path_);
    EXPECT_EQ(further.info().total, k_entries);
    EXPECT_TRUE(clients.front()->is_closed());
    EXPECT_EQ(clients.back()->info().total, k_entries);
}

namespace
{

// Long enough for an answer, were there one.
constexpr milliseconds k_no_answer{300};

bool is_answered(const AgentClient &client)
{
    pollfd answer{.fd = client.fd(), .events = POLLIN, .revents = 0};
    return poll(&answer, 1, static_cast<int>(k_no_answer.count())) > 0;
}

void limit_descriptors(const Child &agent, rlim_t limit)
{
    rlimit limits{};
    EXPECT_EQ(prlimit(agent.pid(), RLIMIT_NOFILE, nullptr, &limits), 0);
    limits.rlim_cur = limit;
    EXPECT_EQ(prlimit(agent.pid(), RLIMIT_NOFILE, &limits, nullptr), 0);
}

std::chrono::nanoseconds processor_time(const Child &agent)
{
    clockid_t clock;
    timespec time{};
    EXPECT_EQ(clock_getcpuclockid(agent.pid(), &clock), 0);
    EXPECT_EQ(clock_gettime(clock, &time), 0);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

} // namespace

// Who cannot be served waits, and is not asked about over and over.
TEST_F(Attack, finds_no_descriptor_left)
{
    const auto agent = serve_lines();
    const rlim_t enough = limit_for(*agent, 1);
    limit_descriptors(*agent, enough - 1);
    const AgentClient waiting(path_);
    EXPECT_TRUE(waiting.connected());
    const auto before = processor_time(*agent);
    EXPECT_FALSE(is_answered(waiting));
    EXPECT_LT(processor_time(*agent) - before, milliseconds(20));
    limit_descriptors(*agent, enough);
    EXPECT_EQ(waiting.info().total, k_entries);
}

// The last descriptor is not taken from a client that holds the log.
TEST_F(Attack, finds_the_last_descriptor_holding_the_log)
{
    const auto agent = serve_lines();
    limit_descriptors(*agent, limit_for(*agent, 1));
    AgentClient holder(path_);
    holder.set_log(5, 0);
    const AgentClient waiting(path_);
    EXPECT_TRUE(waiting.connected());
    waiting.send_bytes(entry_request());
    EXPECT_FALSE(is_answered(waiting));
    EXPECT_EQ(holder.info().total, k_entries);
    holder.disconnect();
    EXPECT_EQ(waiting.receive(entry_request().size()).size(), 208U);
}

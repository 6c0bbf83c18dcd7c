// The stand-in Agent's log behind a socket of this process, so that a test can look at the log,
// make each reply take its time, and let the Agent stall at a request.
#pragma once

#include <chrono>
#include <condition_variable>
#include <list>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "agentsim/connection.h"
#include "agentsim/unique_fd.h"

namespace ruk_test
{

class LiveAgent
{
public:
    // Serves a full log of so many entries at the Agent's own path.  Of a reply's delay one half
    // goes by before the request takes effect, the other half after.
    LiveAgent(uint32_t entries, std::chrono::microseconds delay);
    ~LiveAgent();
    LiveAgent(const LiveAgent &) = delete;
    LiveAgent &operator=(const LiveAgent &) = delete;

    // A request to wait for.  It is met when it comes for the skip-th time, counted from 0.
    struct Point {
        uint16_t opcode;
        int32_t ident;
        uint32_t skip = 0;
    };

    // Takes effect but gives no answer at that request until go_on().
    void stall_at(const Point &point);
    bool has_stalled();
    void go_on();

    // Takes effect but hangs up instead of an answer.
    void hang_up_at(const Point &point);

    // Waits until every client's end has been noticed.
    bool is_alone();

    // Logs an event.  False when it was not taken: logging is off or held.
    bool logs_an_event();

    bool is_enabled();
    void set_enabled(bool enabled);

    // What has come since the last call: stops that tools sent, and entry requests.
    struct Seen {
        int stops = 0;
        int entry_requests = 0;
    };
    Seen take_seen();

private:
    struct Peer {
        agentsim::UniqueFd fd;
        agentsim::Connection connection;
        Peer(agentsim::UniqueFd socket, agentsim::LogService &service)
            : fd(std::move(socket)), connection(service)
        {
        }
    };

    void serve();
    bool serve(Peer &peer);
    std::list<Peer>::iterator forget(std::list<Peer> &peers, std::list<Peer>::iterator peer);
    void look_at(std::span<const std::byte> answer);
    static bool meets(std::optional<Point> &point, const AgentRequest &request);

    // With the lock held.
    template <typename Record> void ask(uint16_t opcode, int32_t ident, Record &record);
    LogInfo info();

    std::chrono::microseconds half_delay_;
    agentsim::LogService service_;
    agentsim::UniqueFd listener_;
    agentsim::UniqueFd stop_read_;
    agentsim::UniqueFd stop_write_;
    std::mutex mutex_; // of everything below, and of service_
    std::condition_variable changed_;
    std::optional<Point> stall_;
    bool stalled_ = false;
    std::optional<Point> hang_up_;
    bool hangs_up_ = false;
    size_t connections_ = 0;
    Seen seen_;
    std::thread thread_;
};

} // namespace ruk_test

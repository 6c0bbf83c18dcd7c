// The socket server: one thread, one wait for clients, event sources and the signal to stop.
#pragma once

#include <memory>
#include <vector>

#include "agentsim/connection.h"
#include "agentsim/event_source.h"
#include "agentsim/unique_fd.h"

namespace agentsim
{

class Server
{
public:
    // Connections served at a time.  For a further one another is closed: of the process that has
    // the most, that whose last answer is longest ago; one that holds the log only when each of
    // them does.
    static constexpr size_t k_connection_limit = 128;

    // listener and stop are descriptors: a listening socket that does not block, and one that
    // can be read when the server is to stop.
    Server(int listener, int stop, LogService &service,
           std::vector<std::unique_ptr<EventSource>> sources);

    // Serves until stop can be read.  False: the wait itself failed.
    bool run();

private:
    struct Peer {
        Peer(UniqueFd socket, LogService &service, int64_t now);
        UniqueFd fd;
        Connection connection;
        pid_t owner;
        int64_t active; // when it last got an answer, or was accepted
    };
    using Peers = std::vector<std::unique_ptr<Peer>>;
    struct Waits;

    void accept_some(int64_t now);
    Peers::iterator most_expendable();
    bool make_room();
    void collect_events(const Waits &waits);
    void serve_peers(const Waits &waits);
    static bool serve(Peer &peer, int64_t now);

    int listener_;
    int stop_;
    LogService &service_;
    std::vector<std::unique_ptr<EventSource>> sources_;
    Peers peers_;
    bool accepting_ = true; // false for one wait when the host is out of descriptors
};

} // namespace agentsim

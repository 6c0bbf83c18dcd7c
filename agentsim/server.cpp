// The socket server.  Every turn serves each client that is ready once, with at most the requests
// that one buffer holds, so no client can keep the others waiting.
#include "agentsim/server.h"

#include <algorithm>
#include <cerrno>
#include <poll.h>
#include <sys/socket.h>
#include <tuple>
#include <unordered_map>

#include "agentsim/event.h"

namespace agentsim
{

namespace
{

// Connections accepted before clients get their turn.
constexpr int k_accept_batch = 8;

// Fewer connections of a process are none too many.
constexpr int k_smallest_crowd = 8;

// How long accepting rests when the host is out of descriptors.
constexpr int64_t k_accept_rest = 100'000'000;

// The time from now until due as ppoll takes it, or null for ever.
const timespec *wait_until(int64_t due, int64_t now, timespec &storage)
{
    if (due == EventSource::k_never) {
        return nullptr;
    }
    const int64_t wait = std::max<int64_t>(due - now, 0);
    storage = {.tv_sec = wait / k_nanoseconds, .tv_nsec = wait % k_nanoseconds};
    return &storage;
}

// The process that made the connection, 0 when the host does not say.
pid_t process_of(int fd)
{
    ucred credentials{};
    socklen_t size = sizeof credentials;
    const int result = getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &credentials, &size);
    return result == 0 ? credentials.pid : 0;
}

} // namespace

// What one turn waits for: stop, the listener, the sources and the peers, in this order.
struct Server::Waits {
    std::vector<pollfd> descriptors;
    size_t sources = 2; // index of the first source
    size_t peers = 2;   // index of the first peer
    int64_t due = EventSource::k_never;
    int64_t now = 0; // time at which the wait ended

    explicit Waits(const Server &server)
    {
        add(server.stop_, POLLIN);
        // A negative descriptor is passed over.
        add(server.accepting_ ? server.listener_ : -1, POLLIN);
        for (const auto &source : server.sources_) {
            add(source->descriptor(), POLLIN);
            due = std::min(due, source->due());
        }
        peers = descriptors.size();
        for (const auto &peer : server.peers_) {
            add(peer->fd.get(), peer->connection.answer().empty() ? POLLIN : POLLOUT);
        }
        if (!server.accepting_) {
            due = std::min(due, monotonic_time() + k_accept_rest);
        }
    }

    void add(int fd, short events)
    {
        descriptors.push_back({.fd = fd, .events = events, .revents = 0});
    }

    bool wait()
    {
        timespec storage;
        const timespec *timeout = wait_until(due, monotonic_time(), storage);
        const int ready = ppoll(descriptors.data(), descriptors.size(), timeout, nullptr);
        now = monotonic_time();
        return ready >= 0 || errno == EINTR || errno == ENOMEM;
    }

    bool ready(size_t index) const { return descriptors[index].revents != 0; }
};

Server::Server(int listener, int stop, LogService &service,
               std::vector<std::unique_ptr<EventSource>> sources)
    : listener_(listener), stop_(stop), service_(service), sources_(std::move(sources))
{
}

bool Server::run()
{
    for (;;) {
        Waits waits(*this);
        if (!waits.wait()) {
            return false;
        }
        if (waits.ready(0)) {
            return true;
        }
        accepting_ = true;
        // Before accepting, since the waits know the peers by their places.
        serve_peers(waits);
        collect_events(waits);
        if (waits.ready(1)) {
            accept_some(waits.now);
        }
    }
}

Server::Peer::Peer(UniqueFd socket, LogService &service, int64_t now)
    : fd(std::move(socket)), connection(service), owner(process_of(fd.get())), active(now)
{
}

void Server::accept_some(int64_t now)
{
    for (int i = 0; i < k_accept_batch; ++i) {
        UniqueFd fd(accept4(listener_, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
        if (fd) {
            peers_.push_back(std::make_unique<Peer>(std::move(fd), service_, now));
            if (peers_.size() > k_connection_limit) {
                peers_.erase(most_expendable());
            }
        } else if (errno == EMFILE && i > 0) {
            // Which accepting says whether anyone waits or not; the next wait tells.
            return;
        } else if (!(errno == EMFILE && make_room()) && errno != ECONNABORTED && errno != EINTR) {
            accepting_ = errno == EAGAIN;
            return;
        }
    }
}

// Who opens many connections competes with himself for them and not with the others.  The one just
// accepted is a candidate, too.
Server::Peers::iterator Server::most_expendable()
{
    std::unordered_map<pid_t, int> crowds;
    for (const auto &peer : peers_) {
        ++crowds[peer->owner];
    }
    const auto rank = [&crowds](const std::unique_ptr<Peer> &peer) {
        const int crowd = std::max(crowds[peer->owner], k_smallest_crowd);
        return std::tuple(-crowd, peer->connection.holds(), peer->active);
    };
    return std::min_element(peers_.begin(), peers_.end(),
                            [&rank](const auto &a, const auto &b) { return rank(a) < rank(b); });
}

// Where the process is out of descriptors before the limit is reached, idle connections must not
// keep the others out.  False: who waits has to go on waiting.
bool Server::make_room()
{
    const auto peer = most_expendable();
    if (peer == peers_.end() || (*peer)->connection.holds()) {
        return false;
    }
    peers_.erase(peer);
    return true;
}

void Server::collect_events(const Waits &waits)
{
    for (size_t i = 0; i < sources_.size(); ++i) {
        const bool waiting = waits.ready(waits.sources + i) || sources_[i]->due() <= waits.now;
        if (waiting && !sources_[i]->collect(service_, waits.now)) {
            sources_[i].reset();
        }
    }
    std::erase(sources_, nullptr);
}

void Server::serve_peers(const Waits &waits)
{
    for (size_t i = 0; i < peers_.size(); ++i) {
        if (waits.ready(waits.peers + i) && !serve(*peers_[i], waits.now)) {
            peers_[i].reset();
        }
    }
    std::erase(peers_, nullptr);
}

// Receives once and sends what there is to answer.  False: the connection has ended.
bool Server::serve(Peer &peer, int64_t now)
{
    Connection &connection = peer.connection;
    if (const auto room = connection.room(); !room.empty()) {
        const ssize_t got = recv(peer.fd.get(), room.data(), room.size(), 0);
        if (got <= 0) {
            return got < 0 && (errno == EAGAIN || errno == EINTR);
        }
        if (!connection.received(static_cast<size_t>(got))) {
            return false;
        }
    }
    while (!connection.answer().empty()) {
        const auto answer = connection.answer();
        // MSG_NOSIGNAL: a client that went away ends its connection, not the process.
        const ssize_t sent = send(peer.fd.get(), answer.data(), answer.size(), MSG_NOSIGNAL);
        if (sent < 0) {
            return errno == EAGAIN || errno == EINTR;
        }
        peer.active = now;
        if (!connection.sent(static_cast<size_t>(sent))) {
            return false;
        }
    }
    return true;
}

} // namespace agentsim

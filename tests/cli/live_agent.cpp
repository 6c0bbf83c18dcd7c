// The stand-in Agent's log behind a socket of this process.
#include "tests/cli/live_agent.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include "tests/support/eventually.h"
#include "tests/support/scripted_agent.h"

namespace ruk_test
{
namespace
{

using agentsim::EventLog;
using agentsim::ModuleTable;
using agentsim::UniqueFd;

[[noreturn]] void give_up(const char *what)
{
    perror(what);
    abort();
}

UniqueFd listen_at_agents_path()
{
    UniqueFd fd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    strncpy(address.sun_path, k_agent_path, sizeof address.sun_path - 1);
    unlink(k_agent_path);
    if (bind(fd.get(), reinterpret_cast<sockaddr *>(&address), sizeof address) != 0 ||
        listen(fd.get(), 64) != 0) {
        give_up("live agent");
    }
    return fd;
}

LogEntry an_error()
{
    LogEntry event{};
    event.level = 0x01;
    strcpy(event.message, "something happened\n");
    return event;
}

} // namespace

LiveAgent::LiveAgent(uint32_t entries, std::chrono::microseconds delay)
    : half_delay_(delay / 2), service_(EventLog(entries, 0), ModuleTable::standard(), {}),
      listener_(listen_at_agents_path())
{
    for (uint32_t i = 0; i < entries; ++i) {
        service_.log(an_error());
    }
    int stop[2];
    if (pipe2(stop, O_CLOEXEC) != 0) {
        give_up("pipe");
    }
    stop_read_ = UniqueFd(stop[0]);
    stop_write_ = UniqueFd(stop[1]);
    thread_ = std::thread([this] { serve(); });
}

LiveAgent::~LiveAgent()
{
    go_on();
    stop_write_ = UniqueFd();
    thread_.join();
    unlink(k_agent_path);
}

void LiveAgent::stall_at(const Point &point)
{
    const std::lock_guard lock(mutex_);
    stall_ = point;
}

bool LiveAgent::has_stalled()
{
    const std::lock_guard lock(mutex_);
    return stalled_;
}

void LiveAgent::go_on()
{
    const std::lock_guard lock(mutex_);
    stall_.reset();
    stalled_ = false;
    changed_.notify_all();
}

void LiveAgent::hang_up_at(const Point &point)
{
    const std::lock_guard lock(mutex_);
    hang_up_ = point;
}

bool LiveAgent::is_alone()
{
    return eventually([this] {
        const std::lock_guard lock(mutex_);
        return connections_ == 0;
    });
}

bool LiveAgent::logs_an_event()
{
    const std::lock_guard lock(mutex_);
    const uint64_t total = info().total;
    service_.log(an_error());
    return info().total == total + 1;
}

bool LiveAgent::is_enabled()
{
    const std::lock_guard lock(mutex_);
    return info().enabled != 0;
}

void LiveAgent::set_enabled(bool enabled)
{
    const std::lock_guard lock(mutex_);
    uint64_t value = 0;
    ask(KT_OPC_SET_LOG, enabled ? LOG_SET_RESUME : LOG_SET_STOP, value);
}

LiveAgent::Seen LiveAgent::take_seen()
{
    const std::lock_guard lock(mutex_);
    return std::exchange(seen_, {});
}

template <typename Record> void LiveAgent::ask(uint16_t opcode, int32_t ident, Record &record)
{
    agentsim::Client client;
    AgentRequest request{};
    request.opcode = opcode;
    request.ident = ident;
    service_.answer(client, request, std::as_writable_bytes(std::span(&record, 1)));
}

LogInfo LiveAgent::info()
{
    LogInfo info{};
    ask(KT_OPC_LOG_INFO, 0, info);
    return info;
}

void LiveAgent::serve()
{
    std::list<Peer> peers;
    for (;;) {
        std::vector<pollfd> watched{{stop_read_.get(), POLLIN, 0}, {listener_.get(), POLLIN, 0}};
        for (const Peer &peer : peers) {
            watched.push_back({peer.fd.get(), POLLIN, 0});
        }
        if (poll(watched.data(), watched.size(), -1) < 0) {
            give_up("poll");
        }
        if (watched[0].revents != 0) {
            return;
        }
        auto wait = watched.begin() + 2;
        for (auto peer = peers.begin(); peer != peers.end(); ++wait) {
            const bool goes_on = wait->revents == 0 || serve(*peer);
            peer = goes_on ? std::next(peer) : forget(peers, peer);
        }
        if (watched[1].revents != 0) {
            UniqueFd fd(accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
            const std::lock_guard lock(mutex_);
            peers.emplace_back(std::move(fd), service_);
            ++connections_;
        }
    }
}

std::list<LiveAgent::Peer>::iterator LiveAgent::forget(std::list<Peer> &peers,
                                                       std::list<Peer>::iterator peer)
{
    const std::lock_guard lock(mutex_);
    --connections_;
    return peers.erase(peer); // which ends its holds
}

// One receive and the answers to what it brought.  False: the client has gone.
bool LiveAgent::serve(Peer &peer)
{
    const auto room = peer.connection.room();
    const ssize_t got = recv(peer.fd.get(), room.data(), room.size(), 0);
    if (got <= 0) {
        return false;
    }
    std::this_thread::sleep_for(half_delay_);
    std::unique_lock lock(mutex_);
    bool goes_on = peer.connection.received(static_cast<size_t>(got));
    while (goes_on && !peer.connection.answer().empty()) {
        look_at(peer.connection.answer());
        changed_.wait(lock, [this] { return !stalled_; });
        if (hangs_up_) {
            return false;
        }
        const auto answer = peer.connection.answer();
        lock.unlock();
        std::this_thread::sleep_for(half_delay_);
        const ssize_t sent = send(peer.fd.get(), answer.data(), answer.size(), MSG_NOSIGNAL);
        lock.lock();
        goes_on = sent > 0 && peer.connection.sent(static_cast<size_t>(sent));
    }
    return goes_on;
}

void LiveAgent::look_at(std::span<const std::byte> answer)
{
    AgentRequest request;
    memcpy(&request, answer.data(), sizeof request);
    seen_.stops += request.opcode == KT_OPC_SET_LOG && request.ident == LOG_SET_STOP;
    seen_.entry_requests += request.opcode == KT_OPC_LOG_ENTRY;
    stalled_ = stalled_ || meets(stall_, request);
    hangs_up_ = meets(hang_up_, request);
}

bool LiveAgent::meets(std::optional<Point> &point, const AgentRequest &request)
{
    const bool is_met = point && point->opcode == request.opcode && point->ident == request.ident &&
                        point->skip-- == 0;
    if (is_met) {
        point.reset();
    }
    return is_met;
}

} // namespace ruk_test

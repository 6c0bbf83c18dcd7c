// The other process: serves, plays its fault, serves on.
#include "tests/faults/faulty_agent.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <new>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "tests/faults/small_log.h"
#include "tests/support/eventually.h"
#include "tests/support/log_records.h"

namespace ruk_test
{

struct FaultyAgent::Board {
    std::atomic<int> requests{0};
    std::atomic<int> connections{0};
    std::atomic<bool> played{false};
    std::atomic<bool> wanted_back{false};
    std::atomic<bool> listening{true};
};

namespace
{

constexpr size_t k_header = 56;
constexpr useconds_t k_stall = 5000;
constexpr char k_garbage = 'Z';

[[noreturn]] void give_up(const char *what)
{
    perror(what);
    abort();
}

int socket_at(const char *path, int (*call)(int, const sockaddr *, socklen_t), int type)
{
    const int fd = socket(AF_UNIX, SOCK_STREAM | type, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    strncpy(address.sun_path, path, sizeof address.sun_path - 1);
    if (fd < 0 || call(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
        close(fd);
        return -1;
    }
    return fd;
}

int listen_at(const char *path)
{
    unlink(path);
    const int fd = socket_at(path, bind, 0);
    if (fd < 0 || listen(fd, 16) != 0) {
        give_up("faulty agent");
    }
    return fd;
}

size_t length_of(const std::string &header)
{
    const auto word = [&](size_t offset) { return number_at<uint32_t>(header, offset); };
    const bool has_buffer2 = (header[4] & 0x08) != 0;
    return k_header + word(32) * word(24) + word(16) +
           (has_buffer2 ? word(36) * word(28) + word(20) : 0);
}

// How many bytes of a reply have come at a step.
size_t bytes_until(Step step, size_t total)
{
    switch (step) {
    case Step::in_header:
        return 7;
    case Step::at_status:
        return 12;
    case Step::header_only:
        return k_header;
    case Step::in_payload:
        return k_header + (total - k_header) / 2;
    case Step::one_short:
        return total - 1;
    case Step::surplus:
        return total + 5;
    default:
        return 0;
    }
}

void say(int fd, const std::string &bytes)
{
    for (size_t sent = 0; sent < bytes.size();) {
        const ssize_t n = send(fd, &bytes[sent], bytes.size() - sent, MSG_NOSIGNAL);
        if (n <= 0) {
            return;
        }
        sent += static_cast<size_t>(n);
    }
}

// False when the client has gone.
bool hear(int fd, size_t size, std::string &bytes, int flags = MSG_WAITALL)
{
    const size_t before = bytes.size();
    bytes.resize(before + size);
    return size == 0 || recv(fd, &bytes[before], size, flags) == static_cast<ssize_t>(size);
}

} // namespace

namespace
{

// The process itself: one thread, which may wait for one client, since each test has one.
template <typename Board> class Server
{
public:
    Server(const char *path, const Play &play, Board &board, int listener)
        : path_(path), play_(play), board_(board), listener_(listener)
    {
    }

    [[noreturn]] void serve()
    {
        for (;;) {
            std::vector<pollfd> watched{{gone_ ? -1 : listener_, POLLIN, 0}};
            for (const int fd : clients_) {
                watched.push_back({fd, POLLIN, 0});
            }
            poll(watched.data(), watched.size(), gone_ ? 1 : -1);
            if (gone_ && board_.wanted_back) {
                return_to_duty();
                continue;
            }
            if (watched[0].revents != 0) {
                accept_client();
            }
            for (size_t i = 1; i < watched.size(); ++i) {
                if (watched[i].revents != 0) {
                    serve_request(watched[i].fd);
                }
            }
        }
    }

private:
    bool is_due() const { return !board_.played && board_.requests == play_.request; }

    void hang_up(int fd)
    {
        close(fd);
        std::erase(clients_, fd);
    }

    void accept_client()
    {
        const int fd = accept(listener_, nullptr, nullptr);
        ++board_.connections;
        clients_.push_back(fd);
        fail_before_request(fd);
    }

    void go_away()
    {
        gone_ = true;
        board_.listening = false;
    }

    void return_to_duty()
    {
        close(listener_);
        listener_ = listen_at(path_);
        gone_ = false;
        board_.wanted_back = false;
        board_.listening = true;
    }

    // Faults that the client meets when it sends.
    void fail_before_request(int fd)
    {
        if (!is_due() || play_.step != Step::send) {
            return;
        }
        if (play_.kind == Fault_kind::closed || play_.kind == Fault_kind::descriptor_limit) {
            hang_up(fd);
        } else if (play_.kind == Fault_kind::shut_one_way) {
            shutdown(fd, SHUT_RD);
        } else {
            return;
        }
        board_.played = true;
    }

    // Faults that come when a request larger than the socket's buffer is on its way.
    bool fails_within_request(int fd)
    {
        if (!is_due() || play_.step != Step::send ||
            (play_.kind != Fault_kind::reset && play_.kind != Fault_kind::stalled)) {
            return false;
        }
        if (play_.kind == Fault_kind::stalled) {
            usleep(k_stall);
        }
        board_.played = true;
        ++board_.requests;
        hang_up(fd);
        return true;
    }

    void serve_request(int fd)
    {
        std::string request;
        if (!hear(fd, k_header, request)) {
            hang_up(fd);
            return;
        }
        if (fails_within_request(fd)) {
            return;
        }
        const bool is_faulty = is_due() && play_.step != Step::send;
        // What is left unread makes the end of the connection a reset.
        const bool resets = is_faulty && play_.kind == Fault_kind::reset;
        const size_t left = resets && play_.step != Step::connect ? 1 : 0;
        if (!hear(fd, length_of(request) - k_header - left, request) ||
            !hear(fd, left, request, MSG_PEEK | MSG_WAITALL)) {
            hang_up(fd);
            return;
        }
        const int number = board_.requests++;
        if (is_faulty) {
            play(fd, request, number);
            return;
        }
        say(fd, small_log::reply_of(request, number));
        fail_before_request(fd);
    }

    void play(int fd, const std::string &request, int number)
    {
        if (play_.step == Step::connect) {
            vanish(fd);
        } else {
            spoil_reply(fd, small_log::reply_of(request, number));
        }
        board_.played = true;
    }

    // Nobody will take the next connection.
    void vanish(int fd)
    {
        switch (play_.kind) {
        case Fault_kind::closed:
            close(listener_);
            listener_ = -1;
            go_away();
            hang_up(fd);
            return;
        case Fault_kind::shut_one_way:
            shutdown(listener_, SHUT_RD);
            go_away();
            hang_up(fd);
            return;
        case Fault_kind::reset:
            // The connection is made, but closed before anybody has taken it.
            hang_up(fd);
            await_connection();
            close(listener_);
            listener_ = -1;
            go_away();
            return;
        case Fault_kind::stalled:
            stall_connections(fd);
            return;
        default:
            hang_up(fd);
        }
    }

    void await_connection() const
    {
        pollfd watched{listener_, POLLIN, 0};
        poll(&watched, 1, 20000);
    }

    // The queue of connections is full, so that one more has to wait.
    void stall_connections(int fd)
    {
        listen(listener_, 0);
        std::vector<int> waiting;
        for (int own; (own = socket_at(path_, connect, SOCK_NONBLOCK)) >= 0;) {
            waiting.push_back(own);
        }
        go_away();
        hang_up(fd);
        usleep(4 * k_stall);
        close(listener_);
        listener_ = -1;
        for (const int own : waiting) {
            close(own);
        }
    }

    void spoil_reply(int fd, const std::string &whole)
    {
        const size_t until = bytes_until(play_.step, whole.size());
        std::string reply = whole + std::string(5, k_garbage);
        if (play_.kind == Fault_kind::claims_less || play_.kind == Fault_kind::claims_more) {
            const char claim = play_.kind == Fault_kind::claims_less ? '\0' : '\xff';
            std::fill(reply.begin() + 16, reply.begin() + 40, claim);
        }
        switch (play_.kind) {
        case Fault_kind::dribbled:
            for (size_t i = 0; i < until; ++i) {
                say(fd, reply.substr(i, 1));
            }
            if (until < whole.size()) {
                say(fd, reply.substr(until, whole.size() - until));
            }
            return;
        case Fault_kind::garbage: {
            const size_t size = std::max(until, whole.size());
            say(fd, reply.substr(0, std::min(until, whole.size())) +
                        std::string(size - std::min(until, whole.size()), k_garbage));
            return;
        }
        case Fault_kind::descriptor_closed:
        case Fault_kind::descriptor_reused:
            say(fd, reply.substr(0, until));
            return;
        case Fault_kind::shut_one_way:
            say(fd, reply.substr(0, until));
            shutdown(fd, SHUT_WR);
            return;
        case Fault_kind::stalled:
            say(fd, reply.substr(0, until));
            usleep(k_stall);
            hang_up(fd);
            return;
        default:
            say(fd, reply.substr(0, until));
            // A stream that is out of step goes on.
            if (play_.step != Step::surplus || play_.kind == Fault_kind::closed ||
                play_.kind == Fault_kind::reset || play_.kind == Fault_kind::descriptor_limit) {
                hang_up(fd);
            }
        }
    }

    const char *path_;
    Play play_;
    Board &board_;
    int listener_;
    bool gone_ = false;
    std::vector<int> clients_;
};

} // namespace

FaultyAgent::FaultyAgent(const char *path, const Play &play)
{
    void *shared =
        mmap(nullptr, sizeof(Board), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared == MAP_FAILED) {
        give_up("mmap");
    }
    board_ = new (shared) Board;
    const int listener = listen_at(path);
    fflush(stdout);
    pid_ = fork();
    if (pid_ < 0) {
        give_up("fork");
    }
    if (pid_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        Server<Board>(path, play, *board_, listener).serve();
    }
    close(listener);
}

FaultyAgent::~FaultyAgent()
{
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
    munmap(board_, sizeof(Board));
}

void FaultyAgent::await_played() const
{
    if (!eventually([this] { return board_->played.load(); })) {
        give_up("the fault was not played");
    }
}

void FaultyAgent::come_back() const
{
    if (!board_->listening) {
        board_->wanted_back = true;
        if (!eventually([this] { return board_->listening.load(); })) {
            give_up("the Agent did not come back");
        }
    }
}

int FaultyAgent::requests() const
{
    return board_->requests;
}

int FaultyAgent::connections() const
{
    return board_->connections;
}

} // namespace ruk_test

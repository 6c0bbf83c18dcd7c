// A peer that answers as a test tells it.
#include "tests/support/scripted_agent.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <list>
#include <memory>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace ruk_test
{
namespace
{

// Wire offsets, typed here so that the tests don't lean on the record that they check.
constexpr uint32_t k_header = 56;
constexpr size_t k_at_version = 2;
constexpr size_t k_at_flags1 = 4;
constexpr size_t k_at_reserved = 6;
constexpr size_t k_at_ident = 8;
constexpr size_t k_at_status = 12;
constexpr size_t k_at_bsize1 = 16;
constexpr size_t k_at_bsize2 = 20;
constexpr size_t k_at_elements1 = 24;
constexpr size_t k_at_elements2 = 28;
constexpr size_t k_at_esize1 = 32;
constexpr size_t k_at_esize2 = 36;
constexpr size_t k_at_pointers = 40;

template <typename Number> Number number_at(const std::string &bytes, size_t offset)
{
    Number number;
    memcpy(&number, &bytes[offset], sizeof number);
    return number;
}

template <typename Number> void put(std::string &bytes, size_t offset, Number number)
{
    memcpy(&bytes[offset], &number, sizeof number);
}

size_t length_of(const std::string &header)
{
    const auto u = [&](size_t offset) { return number_at<uint32_t>(header, offset); };
    const uint32_t length1 = u(k_at_esize1) * u(k_at_elements1) + u(k_at_bsize1);
    const bool has_buffer2 = (static_cast<uint8_t>(header[k_at_flags1]) & 0x08) != 0;
    const uint32_t length2 = has_buffer2 ? u(k_at_esize2) * u(k_at_elements2) + u(k_at_bsize2) : 0;
    return uint32_t{k_header} + length1 + length2;
}

[[noreturn]] void give_up(const char *what)
{
    perror(what);
    abort();
}

int listen_on(const std::string &path)
{
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    unlink(path.c_str());
    if (bind(fd, reinterpret_cast<sockaddr *>(&address), sizeof address) != 0 ||
        listen(fd, 16) != 0) {
        give_up("scripted agent");
    }
    return fd;
}

} // namespace

uint16_t Request::opcode() const
{
    return number_at<uint16_t>(bytes, 0);
}

int32_t Request::ident() const
{
    return number_at<int32_t>(bytes, k_at_ident);
}

std::string Request::payload() const
{
    return bytes.size() > k_header ? bytes.substr(k_header) : "";
}

std::string request_bytes(uint16_t opcode, int32_t ident, uint8_t flags, const std::string &payload,
                          uint16_t version)
{
    std::string bytes(k_header, '\0');
    put(bytes, 0, opcode);
    put(bytes, k_at_version, version);
    put(bytes, k_at_flags1, flags);
    put(bytes, k_at_ident, ident);
    put(bytes, k_at_bsize1, static_cast<uint32_t>(payload.size()));
    return bytes + payload;
}

std::string without_undefined(const std::string &bytes)
{
    std::string defined = bytes;
    if (defined.size() >= k_header) {
        put(defined, k_at_reserved, uint16_t{0});
        put(defined, k_at_status, uint32_t{0});
        put(defined, k_at_pointers, uint64_t{0});
        put(defined, k_at_pointers + 8, uint64_t{0});
    }
    return defined;
}

std::string reply_to(const Request &request, int32_t status, const std::string &payload)
{
    std::string reply = request.bytes;
    put(reply, k_at_status, status);
    if (!payload.empty()) {
        reply.replace(k_header, payload.size(), payload);
    }
    return reply;
}

std::string u32(uint32_t value)
{
    std::string bytes(sizeof value, '\0');
    put(bytes, 0, value);
    return bytes;
}

std::string u64(uint64_t value)
{
    std::string bytes(sizeof value, '\0');
    put(bytes, 0, value);
    return bytes;
}

std::string hex(const std::string &bytes)
{
    std::string text;
    for (const char c : bytes) {
        char digits[3];
        snprintf(digits, sizeof digits, "%02x", static_cast<unsigned char>(c));
        text += digits;
    }
    return text;
}

struct ScriptedAgent::Connection {
    int fd;
    int number;
    std::string received;

    explicit Connection(int descriptor, int index) : fd(descriptor), number(index) {}
    ~Connection() { close(fd); }
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    void hang_up() const { shutdown(fd, SHUT_RDWR); }

    void answer(const std::string &reply) const
    {
        size_t sent = 0;
        while (sent < reply.size()) {
            const ssize_t n = send(fd, &reply[sent], reply.size() - sent, MSG_NOSIGNAL);
            if (n <= 0) {
                return;
            }
            sent += static_cast<size_t>(n);
        }
    }
};

ScriptedAgent::ScriptedAgent(Handler handler, const char *path)
    : handler_(std::move(handler)), path_(path), listener_(listen_on(path))
{
    if (pipe(stop_) != 0) {
        give_up("pipe");
    }
    thread_ = std::thread([this] { serve(); });
}

ScriptedAgent::~ScriptedAgent()
{
    (void)!write(stop_[1], "", 1);
    thread_.join();
    close(stop_[0]);
    close(stop_[1]);
    close(listener_);
    unlink(path_.c_str());
}

std::vector<Request> ScriptedAgent::requests() const
{
    const std::lock_guard lock(mutex_);
    return requests_;
}

std::vector<std::string> ScriptedAgent::defined_requests() const
{
    std::vector<std::string> defined;
    for (const Request &request : requests()) {
        defined.push_back(without_undefined(request.bytes));
    }
    return defined;
}

int ScriptedAgent::connections() const
{
    const std::lock_guard lock(mutex_);
    return accepted_;
}

void ScriptedAgent::serve()
{
    std::list<std::unique_ptr<Connection>> connections;
    for (;;) {
        std::vector<pollfd> watched{{stop_[0], POLLIN, 0}, {listener_, POLLIN, 0}};
        for (const auto &connection : connections) {
            watched.push_back({connection->fd, POLLIN, 0});
        }
        if (poll(watched.data(), watched.size(), -1) < 0) {
            continue;
        }
        if (watched[0].revents != 0) {
            return;
        }
        size_t index = 2;
        for (auto it = connections.begin(); it != connections.end(); ++index) {
            const bool ready = watched[index].revents != 0;
            if (ready) {
                char piece[65536];
                const ssize_t n = read((*it)->fd, piece, sizeof piece);
                if (n <= 0) {
                    it = connections.erase(it);
                    continue;
                }
                (*it)->received.append(piece, static_cast<size_t>(n));
                read_from(**it);
            }
            ++it;
        }
        if (watched[1].revents != 0) {
            const int fd = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
            const std::lock_guard lock(mutex_);
            connections.push_back(std::make_unique<Connection>(fd, accepted_++));
        }
    }
}

// Handles every whole request that has come.
void ScriptedAgent::read_from(Connection &connection)
{
    std::string &received = connection.received;
    while (received.size() >= k_header && received.size() >= length_of(received)) {
        const size_t length = length_of(received);
        const Request request{connection.number, received.substr(0, length)};
        received.erase(0, length);
        {
            const std::lock_guard lock(mutex_);
            requests_.push_back(request);
        }
        const std::optional<std::string> reply = handler_(request);
        if (!reply) {
            connection.hang_up();
            return;
        }
        connection.answer(*reply);
    }
}

ScriptedAgent::Handler replies(std::vector<Reply> script)
{
    return [script = std::move(script), next = size_t{0}](const Request &request) mutable {
        if (next == script.size()) {
            return std::optional(reply_to(request, 1));
        }
        const Reply &reply = script[next++];
        return std::optional(reply_to(request, reply.status, reply.payload));
    };
}

} // namespace ruk_test

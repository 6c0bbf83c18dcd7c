// A peer on a local socket that answers as a test tells it, to the byte, and keeps every request.
#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace ruk_test
{

constexpr const char *k_agent_path = "/var/tmp/brelovs_api_socket";
constexpr const char *k_command_path = "/var/tmp/ktrukcmd_api_socket";

// A request as it came over the socket.
struct Request {
    int connection; // counted from 0 in the order of accepting
    std::string bytes;

    uint16_t opcode() const;
    int32_t ident() const;
    std::string payload() const;
};

// The bytes of a request as the wire has them, pointers and status zero: what a test expects.
std::string request_bytes(uint16_t opcode, int32_t ident, uint8_t flags, const std::string &payload,
                          uint16_t version = 348);

// A request's bytes with what the client does not define, pointers, status and reserved bytes, set
// to zero.
std::string without_undefined(const std::string &bytes);

// The whole reply to a request: its own bytes with the status set and the payload's beginning
// replaced.
std::string reply_to(const Request &request, int32_t status, const std::string &payload = "");

// A number's bytes in host order.
std::string u32(uint32_t value);
std::string u64(uint64_t value);

// Bytes as hexadecimal digits, for messages.
std::string hex(const std::string &bytes);

class ScriptedAgent
{
public:
    // Gives the bytes to send back; nothing closes the connection.
    using Handler = std::function<std::optional<std::string>(const Request &)>;

    explicit ScriptedAgent(Handler handler, const char *path = k_agent_path);
    ~ScriptedAgent();
    ScriptedAgent(const ScriptedAgent &) = delete;
    ScriptedAgent &operator=(const ScriptedAgent &) = delete;

    // What has come so far.
    std::vector<Request> requests() const;

    // The same, each without what the client does not define.
    std::vector<std::string> defined_requests() const;

    // How many connections have been accepted.
    int connections() const;

private:
    struct Connection;
    void serve();
    void read_from(Connection &connection);

    Handler handler_;
    std::string path_;
    int listener_;
    int stop_[2];
    mutable std::mutex mutex_;
    std::vector<Request> requests_;
    int accepted_ = 0;
    std::thread thread_;
};

// A handler that gives each reply once, in order, and refuses what comes after the last with
// status 1.
struct Reply {
    int32_t status = 0;
    std::string payload = "";
};
ScriptedAgent::Handler replies(std::vector<Reply> script);

} // namespace ruk_test

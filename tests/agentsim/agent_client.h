// A client that speaks to the stand-in Agent byte by byte.
#pragma once

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include "tests/agentsim/records.h"

namespace ruk_test
{

constexpr int k_patience_seconds = 10;

// A folder that goes away with its contents.
class TemporaryFolder
{
public:
    TemporaryFolder()
    {
        char name[] = "/tmp/agentsim-test-XXXXXX";
        path_ = mkdtemp(name) != nullptr ? name : "";
    }
    ~TemporaryFolder()
    {
        if (!path_.empty()) {
            std::filesystem::remove_all(path_);
        }
    }
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;

    std::string file(const char *name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

// A connection to an Agent.  Everything waits for at most the patience.
class AgentClient
{
public:
    explicit AgentClient(const std::string &path)
        : fd_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        connected_ =
            connect(fd_, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
        const timeval patience{k_patience_seconds, 0};
        setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        setsockopt(fd_, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    }
    ~AgentClient() { disconnect(); }
    AgentClient(const AgentClient &) = delete;
    AgentClient &operator=(const AgentClient &) = delete;

    bool connected() const { return connected_; }
    int fd() const { return fd_; }

    void disconnect()
    {
        if (fd_ >= 0) {
            close(std::exchange(fd_, -1));
        }
    }

    // False when the Agent has closed the connection.
    bool send_bytes(std::string_view bytes) const
    {
        while (!bytes.empty()) {
            const ssize_t sent = send(fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
            if (sent <= 0) {
                return false;
            }
            bytes.remove_prefix(static_cast<size_t>(sent));
        }
        return true;
    }

    // Up to count bytes: fewer when the connection or the patience ends.
    std::string receive(size_t count) const
    {
        std::string bytes(count, '\0');
        size_t got = 0;
        while (got < count) {
            const ssize_t more = recv(fd_, bytes.data() + got, count - got, 0);
            if (more <= 0) {
                break;
            }
            got += static_cast<size_t>(more);
        }
        bytes.resize(got);
        return bytes;
    }

    // Whether the Agent closes the connection without a further byte.
    bool is_closed() const
    {
        char c;
        const ssize_t got = recv(fd_, &c, 1, 0);
        return got == 0 || (got < 0 && errno == ECONNRESET);
    }

    // One exchange over a record; -1000 when it fails.
    template <typename Record> int32_t call(uint16_t opcode, int32_t ident, Record &record) const
    {
        const AgentRequest request = request_of(opcode, ident, sizeof record);
        const size_t total = sizeof request + sizeof record;
        if (!send_bytes(bytes_of(request) + bytes_of(record))) {
            return -1000;
        }
        const std::string answer = receive(total);
        if (answer.size() != total) {
            return -1000;
        }
        record = record_of<Record>(answer, sizeof request);
        return record_of<AgentRequest>(answer).status;
    }

    LogInfo info() const
    {
        LogInfo info{};
        EXPECT_EQ(call(233, 0, info), 0);
        return info;
    }

    uint64_t set_log(int32_t operation, uint64_t value) const
    {
        EXPECT_EQ(call(236, operation, value), 0);
        return value;
    }

    // Every entry that the log holds, oldest first.
    std::vector<LogEntry> entries() const
    {
        LogEntry entry{};
        entry.entry = k_none;
        std::vector<LogEntry> all;
        while (call(234, 0, entry) == 0) {
            all.push_back(entry);
        }
        return all;
    }

private:
    int fd_;
    bool connected_ = false;
};

} // namespace ruk_test

// The stand-in Agent as a process of its own, and a client that speaks to it byte by byte.
// Waits poll with a deadline.
#pragma once

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <poll.h>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

#include "tests/agentsim/records.h"

namespace ruk_test
{

constexpr int k_patience_ms = 10'000;

// Whether condition holds before the patience ends.
inline bool eventually(const std::function<bool()> &condition)
{
    const auto deadline =
        std::chrono::steady_clock::now() + std::chrono::milliseconds(k_patience_ms);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

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

// A program that runs with pipes at its three standard descriptors.
class Process
{
public:
    explicit Process(std::vector<std::string> arguments)
    {
        int in[2] = {-1, -1};
        int out[2] = {-1, -1};
        int err[2] = {-1, -1};
        if (pipe2(in, O_CLOEXEC) != 0 || pipe2(out, O_CLOEXEC) != 0 || pipe2(err, O_CLOEXEC) != 0) {
            perror("pipe2");
            abort();
        }
        pid_ = fork();
        if (pid_ == 0) {
            dup2(in[0], 0);
            dup2(out[1], 1);
            dup2(err[1], 2);
            std::vector<char *> argv;
            for (std::string &argument : arguments) {
                argv.push_back(argument.data());
            }
            argv.push_back(nullptr);
            execv(argv[0], argv.data());
            _exit(127);
        }
        close(in[0]);
        close(out[1]);
        close(err[1]);
        in_ = in[1];
        out_ = out[0];
        err_ = err[0];
    }
    ~Process()
    {
        if (pid_ > 0) {
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
        close_input();
        close(out_);
        close(err_);
    }
    Process(const Process &) = delete;
    Process &operator=(const Process &) = delete;

    // Everything up to and with the next line feed on standard output, or what came until the
    // output or the patience ended.
    std::string line() { return read_until(out_, '\n'); }

    // Whatever is left on standard error once the program has ended.
    std::string errors() { return read_until(err_, '\0'); }

    void write_input(std::string_view text)
    {
        ASSERT_EQ(write(in_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }

    void close_input()
    {
        if (in_ >= 0) {
            close(std::exchange(in_, -1));
        }
    }

    void send_signal(int number) const { kill(pid_, number); }
    pid_t pid() const { return pid_; }

    // The exit status, minus the signal that ended it, or -1000 when it goes on running.
    int exit_status()
    {
        int status = 0;
        if (!eventually([&] { return waitpid(pid_, &status, WNOHANG) == pid_; })) {
            return -1000;
        }
        pid_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

private:
    static std::string read_until(int fd, char last)
    {
        std::string text;
        pollfd wait{fd, POLLIN, 0};
        char c = 0;
        while (poll(&wait, 1, k_patience_ms) > 0 && read(fd, &c, 1) == 1) {
            text += c;
            if (c == last) {
                break;
            }
        }
        return text;
    }

    pid_t pid_ = -1;
    int in_ = -1;
    int out_ = -1;
    int err_ = -1;
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
        const timeval patience{k_patience_ms / 1000, 0};
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

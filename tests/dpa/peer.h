// The far end of a connection, played by the test itself.  A reply may be put into the stream
// before the exchange that it answers, so that most tests need no second thread.
#pragma once

#include <cstdint>
#include <string>

namespace ruk_test
{

class Peer
{
public:
    explicit Peer(int fd) : fd_(fd) {}
    ~Peer() { hang_up(); }
    Peer(Peer &&other) noexcept : fd_(other.fd_) { other.fd_ = -1; }
    Peer &operator=(Peer &&) = delete;

    // Puts bytes into the stream; they must fit its buffer.
    void reply(const std::string &bytes) const;
    // Nothing more will come; what the client sends is still taken.
    void end_of_replies() const;
    void hang_up();

    // What has come and was not taken yet.
    std::string received() const;

private:
    int fd_;
};

// A connection with both its ends in the test.
class Pair
{
public:
    Pair();
    ~Pair();
    Pair(const Pair &) = delete;
    Pair &operator=(const Pair &) = delete;

    int client() const { return fds_[0]; }
    Peer &peer() { return peer_; }

private:
    int fds_[2];
    Peer peer_;
};

// A socket that listens on path and takes connections when the test says so.
class Listener
{
public:
    explicit Listener(const char *path);
    ~Listener();
    Listener(const Listener &) = delete;
    Listener &operator=(const Listener &) = delete;

    // The next connection; one must have been made.
    Peer accept() const;
    // Whether a connection waits to be taken.
    bool has_connection() const;

private:
    const char *path_;
    int fd_;
};

bool is_open(int fd);

// How many descriptors this process has.
int open_descriptors();

// Whether the test may use the path: /var/tmp is its own, or nobody answers there.
bool is_free(const char *path);

// Sets a word, such as a trace word, while it lives.
class WordSetting
{
public:
    WordSetting(uint32_t &word, uint32_t value) : word_(word), before_(word) { word = value; }
    ~WordSetting() { word_ = before_; }
    WordSetting(const WordSetting &) = delete;
    WordSetting &operator=(const WordSetting &) = delete;

private:
    uint32_t &word_;
    uint32_t before_;
};

} // namespace ruk_test

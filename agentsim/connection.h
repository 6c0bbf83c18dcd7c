// One client's connection as a state machine over bytes: requests in, answers out, in whatever
// pieces they come and go.  Knows no sockets.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <span>

#include "agentsim/log_service.h"

namespace agentsim
{

class Connection
{
public:
    // A request may be this long, header included; a longer one ends its connection.  Together
    // with the number of connections this bounds the memory that clients can take.
    static constexpr size_t k_request_limit = size_t{1} << 20;

    explicit Connection(LogService &service) : service_(service) {}
    ~Connection() { service_.forget(client_); }
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    // Whether it keeps the log held.
    bool holds() const { return client_.holds > 0; }

    // Where the next received bytes go.  Never empty unless an answer waits to be sent.
    std::span<std::byte> room();

    // Takes count bytes that were written to room().  False: the connection must be closed.
    bool received(size_t count);

    // What is to be sent next; empty when there is nothing.  No byte is taken while an answer
    // waits, so a client that does not read stops itself.
    std::span<const std::byte> answer() const;

    // Takes note of count bytes of answer() sent.  The next request may have come along with the
    // last one, so there may be a new answer now.  False: the connection must be closed.
    bool sent(size_t count);

private:
    bool advance();
    bool make_room_for(size_t total);
    std::byte *data() { return large_ ? large_.get() : small_.data(); }
    const std::byte *data() const { return large_ ? large_.get() : small_.data(); }

    LogService &service_;
    Client client_;
    size_t filled_ = 0; // bytes received
    size_t answer_ = 0; // length of the answer that waits, 0 when none does
    size_t sent_ = 0;   // of that answer
    size_t large_size_ = 0;
    std::unique_ptr<std::byte[]> large_; // in place of small_ for one request that needs it
    std::array<std::byte, 4096> small_;
};

} // namespace agentsim

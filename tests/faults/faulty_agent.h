// An Agent in a process of its own that does one thing wrong, once.
#pragma once

#include <cstdint>
#include <string>
#include <sys/types.h>

namespace ruk_test
{

// Where in an exchange it happens.  From nothing on: how much of the reply has come by then.
enum class Step {
    connect, // the connection is gone, and this is the attempt to make another
    send,
    nothing,
    in_header,
    at_status,
    header_only,
    in_payload,
    one_short,
    surplus, // a whole reply and five bytes more
};

enum class Fault_kind {
    closed,
    reset, // closed with bytes unread
    shut_one_way,
    stalled, // for a while, then closed
    dribbled,
    garbage,
    claims_less, // the header speaks of fewer bytes
    claims_more,
    descriptor_closed, // by somebody else in the client's process
    descriptor_reused,
    descriptor_limit,
    no_memory,
};

struct Play {
    int request; // that it happens to, counted from 0
    Step step;
    Fault_kind kind;
};

// It serves the log of small_log.h.  Garbage is the letter Z.
class FaultyAgent
{
public:
    FaultyAgent(const char *path, const Play &play);
    ~FaultyAgent();
    FaultyAgent(const FaultyAgent &) = delete;
    FaultyAgent &operator=(const FaultyAgent &) = delete;

    // Waits until it has done its thing.
    void await_played() const;
    // Waits until it listens again, if it had gone.
    void come_back() const;

    int requests() const;
    int connections() const;

private:
    struct Board;
    Board *board_; // shared with the process
    pid_t pid_;
};

} // namespace ruk_test

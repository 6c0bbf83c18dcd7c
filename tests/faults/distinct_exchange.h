// Exchanges that can't be taken for each other, for threads that share a connection.
#pragma once

#include "ruk/command_service.h"

#include <atomic>
#include <cstring>
#include <mutex>
#include <string>

namespace ruk_test
{

// kt_dpa_call_indirect1 and its like.
using CallForm = int32_t (*)(uint16_t, int32_t, uint8_t, void *, uint32_t, const uint32_t *);

// A request of its own for each exchange, and whether a reply is the answer to it.
struct DistinctExchange {
    uint16_t opcode;
    int32_t ident;
    std::string payload;

    DistinctExchange(int thread, int round)
        : opcode(static_cast<uint16_t>(1000 + thread)), ident(1000000 * thread + round),
          payload(round % 50 == 0 ? 5000 : 6 + static_cast<size_t>(round) % 70,
                  static_cast<char>('a' + (thread + round) % 20))
    {
    }

    int32_t make(CallForm call, std::string &buffer) const
    {
        return call(opcode, ident, 0x01, buffer.data(), static_cast<uint32_t>(buffer.size()),
                    nullptr);
    }

    bool is_answered_by(const std::string &reply) const
    {
        std::string expected(payload.size(), static_cast<char>(payload[0] + 1));
        memcpy(&expected[0], &opcode, sizeof opcode);
        memcpy(&expected[2], &ident, sizeof ident);
        return reply == expected;
    }
};

// What became of many exchanges.
struct Tally {
    std::atomic<int> right{0};
    std::atomic<int> failed{0};
    std::atomic<int> wrong_status{0};
    std::atomic<int> wrong_reply{0};

    void add(const DistinctExchange &exchange, int32_t status, const std::string &buffer)
    {
        if (status == 1) {
            ++failed;
            wrong_reply += buffer == exchange.payload ? 0 : 1;
        } else if (status == 0) {
            ++(exchange.is_answered_by(buffer) ? right : wrong_reply);
        } else {
            ++wrong_status;
        }
    }
};

// The command service's client has no lock; its callers see to it that they take turns.
inline std::mutex turns;

inline int32_t call_service_in_turn(uint16_t opcode, int32_t ident, uint8_t flags, void *buffer,
                                    uint32_t size, const uint32_t *count)
{
    const std::lock_guard turn(turns);
    return kt_rukcmd_call_indirect1(opcode, ident, flags, buffer, size, count);
}

} // namespace ruk_test

// The framing of requests.  A request is answered in its own bytes, so the answer has its length
// whatever the lengths say, and a connection never holds more than one request.
#include "agentsim/connection.h"

#include <cstring>
#include <new>

namespace agentsim
{

namespace
{

constexpr size_t k_header = sizeof(AgentRequest);
static_assert(sizeof(size_t) > sizeof(uint32_t), "the lengths below add up without wrapping");

struct Lengths {
    uint32_t buffer1;
    uint32_t buffer2;

    // Wider than the sum that clients make: a sum that wraps there is too large here.
    size_t total() const { return k_header + buffer1 + buffer2; }
};

// In 32-bit arithmetic that wraps, as clients count.
Lengths lengths_of(const AgentRequest &request)
{
    const bool has_buffer2 = (request.flags1 & AGENT_FLAG_BUF2) != 0;
    return {.buffer1 = request.esize1 * request.elements1 + request.bsize1,
            .buffer2 = has_buffer2 ? request.esize2 * request.elements2 + request.bsize2 : 0};
}

} // namespace

std::span<std::byte> Connection::room()
{
    if (answer_ != 0) {
        return {};
    }
    const size_t size = large_ ? large_size_ : small_.size();
    return {data() + filled_, size - filled_};
}

bool Connection::received(size_t count)
{
    filled_ += count;
    return advance();
}

std::span<const std::byte> Connection::answer() const
{
    return {data() + sent_, answer_ - sent_};
}

bool Connection::sent(size_t count)
{
    sent_ += count;
    if (sent_ < answer_) {
        return true;
    }
    filled_ -= answer_;
    if (large_) {
        // Its room was the request's length, so nothing of a further request is in it.
        large_.reset();
    } else {
        memmove(small_.data(), small_.data() + answer_, filled_);
    }
    answer_ = 0;
    sent_ = 0;
    return advance();
}

// Answers the request at the start of the buffer once it is there whole.
bool Connection::advance()
{
    if (filled_ < k_header) {
        return true;
    }
    AgentRequest request;
    memcpy(&request, data(), k_header);
    const Lengths lengths = lengths_of(request);
    const size_t total = lengths.total();
    if (total > k_request_limit || !make_room_for(total)) {
        return false;
    }
    if (filled_ < total) {
        return true;
    }
    const int32_t status = service_.answer(client_, request, {data() + k_header, lengths.buffer1});
    memcpy(data() + offsetof(AgentRequest, status), &status, sizeof status);
    answer_ = total;
    return true;
}

bool Connection::make_room_for(size_t total)
{
    if (large_ || total <= small_.size()) {
        return true;
    }
    large_.reset(new (std::nothrow) std::byte[total]);
    large_size_ = total;
    if (!large_) {
        return false;
    }
    memcpy(large_.get(), small_.data(), filled_);
    return true;
}

} // namespace agentsim

// One exchange of an AgentRequest over a stream socket.
//
// Request and reply are blocks of the same length: the header, buffer 1, buffer 2.  The client
// takes every length from its own record and nothing but status and buffers from the reply.
#include "dpa/wire/exchange.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <span>
#include <sys/socket.h>

#include "infra/utils/kttrace.h"

namespace wire
{
namespace
{

constexpr uint32_t k_local_reply_size = 4096;
constexpr uint32_t k_status_offset = offsetof(AgentRequest, status);
// The reply's buffers follow a whole record, whatever header length was sent.
constexpr uint32_t k_payload_offset = sizeof(AgentRequest);

struct FreeBlock {
    void operator()(std::byte *block) const { free(block); }
};
using Block = std::unique_ptr<std::byte[], FreeBlock>;
using Bytes = std::span<std::byte>;

Block allocate(uint32_t size)
{
    return Block(static_cast<std::byte *>(malloc(size)));
}

// The first length bytes of block, or as many as there are, cut off it.  Lengths that wrapped
// claim more bytes than the block has.
Bytes take(Bytes &block, uint32_t length)
{
    const Bytes taken = block.first(std::min<size_t>(length, block.size()));
    block = block.subspan(taken.size());
    return taken;
}

// Fills target from source and sets to zero what source has no bytes for.
inline void fill(Bytes target, const void *source, size_t source_length)
{
    const size_t copied = source == nullptr ? 0 : std::min(source_length, target.size());
    if (copied > 0) {
        memcpy(target.data(), source, copied);
    }
    if (copied < target.size()) {
        memset(&target[copied], 0, target.size() - copied);
    }
}

void assemble(Bytes block, const AgentRequest &request, const Lengths &lengths)
{
    fill(take(block, lengths.header), &request, sizeof request);
    fill(take(block, lengths.buffer1), request.ptr1, lengths.buffer1);
    fill(take(block, lengths.buffer2), request.ptr2, lengths.buffer2);
}

void announce_rest(const Client &client, size_t total, size_t rest)
{
    kt_trace(*client.trace, KT_LEVEL_DEBUG, "%s: Sent (%d) bytes, not (%d), sending (%d) more\n",
             client.caller, static_cast<int32_t>(total - rest), static_cast<int32_t>(total),
             static_cast<int32_t>(rest));
}

bool send_block(const Client &client, int32_t fd, Bytes block)
{
    const size_t total = block.size();
    while (!block.empty()) {
        if (kt_traces(*client.trace, KT_LEVEL_DEBUG)) {
            announce_rest(client, total, block.size());
        }
        // MSG_NOSIGNAL: a peer that has gone is a failed exchange, not the end of the process.
        const ssize_t written = send(fd, block.data(), block.size(), MSG_NOSIGNAL);
        if (written <= 0) {
            kt_trace(*client.trace, KT_LEVEL_DEBUG, "%s: EOF writing more data %d\n", client.caller,
                     static_cast<int>(written));
            return false;
        }
        block = block.subspan(static_cast<size_t>(written));
    }
    return true;
}

bool receive_block(const Client &client, int32_t fd, Bytes block)
{
    while (!block.empty()) {
        const ssize_t received = recv(fd, block.data(), block.size(), 0);
        if (received <= 0) {
            kt_trace(*client.trace, KT_LEVEL_DEBUG, "%s: EOF reading bytes back %d\n",
                     client.caller, static_cast<int>(received));
            return false;
        }
        block = block.subspan(static_cast<size_t>(received));
    }
    return true;
}

void copy_out(void *buffer, Bytes payload)
{
    if (buffer != nullptr && !payload.empty()) {
        memcpy(buffer, payload.data(), payload.size());
    }
}

// False when the lengths wrapped to a reply that holds no status.
bool copy_back(AgentRequest &request, Bytes reply, const Lengths &lengths)
{
    if (reply.size() < k_status_offset + sizeof request.status) {
        return false;
    }
    memcpy(&request.status, &reply[k_status_offset], sizeof request.status);
    take(reply, k_payload_offset);
    copy_out(request.ptr1, take(reply, lengths.buffer1));
    copy_out(request.ptr2, take(reply, lengths.buffer2));
    return true;
}

// Sends the request and puts the answer in place.  A transfer that fails closes the connection;
// blocks that can't be allocated leave it open, since nothing was sent.
bool transfer(const Client &client, int32_t fd, AgentRequest &request, uint32_t header_length)
{
    const Lengths lengths = lengths_of(request, header_length);
    std::byte local_reply[k_local_reply_size];
    Block large_reply;
    Bytes reply(local_reply, std::min(lengths.total, k_local_reply_size));
    if (lengths.total > k_local_reply_size) {
        large_reply = allocate(lengths.total);
        if (large_reply == nullptr) {
            kt_trace(*client.trace, client.allocation_level,
                     "%s: Failed allocating return buffer\n", client.caller);
            return false;
        }
        reply = Bytes(large_reply.get(), lengths.total);
    }
    const Block block = allocate(lengths.total);
    if (block == nullptr) {
        kt_trace(*client.trace, client.allocation_level, "%s: Failed allocating data\n",
                 client.caller);
        return false;
    }
    const Bytes data(block.get(), lengths.total);
    assemble(data, request, lengths);
    if (client.announces_total) {
        kt_trace(*client.trace, KT_LEVEL_DEBUG, "%s: Sending (%d) bytes across\n", client.caller,
                 static_cast<int>(lengths.total));
    }
    if (send_block(client, fd, data) && receive_block(client, fd, reply) &&
        copy_back(request, reply, lengths)) {
        return true;
    }
    // Kept: the client's own descriptor is closed, not the one that the caller passed.
    client.descriptor.close_and_reset();
    return false;
}

} // namespace

Lengths lengths_of(const AgentRequest &request, uint32_t header_length)
{
    const uint32_t length1 = request.esize1 * request.elements1 + request.bsize1;
    const uint32_t length2 = (request.flags1 & AGENT_FLAG_BUF2) != 0
                                 ? request.esize2 * request.elements2 + request.bsize2
                                 : 0;
    return {header_length, length1, length2, header_length + length1 + length2};
}

bool has_request(const Client &client, const AgentRequest *request)
{
    if (request == nullptr) {
        kt_trace(*client.trace, KT_LEVEL_DEBUG, "%s: Invalid args passed \n", client.caller);
    }
    return request != nullptr;
}

int32_t exchange(const Client &client, int32_t fd, AgentRequest &request, uint32_t header_length)
{
    if (fd < 0) {
        fd = client.open_connection();
    }
    if (fd >= 0 && transfer(client, fd, request, header_length)) {
        return 0;
    }
    request.status = AGENT_STATUS_TRANSPORT_FAILED;
    return -1;
}

} // namespace wire

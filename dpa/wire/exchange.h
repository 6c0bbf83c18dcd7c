// One exchange of an AgentRequest over a stream socket: assemble, send, receive, copy back.
// Both socket clients are this routine; what differs between them is a row of data.
#pragma once

#include "dpa/wire/descriptor.h"
#include "ruk/agent.h"

namespace wire
{

// What a client hands in.
struct Client {
    const char *caller;           // the exported function that messages name
    const uint32_t *trace;        // its trace word
    uint32_t allocation_level;    // bit that lets failed allocations be reported
    bool announces_total;         // reports the number of bytes before it sends them
    Descriptor descriptor;        // the connection, closed and reset by a failed transfer
    int32_t (*open_connection)(); // opens the connection: a descriptor or a negative number
};

// Lengths of the parts of one exchange, in the wrapping 32-bit arithmetic of the protocol.
struct Lengths {
    uint32_t header;
    uint32_t buffer1;
    uint32_t buffer2;
    uint32_t total;
};

Lengths lengths_of(const AgentRequest &request, uint32_t header_length);

// False, after a message, when the caller passed none.
bool has_request(const Client &client, const AgentRequest *request);

// Returns 0 after a whole exchange; -1 with request.status 1 otherwise.  A negative fd opens the
// connection first.
int32_t exchange(const Client &client, int32_t fd, AgentRequest &request, uint32_t header_length);

} // namespace wire

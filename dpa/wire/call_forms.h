// The three call forms, written once for both socket clients: fill a record, run the client's
// exchange, report a failure, hand back the status.
#pragma once

#include "dpa/wire/descriptor.h"
#include "ruk/agent.h"

namespace wire
{

// One form of one client: what its messages say.  The numbers are part of the messages.
struct Form {
    const char *function;   // the form's exported name
    int32_t no_count1_line; // count1 missing in counted mode; 0 for the simple form
    int32_t no_count2_line; // count2 missing
    int32_t failure_line;   // the exchange failed
};

// One client: what its forms share.
struct Forms {
    const char *path;              // the path that failure lines begin with
    const uint32_t *trace;         // trace word
    bool announces_call;           // reports each call before it is made
    uint32_t simple_failure_level; // bit that lets the simple form report a failed exchange
    uint16_t version;              // of every request
    Descriptor descriptor;         // the connection
    int32_t (*socket_api)(int32_t fd, AgentRequest *request, uint32_t header_length);
    Form simple;
    Form indirect1;
    Form indirect2;
};

// What the caller of a form passes.
struct Call {
    uint16_t opcode;
    int32_t ident;
    uint8_t flags;
};

// A buffer of a call: size bytes and, in counted mode, *count more.
struct Buffer {
    void *start;
    uint32_t size;
    const uint32_t *count;
};

int32_t call_simple(const Forms &forms, const Call &call, void *buffer, uint32_t size);
int32_t call_indirect1(const Forms &forms, const Call &call, const Buffer &buffer);
int32_t call_indirect2(const Forms &forms, const Call &call, const Buffer &buffer1,
                       const Buffer &buffer2);

} // namespace wire

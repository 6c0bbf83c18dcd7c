/*
 * The Agent's socket: the request record, one exchange, and the calls that are built on it.
 *
 * An exchange sends one AgentRequest and up to two buffers and gets exactly as many bytes back:
 * the same record with its status filled in, and the same buffers with their contents replaced.
 *   length1 = esize1 * elements1 + bsize1
 *   length2 = esize2 * elements2 + bsize2 when flags1 has AGENT_FLAG_BUF2, else 0
 *   total   = header length + length1 + length2
 * All in unsigned 32-bit arithmetic, where a sum that overflows wraps.  However the lengths wrap,
 * no byte is read or written outside the record, the caller's buffers and the blocks in between.
 *
 * A call returns the status: 0 success, 1 the exchange failed, 2 the arguments were refused and
 * nothing was sent, anything else the service's own answer.
 *
 * Exchanges may be made from several threads: apimutex keeps them apart.  The functions that open
 * and close take no lock; they are for start-up and shutdown.
 */
#ifndef RUK_AGENT_H
#define RUK_AGENT_H

#include "ruk/thread.h"
#include "ruk/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define KT_AGENT_SOCKET_PATH "/var/tmp/brelovs_api_socket"

enum agent_request_constants {
    /* The version field of every request to the Agent. */
    KT_AGENT_VERSION = 348,
    /* flags1: the caller gives element counts, and each element is one byte. */
    AGENT_FLAG_COUNTED = 0x04,
    /* flags1: buffer 2 takes part; without it buffer 2 is neither sent nor filled. */
    AGENT_FLAG_BUF2 = 0x08
};

/* Results of a call, where they are not the service's own. */
enum agent_status {
    AGENT_STATUS_OK = 0,
    AGENT_STATUS_TRANSPORT_FAILED = 1,
    AGENT_STATUS_REFUSED = 2,
    /* The Agent's answer to the version probe when the versions differ. */
    AGENT_STATUS_VERSION_MISMATCH = 6
};

/*
 * The header of both directions.  ptr1 and ptr2 travel as they are and mean nothing to the
 * receiver.  ptr1 and ptr2 may be null: bytes that the lengths claim then go out as zeros, and
 * what comes back for them is dropped.
 */
typedef struct AgentRequest {
    uint16_t opcode;
    uint16_t version;
    uint8_t flags1;
    uint8_t flags2;
    uint16_t reserved;
    int32_t ident;
    int32_t status;
    uint32_t bsize1;
    uint32_t bsize2;
    uint32_t elements1;
    uint32_t elements2;
    uint32_t esize1;
    uint32_t esize2;
    void *ptr1;
    void *ptr2;
} AgentRequest;

static_assert(sizeof(AgentRequest) == 56, "the header's length on the wire");
static_assert(offsetof(AgentRequest, opcode) == 0, "wire offset");
static_assert(offsetof(AgentRequest, version) == 2, "wire offset");
static_assert(offsetof(AgentRequest, flags1) == 4, "wire offset");
static_assert(offsetof(AgentRequest, flags2) == 5, "wire offset");
static_assert(offsetof(AgentRequest, reserved) == 6, "wire offset");
static_assert(offsetof(AgentRequest, ident) == 8, "wire offset");
static_assert(offsetof(AgentRequest, status) == 12, "wire offset");
static_assert(offsetof(AgentRequest, bsize1) == 16, "wire offset");
static_assert(offsetof(AgentRequest, bsize2) == 20, "wire offset");
static_assert(offsetof(AgentRequest, elements1) == 24, "wire offset");
static_assert(offsetof(AgentRequest, elements2) == 28, "wire offset");
static_assert(offsetof(AgentRequest, esize1) == 32, "wire offset");
static_assert(offsetof(AgentRequest, esize2) == 36, "wire offset");
static_assert(offsetof(AgentRequest, ptr1) == 40, "wire offset");
static_assert(offsetof(AgentRequest, ptr2) == 48, "wire offset");

/* The connection to the Agent; -1 while it is closed. */
RUK_EXPORT extern int32_t kt_dpa_call_fd;

/* Keeps exchanges apart; null until the first connection is open. */
RUK_EXPORT extern ktdpa_mutex *apimutex;

/* Traces: 0x01 failures to open and close, 0x08 record dump, 0x10 transfers and their failures. */
RUK_EXPORT extern uint32_t kt_debug_print_brel_dpa_api;

/* Traces of the calls: 0x10. */
RUK_EXPORT extern uint32_t kt_debug_print_ktdpa_indirect;

/* Opens the connection.  Returns 0, or -1 when the Agent can't be reached. */
RUK_EXPORT int32_t kt_dpa_api_init(void);

/*
 * Closes the connection and destroys apimutex.  Returns 0.  A mutex that the first exchange of the
 * process made, by opening the connection itself, can't be destroyed: that is reported, and the
 * mutex is left behind.  Programs avoid it by calling kt_dpa_api_init first.
 */
RUK_EXPORT int32_t kt_dpa_api_exit(void);

/*
 * Connects to KT_AGENT_SOCKET_PATH, stores the descriptor in kt_dpa_call_fd and creates apimutex
 * when there is none.  A connection that is open already is forgotten.  Returns the
 * descriptor, or -1 with kt_dpa_call_fd -1.
 */
RUK_EXPORT int32_t kt_platform_open(void);

/* Closes kt_dpa_call_fd, whatever fd is, and destroys apimutex.  Returns 0. */
RUK_EXPORT int32_t kt_platform_close(int32_t fd);

/*
 * One exchange of request over fd (negative: open the connection anew; kt_dpa_call_fd: the
 * connection as it is when the exchange's turn comes), sending the first
 * header_length bytes of the record, 56 from every caller.  Returns 0 and the service's answer
 * in request->status and in the caller's buffers, or -1 with request->status 1; after a failed
 * transfer kt_dpa_call_fd is closed and -1, and the next exchange connects anew.  A peer that
 * has gone is a failed exchange, never a signal.  A null request gives -1.
 */
RUK_EXPORT int32_t kt_dpa_socket_api(int32_t fd, AgentRequest *request, uint32_t header_length);

/* Call with one buffer of bsize bytes. */
RUK_EXPORT int32_t kt_dpa_call_indirect_simple(uint16_t opcode, int32_t ident, uint8_t flags,
                                               void *buf, uint32_t bsize);

/*
 * Call with one buffer of bsize bytes, followed by *count more with AGENT_FLAG_COUNTED.  count is
 * read with that flag only, and must then not be null (status 2).
 */
RUK_EXPORT int32_t kt_dpa_call_indirect1(uint16_t opcode, int32_t ident, uint8_t flags, void *buf,
                                         uint32_t bsize, const uint32_t *count);

/*
 * Call with two buffers, each as in kt_dpa_call_indirect1.  Buffer 2 is exchanged only when the
 * caller passes AGENT_FLAG_BUF2.
 */
RUK_EXPORT int32_t kt_dpa_call_indirect2(uint16_t opcode, int32_t ident, uint8_t flags, void *buf1,
                                         uint32_t bsize1, const uint32_t *count1, void *buf2,
                                         uint32_t bsize2, const uint32_t *count2);

/* Prints title and the record's fields while bit 0x08 of kt_debug_print_brel_dpa_api is set. */
RUK_EXPORT void kt_dpa_api_print_di(const char *title, const AgentRequest *request);

#ifdef __cplusplus
}
#endif

#endif /* RUK_AGENT_H */

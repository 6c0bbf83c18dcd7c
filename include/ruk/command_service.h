/*
 * The client of the data-path module's command service: the same exchanges as the Agent's
 * (ruk/agent.h), on a socket of their own.
 *
 * The first exchange opens the connection.  There is no lock: a program that calls from several
 * threads makes one call at a time.  Statuses are those of ruk/agent.h.
 */
#ifndef RUK_COMMAND_SERVICE_H
#define RUK_COMMAND_SERVICE_H

#include "ruk/agent.h"
#include "ruk/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define KT_COMMAND_SOCKET_PATH "/var/tmp/ktrukcmd_api_socket"

enum {
    /* The version field of every request to the command service. */
    KT_COMMAND_VERSION = 2
};

/*
 * Traces: 0x01 failures to open, to allocate and of the simple form; 0x10 transfers, refused
 * arguments and failures of the other forms.
 */
RUK_EXPORT extern uint32_t kt_debug_print_ktrukcmd_indirect;

/*
 * Connects to KT_COMMAND_SOCKET_PATH.  Returns the descriptor, or -1.  A connection that is open
 * already is forgotten, not closed.
 */
RUK_EXPORT int32_t dpa_platform_open(void);

/* Closes the connection if there is one.  Returns 0. */
RUK_EXPORT int32_t dpa_platform_close(void);

/*
 * Closes the connection but keeps its number: the next call fails once, with status 1, and the
 * one after it connects anew.  By then the number may be another descriptor of the process, which
 * the failing call closes: call again before opening anything else.
 */
RUK_EXPORT void kt_rukcmd_api_exit(void);

/* One exchange; as kt_dpa_socket_api, without the lock. */
RUK_EXPORT int32_t kt_rukcmd_socket_api(int32_t fd, AgentRequest *request, uint32_t header_length);

/* As kt_dpa_call_indirect_simple, kt_dpa_call_indirect1 and kt_dpa_call_indirect2. */
RUK_EXPORT int32_t kt_rukcmd_call_indirect_simple(uint16_t opcode, int32_t ident, uint8_t flags,
                                                  void *buf, uint32_t bsize);
RUK_EXPORT int32_t kt_rukcmd_call_indirect1(uint16_t opcode, int32_t ident, uint8_t flags,
                                            void *buf, uint32_t bsize, const uint32_t *count);
RUK_EXPORT int32_t kt_rukcmd_call_indirect2(uint16_t opcode, int32_t ident, uint8_t flags,
                                            void *buf1, uint32_t bsize1, const uint32_t *count1,
                                            void *buf2, uint32_t bsize2, const uint32_t *count2);

#ifdef __cplusplus
}
#endif

#endif /* RUK_COMMAND_SERVICE_H */

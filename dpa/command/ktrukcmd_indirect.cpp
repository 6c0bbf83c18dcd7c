// The client of the command service: its connection and its call forms.
#include "ruk/command_service.h"

#include <cerrno>
#include <cstring>
#include <sys/socket.h>

#include "dpa/wire/call_forms.h"
#include "dpa/wire/exchange.h"
#include "dpa/wire/local_socket.h"
#include "infra/utils/kttrace.h"

uint32_t kt_debug_print_ktrukcmd_indirect = KT_TRACE_DEFAULT;

namespace
{

int32_t kt_rukcmd_call_fd = -1;

constexpr wire::Descriptor k_connection(kt_rukcmd_call_fd);

constexpr wire::Client k_command_service{
    .caller = "kt_rukcmd_socket_api",
    .trace = &kt_debug_print_ktrukcmd_indirect,
    .allocation_level = KT_LEVEL_ERROR,
    .announces_total = true,
    .descriptor = k_connection,
    .open_connection = dpa_platform_open,
};

constexpr wire::Forms k_forms{
    .path = "dpa/command/ktrukcmd_indirect",
    .trace = &kt_debug_print_ktrukcmd_indirect,
    .announces_call = false,
    .simple_failure_level = KT_LEVEL_ERROR,
    .version = KT_COMMAND_VERSION,
    .descriptor = k_connection,
    .socket_api = kt_rukcmd_socket_api,
    .simple = {"kt_rukcmd_call_indirect_simple", 0, 0, 294},
    .indirect1 = {"kt_rukcmd_call_indirect1", 321, 0, 339},
    .indirect2 = {"kt_rukcmd_call_indirect2", 368, 382, 395},
};

} // namespace

int32_t dpa_platform_open(void)
{
    // A number that is still there is not closed: after kt_rukcmd_api_exit it may be another
    // descriptor's.
    const int32_t fd = socket(AF_UNIX, SOCK_STREAM, 0);
    k_connection.set(fd);
    if (fd < 0) {
        kt_trace(kt_debug_print_ktrukcmd_indirect, KT_LEVEL_ERROR,
                 "%s: Error opening local socket\n", __func__);
        return -1;
    }
    if (wire::connect_local(fd, KT_COMMAND_SOCKET_PATH) != 0) {
        const int error = errno;
        kt_trace(kt_debug_print_ktrukcmd_indirect, KT_LEVEL_ERROR,
                 "%s: Failed connect local socket err: %d - %s\n", __func__, error,
                 strerror(error));
        k_connection.close_and_reset();
        return -1;
    }
    return fd;
}

int32_t dpa_platform_close(void)
{
    k_connection.close_if_open();
    return 0;
}

void kt_rukcmd_api_exit(void)
{
    // Kept: the number stays.  The next exchange fails on it and resets it.
    if (k_connection.get() != -1) {
        close(k_connection.get());
    }
}

int32_t kt_rukcmd_socket_api(int32_t fd, AgentRequest *request, uint32_t header_length)
{
    if (!wire::has_request(k_command_service, request)) {
        return -1;
    }
    return wire::exchange(k_command_service, fd, *request, header_length);
}

int32_t kt_rukcmd_call_indirect_simple(uint16_t opcode, int32_t ident, uint8_t flags, void *buf,
                                       uint32_t bsize)
{
    return wire::call_simple(k_forms, {opcode, ident, flags}, buf, bsize);
}

int32_t kt_rukcmd_call_indirect1(uint16_t opcode, int32_t ident, uint8_t flags, void *buf,
                                 uint32_t bsize, const uint32_t *count)
{
    return wire::call_indirect1(k_forms, {opcode, ident, flags}, {buf, bsize, count});
}

int32_t kt_rukcmd_call_indirect2(uint16_t opcode, int32_t ident, uint8_t flags, void *buf1,
                                 uint32_t bsize1, const uint32_t *count1, void *buf2,
                                 uint32_t bsize2, const uint32_t *count2)
{
    return wire::call_indirect2(k_forms, {opcode, ident, flags}, {buf1, bsize1, count1},
                                {buf2, bsize2, count2});
}

// The connection to the Agent: its descriptor, the lock that keeps exchanges apart, and one
// exchange over it.
#include "ruk/agent.h"

#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <sys/stat.h>

#include "dpa/wire/exchange.h"
#include "dpa/wire/local_socket.h"
#include "infra/utils/kttrace.h"

int32_t kt_dpa_call_fd = -1;
ktdpa_mutex *apimutex = nullptr;
uint32_t kt_debug_print_brel_dpa_api = KT_TRACE_DEFAULT;

namespace
{

constexpr mode_t k_socket_mode = S_IRWXU;

constexpr wire::Descriptor k_connection(kt_dpa_call_fd);

constexpr wire::Client k_agent{
    .caller = "kt_dpa_socket_api",
    .trace = &kt_debug_print_brel_dpa_api,
    .allocation_level = KT_LEVEL_DEBUG,
    .announces_total = false,
    .descriptor = k_connection,
    .open_connection = kt_platform_open,
};

int32_t fail_open(const char *what)
{
    kt_trace(kt_debug_print_brel_dpa_api, KT_LEVEL_ERROR, "%s: %s\n", "kt_platform_open", what);
    k_connection.close_if_open();
    return -1;
}

int32_t fail_open(const char *what, int error)
{
    kt_trace(kt_debug_print_brel_dpa_api, KT_LEVEL_ERROR, "%s: %s err: %d - %s\n",
             "kt_platform_open", what, error, strerror(error));
    k_connection.close_if_open();
    return -1;
}

} // namespace

int32_t kt_dpa_api_init(void)
{
    const int32_t fd = kt_platform_open();
    k_connection.set(fd);
    return fd != -1 ? 0 : -1;
}

int32_t kt_dpa_api_exit(void)
{
    return kt_platform_close(k_connection.get());
}

int32_t kt_platform_open(void)
{
    const int32_t fd = socket(AF_UNIX, SOCK_STREAM, 0);
    k_connection.set(fd);
    if (fd < 0) {
        return fail_open("Error opening local socket");
    }
    kt_trace(kt_debug_print_brel_dpa_api, KT_LEVEL_DEBUG, "%s: Connecting to path (%s)\n",
             "kt_platform_open", KT_AGENT_SOCKET_PATH);
    if (wire::connect_local(fd, KT_AGENT_SOCKET_PATH) != 0) {
        // Kept: the message says binding although nothing is bound.
        return fail_open("Failed binding local socket", errno);
    }
    if (fchmod(fd, k_socket_mode) != 0) {
        return fail_open("Failed fchmod local socket", errno);
    }
    if (apimutex == nullptr && ktdpa_mutex_create(&apimutex) != 0) {
        return fail_open("Failed creating mutex");
    }
    return fd;
}

int32_t kt_platform_close(int32_t)
{
    if (ktdpa_mutex_destroy(apimutex) != 0) {
        kt_trace(kt_debug_print_brel_dpa_api, KT_LEVEL_ERROR, "%s: Error destroying mutex\n",
                 "kt_platform_close");
    }
    apimutex = nullptr;
    k_connection.close_if_open();
    return 0;
}

int32_t kt_dpa_socket_api(int32_t fd, AgentRequest *request, uint32_t header_length)
{
    if (!wire::has_request(k_agent, request)) {
        return -1;
    }
    const bool is_connection = fd == k_connection.get();
    if (apimutex != nullptr) {
        ktdpa_mutex_lock(apimutex);
    }
    if (is_connection) {
        // Another thread may have lost or replaced the connection while this one waited; the number
        // of then may be any other descriptor of the process by now.
        fd = k_connection.get();
    }
    if (fd < 0) {
        // A caller that asks for a new connection while there is one: without this the old one's
        // descriptor would be forgotten.
        k_connection.close_if_open();
    }
    const int32_t result = wire::exchange(k_agent, fd, *request, header_length);
    // Kept: asked anew.  The first exchange of a process that opens the connection itself unlocks
    // the mutex that the opening made, though nothing had locked it.
    if (apimutex != nullptr) {
        ktdpa_mutex_unlock(apimutex);
    }
    return result;
}

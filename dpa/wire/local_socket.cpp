// Connecting to the UNIX-domain stream socket of a service on this host.
#include "dpa/wire/local_socket.h"

#include <algorithm>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>

namespace wire
{

int32_t connect_local(int32_t fd, const char *path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const size_t path_length = strnlen(path, sizeof address.sun_path - 1);
    std::copy_n(path, path_length, address.sun_path);
    // The length covers the family, the path and its terminator, not the whole record.
    const auto length = static_cast<socklen_t>(sizeof address.sun_family + path_length + 1);
    return connect(fd, reinterpret_cast<const sockaddr *>(&address), length);
}

} // namespace wire

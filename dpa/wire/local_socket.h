// Connecting to the UNIX-domain stream socket of a service on this host.
#pragma once

#include <cstdint>

namespace wire
{

// Connects fd to the socket at path.  Returns connect's result.
int32_t connect_local(int32_t fd, const char *path);

} // namespace wire

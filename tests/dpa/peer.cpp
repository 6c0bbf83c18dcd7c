// The other end of a connection, with its reply at hand beforehand.
#include "tests/dpa/peer.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "tests/support/private_var_tmp.h"

namespace ruk_test
{
namespace
{

int checked(int result, const char *what)
{
    if (result < 0) {
        perror(what);
        abort();
    }
    return result;
}

sockaddr_un address_of(const char *path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    strncpy(address.sun_path, path, sizeof address.sun_path - 1);
    return address;
}

} // namespace

void Peer::reply(const std::string &bytes) const
{
    const ssize_t sent = ::send(fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent != static_cast<ssize_t>(bytes.size())) {
        perror("reply");
        abort();
    }
}

void Peer::end_of_replies() const
{
    checked(shutdown(fd_, SHUT_WR), "shutdown");
}

void Peer::hang_up()
{
    if (fd_ >= 0) {
        close(fd_);
        fd_ = -1;
    }
}

std::string Peer::received() const
{
    std::string bytes;
    char piece[65536];
    // Not recv, which is made to fail.
    for (ssize_t n; (n = recvfrom(fd_, piece, sizeof piece, MSG_DONTWAIT, nullptr, nullptr)) > 0;) {
        bytes.append(piece, static_cast<size_t>(n));
    }
    return bytes;
}

Pair::Pair()
    : fds_{}, peer_((checked(socketpair(AF_UNIX, SOCK_STREAM, 0, fds_), "socketpair"), fds_[1]))
{
}

Pair::~Pair()
{
    close(fds_[0]);
}

Listener::Listener(const char *path)
    : path_(path), fd_(checked(socket(AF_UNIX, SOCK_STREAM, 0), "socket"))
{
    unlink(path);
    const sockaddr_un address = address_of(path);
    checked(bind(fd_, reinterpret_cast<const sockaddr *>(&address), sizeof address), "bind");
    checked(listen(fd_, 16), "listen");
}

Listener::~Listener()
{
    close(fd_);
    unlink(path_);
}

Peer Listener::accept() const
{
    return Peer(checked(::accept(fd_, nullptr, nullptr), "accept"));
}

bool Listener::has_connection() const
{
    pollfd watched{fd_, POLLIN, 0};
    return poll(&watched, 1, 0) == 1;
}

bool is_open(int fd)
{
    return fcntl(fd, F_GETFD) != -1;
}

int open_descriptors()
{
    int count = 0;
    for ([[maybe_unused]] const auto &entry :
         std::filesystem::directory_iterator("/proc/self/fd")) {
        ++count;
    }
    return count - 1; // the directory's own
}

bool is_free(const char *path)
{
    if (has_private_var_tmp()) {
        return true;
    }
    const int fd = checked(socket(AF_UNIX, SOCK_STREAM, 0), "socket");
    const sockaddr_un address = address_of(path);
    const int result = connect(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address);
    close(fd);
    return result != 0;
}

} // namespace ruk_test

// The path that clients connect to.
#include "agentsim/listening_socket.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

namespace agentsim
{

namespace
{

// Tries of the folder's lock, 10 ms apart.
constexpr int k_lock_tries = 300;

std::string failure(const std::string &what)
{
    return what + ": " + strerror(errno);
}

sockaddr_un address_of(const std::string &path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    return address;
}

UniqueFd new_socket()
{
    return UniqueFd(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
}

// bind and connect take every kind of address by the type that has none.
const sockaddr *generic(const sockaddr_un &address)
{
    return reinterpret_cast<const sockaddr *>(&address);
}

// Locks the folder of path as long as the descriptor lives.  Of two Agents that start at once and
// find the same dead socket, the second would otherwise remove what the first has just bound.
UniqueFd lock_folder(const std::string &path)
{
    const size_t slash = path.rfind('/');
    const std::string folder = slash == path.npos ? "." : path.substr(0, slash + 1);
    UniqueFd lock(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    for (int tries = 0; lock && flock(lock.get(), LOCK_EX | LOCK_NB) != 0; ++tries) {
        if (errno != EWOULDBLOCK || tries == k_lock_tries) {
            return {};
        }
        poll(nullptr, 0, 10);
    }
    return lock;
}

// Removes a socket file that nobody answers on.  Returns what stands in the way, or nothing.
std::string make_way(const std::string &path)
{
    struct stat file {
    };
    if (lstat(path.c_str(), &file) != 0) {
        return errno == ENOENT ? "" : failure("cannot look at " + path);
    }
    if (!S_ISSOCK(file.st_mode)) {
        return path + " exists and is not a socket; remove it or give another --socket";
    }
    const UniqueFd probe = new_socket();
    const sockaddr_un address = address_of(path);
    if (connect(probe.get(), generic(address), sizeof address) == 0 || errno == EAGAIN) {
        return "an Agent is serving " + path + " already; stop it or give another --socket";
    }
    if (errno != ECONNREFUSED) {
        return failure("cannot tell whether an Agent is serving " + path);
    }
    return unlink(path.c_str()) == 0 ? "" : failure("cannot remove the dead socket " + path);
}

} // namespace

ListeningSocket::~ListeningSocket()
{
    struct stat file {
    };
    if (!path_.empty() && lstat(path_.c_str(), &file) == 0 && file.st_dev == device_ &&
        file.st_ino == inode_) {
        unlink(path_.c_str());
    }
}

std::string ListeningSocket::open(const std::string &path)
{
    if (path.empty() || path.size() >= sizeof sockaddr_un{}.sun_path) {
        return "a socket's path has 1 to " + std::to_string(sizeof sockaddr_un{}.sun_path - 1) +
               " characters";
    }
    const UniqueFd lock = lock_folder(path);
    if (!lock) {
        return failure("cannot lock the folder of " + path);
    }
    std::string error = make_way(path);
    return error.empty() ? bind_to(path) : error;
}

std::string ListeningSocket::bind_to(const std::string &path)
{
    fd_ = new_socket();
    const sockaddr_un address = address_of(path);
    if (!fd_ || bind(fd_.get(), generic(address), sizeof address) != 0) {
        return failure("cannot bind " + path);
    }
    struct stat file {
    };
    if (lstat(path.c_str(), &file) != 0) {
        return failure("cannot look at " + path);
    }
    path_ = path;
    device_ = file.st_dev;
    inode_ = file.st_ino;
    return listen(fd_.get(), SOMAXCONN) == 0 ? "" : failure("cannot listen on " + path);
}

} // namespace agentsim

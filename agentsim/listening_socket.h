// The path that clients connect to: taken only when nobody serves it, given back at the end.
#pragma once

#include <string>
#include <sys/types.h>

#include "agentsim/unique_fd.h"

namespace agentsim
{

class ListeningSocket
{
public:
    ListeningSocket() = default;
    ListeningSocket(const ListeningSocket &) = delete;
    ListeningSocket &operator=(const ListeningSocket &) = delete;

    // Closes the socket and removes its file, unless another file has taken its place.
    ~ListeningSocket();

    // Listens at path.  A socket file that nobody answers on is replaced; a live one, and any
    // other file, is left alone.  Returns what went wrong, or nothing.
    std::string open(const std::string &path);

    int get() const { return fd_.get(); }

private:
    std::string bind_to(const std::string &path);

    UniqueFd fd_;
    std::string path_; // empty until the file is ours
    dev_t device_ = 0;
    ino_t inode_ = 0;
};

} // namespace agentsim

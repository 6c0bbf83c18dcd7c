// Calls of the C library that fail or fall short on demand, and a count of the blocks that the
// code under test holds.  The linker's --wrap brings the calls of the test program's own objects
// here, with and without sanitizers.  Everything acts on the calling thread only.
#pragma once

#include <cstddef>
#include <functional>
#include <sys/socket.h>
#include <sys/un.h>

namespace ruk_test
{

enum class Call {
    allocate,
    allocate_aligned,
    open_socket,
    connect_socket,
    change_mode,
    send_bytes,
    receive_bytes,
    mutex_init,
    mutex_destroy,
    cond_init,
    cond_destroy,
    cond_signal,
    thread_create,
    thread_cancel,
    thread_join,
};

// While it lives, one call fails: the nth of its kind from here on.  error becomes its errno or,
// for the thread library, its result; a transfer with error 0 returns 0 bytes.  One at a time.
class Fault
{
public:
    Fault(Call call, int error, int nth = 1);
    ~Fault();
    Fault(const Fault &) = delete;
    Fault &operator=(const Fault &) = delete;
};

// While it lives, no recv or send moves more than so many bytes.
class ShortTransfers
{
public:
    explicit ShortTransfers(size_t most);
    ~ShortTransfers();
    ShortTransfers(const ShortTransfers &) = delete;
    ShortTransfers &operator=(const ShortTransfers &) = delete;
};

// While it lives, something happens just before one call, the nth of its kind, or before that and
// every later one.  It must be a connect, a send or a recv; its descriptor is passed.
enum class Extent { once, ever_after };
class Before
{
public:
    Before(Call call, int nth, std::function<void(int fd)> action, Extent extent = Extent::once);
    ~Before();
    Before(const Before &) = delete;
    Before &operator=(const Before &) = delete;
};

// The blocks of malloc since it was made.
class Blocks
{
public:
    Blocks();
    int allocated() const; // how many were asked for
    int held() const;      // how many of those were not freed
    void *latest() const;  // the one that was asked for last

private:
    int allocated_before_;
    int freed_before_;
};

// What this thread's latest connect was given.
struct ConnectArguments {
    sockaddr_un address;
    socklen_t length;
};
const ConnectArguments &latest_connect();

} // namespace ruk_test

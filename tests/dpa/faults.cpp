// Calls that fail or fall short on the n-th use.
#include "tests/dpa/faults.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <optional>
#include <pthread.h>
#include <sys/stat.h>
#include <sys/types.h>

namespace
{

using ruk_test::Call;

struct Plan {
    Call call;
    int error;
    int calls_left;
};
thread_local std::optional<Plan> plan;

struct Interlude {
    Call call;
    int calls_left;
    std::function<void(int fd)> action;
    ruk_test::Extent extent;
};
thread_local std::optional<Interlude> interlude;

thread_local size_t most_bytes = SIZE_MAX;

thread_local int blocks_allocated = 0;
thread_local int blocks_freed = 0;
thread_local void *latest_block = nullptr;

thread_local ruk_test::ConnectArguments connect_arguments;

// The error of a call that is to fail.
std::optional<int> planned_error(Call call)
{
    if (!plan || plan->call != call || --plan->calls_left != 0) {
        return std::nullopt;
    }
    return plan->error;
}

// The same for a call that reports through errno.
bool fails(Call call)
{
    const std::optional<int> error = planned_error(call);
    if (error) {
        errno = *error;
    }
    return error.has_value();
}

void happen_before(Call call, int fd)
{
    if (!interlude || interlude->call != call) {
        return;
    }
    --interlude->calls_left;
    if (interlude->calls_left == 0 ||
        (interlude->calls_left < 0 && interlude->extent == ruk_test::Extent::ever_after)) {
        interlude->action(fd);
    }
}

} // namespace

namespace ruk_test
{

Fault::Fault(Call call, int error, int nth)
{
    plan = Plan{call, error, nth};
}

Fault::~Fault()
{
    plan.reset();
}

ShortTransfers::ShortTransfers(size_t most)
{
    most_bytes = most;
}

ShortTransfers::~ShortTransfers()
{
    most_bytes = SIZE_MAX;
}

Before::Before(Call call, int nth, std::function<void(int fd)> action, Extent extent)
{
    interlude = Interlude{call, nth, std::move(action), extent};
}

Before::~Before()
{
    interlude.reset();
}

Blocks::Blocks() : allocated_before_(blocks_allocated), freed_before_(blocks_freed) {}

int Blocks::allocated() const
{
    return blocks_allocated - allocated_before_;
}

int Blocks::held() const
{
    return allocated() - (blocks_freed - freed_before_);
}

void *Blocks::latest() const
{
    return latest_block;
}

const ConnectArguments &latest_connect()
{
    return connect_arguments;
}

} // namespace ruk_test

// The linker decides these names.
extern "C" {

void *__real_malloc(size_t size);
void *__real_aligned_alloc(size_t alignment, size_t size);
void __real_free(void *block);
int __real_socket(int domain, int type, int protocol);
int __real_connect(int fd, const sockaddr *address, socklen_t length);
int __real_fchmod(int fd, mode_t mode);
ssize_t __real_send(int fd, const void *bytes, size_t size, int flags);
ssize_t __real_recv(int fd, void *bytes, size_t size, int flags);
int __real_pthread_mutex_init(pthread_mutex_t *mutex, const pthread_mutexattr_t *attributes);
int __real_pthread_mutex_destroy(pthread_mutex_t *mutex);
int __real_pthread_cond_init(pthread_cond_t *condition, const pthread_condattr_t *attributes);
int __real_pthread_cond_destroy(pthread_cond_t *condition);
int __real_pthread_cond_signal(pthread_cond_t *condition);
int __real_pthread_create(pthread_t *thread, const pthread_attr_t *attributes,
                          void *(*routine)(void *), void *argument);
int __real_pthread_cancel(pthread_t thread);
int __real_pthread_join(pthread_t thread, void **result);

void *__wrap_malloc(size_t size)
{
    if (fails(Call::allocate)) {
        return nullptr;
    }
    ++blocks_allocated;
    latest_block = __real_malloc(size);
    return latest_block;
}

void *__wrap_aligned_alloc(size_t alignment, size_t size)
{
    if (fails(Call::allocate_aligned)) {
        return nullptr;
    }
    ++blocks_allocated;
    return __real_aligned_alloc(alignment, size);
}

void __wrap_free(void *block)
{
    blocks_freed += block != nullptr ? 1 : 0;
    __real_free(block);
}

int __wrap_socket(int domain, int type, int protocol)
{
    return fails(Call::open_socket) ? -1 : __real_socket(domain, type, protocol);
}

int __wrap_connect(int fd, const sockaddr *address, socklen_t length)
{
    // The whole record, which is more than the length covers.
    memcpy(&connect_arguments.address, address, sizeof connect_arguments.address);
    connect_arguments.length = length;
    happen_before(Call::connect_socket, fd);
    return __real_connect(fd, address, length);
}

int __wrap_fchmod(int fd, mode_t mode)
{
    return fails(Call::change_mode) ? -1 : __real_fchmod(fd, mode);
}

ssize_t __wrap_send(int fd, const void *bytes, size_t size, int flags)
{
    happen_before(Call::send_bytes, fd);
    if (fails(Call::send_bytes)) {
        return errno == 0 ? 0 : -1;
    }
    return __real_send(fd, bytes, std::min(size, most_bytes), flags);
}

ssize_t __wrap_recv(int fd, void *bytes, size_t size, int flags)
{
    happen_before(Call::receive_bytes, fd);
    if (fails(Call::receive_bytes)) {
        return errno == 0 ? 0 : -1;
    }
    return __real_recv(fd, bytes, std::min(size, most_bytes), flags);
}

int __wrap_pthread_mutex_init(pthread_mutex_t *mutex, const pthread_mutexattr_t *attributes)
{
    const std::optional<int> error = planned_error(Call::mutex_init);
    return error ? *error : __real_pthread_mutex_init(mutex, attributes);
}

int __wrap_pthread_mutex_destroy(pthread_mutex_t *mutex)
{
    const std::optional<int> error = planned_error(Call::mutex_destroy);
    return error ? *error : __real_pthread_mutex_destroy(mutex);
}

int __wrap_pthread_cond_init(pthread_cond_t *condition, const pthread_condattr_t *attributes)
{
    const std::optional<int> error = planned_error(Call::cond_init);
    return error ? *error : __real_pthread_cond_init(condition, attributes);
}

int __wrap_pthread_cond_destroy(pthread_cond_t *condition)
{
    const std::optional<int> error = planned_error(Call::cond_destroy);
    return error ? *error : __real_pthread_cond_destroy(condition);
}

int __wrap_pthread_cond_signal(pthread_cond_t *condition)
{
    const std::optional<int> error = planned_error(Call::cond_signal);
    return error ? *error : __real_pthread_cond_signal(condition);
}

int __wrap_pthread_create(pthread_t *thread, const pthread_attr_t *attributes,
                          void *(*routine)(void *), void *argument)
{
    const std::optional<int> error = planned_error(Call::thread_create);
    return error ? *error : __real_pthread_create(thread, attributes, routine, argument);
}

int __wrap_pthread_cancel(pthread_t thread)
{
    const std::optional<int> error = planned_error(Call::thread_cancel);
    return error ? *error : __real_pthread_cancel(thread);
}

int __wrap_pthread_join(pthread_t thread, void **result)
{
    const std::optional<int> error = planned_error(Call::thread_join);
    return error ? *error : __real_pthread_join(thread, result);
}

} // extern "C"

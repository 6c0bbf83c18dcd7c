// Threads, mutexes and condition variables over POSIX threads: argument checks, heap objects and
// the three classes of failure messages.
#include "ruk/thread.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <sys/prctl.h>

#include "infra/utils/kttrace.h"

uint32_t kt_debug_print_ktdpa_thread = KT_TRACE_DEFAULT;

namespace
{

constexpr uint32_t k_classed = KT_LEVEL_LOG;
constexpr uint32_t k_trace = KT_LEVEL_DEBUG;
constexpr uint32_t k_plain = KT_LEVEL_ERROR;

const uint32_t &word = kt_debug_print_ktdpa_thread;

template <typename Object> Object *allocate()
{
    return static_cast<Object *>(malloc(sizeof(Object)));
}

} // namespace

int32_t ktdpa_mutex_create(ktdpa_mutex **mutex)
{
    if (mutex == nullptr) {
        kt_trace(word, k_classed, "DPATHREAD_INV_PARAM %s: Invalid Arg\n", __func__);
        return EINVAL;
    }
    *mutex = nullptr;
    auto *const created = allocate<ktdpa_mutex>();
    if (created == nullptr) {
        kt_trace(word, k_classed, "DPATHREAD_MALLOC_ERR %s: Failed to alloc mutex\n", __func__);
        return ENOMEM;
    }
    // Without an attribute object: the mutex is of the default kind.
    const int error = pthread_mutex_init(created, nullptr);
    if (error != 0) {
        kt_trace(word, k_classed, "DPATHREAD_API_ERR %s: Failed to init mutex. Err %d \n", __func__,
                 error);
        free(created);
        return error;
    }
    *mutex = created;
    return 0;
}

int32_t ktdpa_mutex_destroy(ktdpa_mutex *mutex)
{
    if (mutex == nullptr) {
        kt_trace(word, k_classed, "DPATHREAD_INV_PARAM %s: Invalid Arg \n", __func__);
        return EINVAL;
    }
    const int error = pthread_mutex_destroy(mutex);
    if (error != 0) {
        kt_trace(word, k_classed, "DPATHREAD_API_ERR %s: Failed to destroy mutex. Err %d \n",
                 __func__, error);
        return error;
    }
    free(mutex);
    return 0;
}

int32_t ktdpa_mutex_lock(ktdpa_mutex *mutex)
{
    const int error = pthread_mutex_lock(mutex);
    if (error != 0) {
        kt_trace(word, k_trace, "%s: Failed to lock mutex. Err %d \n", __func__, error);
    }
    return error;
}

int32_t ktdpa_mutex_unlock(ktdpa_mutex *mutex)
{
    const int error = pthread_mutex_unlock(mutex);
    if (error != 0) {
        kt_trace(word, k_trace, "%s: Failed to Unlock mutex. Err %d \n", __func__, error);
    }
    return error;
}

int32_t ktpda_mutex_trylock(ktdpa_mutex *mutex)
{
    return pthread_mutex_trylock(mutex);
}

int32_t ktdpa_cond_init(ktdpa_cond **condition)
{
    if (condition == nullptr) {
        // Kept: the misspelt word is what readers of the log search for.
        kt_trace(word, k_classed, "DPATHREAD_INV_PARAM %s: Invalig Arg\n", __func__);
        return EINVAL;
    }
    *condition = nullptr;
    auto *const created = allocate<ktdpa_cond>();
    if (created == nullptr) {
        kt_trace(word, k_classed, "DPATHREAD_MALLOC_ERR %s: Failed to alloc condvar\n", __func__);
        return ENOMEM;
    }
    const int error = pthread_cond_init(created, nullptr);
    if (error != 0) {
        kt_trace(word, k_classed,
                 "DPATHREAD_API_ERR %s: Failed to initialize. CondVar %p Err %d \n", __func__,
                 static_cast<void *>(created), error);
        free(created);
        return error;
    }
    *condition = created;
    return 0;
}

int32_t ktdpa_cond_destroy(ktdpa_cond *condition)
{
    if (condition == nullptr) {
        kt_trace(word, k_classed, "DPATHREAD_INV_PARAM %s: Invalid Arg \n", __func__);
        return EINVAL;
    }
    const int error = pthread_cond_destroy(condition);
    if (error != 0) {
        kt_trace(word, k_classed, "DPATHREAD_API_ERR %s: Failed to Destroy. condvar %p Err %d \n",
                 __func__, static_cast<void *>(condition), error);
        return error;
    }
    free(condition);
    return 0;
}

int32_t ktdpa_cond_signal(ktdpa_cond *condition, ktdpa_mutex *mutex)
{
    if (condition == nullptr || mutex == nullptr) {
        kt_trace(word, k_classed, "DPATHREAD_INV_PARAM %s: Invalid Args condvar %p mutex %p\n",
                 __func__, static_cast<void *>(condition), static_cast<void *>(mutex));
        return EINVAL;
    }
    ktdpa_mutex_lock(mutex);
    const int error = pthread_cond_signal(condition);
    if (error != 0) {
        kt_trace(word, k_trace, "%s: retval %d \n", __func__, error);
    }
    ktdpa_mutex_unlock(mutex);
    return 0;
}

int32_t ktdpa_cond_wait(ktdpa_cond *condition, ktdpa_mutex *mutex)
{
    if (condition == nullptr || mutex == nullptr) {
        kt_trace(word, k_classed, "DPATHREAD_INV_PARAM %s: Invalid Args condvar %p mutex %p\n",
                 __func__, static_cast<void *>(condition), static_cast<void *>(mutex));
        return EINVAL;
    }
    const int error = pthread_cond_wait(condition, mutex);
    if (error != 0) {
        kt_trace(word, k_trace, "%s: retval %d \n", __func__, error);
    }
    return 0;
}

int32_t ktdpa_cond_timedwait(ktdpa_cond *condition, ktdpa_mutex *mutex,
                             const struct timespec *deadline)
{
    if (condition == nullptr || mutex == nullptr || deadline == nullptr) {
        kt_trace(word, k_classed,
                 "DPATHREAD_INV_PARAM %s: Invalid Args condvar %p mutex %p tspec %p\n", __func__,
                 static_cast<void *>(condition), static_cast<void *>(mutex),
                 static_cast<const void *>(deadline));
        return EINVAL;
    }
    ktdpa_mutex_lock(mutex);
    const int error = pthread_cond_timedwait(condition, mutex, deadline);
    if (error != 0) {
        kt_trace(word, k_trace, "%s: retval %d \n", __func__, error);
    }
    ktdpa_mutex_unlock(mutex);
    return 0;
}

int32_t ktdpa_set_thread_name(const char *name)
{
    constexpr size_t k_name_size = 16; // the kernel's, terminator included
    char copy[k_name_size] = {};
    if (name != nullptr) {
        std::copy_n(name, strnlen(name, k_name_size - 1), copy);
    }
    return prctl(PR_SET_NAME, copy, 0, 0, 0);
}

int32_t ktdpa_thread_create(void *(*routine)(void *), void *argument, const char *name)
{
    // Kept, here and in ktdpa_helper_thread_create: the caller is renamed and the new thread
    // inherits the name.
    ktdpa_set_thread_name(name);
    if (routine == nullptr) {
        kt_trace(word, k_classed, "DPATHREAD_INV_PARAM %s: Invalid args: func %p \n", __func__,
                 reinterpret_cast<void *>(routine));
        kt_trace(word, k_plain, "%s: Invalid arguments: func %p\n", __func__,
                 reinterpret_cast<void *>(routine));
        return EINVAL;
    }
    auto *const handle = allocate<ktdpa_thread>();
    if (handle == nullptr) {
        kt_trace(word, k_classed, "DPATHREAD_MALLOC_ERR %s: Failed to alloc thread struct.\n",
                 __func__);
        kt_trace(word, k_plain, "%s: Failed to alloc thread struct\n", __func__);
        return ENOMEM;
    }
    const int error = pthread_create(handle, nullptr, routine, argument);
    if (error != 0) {
        kt_trace(word, k_classed, "DPATHREAD_API_ERR %s: Failed to create thread. Err %d \n",
                 __func__, error);
        kt_trace(word, k_plain, "%s: Failed to create thread. Err %d \n", __func__, error);
        free(handle);
    }
    // Kept: the handle of a thread that runs is never freed; nobody holds it.
    return error;
}

int32_t ktdpa_helper_thread_create(ktdpa_thread **thread, void *(*routine)(void *), void *argument,
                                   const char *name)
{
    ktdpa_set_thread_name(name);
    if (thread == nullptr || routine == nullptr) {
        kt_trace(word, k_classed, "DPATHREAD_INV_PARAM %s: Invalid args:thread %p func %p \n",
                 __func__, static_cast<void *>(thread), reinterpret_cast<void *>(routine));
        return EINVAL;
    }
    *thread = nullptr;
    auto *const handle = allocate<ktdpa_thread>();
    if (handle == nullptr) {
        kt_trace(word, k_classed, "DPATHREAD_MALLOC_ERR %s: Failed to alloc thread struct.\n",
                 __func__);
        return ENOMEM;
    }
    const int error = pthread_create(handle, nullptr, routine, argument);
    if (error != 0) {
        kt_trace(word, k_classed, "DPATHREAD_API_ERR %s: Failed to create thread. Err %d \n",
                 __func__, error);
        free(handle);
        return error;
    }
    *thread = handle;
    return 0;
}

int32_t ktdpa_helper_thread_cancel(ktdpa_thread *thread)
{
    if (thread == nullptr) {
        kt_trace(word, k_classed, "DPATHREAD_INV_PARAM %s: Invalid Arg \n", __func__);
        return EINVAL;
    }
    const int cancelled = pthread_cancel(*thread);
    if (cancelled != 0) {
        kt_trace(word, k_trace, "%s: Failed to cancel thread %d\n", __func__, cancelled);
        free(thread);
        return 0;
    }
    const int joined = pthread_join(*thread, nullptr);
    if (joined == ESRCH) {
        free(thread);
        return 0;
    }
    // Kept: a clean join is reported like a failed one, and the handle stays the caller's.
    kt_trace(word, k_classed,
             "DPATHREAD_API_ERR %s: Failed to wait on helper thread terminate ret %d \n", __func__,
             joined);
    return joined;
}

/*
 * Threads, mutexes and condition variables over POSIX threads.
 *
 * Results are error numbers: 0, or what the thread library returned; 22 (EINVAL) for a required
 * pointer that is null; 12 (ENOMEM) when an object can't be allocated.  A failed create leaves
 * its out-pointer null, one refused for its arguments leaves it untouched; a failed destroy leaves
 * the object as it was.  Failures are reported on
 * standard output as the bits of kt_debug_print_ktdpa_thread allow: 0x80 the classed messages,
 * 0x10 the lock, wait and cancel trace, 0x01 the plain messages of ktdpa_thread_create.
 */
#ifndef RUK_THREAD_H
#define RUK_THREAD_H

#include <pthread.h>
#include <time.h>

#include "ruk/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Objects of this layer live on the heap and are held by pointer. */
typedef pthread_mutex_t ktdpa_mutex;
typedef pthread_cond_t ktdpa_cond;
typedef pthread_t ktdpa_thread;

RUK_EXPORT extern uint32_t kt_debug_print_ktdpa_thread;

/* Stores a new mutex of the default kind in *mutex.  Free it with ktdpa_mutex_destroy. */
RUK_EXPORT int32_t ktdpa_mutex_create(ktdpa_mutex **mutex);

/* Destroys and frees the mutex. */
RUK_EXPORT int32_t ktdpa_mutex_destroy(ktdpa_mutex *mutex);

/* The thread library's own results; mutex must not be null. */
RUK_EXPORT int32_t ktdpa_mutex_lock(ktdpa_mutex *mutex);
RUK_EXPORT int32_t ktdpa_mutex_unlock(ktdpa_mutex *mutex);
/* Kept: the name is spelt so by its callers. */
RUK_EXPORT int32_t ktpda_mutex_trylock(ktdpa_mutex *mutex);

/* Stores a new condition variable in *condition.  Free it with ktdpa_cond_destroy. */
RUK_EXPORT int32_t ktdpa_cond_init(ktdpa_cond **condition);

/* Destroys and frees the condition variable. */
RUK_EXPORT int32_t ktdpa_cond_destroy(ktdpa_cond *condition);

/* Signals with the mutex held: locks and unlocks it.  Returns 0 even when the signal failed. */
RUK_EXPORT int32_t ktdpa_cond_signal(ktdpa_cond *condition, ktdpa_mutex *mutex);

/* Waits; the caller holds the mutex.  Returns 0 whatever the wait returned. */
RUK_EXPORT int32_t ktdpa_cond_wait(ktdpa_cond *condition, ktdpa_mutex *mutex);

/*
 * Locks the mutex, waits until signalled or until the absolute CLOCK_REALTIME deadline, unlocks.
 * Returns 0, on time-out too.
 */
RUK_EXPORT int32_t ktdpa_cond_timedwait(ktdpa_cond *condition, ktdpa_mutex *mutex,
                                        const struct timespec *deadline);

/*
 * Names the calling thread with the first 15 characters of name; NULL is the empty name, here and
 * where a thread is created.  Returns prctl's result.
 */
RUK_EXPORT int32_t ktdpa_set_thread_name(const char *name);

/*
 * Starts a joinable thread that nobody can join or cancel: its handle is never handed out nor
 * freed.  The thread inherits name from the caller, which is renamed and keeps the name.
 */
RUK_EXPORT int32_t ktdpa_thread_create(void *(*routine)(void *), void *argument, const char *name);

/* The same, storing the handle in *thread for ktdpa_helper_thread_cancel. */
RUK_EXPORT int32_t ktdpa_helper_thread_create(ktdpa_thread **thread, void *(*routine)(void *),
                                              void *argument, const char *name);

/*
 * Cancels and joins the thread.  Returns 0 and frees the handle when the thread could not be
 * cancelled or had been joined already; otherwise returns the join's result, 0 included, and
 * leaves the handle to the caller, who frees it with free().
 */
RUK_EXPORT int32_t ktdpa_helper_thread_cancel(ktdpa_thread *thread);

#ifdef __cplusplus
}
#endif

#endif /* RUK_THREAD_H */

/* Before any source of the tool: what libstdc++'s headers take from glibc and musl does not have.
 */
#define __locale_t locale_t
enum {
    _ISupper = 1 << 0,
    _ISlower = 1 << 1,
    _ISalpha = 1 << 2,
    _ISdigit = 1 << 3,
    _ISxdigit = 1 << 4,
    _ISspace = 1 << 5,
    _ISprint = 1 << 6,
    _ISgraph = 1 << 7,
    _ISblank = 1 << 8,
    _IScntrl = 1 << 9,
    _ISpunct = 1 << 10,
    _ISalnum = 1 << 11,
};
#include <bits/c++config.h>
#undef _GLIBCXX_USE_PTHREAD_COND_CLOCKWAIT
#undef _GLIBCXX_USE_PTHREAD_MUTEX_CLOCKLOCK
#undef _GLIBCXX_USE_PTHREAD_RWLOCK_CLOCKLOCK

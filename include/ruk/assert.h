/*
 * The assertion routine of the libraries: what happens when a caller breaks a precondition.
 */
#ifndef RUK_ASSERT_H
#define RUK_ASSERT_H

#include "ruk/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Prints "panic ASSERT  <file>  line <line>:  <expression>" to standard output and ends the
 * process with exit status 1.  Does not return.
 */
RUK_EXPORT void kt_assert_bad(const char *expression, const char *file, int32_t line)
    __attribute__((noreturn));

#ifdef __cplusplus
}
#endif

#endif /* RUK_ASSERT_H */

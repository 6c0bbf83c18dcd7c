// The assertion routine: one line on standard output, then the end of the process.
#include "ruk/assert.h"

#include <cstdio>
#include <cstdlib>

void kt_assert_bad(const char *expression, const char *file, int32_t line)
{
    printf("panic ASSERT  %s  line %d:  %s\n", file, line, expression);
    exit(1);
}

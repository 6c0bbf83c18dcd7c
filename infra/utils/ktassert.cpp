// The assertion routine: one line on standard output, then the end of the process.
#include "ruk/assert.h"

#include <cstdlib>

#include "infra/utils/ktprint.h"

void kt_assert_bad(const char *expression, const char *file, int32_t line)
{
    kt_print("panic ASSERT  %s  line %d:  %s\n", file, line, expression);
    exit(1);
}

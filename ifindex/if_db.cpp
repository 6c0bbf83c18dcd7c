// The interface database that names and parsing ask: there is none here.  Both functions are weak,
// so that a host that has a database links its own in their place, from libruklog.a as well as
// from the shared library; being weak also keeps the compiler from folding "always fails" into
// the callers.
#include "ruk/if_index_name.h"

[[gnu::weak]] int32_t if_db_ifindex2str_wrapper(char *, int32_t, IfIndex)
{
    return IF_DB_FAILED;
}

[[gnu::weak]] int32_t if_db_str2ifindex_wrapper(const char *, IfIndex *)
{
    return IF_DB_FAILED;
}

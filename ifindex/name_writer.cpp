// Numbers of names that no table holds.
#include "ifindex/name_writer.h"

namespace ifindex
{

char *put_long_decimal(char *at, uint32_t value)
{
    // Three digits at a time from the front.
    at = put_decimal(at, value / 1000);
    const uint32_t rest = value % 1000;
    at[0] = static_cast<char>('0' + rest / 100);
    at[1] = static_cast<char>('0' + rest / 10 % 10);
    at[2] = static_cast<char>('0' + rest % 10);
    return at + 3;
}

} // namespace ifindex

// Names of arbitrary values in buffers of arbitrary size: nothing is written outside, what fits is
// terminated, the result doesn't depend on the size, and the long name can be parsed.
//   bytes 0-3: first value, 4-7: last value of the range, 8: buffer size
#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include "fuzz/target.h"
#include "ruk/if_index_name.h"

namespace
{

constexpr char k_mark = '#';
constexpr int32_t k_guard = 16;
constexpr int32_t k_most = 64;

struct guarded {
    char bytes[k_guard + k_most + k_guard];

    guarded() { memset(bytes, k_mark, sizeof bytes); }
    char *at() { return bytes + k_guard; }

    void check(int32_t size)
    {
        for (int32_t i = 0; i < k_guard; ++i) {
            if (bytes[i] != k_mark) {
                abort();
            }
        }
        const int32_t end = k_guard + (size > 0 ? size : 0);
        for (auto i = static_cast<size_t>(end); i < sizeof bytes; ++i) {
            if (bytes[i] != k_mark) {
                abort();
            }
        }
    }
};

using formatter = int32_t (*)(char *, int32_t, IfIndex);
using range_formatter = int32_t (*)(char *, int32_t, const IfIndex *);

void check_name(formatter format, int32_t size, IfIndex value)
{
    guarded whole;
    const int32_t length = format(whole.at(), k_most, value);
    whole.check(k_most);
    if (length < 0 || length >= IF_INDEX_NAME_SIZE ||
        strlen(whole.at()) != static_cast<size_t>(length)) {
        abort();
    }
    guarded part;
    if (format(part.at(), size, value) != length) {
        abort();
    }
    part.check(size);
    if (size > 0) {
        const int32_t kept = length < size ? length : size - 1;
        if (memcmp(part.at(), whole.at(), static_cast<size_t>(kept)) != 0 ||
            part.at()[kept] != '\0') {
            abort();
        }
    }
}

void check_range(range_formatter format, int32_t size, const IfIndex pair[2])
{
    guarded buffer;
    const int32_t length = format(buffer.at(), size, pair);
    buffer.check(size);
    if (length < 0 || (size < 1 && length != 0)) {
        abort();
    }
    // Not even the terminator is written when the ends differ in type.
    if (size > 0 && buffer.at()[0] != k_mark &&
        memchr(buffer.at(), '\0', static_cast<size_t>(size)) == nullptr) {
        abort();
    }
}

void check_parse(IfIndex value)
{
    char name[IF_INDEX_NAME_SIZE];
    sprintf_if_index(name, value);
    IfIndex parsed = value;
    const int32_t result = ulx_interface_name_to_ifindex(name, &parsed);
    if ((result != 0 && result != 1) || (result == 0 && parsed != value)) {
        abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    IfIndex pair[2];
    if (size < sizeof pair + 1) {
        return 0;
    }
    memcpy(pair, data, sizeof pair);
    const int32_t room = data[sizeof pair] % (k_most + 2) - 1;
    for (const formatter format :
         {snprintf_if_index, snprintf_if_index_short, snprintf_if_index_internal}) {
        check_name(format, room, pair[0]);
    }
    check_range(snprintf_if_index_range, room, pair);
    check_range(snprintf_if_index_range_short, room, pair);
    check_parse(pair[0]);
    return 0;
}

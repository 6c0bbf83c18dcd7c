// Interface names from anywhere: the parser reads no further than the terminator, answers 0 or 1,
// and what it builds has a name that can be written.  The first byte is the kind, and the number
// of coordinates, of a second call that skips the name.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "fuzz/target.h"
#include "ruk/if_index_name.h"

namespace
{

constexpr IfIndex k_untouched = 0xdeadbeef;

void check(int32_t result, IfIndex value)
{
    if (result != 0 && result != 1) {
        abort();
    }
    if (result == 0 && value != k_untouched) {
        abort();
    }
    char name[IF_INDEX_NAME_SIZE];
    if (snprintf_if_index(name, IF_INDEX_NAME_SIZE, value) >= IF_INDEX_NAME_SIZE) {
        abort();
    }
}

void parse_name(const uint8_t *data, size_t size)
{
    // Of the exact length, so that a sanitizer sees a read too far.
    std::vector<char> name(data, data + size);
    name.push_back('\0');
    IfIndex value = k_untouched;
    const int32_t result = ulx_interface_name_to_ifindex(name.data(), &value);
    check(result, value);
}

void build(int32_t kind, const uint8_t *data, size_t size)
{
    std::vector<int32_t> numbers(
        std::min<size_t>(size / sizeof(int32_t), IF_INDEX_NAME_COORDINATES));
    if (!numbers.empty()) {
        memcpy(numbers.data(), data, numbers.size() * sizeof(int32_t));
    }
    IfIndex value = k_untouched;
    const int32_t result = ulx_interface_coordinates_to_ifindex(
        kind, numbers.data(), static_cast<int32_t>(numbers.size()), &value);
    check(result, value);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    parse_name(data, size);
    if (size > 0) {
        build(data[0], data + 1, size - 1);
    }
    return 0;
}

// From an interface name to an IfIndex: the keyword and the numbers behind it.
#include "ruk/if_index_name.h"

#include "ifindex/keywords.h"
#include "ifindex/layout.h"
#include "ifindex/numbers.h"

namespace
{

using namespace ifindex;

constexpr int32_t k_too_many = -1;

bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

const char *skip_to_digit(const char *text)
{
    while (*text != '\0' && !is_digit(*text)) {
        ++text;
    }
    return text;
}

bool is_null_interface(const char *name)
{
    const char *rest = skip_prefix(name, "null0");
    return rest != nullptr && *rest == '\0';
}

// Reads the numbers of the first interface in text and returns how many there are.
int32_t read_numbers(const char *text, int32_t (&numbers)[IF_INDEX_NAME_COORDINATES])
{
    int32_t count = 0;
    const char *at = skip_to_digit(text);
    while (*at != '\0') {
        if (count == IF_INDEX_NAME_COORDINATES) {
            return k_too_many;
        }
        const number_read number = read_number(at);
        numbers[count++] = number.value;
        at = skip_to_digit(number.rest);
        // The next number is that of another interface of a list, or the end of a range.  Only the
        // character right before it tells: in "1/5, 1/7" the blank does, and four numbers are read.
        if (at[-1] == ',' || at[-1] == '-') {
            break;
        }
    }
    return count;
}

} // namespace

int32_t ulx_interface_name_to_ifindex(const char *name, IfIndex *out)
{
    if (name == nullptr || out == nullptr) {
        return 0;
    }
    while (*name == ' ') {
        ++name;
    }
    if (is_null_interface(name)) {
        *out = k_null_interface;
        return 1;
    }
    const keyword_match match = find_keyword(name);
    if (match.kind < 0) {
        return 0;
    }
    int32_t numbers[IF_INDEX_NAME_COORDINATES];
    const int32_t count = read_numbers(match.rest, numbers);
    if (count == k_too_many) {
        return 0;
    }
    return ulx_interface_coordinates_to_ifindex(match.kind, numbers, count, out);
}

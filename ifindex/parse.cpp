// From an interface name to an IfIndex: the keyword and the numbers behind it.
#include "ruk/if_index_name.h"

#include "ifindex/keywords.h"
#include "ifindex/kinds.h"
#include "ifindex/layout.h"
#include "ifindex/numbers.h"

namespace
{

using namespace ifindex;

const char *skip_to_digit(const char *text)
{
    while (*text != '\0' && !is_digit(*text)) {
        ++text;
    }
    return text;
}

// Reads the numbers of the first interface in text.  False when there are too many.
bool read_numbers(const char *text, coordinates &out)
{
    const char *at = skip_to_digit(text);
    size_t count = 0;
    while (*at != '\0') {
        if (count == out.c.size()) {
            return false;
        }
        const number_read number = read_digits(at);
        out.c[count++] = number.value;
        at = skip_to_digit(number.rest);
        // The next number is that of another interface of a list, or the end of a range.  Only the
        // character right before it tells: in "1/5, 1/7" the blank does, and four numbers are read.
        if (at[-1] == ',' || at[-1] == '-') {
            break;
        }
    }
    out.count = static_cast<int32_t>(count);
    return true;
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
    const keyword_match match = find_keyword(name);
    // No keyword in front of "null" hides it.
    if (match.kind == kind_of("null") && match.rest[0] == '0' && match.rest[1] == '\0') {
        *out = k_null_interface;
        return 1;
    }
    coordinates numbers{};
    if (match.kind < 0 || !read_numbers(match.rest, numbers)) {
        return 0;
    }
    return build_interface(match.kind, numbers, out);
}

// From an interface name to an IfIndex: the keyword and the numbers behind it.
#include "ruk/if_index_name.h"

#include "ifindex/keyword_search.h"
#include "ifindex/kinds.h"
#include "ifindex/layout.h"
#include "ifindex/numbers.h"

namespace
{

using namespace ifindex;

[[gnu::always_inline]] inline const char *skip_to_digit(const char *text)
{
    while (*text != '\0' && !is_digit(*text)) {
        ++text;
    }
    return text;
}

// Reads the numbers of the first interface in text.  False when there are too many.  Always part of
// its caller, which knows the keyword: how many numbers there are is guessed better for each kind.
[[gnu::always_inline]] inline bool read_numbers(const char *text, coordinates &out)
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

struct interface_of_keyword {
    template <size_t keyword> static int32_t found(const char *rest, IfIndex *out)
    {
        constexpr auto kind = static_cast<int32_t>(keyword);
        // No keyword in front of "null" hides it.
        if (kind == kind_of("null") && rest[0] == '0' && rest[1] == '\0') {
            *out = k_null_interface;
            return 1;
        }
        constexpr const kind_row *row = find_row(kind);
        coordinates numbers{};
        if (row == nullptr || !read_numbers(rest, numbers)) {
            return 0;
        }
        if (is_on_the_data_path(kind)) {
            return build_by(*find_row(kind_of("ruk-ethernet")), numbers, out);
        }
        return build_by(*row, numbers, out);
    }
};

} // namespace

int32_t ulx_interface_name_to_ifindex(const char *name, IfIndex *out)
{
    if (name == nullptr || out == nullptr) {
        return 0;
    }
    while (*name == ' ') {
        ++name;
    }
    return with_keyword<interface_of_keyword>(name, out);
}

// Words of a command line: cutting, copying and comparing them.
#include "ruk/words.h"

#include "infra/utils/kttext.h"
#include "ruk/assert.h"

namespace
{

using kttext::is_space;
using kttext::lower;

// Most of what is compared is equal, or is not by its first letter.
bool are_same(char a, char b)
{
    return a == b || lower(a) == lower(b);
}

bool ends_word(char c)
{
    return c == '\0' || c == ';' || is_space(c);
}

} // namespace

const char *kt_find_next_arg(const char *p)
{
    if (p == nullptr) {
        return nullptr;
    }
    while (*p != '\0' && !is_space(*p)) {
        ++p;
    }
    while (*p != '\0' && is_space(*p)) {
        ++p;
    }
    return *p == '\0' ? nullptr : p;
}

int32_t strncpy_until_space(char *dst, int32_t max, const char *src)
{
    if (max < 1) {
        return 0;
    }
    int32_t copied = 0;
    while (copied < max - 1 && src[copied] != '\0' && !is_space(src[copied])) {
        dst[copied] = src[copied];
        ++copied;
    }
    dst[copied] = '\0';
    return 0;
}

int32_t stris(const char *word, const char *keyword)
{
    if (word == nullptr || keyword == nullptr) {
        kt_assert_bad("str != NULL && cmpstr != NULL", "infra/utils/ktstrings", 65);
    }
    while (*keyword != '\0' && are_same(*word, *keyword) && !ends_word(*word)) {
        ++word;
        ++keyword;
    }
    return *keyword == '\0' && ends_word(*word) ? 0 : 1;
}

int32_t kt_strncasecmp(const char *a, const char *b, size_t n)
{
    for (size_t i = 0; i < n; ++i) {
        if (!are_same(a[i], b[i])) {
            return 1;
        }
    }
    return 0;
}

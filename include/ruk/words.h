/*
 * Words of a command line: how the command matcher cuts and compares them.
 *
 * White space is what isspace() says in the current locale.  No state: safe from any thread.
 */
#ifndef RUK_WORDS_H
#define RUK_WORDS_H

#include "ruk/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Returns a pointer to the first character of the word after the one at p, or NULL when there is
 * none.  p may be NULL (the result is NULL) and must be terminated otherwise.
 */
RUK_EXPORT const char *kt_find_next_arg(const char *p);

/*
 * Copies the word at src, up to its first white space or terminator, into the max bytes at dst:
 * at most max - 1 characters and always a terminator.  max is at least 1; a smaller one writes
 * nothing.  Returns 0.
 */
RUK_EXPORT int32_t strncpy_until_space(char *dst, int32_t max, const char *src);

/*
 * Returns 0 when the word at word is keyword, ignoring case, else 1.  The word ends at its
 * terminator, at ";" or at white space; keyword is compared whole, so an abbreviation differs.
 * Either pointer being NULL is fatal (kt_assert_bad).
 */
RUK_EXPORT int32_t stris(const char *word, const char *keyword);

/*
 * Compares exactly n bytes ignoring case, terminators included: 0 when they agree, else 1.
 * n = 0 gives 0.
 */
RUK_EXPORT int32_t kt_strncasecmp(const char *a, const char *b, size_t n);

#ifdef __cplusplus
}
#endif

#endif /* RUK_WORDS_H */

// Words of a command line: cutting, copying, comparing.
#include "ruk/words.h"

#include <cstdio>
#include <string>

TEST(kt_find_next_arg, gives_the_start_of_the_next_word_or_null)
{
    const std::pair<const char *, const char *> rows[] = {
        {"show info", "info"}, {"show  \t info x", "info x"},
        {" a", "a"},           {"a;b c", "c"},
        {"show", nullptr},     {"show ", nullptr},
        {"", nullptr},         {"   ", nullptr},
        {nullptr, nullptr},
    };
    for (const auto &[text, expected] : rows) {
        SCOPED_TRACE(text ? text : "NULL");
        EXPECT_STREQ(kt_find_next_arg(text), expected);
    }
}

TEST(strncpy_until_space, keeps_what_fits_and_terminates)
{
    struct {
        const char *src;
        int32_t max;
        std::string expected;
    } const rows[] = {
        {"word rest", 32, "word"},
        {"word\trest", 32, "word"},
        {"word;rest", 32, "word;rest"},
        {"word", 5, "word"},
        {"word", 4, "wor"},
        {"word", 1, ""},
        {" word", 32, ""},
        {"", 32, ""},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.src);
        char dst[40];
        memset(dst, '#', sizeof dst);
        EXPECT_EQ(strncpy_until_space(dst, row.max, row.src), 0);
        EXPECT_STREQ(dst, row.expected.c_str());
        for (size_t i = row.expected.size() + 1; i < sizeof dst; ++i) {
            EXPECT_EQ(dst[i], '#') << "byte " << i;
        }
    }
}

TEST(strncpy_until_space, writes_nothing_without_room)
{
    char dst = '#';
    EXPECT_EQ(strncpy_until_space(&dst, 0, "word"), 0);
    EXPECT_EQ(dst, '#');
}

TEST(stris, compares_whole_words_ignoring_case)
{
    struct {
        const char *word;
        const char *keyword;
        int32_t expected;
    } const rows[] = {
        {"show", "show", 0},
        {"SHOW info", "show", 0},
        {"show;info", "show", 0},
        {"show\tx", "SHOW", 0},
        {"sh", "show", 1},
        {"shows", "show", 1},
        {"", "", 0},
        {" x", "", 0},
        {"x", "", 1},
        {"", "x", 1},
        // The word ends where the keyword goes on with the same character.
        {"show info", "show info", 1},
        {"show;", "show;", 1},
        {"show\t", "show\t", 1},
        {" ", " ", 1},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.word);
        EXPECT_EQ(stris(row.word, row.keyword), row.expected);
    }
}

// The panic goes to standard output, which a death test does not see: it is brought to
// standard error for the length of the statement.
TEST(stris, panics_on_null)
{
    const auto compare = [](const char *word, const char *keyword) {
        dup2(STDERR_FILENO, STDOUT_FILENO);
        stris(word, keyword);
    };
    const char *panic = "^panic ASSERT  infra/utils/ktstrings  line 65:  "
                        "str != NULL && cmpstr != NULL\n$";
    EXPECT_EXIT(compare(nullptr, "show"), testing::ExitedWithCode(1), panic);
    EXPECT_EXIT(compare("show", nullptr), testing::ExitedWithCode(1), panic);
}

TEST(kt_strncasecmp, compares_exactly_n_bytes_across_terminators)
{
    struct {
        const char *a;
        const char *b;
        size_t n;
        int32_t expected;
    } const rows[] = {
        {"abc", "ABC", 3, 0},   {"abc", "abd", 2, 0},   {"abc", "abd", 3, 1},
        {"a\0x", "a\0y", 3, 1}, {"a\0x", "A\0X", 3, 0}, {"a", "b", 0, 0},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.a);
        EXPECT_EQ(kt_strncasecmp(row.a, row.b, row.n), row.expected);
    }
}

// Checks shared by the tests of the thread layer: a result, and what is printed with one trace word
// after the other.
#pragma once

#include "ruk/thread.h"

#include <cstdio>
#include <functional>
#include <initializer_list>
#include <string>

#include "tests/dpa/peer.h"
#include "tests/support/capture.h"

namespace ruk_test
{

// A pointer as %p shows it.
template <typename Pointer> std::string shown(Pointer pointer)
{
    char text[32];
    snprintf(text, sizeof text, "%p", reinterpret_cast<void *>(pointer));
    return text;
}

// Makes the call with one word after the other; it must give the result each time and print what
// belongs to the word.
struct WordRow {
    uint32_t word;
    std::string printed;
};
inline void expect_with_words(std::initializer_list<WordRow> rows, int32_t result,
                              const std::function<int32_t()> &call)
{
    for (const WordRow &row : rows) {
        SCOPED_TRACE(row.word);
        const WordSetting word(kt_debug_print_ktdpa_thread, row.word);
        int32_t got = -1;
        EXPECT_EQ(captured_stdout([&] { got = call(); }), row.printed);
        EXPECT_EQ(got, result);
    }
}

// One message whose flag is 0x80.
inline void expect_classed(const std::string &message, int32_t result,
                           const std::function<int32_t()> &call)
{
    expect_with_words({{0x87, message}, {0x80, message}, {0x7f, ""}}, result, call);
}

// One message whose flag is 0x10.
inline void expect_traced(const std::string &message, int32_t result,
                          const std::function<int32_t()> &call)
{
    expect_with_words({{0x10, message}, {0xff, message}, {0xef, ""}}, result, call);
}

} // namespace ruk_test

// Runs a bounded formatter at every size around its text, between guard bytes.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

// A buffer of a given size with room around it that must keep its mark.
class guarded_buffer
{
public:
    guarded_buffer() { memset(bytes_, k_mark, sizeof bytes_); }

    char *at() { return bytes_ + k_guard; }

    // Expects the terminated text at the start of size bytes, and marks everywhere outside these.
    void expect(const std::string &text, int32_t size)
    {
        if (size > 0) {
            EXPECT_LT(text.size(), static_cast<size_t>(size));
            EXPECT_STREQ(at(), text.c_str());
        }
        const size_t inside = size > 0 ? static_cast<size_t>(size) : 0;
        for (size_t i = 0; i < sizeof bytes_; ++i) {
            if ((i < k_guard || i >= k_guard + inside) && bytes_[i] != k_mark) {
                ADD_FAILURE() << "wrote at " << static_cast<int>(i) - static_cast<int>(k_guard)
                              << " of " << size << " bytes";
            }
        }
    }

    // Expects that not one byte was written.
    void expect_untouched() { expect("", 0); }

private:
    static constexpr size_t k_guard = 8;
    static constexpr char k_mark = '#';
    char bytes_[96];
};

// Expects that format(buffer, size) writes as much of text as fits and returns the whole length,
// for sizes from -1 to two more than the text needs.
template <typename format_function>
void expect_text_at_every_size(const std::string &text, format_function format)
{
    const auto length = static_cast<int32_t>(text.size());
    for (int32_t size = -1; size <= length + 3; ++size) {
        SCOPED_TRACE(testing::Message() << "size " << size);
        guarded_buffer buffer;
        EXPECT_EQ(format(buffer.at(), size), length);
        buffer.expect(size > 0 ? text.substr(0, static_cast<size_t>(size - 1)) : "", size);
    }
}

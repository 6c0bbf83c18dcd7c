// Text in fixed fields, and numbers in text.
#pragma once

#include <charconv>
#include <cstddef>
#include <optional>
#include <string_view>

namespace agentsim
{

// What a field of fixed size says, whether or not a terminator ends it.
template <size_t Size> std::string_view bounded_text(const char (&field)[Size])
{
    const std::string_view whole(field, Size);
    return whole.substr(0, whole.find('\0'));
}

// The decimal number that text is, or nothing when it is something else or does not fit.
template <typename Number> std::optional<Number> number_of(std::string_view text)
{
    Number number{};
    const char *end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stopped == end ? std::optional(number) : std::nullopt;
}

// Whether word is lower_case, in whatever case word is written.
inline bool is_word(std::string_view word, std::string_view lower_case)
{
    const auto lower = [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    };
    if (word.size() != lower_case.size()) {
        return false;
    }
    for (size_t i = 0; i < word.size(); ++i) {
        if (lower(word[i]) != lower_case[i]) {
            return false;
        }
    }
    return true;
}

} // namespace agentsim

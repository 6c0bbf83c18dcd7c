// What fuzz targets share: the input taken from its front, a check, and a silent standard output.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string>

namespace fuzz
{

inline void require(bool holds)
{
    if (!holds) {
        abort();
    }
}

// What the products print is part of the work but nobody reads it.
inline void silence_stdout()
{
    static FILE *const nowhere = freopen("/dev/null", "w", stdout);
    require(nowhere != nullptr);
}

// The input, taken from the front; zeros once it is used up.
class Input
{
public:
    Input(const uint8_t *data, size_t size) : rest_(data, size) {}

    bool empty() const { return rest_.empty(); }
    size_t size() const { return rest_.size(); }

    uint8_t byte()
    {
        uint8_t value = 0;
        bytes({&value, 1});
        return value;
    }

    uint16_t word() { return static_cast<uint16_t>(byte() | byte() << 8); }

    void bytes(std::span<uint8_t> out)
    {
        const size_t count = std::min(out.size(), rest_.size());
        std::fill(out.begin(), out.end(), uint8_t{0});
        std::copy_n(rest_.begin(), count, out.begin());
        rest_ = rest_.subspan(count);
    }

    template <typename Record> void fill(Record &record)
    {
        bytes({reinterpret_cast<uint8_t *>(&record), sizeof record});
    }

    // Up to the first end character, which is dropped, or all that is left.
    std::string text_until(uint8_t end)
    {
        const auto at = std::find(rest_.begin(), rest_.end(), end);
        const std::string text(rest_.begin(), at);
        rest_ = rest_.subspan(std::min(rest_.size(), text.size() + 1));
        return text;
    }

private:
    std::span<const uint8_t> rest_;
};

} // namespace fuzz

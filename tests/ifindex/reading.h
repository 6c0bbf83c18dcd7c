// Checks a reader over every type code and many bit patterns, against a description of its fields
// that is typed out in the test: where the bits of each output come from.
#ifndef TESTS_IFINDEX_READING_H
#define TESTS_IFINDEX_READING_H

#include <array>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "ruk/if_index_types.h"
#include "tests/support/random.h"

namespace reading
{

// What a call left in its outputs: how many there are, the error, and per output the number or
// k_untouched.
constexpr int64_t k_untouched = -1;

struct outcome {
    uint32_t error = 0;
    size_t outputs = 0;
    std::array<int64_t, 5> numbers{};

    bool operator==(const outcome &) const = default;
};

inline std::string show(const outcome &o)
{
    std::string text = "error " + std::to_string(o.error) + ", outputs";
    for (size_t i = 0; i < o.outputs; ++i) {
        text += ' ' + (o.numbers[i] == k_untouched ? "untouched" : std::to_string(o.numbers[i]));
    }
    return text;
}

// Calls a reader twice with different numbers in its outputs, which shows what it wrote.
template <typename... Numbers>
outcome call(uint32_t (*reader)(IfIndex, Numbers *...), IfIndex value)
{
    std::tuple<Numbers...> a{static_cast<Numbers>(0x5a5a5a5a + 0 * sizeof(Numbers))...};
    std::tuple<Numbers...> b{static_cast<Numbers>(0xa5a5a5a5 + 0 * sizeof(Numbers))...};
    const auto run = [&](auto &outputs) {
        return std::apply([&](auto &...output) { return reader(value, &output...); }, outputs);
    };
    outcome result;
    result.error = run(a);
    EXPECT_EQ(run(b), result.error);
    result.outputs = sizeof...(Numbers);
    [&]<size_t... I>(std::index_sequence<I...>)
    {
        ((result.numbers[I] = std::get<I>(a) == std::get<I>(b)
                                  ? static_cast<int64_t>(std::get<I>(a))
                                  : k_untouched),
         ...);
    }
    (std::index_sequence_for<Numbers...>{});
    return result;
}

// Bits low to high of the value, with the lowest at bit `at` of the number.
struct piece {
    unsigned low;
    unsigned high;
    unsigned at = 0;
};

// One output: the sum of its pieces and a constant, cut to a width in bits.
struct field {
    std::vector<piece> pieces;
    int64_t plus = 0;
    unsigned width = 32;

    int64_t of(IfIndex value) const
    {
        int64_t sum = plus;
        for (const piece &p : pieces) {
            const uint32_t mask = (uint32_t{2} << (p.high - p.low)) - 1;
            sum += static_cast<int64_t>((value >> p.low & mask) << p.at);
        }
        return sum & ((int64_t{1} << width) - 1);
    }
};

inline field bits(unsigned low, unsigned high)
{
    return {{{low, high, 0}}};
}

// Bits low to high of a value that must hold `number`.
struct need {
    unsigned low = 0;
    unsigned high = 0;
    uint32_t number = 0;
    bool given = false;

    uint32_t mask() const { return ((uint32_t{2} << (high - low)) - 1) << low; }
    bool holds(IfIndex value) const { return !given || (value & mask()) == number << low; }
    IfIndex force(IfIndex value) const { return given ? (value & ~mask()) | number << low : value; }
};

// What a reader does for some types: the fields it stores, or success with nothing stored.
struct variant {
    std::vector<uint32_t> types;
    std::vector<field> fields;
    need when{};
    bool stores = true;
};

struct reader_row {
    const char *name;
    std::function<outcome(IfIndex)> read;
    size_t outputs;
    std::vector<variant> variants;
    uint32_t unknown_type;
    uint32_t wrong_type;

    template <typename... Numbers>
    reader_row(const char *reader_name, uint32_t (*reader)(IfIndex, Numbers *...),
               std::vector<variant> what, uint32_t on_unknown_type = 11,
               uint32_t on_wrong_type = 12)
        : name(reader_name), read([reader](IfIndex value) { return call(reader, value); }),
          outputs(sizeof...(Numbers)), variants(std::move(what)), unknown_type(on_unknown_type),
          wrong_type(on_wrong_type)
    {
    }

    outcome expected(IfIndex value) const
    {
        const uint32_t type = value >> 24 & 0x7F;
        outcome result;
        result.outputs = outputs;
        result.numbers.fill(0);
        std::fill_n(result.numbers.begin(), outputs, k_untouched);
        if (type == 0 || type == 3 || type > 74) {
            result.error = unknown_type;
            return result;
        }
        result.error = wrong_type;
        for (const variant &v : variants) {
            if (std::find(v.types.begin(), v.types.end(), type) == v.types.end() ||
                !v.when.holds(value)) {
                continue;
            }
            result.error = 0;
            for (size_t i = 0; v.stores && i < outputs; ++i) {
                result.numbers[i] = v.fields.at(i).of(value);
            }
            break;
        }
        return result;
    }
};

// All 24 bits clear, set, alone, missing, and mixed.
inline std::vector<uint32_t> patterns()
{
    std::vector<uint32_t> result{0x000000, 0xFFFFFF, 0xA5C396, 0x5A3C69, 0x123456, 0xFEDCBA};
    for (unsigned bit = 0; bit < 24; ++bit) {
        result.push_back(uint32_t{1} << bit);
        result.push_back(0xFFFFFF & ~(uint32_t{1} << bit));
    }
    return result;
}

// Runs a reader over all 256 top bytes with all patterns and as many random ones, and those once
// more with the bits that its variants need.
inline void check_reader(const reader_row &row)
{
    static ruk_test::Random random;
    std::vector<uint32_t> lower_bits = patterns();
    for (size_t count = lower_bits.size(); count > 0; --count) {
        lower_bits.push_back(random.bits32() & 0xFFFFFF);
    }
    const auto check = [&row](IfIndex value) {
        const outcome got = row.read(value);
        const outcome want = row.expected(value);
        if (got != want) {
            char hex[16];
            std::snprintf(hex, sizeof hex, "0x%08x", value);
            ADD_FAILURE() << row.name << "(" << hex << "): " << show(got) << "; expected "
                          << show(want);
        }
    };
    for (uint32_t top = 0; top < 256; ++top) {
        for (const uint32_t pattern : lower_bits) {
            check(top << 24 | pattern);
            for (const variant &v : row.variants) {
                if (v.when.given) {
                    check(v.when.force(top << 24 | pattern));
                }
            }
        }
        if (testing::Test::HasFailure()) {
            return;
        }
    }
}

} // namespace reading

#endif // TESTS_IFINDEX_READING_H

// Random input for tests.  Every run draws other numbers; the seed is printed, and the environment
// variable RUK_SEED repeats a run.
#pragma once

#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string_view>

namespace ruk_test
{

inline uint64_t fresh_seed()
{
    const char *given = getenv("RUK_SEED");
    const uint64_t seed = given != nullptr ? strtoull(given, nullptr, 0) : std::random_device{}();
    fprintf(stderr, "RUK_SEED=%" PRIu64 "\n", seed);
    return seed;
}

class Random
{
public:
    explicit Random(uint64_t seed = fresh_seed()) : generator_(seed) {}

    uint64_t bits64() { return generator_(); }
    uint32_t bits32() { return static_cast<uint32_t>(generator_() >> 32); }
    uint8_t byte() { return static_cast<uint8_t>(generator_() >> 56); }

    // A number from 0 to limit - 1.  The limit must not be 0.
    uint32_t below(uint64_t limit) { return static_cast<uint32_t>(generator_() % limit); }

    // True one time in so many.
    bool once_in(uint32_t times) { return below(times) == 0; }

    template <typename Items> const auto &one_of(const Items &items)
    {
        return std::data(items)[below(std::size(items))];
    }

    char one_char(std::string_view characters) { return characters[below(characters.size())]; }

private:
    std::mt19937_64 generator_;
};

} // namespace ruk_test

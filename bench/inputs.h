// Inputs that no branch predictor learns: tens of thousands of them, each drawn at random.  They
// are visited as they lie: another order would time the memory, not the code.
#pragma once

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace bench
{

inline constexpr size_t k_inputs = 20000;

// The same numbers in every run, so that runs can be compared.
class random_numbers
{
public:
    // From least to most, each as likely as the others.
    uint32_t between(uint32_t least, uint32_t most)
    {
        return least + static_cast<uint32_t>(generator_() % (uint64_t{most} - least + 1));
    }

    // Of a random number of digits in a base, each number of digits as likely as the others.
    uint32_t of_random_length(uint32_t base, uint32_t most)
    {
        uint32_t lengths = 1;
        for (uint32_t rest = most; rest >= base; rest /= base) {
            ++lengths;
        }
        uint32_t least = 0;
        uint64_t beyond = base;
        for (uint32_t length = between(1, lengths); length > 1; --length) {
            least = static_cast<uint32_t>(beyond);
            beyond *= base;
        }
        return between(least, static_cast<uint32_t>(std::min<uint64_t>(most, beyond - 1)));
    }

private:
    std::mt19937_64 generator_{20240229};
};

// Terminated texts that lie one behind the other.
class texts
{
public:
    // Each is what draw(random_numbers &) returns.
    template <typename draw_function> explicit texts(draw_function draw)
    {
        random_numbers random;
        for (size_t i = 0; i < k_inputs; ++i) {
            starts_.push_back(static_cast<uint32_t>(bytes_.size()));
            bytes_ += draw(random);
            bytes_ += '\0';
        }
    }

    // Calls use(const char *) with every text.
    template <typename use_function> void for_each(use_function use) const
    {
        for (const uint32_t start : starts_) {
            use(bytes_.data() + start);
        }
    }

private:
    std::string bytes_;
    std::vector<uint32_t> starts_;
};

// Runs pass() until the time is up.  It goes through all inputs once; the time that is reported is
// that of one pass, and "one" that of one input.
template <typename pass_function> void time_passes(benchmark::State &state, pass_function pass)
{
    for (auto _ : state) {
        pass();
    }
    state.counters["one"] = benchmark::Counter(static_cast<double>(k_inputs),
                                               benchmark::Counter::kIsIterationInvariantRate |
                                                   benchmark::Counter::kInvert);
}

// Gives every text to parse(const char *).
template <typename parse_function>
void time_parser(benchmark::State &state, const texts &inputs, parse_function parse)
{
    time_passes(state, [&] {
        inputs.for_each([&](const char *text) { benchmark::DoNotOptimize(parse(text)); });
    });
}

// Gives every value to format(char *buffer, size_t size, const value &).
template <typename value_type, typename format_function>
void time_formatter(benchmark::State &state, const std::vector<value_type> &values,
                    format_function format)
{
    char buffer[64];
    time_passes(state, [&] {
        for (const value_type &value : values) {
            benchmark::DoNotOptimize(format(buffer, sizeof buffer, value));
            benchmark::ClobberMemory();
        }
    });
}

} // namespace bench

// Bit sets beside a loop that goes bit by bit, std::bitset and the memory bandwidth of memcmp and
// memcpy.  The library is measured with every variant of its loops that runs here.  The table at
// the end gives each peer's time as a multiple of that of the best variant.
#include "ruk/bitset.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <bitset>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "infra/utils/ktlibbmp_kernels.h"

namespace
{

// Stores the records of one benchmark: at a 4-byte boundary, as the searches want it.
class record
{
public:
    explicit record(size_t size) : words_(size / 4 + 1)
    {
        get()->size = static_cast<uint32_t>(size);
    }
    bitset *get() { return reinterpret_cast<bitset *>(words_.data()); }
    uint8_t *bits() { return get()->bits; }

private:
    std::vector<uint32_t> words_;
};

void fill_at_random(uint8_t *bytes, size_t n)
{
    std::mt19937 generator(1);
    for (size_t i = 0; i < n; ++i) {
        bytes[i] = static_cast<uint8_t>(generator());
    }
}

// Runs of 1 to 63 bits, set and clear in turn, or random bits, whose runs have two on average.
void fill_runs(bitset *b, bool dense)
{
    if (dense) {
        fill_at_random(b->bits, b->size);
        return;
    }
    std::mt19937 generator(1);
    const auto bits = static_cast<int32_t>(b->size * 8);
    for (int32_t bit = 0; bit < bits;) {
        const auto length = static_cast<int32_t>(generator() % 63 + 1);
        const auto gap = static_cast<int32_t>(generator() % 63 + 1);
        bitset_set_range(b, bit, std::min(length, bits - bit));
        bit += length + gap;
    }
}

// The library, with the loops of one variant.
struct library {
    const ktlibbmp::kernels *variant;
    record left;
    record right;

    library(const ktlibbmp::kernels *loops, size_t size) : variant(loops), left(size), right(size)
    {
        ktlibbmp::force_kernels(variant);
    }
};

// What the library is compared with: the same bits, one at a time.
bool is_set(const uint8_t *bits, size_t bit)
{
    return (bits[bit / 8] & (0x80 >> bit % 8)) != 0;
}

uint32_t count_bits(const uint8_t *bits, size_t n)
{
    uint32_t count = 0;
    for (size_t bit = 0; bit < n * 8; ++bit) {
        count += is_set(bits, bit) ? 1u : 0u;
    }
    return count;
}

size_t first_bit(const uint8_t *bits, size_t n)
{
    size_t bit = 0;
    while (bit < n * 8 && !is_set(bits, bit)) {
        ++bit;
    }
    return bit;
}

void unite_bits(uint8_t *bits, const uint8_t *others, size_t n)
{
    for (size_t bit = 0; bit < n * 8; ++bit) {
        if (is_set(others, bit)) {
            bits[bit / 8] = static_cast<uint8_t>(bits[bit / 8] | 0x80 >> bit % 8);
        }
    }
}

// The next run after *range, as bitset_next_range gives it.
[[gnu::noinline]] int32_t next_run(const uint8_t *bits, size_t n, bitset_range *range)
{
    const auto numbits = static_cast<int32_t>(n * 8);
    const bool is_start = range->lower == 1 && range->upper == 0;
    int32_t bit = is_start ? 0 : range->upper + 2;
    while (bit < numbits && !is_set(bits, static_cast<size_t>(bit))) {
        ++bit;
    }
    if (bit >= numbits) {
        return -1;
    }
    range->lower = bit;
    while (bit < numbits && is_set(bits, static_cast<size_t>(bit))) {
        ++bit;
    }
    range->upper = bit - 1;
    return 0;
}

// Counts the runs that next finds.
template <class Next> uint32_t count_runs(Next next)
{
    bitset_range range = {1, 0};
    uint32_t runs = 0;
    while (next(&range) == 0) {
        ++runs;
    }
    return runs;
}

// Registers <operation>/<peer>/<size> around the loop's body.
template <class Body>
void add(const std::string &operation, const std::string &peer, size_t size, Body body)
{
    const std::string name = operation + "/" + peer + "/" + std::to_string(size);
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State &state) {
        body(state);
        state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(size));
    })->MinTime(0.1);
}

void add_library(const ktlibbmp::kernels *variant, size_t size)
{
    add("count", variant->name, size, [=](benchmark::State &state) {
        library sets(variant, size);
        fill_at_random(sets.left.bits(), size);
        for (auto step : state) {
            benchmark::DoNotOptimize(bitset_bitcount(sets.left.get()));
        }
    });
    add("search", variant->name, size, [=](benchmark::State &state) {
        library sets(variant, size);
        bitset_set_bit(sets.left.get(), static_cast<int32_t>(size * 8 - 1));
        for (auto step : state) {
            benchmark::DoNotOptimize(bitset_first_bit(sets.left.get()));
        }
    });
    add("search back", variant->name, size, [=](benchmark::State &state) {
        library sets(variant, size);
        bitset_set_bit(sets.left.get(), 0);
        for (auto step : state) {
            benchmark::DoNotOptimize(
                bitset_find_prev_bit(sets.left.get(), static_cast<int32_t>(size * 8 - 1)));
        }
    });
    add("union", variant->name, size, [=](benchmark::State &state) {
        library sets(variant, size);
        fill_at_random(sets.right.bits(), size);
        for (auto step : state) {
            bitset_union(sets.left.get(), sets.right.get());
            benchmark::ClobberMemory();
        }
    });
    add("subset", variant->name, size, [=](benchmark::State &state) {
        library sets(variant, size);
        fill_at_random(sets.left.bits(), size);
        bitset_copy(sets.right.get(), sets.left.get());
        for (auto step : state) {
            benchmark::DoNotOptimize(bitset_subset(sets.left.get(), sets.right.get()));
        }
    });
    add("reverse", variant->name, size, [=](benchmark::State &state) {
        library sets(variant, size);
        fill_at_random(sets.left.bits(), size);
        for (auto step : state) {
            bitset_to_bitarray(sets.left.get(), sets.right.bits(), static_cast<int32_t>(size));
            benchmark::ClobberMemory();
        }
    });
    for (const bool dense : {true, false}) {
        add(dense ? "runs, dense" : "runs", variant->name, size, [=](benchmark::State &state) {
            library sets(variant, size);
            fill_runs(sets.left.get(), dense);
            for (auto step : state) {
                benchmark::DoNotOptimize(count_runs([&](bitset_range *range) {
                    return bitset_next_range(sets.left.get(), range);
                }));
            }
        });
    }
}

void add_bit_loops(size_t size)
{
    const std::string peer = "bit by bit";
    add("count", peer, size, [=](benchmark::State &state) {
        record b(size);
        fill_at_random(b.bits(), size);
        for (auto step : state) {
            benchmark::DoNotOptimize(count_bits(b.bits(), size));
        }
    });
    add("search", peer, size, [=](benchmark::State &state) {
        record b(size);
        b.bits()[size - 1] = 1;
        for (auto step : state) {
            benchmark::DoNotOptimize(first_bit(b.bits(), size));
        }
    });
    add("union", peer, size, [=](benchmark::State &state) {
        record b(size);
        record other(size);
        fill_at_random(other.bits(), size);
        for (auto step : state) {
            unite_bits(b.bits(), other.bits(), size);
            benchmark::ClobberMemory();
        }
    });
    for (const bool dense : {true, false}) {
        add(dense ? "runs, dense" : "runs", peer, size, [=](benchmark::State &state) {
            record b(size);
            fill_runs(b.get(), dense);
            for (auto step : state) {
                benchmark::DoNotOptimize(count_runs(
                    [&](bitset_range *range) { return next_run(b.bits(), size, range); }));
            }
        });
    }
}

template <size_t Bits> std::unique_ptr<std::bitset<Bits>> random_standard_set()
{
    auto set = std::make_unique<std::bitset<Bits>>();
    std::mt19937 generator(1);
    for (size_t bit = 0; bit < Bits; ++bit) {
        set->set(bit, generator() % 2 != 0);
    }
    return set;
}

template <size_t Size> void add_standard()
{
    using set = std::bitset<Size * 8>;
    const std::string peer = "std::bitset";
    add("count", peer, Size, [=](benchmark::State &state) {
        auto b = random_standard_set<Size * 8>();
        for (auto step : state) {
            benchmark::DoNotOptimize(b->count());
            benchmark::ClobberMemory();
        }
    });
    add("search", peer, Size, [=](benchmark::State &state) {
        auto b = std::make_unique<set>();
        b->set(Size * 8 - 1);
        for (auto step : state) {
            // The only search that the standard has: whether there is a set bit.
            benchmark::DoNotOptimize(b->any());
            benchmark::ClobberMemory();
        }
    });
    add("union", peer, Size, [=](benchmark::State &state) {
        auto b = std::make_unique<set>();
        auto other = random_standard_set<Size * 8>();
        for (auto step : state) {
            *b |= *other;
            benchmark::ClobberMemory();
        }
    });
}

void add_floor(size_t size)
{
    for (const char *operation : {"count", "search", "search back", "subset"}) {
        add(operation, "memcmp", size, [=](benchmark::State &state) {
            std::vector<uint8_t> left(size);
            std::vector<uint8_t> right(size);
            for (auto step : state) {
                benchmark::DoNotOptimize(memcmp(left.data(), right.data(), size));
                benchmark::ClobberMemory();
            }
        });
    }
    for (const char *operation : {"union", "reverse", "runs", "runs, dense"}) {
        add(operation, "memcpy", size, [=](benchmark::State &state) {
            std::vector<uint8_t> left(size);
            std::vector<uint8_t> right(size);
            for (auto step : state) {
                memcpy(left.data(), right.data(), size);
                benchmark::ClobberMemory();
            }
        });
    }
}

// Prints the measurements as usual and remembers them for the table of ratios.
class ratios : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run> &runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run &run : runs) {
            const std::string &name = run.run_name.function_name;
            const size_t peer = name.find('/');
            const size_t size = name.rfind('/');
            times_[name.substr(0, peer) + name.substr(size)].push_back(
                {name.substr(peer + 1, size - peer - 1), run.GetAdjustedCPUTime()});
        }
    }

    void Finalize() override
    {
        printf("\nCPU times as multiples of the first column's\n");
        for (const auto &[operation, peers] : times_) {
            printf("%-18s", operation.c_str());
            for (const auto &[peer, time] : peers) {
                printf("  %s %.2f", peer.c_str(), time / peers.front().second);
            }
            printf("\n");
        }
    }

private:
    std::map<std::string, std::vector<std::pair<std::string, double>>> times_;
};

} // namespace

int main(int argc, char **argv)
{
    for (const size_t size : std::initializer_list<size_t>{64, 512, 65536}) {
        for (const ktlibbmp::kernels *variant : ktlibbmp::all_kernels()) {
            if (variant->runs_here()) {
                add_library(variant, size);
            }
        }
        add_bit_loops(size);
    }
    add_standard<64>();
    add_standard<512>();
    add_standard<65536>();
    for (const size_t size : std::initializer_list<size_t>{64, 512, 65536}) {
        add_floor(size);
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    ratios reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return 0;
}

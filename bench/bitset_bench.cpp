// Bit sets beside hwloc's bitmaps, std::bitset, boost's dynamic_bitset and LLVM's BitVector, and
// beside memcpy and memcmp as the floor.
//
// Names are <operation>/<size in bits or kind of set>/<library>.  Each library gets the same bits
// and does the same job on sets that exist: the result of the algebra goes into the first set, and
// comparisons walk to the end, since the sets are equal or the first one is a subset.  Time per
// iteration is that of one operation, or of a walk over all k_sets sets of one kind.
//
// Kinds of sets, so many that a branch predictor does not learn them:
//   dense   each bit is set at random, one in four, so that three runs in four are single bits
//   ranges  runs of 1 to 64 bits with gaps of 1 to 64
//   sparse  single bits with gaps of 1 to 600
#include "ruk/bitset.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <bitset>
#include <boost/dynamic_bitset.hpp>
#include <cstdlib>
#include <cstring>
#include <hwloc/bitmap.h>
#include <llvm/ADT/BitVector.h>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace
{

constexpr size_t k_walked_bits = 64 * 1024;
constexpr size_t k_sets = 96;

// ---- The libraries, each behind the same few functions ----

class ruk_set
{
public:
    explicit ruk_set(size_t bits) : words_(bits / 32 + 1)
    {
        get()->size = static_cast<uint32_t>(bits / 8);
    }
    bitset *get() { return reinterpret_cast<bitset *>(words_.data()); }
    const bitset *get() const { return reinterpret_cast<const bitset *>(words_.data()); }

    void set(size_t bit) { bitset_set_bit(get(), static_cast<int32_t>(bit)); }
    bool test(size_t bit) const { return bitset_is_bit_set(get(), static_cast<int32_t>(bit)) != 0; }
    size_t count() const { return bitset_bitcount(get()); }
    void unite(const ruk_set &other) { bitset_union(get(), other.get()); }
    void intersect(const ruk_set &other) { bitset_intersection(get(), other.get()); }
    void subtract(const ruk_set &other) { bitset_subtract(get(), other.get()); }
    bool equals(const ruk_set &other) const { return bitset_equal(get(), other.get()) != 0; }
    bool is_in(const ruk_set &other) const { return bitset_subset(get(), other.get()) != 0; }

private:
    std::vector<uint32_t> words_;
};

class hwloc_set
{
public:
    explicit hwloc_set(size_t bits) : bitmap_(hwloc_bitmap_alloc())
    {
        // Has it allocate all of its words.
        hwloc_bitmap_set(get(), static_cast<unsigned>(bits - 1));
        hwloc_bitmap_clr(get(), static_cast<unsigned>(bits - 1));
    }
    hwloc_bitmap_t get() const { return bitmap_.get(); }

    void set(size_t bit) { hwloc_bitmap_set(get(), static_cast<unsigned>(bit)); }
    bool test(size_t bit) const
    {
        return hwloc_bitmap_isset(get(), static_cast<unsigned>(bit)) != 0;
    }
    size_t count() const { return static_cast<size_t>(hwloc_bitmap_weight(get())); }
    void unite(const hwloc_set &other) { hwloc_bitmap_or(get(), get(), other.get()); }
    void intersect(const hwloc_set &other) { hwloc_bitmap_and(get(), get(), other.get()); }
    void subtract(const hwloc_set &other) { hwloc_bitmap_andnot(get(), get(), other.get()); }
    bool equals(const hwloc_set &other) const
    {
        return hwloc_bitmap_isequal(get(), other.get()) != 0;
    }
    bool is_in(const hwloc_set &other) const
    {
        return hwloc_bitmap_isincluded(get(), other.get()) != 0;
    }

private:
    struct release {
        void operator()(hwloc_bitmap_t bitmap) const { hwloc_bitmap_free(bitmap); }
    };
    std::unique_ptr<hwloc_bitmap_s, release> bitmap_;
};

template <size_t Bits> class std_set
{
public:
    explicit std_set(size_t) : bits_(std::make_unique<std::bitset<Bits>>()) {}
    void set(size_t bit) { bits_->set(bit); }
    size_t count() const { return bits_->count(); }
    void unite(const std_set &other) { *bits_ |= *other.bits_; }
    void intersect(const std_set &other) { *bits_ &= *other.bits_; }
    void subtract(const std_set &other) { *bits_ &= ~*other.bits_; }
    bool equals(const std_set &other) const { return *bits_ == *other.bits_; }
    bool is_in(const std_set &other) const { return (*bits_ & ~*other.bits_).none(); }

private:
    std::unique_ptr<std::bitset<Bits>> bits_;
};

class boost_set
{
public:
    explicit boost_set(size_t bits) : bits_(bits) {}
    void set(size_t bit) { bits_.set(bit); }
    size_t count() const { return bits_.count(); }
    void unite(const boost_set &other) { bits_ |= other.bits_; }
    void intersect(const boost_set &other) { bits_ &= other.bits_; }
    void subtract(const boost_set &other) { bits_ -= other.bits_; }
    bool equals(const boost_set &other) const { return bits_ == other.bits_; }
    bool is_in(const boost_set &other) const { return bits_.is_subset_of(other.bits_); }

private:
    boost::dynamic_bitset<> bits_;
};

class llvm_set
{
public:
    explicit llvm_set(size_t bits) : bits_(static_cast<unsigned>(bits)) {}
    void set(size_t bit) { bits_.set(static_cast<unsigned>(bit)); }
    size_t count() const { return bits_.count(); }
    void unite(const llvm_set &other) { bits_ |= other.bits_; }
    void intersect(const llvm_set &other) { bits_ &= other.bits_; }
    void subtract(const llvm_set &other) { bits_.reset(other.bits_); }
    bool equals(const llvm_set &other) const { return bits_ == other.bits_; }
    // Its test() is whether a bit is in the first set only.
    bool is_in(const llvm_set &other) const { return !bits_.test(other.bits_); }

private:
    llvm::BitVector bits_;
};

// ---- Inputs ----

using bit_list = std::vector<size_t>;

enum class kind { dense, ranges, sparse };

bit_list random_bits(kind kind, size_t numbits, unsigned seed)
{
    std::mt19937 generator(seed);
    const auto up_to = [&](size_t most) { return generator() % most + 1; };
    bit_list bits;
    for (size_t bit = 0; bit < numbits;) {
        if (kind == kind::dense) {
            if (up_to(4) == 1) {
                bits.push_back(bit);
            }
            ++bit;
            continue;
        }
        const size_t run = kind == kind::ranges ? up_to(64) : 1;
        for (const size_t end = std::min(bit + run, numbits); bit < end; ++bit) {
            bits.push_back(bit);
        }
        bit += up_to(kind == kind::ranges ? 64 : 600);
    }
    return bits;
}

template <class Set> Set set_of(size_t numbits, const bit_list &bits)
{
    Set set(numbits);
    for (const size_t bit : bits) {
        set.set(bit);
    }
    return set;
}

// ---- Single bits, counts, algebra and comparison ----

template <class Body> void add(const std::string &name, Body body)
{
    benchmark::RegisterBenchmark(name.c_str(), body);
}

std::vector<uint32_t> random_positions()
{
    std::mt19937 generator(1);
    std::vector<uint32_t> positions(50000);
    for (uint32_t &position : positions) {
        position = static_cast<uint32_t>(generator() % k_walked_bits);
    }
    return positions;
}

template <class Set> void add_single_bits(const std::string &library)
{
    add("bit_set/" + library, [](benchmark::State &state) {
        const std::vector<uint32_t> positions = random_positions();
        Set set(k_walked_bits);
        for (auto step : state) {
            for (const uint32_t position : positions) {
                set.set(position);
            }
            benchmark::ClobberMemory();
        }
    });
    add("bit_test/" + library, [](benchmark::State &state) {
        const std::vector<uint32_t> positions = random_positions();
        const Set set = set_of<Set>(k_walked_bits, random_bits(kind::dense, k_walked_bits, 1));
        for (auto step : state) {
            size_t found = 0;
            for (const uint32_t position : positions) {
                found += set.test(position) ? 1u : 0u;
            }
            benchmark::DoNotOptimize(found);
        }
    });
}

template <class Set>
void add_count(const std::string &library, const std::string &size, size_t numbits)
{
    add("count/" + size + "/" + library, [=](benchmark::State &state) {
        const bit_list bits = random_bits(kind::dense, numbits, 1);
        const Set set = set_of<Set>(numbits, bits);
        size_t count = 0;
        for (auto step : state) {
            count = set.count();
            benchmark::DoNotOptimize(count);
            benchmark::ClobberMemory();
        }
        if (count != bits.size()) {
            state.SkipWithError("wrong count");
        }
    });
}

// Changes a set by another one, over and over; in the end it must have so many bits.
template <class Set, class Change>
void add_change(const std::string &name, size_t numbits, Change change,
                size_t (*expected)(bool, bool))
{
    add(name, [=](benchmark::State &state) {
        const bit_list first = random_bits(kind::dense, numbits, 1);
        const bit_list second = random_bits(kind::dense, numbits, 2);
        Set set = set_of<Set>(numbits, first);
        const Set other = set_of<Set>(numbits, second);
        for (auto step : state) {
            change(set, other);
            benchmark::ClobberMemory();
        }
        std::vector<bool> in_first(numbits);
        std::vector<bool> in_second(numbits);
        std::for_each(first.begin(), first.end(), [&](size_t bit) { in_first[bit] = true; });
        std::for_each(second.begin(), second.end(), [&](size_t bit) { in_second[bit] = true; });
        size_t count = 0;
        for (size_t bit = 0; bit < numbits; ++bit) {
            count += expected(in_first[bit], in_second[bit]);
        }
        if (set.count() != count) {
            state.SkipWithError("wrong result");
        }
    });
}

// Compares a set with an equal one or with a superset.
template <class Set, class Compare>
void add_comparison(const std::string &name, size_t numbits, bool superset, Compare compare)
{
    add(name, [=](benchmark::State &state) {
        const bit_list bits = random_bits(kind::dense, numbits, 1);
        const Set set = set_of<Set>(numbits, bits);
        Set other = set_of<Set>(numbits, bits);
        if (superset) {
            other.unite(set_of<Set>(numbits, random_bits(kind::dense, numbits, 2)));
        }
        bool holds = true;
        for (auto step : state) {
            holds = compare(set, other);
            benchmark::DoNotOptimize(holds);
            benchmark::ClobberMemory();
        }
        if (!holds) {
            state.SkipWithError("wrong result");
        }
    });
}

template <class Set>
void add_algebra(const std::string &library, const std::string &size, size_t numbits)
{
    const std::string rest = "/" + size + "/" + library;
    add_change<Set>(
        "union" + rest, numbits, [](Set &set, const Set &other) { set.unite(other); },
        [](bool v, bool w) -> size_t { return v || w; });
    add_change<Set>(
        "intersection" + rest, numbits, [](Set &set, const Set &other) { set.intersect(other); },
        [](bool v, bool w) -> size_t { return v && w; });
    add_change<Set>(
        "subtract" + rest, numbits, [](Set &set, const Set &other) { set.subtract(other); },
        [](bool v, bool w) -> size_t { return v && !w; });
    add_comparison<Set>("equal" + rest, numbits, false,
                        [](const Set &set, const Set &other) { return set.equals(other); });
    add_comparison<Set>("subset" + rest, numbits, true,
                        [](const Set &set, const Set &other) { return set.is_in(other); });
}

// The memory traffic that the algebra and the comparisons cannot do without.
void add_floor(const std::string &size, size_t numbits)
{
    add("floor/" + size + "/memcpy", [=](benchmark::State &state) {
        std::vector<uint8_t> left(numbits / 8);
        const std::vector<uint8_t> right(numbits / 8);
        for (auto step : state) {
            memcpy(left.data(), right.data(), left.size());
            benchmark::ClobberMemory();
        }
    });
    add("floor/" + size + "/memcmp", [=](benchmark::State &state) {
        const std::vector<uint8_t> left(numbits / 8);
        const std::vector<uint8_t> right(numbits / 8);
        for (auto step : state) {
            benchmark::DoNotOptimize(memcmp(left.data(), right.data(), left.size()));
            benchmark::ClobberMemory();
        }
    });
}

template <size_t Bits> void add_size(const std::string &size)
{
    add_count<ruk_set>("ruk", size, Bits);
    add_count<hwloc_set>("hwloc", size, Bits);
    add_count<std_set<Bits>>("std", size, Bits);
    add_count<boost_set>("boost", size, Bits);
    add_count<llvm_set>("llvm", size, Bits);
    add_algebra<ruk_set>("ruk", size, Bits);
    add_algebra<hwloc_set>("hwloc", size, Bits);
    add_algebra<std_set<Bits>>("std", size, Bits);
    add_algebra<boost_set>("boost", size, Bits);
    add_algebra<llvm_set>("llvm", size, Bits);
    add_floor(size, Bits);
}

// ---- Walks over the bits and the runs, and the list as text ----

size_t iterate(const ruk_set &set)
{
    size_t sum = 0;
    for (int32_t bit = bitset_first_bit(set.get()); bit >= 0;
         bit = bitset_next_bit(set.get(), bit)) {
        sum += static_cast<size_t>(bit);
    }
    return sum;
}

size_t iterate(const hwloc_set &set)
{
    size_t sum = 0;
    for (int bit = hwloc_bitmap_first(set.get()); bit >= 0;
         bit = hwloc_bitmap_next(set.get(), bit)) {
        sum += static_cast<size_t>(bit);
    }
    return sum;
}

// The sum over all runs of first bit and length.
size_t runs(const ruk_set &set)
{
    size_t sum = 0;
    bitset_range range = {1, 0};
    while (bitset_next_range(set.get(), &range) == 0) {
        sum += static_cast<size_t>(range.upper + 1);
    }
    return sum;
}

size_t runs(const hwloc_set &set)
{
    size_t sum = 0;
    for (int lower = hwloc_bitmap_first(set.get()); lower >= 0;) {
        const int end = hwloc_bitmap_next_unset(set.get(), lower);
        sum += static_cast<size_t>(end);
        lower = hwloc_bitmap_next(set.get(), end);
    }
    return sum;
}

// Room for the longest list of a set.
constexpr size_t k_text = k_walked_bits * 4;

size_t print(const ruk_set &set, char *text)
{
    int32_t done = 0;
    return static_cast<size_t>(bitset_snprintf(text, k_text, set.get(), 1, &done));
}

size_t print(const hwloc_set &set, char *text)
{
    return static_cast<size_t>(hwloc_bitmap_list_snprintf(text, k_text, set.get()));
}

size_t print_unbounded(const ruk_set &set, char *text)
{
    return static_cast<size_t>(bitset_sprintf(text, set.get()));
}

// What each walk over these bits has to add up to.
struct expected_sums {
    size_t bits = 0;
    size_t runs = 0;
    size_t text = 0;
};

expected_sums expect(const bit_list &bits)
{
    expected_sums sums;
    for (size_t i = 0; i < bits.size();) {
        const size_t first = bits[i];
        size_t last = first;
        for (; i < bits.size() && (bits[i] == last || bits[i] == last + 1); ++i) {
            last = bits[i];
            sums.bits += last;
        }
        sums.runs += last + 1;
        sums.text += (sums.text > 0 ? 1 : 0) + std::to_string(first).size() +
                     (last > first ? 1 + std::to_string(last).size() : 0);
    }
    return sums;
}

template <class Set, class Walk>
void add_walk(const std::string &name, kind kind, size_t expected_sums::*expected, Walk walk)
{
    add(name, [=](benchmark::State &state) {
        std::vector<Set> sets;
        size_t expected_sum = 0;
        for (unsigned seed = 0; seed < k_sets; ++seed) {
            bit_list bits = random_bits(kind, k_walked_bits, seed);
            // Nothing is set at the end, where the libraries differ in what ends a run.
            while (bits.back() + 2 >= k_walked_bits) {
                bits.pop_back();
            }
            sets.push_back(set_of<Set>(k_walked_bits, bits));
            expected_sum += expect(bits).*expected;
        }
        size_t sum = 0;
        for (auto step : state) {
            sum = 0;
            for (const Set &set : sets) {
                sum += walk(set);
            }
            benchmark::DoNotOptimize(sum);
        }
        if (sum != expected_sum) {
            state.SkipWithError("wrong sum");
        }
    });
}

template <class Set> void add_walks(const std::string &library, const std::string &name, kind kind)
{
    const std::string rest = "/" + name + "/" + library;
    add_walk<Set>("iterate" + rest, kind, &expected_sums::bits,
                  [](const Set &set) { return iterate(set); });
    add_walk<Set>("runs" + rest, kind, &expected_sums::runs,
                  [](const Set &set) { return runs(set); });
    const std::shared_ptr<char[]> text(new char[k_text]);
    add_walk<Set>("print" + rest, kind, &expected_sums::text,
                  [=](const Set &set) { return print(set, text.get()); });
    if constexpr (std::is_same_v<Set, ruk_set>) {
        add_walk<Set>("print" + rest + "_sprintf", kind, &expected_sums::text,
                      [=](const Set &set) { return print_unbounded(set, text.get()); });
    }
}

} // namespace

int main(int argc, char **argv)
{
    add_single_bits<ruk_set>("ruk");
    add_single_bits<hwloc_set>("hwloc");
    add_size<1024>("1Ki");
    add_size<64 * 1024>("64Ki");
    add_size<1024 * 1024>("1Mi");
    const std::pair<const char *, kind> kinds[] = {
        {"dense", kind::dense}, {"ranges", kind::ranges}, {"sparse", kind::sparse}};
    for (const auto &[name, kind] : kinds) {
        add_walks<ruk_set>("ruk", name, kind);
        add_walks<hwloc_set>("hwloc", name, kind);
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

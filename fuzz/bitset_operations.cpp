// Sequences of operations on three bit sets of one size, with any variant of the loops; after each
// the sets hold, bit by bit, what they should.
//
// Input: the size, the variant, then operations: a byte of the kind and their numbers.
#include <cstring>
#include <memory>
#include <vector>

#include "fuzz/input.h"
#include "fuzz/target.h"
#include "infra/utils/ktlibbmp_kernels.h"
#include "ruk/bitset.h"

using fuzz::require;

namespace
{

using Bits = std::vector<uint8_t>; // one element a bit, 0 or 1: quicker than packed ones

struct release {
    void operator()(void *block) const { free(block); }
};

// A set in a block of exactly its size, and what it should hold.
struct Pair {
    explicit Pair(uint32_t size)
        : record(static_cast<bitset *>(malloc(sizeof(bitset) + size))), bits(size * size_t{8})
    {
        require(record != nullptr);
        record->size = size;
        bitset_clear(record.get());
    }

    void check() const
    {
        for (size_t i = 0; i < bits.size(); i += 8) {
            uint32_t byte = 0;
            for (size_t bit = 0; bit < 8; ++bit) {
                byte = byte << 1 | bits[i + bit];
            }
            require(record->bits[i / 8] == byte);
        }
    }

    std::unique_ptr<bitset, release> record;
    Bits bits;
};

int32_t first_from(const Bits &bits, int64_t from, bool value)
{
    const auto searched = static_cast<int64_t>(bits.size() / 32 * 32);
    if (from >= searched) {
        return -1;
    }
    const void *met = memchr(&bits[static_cast<size_t>(from)], value ? 1 : 0,
                             static_cast<size_t>(searched - from));
    return met == nullptr ? -1
                          : static_cast<int32_t>(static_cast<const uint8_t *>(met) - bits.data());
}

int32_t nth(const Bits &bits, int32_t n, bool value)
{
    int32_t bit = first_from(bits, 0, value);
    for (; n > 0 && bit >= 0; --n) {
        bit = first_from(bits, bit + 1, value);
    }
    return bit;
}

int32_t next_range(const Bits &bits, bitset_range &range, bool value)
{
    const auto numbits = static_cast<uint32_t>(bits.size());
    if (static_cast<uint32_t>(range.upper) >= numbits - 2) {
        return -1;
    }
    const bool start = range.lower == 1 && range.upper == 0;
    range.lower = first_from(bits, start ? 0 : int64_t{range.upper} + 2, value);
    if (range.lower < 0) {
        return -1;
    }
    const int32_t end = first_from(bits, range.lower + 1, !value);
    range.upper = end < 0 ? static_cast<int32_t>(numbits) - 1 : end - 1;
    return 0;
}

class Machine
{
public:
    Machine(fuzz::Input &input, uint32_t size)
        : input_(input), sets_{Pair(size), Pair(size), Pair(size)}
    {
    }

    void run()
    {
        while (!input_.empty()) {
            const uint8_t kind = input_.byte();
            Pair &a = sets_[kind >> 4 & 1];
            operate(kind, a, (kind & 0x20) != 0 ? a : sets_[1 - (kind >> 4 & 1)], sets_[2]);
            ((kind & 0x40) != 0 ? sets_[2] : a).check();
        }
        for (const Pair &set : sets_) {
            set.check();
        }
    }

private:
    void operate(uint8_t kind, Pair &a, Pair &b, Pair &mask)
    {
        Pair &one = (kind & 0x40) != 0 ? mask : a;
        switch (kind & 0xf) {
        case 0:
            return change_bit(one, (kind & 0x80) != 0);
        case 1:
            return change_range(one, (kind & 0x80) != 0);
        case 2:
            return read_in(one);
        case 3:
            bitset_fill(one.record.get());
            one.bits.assign(one.bits.size(), 1);
            return;
        case 4:
            bitset_clear(one.record.get());
            one.bits.assign(one.bits.size(), 0);
            return;
        case 5:
            bitset_union(a.record.get(), b.record.get());
            return combine(a, b, mask, [](bool v, bool w, bool) { return v || w; });
        case 6:
            bitset_intersection(a.record.get(), b.record.get());
            return combine(a, b, mask, [](bool v, bool w, bool) { return v && w; });
        case 7:
            bitset_subtract(a.record.get(), b.record.get());
            return combine(a, b, mask, [](bool v, bool w, bool) { return v && !w; });
        case 8:
            bitset_maskcopy(a.record.get(), b.record.get(), mask.record.get());
            return combine(a, b, mask, [](bool v, bool w, bool m) { return m ? w : v; });
        case 9:
            return compare(a, b, mask);
        case 10:
            bitset_copy(a.record.get(), b.record.get());
            return combine(a, b, mask, [](bool, bool w, bool) { return w; });
        case 11:
            return search(one);
        case 12:
        case 13:
            return ranges(one, (kind & 0x80) != 0, (kind & 1) != 0);
        case 14:
            return range_free(one);
        default:
            return write_out(one);
        }
    }

    // A bit's number, when there are bits.
    uint32_t some_bit(const Pair &p)
    {
        return input_.word() % static_cast<uint32_t>(p.bits.size());
    }

    void change_bit(Pair &p, bool value)
    {
        if (!p.bits.empty()) {
            const uint32_t bit = some_bit(p);
            (value ? bitset_set_bit : bitset_clear_bit)(p.record.get(), static_cast<int32_t>(bit));
            p.bits[bit] = value ? 1 : 0;
            require(bitset_is_bit_set(p.record.get(), static_cast<int32_t>(bit)) ==
                    (value ? 1 : 0));
        }
    }

    void change_range(Pair &p, bool value)
    {
        if (!p.bits.empty()) {
            const uint32_t bit = some_bit(p);
            const uint32_t length =
                input_.word() % (static_cast<uint32_t>(p.bits.size()) - bit + 1);
            bitset_set_range_value(p.record.get(), static_cast<int32_t>(bit),
                                   static_cast<int32_t>(length), value ? 1 : 0);
            std::fill_n(p.bits.begin() + bit, length, uint8_t{value});
        }
    }

    void read_in(Pair &p)
    {
        std::vector<uint8_t> array(input_.byte() % (p.bits.size() / 8 + 3));
        input_.bytes(array);
        bitset_from_bitarray(p.record.get(), array.data(), static_cast<int32_t>(array.size()));
        for (size_t i = 0; i < p.bits.size(); ++i) {
            p.bits[i] = i / 8 < array.size() ? array[i / 8] >> i % 8 & 1 : 0;
        }
    }

    void write_out(const Pair &p)
    {
        std::vector<uint8_t> array(input_.byte() % (p.bits.size() / 8 + 3), 0xcc);
        bitset_to_bitarray(p.record.get(), array.data(), static_cast<int32_t>(array.size()));
        for (size_t i = 0; i < array.size() * 8; ++i) {
            require(((array[i / 8] & 1 << i % 8) != 0) == (i < p.bits.size() && p.bits[i] != 0));
        }
    }

    template <typename Rule>
    static void combine(Pair &a, const Pair &b, const Pair &mask, Rule rule)
    {
        for (size_t i = 0; i < a.bits.size(); ++i) {
            a.bits[i] = rule(a.bits[i] != 0, b.bits[i] != 0, mask.bits[i] != 0) ? 1 : 0;
        }
    }

    static void compare(const Pair &a, const Pair &b, const Pair &mask)
    {
        bool mask_equal = true;
        bool subset = true;
        uint32_t count = 0;
        for (size_t i = 0; i < a.bits.size(); ++i) {
            mask_equal = mask_equal && (mask.bits[i] == 0 || a.bits[i] == b.bits[i]);
            subset = subset && a.bits[i] <= b.bits[i];
            count += a.bits[i];
        }
        require(bitset_equal(a.record.get(), b.record.get()) == (a.bits == b.bits ? 1 : 0));
        require(bitset_maskequal(a.record.get(), b.record.get(), mask.record.get()) ==
                (mask_equal ? 1 : 0));
        require(bitset_subset(a.record.get(), b.record.get()) == (subset ? 1 : 0));
        require(bitset_bitcount(a.record.get()) == count);
    }

    void search(const Pair &p)
    {
        const bitset *b = p.record.get();
        const auto from = static_cast<int32_t>(input_.word() % (p.bits.size() + 40));
        require(bitset_first_bit(b) == first_from(p.bits, 0, true));
        require(bitset_first_free_bit(b) == first_from(p.bits, 0, false));
        require(bitset_next_bit(b, from) == first_from(p.bits, from + 1, true));
        require(bitset_next_free_bit(b, from) == first_from(p.bits, from + 1, false));
        require(bitset_find_next_bit(b, from) == first_from(p.bits, from, true));
        require(bitset_find_next_free_bit(b, from) == first_from(p.bits, from, false));
        require(bitset_nth_bit(b, from) == nth(p.bits, from, true));
        require(bitset_nth_free_bit(b, from) == nth(p.bits, from, false));
        if (static_cast<size_t>(from) < p.bits.size()) {
            int32_t last = from;
            while (last >= 0 && p.bits[static_cast<size_t>(last)] == 0) {
                --last;
            }
            require(bitset_find_prev_bit(b, from) == last);
        }
    }

    // All runs from the start, or from any range.
    void ranges(const Pair &p, bool value, bool from_start)
    {
        bitset_range range = {1, 0};
        if (!from_start) {
            range.lower = input_.word();
            range.upper = input_.word();
        }
        for (;;) {
            bitset_range expected = range;
            const int32_t result = next_range(p.bits, expected, value);
            require((value ? bitset_next_range : bitset_next_free_range)(p.record.get(), &range) ==
                    result);
            require(range.lower == expected.lower && range.upper == expected.upper);
            if (result != 0) {
                return;
            }
        }
    }

    void range_free(const Pair &p)
    {
        if (!p.bits.empty()) {
            const uint32_t lower = some_bit(p);
            const uint32_t upper =
                lower + input_.word() % (static_cast<uint32_t>(p.bits.size()) - lower);
            const bitset_range range = {static_cast<int32_t>(lower), static_cast<int32_t>(upper)};
            const int32_t met = first_from(p.bits, lower + 1, true);
            require(bitset_is_range_free(p.record.get(), &range) ==
                    (met < 0 || met > range.upper ? 1 : 0));
        }
    }

    fuzz::Input &input_;
    Pair sets_[3];
};

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz::Input input(data, size);
    const uint32_t chosen = input.word();
    const uint32_t bytes = chosen % (chosen < 0xf000 ? 160 : 600);
    const auto variants = ktlibbmp::all_kernels();
    const ktlibbmp::kernels *variant = variants[input.byte() % variants.size()];
    ktlibbmp::force_kernels(variant->runs_here() ? variant : nullptr);
    Machine(input, bytes).run();
    return 0;
}

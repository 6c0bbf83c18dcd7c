// Bit sets as text: set bits as a list of numbers and ranges, whole or in pieces that fit.
#include <algorithm>
#include <array>
#include <string_view>

#include "infra/utils/ktlibbmp.h"
#include "infra/utils/ktlibbmp_runs.h"

using namespace ktlibbmp;

int32_t bitset_snprintf_cursor = 0;

namespace
{

// Separator, two numbers of ten digits and the dash between them.
constexpr size_t k_longest_item = 22;

// The last two digits of the numbers from 0 to 199.
constexpr auto k_pairs = [] {
    std::array<std::array<char, 2>, 200> pairs{};
    for (size_t i = 0; i != pairs.size(); ++i) {
        pairs[i] = {static_cast<char>('0' + i / 10 % 10), static_cast<char>('0' + i % 10)};
    }
    return pairs;
}();

inline char *write_pair(char *at, uint32_t number)
{
    memcpy(at, k_pairs[number].data(), 2);
    return at + 2;
}

inline char *write_four_digits(char *at, uint32_t number)
{
    return write_pair(write_pair(at, number / 100), number % 100);
}

// Writes a number below 10,000 in as many digits as it has.
inline char *write_up_to_four_digits(char *at, uint32_t number)
{
    if (number >= 1000) {
        return write_four_digits(at, number);
    }
    if (number >= 100) {
        *at = static_cast<char>('0' + number / 100);
        return write_pair(at + 1, number % 100);
    }
    if (number >= 10) {
        return write_pair(at, number);
    }
    *at = static_cast<char>('0' + number);
    return at + 1;
}

// Neighbouring numbers mostly have the same number of digits, so that the branches are foreseen.
inline char *write_number(char *at, uint32_t number)
{
    if (number >= 100000000) {
        at = write_up_to_four_digits(at, number / 100000000);
        at = write_four_digits(at, number / 10000 % 10000);
    } else if (number >= 10000) {
        at = write_up_to_four_digits(at, number / 10000);
    } else {
        return write_up_to_four_digits(at, number);
    }
    return write_four_digits(at, number % 10000);
}

// Writes numbers that differ little: of one length, and below base + 200, a multiple of 100.
class near_numbers
{
public:
    explicit near_numbers(uint32_t base) : base_(base)
    {
        length_ = static_cast<size_t>(write_number(hundreds_[0], base / 100) - hundreds_[0]);
        write_number(hundreds_[1], base / 100 + 1);
    }

    // Writes 8 bytes at least, whether they belong to the number or not.
    char *write(char *at, uint32_t number) const
    {
        const uint32_t above = number - base_;
        memcpy(at, hundreds_[above >= 100 ? 1 : 0], sizeof hundreds_[0]);
        return write_pair(at + length_, above);
    }

private:
    uint32_t base_;
    size_t length_;
    char hundreds_[2][8] = {};
};

// A few items, each with the separator before it.
class item_group
{
public:
    static constexpr size_t k_most = 16;

    // Two edges for each item, and no more than k_most items.
    explicit item_group(std::span<const uint32_t> edges)
    {
        const uint32_t base = edges.front() / 100 * 100;
        if (edges.back() - base <= 200 && has_one_length(base)) {
            add_near_items(edges, near_numbers(base));
        } else {
            add_items(edges);
        }
    }

    // Without the separator before the first item where that begins the text.
    std::string_view text(bool begins) const
    {
        const char *const first = begins ? text_ + 1 : text_;
        return {first, static_cast<size_t>(end_ - first)};
    }

private:
    // Whether the numbers from base to base + 199 have the same number of digits, three at least.
    static bool has_one_length(uint32_t base)
    {
        return base >= 100 && base != 900 && base != 9900 && base != 99900 && base != 999900 &&
               base != 9999900 && base != 99999900 && base != 999999900;
    }

    // Writes "first" or "first-last" for each.
    void add_items(std::span<const uint32_t> edges)
    {
        char *at = text_;
        for (size_t i = 0; i < edges.size(); i += 2) {
            const uint32_t first = edges[i];
            const uint32_t last = edges[i + 1] - 1;
            *at = ',';
            at = write_number(at + 1, first);
            if (last != first) {
                *at = '-';
                at = write_number(at + 1, last);
            }
        }
        end_ = at;
    }

    // The same where items stand close.  Which of them are single bits no processor foresees, so
    // both ends are written always, and what follows a single bit overwrites the second one.
    void add_near_items(std::span<const uint32_t> edges, const near_numbers numbers)
    {
        char *at = text_;
        for (size_t i = 0; i < edges.size(); i += 2) {
            const uint32_t first = edges[i];
            const uint32_t last = edges[i + 1] - 1;
            *at = ',';
            char *const single = numbers.write(at + 1, first);
            *single = '-';
            char *const range = numbers.write(single + 1, last);
            at = last != first ? range : single;
        }
        end_ = at;
    }

    static constexpr size_t k_written_beyond = 8;
    char text_[k_most * k_longest_item + k_written_beyond];
    const char *end_;
};

// The runs from a bit on, which a search found; none for -1.
run_reader runs_from(const bitset *b, int32_t first)
{
    const std::span words = searched(b);
    return {words, first < 0 ? words.size() * 8 : static_cast<size_t>(first)};
}

// A text of limited size that takes whole items only.
class bounded_text
{
public:
    bounded_text(char *text, size_t capacity) : text_(text), capacity_(capacity) {}

    size_t length() const { return length_; }

    // Adds the items that fit with a terminator; returns how many edges those have.
    size_t add(std::span<const uint32_t> edges)
    {
        if (active_kernels().list_items != nullptr && edges.back() <= kernels::k_listed_edge) {
            return add_at_once(edges);
        }
        const size_t taken = add_groups(edges, 2 * item_group::k_most);
        // Of a group that does not fit whole, the items that do.
        return taken + add_groups(edges.subspan(taken), 2);
    }

private:
    // The same by the processor's own way, which puts a separator before each item.
    size_t add_at_once(std::span<const uint32_t> edges)
    {
        const size_t begun = length_ == 0 ? add_groups(edges.first(2), 2) : 0;
        if (length_ == 0) {
            return 0;
        }
        const auto rest = edges.subspan(begun);
        const listed done = active_kernels().list_items(rest.data(), rest.size(), text_ + length_,
                                                        capacity_ - length_);
        length_ += done.chars;
        text_[length_] = '\0';
        return begun + done.edges;
    }

    // Adds groups of so many edges until one does not fit; returns how many edges were added.
    size_t add_groups(std::span<const uint32_t> edges, size_t most)
    {
        size_t taken = 0;
        while (taken < edges.size()) {
            const auto group = edges.subspan(taken, std::min(edges.size() - taken, most));
            if (!add_group(group)) {
                break;
            }
            taken += group.size();
        }
        return taken;
    }

    // False, and nothing added, where the items do not all fit with a terminator.
    bool add_group(std::span<const uint32_t> edges)
    {
        const item_group group(edges);
        const std::string_view items = group.text(length_ == 0);
        if (items.size() >= capacity_ - length_) {
            return false;
        }
        memcpy(text_ + length_, items.data(), items.size());
        length_ += items.size();
        text_[length_] = '\0';
        return true;
    }

    char *text_;
    size_t capacity_;
    size_t length_ = 0;
};

// Lists runs until one does not fit, and stores the last bit listed; true if no run is left.
bool list_runs(run_reader &runs, bounded_text &list, int32_t &last)
{
    for (auto edges = runs.read(); !edges.empty(); edges = runs.read()) {
        const size_t taken = list.add(edges);
        if (taken > 0) {
            last = static_cast<int32_t>(edges[taken - 1] - 1);
        }
        if (taken < edges.size()) {
            return false;
        }
    }
    return true;
}

} // namespace

int32_t bitset_sprintf(char *text, const bitset *b)
{
    bounded_text list(text, SIZE_MAX);
    *text = '\0';
    run_reader runs = runs_from(b, bitset_first_bit(b));
    int32_t last = 0;
    list_runs(runs, list, last);
    return static_cast<int32_t>(list.length());
}

int32_t bitset_snprintf(char *text, uint32_t capacity, const bitset *b, int32_t restart,
                        int32_t *done)
{
    *done = 0;
    if (capacity > 0) {
        *text = '\0';
    }
    if (restart != 0) {
        bitset_snprintf_cursor = 0;
    }
    // A cursor of 0 also stands for "nothing printed yet", so a list whose first item did not fit
    // goes on after bit 0 and loses that bit; kept, since callers rely on where a list goes on.
    run_reader runs = runs_from(b, restart != 0 ? bitset_first_bit(b)
                                                : bitset_next_bit(b, bitset_snprintf_cursor));
    bounded_text list(text, capacity);
    if (list_runs(runs, list, bitset_snprintf_cursor)) {
        *done = 1;
        bitset_snprintf_cursor = 0;
    }
    return static_cast<int32_t>(list.length());
}
